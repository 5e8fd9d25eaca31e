#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows that telnet, as viewers/telnet.toml describes it, sends a server that asks for
# everything none of the session's variables.  The server, the terminal and the home folder are
# the test's own.  Installs what it needs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh
# shellcheck source=scripts/desktop/scratch_desktop.sh
source scripts/desktop/scratch_desktop.sh
need bsdutils inetutils-telnet python3
use_scratch_home

# A terminal without a window.
cat >"$scratch/bin/x-terminal-emulator" <<'END'
#!/bin/bash
[[ $1 == -e ]] && shift
printf -v command '%q ' "$@"
exec timeout 15 script --quiet --return --command "$command" /dev/null </dev/null
END
chmod +x "$scratch/bin/x-terminal-emulator"

# The session's secrets.
export DISPLAY=screen.example:77 PRINTER=printer-of-session SECRET=secret-of-session
export XAUTHORITY=/nowhere/authority SSH_AUTH_SOCK=$scratch/agent
secrets=(screen.example :77 printer-of-session secret-of-session /nowhere "$scratch")

# asked COMMAND...: what the server got of a client that is started so; PORT in the words is
# its port.
asked() {
  rm -f "$scratch/port" "$scratch/log"
  python3 tests/hostile_telnet.py --port-file "$scratch/port" --log "$scratch/log" &
  wait_for 10 test -s "$scratch/port"
  "${@//PORT/$(cat "$scratch/port")}" >"$scratch/step.log" 2>&1 || true
  wait_for 20 test -s "$scratch/log"
}

sends_the_screen() {
  asked x-terminal-emulator -e telnet -E -c -l kim 127.0.0.1 PORT
  grep -qF screen.example "$scratch/log" && grep -qF printer-of-session "$scratch/log"
}

sends_nothing_of_the_session() {
  local words secret
  mapfile -d '' -t words < <(scripts/desktop/viewer_vector.py --user kim --port 1 \
    telnet telnet 127.0.0.1)
  words[-1]=PORT
  asked "${words[@]}"
  grep -qF kim "$scratch/log" || return 1
  for secret in "${secrets[@]}"; do
    ! grep -F -- "$secret" "$scratch/log" || return 1
  done
}

try 'telnet: otherwise the screen and the printer are sent' sends_the_screen
try 'telnet: nothing of the session is sent' sends_nothing_of_the_session
try 'all processes end' end_processes
closing_line
