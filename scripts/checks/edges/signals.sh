# SPDX-License-Identifier: MIT
# Signals end the tools, or do not, and no set is left.
# shellcheck shell=bash
# shellcheck disable=SC2154,SC2034  # the variables are those of scripts/checks/edges.sh

for ignored in --default-signal=PIPE --ignore-signal=PIPE; do
  name="a closed pipe, $ignored"
  given=0000000000000000
  [[ $ignored != --ignore* ]] || given=0000000000001000
  alone env "$ignored" bash broken '2>&4' "$launch" -refcount=1 "-program=$scratch/bin/signals" vnc://h/
  same "standard error is $name: the viewer starts" 0 "$status"
  same "standard error is $name: the viewer's ignored signals" $'SigIgn:\t'"$given" \
    "$(grep SigIgn <<<"$out")"
  same "standard error is $name: no set is left" 0 "$sets"
  alone env "$ignored" bash broken '2>&4' "$explain" -refcount=1 "-program=$seen" vnc://h/
  same "hopexplain's standard error is $name: the status" 0 "$status"
  like "hopexplain's standard error is $name: the launch" 'launch +yes' "$out"
  same "hopexplain's standard error is $name: no set is left" 0 "$sets"
  alone env "$ignored" bash broken '>&4' "$explain" "-program=$seen" vnc://h/
  same "hopexplain's standard output is $name: the status" 2 "$status"
  like "hopexplain's standard output is $name: a line on standard error" '^[^[:space:]].*$' "$err"
  same "hopexplain's standard output is $name: no set is left" 0 "$sets"
  alone env "$ignored" bash broken '>&4' "$launch" "-program=$scratch/bin/signals" vnc://h/
  same "the launcher's standard output is $name: no set is left" 0 "$sets"
done

# Files may not grow, except for those of `cat`.  The viewer writes to a pipe.
small='(ulimit -f 0; exec "$@" 2>to_file) | cat'
alone bash -o pipefail -c "$small" bash "$launch" -refcount=1 "-program=$seen" vnc://h/
same 'standard error may not grow: the viewer starts' '<--autoreconnect=0><h>' "$out"
same 'standard error may not grow: the status' 0 "$status"
same 'standard error may not grow: no set is left' 0 "$sets"
alone bash -o pipefail -c "$small" bash "$launch" -log=small.log "-program=$scratch/bin/signals" vnc://h/
same 'the log may not grow: the viewer starts with all signals' \
  $'SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000' "$out"
same 'the log may not grow: no set is left' 0 "$sets"
alone bash -o pipefail -c "$small" bash "$explain" -refcount=1 "-program=$seen" vnc://h/
like "hopexplain's standard error may not grow: the launch" 'launch +yes' "$out"
same "hopexplain's standard error may not grow: no set is left" 0 "$sets"
alone bash -o pipefail -c '(ulimit -f 0; exec "$@" 2>&1 >to_file) | cat >&2' \
  bash "$explain" "-program=$seen" vnc://h/
same "hopexplain's standard output may not grow: the status" 2 "$status"
like "hopexplain's standard output may not grow: a line on standard error" '.' "$err"
same "hopexplain's standard output may not grow: no set is left" 0 "$sets"
rm -f small.log to_file

# What the viewer finds is what the tool was given.
# viewer_signals NAME EXPECTED-IGNORED EXPECTED-BLOCKED ENV-OPTION...
viewer_signals() {
  alone env "${@:4}" "$launch" "-program=$scratch/bin/signals" vnc://h/
  same "the viewer's signals, $1" \
    "SigBlk:"$'\t'"$3"$'\n'"SigIgn:"$'\t'"$2" "$out"
}
none=0000000000000000
viewer_signals 'nothing special' "$none" "$none" --default-signal
viewer_signals 'SIGPIPE ignored' 0000000000001000 "$none" --default-signal --ignore-signal=PIPE
viewer_signals 'SIGXFSZ ignored' 0000000001000000 "$none" --default-signal --ignore-signal=XFSZ
viewer_signals 'SIGINT, SIGTERM, SIGHUP ignored' 0000000000004003 "$none" \
  --default-signal --ignore-signal=INT,TERM,HUP
viewer_signals 'SIGPIPE, SIGXFSZ and SIGTERM blocked' "$none" 0000000001005000 \
  --default-signal --block-signal=PIPE,XFSZ,TERM

# The tools stop at a standard error or output that is full, while they have their set.
from_python edges_signals.py "$launch" "$explain" "$scratch/bin"
