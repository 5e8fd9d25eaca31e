# SPDX-License-Identifier: MIT
# Sourced by the tests of links after scratch_desktop.sh: what is on the screen, and steps
# that look for something there.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # shared with scratch_desktop.sh and the tests

pictures=$PWD/build/desktop
background='#495057' # of the screen

# screenshot: the screen, as a picture for convert.
screenshot() { xwd -root -silent 2>/dev/null; }

# pixels COLOUR: how many pixels of the screen have that colour, or nearly, as viewers
# may be sent compressed pictures.
pixels() {
  screenshot | convert xwd:- -fuzz 2% -transparent "$1" -alpha extract -negate \
    -precision 9 -format '%[fx:round(mean*w*h)]' info: 2>/dev/null || printf 0
}

keep_picture() { screenshot | convert xwd:- "$pictures/$1.png" 2>/dev/null; }

windows() { wmctrl -l 2>/dev/null; } # one may just have gone
has_window() { [[ $(windows) == *"$1"* ]]; }
no_window() { [[ -z $(windows) ]]; }

# show NAME CHECK COMMAND...: the command is run, and the check, a function, succeeds
# within a minute.  Keeps a screenshot, and ends what was started.
show() {
  local name=$1 check=$2 status=0
  shift 2
  setsid "$@" >"$scratch/step.log" 2>&1 &
  local group=$!
  wait_for 60 "$check" || status=1
  wait_for 10 keep_picture "$name" || status=1
  ((status == 0)) || windows >>"$scratch/step.log" || true
  kill -- "-$group" 2>/dev/null || true
  if ! wait_for 20 no_window; then
    kill -s KILL -- "-$group" 2>/dev/null || true
    wait_for 20 no_window || status=1
  fi
  wait "$group" 2>/dev/null || true
  outcome "$name" "$status" "$(tail -n 40 "$scratch/step.log")"
}
