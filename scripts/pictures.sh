#!/usr/bin/env bash
# Copies screenshots of the last ./test --desktop from build/desktop/ to docs/images/: those
# of the names, or else new ones of all that are there already.
#   scripts/pictures.sh [NAME...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if (($# == 0)); then
  for picture in docs/images/*.png; do
    name=$(basename "$picture" .png)
    [[ ! -e build/desktop/$name.png ]] || set -- "$@" "$name"
  done
fi
for name; do
  cp -v "build/desktop/$name.png" docs/images/
done
