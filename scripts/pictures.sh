#!/usr/bin/env bash
# Copies screenshots of the last ./test --desktop from build/desktop/ to docs/images/, less
# the empty screen around the windows: those of the names, or else new ones of all that are
# there already.
#   scripts/pictures.sh [NAME...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh
need imagemagick

if (($# == 0)); then
  for picture in docs/images/*.png; do
    name=$(basename "$picture" .png)
    [[ ! -e build/desktop/$name.png ]] || set -- "$@" "$name"
  done
fi
for name; do
  convert "build/desktop/$name.png" -bordercolor '#495057' -border 1 -trim +repage -border 8 \
    -strip "docs/images/$name.png"
  printf 'docs/images/%s.png\n' "$name"
done
