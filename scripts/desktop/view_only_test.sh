#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows that a link's ViewOnly=true is held to, with the installed package: the server that
# records everything gets no key and no click, while without it the same keys arrive.
#
# A part of ./test --desktop, which runs it in a clean Debian.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/desktop/in_clean_debian.sh
source scripts/desktop/in_clean_debian.sh
# shellcheck source=scripts/desktop/scratch_desktop.sh
source scripts/desktop/scratch_desktop.sh
# shellcheck source=scripts/desktop/viewer_checks.sh
source scripts/desktop/viewer_checks.sh

# What is in the titles of the viewers' windows, by which they are found.
viewer_title=hostile
use_scratch_home
start_screen
start_another_window

# opened QUERY CHECK OPENER...: the check is run while the link of the server is open.
opened() {
  local status=0
  start_server || return
  setsid "${@:3}" "vnc://localhost:$server_port$1" </dev/null &
  viewers+=($!)
  wait_for 60 connected && sleep 1 && "$2" || status=1
  end_viewers || status=1
  ((status == 0)) || cat "$server_log"
  return "$status"
}

# refused QUERY CODE OPENER...: the link of the server is refused, and nobody comes.
refused() {
  local status=0 said
  start_server || return
  said=$(timeout 60 "${@:3}" "vnc://localhost:$server_port$1" 2>&1) || status=$?
  printf 'status %d: %s\n' "$status" "$said"
  sleep 2
  ! happened connect || printf 'but there was a connection\n'
  [[ $status == 2 && $said == *"($2)" ]] && ! happened connect || status=1
  end_viewers && ((status == 2))
}

# holds NAME OPENER...
holds() {
  try "$1: keys and clicks arrive" opened '' gets_keys "${@:2}"
  try "$1: with ViewOnly=true they do not" opened '?ViewOnly=true' gets_no_keys "${@:2}"
}

try 'install' install_package
holds xdg-open xdg-open
holds gio gio open
try 'xdg-open: with ViewOnly=no they arrive' opened '?ViewOnly=no' gets_keys xdg-open
try 'xdg-open: viewonly without a value is a wish, too' opened '?viewonly' gets_no_keys xdg-open
for viewer in tigervnc tightvnc; do
  holds "$viewer" hopopen --viewer "$viewer"
done
for viewer in gvncviewer remmina krdc virt-viewer; do
  try "$viewer, which cannot, is not started" refused '?ViewOnly=true' restriction \
    hopopen --viewer "$viewer"
done
try 'all processes end' end_processes
closing_line
