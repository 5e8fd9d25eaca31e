# SPDX-License-Identifier: MIT
# Sourced by the tests of links after screen_checks.sh: the machine that the links lead to,
# and how its desktop and its shell are recognised on the screen.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # shared with scratch_desktop.sh and the tests

# --- A desktop in colours that nothing else here has, with a clock on it ----------

remote_colour='#2A6F97'
clock_colour='#E9C46A'

# furnish_desktop DISPLAY: of 480 x 360 pixels.
furnish_desktop() {
  xsetroot -display "$1" -solid "$remote_colour"
  service xclock xclock -display "$1" -bg "$clock_colour" -geometry 140x140+320+200
}

# listens PORT
listens() { [[ -n $(ss --no-header --listening --tcp "sport = $1") ]]; }

vnc_port=5901
start_remote_desktop() {
  service Xvnc Xvnc -displayfd 3 -geometry 480x360 -depth 24 -desktop 'remote desktop' \
    -SecurityTypes None -rfbport "$vnc_port" 3>"$scratch/remote_display"
  ready Xvnc test -s "$scratch/remote_display"
  furnish_desktop ":$(cat "$scratch/remote_display")"
}

# The RDP server asks for no password, and has made its certificate itself.
rdp_port=3390
start_remote_rdp() {
  local shadow
  shadow=$(compgen -c freerdp-shadow-cli | head -n 1)
  service Xvfb-remote Xvfb -displayfd 3 -screen 0 480x360x24 -nolisten tcp -noreset \
    3>"$scratch/remote_display"
  ready Xvfb-remote test -s "$scratch/remote_display"
  furnish_desktop ":$(cat "$scratch/remote_display")"
  service shadow env "DISPLAY=:$(cat "$scratch/remote_display")" "$shadow" "/port:$rdp_port" \
    /sec:tls -auth
  ready shadow listens "$rdp_port"
}

# boot_sector: what a computer without anything else starts: a picture in the same colours.
boot_sector() {
  python3 -c '
import sys
def six(colour):  # the bits of a colour that this kind of screen has
    return [int(colour[i:i + 2], 16) >> 2 for i in (1, 3, 5)]
code = bytes.fromhex("b81300 cd10")  # 320 x 200 points of 256 colours
code += bytes.fromhex("bac803 b001 ee 42")  # colour 1, and then 2:
for part in six(sys.argv[1]) + six(sys.argv[2]):
    code += bytes([0xB0, part, 0xEE])
code += bytes.fromhex("b800a0 8ec0 31ff b900fa b001 fc f3aa")  # all in colour 1
code += bytes.fromhex("bb5000 bfdc7d b002 b95000 f3aa 81c7f000 4b 75f4")  # 80 x 80 in colour 2
code += bytes.fromhex("fa f4 ebfd")  # nothing more
sys.stdout.buffer.write(code.ljust(510, bytes(1)) + bytes.fromhex("55aa"))' \
    "$remote_colour" "$clock_colour"
}

# The SPICE server has a plain port and one with TLS, whose certificate the user trusts.
spice_port=5930
spice_tls_port=5931
start_remote_spice() {
  mkdir "$scratch/spice"
  openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=localhost \
    -keyout "$scratch/spice/server-key.pem" -out "$scratch/spice/ca-cert.pem" \
    2>"$scratch/openssl.log"
  cp "$scratch/spice/ca-cert.pem" "$scratch/spice/server-cert.pem"
  install -D "$scratch/spice/ca-cert.pem" "$HOME/.spicec/spice_truststore.pem"
  boot_sector >"$scratch/spice/disk"
  service qemu qemu-system-x86_64 -nodefaults -accel tcg -m 16 -vga std -name 'remote desktop' \
    -drive "format=raw,file=$scratch/spice/disk" -display none -spice \
    "port=$spice_port,tls-port=$spice_tls_port,x509-dir=$scratch/spice,disable-ticketing=on"
  ready qemu listens "$spice_tls_port"
}

# shows_desktop: a window of the title $title is there, and on the screen the remote
# desktop (172,800 pixels, less the clock) and its clock.
shows_desktop() {
  has_window "$title" && (($(pixels "$remote_colour") > 120000)) &&
    (($(pixels "$clock_colour") > 10000))
}

# --- Servers whose sessions are a shell that shows itself -------------------------

# make_session FILE PORT: a program that is such a session, and knows its server's port.
make_session() {
  mkdir -p "$scratch/remote"
  cat >"$1" <<END
#!/bin/sh
cd "$scratch/remote"
export SERVER_PORT=$2
touch started
printf 'This is the remote shell.\n'
PS1='remote\$ ' exec bash --noprofile --norc -i
END
  chmod +x "$1"
}

ssh_port=2222
start_remote_shell() {
  mkdir "$scratch/ssh"
  ssh-keygen -q -t ed25519 -N '' -f "$scratch/ssh/host"
  ssh-keygen -q -t ed25519 -N '' -f "$scratch/ssh/user"
  make_session "$scratch/ssh/session" "$ssh_port"
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

# Each connection gets a telnetd of its own.
telnet_port=2323
start_remote_telnet() {
  make_session "$scratch/telnet_session" "$telnet_port"
  service telnetd env HOME="$scratch/remote" python3 -c '
import socket, subprocess, sys
address = ("::", int(sys.argv[1]))
with socket.create_server(address, family=socket.AF_INET6, dualstack_ipv6=True) as listener:
    while True:
        client, _ = listener.accept()
        subprocess.Popen(["/usr/sbin/telnetd", "-E", sys.argv[2]], stdin=client, stdout=client)
        client.close()' "$telnet_port" "$scratch/telnet_session"
  ready telnetd listens "$telnet_port"
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
# it is done by the shell of the server, the one of $reached_port.
shows_shell() {
  [[ -e $scratch/remote/started ]] && wmctrl -a "$title" &&
    [[ $(xdotool getactivewindow getwindowname 2>/dev/null) == *"$title"* ]] || return 1
  sleep 0.5
  xdotool type --delay 50 $'printenv SERVER_PORT >reached\n'
  wait_for 5 reached_server
}
reached_port=$ssh_port
reached_server() { grep -qx "$reached_port" "$scratch/remote/reached" 2>/dev/null; }
show_shell() {
  rm -f "$scratch"/remote/*
  show "$1" shows_shell "${@:2}"
}
