#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Does what the README says on minimal installations of Debian, and writes what happened into
# docs/releases.md.  As root.
#
#   scripts/releases.sh [RELEASE[/WHO]...]    bookworm, trixie and sid, or these
#
# Each command runs in scripts/minimal_debian.sh, from a clean clone: by "root", by a user with
# "sudo", by a user whom sudo "refused", and by root with a "broken" package source.  Each of
# these has an installation of its own.  What they print is in build/releases/, or in the
# folder that HOPLAUNCH_RELEASES names.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh

document=docs/releases.md
commands=('./run' './test' './package' 'scripts/reference' 'bench/run --quick')
as_root_only=scripts/desktop/newcomer.sh # it installs what was built

# --- The installations -------------------------------------------------------------

# try RELEASE WHO: all commands in an installation of their own.
try() {
  printf '== %s, %s\n' "$1" "$2"
  rm -rf "${home:?}/$1/$2"
  mkdir -p "$home/$1/$2"
  git rev-parse --short=10 HEAD >"$home/$1/$2/commit"
  scripts/minimal_debian.sh run "$home/$1" "$home/$1/$2" bash scripts/releases.sh inside "$2" || true
}

# describe RELEASE: its name for people.
describe() {
  local base=$home/$1/base
  if [[ $1 == sid ]]; then
    printf 'Debian sid of %s' "$(date --utc +%F --date="$(sed -n 's/^Date: //p' "$base/etc/made")")"
  else
    printf 'Debian %s (%s)' "$(<"$base/etc/debian_version")" "$1"
  fi
}

# --- Inside -------------------------------------------------------------------------

# inside WHO: runs the commands, and appends a line to /result/table.tsv for each.
inside() {
  local who=$1 command
  user=root
  case $who in
    sudo)
      user=somebody
      echo 'somebody ALL=(ALL) NOPASSWD: ALL' >/etc/sudoers.d/somebody
      ;;
    refused) user=somebody ;;
    broken)
      rm -rf /etc/apt/sources.list.d /var/lib/apt/lists
      echo 'deb http://127.0.0.1:9/debian stable main' >/etc/apt/sources.list
      ;;
  esac
  chown -R "$user:" "$PWD"
  for command in "${commands[@]}"; do
    try_command "$who" "$command"
  done
  [[ $who != root ]] || try_command root "$as_root_only"
}

# try_command WHO COMMAND
try_command() {
  local log name packages disk began status=0 verdict
  name=${2//[^a-z]/} # run, test, package, scriptsreference, benchrunquick
  log=/result/$name.log
  packages=$(dpkg-query -W | wc -l)
  disk=$(megabytes)
  began=$SECONDS
  # shellcheck disable=SC2086  # words of a command
  as_user $2 >"$log" 2>&1 </dev/null || status=$?
  began=$((SECONDS - began))
  verdict=$(judge_"$1" "$name" "$status" "$log" "$began")
  printf '%s\t%s\t%s\t%s\t%s\t%s\n' "$1" "$2" "$verdict" "$began" \
    "$(($(dpkg-query -W | wc -l) - packages))" "$(($(megabytes) - disk))" >>/result/table.tsv
  printf '%s: %s (%d s)\n' "$2" "$verdict" "$began"
}

megabytes() { du --one-file-system --summarize --block-size=1M / 2>/dev/null | cut -f 1; }

as_user() {
  setpriv --reuid="$user" --regid="$user" --init-groups env -i "HOME=$(getent passwd "$user" |
    cut -d : -f 6)" "USER=$user" LANG=C.UTF-8 "PATH=$PATH" "$@"
}

# judge_WHO COMMAND STATUS LOG SECONDS: what the cell of the table says.
judge_root() {
  local last
  last=$(tail -n 1 "$3")
  if (($2 != 0)); then
    printf '**failed** with status %s' "$2"
  elif has_line ':[0-9]+: warning: |CMake( Deprecation)? Warning' "$(<"$3")"; then
    printf '**warned**'
  elif [[ $1 == run && $last != 'A click on vnc://localhost:5900 would '* ]]; then
    printf '**said nothing of a click**'
  elif [[ $1 == test || $1 == scriptsdesktopnewcomersh ]]; then
    printf '%s' "$last"
  elif [[ $1 == package && $(grep -c '\.deb$' "$3") != 4 ]]; then
    printf '**not four packages**'
  elif [[ $1 == scriptsreference && ! -s build/reference/index.html ]]; then
    printf '**no index.html**'
  else
    printf 'good'
  fi
}
judge_sudo() { judge_root "$@"; }
judge_refused() {
  if (($2 == 0)); then
    printf '**went on**'
  elif has_line '^  apt-get update && apt-get install -y --no-install-recommends [a-z]' "$(<"$3")"; then
    printf 'says what to type'
  else
    printf '**says no command**'
  fi
}
judge_broken() {
  if (($2 == 0)); then
    printf '**went on**'
  elif ! has_line '^The package [^ ]+ was not installed' "$(<"$3")"; then
    printf '**names no package**'
  elif (($4 > 60)); then
    printf '**stops late**'
  else
    printf 'stops, names the packages'
  fi
}

# --- The table ---------------------------------------------------------------------

# value RELEASE WHO COMMAND FIELD
value() {
  awk -F '\t' -v c="$3" -v f="$4" '$2 == c { print $f }' "$home/$1/$2/table.tsv" 2>/dev/null || true
}

# duration SECONDS
duration() { (($1 < 60)) && printf '%d s' "$1" || printf '%d min %d s' $(($1 / 60)) $(($1 % 60)); }

# cell RELEASE WHO COMMAND: what happened, and how long it took.
cell() {
  local seconds
  seconds=$(value "$1" "$2" "$3" 4)
  if [[ $2 != root && $3 == "$as_root_only" ]]; then
    printf 'is not for users'
  elif [[ -z $seconds ]]; then
    printf '**did not run**'
  else
    printf '%s, %s' "$(value "$1" "$2" "$3" 3)" "$(duration "$seconds")"
  fi
}

# table RELEASE
table() {
  local command
  printf '## %s\n\n' "$(describe "$1")"
  printf 'At commit %s, on %d processors.\n\n' "$(cat "$home/$1"/*/commit | sort -u | xargs)" "$(nproc)"
  printf '| command | root | with sudo | sudo refuses | a package source fails | packages | MB |\n'
  printf '|---|---|---|---|---|---|---|\n'
  for command in "${commands[@]}" "$as_root_only"; do
    # shellcheck disable=SC2016  # of Markdown
    printf '| `%s` | %s | %s | %s | %s | %s | %s |\n' "$command" "$(cell "$1" root "$command")" \
      "$(cell "$1" sudo "$command")" "$(cell "$1" refused "$command")" \
      "$(cell "$1" broken "$command")" "$(value "$1" root "$command" 5)" "$(value "$1" root "$command" 6)"
  done
}

# keep RELEASE TABLE: puts the table between the lines that mark its place in the document.
keep() {
  local begin="<!-- release $1 -->"
  grep -qF "$begin" "$document" || printf '\n%s\n<!-- end of release -->\n' "$begin" >>"$document"
  TABLE=$2 awk -v begin="$begin" '
    $0 == begin { print; print ""; print ENVIRON["TABLE"]; print ""; skipping = 1; next }
    $0 == "<!-- end of release -->" { skipping = 0 }
    !skipping { print }
  ' "$document" >"$home/document"
  cat "$home/document" >"$document"
}

main() {
  local tried release who shown
  need_root 'it makes installations of Debian'
  for tried; do
    release=${tried%/*}
    scripts/minimal_debian.sh make "$home/$release" "$release" sudo
    for who in refused broken root sudo; do
      [[ $tried == */* && ${tried#*/} != "$who" ]] || try "$release" "$who"
    done
    shown=$(table "$release")
    printf '\n%s\n\n' "$shown"
    keep "$release" "$shown"
    outcome "$release" "$([[ $shown != *'**'* ]] && echo 0 || echo 1)" "See $home/$release"
  done
  closing_line
}

case ${1:-} in
  inside) "$@" ;;
  *)
    (($# > 0)) || set -- bookworm trixie sid
    home=$(realpath -m "${HOPLAUNCH_RELEASES:-build/releases}")
    mkdir -p "$home"
    main "$@"
    ;;
esac
