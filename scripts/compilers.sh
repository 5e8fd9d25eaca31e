#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds everything with each compiler that is supported, each in the oldest Debian that has
# it, runs all tests, and writes what happened into docs/compilers.md.  A warning of a compiler,
# a linker or CMake is a failure.  As root.
#
#   scripts/compilers.sh [NAME...]          all, or those of --list
#   scripts/compilers.sh --build [NAME...]  builds only, and writes nothing into the document
#   scripts/compilers.sh --list             what there is
#
# What they print is in build/compilers/, or in the folder that HOPLAUNCH_COMPILERS names.
# ccache keeps what was compiled there, with its warnings.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh

document=docs/compilers.md

# Release and compiler, the oldest of each kind first.
compilers=(
  'bookworm g++-12' 'trixie g++-13' 'trixie g++-14' 'sid g++-15' 'sid g++-16'
  'bookworm clang++-14' 'bookworm clang++-19' 'sid clang++-23'
)
# Debian 13 has the same clang as 12, with a newer C++ library.
others=('trixie clang++-19')
# The oldest and the newest of each kind are tried with further flags, too.  Those that have
# nothing to do with each other are tried together.
with_flags=(g++-12 g++-16 clang++-14 clang++-23)

# What each release needs, so that one installation does for all its compilers.  gcc runs make
# for -flto, and warns where there is none.
declare -A packages=(
  [bookworm]='make g++-12 clang-14 clang-19 llvm-14 libc++-14-dev libc++abi-14-dev libunwind-14-dev'
  [trixie]='make g++-13 g++-14 clang-19'
  [sid]='make g++-15 g++-16 clang-23 llvm-23 libc++-23-dev libc++abi-23-dev libunwind-23-dev'
)

# list: NAME RELEASE COMPILER KIND of each build.
list() {
  local row release compiler kind
  for row in "${compilers[@]}"; do
    read -r release compiler <<<"$row"
    printf '%s %s %s default\n' "$compiler" "$release" "$compiler"
    [[ " ${with_flags[*]} " == *" $compiler "* ]] || continue
    for kind in c++23:assertions:unsigned-char lto; do
      printf '%s,%s %s %s %s\n' "$compiler" "$kind" "$release" "$compiler" "$kind"
    done
    [[ $compiler != clang* ]] ||
      printf '%s,libc++ %s %s libc++\n' "$compiler" "$release" "$compiler"
  done
  for row in "${others[@]}"; do
    read -r release compiler <<<"$row"
    printf '%s,%s %s %s default\n' "$compiler" "$release" "$release" "$compiler"
  done
}

# --- Inside ---------------------------------------------------------------------------

# inside COMPILER KIND [--build]
inside() {
  local version=${1##*-} flag arguments=()
  export CXX=$1 CXXFLAGS=-fpch-preprocess CCACHE_DIR=/result/ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
  # What ccache needs so that it keeps what uses precompiled headers, too.
  export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
  [[ $1 != clang* ]] || CXXFLAGS='-Xclang -fno-pch-timestamp'
  printf '%s' "$("$1" -dumpfullversion 2>/dev/null || "$1" -dumpversion)" >/result/version
  for flag in ${2//:/ }; do
    case $flag in
      c++23) arguments+=(-DCMAKE_CXX_STANDARD=23) ;;
      assertions) CXXFLAGS+=' -D_GLIBCXX_ASSERTIONS' ;;
      unsigned-char) CXXFLAGS+=' -funsigned-char' ;;
      libc++) CXXFLAGS+=' -stdlib=libc++' ;;
      lto)
        # What packs libraries must understand the objects.
        local tools=/usr/bin/llvm-%s-$version
        if [[ $1 == g++* ]]; then
          CXXFLAGS+=' -flto=auto' # with -flto alone it uses one processor, and warns of that
          tools=/usr/bin/gcc-%s-$version
        else
          CXXFLAGS+=' -flto'
        fi
        # shellcheck disable=SC2059
        arguments+=("-DCMAKE_AR=$(printf "$tools" ar)" "-DCMAKE_RANLIB=$(printf "$tools" ranlib)")
        ;;
    esac
  done
  [[ $2 == default ]] || arguments+=(-DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=12)
  export HOPLAUNCH_CMAKE_ARGS=${arguments[*]} HOPLAUNCH_CTEST_ARGS='--parallel 2'
  cmake --preset release "${arguments[@]}" && cmake --build --preset release -- -k 0 -j "$(nproc)" &&
    { [[ ${3:-} == --build ]] || ./test; }
}

# --- Outside --------------------------------------------------------------------------

# built NAME RELEASE COMPILER KIND [--build]: whether it built and passed, with no warning.
built() {
  local status=0 began=$SECONDS log=$home/$1.log verdict commit more=()
  commit=$(git rev-parse --short=10 HEAD)
  read -ra more <<<"${packages[$2]}"
  mkdir -p "$home/$2/result"
  : >"$home/$2/result/version"
  { scripts/minimal_debian.sh make "$home/$2" "$2" "${build_packages[@]}" ccache googletest locales \
    strace "${more[@]}" && scripts/minimal_debian.sh run "$home/$2" "$home/$2/result" \
    bash scripts/compilers.sh inside "${@:3}"; } >"$log" 2>&1 || status=$?
  if grep -E ': warning: |CMake( Deprecation)? Warning' "$log" | LC_ALL=C sort | uniq -c; then
    verdict='**warned**'
  elif ((status == 0)); then
    verdict=$(tail -n 1 "$log")
  else
    tail -n 20 "$log"
    verdict="**failed**: $(grep -E '^[0-9]+ passed, ' "$log" || echo "status $status")"
  fi
  printf '%s\t' "$verdict" "$(<"$home/$2/result/version")" "$((SECONDS - began))" \
    "$commit" >"$home/$1${5:-}.tsv"
  [[ $verdict != *'**'* ]]
}

# table: what happened with all builds.  Those that did not run here keep their rows.
table() {
  local name release compiler kind verdict version seconds commit
  printf '| compiler | version | Debian | tried with | result | seconds | commit |\n'
  printf '|---|---|---|---|---|---|---|\n'
  while read -r name release compiler kind; do
    if [[ -e $home/$name.tsv ]]; then
      IFS=$'\t' read -r verdict version seconds commit _ <"$home/$name.tsv" || true
    elif row "$compiler" "$release" "$kind"; then
      continue
    else
      verdict='**did not run**' version='' seconds='' commit=''
    fi
    # shellcheck disable=SC2016  # of Markdown
    printf '| `%s` | %s | %s | %s | %s | %s | %s |\n' "$compiler" "$version" "$release" "$kind" \
      "$verdict" "$seconds" "$commit"
  done < <(list)
}

# row COMPILER RELEASE KIND: that of the document, if there is one.
row() {
  awk -F ' *[|] *' -v c="\`$1\`" -v r="$2" -v k="$3" '
    $2 == c && $4 == r && $5 == k { print; found = 1; exit }
    END { exit !found }
  ' "$document"
}

# keep: puts the table into the document.
keep() {
  TABLE=$(table) awk '
    /^<!-- compilers -->$/ { print; print ""; print ENVIRON["TABLE"]; print ""; skipping = 1 }
    /^<!-- end of compilers -->$/ { skipping = 0 }
    !skipping { print }
  ' "$document" >"$home/document"
  cat "$home/document" >"$document"
}

main() {
  local name release compiler kind began build=()
  need_root 'it makes installations of Debian'
  [[ ${1:-} != --build ]] || { build=(--build) && shift; }
  home=$(realpath -m "${HOPLAUNCH_COMPILERS:-build/compilers}")
  mkdir -p "$home"
  while read -r name release compiler kind; do
    (($# == 0)) || [[ " $* " == *" $name "* ]] || continue
    began=$SECONDS
    check "$name" built "$name" "$release" "$compiler" "$kind" "${build[@]}" </dev/null
    printf '%-24s %-9s %5d s  %s\n' "$name" "$release" $((SECONDS - began)) \
      "$(tail -n 1 "$home/$name.log")"
    ((${#build[@]} > 0)) || keep
  done < <(list)
  closing_line
}

case ${1:-} in
  --list) list | column -t ;;
  inside) "$@" ;;
  *) main "$@" ;;
esac
