# Sourced by the project's scripts, in the top folder: installing what is missing, building,
# checking and counting.
# shellcheck shell=bash

# --- Installing ----------------------------------------------------------------

# need PACKAGE...: ensures that the packages are installed.  Installs them as root or
# through sudo; otherwise prints the command to type and ends the script.
need() {
  local missing=() package
  for package in "$@"; do
    if [[ "$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null)" != *' installed' ]]; then
      missing+=("$package")
    fi
  done
  if ((${#missing[@]} == 0)); then
    return
  fi
  local as_root=()
  if ((EUID != 0)); then
    if ! sudo -n true 2>/dev/null && ! { [[ -t 0 ]] && command -v sudo >/dev/null; }; then
      printf 'Missing packages.  As root, type:\n\n  apt-get update && apt-get install -y %s\n\n' \
        "${missing[*]}" >&2
      exit 1
    fi
    as_root=(sudo)
  fi
  printf 'Installing: %s\n' "${missing[*]}" >&2
  {
    "${as_root[@]}" apt-get update -qq &&
      "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}"
  } >&2
}

# The packages that building needs.
build_packages=(g++ cmake ninja-build libcli11-dev libtomlplusplus-dev nlohmann-json3-dev)

# --- Building ------------------------------------------------------------------

# quietly LOG COMMAND...: what the command prints goes to the file, and is shown if it fails.
quietly() {
  local log=$1
  shift
  mkdir -p "$(dirname "$log")"
  if ! "$@" >"$log" 2>&1; then
    cat "$log" >&2
    return 1
  fi
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
  local name=$1 log status=0 began=$SECONDS
  shift
  log=$(mktemp)
  printf '== %s\n' "$name"
  "$@" 2>&1 | tee "$log"
  status=${PIPESTATUS[0]}
  add_counts "$log" "$status"
  printf '== %s: %s (%d s)\n' "$name" "$( ((status == 0)) && echo okay || echo FAILED)" \
    "$((SECONDS - began))"
  rm -f "$log"
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
