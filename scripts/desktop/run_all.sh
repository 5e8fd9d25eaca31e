#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows the packages at work on a desktop, end to end: builds them unless they are there, tries
# their life, and puts them into a clean Debian with all viewers of viewers/, where
#
# - links are opened by a click in Chromium, xdg-open, gio and hopopen, and reach real VNC
#   and SSH servers (links_test.sh);
# - so do links to real RDP, SPICE and telnet servers, and nothing of a hostile rdp link reaches a
#   viewer (rdp_test.sh, which runs in Debian 13 as well except in CI, spice_test.sh,
#   telnet_test.sh);
# - ViewOnly is held to (view_only_test.sh), and refusals are read (refusal_test.sh);
# - `hopopen --check` finds why a click does nothing (check_test.sh);
# - each viewer keeps what is the user's from hostile servers (viewers_test.sh,
#   ssh_viewers_test.sh, telnet_viewer_test.sh).
#
# Needs root, the mirror of Debian, and a kernel with overlayfs and namespaces.  Several
# tests run at once, each with a network, processes and a screen of its own.  Screenshots
# and what the tests say are in build/desktop/.  Everything else is gone at the end, except for
# build/clean_debian/ and build/clean_debian_trixie/, which make the next run quicker.
#
#   ./test --desktop [TEST...]   only those tests, with the packages that are there
#   ./test --desktop debian      only makes the clean Debian; "debian-13" the other one
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh
need_root 'it makes a Debian of its own'
need debootstrap

output=build/desktop
rm -rf "$output"
mkdir -p "$output"

debian=(adwaita-icon-theme chromium dbus desktop-file-utils dunst firefox-esr fonts-dejavu-core
  freerdp2-shadow-x11 freerdp2-x11 gvncviewer imagemagick inetutils-telnet inetutils-telnetd
  kdialog krdc libglib2.0-bin libnotify-bin libnss-wrapper librsvg2-common openbox
  openssh-client openssh-server openssl procps putty putty-tools python3 qemu-system-x86 remmina
  remmina-plugin-rdp remmina-plugin-vnc spice-client-gtk strace tesseract-ocr
  tigervnc-standalone-server tigervnc-tools tigervnc-viewer virt-viewer wmctrl x11-apps x11-utils
  x11-xserver-utils xauth xdg-utils xdotool xfonts-base xsel xterm xtightvncviewer xvfb zenity)
# What Debian 12 lacks.
debian_13=(dbus desktop-file-utils fonts-dejavu-core freerdp3-sdl freerdp3-shadow-x11
  freerdp3-x11 imagemagick libglib2.0-bin openbox openssl procps python3 wmctrl x11-apps x11-utils
  x11-xserver-utils xdg-utils xdotool xfonts-base xterm xvfb)

only=$*

# --- Tests that run at once --------------------------------------------------------

declare -A running=() # process id: name

# finish NAME STATUS: says what a test said, and adds up its counts.  One without counts
# is one step.
finish() {
  local log=$output/$1.log
  printf '== %s (after %d s)\n' "$1" "$SECONDS"
  if [[ $(tail -n 1 "$log") =~ ^[0-9]+\ passed,\ [0-9]+\ failed$ ]]; then
    cat "$log"
    add_counts "$log" "$2"
  else
    outcome "$1" "$2" "$(tail -n 40 "$log")"
  fi
}

# wait_for_one: until one of those that run has finished.
wait_for_one() {
  local id status=0
  wait -n -p id "${!running[@]}" || status=$?
  finish "${running[$id]}" "$status"
  unset "running[$id]"
}

# is_wanted NAME: it was asked for, or it is the Debian of a test that was.
is_wanted() {
  local name
  [[ -n $only ]] || return 0
  for name in $only; do
    case $1:$name in
      "$name:$name" | debian-13:*-13) return ;;
      debian:*-13) ;;
      debian:*) return ;;
    esac
  done
  return 1
}

# begin NAME COMMAND...: at most as many at once as most tests, which mostly wait, bear.
at_once=4
begin() {
  is_wanted "$1" || return 0
  while ((${#running[@]} >= at_once)); do
    wait_for_one
  done
  setsid "${@:2}" >"$output/$1.log" 2>&1 &
  running[$!]=$1
}

is_running() { [[ " ${running[*]} " == *" $1 "* ]]; }

# wait_for NAME...: until those have finished.
wait_for() {
  local name
  for name; do
    while is_running "$name"; do
      wait_for_one
    done
  done
}

# end_all: unshare waits for its child through other signals, and kills it when it is
# killed.  The other tests clear away themselves.
end_all() {
  local id
  for id in "${!running[@]}"; do
    kill -- "-$id" 2>/dev/null || true
    [[ ${running[$id]} == package* ]] || kill -s KILL -- "-$id" 2>/dev/null || true
  done
  wait
}
trap end_all EXIT
trap 'exit 1' INT TERM HUP

# --- The tests -----------------------------------------------------------------------

in_debian() { begin "$1" scripts/desktop/clean_debian.sh run "${@:2}"; }
in_debian_13() {
  begin "$1" env CLEAN_DEBIAN=trixie scripts/desktop/clean_debian.sh run "${@:2}"
}

# viewers_of PREFIX FILE: the viewers that a script of tests has tests for.
viewers_of() { sed -n "s/^$1_\([a-z0-9-]*\)().*/\1/p" "scripts/desktop/$2"; }

begin_all() {
  local viewer
  in_debian links scripts/desktop/links_test.sh
  in_debian view-only scripts/desktop/view_only_test.sh
  in_debian refusal scripts/desktop/refusal_test.sh
  in_debian check scripts/desktop/check_test.sh
  for viewer in $(viewers_of settings viewer_settings.sh); do
    in_debian "viewers-$viewer" scripts/desktop/viewers_test.sh "$viewer"
  done
  in_debian tunnel scripts/desktop/tunnel_test.sh
  in_debian rdp scripts/desktop/rdp_test.sh
  in_debian spice scripts/desktop/spice_test.sh
  in_debian telnet scripts/desktop/telnet_test.sh
  in_debian viewers-telnet scripts/desktop/telnet_viewer_test.sh
  for viewer in $(viewers_of test ssh_viewers_test.sh); do
    in_debian "ssh-$viewer" scripts/desktop/ssh_viewers_test.sh "$viewer"
  done
}

if [[ $(cat build/package/commit 2>/dev/null) != "$(git rev-parse HEAD)" ]]; then
  begin package ./package # otherwise those are of what is committed
fi
begin debian scripts/desktop/clean_debian.sh make "${debian[@]}"
# Making it takes minutes, which CI does not have.
if [[ -z ${CI:-} || $only == *-13* ]]; then
  begin debian-13 env CLEAN_DEBIAN=trixie scripts/desktop/clean_debian.sh make "${debian_13[@]}"
fi
wait_for package
if [[ $only != debian* ]] && ((failed == 0)); then
  begin package-life scripts/desktop/package_life.sh
  wait_for debian
  [[ ! -e build/clean_debian/base ]] || begin_all
  wait_for debian-13
  [[ ! -e build/clean_debian_trixie/base ]] || in_debian_13 rdp-13 scripts/desktop/rdp_test.sh
fi
wait_for "${running[@]}"
printf 'It took %d s.\n' "$SECONDS"
closing_line
