#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Writes cmake/click.ld: which functions a click calls, as valgrind sees them, so that the
# linker puts them together.
#   bash cmake/click_order.sh [HOPOPEN]    the program of build/release, if none is named
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh
need binutils gcc valgrind

hopopen=${1:-build/release/hopopen}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder/programs" "$folder/share/hoplaunch"
cp -rp viewers "$folder/share/hoplaunch"
for name in xtigervncviewer remmina putty sdl-freerdp3; do
  cp /bin/true "$folder/programs/$name"
done
started=("PATH=$folder/programs" "XDG_DATA_DIRS=$folder/share")
sleep 3  # what was changed just now is not in the catalog
env -i "${started[@]}" "HOME=$folder/catalog" "$hopopen" --list >/dev/null

count=0
for home in catalog new; do
  for link in vnc://localhost:5900 'vnc://user@[::1]?ViewOnly=true&QualityLevel=5' \
    ssh://user@host rdp://user@host; do
    count=$((count + 1))
    env -i "${started[@]}" "HOME=$folder/$home" "$(command -v valgrind)" -q --tool=callgrind \
      --demangle=no --dump-before=execve --callgrind-out-file="$folder/calls$count" \
      "$hopopen" "$link" >/dev/null 2>&1 || true
  done
done

# The C library's sources are compiled to one section each, so its files are named.
nm -A --defined-only "$(gcc -print-file-name=libc.a)" 2>/dev/null |
  sed -nE 's/^[^:]*:([^:]*):[0-9a-f]+ [TtWi] (.*)$/\2 \1/p' | sort -u >"$folder/objects"
sed -nE "s/^c?fn=\([0-9]+\) ([^ ']+).*/\1/p" "$folder"/calls*.1 | LC_ALL=C sort -u |
  LC_ALL=C awk '
    NR == FNR { objects[$1] = objects[$1] " " $2; next }
    $1 in objects {
      count = split(objects[$1], of, " ")
      for (i = 1; i <= count; i++) print "    *libc.a:" of[i] "(.text .text.*)"
      next
    }
    /^[A-Za-z_][A-Za-z0-9_.]*$/ {
      gsub("C1E", "C2E")  # a constructor of two names is compiled under the second
      gsub("C1I", "C2I")
      gsub("D1Ev", "D2Ev")
      print "    *(.text." $1 " .text.startup." $1 ")"
    }
  ' "$folder/objects" - | LC_ALL=C sort -u >"$folder/sections"

{
  cat <<'TEXT'
/* Which functions a click calls, so that they are side by side: what is scattered over a
   statically linked program has a page fault for each place.  cmake/click_order.sh writes
   this; a pattern that matches nothing does no harm. */
SECTIONS
{
  .text.click :
  {
TEXT
  cat "$folder/sections"
  printf '  }\n}\nINSERT BEFORE .text;\n'
} >cmake/click.ld
printf '%d patterns\n' "$(wc -l <"$folder/sections")"
