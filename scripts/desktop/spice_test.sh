#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows spice links at work on a desktop, with the installed package: they bring up a real SPICE
# server, plain and with TLS, through xdg-open, gio and a click in Chromium, in each viewer of
# viewers/.  A stranger's link is refused until the machine is trusted or a viewer chosen, and a
# link that asks for TLS never goes plain.
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
start_remote_spice

spice=spice://localhost:$spice_port
secure=spice+tls://localhost:$spice_tls_port
both="spice://localhost?port=$spice_port&tls-port=$spice_tls_port"

# is_refused LINK CODE: the link is not opened, and the message says how to open it.
is_refused() {
  local status=0 said
  said=$(env -u DISPLAY hopopen "$1" 2>&1) || status=$?
  printf 'status %d: %s\n' "$status" "$said"
  ((status == 3)) && [[ $said == *"hopopen --use"*"hopopen --trust"*"($2)" ]]
}

# connections PORT: how many somebody has to that port of the server.
connections() { ss --no-header --tcp state established "dport = $1" | wc -l; }

# shows_desktop_over PORT: the desktop is there, and comes from that port alone.
shows_desktop_over() {
  local other=$((spice_port + spice_tls_port - $1))
  shows_desktop && (($(connections "$1") > 0 && $(connections "$other") == 0))
}
shows_plain() { shows_desktop_over "$spice_port"; }
shows_secure() { shows_desktop_over "$spice_tls_port"; }
clicks_and_shows() { clicks_link && shows_plain; }

# shows_nothing: TLS with the plain port is no connection, however long one waits.
shows_nothing() {
  sleep 8
  (($(pixels "$remote_colour") == 0))
}

# with VIEWER TITLE: the viewer, when somebody has chosen it.
with() {
  title=$2
  show "$1" shows_plain hopopen --viewer "$1" "$spice"
  show "$1-tls" shows_secure hopopen --viewer "$1" "$secure"
  show "$1-both" shows_secure hopopen --viewer "$1" "$both"
  show "$1-not-plain" shows_nothing hopopen --viewer "$1" "spice+tls://localhost:$spice_port"
}

test_openers() {
  title=$1
  show spice-xdg-open shows_plain xdg-open "$spice"
  show spice-gio shows_secure gio open "$both"
  start_web_server
  page spice "$spice"
  browser spice
  show spice-chromium clicks_and_shows "${chromium[@]}"
}

try 'install' install_package
try "a stranger's link is refused" is_refused "$spice" viewer
with virt-viewer-spice 'remote desktop'
with spicy 'spice display'
hopopen --trust localhost
test_openers 'remote desktop'
try 'all processes end' end_processes
closing_line
