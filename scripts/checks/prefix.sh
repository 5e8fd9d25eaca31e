# SPDX-License-Identifier: MIT
# That what is installed works below any prefix, and where it was moved to.
# Arguments: [BUILD-FOLDER]
# shellcheck shell=bash source=scripts/lib.sh
set -uo pipefail
source scripts/lib.sh
need "${build_packages[@]}" desktop-file-utils libglib2.0-bin pkgconf
(($# > 0)) || build release || exit 1
build=$(realpath "${1:-build/release}")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# --- Desktop entries -------------------------------------------------------------

# configured PREFIX: makes the entries for that prefix, and puts a program there that writes
# what it is called with, and by which name.
configured() {
  cmake -S . -B "$scratch/build" -G Ninja -DHOPLAUNCH_TESTS=OFF \
    "-DCMAKE_INSTALL_PREFIX=$1" && mkdir -p "$1/bin" || return
  # shellcheck disable=SC2016  # the program's
  printf '%s\n' '#!/bin/sh' 'printf "<%s>" "$0" "$@" >"$SAID"' >"$1/bin/hopopen"
  chmod +x "$1/bin/hopopen"
}

# starts PREFIX ENTRY: GLib starts that program with the link.
starts() {
  local said=$scratch/said link='ssh://h/?a=b%20c&d'
  rm -f "$said"
  mkfifo "$said"
  SAID=$said gio launch "$scratch/build/$2.desktop" "$link" &
  diff <(printf '<%s>' "$1/bin/hopopen" -- "$link" && echo) <(timeout 20 cat "$said" && echo)
}

# shellcheck disable=SC2016  # a name
for name in plain 'a blank' 'a%cent' 'a $dollar' 'a"quote' 'a`tick' "an'apostrophe" 'ä~b#c'; do
  prefix=$scratch/prefix/$name
  check "entries for \"$name\"" configured "$prefix"
  for entry in hopopen hoplaunch-ssh; do
    check "\"$name\": $entry is valid" silent desktop-file-validate "$scratch/build/$entry.desktop"
    check "\"$name\": $entry starts the program" starts "$prefix" "$entry"
  done
done

# --- All files -------------------------------------------------------------------

# tree: the files of the packages, except for those that only packages have.
tree() {
  sed -nE 's,^[^ ]+ /usr/,,p' tests/data/package_files.txt |
    grep -vE '^share/(doc/[^/]*/(changelog.*|copyright|NEWS.*)|doc/hoplaunch/(reference/.*|[a-z_]*\.md|images/[a-z_]*\.svg)|doc-base/.*|lintian/.*)$' |
    sed -E "s,^lib/MACHINE/,lib/,; s,^(share/man/.*)\.gz$,\1,; s,-none\.cmake$,-release.cmake,"
  printf 'share/doc/hoplaunch/viewers.md\n'
  (cd include && printf 'include/hoplaunch/%s\n' *)
}
installs_all() {
  DESTDIR=$scratch/root cmake --install "$build" >/dev/null &&
    diff <(tree | LC_ALL=C sort) <(cd "$scratch/root/$prefix" && find . ! -type d | cut -c 3- | LC_ALL=C sort)
}
prefix=$(sed -n 's/^CMAKE_INSTALL_PREFIX:PATH=//p' "$build/CMakeCache.txt")
check 'DESTDIR has all files, below the prefix' installs_all

# --- The library, moved ---------------------------------------------------------------

# found NAME: programs are built with the library that was moved there, and run.
found() {
  local moved=$scratch/moved/$1 flags
  mkdir -p "$moved" && cp -a "$scratch/root/$prefix/." "$moved" || return
  mapfile -t flags < <(PKG_CONFIG_PATH=$moved/lib/pkgconfig pkg-config --cflags --libs hoplaunch | xargs -n 1)
  printf '%s\n' "${flags[@]}"
  g++ -std=c++20 -o "$scratch/by_hand" tests/outside/main.cpp "${flags[@]}" &&
    prints "$scratch/by_hand" "$moved/lib" || return
  rm -rf "$scratch/outside"
  cmake -S tests/outside -B "$scratch/outside" -G Ninja "-Dhoplaunch_DIR=$moved/lib/cmake/hoplaunch" &&
    cmake --build "$scratch/outside" --target hoplaunch &&
    prints "$scratch/outside/hoplaunch" "$moved/lib"
}
prints() { diff <(expected_outside '') <(LD_LIBRARY_PATH=$2 timeout 20 "$1" 2>&1); }
for name in plain 'a blank'; do
  check "the library is found in \"$name\"" found "$name"
done

closing_line
