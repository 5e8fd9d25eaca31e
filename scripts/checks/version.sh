# SPDX-License-Identifier: MIT
# That all places agree on the version, and on the address of the project.
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need git

version=$(sed -n 's/^  VERSION \(.*\)/\1/p' CMakeLists.txt)
host=$(sed -n 's,^  HOMEPAGE_URL "https://\(.*\)/"$,\1,p' CMakeLists.txt)
# says EXPECTED FILE SED-SCRIPT: the first text that it finds in the file.
says() { diff <(printf '%s\n' "$1") <(sed -n "$3" "$2" | head -n 1); }
check 'CHANGELOG.md' says "$version" CHANGELOG.md 's/^## \[\([^]]*\)\].*/\1/p'
check 'debian/changelog' says "$version" debian/changelog 's/^hoplaunch (\(.*\)-[0-9]*) .*/\1/p'
check 'the homepage of the package' says "https://$host/" debian/control 's/^Homepage: //p'
same_host() {
  ! git grep -noIE '(https?://|@)hoplaunch\.[a-z.]+' | grep -vE "(//|@)$host\$"
}
check 'no other address' same_host
closing_line
