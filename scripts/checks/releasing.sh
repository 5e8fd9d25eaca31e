# SPDX-License-Identifier: MIT
# That scripts/release finds each thing that must not be so in a release.
# shellcheck shell=bash source=scripts/lib.sh
set -uo pipefail
source scripts/lib.sh
need dpkg-dev git python3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export GIT_AUTHOR_NAME=A GIT_AUTHOR_EMAIL=a@a.example GIT_COMMITTER_NAME=A \
  GIT_COMMITTER_EMAIL=a@a.example

# A copy of what is here, as if it were to be released.
version=9.8 # in two parts, as no other file may have it
version=$version.7
git clone -q . "$scratch/copy"
git ls-files -z --cached --others --exclude-standard --deduplicate |
  tar --create --null --files-from=- --ignore-failed-read 2>/dev/null |
  tar --extract --directory="$scratch/copy"
cd "$scratch/copy" || exit
edit() { sed -i "$1" "${@:2}"; }
edit "s/^  VERSION .*/  VERSION $version/" CMakeLists.txt
edit "0,/^## \[.*/s//## [$version] - 2030-01-02/" CHANGELOG.md
edit "1s/([^)]*)/($version-1)/" debian/changelog
edit '0,/^ -- .*/s// -- A <a@a.example>  Wed, 02 Jan 2030 03:04:05 +0000/' debian/changelog
commit() { git add -A && git commit -q --message "$1"; }
commit 'The code'
code=$(git rev-parse --short=10 HEAD)
edit "s/^ \"commit\": .*/ \"commit\": \"$code\",/" docs/figures/*.json
edit "s/^At commit [0-9a-f ]*,/At commit $code,/" docs/*.md
commit 'What was measured'
git tag good

# releases STATUS TEXT [VERSION]: scripts/release --check ends with the status and says the text.
releases() {
  local said status=0
  said=$(scripts/release --check "${3:-$version}" 2>&1) || status=$?
  printf 'It ended with status %s, and said:\n%s\n' "$status" "$said"
  ((status == $1)) && [[ $said == *"$2"* ]]
}

# after COMMAND...: that was done, and committed, and nothing of what came before it.
after() {
  git reset -q --hard good
  git clean -qfd
  "$@"
  commit 'A fault'
}

check 'all is well' releases 0 '9 passed, 0 failed'
check 'what is no version' releases 1 'FAILED: the version has the form 1.2.3' 9.8
check 'another version' releases 1 "CMakeLists.txt says $version" 9.8.8
touch new
check 'a file that is not committed' releases 1 '?? new'
rm new
git tag "v$version"
check 'a version that is released already' releases 1 'FAILED: it is not released yet'
git tag --delete "v$version" >/dev/null
after edit "1s/\$/ $version/" README.md
check 'the version in another place' releases 1 "README.md:1:# hoplaunch $version"
after edit "s/^## \[$version\].*/## [$version] - Unreleased/" CHANGELOG.md
check 'no date in the changelog' releases 1 'CHANGELOG.md has the date "Unreleased", debian/changelog "2030-01-02".'
after edit 's/02 Jan 2030/03 Jan 2030/; s/Wed, 03/Thu, 03/' debian/changelog
check 'another date in the changelog of the package' releases 1 'debian/changelog "2030-01-03"'
after edit "1s/$version/9.8.6/" debian/changelog
check 'another version there' releases 1 'debian/changelog ""'
after edit 's/"commit": ".*"/"commit": "0123456789"/' docs/figures/soak.json
check 'a figure of no commit' releases 1 'docs/figures/soak.json: the commit is none of these: 0123456789'
after edit 's/"commit": "\(.*\)"/"commit": "\1-dirty"/' docs/figures/soak.json
check 'a figure of what was not committed' releases 1 "the commit is none of these: $code-dirty"
after edit 's,"command": ".*","command": "scripts/gone",' docs/figures/soak.json
check 'a figure without its command' releases 1 'the command does not exist: scripts/gone'
after edit '1s/$/ Changed./' utilities/text.cpp
check 'a figure that is older than the code' releases 1 \
  "docs/figures/soak.json: 1 files are newer than $code, utilities/text.cpp among them"
check 'a table that is older' releases 1 "docs/releases.md: there is newer code than $code"
after edit 's/^At commit .*,/At commit 0123456789,/' docs/releases.md
check 'a table of no commit' releases 1 'docs/releases.md: the commit is none of these: 0123456789'
after edit 's/0 failed/1 failed/' docs/reliability.md
check 'a figure that somebody changed' releases 1 'docs/reliability.md differs'

closing_line
