#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds everything for other machines, runs all tests there by qemu-user, compares what the
# programs print with what they print on amd64, and writes what happened into docs/machines.md.
# As root.
#
#   scripts/machines.sh [MACHINE...]    arm64, armhf, ppc64el, riscv64 and s390x, or these
#
# Each machine has an installation of Debian 13 of its own, scripts/minimal_debian.sh, with a
# cross compiler.  A test that qemu-user cannot run is left out by its name, which is in
# tests/emulation.tsv with the reason.  What is built and printed is in build/machines/, or in
# the folder that HOPLAUNCH_MACHINES names; what was built there is used again.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh

document=docs/machines.md
left_out=tests/emulation.tsv
# The name in the compiler's, and the one of qemu-user.
declare -A compilers=([arm64]=aarch64-linux-gnu [armhf]=arm-linux-gnueabihf
  [ppc64el]=powerpc64le-linux-gnu [riscv64]=riscv64-linux-gnu [s390x]=s390x-linux-gnu)
declare -A emulators=([arm64]=aarch64 [armhf]=arm [ppc64el]=ppc64le [riscv64]=riscv64 [s390x]=s390x)

# --- Inside -------------------------------------------------------------------------

# inside MACHINE: builds in /result/build, of a tree that stays, too, so that only what changed is
# compiled anew.  Then the rest, where the kernel starts programs of the machine by qemu-user: it
# has a list of what it starts so for each user namespace.
inside() {
  local arguments=() targets=("${compared[@]}")
  [[ -d /result/source ]] || git clone -q . /result/source
  git -C /result/source fetch -q "$PWD" HEAD
  git -C /result/source checkout -q --detach FETCH_HEAD
  mkdir /src
  mount --bind /result/source /src
  cd /src
  export CCACHE_DIR=/result/ccache CCACHE_SLOPPINESS=pch_defines,time_macros
  if [[ $1 != amd64 ]]; then
    targets+=(all)
    arguments=(-DCMAKE_SYSTEM_NAME=Linux "-DCMAKE_SYSTEM_PROCESSOR=${emulators[$1]}"
      "-DCMAKE_CXX_COMPILER=${compilers[$1]}-g++")
  fi
  cmake -G Ninja -S . -B /result/build -DCMAKE_BUILD_TYPE=Release -DHOPLAUNCH_WERROR=ON \
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache "${arguments[@]}"
  cmake --build /result/build -j "$(nproc)" --target "${targets[@]}"
  [[ $1 == amd64 || -d /result/userland ]] || fetch_userland "$1"
  exec unshare --user --map-users=0,0,65536 --map-groups=0,0,65536 --mount --ipc --pid --fork \
    --kill-child --mount-proc bash scripts/machines.sh emulated "$1"
}

# fetch_userland MACHINE: the shell and what else tests start.  hopexplain knows that the kernel
# of that machine executes none of this one.
fetch_userland() {
  local package
  (cd /tmp && apt-get update -qq && apt-get download -qq "dash:$1" "coreutils:$1")
  for package in /tmp/dash_*.deb /tmp/coreutils_*.deb; do
    dpkg -x "$package" /result/userland
  done
}

# emulated MACHINE
emulated() {
  local status=0 program
  if [[ $1 != amd64 ]]; then
    emulate "${emulators[$1]}"
    ipcmk --semaphore 1 >/dev/null # a new namespace begins with set 0, which the library refuses
    for program in dash env true; do
      mount --bind "/result/userland/usr/bin/$program" "/usr/bin/$program"
    done
    run_tests "$1" || status=$?
  fi
  rm -rf /texts && mkdir /texts
  (cd /texts && print_texts >/result/texts 2>&1) || status=$?
  return "$status"
}

# emulate NAME: from now on programs are started by that emulator.  It writes a line to the
# standard error of a program that a signal ends, where many tests expect nothing; so a copy of
# it is used in which this text ends before it begins.
emulate() {
  mkdir /emulators
  LC_ALL=C sed 's/q\(emu: uncaught target signal\)/\x00\1/' "/usr/bin/qemu-$1" >"/emulators/$1-binfmt-P"
  chmod +x "/emulators/$1-binfmt-P"
  mount -t binfmt_misc binfmt_misc /proc/sys/fs/binfmt_misc
  sed 's|:/[^:]*/|:/emulators/|' "/usr/share/qemu/binfmt.d/qemu-$1.conf" \
    >/proc/sys/fs/binfmt_misc/register
}

# names MACHINE: the tests that are left out there.
names() { awk -F '\t' -v m="$1" '/^[^#]/ && ($1 == "all" || $1 == m) { print $2 }' "$left_out"; }

# run_tests MACHINE: all but those.  A name that no test has is a fault.
run_tests() {
  local known status=0 name names
  known=$(ctest --test-dir /result/build -N | sed -n 's/^ *Test *#[0-9]*: //p')
  while read -r name; do
    grep -qxF "$name" <<<"$known" || {
      printf '%s: no test has the name %s\n' "$left_out" "$name"
      status=1
    }
  done < <(names "$1")
  # shellcheck disable=SC2016  # of sed
  names=$(names "$1" | sed 's/[][().*+?^$|\\]/\\&/g' | paste -sd '|')
  # What runs in the background ignores signals.
  env --default-signal ctest --test-dir /result/build -j "$(nproc)" --output-on-failure \
    --output-junit /result/tests.xml -E "^($names)\$" >/result/tests.log 2>&1 || status=1
  grep -E '^ *[0-9]+/[0-9]+ Test .*\*\*\*' /result/tests.log || true
  return "$status"
}

# --- What is compared ----------------------------------------------------------------

compared=(hoplaunch hopexplain hopopen demo_viewer machine_texts greet names uris)

# print_texts: what the programs print, without time and process.
print_texts() {
  local built=/result/build link
  mkdir programs
  for link in xtigervncviewer vncviewer putty; do
    cp "$built/demo_viewer" "programs/$link" # a link to another name counts as another program
  done
  mkdir -p share/hoplaunch && cp -r /src/viewers share/hoplaunch
  export PATH=$PWD/programs:$built:$PATH HOME=$PWD/home XDG_DATA_DIRS=$PWD/share
  mkdir home
  for link in tests/machine_texts examples/{greet,names,uris}; do
    said "$built/$link"
  done
  said hoplaunch -log=launch.log 'vnc://localhost:5900/?shared=1'
  said hoplaunch -log=launch.log -style=separate 'ssh://user@host/?a=%C3%A9'
  said hopexplain 'vnc://h:5900/?view=a%2520b'
  said hopexplain -format=json 'vnc://h:5900/?view=a%2520b'
  said hopopen --log launch.log 'vnc://user@[::1]:5901?ViewOnly=true'
  said hopopen --list --format json
  while IFS= read -r link; do
    said hopopen --dry-run --format json -- "$link"
  done < <(grep '^[^ #]' /src/tests/links.txt)
  sed -E 's/[0-9]{8}T[0-9]{6}/TIME/; s/\[[0-9]+\]/[PROCESS]/' launch.log
}

# said COMMAND...: its output and status.
said() {
  local status=0
  printf '$ %s\n' "$*"
  "$@" 2>&1 </dev/null || status=$?
  printf 'status %d\n' "$status"
}

# --- Outside --------------------------------------------------------------------------

home=$(realpath -m "${HOPLAUNCH_MACHINES:-build/machines}")

# prepare MACHINE: the installation.
prepare() {
  local packages=(ccache cmake ninja-build libcli11-dev libtomlplusplus-dev nlohmann-json3-dev
    googletest locales python3 strace git)
  if [[ $1 == amd64 ]]; then
    packages+=(g++)
  else
    packages+=("g++-${compilers[$1]}" qemu-user "libc6:$1" "libstdc++6:$1" "libgcc-s1:$1")
  fi
  scripts/minimal_debian.sh make "$home/$1" trixie "${packages[@]}"
}

# try MACHINE
try() {
  local log=$home/$1.log
  rm -f "$home/$1/result"/{tests.xml,tests.log,texts}
  prepare "$1" && scripts/minimal_debian.sh run "$home/$1" "$home/$1/result" \
    bash scripts/machines.sh inside "$1" >"$log" 2>&1 || return
  ! grep -E ': warning: |CMake (Deprecation )?Warning' "$log" || return
  if [[ $1 != amd64 ]]; then
    diff "$home/amd64/result/texts" "$home/$1/result/texts"
  fi
}

# count MACHINE ATTRIBUTE: of what ctest reports.
count() {
  sed -n "/<testsuite/,/>/s/.*[[:space:]]$2=\"\([0-9]*\)\".*/\1/p" \
    "$home/$1/result/tests.xml" 2>/dev/null | head -n 1
}

# row MACHINE: of the table.
row() {
  local tests failures skipped texts
  if [[ ! -s $home/$1/result/tests.xml ]]; then
    printf '| %s | **did not run** | | | | | |\n' "$1"
    return
  fi
  tests=$(count "$1" tests)
  failures=$(count "$1" failures)
  skipped=$(($(count "$1" skipped) + $(count "$1" disabled)))
  texts='**differ**'
  cmp -s "$home/amd64/result/texts" "$home/$1/result/texts" && texts='the same'
  printf '| %s | %s | %d | %d | %d | %d | %s |\n' "$1" "$(git rev-parse --short=10 HEAD)" \
    "$((${tests:-0} - ${failures:-0} - skipped))" "${failures:--1}" "$skipped" \
    "$(names "$1" | wc -l)" "$texts"
}

# keep MACHINE: puts its row into the document.
keep() {
  local line
  line=$(row "$1")
  printf '%s\n' "$line"
  awk -v machine="| $1 |" -v line="$line" 'index($0, machine) == 1 { $0 = line } { print }' \
    "$document" >"$home/document"
  cat "$home/document" >"$document"
}

main() {
  local machine
  need_root 'it makes installations of Debian'
  mkdir -p "$home"
  check amd64 try amd64
  for machine; do
    check "$machine" try "$machine"
    keep "$machine"
  done
  closing_line
}

case ${1:-} in
  inside | emulated) "$@" ;;
  *)
    (($# > 0)) || set -- arm64 armhf ppc64el riscv64 s390x
    main "$@"
    ;;
esac
