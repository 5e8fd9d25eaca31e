# SPDX-License-Identifier: MIT
# Sourced by the project's scripts, in the top folder: installing what is missing, building,
# checking and counting.
# shellcheck shell=bash

# --- Installing ----------------------------------------------------------------

# need PACKAGE...: ensures that the packages are installed.  Installs them as root or
# through sudo.  Where that is not possible, says what to do and ends the script.
need() {
  local missing as_root=() status=0
  mapfile -t missing < <(not_installed "$@")
  if ((${#missing[@]} == 0)); then
    return
  fi
  if ((EUID != 0)); then
    as_root=(sudo)
    [[ -t 0 ]] || as_root+=(--non-interactive)
    command -v sudo >/dev/null || say_command "${missing[@]}"
  fi
  printf 'Installing: %s\n' "${missing[*]}" >&2
  # Without the mode, a package source that fails is only warned of.
  "${as_root[@]}" apt-get update -qq -o APT::Update::Error-Mode=any >&2 || status=$?
  ((status == 0)) || say_failure "$status" 'apt-get update' "${missing[@]}"
  # Another program that installs packages, such as the desktop's updates, is waited for.
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq -o DPkg::Lock::Timeout=600 --no-install-recommends "${missing[@]}" \
    >&2 || status=$?
  ((status == 0)) || say_failure "$status" 'apt-get install' "${missing[@]}"
}

# not_installed PACKAGE...: those that are not.
not_installed() {
  local package
  for package in "$@"; do
    if [[ $(dpkg-query -W -f='${Status}' "$package" 2>/dev/null) != *' installed' ]]; then
      printf '%s\n' "$package"
    fi
  done
}

# say_command PACKAGE...: ends the script for a user who may not install packages.
say_command() {
  printf 'Missing packages.  As root, type:\n\n  %s && %s %s\n\n' 'apt-get update' \
    'apt-get install -y --no-install-recommends' "$*" >&2
  exit 1
}

# say_failure STATUS WHAT PACKAGE...: ends the script after that command failed.
say_failure() {
  local package why
  (($1 != 1 || EUID == 0)) || say_command "${@:3}" # of sudo: apt-get has others
  printf '\n' >&2
  for package in $(not_installed "${@:3}"); do
    why=
    if [[ $2 == *install && $(LC_ALL=C apt-cache policy "$package" 2>/dev/null) != *'Candidate: '[^\(]* ]]; then
      why=': no package source has it'
    fi
    printf 'The package %s was not installed%s.\n' "$package" "$why" >&2
  done
  printf '%s\n' "\"$2\" failed with status $1; the lines above say why.  Repair the package" \
    'sources, or install the packages in another way, and start again.' >&2
  exit 1
}

# need_root WHY: ends the script with what it needs root for, unless it has it.
need_root() {
  ((EUID == 0)) && return
  printf '%s needs root: %s.\n' "$0" "$1" >&2
  exit 1
}

# The packages that building needs.
build_packages=(g++ cmake ninja-build libcli11-dev libtomlplusplus-dev nlohmann-json3-dev)
# Those that the Debian packages need, too.
# shellcheck disable=SC2034  # of other scripts
package_packages=(build-essential debhelper doxygen git graphviz lintian pkg-kde-tools xz-utils)

# --- Building ------------------------------------------------------------------

# quietly LOG COMMAND...: what the command prints goes to the file.  Its steps are shown while
# it runs, and the last lines if it fails.
quietly() {
  local log=$1 status=0
  shift
  mkdir -p "$(dirname "$log")"
  "$@" 2>&1 | tee "$log" | show_steps >&2 || status=${PIPESTATUS[0]}
  if ((status != 0)); then
    printf '\n' >&2
    tail -n 40 "$log" >&2
    printf '\nThis failed.  All that was printed is in %s\n' "$(realpath "$log")" >&2
    return 1
  fi
}

# show_steps: of what a build prints, on a terminal each line instead of the one before,
# otherwise the steps, such as "[3/120] Building ...", one a line.
show_steps() {
  local line wide
  if [[ ! -t 2 || ${TERM:-dumb} == dumb ]]; then
    grep --line-buffered '^\[[0-9]*/[0-9]*\] ' || true
    return
  fi
  read -r _ wide < <(stty size <&2 2>/dev/null) || true
  ((${wide:=80} > 1)) || wide=80
  while IFS= read -r line; do
    line=${line//[[:cntrl:]]/ }
    printf '\r\e[K%s' "${line:0:wide - 1}"
  done
  printf '\r\e[K'
}

# build PRESET [TARGET...]: configures and builds these targets, or all, in build/PRESET.
# HOPLAUNCH_CMAKE_ARGS adds arguments to the configuration.
build() {
  need "${build_packages[@]}"
  quietly "build/$1/build.log" build_targets "$@"
}
build_targets() {
  local preset=$1 more
  shift
  read -ra more <<<"${HOPLAUNCH_CMAKE_ARGS:-}"
  cmake --preset "$preset" "${more[@]}" && cmake --build --preset "$preset" ${1:+--target "$@"}
}

# --- Other systems -----------------------------------------------------------

# furnish_devices FOLDER: what programs expect in /dev of another system.
furnish_devices() {
  local device
  mount -t tmpfs -o mode=755 tmpfs "$1"
  mkdir "$1/shm" "$1/pts"
  for device in full null random tty urandom zero; do
    touch "$1/$device"
    mount --bind "/dev/$device" "$1/$device"
  done
  ln -s pts/ptmx "$1/ptmx"
  ln -s /proc/self/fd "$1/fd"
  ln -s fd/0 "$1/stdin"
  ln -s fd/1 "$1/stdout"
  ln -s fd/2 "$1/stderr"
  mount -t tmpfs -o mode=1777 tmpfs "$1/shm"
  mount -t devpts -o newinstance,ptmxmode=666,mode=620,gid=5 devpts "$1/pts"
}

# --- Checking and counting -------------------------------------------------------

passed=0
failed=0

# outcome NAME STATUS [TEXT]: counts a check.  Says which one failed, and the text; says
# which passed, too, if say_all is set.
outcome() {
  if (($2 == 0)); then
    passed=$((passed + 1))
    [[ -z ${say_all:-} ]] || printf 'okay: %s\n' "$1"
  else
    failed=$((failed + 1))
    printf 'FAILED: %s\n' "$1"
    [[ -z ${3:-} ]] || printf '    %s\n' "${3//$'\n'/$'\n'    }"
  fi
}

# check NAME COMMAND...: the command must succeed; what it prints is shown if it fails.  It
# runs in this shell, so a function may set variables.
check() {
  local check_name=$1 check_log check_status=0
  shift
  check_log=$(mktemp)
  "$@" >"$check_log" 2>&1 || check_status=1
  outcome "$check_name" "$check_status" "$(tail -n 40 "$check_log")"
  rm -f "$check_log"
}

# silent COMMAND...: succeeds if the command does, and prints nothing.
silent() {
  local said
  said=$("$@" 2>&1) && [[ -z $said ]] && return
  printf '%s\n' "$said"
  return 1
}

# has_line PATTERN TEXT: a line of the text matches the extended regular expression.
has_line() { grep -qE -- "$1" <<<"$2"; }

# expected_outside ROOT: what the programs of tests/outside/ print, with that root after "DC=".
# They have the items and flags of the library, as docs/items.tsv lists them, and one each.
expected_outside() {
  local items flags
  items=$({ of_library item && echo greeting; } | LC_ALL=C sort -f | xargs)
  flags=$({ of_library flag && echo outside; } | LC_ALL=C sort | xargs)
  sed "s/ROOT/$1/; s/ITEMS/$items/; s/FLAGS/$flags/" tests/outside/expected.txt
}
of_library() { sed -n "s/^$1\t\([^\t]*\)\t[^\t]*\tlibrary\t.*/\1/p" docs/items.tsv; }

# wait_for_jobs ID...: counts each job of this shell by how it ends.
wait_for_jobs() {
  local job
  for job; do
    if wait "$job"; then
      passed=$((passed + 1))
    else
      failed=$((failed + 1))
    fi
  done
}

# step NAME COMMAND...: runs a command that may print a closing line of its own, whose counts
# are added; without one it counts as one check.
step() {
  local name=$1 log status=0 began=$SECONDS worked
  shift
  log=$(mktemp)
  count_processor_seconds "$log"
  worked=$processor_seconds
  printf '== %s\n' "$name"
  "$@" 2>&1 | tee "$log"
  status=${PIPESTATUS[0]}
  add_counts "$log" "$status"
  count_processor_seconds "$log"
  printf '== %s: %s (%d s, %d s of processors)\n' "$name" \
    "$( ((status == 0)) && echo okay || echo FAILED)" "$((SECONDS - began))" \
    "$((processor_seconds - worked))"
  rm -f "$log"
}

# count_processor_seconds FILE: sets processor_seconds, what the programs that this shell started,
# and that have ended, needed.  The file is for the builtin, which says nothing in a subshell.
count_processor_seconds() {
  local word
  times >"$1"
  processor_seconds=0
  for word in $(tail -n 1 "$1"); do
    processor_seconds=$((processor_seconds + 60 * ${word%m*}))
    word=${word#*m}
    processor_seconds=$((processor_seconds + 10#${word%%[.,]*}))
  done
}

# aside NAME COMMAND...: begins a step that runs when a processor has nothing else to do.
# `step NAME has_run NAME` waits for it, and says what it said.
declare -A asides=()
aside() {
  mkdir -p build/aside
  rm -f "build/aside/$1.status"
  {
    chrt --idle 0 "${@:2}" </dev/null >"build/aside/$1.log" 2>&1
    echo "$?" >"build/aside/$1.status"
  } &
  asides[$1]=$!
}
has_run() {
  tail -n +1 -f --pid="${asides[$1]}" "build/aside/$1.log"
  return "$(<"build/aside/$1.status")"
}

# add_counts LOG STATUS
add_counts() {
  local counts
  counts=$(grep -E '^[0-9]+ passed, [0-9]+ failed' "$1" | tail -n 1)
  if [[ $counts =~ ^([0-9]+)\ passed,\ ([0-9]+)\ failed ]]; then
    passed=$((passed + BASH_REMATCH[1]))
    failed=$((failed + BASH_REMATCH[2]))
    (($2 == 0 || BASH_REMATCH[2] > 0)) || failed=$((failed + 1))
  elif (($2 == 0)); then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
  fi
}

# closing_line: how a script ends that has counted.
closing_line() {
  printf '%d passed, %d failed\n' "$passed" "$failed"
  ((failed == 0))
}
