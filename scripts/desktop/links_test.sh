#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows links at work on a desktop, with the installed package: a click in Chromium,
# xdg-open and gio bring up the machine that the link leads to, through hopopen and each of
# the viewers of viewers/.  And hoplaunch, with its recipes of docs/viewers.md.
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
start_remote_desktop
start_remote_shell
visit_before

vnc=vnc://localhost:$vnc_port # as people write it, without a "/" at its end
vnc6="vnc://[::1]:$vnc_port"
ssh=ssh://localhost:$ssh_port
examples=/usr/share/doc/hoplaunch/examples

# --- The package ---------------------------------------------------------------

# has_schemes: Remmina has registered the schemes, too, but nobody has to choose.
has_schemes() {
  local scheme
  for scheme in vnc rdp spice spice+tls ssh telnet; do
    xdg-mime query default "x-scheme-handler/$scheme"
    gio mime "x-scheme-handler/$scheme"
    [[ $(xdg-mime query default "x-scheme-handler/$scheme") == hopopen.desktop ]] || return
    [[ $(gio mime "x-scheme-handler/$scheme" | head -n 1) == *hopopen.desktop ]] || return
  done
}

# purges: nothing that the package brought is left, and no scheme has its handler.
purges() {
  local path files
  mapfile -t files < <(dpkg-query -L hoplaunch)
  apt-get purge -y hoplaunch || return
  for path in "${files[@]}"; do
    if [[ $path =~ hoplaunch|hopexplain|hopopen && -e $path ]]; then
      printf 'left: %s\n' "$path"
      return 1
    fi
  done
  [[ $(gio mime x-scheme-handler/vnc) != *hopopen* ]]
}

# --- Clicks --------------------------------------------------------------------

test_openers() {
  local opener
  title='remote desktop - TigerVNC' # of the lowest rank
  for opener in xdg-open 'gio open'; do
    # shellcheck disable=SC2086  # two words
    show "${opener/ /-}" shows_desktop $opener "$vnc"
    # shellcheck disable=SC2086
    show "${opener/ /-}-ipv6" shows_desktop $opener "$vnc6"
  done
  show hostile-link shows_desktop xdg-open "$vnc?via=-oProxyCommand=touch%20$scratch/harmed"
}

brings_desktop() { clicks_link && shows_desktop; }
test_browser() {
  title='remote desktop - TigerVNC'
  start_web_server
  page vnc "$vnc"
  browser vnc
  show chromium brings_desktop "${chromium[@]}"
  page vnc6 "$vnc6"
  browser vnc6
  show chromium-ipv6 brings_desktop "${chromium[@]}"
}

# --- Each viewer ---------------------------------------------------------------

# with VIEWER TITLE: the viewer shows the desktop.
with() {
  title=$2
  show "$1" shows_desktop hopopen --viewer "$1" "$vnc"
}

test_vnc_viewers() {
  with tigervnc 'remote desktop - TigerVNC'
  with tightvnc 'TightVNC: remote desktop'
  with gvncviewer 'remote desktop - GVncViewer'
  with remmina "localhost:$vnc_port"
  with virt-viewer 'remote desktop'
  # Otherwise it asks whether its settings for the host are right.
  mkdir -p "$HOME/.config"
  printf '[General]\nShowPreferencesForNewConnections=false\n' >"$HOME/.config/krdcrc"
  with krdc KRDC
}

test_ssh_viewers() {
  title=uxterm
  show_shell ssh-in-terminal xdg-open "$ssh"
  show_shell openssh-ipv6 hopopen --viewer openssh "ssh://[::1]:$ssh_port"
  title='localhost - PuTTY'
  show_shell putty hopopen --viewer putty "$ssh"
  # What a new connection starts from: 2 is the agent.
  mkdir -p "$HOME/.config/remmina"
  printf '%s\n' '[remmina_pref]' periodic_news_permitted=false '[remmina]' name=default \
    protocol=SSH ssh_auth=2 >"$HOME/.config/remmina/remmina.pref"
  eval "$(ssh-agent -a "$scratch/agent")" >/dev/null
  services+=("$SSH_AGENT_PID")
  ssh-add -q "$scratch/ssh/user"
  title="localhost:$ssh_port"
  show_shell remmina-ssh hopopen --viewer remmina-ssh "ssh://root@localhost:$ssh_port"
  unset SSH_AUTH_SOCK
}

# --- hoplaunch -----------------------------------------------------------------

test_hoplaunch() {
  title='remote desktop - TigerVNC'
  show hoplaunch shows_desktop hoplaunch -VNC_OPTIONS=-ReconnectOnError=0 "$vnc/?shared=1"
  show vnc-address-only shows_desktop hoplaunch -program="$examples/vnc-address-only" "$vnc/"
  title='TightVNC: remote desktop'
  show hoplaunch-tightvnc shows_desktop hoplaunch -program=xtightvncviewer -style=separate \
    -VNC_OPTIONS=depth=24 "$vnc/"
  title="localhost:$vnc_port"
  show hoplaunch-remmina shows_desktop hoplaunch -program="$examples/vnc-in-remmina" "$vnc/"
  title='remote desktop - GVncViewer'
  show hoplaunch-gvncviewer shows_desktop hoplaunch -program=gvncviewer -VNC_OPTIONS=-zoom=100 \
    "vnc://localhost:$((vnc_port - 5900))/"
  title='localhost - PuTTY'
  show_shell hoplaunch-putty hoplaunch -style=separate -portArg=P "$ssh/"
  title=uxterm
  show_shell hoplaunch-ssh-in-terminal hoplaunch -program="$examples/ssh-in-terminal" "$ssh/"
}

# The wrappers, with programs that say what they are given.
test_wrappers() {
  local program script
  mkdir "$scratch/told"
  for program in x-terminal-emulator vncviewer remmina; do
    printf '#!/bin/sh\necho "$@"\n' | install -m 755 /dev/stdin "$scratch/told/$program"
  done
  for script in ssh-in-terminal vnc-address-only vnc-in-remmina; do
    try "$script refuses what is no address" refuses "$script"
  done
  says ssh-in-terminal host '-e ssh -- host'
  says ssh-in-terminal user@host.example:22 '-e ssh -p 22 -- user@host.example'
  says ssh-in-terminal '[::1]:22' '-e ssh -p 22 -- ::1'
  says vnc-address-only '[::1]:5901' '-ReconnectOnError=0 -Shared [::1]:5901'
  says vnc-in-remmina host '--connect=vnc://host?'
  says vnc-in-remmina '[::1]' '--connect=vnc://[::1]?'
}

# refuses SCRIPT: the wrapper starts nothing for what is no address.
refuses() {
  local address
  for address in -oProxyCommand=x '-via=x;[::1]' "x;touch $scratch/harmed" 'x y' \
    "\$(touch $scratch/harmed)" $'x\ny' x/y x:y x@-y -x@y x:0 x:65536 x:022 '[x]' ''; do
    if PATH=$scratch/told:$PATH "$examples/$1" "$address" 2>/dev/null; then
      printf 'accepted: %q\n' "$address"
      return 1
    fi
  done
}

# says SCRIPT ADDRESS ARGUMENTS: what the wrapper gives to its program for the address.
says() { try "$1 with $2" is_told "$@"; }
is_told() {
  diff <(echo "$3") <(PATH=$scratch/told:$PATH "$examples/$1" -option=1 "$2" 2>&1)
}

# --- All of it -----------------------------------------------------------------

try 'install' install_package
try 'the schemes are registered' has_schemes
test_openers
test_browser
test_vnc_viewers
test_ssh_viewers
test_hoplaunch
test_wrappers
try 'no link ran a command' test ! -e "$scratch/harmed"
try 'install over itself' install_package --reinstall
title='remote desktop - TigerVNC'
show reinstalled shows_desktop gio open "$vnc"
try 'purge' purges
try 'all processes end' end_processes
closing_line
