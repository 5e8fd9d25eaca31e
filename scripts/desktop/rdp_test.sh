#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows rdp links at work on a desktop, with the installed package: both of their forms bring up
# a real RDP server, through xdg-open, gio and a click in Chromium, in the viewers of this
# release of Debian.  Nothing of a link with every setting that there is reaches a viewer, but its
# address, its user, and the size and the sound that it may ask for.
#
# A part of ./test --desktop, which runs it in a clean Debian.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/desktop/in_clean_debian.sh
source scripts/desktop/in_clean_debian.sh
# shellcheck source=scripts/desktop/scratch_desktop.sh
source scripts/desktop/scratch_desktop.sh
# shellcheck source=scripts/desktop/screen_checks.sh
source scripts/desktop/screen_checks.sh
# shellcheck source=scripts/desktop/remote_machine.sh
source scripts/desktop/remote_machine.sh
# shellcheck source=scripts/desktop/browser.sh
source scripts/desktop/browser.sh

# windows: those on the screen.  wmctrl crashes on one that has no title yet, as FreeRDP's.
windows() {
  local id
  for id in $(xprop -root _NET_CLIENT_LIST 2>/dev/null | grep -o '0x[0-9a-f]*'); do
    printf '%s %s\n' "$id" "$(xdotool getwindowname "$id" 2>/dev/null)"
  done
}

use_scratch_home
start_screen
xsetroot -solid "$background"
start_remote_rdp

rdp=rdp://localhost:$rdp_port
pairs=rdp://full%20address=s:localhost:$rdp_port # as people write them, with a plain ":"

# hostile: a link with all that tests/data/rdp_settings.txt has.
hostile() {
  python3 -c '
import sys, urllib.parse
settings = [line.rstrip("\n") for line in sys.stdin if line.strip() and line[0] != "#"]
settings += ["full address:s:localhost:" + sys.argv[1], "username:s:kim", "domain:s:LAB",
             "desktopwidth:i:640", "desktopheight:i:480", "audiomode:i:2"]
def pair(setting):
    name, kind, value = setting.split(":", 2)
    return urllib.parse.quote(name) + "=" + kind + ":" + urllib.parse.quote(value)
print("rdp://" + "&".join(map(pair, settings)))' "$rdp_port" <tests/data/rdp_settings.txt
}

# --- What a viewer is told and does ----------------------------------------------

# answer_questions: those of the terminal, or of windows of the viewer's own: who one is, and
# whether the certificate is the machine's.
question=' \(uxterm\|xfreerdp3\)$\|redentials\|ertificate'
answer_questions() {
  local window answer
  window=$(windows | grep -m 1 "$question") || return 0
  case $window in
    *redentials*) answer=$'kim\t\tpassword' ;;
    *ertificate*) answer= ;;
    *) answer=y ;;
  esac
  wmctrl -ia "${window%% *}" && sleep 0.3 && xdotool type --delay 50 "$answer"
  xdotool key Return
  sleep 0.5
}

# brings_desktop: answers questions until the desktop is there.
brings_desktop() {
  has_window "$title" || answer_questions
  shows_desktop
}
clicks_and_brings_desktop() { clicks_link && brings_desktop; }

# is_told WORD...: the program is started, with exactly these words.
is_told() {
  local id
  wait_for 20 is_running "$1" || return
  id=$(pgrep -n -x "$(basename "$1")")
  diff <(printf '%s\n' "$@") <(tr '\0' '\n' <"/proc/$id/cmdline")
}
is_running() { pgrep -x "$(basename "$1")" >/dev/null; }

# opens_with OPENER... -- WORD...: the link $link is opened, and the viewer is told these words.
opens_with() {
  local opener=() group status=0
  while [[ $1 != -- ]]; do
    opener+=("$1")
    shift
  done
  shift
  setsid "${opener[@]}" "$link" </dev/null &
  group=$!
  is_told "$@" || status=1
  kill -s KILL -- "-$group" 2>/dev/null || true # FreeRDP 3 may not end before it is connected
  wait_for 20 no_window || status=1
  wait "$group" 2>/dev/null || true
  return "$status"
}

# waits_for_answer: nobody has answered the question of the certificate, so nothing is shown.
waits_for_answer() {
  wait_for 30 has_question && sleep 3 && has_question && ! has_window "$title"
}
has_question() { windows | grep -q "$question"; }

# is_ordinary: the window is one among others, in its frame, with its title on the screen.
is_ordinary() {
  local window state frame top
  brings_desktop || return
  window=$(windows | grep -m 1 -F -- "$title")
  state=$(xprop -id "${window%% *}" _NET_WM_STATE 2>/dev/null)
  frame=$(xprop -id "${window%% *}" _NET_FRAME_EXTENTS 2>/dev/null | grep -o '[0-9]*' | sed -n 3p)
  top=$(xwininfo -id "${window%% *}" 2>/dev/null | awk '/Absolute upper-left Y/ { print $4 }')
  [[ $state != *FULLSCREEN* && $state != *MAXIMIZED* ]] && ((${frame:-0} > 10 && top >= frame))
}

# leaves_keyboard, takes_keyboard: with the window in front and the pointer in it.
leaves_keyboard() { in_front && sleep 2 && can_grab_keyboard; }
takes_keyboard() { in_front && sleep 2 && ! can_grab_keyboard; }
in_front() {
  local window
  brings_desktop || return
  window=$(windows | grep -m 1 -F -- "$title")
  xdotool mousemove 5 710 && wmctrl -ia "${window%% *}" && sleep 0.5 &&
    xdotool mousemove --window "${window%% *}" 100 100
}

# --- FreeRDP ----------------------------------------------------------------------

# freerdp NAME PROGRAM SIZE...: the viewer of that name, and what it is told about the size of
# the desktop when a hostile link asks for 640 x 480.
freerdp() {
  local name=$1 program=$2
  show "$name-question" waits_for_answer hopopen --viewer "$name" "$rdp"
  show "$name" brings_desktop hopopen --viewer "$name" "$rdp"
  show "$name-pairs" brings_desktop hopopen --viewer "$name" "$pairs"
  link=$(hostile)
  try "$name: a hostile link" opens_with hopopen --viewer "$name" -- "$program" -clipboard \
    -grab-keyboard -grab-mouse "${@:3}" /audio-mode:2 '/u:LAB\kim' /v:localhost \
    "/port:$rdp_port"
  show "$name-hostile" is_ordinary hopopen --viewer "$name" "$link"
  link="$pairs&screen%20mode%20id=i:2&desktopwidth=i:4096&desktopheight=i:4096"
  show "$name-large" is_ordinary hopopen --viewer "$name" "$link"
  show "$name-keyboard" leaves_keyboard hopopen --viewer "$name" "$rdp"
  hopopen --trust localhost
  show "$name-trusted" takes_keyboard hopopen --viewer "$name" "$rdp"
  hopopen --distrust localhost
}

test_openers() {
  show rdp-xdg-open brings_desktop xdg-open "$rdp"
  show rdp-gio brings_desktop gio open "$rdp"
  show rdp-pairs-xdg-open brings_desktop xdg-open "$pairs"
  show rdp-pairs-gio brings_desktop gio open "$pairs"
  link=$(hostile)
  show rdp-hostile-xdg-open is_ordinary xdg-open "$link"
}

test_browser() {
  start_web_server
  page rdp "$rdp"
  browser rdp
  show rdp-chromium clicks_and_brings_desktop "${chromium[@]}"
  page pairs "rdp://full%20address=s%3Alocalhost%3A$rdp_port"
  browser pairs
  show rdp-pairs-chromium clicks_and_brings_desktop "${chromium[@]}"
}

# Those that say they cannot be told are started when somebody chooses them.
test_others() {
  link=$(hostile)
  try 'remmina: a hostile link' opens_with hopopen --viewer remmina-rdp -- remmina -c \
    "rdp://LAB%5Ckim@localhost:$rdp_port"
  try 'krdc: a hostile link' opens_with hopopen --viewer krdc-rdp -- krdc \
    "rdp://LAB%5Ckim@localhost:$rdp_port"
}

title=FreeRDP
try 'install' install_package
if command -v xfreerdp >/dev/null; then # Debian 12
  freerdp freerdp2 /usr/bin/xfreerdp /w:640 /h:480
  test_openers
  test_browser
  test_others
else
  ulimit -v 8000000 # sdl-freerdp3 takes all memory for a text that is too long for its window
  freerdp freerdp3-x11 /usr/bin/xfreerdp3 /w:640 /h:480
  freerdp freerdp3 sdl-freerdp3 /w:960 /h:600
  test_openers
fi
try 'all processes end' end_processes
closing_line
