# SPDX-License-Identifier: MIT
# A log that blocks does not hold a launch up, and loses only the lines that would block.
# shellcheck shell=bash
# shellcheck disable=SC2154,SC2034  # the variables are those of scripts/checks/edges.sh

from_python edges_logs.py hoplaunch "$scratch/bin" "$launch"

# A log that cannot be opened is none, and one that can is as always.
for log in missing/log . "$seen/log" "$(printf 'x%.0s' {1..300})"; do
  alone "$launch" "-log=$log" "-program=$seen" vnc://h/
  same "the log ${log:0:20} cannot be opened: the viewer" '<--autoreconnect=0><h>' "$out"
  same "the log ${log:0:20} cannot be opened: nothing on standard error" '' "$err"
done
alone "$launch" -log=/dev/full "-program=$seen" vnc://h/
same 'a full log: the viewer' '<--autoreconnect=0><h>' "$out"
printf 'before\n' >log
alone "$launch" -log=log "-program=$seen" vnc://h/
same 'a file: the lines are appended' \
  $'before\nT: URI = vnc://h/\nexecutable: '"$seen"$'\n\t"seen"\n\t"--autoreconnect=0"\n\t"h"' \
  "$(sed -E 's/^[0-9]{8}T[0-9]{6}:/T:/' log)"
rm log
