# Sourced by the tests of links after screen_checks.sh: the machine that the links lead to,
# and how its desktop and its shell are recognised on the screen.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # shared with scratch_desktop.sh and the tests

# --- A desktop in colours that nothing else here has, with a clock on it ----------

remote_colour='#2A6F97'
clock_colour='#E9C46A'
vnc_port=5901
start_remote_desktop() {
  local remote
  service Xvnc Xvnc -displayfd 3 -geometry 480x360 -depth 24 -desktop 'remote desktop' \
    -SecurityTypes None -rfbport "$vnc_port" 3>"$scratch/remote_display"
  ready Xvnc test -s "$scratch/remote_display"
  remote=:$(cat "$scratch/remote_display")
  xsetroot -display "$remote" -solid "$remote_colour"
  service xclock xclock -display "$remote" -bg "$clock_colour" -geometry 140x140+320+200
}

# shows_desktop: a window of the title $title is there, and on the screen the remote
# desktop (172,800 pixels, less the clock) and its clock.
shows_desktop() {
  has_window "$title" && (($(pixels "$remote_colour") > 120000)) &&
    (($(pixels "$clock_colour") > 10000))
}

# --- An SSH server whose sessions are a shell that shows itself ----------------

ssh_port=2222
start_remote_shell() {
  mkdir "$scratch/ssh" "$scratch/remote"
  ssh-keygen -q -t ed25519 -N '' -f "$scratch/ssh/host"
  ssh-keygen -q -t ed25519 -N '' -f "$scratch/ssh/user"
  cat >"$scratch/ssh/session" <<END
#!/bin/sh
cd "$scratch/remote"
touch started
printf 'This is the remote shell.\n'
PS1='remote\$ ' exec bash --noprofile --norc -i
END
  chmod +x "$scratch/ssh/session"
  cat >"$scratch/ssh/sshd_config" <<END
Port $ssh_port
PidFile none
HostKey $scratch/ssh/host
AuthorizedKeysFile $scratch/ssh/user.pub
StrictModes no
UsePAM no
PasswordAuthentication no
PermitRootLogin prohibit-password
ForceCommand $scratch/ssh/session
SetEnv HOME=$scratch/remote
PrintLastLog no
END
  mkdir -p /run/sshd
  service sshd /usr/sbin/sshd -D -e -f "$scratch/ssh/sshd_config"
  ready sshd grep -q 'Server listening on ::' "$scratch/sshd.log"
}

# visit_before: what the user has done before, with OpenSSH and with PuTTY: a key of their
# own is known there, and the server's is accepted.
visit_before() {
  install -d -m 700 ~root/.ssh
  cp "$scratch/ssh/user" ~root/.ssh/id_ed25519
  printf '[localhost]:%s,[::1]:%s %s\n' "$ssh_port" "$ssh_port" \
    "$(cut -d ' ' -f 1,2 "$scratch/ssh/host.pub")" >~root/.ssh/known_hosts
  puttygen "$scratch/ssh/user" -o "$scratch/ssh/user.ppk"
  mkdir -p "$HOME/.putty/sessions"
  printf 'UserName=root\nPublicKeyFile=%s\n' "$scratch/ssh/user.ppk" \
    >"$HOME/.putty/sessions/Default%20Settings"
  echo y | plink -P "$ssh_port" localhost exit >"$scratch/plink.log" 2>&1
}

# shows_shell: a window of the title $title is there and in front, and what is typed into
# it is done by the shell of the SSH server.
shows_shell() {
  [[ -e $scratch/remote/started ]] && wmctrl -a "$title" &&
    [[ $(xdotool getactivewindow getwindowname 2>/dev/null) == *"$title"* ]] || return 1
  sleep 0.5
  xdotool type --delay 50 $'printenv SSH_CONNECTION >reached\n'
  wait_for 5 reached_server
}
reached_server() {
  grep -qE "^(127.0.0.1|::1) [0-9]+ (127.0.0.1|::1) $ssh_port\$" "$scratch/remote/reached" \
    2>/dev/null
}
show_shell() {
  rm -f "$scratch"/remote/*
  show "$1" shows_shell "${@:2}"
}
