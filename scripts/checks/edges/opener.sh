# SPDX-License-Identifier: MIT
# hopopen: its log never blocks, memory that runs out is a refusal, output that is lost is
# status 2, and it draws no semaphore set.
# shellcheck shell=bash
# shellcheck disable=SC2154,SC2034  # the variables are those of scripts/checks/edges.sh

mkdir -p home share/hoplaunch/viewers
for viewer in plain seen; do
  cat >"share/hoplaunch/viewers/$viewer.toml" <<END
name = "Viewer $viewer"
schemes = ["vnc"]
programs = ["$viewer"]
arguments = ["{bracketed}::{port}"]
[default]
port = 5900
[parameters.QualityLevel]
allow = "[0-9]"
arguments = ["-quality={value}"]
END
done
opener_command=(env -u DISPLAY -u WAYLAND_DISPLAY "HOME=$scratch/home" "XDG_CONFIG_HOME=$scratch/home" "XDG_DATA_HOME=$scratch/home"
  "XDG_CONFIG_DIRS=$scratch/home" "XDG_DATA_DIRS=$scratch/share" "PATH=$scratch/bin:/usr/bin:/bin")
from_python edges_logs.py hopopen "$scratch/bin" "${opener_command[@]}" "$opener" --viewer seen
python_limit=200
HOME=$scratch/home XDG_CONFIG_HOME=$scratch/home XDG_DATA_HOME=$scratch/home \
  XDG_CONFIG_DIRS=$scratch/home XDG_DATA_DIRS=$scratch/share PATH=$scratch/bin:/usr/bin:/bin \
  DISPLAY='' WAYLAND_DISPLAY='' \
  from_python edges_memory.py hopopen "$scratch/bin" "$opener" --viewer plain

for format in text json; do
  lost=("${opener_command[@]}" bash broken)
  for link in vnc://h vnc://h:0; do
    for target in '>/dev/full' '>&-' '>&4'; do
      alone "${lost[@]}" "$target" "$opener" --viewer seen --dry-run --format "$format" "$link"
      same "a dry run of $link in $format $target: the status" 2 "$status"
      like "a dry run of $link in $format $target: a line on standard error" '.' "$err"
    done
  done
done
alone "${opener_command[@]}" "$opener" --viewer seen --dry-run vnc://h
same 'a dry run whose output arrives: the status' 0 "$status"
same 'a dry run whose output arrives: standard error' '' "$err"
alone "${opener_command[@]}" "$opener" --viewer seen --dry-run vnc://h:0
same 'a dry run of a link that is refused: the status' 2 "$status"

limits='32000 1024000000 500 0'
alone "${opener_command[@]}" "$opener" --viewer seen vnc://h
same 'hopopen without semaphore sets: the viewer' '<h::5900>' "$out"
same 'hopopen without semaphore sets: standard error' '' "$err"
limits=''
alone "${opener_command[@]}" "$python" "$top/tests/edges_filter.py" \
  semget=38,semop=38,semctl=38,semtimedop=38 "$opener" --viewer seen vnc://h
same 'hopopen without semaphore calls: the viewer' '<h::5900>' "$out"

# What a link brings never becomes a pattern: it would take for ever, or too much memory.
for hostile in "$(printf '%.0s(' {1..2600})" '(((a{1,255}){1,255}){1,255}){1,255}' \
  "$(printf '%.0s*a' {1..1900})" '[[:alpha:' "\\" '5|.*'; do
  encoded=$(printf '%s' "$hostile" | "$python" -c \
    'import sys; print("".join(c if c.isalnum() else "%%%02X" % ord(c) for c in sys.stdin.read()))')
  patience=5
  alone "${opener_command[@]}" "$opener" --viewer seen "vnc://h?QualityLevel=$encoded"
  same "a wish of ${hostile:0:12}: the viewer gets none" '<h::5900>' "$out"
  alone "${opener_command[@]}" "$opener" --viewer seen "vnc://$encoded"
  same "a host of ${hostile:0:12}: refused" 2 "$status"
  alone "$launch" "-program=$seen" "vnc://h/?p=$(printf '%s' "${hostile//%/%25}")"
  same "hoplaunch, a value of ${hostile:0:12}: passed as it is" \
    "<--autoreconnect=0><-p=$hostile><h>" "$out"
  alone "$launch" "-program=$seen" "vnc://h${hostile//,/}/"
  same "hoplaunch, an address of ${hostile:0:12}: passed as it is" \
    "<--autoreconnect=0><h${hostile//,/}>" "$out"
  patience=20
done
alone "${opener_command[@]}" "$opener" --viewer seen "vnc://h?QualityLevel=5"
same 'a wish that is allowed: the viewer gets it' '<-quality=5><h::5900>' "$out"
like 'the header says who writes patterns' 'stranger' "$(tr -d '\n/' <"$top/include/regexpr.h")"
