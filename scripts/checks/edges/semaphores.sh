# SPDX-License-Identifier: MIT
# No semaphore set can be had: hoplaunch says so in its log, too, and hopexplain says it.
# shellcheck shell=bash
# shellcheck disable=SC2154,SC2034  # the variables are those of scripts/checks/edges.sh

no_sets='32000 1024000000 500 0' # no set at all
too_small='5 1024000000 500 32000' # no set of six semaphores
just_enough='6 12 1 2' # an id of 0, which the first set of a namespace has, is no good
made='result > 0 in ../utilities/unix/semaphore_unx@60'
filter=("$python" "$top/tests/edges_filter.py")

# aborts_with NAME LOG: the line on standard error to the byte, and LOG, "-" for no file.
aborts_with() {
  same "$1: ends by SIGABRT" 134 "$status"
  same "$1: standard error's line" "$made" "$err"
  same "$1: nothing on standard output" '' "$out"
  same "$1: the log" "$2" "$(if [[ -e log ]]; then cat log; else echo -; fi)"
  same "$1: no set is left" 0 "$sets"
  rm -f log
}

limits=$no_sets
alone "$launch" -log=log "-program=$seen" vnc://h/
aborts_with 'no sets, a log that is missing' "$made: No space left on device"
alone "$launch" -LOG log "-program=$seen" vnc://h/
aborts_with 'no sets, the key in other letters' "$made: No space left on device"
printf 'before\n' >log
alone "$launch" -log=log "-program=$seen" vnc://h/
aborts_with 'no sets, a log with a line' $'before\n'"$made: No space left on device"
alone "$launch" -log=other -log=log "-program=$seen" vnc://h/
aborts_with 'no sets, the last log counts' "$made: No space left on device"
true_that 'no sets, the last log counts: the first is not made' test ! -e other
alone "$launch" -log= "-program=$seen" vnc://h/
aborts_with 'no sets, an empty log' -
alone "$launch" "-program=$seen" vnc://h/
aborts_with 'no sets, no log' -
alone "$launch" -log=missing/log "-program=$seen" vnc://h/
aborts_with 'no sets, a log in no folder' -
mkfifo fifo
patience=5
alone "$launch" -log=fifo "-program=$seen" vnc://h/
aborts_with 'no sets, a log without a reader' -
patience=20
rm -f fifo
alone "$launch"
same 'no sets, no argument: the usage line' "Usage: $launch <uri> " "$err"
same 'no sets, no argument: the status' 0 "$status"
alone "$launch" -log=log -x
same 'no sets, no value: the message' 'Keyword -x has no value' "$err"
same 'no sets, no value: the status' 255 "$status"
true_that 'no sets, no value: no log' test ! -e log
limits=$too_small
alone "$launch" -log=log "-program=$seen" vnc://h/
aborts_with 'sets of five semaphores' "$made: Invalid argument"
limits=$just_enough
alone "$launch" -log=log "-program=$seen" vnc://h/
same 'just enough sets: the viewer' '<--autoreconnect=0><h>' "$out"
same 'just enough sets: the status' 0 "$status"
same 'just enough sets: nothing on standard error' '' "$err"
same 'just enough sets: the last line of the log' $'\t"h"' "$(tail -n 1 log 2>/dev/null)"
same 'just enough sets: no set is left' 0 "$sets"
rm -f log
limits=''

alone "${filter[@]}" semget=38 "$launch" -log=log "-program=$seen" vnc://h/
aborts_with 'semget is missing' "$made: Function not implemented"
alone "${filter[@]}" semop=38,semtimedop=38 "$launch" -log=log "-program=$seen" vnc://h/
same 'semop is missing: ends by SIGABRT' 134 "$status"
like 'semop is missing: standard error' \
  '^0 == semop \(result, &operation, 1\) in \.\./utilities/unix/semaphore_unx@[0-9]+$' "$err"
same 'semop is missing: the log' "$err: Function not implemented" "$(cat log 2>/dev/null)"
same 'semop is missing: no set is left' 0 "$sets"
rm -f log
alone "${filter[@]}" semctl=38 "$launch" -log=log "-program=$seen" vnc://h/
like 'semctl is missing: standard error' \
  '^0 == semctl\(result, offset, GETVAL\) in \.\./utilities/unix/semaphore_unx@[0-9]+$' "$err"
same 'semctl is missing: the log' "$err: Function not implemented" "$(cat log 2>/dev/null)"
rm -f log

# explains NAME TEXT ARGUMENTS...: as with a set, but that there is no launch, for TEXT.
explains() {
  local name=$1 text=$2
  shift 2
  limits=''
  alone "$explain" "$@"
  local with
  with=$(grep -v '^launch ' <<<"$out")
  limits=$lacking
  alone "${through[@]}" "$explain" "$@"
  same "$name: all but the launch is explained" "$with" "$(grep -v '^launch ' <<<"$out")"
  same "$name: the reason" "launch      no: no semaphore set: $text" "$(grep '^launch ' <<<"$out")"
  same "$name: the status" 1 "$status"
  same "$name: nothing on standard error" '' "$err"
  same "$name: no set is left" 0 "$sets"
  limits=''
}
through=(env)
lacking=$no_sets
explains 'hopexplain without sets' 'No space left on device' "-program=$seen" 'vnc://h:1/?a=b'
explains 'hopexplain without sets, a bad link' 'No space left on device' vnc://h
explains 'hopexplain without sets, no program' 'No space left on device' ftp://h/
explains 'hopexplain without sets, no file' 'No space left on device' -program=/nowhere vnc://h/
lacking=$too_small
explains 'hopexplain with sets of five' 'Invalid argument' "-program=$seen" vnc://h/
lacking=''
through=("${filter[@]}" semget=38)
explains 'hopexplain without semget' 'Function not implemented' "-program=$seen" vnc://h/
limits=$just_enough
alone "$explain" "-program=$seen" vnc://h/
same 'hopexplain with just enough sets: the launch' 'launch      yes' "$(grep '^launch ' <<<"$out")"
same 'hopexplain with just enough sets: the status' 0 "$status"
same 'hopexplain with just enough sets: no set is left' 0 "$sets"
limits=$no_sets
alone "$explain" -format=json "-program=$seen" vnc://h/
same 'hopexplain without sets, JSON: the obstacle' \
  '[false, "no semaphore set: No space left on device", ["seen", "--autoreconnect=0", "h"], true]' \
  "$(json '[j["launches"], j["obstacle"], j["arguments"], j["file"].endswith("/bin/seen")]' out)"
same 'hopexplain without sets, JSON: the status' 1 "$status"
alone "$explain" -x
same 'hopexplain without sets, no value: the status' 255 "$status"
limits=''
# Its sections do nothing: the trace of a flag writes inside one.
limits=$no_sets
alone "$explain" -refcount=1 "-program=$seen" vnc://h/
same 'hopexplain without sets, with a trace: the status' 1 "$status"
like 'hopexplain without sets, with a trace: the reason' 'launch +no: no semaphore set: No space' "$out"
limits=''
