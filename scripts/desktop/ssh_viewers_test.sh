#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows that the viewers of ssh links, as viewers/ describes them, log in to a real SSH
# server and keep from it what is the user's: the agent, the screen, ports and commands,
# even where the user's own settings offer them to every machine.
#
# Screen, server, keys, port, agent and home folder are the test's own, on this machine
# alone.  Installs what it needs.
#
#   scripts/desktop/ssh_viewers_test.sh [openssh] [putty] [remmina-ssh]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh
# shellcheck source=scripts/desktop/scratch_desktop.sh
source scripts/desktop/scratch_desktop.sh

# Installing openssh-server starts the system's sshd, unless a policy forbids it.
if [[ ! -x /usr/sbin/sshd ]]; then
  printf 'This test needs openssh-server, whose installation starts a server.\n' >&2
  exit 1
fi
need libnss-wrapper openbox openssh-client putty putty-tools python3 remmina strace wmctrl \
  xauth xdotool xterm xvfb

use_scratch_home
start_screen
ln -s /usr/bin/xterm "$scratch/bin/x-terminal-emulator"
repository=$PWD

# --- The machine that the links lead to ----------------------------------------

# It grants all that it is asked for, and says in its log what that was.
user=$(id -un)
port=$(free_port)
mkdir "$scratch/ssh" "$scratch/remote"
ssh-keygen -q -t ed25519 -N '' -f "$scratch/ssh/host"
ssh-keygen -q -t ed25519 -N '' -f "$scratch/ssh/user"
cat >"$scratch/ssh/session" <<EOF
#!/bin/sh
cd "$scratch/remote"
printenv >environment
mv environment started
PS1='remote\$ ' exec bash --noprofile --norc -i
EOF
chmod +x "$scratch/ssh/session"
cat >"$scratch/ssh/sshd_config" <<EOF
ListenAddress 127.0.0.1
ListenAddress ::1
Port $port
PidFile none
HostKey $scratch/ssh/host
AuthorizedKeysFile $scratch/ssh/user.pub
StrictModes no
UsePAM no
PasswordAuthentication no
PermitRootLogin prohibit-password
ForceCommand $scratch/ssh/session
AllowAgentForwarding yes
AllowTcpForwarding yes
PermitTunnel yes
X11Forwarding yes
XAuthLocation /usr/bin/xauth
SetEnv HOME=$scratch/remote
PrintLastLog no
LogLevel DEBUG2
EOF
[[ $EUID != 0 || -d /run/sshd ]] || mkdir /run/sshd
service sshd /usr/sbin/sshd -D -e -f "$scratch/ssh/sshd_config"
ready sshd grep -q 'Server listening on ::1' "$scratch/sshd.log"

# --- The machine in front of the user -------------------------------------------

eval "$(ssh-agent -a "$scratch/agent")" >/dev/null
services+=("$SSH_AGENT_PID")
ssh-add -q "$scratch/ssh/user"

# OpenSSH takes the home folder from the list of users, not from HOME.
printf '%s:x:%s:%s::%s:/bin/sh\n' "$user" "$EUID" "$(id -g)" "$HOME" >"$scratch/passwd"
printf '%s:x:%s:\n' "$(id -gn)" "$(id -g)" >"$scratch/group"
at_home=(env LD_PRELOAD=libnss_wrapper.so "NSS_WRAPPER_PASSWD=$scratch/passwd"
  "NSS_WRAPPER_GROUP=$scratch/group")

# start COMMAND...: starts it in the scratch home, with a clean slate on the other side.
start() {
  rm -rf "$scratch"/remote/* "$scratch/command_ran"
  log_before=$(wc -l <"$scratch/sshd.log")
  setsid "${at_home[@]}" "$@" >"$scratch/step.log" 2>&1 &
  group=$!
}

# vector WORD...: what scripts/desktop/viewer_vector.py prints, in the array "words".
vector() { mapfile -d '' -t words < <("$repository/scripts/desktop/viewer_vector.py" "$@"); }

windows() { wmctrl -l 2>/dev/null || true; } # one may just have gone
no_window() { [[ -z $(windows) ]]; }
front() {
  local window
  window=$(windows | sed -n '$s/ .*//p')
  [[ -n $window ]] && wmctrl -ia "$window"
}

ends() {
  local status=0
  kill -- "-$group" 2>/dev/null || true
  if ! wait_for 10 no_window; then
    kill -s KILL -- "-$group" 2>/dev/null || true
    wait_for 10 no_window || status=1
  fi
  wait "$group" 2>/dev/null || true
  return "$status"
}

# server_log: what the server has said since the start.
server_log() { tail -n "+$((log_before + 1))" "$scratch/sshd.log"; }
server_said() { grep -q -- "$1" <(server_log); }

logged_in() { [[ -e $scratch/remote/started ]]; }
reached() { [[ -e $scratch/remote/reached ]]; }
types() {
  front && sleep 0.5 && xdotool type --delay 30 $'touch reached\n' && wait_for 5 reached
}

# logs_in: there is a shell on the other side, and what is typed reaches it.
logs_in() {
  if ! wait_for 40 logged_in || ! wait_for 40 types; then
    server_log
    return 1
  fi
}

# offered WHAT: something of the user's is within reach of the other side.
agent_offered() { server_said auth-agent-req || grep -q ^SSH_AUTH_SOCK= "$scratch/remote/started"; }
screen_offered() { server_said x11-req || grep -q ^DISPLAY= "$scratch/remote/started"; }
port_offered() { server_said 'rtype tcpip-forward'; }
command_sent() { grep -q ^SSH_ORIGINAL_COMMAND= "$scratch/remote/started"; }
command_ran() { [[ -e $scratch/command_ran ]]; }

offered=(agent_offered screen_offered port_offered command_sent command_ran)

# logs_in_and_offers WHAT... -- COMMAND...: logs in, and of what can be offered exactly this
# is.
logs_in_and_offers() {
  local expected=' ' what status=0
  while [[ $1 != -- ]]; do
    expected+="$1 "
    shift
  done
  shift
  start "$@"
  if logs_in; then
    for what in "${offered[@]}"; do
      if "$what" && [[ $expected != *" $what "* ]]; then
        printf 'should not be: %s\n' "$what"
        status=1
      elif [[ $expected == *" $what "* ]] && ! "$what"; then
        printf 'should be: %s\n' "$what"
        status=1
      fi
    done
    ((status == 0)) || server_log | grep -E 'req|rtype|Starting session'
  else
    status=1
    grep -v "^$" "$scratch/step.log" | tail -n 5 || true
  fi
  ends && return "$status"
}

# names_user NAME COMMAND...: the server is asked for the user of that name, which is none.
names_user() {
  local status=0 name=$1
  shift
  start "$@"
  wait_for 20 server_said "Invalid user $name from" || {
    status=1
    server_log | grep -i user
  }
  ends && return "$status"
}

# asks_first COMMAND...: with a server whose key is not known, nobody logs in unasked.
asks_first() {
  local status=0
  start "$@"
  wait_for 20 server_said 'SSH2_MSG_KEXINIT received' || status=1
  sleep 4
  ! logged_in && ! server_said 'userauth-request' && [[ -n $(windows) ]] || status=1
  ((status == 0)) || server_log
  ends && return "$status"
}

# --- OpenSSH in a terminal --------------------------------------------------------

forwarded_port=$(free_port)
openssh_home() {
  mkdir -m 700 "$HOME/.ssh"
  cp "$scratch/ssh/user" "$HOME/.ssh/id_ed25519"
  known "$port"
  # It asks for all that a link must not bring about, before and after "Host *".
  cat >"$HOME/.ssh/config" <<EOF
Match exec "true"
  ForwardAgent yes
  RemoteForward $forwarded_port 127.0.0.1:$port
Host *
  ForwardX11 yes
  ForwardX11Trusted yes
  ClearAllForwardings no
  PermitLocalCommand yes
  LocalCommand touch $scratch/command_ran
  RemoteCommand exit
  RequestTTY yes
  GSSAPIDelegateCredentials yes
  Tunnel yes
  ControlPath $scratch/master-%C
  StrictHostKeyChecking no
  VerifyHostKeyDNS yes
  CanonicalizeHostname yes
Host its-port
  Hostname localhost
  Port $port
Match final
  ForwardAgent yes
EOF
}

# known PORT: the server's key is known on that port.
known() {
  local name
  for name in localhost 127.0.0.1 ::1 ::1%1; do
    printf '[%s]:%s %s\n' "$name" "$1" "$(cut -d ' ' -f 1,2 "$scratch/ssh/host.pub")"
  done >"$HOME/.ssh/known_hosts"
}

# settings WORD...: what OpenSSH makes of its words and of the configuration.
settings() {
  "${at_home[@]}" ssh -G "${words[@]:6}" | LC_ALL=C sort
}

settings_hold() {
  local setting
  vector --user "$user" openssh ssh host.example
  settings
  for setting in 'forwardagent no' 'forwardx11 no' 'clearallforwardings yes' \
    'permitlocalcommand no' 'gssapidelegatecredentials no' 'tunnel false' \
    'stricthostkeychecking ask' 'verifyhostkeydns false' 'host host.example' "user $user"; do
    grep -qx "$setting" <(settings) || {
      printf 'missing: %s\n' "$setting"
      return 1
    }
  done
  ! grep -E '^(remotecommand|remoteforward|localforward|dynamicforward|controlpath)' <(settings)
}

# goes_through_no_master: a connection that is open and has the agent is not shared.
goes_through_no_master() {
  local status=0
  "${at_home[@]}" ssh -fNMp "$port" -o RemoteCommand=none -o ClearAllForwardings=yes localhost
  wait_for 10 test -S "$(echo "$scratch"/master-*)" || return 1
  "${at_home[@]}" ssh -O check -p "$port" localhost || return 1
  vector --port "$port" openssh ssh localhost
  logs_in_and_offers -- "${words[@]}" && server_said 'Connection from' || status=1
  "${at_home[@]}" ssh -O exit -p "$port" localhost || true
  return "$status"
}

no_command_of_a_name() {
  local name
  # The trailing backslash would take the blank after it in "Match exec".
  vector --user "x\\" --port "$port" openssh ssh localhost
  ! "${at_home[@]}" ssh "${words[@]:6}" </dev/null || return 1
  for name in 'DOMAIN\name' name@domain.example _x.y-z x-oProxyCommand=x; do
    vector --user "$name" openssh ssh fe80::1%eth0
    grep -qxF "user $name" <(settings) && grep -qxF 'host fe80::1%eth0' <(settings) &&
      ! grep ^proxycommand <(settings) || return 1
  done
}

test_openssh() {
  openssh_home
  # What the test can see: without the words, all of it is offered.
  try 'openssh: a configuration that offers everything is obeyed otherwise' \
    logs_in_and_offers "${offered[@]}" -- xterm -e ssh -p "$port" localhost
  try 'openssh: the settings of a link hold' settings_hold
  vector --port "$port" openssh ssh localhost
  try 'openssh: a link logs in and offers nothing' logs_in_and_offers -- "${words[@]}"
  vector --port "$port" --user "$user" openssh ssh localhost
  try 'openssh: with a user' logs_in_and_offers -- "${words[@]}"
  vector openssh ssh its-port
  try 'openssh: the port of the configuration holds' logs_in_and_offers -- "${words[@]}"
  local host
  for host in 127.0.0.1 ::1 ::1%1; do
    vector --port "$port" openssh ssh "$host"
    try "openssh: $host" logs_in_and_offers -- "${words[@]}"
  done
  vector --trusted --port "$port" openssh ssh localhost
  try "openssh: a trusted host gets the configuration's commands, but no forwarding" \
    logs_in_and_offers command_sent command_ran -- "${words[@]}"
  try 'openssh: no open connection is shared' goes_through_no_master
  vector --port "$port" --user 'DOMAIN\name' openssh ssh localhost
  try 'openssh: a user of a domain' names_user 'DOMAIN\\\\name' "${words[@]}"
  vector --port "$port" --user name@domain.example openssh ssh localhost
  try 'openssh: a user with @' names_user name@domain.example "${words[@]}"
  try 'openssh: names are no options and no commands' no_command_of_a_name
  known 1
  vector --port "$port" openssh ssh localhost
  try 'openssh: an unknown host key is a question' asks_first "${words[@]}"
}

# --- PuTTY ----------------------------------------------------------------------------

# putty_session NAME SETTING...
putty_session() {
  mkdir -p "$HOME/.putty/sessions"
  printf '%s\n' "${@:2}" >"$HOME/.putty/sessions/$1"
}

putty_home() {
  local host
  puttygen "$scratch/ssh/user" -o "$scratch/ssh/user.ppk"
  putty_session Default%20Settings "UserName=$user" Protocol=telnet PortNumber=23 AgentFwd=1 \
    X11Forward=1 ConnectionSharing=1 "X11Display=$DISPLAY"
  for host in localhost 127.0.0.1 ::1 ::1%1; do
    echo y | timeout 20 plink -ssh -P "$port" "$user@$host" exit
  done >"$scratch/plink.log" 2>&1
  # Saved sessions of the hosts' names, as "putty -load" would load them.
  for host in localhost '[::1]' ::1; do
    putty_session "$host" HostName=localhost Protocol=ssh "PortNumber=$port" "UserName=wrong" \
      ProxyMethod=5 ProxyLocalhost=1 "ProxyTelnetCommand=touch $scratch/command_ran"
  done
}

# shares_nothing: a first connection, which can be shared and has the agent, is open, and a
# link opens its own.
shares_nothing() {
  local first status=0
  start putty -ssh -share -A -P "$port" localhost
  first=$group
  wait_for 40 logged_in || status=1
  vector --port "$port" putty ssh localhost
  start "${words[@]}"
  wait_for 40 logged_in && server_said 'Connection from' && ! agent_offered || status=1
  kill -- "-$first" || true
  ends && return "$status"
}

# loads_session: what the test can see.
loads_session() {
  local status=0
  start putty -load localhost
  wait_for 20 command_ran || status=1
  ends && return "$status"
}

test_putty() {
  putty_home
  try 'putty: a saved session of the name runs its command otherwise' loads_session
  try 'putty: the Default Settings are obeyed otherwise' \
    logs_in_and_offers agent_offered screen_offered -- putty -ssh -P "$port" localhost
  vector --port "$port" putty ssh localhost
  try 'putty: a link logs in and offers nothing' logs_in_and_offers -- "${words[@]}"
  vector --trusted --port "$port" putty ssh localhost
  try 'putty: nor does one to a trusted host' logs_in_and_offers -- "${words[@]}"
  local host
  for host in 127.0.0.1 ::1 ::1%1; do
    vector --port "$port" --user "$user" putty ssh "$host"
    try "putty: $host" logs_in_and_offers -- "${words[@]}"
  done
  try 'putty: no open connection is shared' shares_nothing
  vector --port "$port" --user 'DOMAIN\name' putty ssh localhost
  try 'putty: a user of a domain' names_user 'DOMAIN\\\\name' "${words[@]}"
  vector --port "$port" --user name@domain.example putty ssh localhost
  try 'putty: a user with @' names_user name@domain.example "${words[@]}"
  rm "$HOME/.putty/sshhostkeys"
  vector --port "$port" --user "$user" putty ssh localhost
  try 'putty: an unknown host key is a question' asks_first "${words[@]}"
}

# --- Remmina --------------------------------------------------------------------------

# remmina_home SETTING...: what a new connection starts from; 2 is the agent.
remmina_home() {
  mkdir -p "$HOME/.ssh" "$HOME/.config/remmina"
  chmod 700 "$HOME/.ssh"
  rm -f "$HOME/.ssh/config"
  known "$port"
  printf '%s\n' '[remmina_pref]' periodic_news_permitted=false \
    periodic_usage_stats_permitted=false '[remmina]' name=default protocol=SSH ssh_auth=2 "$@" \
    >"$HOME/.config/remmina/remmina.pref"
}

# goes_to_port_22 USER: where the link has no port.
goes_to_port_22() {
  local status=0
  vector --user "$1" remmina-ssh ssh 127.0.0.2
  start strace -f -qq -e trace=connect -o "$scratch/connects" "${words[@]}"
  wait_for 20 grep -q 'htons(22), .*"127.0.0.2"' "$scratch/connects" || status=1
  ends && return "$status"
}

# opens_file [--port PORT]: the host has the name of a file in the working folder.
opens_file() {
  local status=0 folder=$scratch/profiles words=()
  mkdir -p "$folder"
  printf '%s\n' '[remmina]' name=x protocol=SSH "server=localhost:$port" \
    "precommand=touch $scratch/command_ran" >"$folder/localhost.remmina"
  vector "$@" remmina-ssh ssh localhost.remmina
  start env -C "$folder" "${words[@]}"
  wait_for 8 command_ran || status=1
  ends && return "$status"
}
opens_no_file() { ! opens_file "$@"; }

test_remmina-ssh() {
  remmina_home
  vector --port "$port" --user "$user" remmina-ssh ssh localhost
  try 'remmina: a link logs in and offers nothing' logs_in_and_offers -- "${words[@]}"
  local host
  for host in 127.0.0.1 ::1; do
    vector --port "$port" --user "$user" remmina-ssh ssh "$host"
    try "remmina: $host" logs_in_and_offers -- "${words[@]}"
  done
  try 'remmina: port 22 where the link has none' goes_to_port_22 "$user"
  vector --port "$port" --user 'DOMAIN\name' remmina-ssh ssh localhost
  try 'remmina: a user of a domain' names_user 'DOMAIN\\\\name' "${words[@]}"
  vector --port "$port" --user name@domain.example remmina-ssh ssh localhost
  try 'remmina: a user with @' names_user name@domain.example "${words[@]}"
  try 'remmina: a host with a port is no file' opens_no_file --port "$port"
  # What its unguarded says.
  try 'remmina: a host without a port is a file' opens_file
  vector --port "$port" --user "$user" remmina-ssh ssh localhost
  printf '[localhost]:%s %s\n' "$port" "$(cut -d ' ' -f 1,2 "$scratch/ssh/user.pub")" \
    >"$HOME/.ssh/known_hosts"
  try 'remmina: a host key that has changed is taken' logs_in_and_offers -- "${words[@]}"
  known "$port"
  remmina_home ssh_forward_x11=1 exec=true
  try 'remmina: the default profile forwards the screen and sends a command' \
    default_profile_holds
}

default_profile_holds() {
  local status=0
  vector --port "$port" --user "$user" remmina-ssh ssh localhost
  start "${words[@]}"
  wait_for 20 server_said x11-req && wait_for 20 command_sent || status=1
  ((status == 0)) || server_log | grep -E 'req|Starting'
  ends && return "$status"
}

(($#)) || set -- openssh putty remmina-ssh
for viewer in "$@"; do
  "test_$viewer"
done
closing_line
