#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows telnet links at work on a desktop, with the installed package: they log in to a real telnet
# server, through xdg-open, gio and a click in Chromium, in each viewer of viewers/.  And a server
# that asks for every variable gets none of the session's.
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

use_scratch_home
start_screen
xsetroot -solid "$background"
start_remote_telnet
reached_port=$telnet_port

telnet=telnet://localhost:$telnet_port
telnet6="telnet://[::1]:$telnet_port"

clicks_and_shows() { clicks_link && shows_shell; }

test_viewer() {
  show_shell "$1" hopopen --viewer "$1" "$telnet"
  show_shell "$1-ipv6" hopopen --viewer "$1" "$telnet6"
  show_shell "$1-user" hopopen --viewer "$1" "telnet://kim@localhost:$telnet_port"
}

test_openers() {
  show_shell telnet-xdg-open xdg-open "$telnet"
  show_shell telnet-gio gio open "$telnet"
  start_web_server
  page telnet "$telnet"
  browser telnet
  rm -f "$scratch"/remote/*
  show telnet-chromium clicks_and_shows "${chromium[@]}"
}

# --- A server that asks for everything -----------------------------------------------

# The session's secrets; and the screen, whose number is in DISPLAY.
export PRINTER=printer-of-session SECRET=secret-of-session XAUTHORITY=/nowhere/authority
secrets=("$DISPLAY" printer-of-session secret-of-session /nowhere "$scratch" "$(hostname)")

# asks_for_all VIEWER: what the server got is in $scratch/log.
asks_for_all() {
  local group status=0
  rm -f "$scratch/port" "$scratch/log"
  python3 tests/hostile_telnet.py --port-file "$scratch/port" --log "$scratch/log" &
  wait_for 10 test -s "$scratch/port" || return
  setsid hopopen --viewer "$1" "telnet://kim@127.0.0.1:$(cat "$scratch/port")" </dev/null &
  group=$!
  wait_for 30 test -s "$scratch/log" || status=1
  keep_picture "$1-hostile"
  kill -- "-$group" 2>/dev/null || true
  wait_for 20 no_window || status=1
  cat "$scratch/log"
  return "$status"
}

gets_nothing() {
  local secret
  asks_for_all "$1" && grep -qF kim "$scratch/log" || return
  for secret in "${secrets[@]}"; do
    ! grep -F -- "$secret" "$scratch/log" || return
  done
}

# gets_what_putty_was_told: the variables of PuTTY's "Default Settings" are the user's own wish.
gets_what_putty_was_told() {
  mkdir -p "$HOME/.putty/sessions"
  printf '%s\n' 'Environment=WISH=wish-of-user' >"$HOME/.putty/sessions/Default%20Settings"
  asks_for_all putty-telnet && grep -qF wish-of-user "$scratch/log"
}

try 'install' install_package
try 'telnet: a server that asks for everything' gets_nothing telnet
try 'PuTTY: a server that asks for everything' gets_nothing putty-telnet
title=uxterm
test_viewer telnet
test_openers
title=' - PuTTY'
test_viewer putty-telnet
try 'PuTTY: the variables of its Default Settings' gets_what_putty_was_told
try 'all processes end' end_processes
closing_line
