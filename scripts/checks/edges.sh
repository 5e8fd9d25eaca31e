# SPDX-License-Identifier: MIT
# What the programs do at the edges.
# No semaphore sets, signals, logs that block, little memory, output that is lost, and programs
# and links that are made to break something.
# Arguments: [BUILD-FOLDER [PART...]]
# The parts are semaphores, signals, logs, memory, opener, agreement, explain, completions
# and wrappers.  Prints a line for each check.  EDGES_RANDOM is the number of random
# command lines in the part agreement, 400 unless set.  Runs as root, which a private
# IPC namespace needs.
# shellcheck shell=bash source=scripts/lib.sh disable=SC2034  # the parts use the variables
set -uo pipefail
source scripts/lib.sh
need bash-completion coreutils fish gcc libc6-dev locales python3 python3-pexpect util-linux zsh
need_root 'it makes private IPC namespaces'
export LC_ALL=C
(($# > 0)) || build release hoplaunch hopexplain hopopen || exit 1
build=$(cd "${1:-build/release}" && pwd) || exit 1
top=$PWD
parts=("${@:2}")
if ((${#parts[@]} == 0)); then
  parts=(semaphores signals logs memory opener agreement explain completions wrappers)
fi
launch=$build/hoplaunch
explain=$build/hopexplain
opener=$build/hopopen
python=/usr/bin/python3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch" || exit 1
before=$(ipcs -s)

say_all=1

# shown TEXT: one short line of it.
shown() { printf '%.300q' "$1"; }

# same NAME EXPECTED FOUND
same() {
  local equal=0
  [[ $2 == "$3" ]] || equal=1
  outcome "$1" "$equal" "expected $(shown "$2"), found $(shown "$3")"
}

# like NAME EXPRESSION FOUND: the extended regular expression matches.
like() {
  local fits=0
  [[ $3 =~ $2 ]] || fits=1
  outcome "$1" "$fits" "expected $(shown "$2"), found $(shown "$3")"
}

# true_that NAME COMMAND...
true_that() {
  local name=$1 result=0
  shift
  "$@" || result=1
  outcome "$name" "$result" "$*"
}

# from_python FILE ARGUMENTS...: a Python program whose lines begin with "ok" or "FAILED".
from_python() {
  local lines line counted=0
  lines=$(timeout -k 5 "${python_limit:-300}" "$python" "$top/tests/$1" "${@:2}" 2>"$scratch/python.err")
  while IFS= read -r line; do
    case $line in
      'ok '*) outcome "${line#ok }" 0 && counted=1 ;;
      'FAILED '*) outcome "${line#FAILED }" 1 && counted=1 ;;
    esac
  done <<<"$lines"
  if ((counted == 0)) || [[ $lines != *$'\nend' ]]; then
    outcome "$1 runs to its end" 1 "$(tail -n 3 "$scratch/python.err")"
  fi
}

# Runs in the private namespace: the command, and the number of sets that it left.
cat >inside <<'END'
exec 9>&2 2>/dev/null
sets=$1 limits=$2
shift 2
[[ -z $limits ]] || printf '%s\n' "$limits" >/proc/sys/kernel/sem
before=$(ipcs -s | grep -c '^0x')
"$@" 2>&9
status=$?
printf '%s\n' "$(($(ipcs -s | grep -c '^0x') - before))" >"$sets"
exit "$status"
END

# alone COMMAND...: runs it in an IPC namespace of its own, for at most $patience
# seconds.  Afterwards $status, $out, $err and $sets (how many sets are left) are those of
# the command.  $limits goes to /proc/sys/kernel/sem before.
limits=''
patience=20
alone() {
  rm -f sets
  status=0
  timeout -k 1 "$patience" unshare -i bash inside sets "$limits" "$@" \
    </dev/null >out 2>err || status=$?
  out=$(tr -d '\0' <out)
  err=$(tr -d '\0' <err)
  sets=$(cat sets 2>/dev/null || echo none)
}

# A pipe without a reader, as descriptor 4 of the command: broken REDIRECTION COMMAND...
cat >broken <<'END'
mkfifo pipe.$$
exec 3<>pipe.$$ 4>pipe.$$ 3>&-
rm -f pipe.$$
redirection=$1
shift
eval "exec \"\$@\" $redirection"
END

# A viewer that prints its arguments, and one that prints how it finds the signals.
mkdir bin
cat >bin/seen <<'END'
#!/bin/sh
printf '<%s>' "$@"
echo
END
cat >bin/signals <<'END'
#!/bin/sh
exec grep -E '^Sig(Blk|Ign):' /proc/self/status
END
chmod +x bin/*
seen=$scratch/bin/seen

# json EXPRESSION FILE: what Python finds in the JSON object `j`.
json() {
  "$python" -c 'import json,sys
j = json.load(open(sys.argv[2], "rb"))
try:
    print(json.dumps(eval(sys.argv[1])))
except KeyError as missing:
    print("no key", missing)' "$1" "$2" 2>&1 | tail -n 1
}

for part in "${parts[@]}"; do
  # shellcheck source=/dev/null
  source "$top/scripts/checks/edges/$part.sh"
done

cd "$top" || exit 1
same 'the semaphore sets are those from before' "$before" "$(ipcs -s)"
closing_line
