# SPDX-License-Identifier: MIT
# A good launch, up to the exec, and every kind of failing one, under valgrind.
# Arguments: [BUILD-FOLDER]
# shellcheck shell=bash source=scripts/lib.sh
set -uo pipefail
source scripts/lib.sh
need libc6-dbg valgrind
(($# > 0)) || build release hoplaunch_shared || exit 1
# The one with the shared C library, whose allocator valgrind replaces.
launcher=${1:-build/release}/hoplaunch_shared
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/directory"
touch "$scratch/not_executable"

# launched NAME STATUS ARGUMENTS...: the launcher ends with the status, and valgrind has
# nothing to say.  (What it says goes to a file: after the exec it is gone.)
launched() {
  local name=$1 expected=$2 status=0
  shift 2
  valgrind -q --error-exitcode=1 --leak-check=full --show-leak-kinds=definite,indirect \
    --errors-for-leak-kinds=definite,indirect --log-file="$scratch/$name.log" \
    "$launcher" "$@" >"$scratch/$name.out" 2>&1 || status=$?
  if ((status != expected)) || [[ -s $scratch/$name.log ]]; then
    printf 'FAILED: %s ended with %d instead of %d\n' "$name" "$status" "$expected"
    cat "$scratch/$name.log"
    return 1
  fi
  printf 'clean: %s\n' "$name"
}

uri='vnc://host:5901,other/?shared=1&view=%20'
log=-log=$scratch/launch.log
jobs=()
start() {
  launched "$@" &
  jobs+=($!)
}
# Those that cannot be executed wait five seconds each: side by side.
start good 0 -program=/bin/true "$log" -style=separate -portArg=port "$uri"
start good_with_ticket 0 -program=/bin/true "$log" ssh://host/12,QUJD
start good_without_log 0 -program=/bin/true "$uri"
start good_with_traces 0 -program=/bin/true -refcount=1 -configDB=1 -URI_SCHEME=x "$uri"
start log_cannot_be_opened 0 -program=/bin/true "-log=$scratch/none/log" "$uri"
start full_disk_under_the_log 0 -program=/bin/true -log=/dev/full "$uri"
start no_arguments 0
start no_uri 0 "$log"
start keyword_without_value 255 "$uri" -x
start bad_uri 0 "$log" vnc://host
start bad_uri_with_traces 0 "$log" -refcount=1 vnc://-bad/
start no_program_for_the_scheme 0 "$log" ftp://host/
start missing_program 0 "-program=$scratch/missing" "$log" "$uri"
start directory_as_program 0 "-program=$scratch/directory" "$uri"
start program_not_executable 0 "-program=$scratch/not_executable" "$uri"
# Arguments that are too long are left out: valgrind ends where execve says so.

wait_for_jobs "${jobs[@]}"
closing_line
