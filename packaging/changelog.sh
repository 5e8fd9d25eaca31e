#!/usr/bin/env bash
# Turns CHANGELOG.md into a changelog in Debian's form, compressed.
#   packaging/changelog.sh MAINTAINER OUTPUT
# The date of a version that is not released yet is SOURCE_DATE_EPOCH, or else now.
set -euo pipefail
source=$(dirname "${BASH_SOURCE[0]}")/../CHANGELOG.md
maintainer=$1
output=$2

# One bullet, from the text of an item.
bullet() {
  if [[ -n $1 ]]; then
    printf '%s\n' "$1" | fmt --width=76 | sed '1s/^/  * /; 2,$s/^/    /'
  fi
}

# The last line of a version's entry.
signature() {
  if [[ -n $1 ]]; then
    printf '\n -- %s  %s\n\n' "$maintainer" "$(LC_ALL=C date --utc --date="$1" '+%a, %d %b %Y %T %z')"
  fi
}

convert() {
  local line date='' item=''
  while IFS= read -r line; do
    if [[ $line == '  '* ]]; then
      item+=" ${line#  }"
      continue
    fi
    bullet "$item"
    item=''
    if [[ $line =~ ^'## ['(.*)'] - '(.*)$ ]]; then
      signature "$date"
      printf 'hoplaunch (%s) unstable; urgency=medium\n\n' "${BASH_REMATCH[1]}"
      date=${BASH_REMATCH[2]/Unreleased/@${SOURCE_DATE_EPOCH:-$EPOCHSECONDS}}
    elif [[ -n $date && $line == '- '* ]]; then
      item=${line#- }
    fi
  done
  bullet "$item"
  signature "$date"
}

convert <"$source" | gzip -9n >"$output"
