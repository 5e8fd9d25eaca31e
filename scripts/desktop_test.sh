#!/usr/bin/env bash
# Shows hoplaunch at work on a desktop, end to end: links that are opened by command, by
# xdg-open, by gio and by a click in Chromium reach real VNC and SSH servers, through
# the viewers of docs/viewers.md and the installed package.
#
# Screen, servers, keys, ports and home folder are the test's own, on this machine
# alone.  Screenshots are kept in build/desktop/.  Installs what it needs; the package
# itself is purged again.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/packages.sh
source scripts/packages.sh

as_root() { if ((EUID == 0)); then "$@"; else sudo "$@"; fi; }

# Installs openssh-server, whose installation would start the system's sshd and switch
# it on for the next start of the machine.
need_sshd() {
  [[ ! -x /usr/sbin/sshd ]] || return 0
  local policy=/usr/sbin/policy-rc.d made=no
  if [[ ! -e $policy ]]; then
    printf '#!/bin/sh\nexit 101\n' | as_root install -m 755 /dev/stdin "$policy"
    made=yes
  fi
  need openssh-server
  as_root update-rc.d ssh disable
  if [[ $made == yes ]]; then
    as_root rm "$policy"
  fi
}

need chromium desktop-file-utils gvncviewer imagemagick libglib2.0-bin openbox openssh-client \
  putty putty-tools python3 remmina remmina-plugin-vnc tigervnc-standalone-server \
  tigervnc-viewer wmctrl x11-apps x11-xserver-utils xdg-utils xdotool xtightvncviewer xterm xvfb
need_sshd

if dpkg-query -W hoplaunch >/dev/null 2>&1; then
  printf 'hoplaunch is installed.  The test installs and purges its own; purge yours first:\n\n' >&2
  printf '  apt-get purge hoplaunch\n\n' >&2
  exit 1
fi

pictures=build/desktop
rm -rf "$pictures"
mkdir -p "$pictures"
scratch=$(mktemp -d)
policy=/etc/chromium/policies/managed/hoplaunch_desktop_test.json
made_folders=() # outside $scratch
services=()     # process ids

# --- Setting up and clearing away ---------------------------------------------

# processes: those that were started here.  They have a path of the scratch folder in
# their environment, which this script itself has not; but sshd writes over its own.
processes() (
  unset HOME XDG_RUNTIME_DIR PATH
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
  local folder
  set +e
  end_processes
  as_root rm -f "$policy"
  for folder in "${made_folders[@]}"; do
    as_root rmdir "$folder"
  done
  if dpkg-query -W hoplaunch >/dev/null 2>&1; then
    as_root apt-get purge -y -qq hoplaunch >/dev/null
  fi
  rm -rf "$scratch"
}
trap clear_away EXIT
trap 'exit 1' INT TERM HUP

# make_folder PATH: as root, with the folders above; what is made is removed at the end.
make_folder() {
  [[ ! -d $1 ]] || return 0
  make_folder "$(dirname "$1")"
  as_root mkdir "$1"
  made_folders=("$1" "${made_folders[@]}")
}

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

# free_port [PORT]: prints that port if nobody has it, else another that nobody has.
free_port() {
  python3 -c '
import socket, sys
for port in sys.argv[1:] + [0]:
    with socket.socket() as probe:
        try:
            probe.bind(("127.0.0.1", int(port)))
        except OSError:
            continue
        print(probe.getsockname()[1])
        break' "$@"
}

# --- The machine in front of the user -----------------------------------------

export HOME=$scratch/home XDG_RUNTIME_DIR=$scratch/runtime PATH=$scratch/bin:$PATH
unset BROWSER DESKTOP_SESSION WAYLAND_DISPLAY XAUTHORITY "${!XDG_CURRENT_@}" "${!XDG_CONFIG_@}" \
  "${!XDG_DATA_@}" "${!XDG_CACHE_@}" "${!XDG_STATE_@}" "${!XDG_SESSION_@}"
export DBUS_SESSION_BUS_ADDRESS=disabled: NO_AT_BRIDGE=1 # no session bus to be started
mkdir -m 700 "$HOME" "$XDG_RUNTIME_DIR" "$scratch/bin"

service Xvfb Xvfb -displayfd 3 -screen 0 1100x720x24 -nolisten tcp -noreset 3>"$scratch/display"
ready Xvfb test -s "$scratch/display"
DISPLAY=:$(cat "$scratch/display")
export DISPLAY
xsetroot -solid '#495057'
service openbox openbox --sm-disable
ready openbox wmctrl -m >/dev/null 2>&1

# screenshot: the screen, as a picture for convert.
screenshot() { xwd -root -silent 2>/dev/null; }

# pixels COLOUR: how many pixels of the screen have that colour, or nearly, as viewers
# may be sent compressed pictures.
pixels() {
  screenshot | convert xwd:- -fuzz 2% -transparent "$1" -alpha extract -negate \
    -precision 9 -format '%[fx:round(mean*w*h)]' info: 2>/dev/null || printf 0
}

keep_picture() { screenshot | convert xwd:- "$pictures/$1.png" 2>/dev/null; }

windows() { wmctrl -l 2>/dev/null; } # one may just have gone
has_window() { [[ $(windows) == *"$1"* ]]; }
no_window() { [[ -z $(windows) ]]; }

# --- The machine that the links lead to ----------------------------------------

# A desktop in colours that nothing else here has, with a clock on it.
remote_colour='#2A6F97'
clock_colour='#E9C46A'
vnc_port=$(free_port 5901)
service Xvnc Xvnc -displayfd 3 -geometry 480x360 -depth 24 -desktop 'remote desktop' \
  -SecurityTypes None -localhost -rfbport "$vnc_port" 3>"$scratch/remote_display"
ready Xvnc test -s "$scratch/remote_display"
remote=:$(cat "$scratch/remote_display")
xsetroot -display "$remote" -solid "$remote_colour"
service xclock xclock -display "$remote" -bg "$clock_colour" -geometry 140x140+320+200

# An SSH server whose sessions are a shell that tells of itself.
ssh_port=$(free_port)
mkdir "$scratch/ssh" "$scratch/remote"
ssh-keygen -q -t ed25519 -N '' -f "$scratch/ssh/host"
ssh-keygen -q -t ed25519 -N '' -f "$scratch/ssh/user"
cat >"$scratch/ssh/session" <<EOF
#!/bin/sh
cd "$scratch/remote"
touch started
printf 'This is the remote shell.\n'
PS1='remote\$ ' exec bash --noprofile --norc -i
EOF
chmod +x "$scratch/ssh/session"
cat >"$scratch/ssh/sshd_config" <<EOF
ListenAddress 127.0.0.1
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
EOF
if ((EUID == 0)); then
  make_folder /run/sshd
fi
service sshd /usr/sbin/sshd -D -e -f "$scratch/ssh/sshd_config"
ready sshd grep -q 'Server listening' "$scratch/sshd.log"

# What the user has done before: a key for PuTTY, and the server's host key accepted.
user=$(id -un)
puttygen "$scratch/ssh/user" -o "$scratch/ssh/user.ppk"
mkdir -p "$HOME/.putty/sessions"
printf 'UserName=%s\nPublicKeyFile=%s\n' "$user" "$scratch/ssh/user.ppk" \
  >"$HOME/.putty/sessions/Default%20Settings"
echo y | plink -P "$ssh_port" localhost exit >"$scratch/plink.log" 2>&1
# The same for OpenSSH, which does not look at HOME.
printf 'localhost %s\n' "$(cut -d ' ' -f 1,2 "$scratch/ssh/host.pub")" >"$scratch/ssh/known_hosts"
cat >"$scratch/ssh/ssh_config" <<EOF
HostKeyAlias localhost
UserKnownHostsFile $scratch/ssh/known_hosts
StrictHostKeyChecking yes
IdentityFile $scratch/ssh/user
IdentitiesOnly yes
EOF
printf '#!/bin/sh\nexec /usr/bin/ssh -F "%s" "$@"\n' "$scratch/ssh/ssh_config" >"$scratch/bin/ssh"
chmod +x "$scratch/bin/ssh"
ln -s /usr/bin/xterm "$scratch/bin/x-terminal-emulator"

# --- The steps -----------------------------------------------------------------

passed=0
failed=0

# verdict NAME STATUS LOG
verdict() {
  if (($2 == 0)); then
    passed=$((passed + 1))
    printf 'okay: %s\n' "$1"
  else
    failed=$((failed + 1))
    printf 'FAILED: %s\n' "$1"
    tail -n 40 "$3" | sed 's/^/    /'
  fi
}

# try NAME COMMAND...
try() {
  local name=$1 status=0
  shift
  "$@" >"$scratch/step.log" 2>&1 || status=1
  verdict "$name" "$status" "$scratch/step.log"
}

# show NAME CHECK COMMAND...: the command is run, and the check, a function, succeeds
# within a minute.  Keeps a screenshot, and ends what was started.
show() {
  local name=$1 check=$2 status=0
  shift 2
  setsid "$@" >"$scratch/step.log" 2>&1 &
  local group=$!
  wait_for 60 "$check" || status=1
  wait_for 10 keep_picture "$name" || status=1
  kill -- "-$group" 2>/dev/null || true
  if ! wait_for 20 no_window; then
    kill -s KILL -- "-$group" 2>/dev/null || true
    wait_for 20 no_window || status=1
  fi
  wait "$group" 2>/dev/null || true
  verdict "$name" "$status" "$scratch/step.log"
}

# shows_desktop: a window of the title $title is there, and on the screen the remote
# desktop (172,800 pixels, less the clock) and its clock.
shows_desktop() {
  has_window "$title" && (($(pixels "$remote_colour") > 120000)) &&
    (($(pixels "$clock_colour") > 10000))
}

# shows_shell: a window of the title $title is there and in front, and what is typed into
# it is done by the shell behind the SSH server.
shows_shell() {
  [[ -e $scratch/remote/started ]] && wmctrl -a "$title" &&
    [[ $(xdotool getactivewindow getwindowname 2>/dev/null) == *"$title"* ]] || return 1
  xdotool type --delay 50 $'printenv SSH_CONNECTION >reached\n'
  wait_for 5 reached_server
}
reached_server() {
  grep -q "^127.0.0.1 [0-9]* 127.0.0.1 $ssh_port\$" "$scratch/remote/reached" 2>/dev/null
}
show_shell() {
  rm -f "$scratch"/remote/*
  show "$1" shows_shell "${@:2}"
}

# A page with a link, which has colours of its own with and without the mouse on it.
link_colour='#E76F51'
hover_colour='#2A9D8F'
web_page() {
  mkdir "$scratch/web"
  cat >"$scratch/web/index.html" <<EOF
<!DOCTYPE html>
<meta charset="utf-8">
<title>Machines</title>
<style>
  body { font: 18px sans-serif; margin: 2em }
  a { background: $link_colour; color: white; display: inline-block; padding: 1em 2em }
  a:hover { background: $hover_colour }
</style>
<h1>Machines</h1>
<p><a href="$vnc">Desktop of the build machine</a>
EOF
  service web python3 -u -m http.server 0 --bind 127.0.0.1 --directory "$scratch/web"
  ready web grep -q 'Serving HTTP' "$scratch/web.log"
  web_port=$(sed -n 's/^Serving HTTP on [^ ]* port \([0-9]*\).*/\1/p' "$scratch/web.log")
}

# Lets Chromium hand links of that page to their handler without a question.
allow_links() {
  make_folder "$(dirname "$policy")"
  printf '{"AutoLaunchProtocolsFromOrigins": [{"protocol": "vnc", "allowed_origins": ["%s"]}]}\n' \
    "http://localhost:$web_port" | as_root install -m 644 /dev/stdin "$policy"
}

browser() {
  chromium=(chromium --user-data-dir="$scratch/chromium" --no-first-run
    --no-default-browser-check --disable-background-networking --disable-component-update
    --disable-sync --disable-quic --disable-gpu --password-store=basic
    '--window-position=20,20' '--window-size=640,600')
  if ((EUID == 0)); then
    chromium+=(--no-sandbox --test-type) # the latter hides the warning about the former
  fi
  chromium+=("http://localhost:$web_port/")
}

# clicks_link: the click on the link brings up the desktop.  When the link has changed
# its colour under the mouse, the page is ready to be clicked.
link_is_hovered() { (($(pixels "$hover_colour") > 1000)); }
clicks_link() {
  if (($(pixels "$link_colour") > 1000)); then
    local width height left top
    read -r width height left top < <(screenshot |
      convert xwd:- -fuzz 2% -fill black +opaque "$link_colour" -trim -format '%w %h %X %Y\n' info:)
    xdotool mousemove "$((left + width / 2))" "$((top + height / 2))"
    wait_for 5 link_is_hovered && xdotool click 1
  fi
  shows_desktop
}

# refuses SCRIPT: the wrapper starts nothing for what is no address.
refuses() {
  local address status=0
  for address in -oProxyCommand=x '-via=x;[::1]' "x;touch $scratch/harmed" 'x y' \
    "\$(touch $scratch/harmed)" $'x\ny' x/y x:y x@-y -x@y ''; do
    if PATH=$scratch/told:$PATH "$examples/$1" "$address" >"$scratch/step.log" 2>/dev/null; then
      printf 'accepted: %q\n' "$address" >>"$scratch/step.log"
      status=1
      break
    fi
  done
  verdict "$1 refuses what is no address" "$status" "$scratch/step.log"
}

# tells SCRIPT ADDRESS ARGUMENTS: what the wrapper gives to its program for the address.
tells() {
  local status=0
  PATH=$scratch/told:$PATH "$examples/$1" -option=1 "$2" >"$scratch/step.log" 2>&1
  [[ $(cat "$scratch/step.log") == "$3" ]] || status=1
  verdict "$1 with $2" "$status" "$scratch/step.log"
}
mkdir "$scratch/told"
for program in x-terminal-emulator vncviewer remmina; do
  printf '#!/bin/sh\necho "$@"\n' | install -m 755 /dev/stdin "$scratch/told/$program"
done

vnc="vnc://localhost:$vnc_port/?shared=1"
ssh="ssh://localhost:$ssh_port/"
examples=/usr/share/doc/hoplaunch/examples

# --- The package ---------------------------------------------------------------

# installs OPTION...: installs the package.
installs() {
  as_root apt-get install -y --no-install-recommends "$@" \
    "$PWD"/build/package/hoplaunch_*.deb
}

registers_schemes() {
  local scheme
  for scheme in vnc ssh; do
    [[ $(gio mime "x-scheme-handler/$scheme") == *"hoplaunch-$scheme.desktop"* ]] || return
  done
}

# purges: nothing that the package brought is left, and no scheme has its handler.
purges() {
  local path files
  mapfile -t files < <(dpkg-query -L hoplaunch)
  as_root apt-get purge -y hoplaunch || return
  for path in "${files[@]}"; do
    if [[ ($path == *hoplaunch* || $path == *hopexplain*) && -e $path ]]; then
      printf 'left: %s\n' "$path"
      return 1
    fi
  done
  [[ $(gio mime x-scheme-handler/vnc) != *hoplaunch* ]]
}

try './package' ./package
try 'life of the packages in a fresh Debian' scripts/package_test.sh
try 'install' installs
try 'the schemes are registered' registers_schemes
# Remmina takes the schemes, too, so the user says who is to have them.
for scheme in vnc ssh; do
  xdg-mime default "hoplaunch-$scheme.desktop" "x-scheme-handler/$scheme"
done

# --- VNC -----------------------------------------------------------------------

title='remote desktop - TigerVNC'
show tigervnc shows_desktop hoplaunch -VNC_OPTIONS=-ReconnectOnError=0 "$vnc"
show xdg-open shows_desktop xdg-open "$vnc"
show gio-open shows_desktop gio open "$vnc"
hostile="$vnc&via=-oProxyCommand=touch%2520$scratch/harmed"
show hostile-link shows_desktop xdg-open "$hostile"
web_page
allow_links
browser
show chromium clicks_link "${chromium[@]}"
show vnc-address-only shows_desktop hoplaunch -program="$examples/vnc-address-only" "$hostile"
title='TightVNC: remote desktop'
show tightvnc shows_desktop hoplaunch -program=xtightvncviewer -style=separate \
  -VNC_OPTIONS=depth=24 "vnc://localhost:$vnc_port/"
title="localhost:$vnc_port"
show remmina shows_desktop hoplaunch -program="$examples/vnc-in-remmina" "$vnc"
title='remote desktop - GVncViewer'
show gvncviewer shows_desktop hoplaunch -program=gvncviewer -VNC_OPTIONS=-zoom=100 \
  "vnc://localhost:$((vnc_port - 5900))/"

# --- SSH -----------------------------------------------------------------------

title='localhost - PuTTY'
show_shell putty xdg-open "$ssh"
title=ssh
# As docs/viewers.md says how to choose another viewer for good.
entries=$HOME/.local/share/applications
mkdir -p "$entries"
sed "s|^Exec=.*|Exec=hoplaunch -program=$examples/ssh-in-terminal %u|" \
  /usr/share/applications/hoplaunch-ssh.desktop >"$entries/hoplaunch-ssh.desktop"
show_shell ssh-in-terminal xdg-open "$ssh"

# --- The wrappers --------------------------------------------------------------

for script in ssh-in-terminal vnc-address-only vnc-in-remmina; do
  refuses "$script"
done
tells ssh-in-terminal host '-e ssh -- host'
tells ssh-in-terminal user@host.example:22 '-e ssh -p 22 -- user@host.example'
tells ssh-in-terminal '[::1]:22' '-e ssh -p 22 -- ::1'
tells vnc-address-only '[::1]:5901' '-ReconnectOnError=0 -Shared [::1]:5901'
tells vnc-in-remmina host '--connect=vnc://host'
try 'no link ran a command' test ! -e "$scratch/harmed"

# --- The end -------------------------------------------------------------------

try 'install over itself' installs --reinstall
rm -r "$entries"
title='remote desktop - TigerVNC'
show reinstalled shows_desktop gio open "$vnc"
try 'purge' purges
try 'all processes end' end_processes

printf '%d passed, %d failed\n' "$passed" "$failed"
((failed == 0))
