#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows what a hostile VNC server gets from the real viewers, started as viewers/ says:
# nothing of the clipboard, no password of the session, no full screen and no keyboard,
# even where the viewers' own settings offer them.  And what trusted servers get.
#
# Screen, server, settings and home folder are the test's own, on this machine alone.
# Installs what it needs.
#
#   scripts/desktop/viewers_test.sh [VIEWER...]     NAME of viewers/NAME.toml
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh
# shellcheck source=scripts/desktop/scratch_desktop.sh
source scripts/desktop/scratch_desktop.sh
# shellcheck source=scripts/desktop/viewer_checks.sh
source scripts/desktop/viewer_checks.sh
# shellcheck source=scripts/desktop/viewer_settings.sh
source scripts/desktop/viewer_settings.sh

vnc_viewers=(tigervnc tightvnc gvncviewer remmina krdc virt-viewer)
(($# > 0)) || set -- "${vnc_viewers[@]}"

need gvncviewer imagemagick krdc openbox openssl python3 remmina remmina-plugin-vnc \
  tigervnc-tools tigervnc-viewer virt-viewer wmctrl x11-apps x11-utils x11-xserver-utils \
  xdotool xsel xtightvncviewer xterm xvfb

use_scratch_home
start_screen
start_another_window
openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=localhost \
  -keyout "$scratch/key.pem" -out "$scratch/only_certificate.pem" 2>"$scratch/openssl.log"
cat "$scratch/key.pem" "$scratch/only_certificate.pem" >"$scratch/certificate.pem"

# definition EXPRESSION: of the viewer's file, as Python's d; its text.
definition() {
  /usr/bin/python3 -c 'import sys, tomllib
d = tomllib.load(open(sys.argv[1], "rb"))
found = eval(sys.argv[2])
print("\n".join(found) if isinstance(found, (list, dict)) else found)' "viewers/$viewer.toml" "$1"
}
knows() { [[ $(definition "'$1' in d.get('parameters', {})") == True ]]; }
unguarded() { [[ $(definition 'd.get("unguarded", [])') == *"$1"* ]]; }

# check NAME COMMAND...: a step about this viewer.
check() { try "$viewer: $1" "${@:2}"; }

# unguarded_or WORD NAME COMMAND...: what the viewer says it cannot guard is so indeed, and
# everything else is guarded.
fails() { ! "$@"; }
unguarded_or() {
  if unguarded "$1"; then
    check "$2 is not so, as its unguarded says" fails "${@:3}"
  else
    check "$2" "${@:3}"
  fi
}

test_desktop() {
  check 'shows the desktop' in_session '' shows_desktop "$viewer"
  unguarded_or disconnection 'shares the desktop' sees client_init '"shared": 1' '' "$viewer"
  check 'control characters and markup in the title' in_session \
    $'--new-title \e]0;\a<b>&amp;%s%n-hostile' shows_desktop "$viewer"
  if unguarded 'full screen'; then
    check 'fills the screen, as its unguarded says' in_session '--size 1100x720' \
      is_more_than_a_window "$viewer"
  else
    test_window
  fi
  check 'the bell does not bring back the window' in_session --bell stays_away "$viewer"
  unguarded_or keyboard 'the keyboard is not grabbed' in_session '' keyboard_is_free "$viewer"
  unguarded_or disconnection 'a second client leaves the first' in_session '' \
    second_stays_with_first "$viewer"
}

test_window() {
  local size
  check 'is an ordinary window though settings ask for more' in_session '' is_small "$viewer"
  for size in '--size 1100x720' '--size 5000x5000' '--resize 1100x720' \
    '--resize 16384x16384@16 1100x720@2 1x1 --resize-for-ever --every 0.2 --bell'; do
    check "is an ordinary window with $size" in_session "$size" is_ordinary "$viewer"
  done
}

test_clipboard() {
  local hostile="--ask --clipboard $server_text" all=()
  if unguarded clipboard; then
    check 'the clipboard is open, as its unguarded says' in_session "$hostile" \
      clipboard_is_open "$viewer"
    return
  fi
  check 'the clipboard stays where it is' in_session "$hostile" clipboard_stays "$viewer"
  mapfile -t all < <(every_parameter)
  if ((${#all[@]} > 0)); then
    check 'no parameter opens the clipboard' in_session "$hostile" clipboard_stays \
      "$viewer" "${all[@]}"
    check 'no parameter makes it more than a window' in_session '' is_small "$viewer" "${all[@]}"
  fi
}

# Trusted servers get what the user's settings give them, which shows besides that those
# settings ask for something.
test_trusted() {
  [[ $viewer != gvncviewer ]] || return 0 # it has neither settings nor a clipboard
  # Those that are unguarded have shown it already, and Virt Viewer has no such settings.
  unguarded 'full screen' || [[ $viewer == virt-viewer ]] ||
    check 'is full screen for a trusted server, as the settings ask' \
      fails in_session '' is_small "$viewer" --trusted
  forget_settings
  check 'is small for a trusted server without the settings' \
    in_session '' is_small "$viewer" --trusted
  # That of Virt Viewer only comes in.
  [[ $viewer == virt-viewer ]] ||
    check 'a trusted server gets the clipboard' in_session --ask clipboard_goes_out \
      "$viewer" --trusted
  check 'a trusted server sets the clipboard' in_session "--clipboard $server_text" \
    clipboard_comes_in "$viewer" --trusted
}

# every_parameter: one of each that the viewer knows, except for ViewOnly, under which nothing
# could be seen, and the demand for security, which the server does not meet.
every_parameter() {
  local name
  for name in Shared=1 QualityLevel=9 CompressLevel=9 AutoSelect=1 ColorLevel=5; do
    ! knows "${name%=*}" || printf '%s\n' --parameter "$name"
  done
}

test_passwords() {
  local type
  for type in vnc plain tls-vnc tls-plain x509-plain tight-vnc tight-unix apple ms-logon; do
    check "no password of the session to a server that asks for $type" \
      keeps_session_password "$type" "$viewer"
  done
  if [[ $(definition '"{password}" in d.get("environment", {}).values()') == True ]]; then
    check "a link's password" answers vnc vnc_auth link-pwd "$viewer" --password link-pwd
    check "a link's user and password" answers tls-plain login \
      '"user": "link-user", "password": "link-pwd"' "$viewer" --user link-user --password link-pwd
  fi
}

# port_between LOW HIGH: one that nobody has.
port_between() {
  /usr/bin/python3 -c '
import socket, sys
for port in range(int(sys.argv[1]), int(sys.argv[2]) + 1):
    with socket.socket() as four, socket.socket(socket.AF_INET6) as six:
        try:
            four.bind(("127.0.0.1", port))
            six.bind(("::1", port))
        except OSError:
            continue
        print(port)
        break' "$@"
}
reaches_port() { sees client_init '' "--port $(port_between "$@")" "$viewer"; }

test_ipv6() {
  check IPv6 sees client_init '' '--listen ::1' "$viewer" --host ::1
  check 'IPv6 with a zone' sees client_init '' '--listen ::1' "$viewer" --host ::1%1
}
reaches_display() {
  local port
  port=$(port_between 5901 5999)
  sees client_init '' "--port $port" "$viewer" --port $((port - 5900))
}

test_addresses() {
  check 'the port of a display' reaches_port 5901 5999
  check 'a port above the displays' reaches_port 6000 6099
  check 'a high port' reaches_port 59000 65535
  check localhost sees client_init '' '' "$viewer" --host localhost
  check 'a user of a domain' sees client_init '' '' "$viewer" --user 'DOMAIN\name@domain.example'
  case $viewer in
    gvncviewer) ;; # ports below 5900 are refused before it is started, and IPv6 by itself
    tightvnc) test_low_ports ;;
    remmina | krdc)
      check 'a port below the displays' reaches_port 5800 5899
      check 'ports 1 to 99 are displays' reaches_display
      test_ipv6
      ;;
    *)
      test_low_ports
      test_ipv6
      ;;
  esac
}
test_low_ports() {
  check 'a port below the displays' reaches_port 5800 5899
  ((EUID == 0)) || return 0 # others may not listen there
  check 'a port that could be a display' reaches_port 1 99
}

test_parameters() {
  check 'keys and the pointer arrive' in_session '' gets_keys "$viewer"
  ! knows ViewOnly ||
    check 'ViewOnly takes no key' in_session '' gets_no_keys "$viewer" --parameter ViewOnly=true
  ! knows Shared || check 'Shared=true' sees client_init '"shared": 1' '' "$viewer" \
    --parameter Shared=true
  # Tight's levels are encodings of their own.
  ! knows QualityLevel || check 'QualityLevel=5' sees encodings ' -27' '' "$viewer" \
    --parameter QualityLevel=5
  ! knows CompressLevel || check 'CompressLevel=3' sees encodings ' -253' '' "$viewer" \
    --parameter CompressLevel=3
  ! knows ColorLevel || check 'ColorLevel=5' sees format '"bits": 8, "maxima": [7, 7, 3]' '' \
    "$viewer" --parameter ColorLevel=5
  if knows SecurityType; then
    check 'SecurityType=19 refuses a server without' refuses_insecure "$viewer" \
      --parameter SecurityType=19
    check 'SecurityType=19 takes a server with it' sees client_init '' '--security tls-none' \
      "$viewer" --parameter SecurityType=19
  fi
}

for viewer; do
  viewer_title=hostile # the server's, unless the settings know another
  "settings_$viewer"
  test_desktop
  test_clipboard
  test_passwords
  test_addresses
  test_parameters
  test_trusted
  if declare -F "test_$viewer" >/dev/null; then
    "test_$viewer"
  fi
done

closing_line
