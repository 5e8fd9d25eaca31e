#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows that a machine is reached through an ssh gateway: a real VNC server, two
# real SSH servers, of which one is known, and TigerVNC.  And that a gateway gets nothing
# but that connection, and that nobody gets one of a tunnel that fails.
#
# A part of ./test --desktop, which runs it in a clean Debian.  Elsewhere it tries what is in
# build/release, as root and in a network of its own, as it listens on every port:
#
#   unshare --net sh -c 'ip link set lo up && scripts/desktop/tunnel_test.sh'
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/desktop/scratch_desktop.sh
source scripts/desktop/scratch_desktop.sh
# shellcheck source=scripts/desktop/screen_checks.sh
source scripts/desktop/screen_checks.sh
# shellcheck source=scripts/desktop/remote_machine.sh
source scripts/desktop/remote_machine.sh

if (($(wc -l </proc/net/tcp) > 1)) && [[ ! -e /made_with ]]; then
  printf 'This test listens on every port, and so needs a network of its own.\n' >&2
  exit 1
fi
if [[ -e /made_with ]]; then
  # shellcheck source=scripts/desktop/in_clean_debian.sh
  source scripts/desktop/in_clean_debian.sh
  try 'install' install_package
fi
use_scratch_home
if [[ ! -e /made_with ]]; then
  mkdir -p "$HOME/.local/share/hoplaunch" "$pictures"
  ln -s "$PWD/viewers" "$HOME/.local/share/hoplaunch/viewers"
  ln -s "$PWD/build/release/hopopen" "$scratch/bin/hopopen"
fi
# Messages about what was not opened are no windows here.
ln -s /bin/true "$scratch/bin/notify-send"
start_screen
xsetroot -solid "$background"
start_remote_desktop
title='remote desktop'

# --- Two gateways, which grant all that they are asked for -------------------------

# OpenSSH takes the home folder from the list of users, not from HOME.
printf 'root:x:0:0::%s:/bin/sh\nsshd:x:33:33::/:/bin/false\n' "$HOME" >"$scratch/passwd"
printf 'root:x:0:\n' >"$scratch/group"
at_home=(env LD_PRELOAD=libnss_wrapper.so "NSS_WRAPPER_PASSWD=$scratch/passwd"
  "NSS_WRAPPER_GROUP=$scratch/group")

mkdir "$scratch/ssh"
ssh-keygen -q -t ed25519 -N '' -f "$scratch/ssh/user"
cat >"$scratch/ssh/session" <<END
#!/bin/sh
printenv >>"$scratch/session"
eval "exec \$SSH_ORIGINAL_COMMAND"
END
chmod +x "$scratch/ssh/session"
mkdir -p /run/sshd

# gateway NAME PORT SETTING...
gateway() {
  ssh-keygen -q -t ed25519 -N '' -f "$scratch/ssh/$1"
  printf '%s\n' "ListenAddress 127.0.0.1" "Port $2" 'PidFile none' \
    "HostKey $scratch/ssh/$1" "AuthorizedKeysFile $scratch/ssh/user.pub" 'StrictModes no' \
    'UsePAM no' 'PasswordAuthentication no' 'PermitRootLogin prohibit-password' \
    "ForceCommand $scratch/ssh/session" 'AllowAgentForwarding yes' 'PermitTunnel yes' \
    'X11Forwarding yes' 'XAuthLocation /usr/bin/xauth' 'PrintLastLog no' 'LogLevel DEBUG2' \
    "${@:3}" >"$scratch/ssh/$1.config"
  service "$1" /usr/sbin/sshd -D -e -f "$scratch/ssh/$1.config"
  ready "$1" grep -q 'Server listening' "$scratch/$1.log"
}
gateway known 2201 'AllowTcpForwarding yes'
gateway unknown 2202 'AllowTcpForwarding yes'
gateway closed 2203 'AllowTcpForwarding no'

# Settings of the user that offer everything to every machine.
install -d -m 700 "$HOME/.ssh"
cp "$scratch/ssh/user" "$HOME/.ssh/id_ed25519"
cat >"$HOME/.ssh/config" <<END
Host *
  ForwardAgent yes
  ForwardX11 yes
  ForwardX11Trusted yes
  ClearAllForwardings yes
  ExitOnForwardFailure no
  PermitLocalCommand yes
  LocalCommand touch $scratch/command_ran
  RemoteCommand exit
  SessionType none
  RequestTTY yes
  Tunnel no
  ControlMaster auto
  ControlPersist yes
  ControlPath $scratch/master-%C
END
for name in known closed; do
  sed -n "s/^Port //p" "$scratch/ssh/$name.config" | while read -r port; do
    printf '[localhost]:%s %s\n' "$port" "$(cut -d ' ' -f 1,2 "$scratch/ssh/$name.pub")"
  done
done >"$HOME/.ssh/known_hosts"
eval "$(ssh-agent -a "$scratch/agent")" >/dev/null
services+=("$SSH_AGENT_PID")
ssh-add -q "$scratch/ssh/user"

hopopen --trust localhost
unset SSH_ASKPASS

# link PORT: the desktop, through the gateway on that port.
link() {
  printf 'vnc://127.0.0.1:%s/?ViewOnly=true&SshHost=localhost&SshPort=%s&SshUsername=root' \
    "$vnc_port" "$1"
}
# asks ANSWER: gives ssh a program that answers its questions.
asks() {
  cat >"$scratch/bin/ask" <<END
#!/bin/sh
printf '%s\n' "\$1" >>"$scratch/asked"
echo $1
END
  chmod +x "$scratch/bin/ask"
}

# with_word PATTERN: the command line of the process that has a word like that.  Others may
# just have gone.
with_word() { grep -lsazx -- "$1" /proc/[0-9]*/cmdline || true; }
viewer_words() { tr '\0' '\n' <"$(with_word "$XDG_RUNTIME_DIR/hopopen-[^/]*/socket")"; }
tunnels() { find "$XDG_RUNTIME_DIR" -maxdepth 1 -name 'hopopen-*'; }

# --- The desktop shows ----------------------------------------------------------------

through_socket() {
  shows_desktop && [[ $(viewer_words) == xtigervncviewer*"$XDG_RUNTIME_DIR"/hopopen-*/socket ]] &&
    grep -q "target 127.0.0.1 port $vnc_port" "$scratch/$gate.log"
}

gets_nothing() {
  local status=0 what
  for what in auth-agent-req x11-req 'rtype tcpip-forward' pty-req tun@openssh; do
    ! grep -- "$what" "$scratch/$gate.log" || status=1
  done
  ! grep -E '^(SSH_AUTH_SOCK|DISPLAY)=' "$scratch/session" || status=1
  grep -q '^SSH_ORIGINAL_COMMAND=sleep 20$' "$scratch/session" || status=1
  [[ ! -e $scratch/command_ran ]] || status=1
  return "$status"
}

gets_all_otherwise() {
  "${at_home[@]}" timeout 10 ssh -p 2201 -o ControlMaster=no \
    -o RemoteCommand=none -o SessionType=default localhost true
  grep -q auth-agent-req "$scratch/known.log" && grep -q x11-req "$scratch/known.log" &&
    [[ -e $scratch/command_ran ]]
}

gone_after() {
  local seconds=$1
  wait_for "$seconds" no_tunnel_of_ssh
}
no_tunnel_of_ssh() { [[ -z $(with_word "$XDG_RUNTIME_DIR/hopopen-[^/]*/socket:.*") ]]; }

cleans_up() {
  [[ -n $(tunnels) ]] || return
  hopopen --viewer tigervnc vnc://127.0.0.1:1 >/dev/null 2>&1 &
  local viewer=$!
  wait_for 10 no_tunnels || return
  kill "$viewer"
}
no_tunnels() { [[ -z $(tunnels) ]]; }

gate=known port=2201
show tunnel through_socket "${at_home[@]}" hopopen "$(link "$port")"
try 'the gateway gets neither the agent, nor the screen, nor a port, nor a command' gets_nothing
try 'the tunnel ends 20 seconds after its start, or with the viewer' gone_after 30
try 'a later start removes the folder' cleans_up
try 'what the test can see: the same settings offer it all otherwise' gets_all_otherwise

# --- A gateway that is not known ------------------------------------------------------

fails() {
  local status=0 said
  said=$(setsid "${at_home[@]}" "$@" hopopen "$(link "$port")" 2>&1 </dev/null) || status=$?
  printf 'status %d: %s\n' "$status" "$said"
  [[ $status == 3 && $said == *'(tunnel)' ]] && no_tunnels && no_window
}
fails_with() { fails "${@:2}" && [[ $(fails "${@:2}") == *"$1"* ]]; }

gate=unknown port=2202
try 'an unknown key fails where nobody can be asked' \
  fails_with 'Host key verification failed' env SSH_ASKPASS=/nonexistent
asks no
try 'an unknown key fails when the answer is no' \
  fails_with 'Host key verification failed' env "SSH_ASKPASS=$scratch/bin/ask"
asks yes
show tunnel-unknown through_socket "${at_home[@]}" "SSH_ASKPASS=$scratch/bin/ask" \
  hopopen "$(link "$port")"
try 'that tunnel ends, too' gone_after 30
try 'the question was about the key' grep -q 'authenticity of host' "$scratch/asked"

# --- Somebody else of this machine ----------------------------------------------------

# Listens on every port that is free, in several processes as each may have so many files open,
# and writes down who comes.
listen_everywhere() {
  local from
  for from in {1024..63024..10000}; do
    service "listener-$from" setpriv --reuid nobody --clear-groups /usr/bin/python3 -c '
import select, socket, sys
sockets = {}
poll = select.epoll()
start = int(sys.argv[1])
for port in range(start, min(start + 10000, 65536)):
    one = socket.socket(socket.AF_INET6)
    one.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 0)
    try:
        one.bind(("::", port))
        one.listen(1)
    except OSError:
        one.close()
        continue
    sockets[one.fileno()] = one
    poll.register(one.fileno(), select.EPOLLIN)
print("listens on", len(sockets), flush=True)
while True:
    for number, _ in poll.poll():
        print("came to", sockets[number].getsockname(), flush=True)
        sockets[number].accept()[0].close()
' "$from"
    ready "listener-$from" grep -q 'listens on' "$scratch/listener-$from.log"
  done
}
listen_everywhere
came() { grep -h 'came to' "$scratch"/listener-*.log; }
nobody_came() { ! came; }
listens_everywhere() {
  (($(sed -n 's/listens on //p' "$scratch"/listener-*.log | paste -sd +) > 64000)) || return
  (: </dev/tcp/127.0.0.1/5999) && (: </dev/tcp/::1/60000) && wait_for 5 came_twice &&
    sed -i '/came/d' "$scratch"/listener-*.log
}
came_twice() { (($(came | wc -l) == 2)); }

fails_alone() { fails "$@" && sleep 2 && nobody_came; }
refuses_channel() {
  "${at_home[@]}" setsid hopopen "$(link 2203)" </dev/null &
  local viewer=$!
  wait_for 30 grep -q 'direct-tcpip' "$scratch/closed.log" || return
  sleep 3
  kill "$viewer" 2>/dev/null || true
  ! shows_desktop && nobody_came
}

try 'what the test can see: a local user listens on every port' listens_everywhere
ssh-keygen -q -R '[localhost]:2202' -f "$HOME/.ssh/known_hosts"
port=2202
try 'a tunnel that fails leads nobody to that user' fails_alone env SSH_ASKPASS=/nonexistent
rm "$HOME/.ssh/id_ed25519"
ssh-add -q -D
port=2201
try 'nor does one without a log-in' fails_alone env SSH_ASKPASS=/nonexistent
ssh-add -q "$scratch/ssh/user"
try 'nor does one whose gateway forwards nothing' refuses_channel
try 'all processes end' end_processes
closing_line
