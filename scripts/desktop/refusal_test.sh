#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows what people see of a link that is refused, with the installed package: the message
# in each of the programs that can show it, as the only one there.  The links try markup,
# escapes, options and control characters, and are long; the text is read back from the
# screen, and has the link as it is.
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
# shellcheck source=scripts/desktop/browser.sh
source scripts/desktop/browser.sh

# --- A session with a daemon for notifications --------------------------------------

start_session() {
  use_scratch_home
  start_screen
  xsetroot -solid "$background"
  # Letters that can be read back.  The daemon reads all markup that it is given.
  printf 'Xmessage*font: 10x20\n' | xrdb -nocpp -load
  mkdir -p "$HOME/.config/dunst"
  cat >"$HOME/.config/dunst/dunstrc" <<'END'
[global]
font = DejaVu Sans 12
width = 560
height = 400
origin = bottom-right
offset = 30x60
markup = full
show_age_threshold = -1
min_icon_size = 48
icon_path = /usr/share/icons/hicolor/48x48/apps
[urgency_normal]
timeout = 0
END
  service dbus dbus-daemon --session --nofork --print-address=3 3>"$scratch/bus"
  ready dbus test -s "$scratch/bus"
  DBUS_SESSION_BUS_ADDRESS=$(cat "$scratch/bus")
  export DBUS_SESSION_BUS_ADDRESS
  service dunst dunst
  ready dunst dunstctl count >/dev/null
}

# only NOTIFIER: makes a folder for PATH in which it is the only one of them.
notifiers=(notify-send zenity kdialog xmessage)
only() {
  local other
  mkdir "$scratch/only_$1"
  ln -s /usr/bin/* "$scratch/only_$1"
  for other in "${notifiers[@]}"; do
    [[ $other == "$1" ]] || rm "$scratch/only_$1/$other"
  done
}

# --- Reading the screen --------------------------------------------------------------

# read_screen: the text on it, without blanks and line ends, as it is read in several
# ways: one of them is right about a letter.
read_screen() {
  local scale layout
  screenshot | convert xwd:- -bordercolor "$background" -border 1 -trim +repage \
    -colorspace Gray "$scratch/screen.png" 2>/dev/null || return 0 # nothing is there
  for scale in 200 300; do
    convert "$scratch/screen.png" -resize "$scale%" "$scratch/larger.png"
    for layout in 6 11; do
      OMP_THREAD_LIMIT=1 tesseract "$scratch/larger.png" - --psm "$layout" 2>/dev/null |
        tr -d '[:space:]' | alike
      echo
    done
  done
}

# alike: letters that look alike as one of them.
alike() { sed 's/—/-/g; s/--*/-/g; y/OIl|/0111/'; }

# shows_words: the words of "words" are on the screen, and all of the window is.
shows_words() {
  local word text
  text=$(read_screen)
  for word in "${words[@]}"; do
    if [[ $text != *"$(alike <<<"$word")"* ]]; then
      printf '%s is not in\n%s\n' "$word" "$text"
      return 1
    fi
  done
}
on_screen() {
  local id left top width height
  for id in $(windows | cut -d ' ' -f 1); do
    read -r left top width height < <(xwininfo -id "$id" |
      awk '/Absolute upper-left/ { print $4 } /Width:|Height:/ { print $2 }' | xargs)
    printf 'window: %s %s, %s x %s\n' "$left" "$top" "$width" "$height"
    ((left >= 0 && top >= 0 && left + width <= 1100 && top + height <= 720)) || return
  done
}

closes_all() {
  local notifier
  dunstctl close-all
  for notifier in "${notifiers[@]}"; do
    pkill -x "$notifier" || true # of this Debian alone
  done
  wait_for 10 no_window
}

# refusal NAME NOTIFIER OPENER...: what the notifier shows has the words.
refusal() { try "$1" is_refused "$@"; }
is_refused() {
  local name=$1 notifier=$2 status=0
  PATH=$scratch/only_$notifier setsid "${@:3}" </dev/null &
  local group=$!
  wait_for 90 shows_words >"$scratch/words" || status=1
  ((status == 0)) || cat "$scratch/words"
  on_screen || status=1
  keep_picture "$name"
  kill -- "-$group" 2>/dev/null || true
  closes_all && return "$status"
}

# --- The links -------------------------------------------------------------------------

tricks=$'vnc://a.example/<b>bold</b>&amp;<a href="x">\n-\e-\\n-\\x41-\x85$HOME --help'
tricks_words=(vnc://a.example/ '\x3Cb\x3Ebold\x3C/b\x3E\x26amp' '\x3Ca' 'href=\x22x\x22\x3E'
  '\x0A-\x1B-' '\x5Cn-\x5Cx41-\x85$''HOME' --help 'acharacterthatlinkscannothave' '(syntax)')

# The first 120 bytes, of which most are shown as four letters each.
long=vnc://a.example/begin
printf -v control '%90s' ''
long+=${control// /$'\e'}endmark$'\e'$'\e'more
long_words=(vnc://a.example/begin '\x1B\x1B\x1B\x1B' 'endmark\x1B\x1B' '(syntax)')

# What a page has.  Browsers hand it on with percent-encoding for some of it.
clicked='vnc://build.example/&amp;lt;b&amp;gt;bold&amp;lt;/b&amp;gt;%0A\n--help'
clicked_words=(vnc://build.example/ '\x26lt;b\x26gt;bold' '%0A%5Cn--help' '(path)')
clicks_refused() { clicks_link && shows_words >"$scratch/words"; }

test_click() {
  start_web_server
  page refused "$clicked"
  browser refused
  words=("${clicked_words[@]}")
  show refusal clicks_refused "${chromium[@]}"
  closes_all
}

start_session
try 'install' install_package
for notifier in "${notifiers[@]}"; do
  only "$notifier"
  words=("${tricks_words[@]}")
  refusal "refusal-$notifier" "$notifier" hopopen -- "$tricks"
  words=("${long_words[@]}")
  refusal "refusal-$notifier-long" "$notifier" hopopen -- "$long"
done
words=("${tricks_words[@]}")
refusal refusal-xdg-open zenity xdg-open "$tricks"
test_click
try 'all processes end' end_processes
closing_line
