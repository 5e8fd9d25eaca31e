# SPDX-License-Identifier: MIT
# Sourced by the tests: a viewer that notes what it is given.
# shellcheck shell=sh

scratch=${AUTOPKGTEST_TMP:?}
mkdir -p "$scratch/bin"
# shellcheck disable=SC2016  # the viewer's
printf '%s\n' '#!/bin/sh' '{ printf "%s" "${0##*/}" && printf " <%s>" "$@" && echo; } >"$SEEN"' \
  >"$scratch/bin/vncviewer"
chmod +x "$scratch/bin/vncviewer"
export SEEN="$scratch/seen" PATH="$scratch/bin:$PATH" HOME="$scratch"

# given EXPECTED COMMAND...: the viewer that the command starts is given such arguments.
given() {
  expected=$1
  shift
  rm -f "$SEEN"
  mkfifo "$SEEN"
  "$@" >/dev/null &
  line=$(timeout 60 cat "$SEEN")
  printf '%s: %s\n' "$*" "$line"
  # shellcheck disable=SC2254  # a pattern
  case $line in
    $expected) ;;
    *) printf 'This is not %s\n' "$expected" && exit 1 ;;
  esac
}
