#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds everything with each compiler that is supported, each in the oldest Debian that has
# it, and runs all tests.  A warning of a compiler or of CMake is a failure.  As root.
#
#   scripts/compilers.sh [NAME...]    all, or those of --list
#   scripts/compilers.sh --list       what there is
#
# What they print is in build/compilers/, or in the folder that HOPLAUNCH_COMPILERS names.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh

# Release and compiler, the oldest of each kind first.
compilers=(
  'bookworm g++-12' 'trixie g++-13' 'trixie g++-14' 'sid g++-15' 'sid g++-16'
  'bookworm clang++-14' 'bookworm clang++-19' 'sid clang++-23'
)
# The oldest and the newest of each kind are tried with further flags, too.
with_flags=(g++-12 g++-16 clang++-14 clang++-23)
declare -A flags=([assertions]=-D_GLIBCXX_ASSERTIONS [lto]=-flto [unsigned-char]=-funsigned-char
  [libc++]=-stdlib=libc++)

# What each release needs, so that one installation does for all its compilers.
declare -A packages=(
  [bookworm]='g++-12 clang-14 clang-19 llvm-14 lld-14 libc++-14-dev libc++abi-14-dev
    libunwind-14-dev'
  [trixie]='g++-13 g++-14'
  [sid]='g++-15 g++-16 clang-23 llvm-23 lld-23 libc++-23-dev libc++abi-23-dev
    libunwind-23-dev'
)

# list: NAME RELEASE COMPILER KIND of each build.
list() {
  local row release compiler kind
  for row in "${compilers[@]}"; do
    read -r release compiler <<<"$row"
    printf '%s %s %s default\n' "$compiler" "$release" "$compiler"
    [[ " ${with_flags[*]} " == *" $compiler "* ]] || continue
    for kind in c++23 assertions lto unsigned-char; do
      printf '%s,%s %s %s %s\n' "$compiler" "$kind" "$release" "$compiler" "$kind"
    done
    [[ $compiler != clang* ]] ||
      printf '%s,libc++ %s %s libc++\n' "$compiler" "$release" "$compiler"
  done
}

# --- Inside ---------------------------------------------------------------------------

# inside COMPILER KIND
inside() {
  local version=${1#*++} arguments=()
  export CXX=$1 CXXFLAGS=${flags[$2]:-}
  case $2 in
    c++23) arguments=(-DCMAKE_CXX_STANDARD=23) ;;
    lto)
      # What packs libraries must understand the objects.
      if [[ $1 == g++* ]]; then
        arguments=("-DCMAKE_AR=/usr/bin/gcc-ar$version" "-DCMAKE_RANLIB=/usr/bin/gcc-ranlib$version")
      else
        export LDFLAGS=-fuse-ld=lld
        arguments=("-DCMAKE_AR=/usr/bin/llvm-ar$version" "-DCMAKE_RANLIB=/usr/bin/llvm-ranlib$version")
      fi
      ;;
  esac
  HOPLAUNCH_CMAKE_ARGS="${arguments[*]}" exec ./test
}

# --- Outside --------------------------------------------------------------------------

home=$(realpath -m "${HOPLAUNCH_COMPILERS:-build/compilers}")

# built RELEASE COMPILER KIND LOG
built() {
  local more=()
  read -ra more <<<"${packages[$1]//$'\n'/ }"
  scripts/minimal_debian.sh make "$home/$1" "$1" "${build_packages[@]}" googletest locales strace \
    "${more[@]}" &&
    scripts/minimal_debian.sh run "$home/$1" "$home/$1/result" \
      bash scripts/compilers.sh inside "$2" "$3" >"$4" 2>&1 || return
  ! grep -E ': warning: |CMake (Deprecation )?Warning' "$4"
}

main() {
  local name release compiler kind began
  need_root 'it makes installations of Debian'
  mkdir -p "$home"
  while read -r name release compiler kind; do
    (($# == 0)) || [[ " $* " == *" $name "* ]] || continue
    began=$SECONDS
    check "$name" built "$release" "$compiler" "$kind" "$home/$name.log"
    printf '%-24s %-9s %5d s  %s\n' "$name" "$release" $((SECONDS - began)) \
      "$(tail -n 1 "$home/$name.log")"
  done < <(list)
  closing_line
}

case ${1:-} in
  --list) list | column -t ;;
  inside) "$@" ;;
  *) main "$@" ;;
esac
