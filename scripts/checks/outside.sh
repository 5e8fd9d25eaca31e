# SPDX-License-Identifier: MIT
# Programs outside the project, on the installed library.
# They find it through CMake and through pkg-config, and are linked with the shared and with the static library.  Builds and runs them, and
# compares what the shared library exports with the headers.
# Arguments: [PREFIX]
# PREFIX is where the library is installed.  Without it, it is built and installed into
# a folder that is removed at the end.
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need "${build_packages[@]}" binutils pkgconf
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

prefix=${1:-}
if [[ -z $prefix ]]; then
  prefix=$scratch/installed
  build release hoplaunch_support hoplaunch_support_shared
  for component in library development; do
    cmake --install build/release --prefix "$prefix" --component "$component" >/dev/null
  done
fi
file() { find "$prefix/lib" -name "$1" -print -quit; } # in its folder for the machine, too
library=$(file libhoplaunch.so.1)

quickly=(-DCMAKE_UNITY_BUILD=ON) # the sources of the library together
if command -v ccache >/dev/null; then
  quickly+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi

# prints PROGRAM ROOT: the program prints what is expected, with that root after "DC=".
prints() {
  LD_LIBRARY_PATH=$(dirname "$library") "$1" 2>&1 |
    diff <(expected_outside "$2") -
}

# shared PROGRAM, not_shared PROGRAM: whether it takes the shared library.
shared() { readelf --dynamic "$1" | grep -q 'NEEDED.*libhoplaunch\.so\.1'; }
not_shared() { ! shared "$1"; }

# compile NAME FLAGS...: builds the programs by hand.
compile() {
  local name=$1
  shift
  (
    cd tests/outside
    g++ -std=c++20 -o "$scratch/$name" main.cpp "$@" &&
      g++ -std=c++20 -o "$scratch/${name}_named" main.cpp host.cpp "$@" &&
      g++ -std=c++20 -fvisibility=hidden -fvisibility-inlines-hidden \
        -o "$scratch/${name}_hidden" main.cpp "$@"
  )
}

# package_config OPTION...
package_config() {
  PKG_CONFIG_PATH=$(dirname "$(file hoplaunch.pc)") \
    pkg-config "$@" hoplaunch
}

# names NM-OPTION FILE: the first part of every name that the file defines, without what
# the compiler puts in front of it.
names() {
  nm "$1" --demangle --defined-only --format=just-symbols "$2" |
    sed -E 's/^(virtual thunk|non-virtual thunk) to //
            s/^(typeinfo name|typeinfo|vtable|VTT|guard variable) for //
            s/^void //; s/[^A-Za-z0-9_].*//' | sort -u | grep -v '^HOPLAUNCH_1$'
}

# The shared library exports what the headers declare, all of it and nothing else. (The
# namespace `internal`, of which a header has a part, is not for programs.)
exports_what_headers_declare() {
  local headers declared exported name
  headers=$(sed 's,//.*,,' "$prefix"/include/hoplaunch/*.h)
  exported=$(names --dynamic "$library")
  declared=$(for name in $(names --extern-only "$(file libhoplaunch.a)"); do
    if [[ $name != std && $name != internal ]] && grep -qw "$name" <<<"$headers"; then
      echo "$name"
    fi
  done)
  [[ -n $exported ]] && diff <(echo "$declared") <(echo "$exported")
}

# The examples, as a project of their own.
cmake -S examples -B "$scratch/examples" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  "-DCMAKE_PREFIX_PATH=$prefix" >/dev/null
cmake --build "$scratch/examples"
tutorial() {
  LD_LIBRARY_PATH=$(dirname "$library") "$scratch/examples/tutorial" -greeting=Welcome
}
welcomes() { [[ $(tutorial) == 'Welcome, world!' ]]; }
check 'the tutorial overrides its item' welcomes

cmake -S tests/outside -B "$scratch/cmake" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  "-DCMAKE_PREFIX_PATH=$prefix" >/dev/null
cmake --build "$scratch/cmake"
read -ra flags <<<"$(package_config --cflags --libs)"
read -ra static_flags <<<"$(package_config --static --cflags --libs)"
compile by_hand "${flags[@]}"
compile by_hand_static -static "${static_flags[@]}"

for program in cmake/hoplaunch by_hand; do
  check "$program is linked with the shared library" shared "$scratch/$program"
done
for program in cmake/static by_hand_static; do
  check "$program is not linked with the shared library" not_shared "$scratch/$program"
done
for program in cmake/hoplaunch cmake/static by_hand by_hand_static; do
  check "$program prints what is expected" prints "$scratch/$program" ''
  check "${program}_hidden prints what is expected" prints "$scratch/${program}_hidden" ''
  check "${program}_named has its own root" \
    prints "$scratch/${program}_named" 'host,DC=example,DC=org'
done
check 'exports' exports_what_headers_declare
check 'each exported name is in the map' diff <(scripts/exports "$(file libhoplaunch.a)") cmake/libhoplaunch.map
exports_what_is_named() {
  diff <(scripts/exports "$(file libhoplaunch.a)" | sed -n 's/^    \([^*].*\);$/\1/p; ' | sed 's/\[jm\]/m/') \
    <(nm --dynamic --defined-only --format=posix "$library" | sed 's/[ @].*//' |
      sed 's/^\(_ZN8DistName6resizeE\|_ZNK11configArrayixB5cxx11E\)j/\1m/' |
      grep -v '^HOPLAUNCH_1$' | LC_ALL=C sort -u)
}
check 'it exports these names alone' exports_what_is_named

# Without run-time type information each header compiles, or the first error says what is
# needed.
says_what_is_needed() {
  local header error refused=0
  for header in "$prefix"/include/hoplaunch/*.h; do
    if error=$("$1" -std=c++20 -fno-rtti -fsyntax-only -x c++ "$header" 2>&1); then
      continue
    fi
    refused=$((refused + 1))
    grep -m 1 'error:' <<<"$error" |
      grep -q 'hoplaunch needs run-time type information: compile without -fno-rtti' || return
  done
  ((refused == 5))
}
check 'without run-time type information' says_what_is_needed g++

# As a folder of another project, with the shared library and without it.
folder() {
  local build=$scratch/folder_$1
  cmake -S tests/outside/folder -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    "${quickly[@]}" "-DHOPLAUNCH_SHARED=$1" >"$scratch/said" 2>&1 &&
    cmake --build "$build" --target with_hoplaunch with_static >"$scratch/said" 2>&1 &&
    return
  cat "$scratch/said"
  return 1
}
for is_shared in ON OFF; do
  check "a folder of another project, HOPLAUNCH_SHARED=$is_shared" folder "$is_shared"
  for program in with_hoplaunch with_static; do
    check "$program prints what is expected" prints "$scratch/folder_$is_shared/$program" ''
  done
done
check 'with_hoplaunch is linked with the shared library' \
  shared "$scratch/folder_ON/with_hoplaunch"

# Installed without the shared library, and into folders with full paths: both of them, or
# one and the other below the prefix.
# installed NAME OPTION...: the programs are built with it and run.
installed() {
  local build=$scratch/installing place=$scratch/$1 library flags program
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release "${quickly[@]}" \
    -DHOPLAUNCH_TESTS=OFF -DHOPLAUNCH_HOPOPEN=OFF "-DCMAKE_INSTALL_PREFIX=$place/prefix" \
    "${@:2}" >/dev/null && cmake --build "$build" >/dev/null || return
  for component in library development; do
    cmake --install "$build" --component "$component" >/dev/null || return
  done
  library=$(dirname "$(dirname "$(find "$place" -name hoplaunch.pc)")")/libhoplaunch.so.1
  read -ra flags <<<"$(PKG_CONFIG_PATH=${library%/*}/pkgconfig pkg-config --cflags --libs hoplaunch)"
  compile "$1/by_hand" "${flags[@]}" &&
    cmake -S tests/outside -B "$place/outside" -G Ninja -DCMAKE_BUILD_TYPE=Release \
      "-Dhoplaunch_DIR=${library%/*}/cmake/hoplaunch" >/dev/null &&
    cmake --build "$place/outside" >/dev/null || return
  for program in "$place/by_hand" "$place/outside/"{hoplaunch,static}; do
    prints "$program" '' || return
  done
}
check 'installed without the shared library' installed static_only -DHOPLAUNCH_SHARED=OFF
check 'hoplaunch::hoplaunch is then the static library' \
  not_shared "$scratch/static_only/outside/hoplaunch"
full_lib="-DCMAKE_INSTALL_LIBDIR=$scratch/full/lib"
full_include="-DCMAKE_INSTALL_INCLUDEDIR=$scratch/full/include"
check 'full paths' installed full -DHOPLAUNCH_SHARED=ON "$full_lib" "$full_include"
check 'a full path of the library' installed full_lib \
  "${full_lib/full/full_lib}" -DCMAKE_INSTALL_INCLUDEDIR=headers
check 'a full path of the headers' installed full_include \
  -DCMAKE_INSTALL_LIBDIR=lib/here "${full_include/full/full_include}"

closing_line
