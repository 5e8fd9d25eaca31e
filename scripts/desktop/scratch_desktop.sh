# SPDX-License-Identifier: MIT
# Sourced by the tests that start real viewers: a screen, servers and a home folder of the
# test's own, which all end with it.
# shellcheck shell=bash

# shellcheck source=scripts/lib.sh
source scripts/lib.sh
scratch=$(mktemp -d)
services=() # process groups

# processes: those that were started here.  They have a path of the scratch folder in
# their environment, which this script itself has not; but sshd writes over its own.
processes() (
  unset HOME XDG_RUNTIME_DIR PATH SSH_AUTH_SOCK
  /usr/bin/grep -lsF -- "$scratch" /proc/[0-9]*/environ | /usr/bin/cut -d / -f 3 || true
  for service in "${services[@]}"; do
    kill -0 "$service" 2>/dev/null && printf '%s\n' "$service"
  done
)

no_process() { [[ -z $(processes) ]]; }

end_processes() {
  local signal pids
  for signal in TERM KILL; do
    mapfile -t pids < <(processes)
    kill -s "$signal" "${pids[@]}" 2>/dev/null || true
    wait_for 10 no_process && return
  done
  printf 'still there: %s\n' "$(processes | xargs)"
  return 1
}

clear_away() {
  set +e
  end_processes
  rm -rf "$scratch"
}
trap clear_away EXIT
trap 'exit 1' INT TERM HUP

# wait_for SECONDS COMMAND...: until the command succeeds.
wait_for() {
  local end=$((SECONDS + $1))
  shift
  until "$@"; do
    ((SECONDS < end)) || return 1
    sleep 0.2
  done
}

# service NAME COMMAND...: starts a program that runs until the end.
service() {
  local name=$1
  shift
  setsid "$@" >"$scratch/$name.log" 2>&1 &
  services+=($!)
}

# ready NAME COMMAND...: waits until the command says that the service is there.
ready() {
  local name=$1
  shift
  if ! wait_for 60 "$@"; then
    printf '%s does not start:\n' "$name" >&2
    cat "$scratch/$name.log" >&2
    exit 1
  fi
}

# free_port: prints a port that nobody has.
free_port() {
  python3 -c 'import socket
with socket.socket() as probe:
    probe.bind(("127.0.0.1", 0))
    print(probe.getsockname()[1])'
}

# use_scratch_home: nothing of the user's settings and session is seen from here on.
use_scratch_home() {
  export HOME=$scratch/home XDG_RUNTIME_DIR=$scratch/runtime PATH=$scratch/bin:$PATH
  unset BROWSER DESKTOP_SESSION WAYLAND_DISPLAY XAUTHORITY SSH_AUTH_SOCK "${!XDG_CURRENT_@}" \
    "${!XDG_CONFIG_@}" "${!XDG_DATA_@}" "${!XDG_CACHE_@}" "${!XDG_STATE_@}" "${!XDG_SESSION_@}"
  export DBUS_SESSION_BUS_ADDRESS=disabled: NO_AT_BRIDGE=1 # no session bus to be started
  mkdir -m 700 "$HOME" "$XDG_RUNTIME_DIR" "$scratch/bin"
}

# start_screen: Xvfb and a window manager, in a colour that shows what covers it.
start_screen() {
  service Xvfb Xvfb -displayfd 3 -screen 0 1100x720x24 -nolisten tcp -noreset 3>"$scratch/display"
  ready Xvfb test -s "$scratch/display"
  DISPLAY=:$(cat "$scratch/display")
  export DISPLAY
  service openbox openbox --sm-disable
  ready openbox wmctrl -m >/dev/null 2>&1
}

# can_grab_keyboard: no program has taken it for itself.
can_grab_keyboard() {
  /usr/bin/python3 - <<'PYTHON'
import ctypes, ctypes.util, sys
x11 = ctypes.CDLL(ctypes.util.find_library("X11") or "libX11.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
display = ctypes.c_void_p(x11.XOpenDisplay(None))
x11.XDefaultRootWindow.restype = ctypes.c_ulong
root = ctypes.c_ulong(x11.XDefaultRootWindow(display))
answer = x11.XGrabKeyboard(display, root, 0, 1, 1, ctypes.c_ulong(0))
x11.XCloseDisplay(display)
print("the answer to a grab of the keyboard:", answer)
sys.exit(answer != 0)
PYTHON
}

say_all=1 # a line for each step

# try NAME COMMAND...
try() {
  local status=0
  "${@:2}" >"$scratch/step.log" 2>&1 || status=1
  outcome "$1" "$status" "$(tail -n 40 "$scratch/step.log")"
}
