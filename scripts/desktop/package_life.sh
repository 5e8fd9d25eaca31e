#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Tries the packages that ./package has built, as root, in a fresh Debian that is
# removed at the end: installs them, uses them, installs them over themselves and over the
# package as it was before hopopen, removes and purges them, and shows that nothing is
# left.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh
need_root 'it makes a Debian of its own'
need debootstrap

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
debian=$scratch/debian
packages=(hoplaunch hoplaunch-doc libhoplaunch1 libhoplaunch-dev)

# --- The fresh Debian --------------------------------------------------------

# inside COMMAND...: runs it there, with processes of its own.
inside() {
  unshare --mount --pid --ipc --fork --kill-child --mount-proc="$debian/proc" \
    chroot "$debian" env --ignore-environment --chdir=/tmp HOME=/tmp LC_ALL=C DISPLAY=:0 \
    PATH=/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive "$@"
}

# says EXPECTED COMMAND...: the command's output, there, is the expected text.
says() { diff <(printf '%s' "${1:+$1$'\n'}") <(inside "${@:2}" 2>&1); }

# install_packages APT-OPTION...
install_packages() {
  inside sh -c 'apt-get install -y --no-install-recommends "$@" /tmp/packages/*.deb' sh "$@"
}

# Every file with its content, except for the books and logs of dpkg and apt.
inventory() {
  (
    cd "$debian"
    find . \( -path ./proc -o -path ./tmp -o -path ./var/log -o -path ./var/cache \
      -o -path ./var/lib/apt -o -path ./var/lib/dpkg \) -prune \
      -o -type f -exec sha256sum {} + -o -printf '%y %p %l\n'
    find var/lib/dpkg/info
  ) | sort
}

# Every viewer notes what it is given: in a file, or to whoever reads a pipe.
make_viewer() {
  cat >"$debian/usr/local/bin/$1" <<'END'
#!/bin/sh
{ printf '%s' "${0##*/}" && printf ' <%s>' "$@" && echo; } >>/tmp/started
END
  chmod +x "$debian/usr/local/bin/$1"
}

# complains_only LINE...: the beginnings of all lines of the check that do not say "ok", nor that a viewer is missing.
complains_only() {
  local line told=()
  mapfile -t told < <(inside hopopen --check | grep -E '^(warning|fault)' | grep -v '^warning viewer ')
  printf '%s\n' "${told[@]}"
  ((${#told[@]} == $#)) || return
  for line in "${told[@]}"; do
    [[ $line == "$1:"* ]] || return
    shift
  done
}

# The package as it was before hopopen, from the project's history.  It is kept.
before=$PWD/build/before
build_before() {
  if ! compgen -G "$before/hoplaunch_*.deb" >/dev/null; then
    mkdir -p "$before/source"
    git archive cdf0d3e | tar --extract --directory="$before/source" || return
    (cd "$before/source" && ./package) || return
    cp "$before"/source/build/package/hoplaunch_*.deb "$before/"
    rm -r "$before/source"
  fi
}

make_debian() {
  local package
  debootstrap --variant=minbase "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$debian"
  inside apt-get install -y --no-install-recommends desktop-file-utils libglib2.0-bin xdg-utils
  make_viewer vncviewer
  make_viewer putty
  mkdir -p "$debian/tmp/before" "$debian/tmp/packages"
  cp "$before"/hoplaunch_*.deb "$debian/tmp/before/"
  for package in "${packages[@]}"; do
    cp "build/package/${package}"_*.deb "$debian/tmp/packages/"
  done
}

# --- The checks --------------------------------------------------------------

installed() {
  local package
  for package in "${packages[@]}"; do
    inside dpkg --status "$package" | grep -qx 'Status: install ok installed' || return
  done
}

files_are_listed() {
  local package path
  diff <(sed "s/MACHINE/$(inside ls /usr/lib | grep linux-gnu)/" tests/data/package_files.txt) <(
    for package in "${packages[@]}"; do
      while read -r path; do
        if [[ ! -d $debian$path && $path != /usr/include/* && $path != */doc/hoplaunch/reference/* ]]; then
          printf '%s %s\n' "$package" "$path"
        fi
      done < <(inside dpkg --listfiles "$package")
    done | LC_ALL=C sort
  )
}
reference_is_there() { [[ -s $debian/usr/share/doc/hoplaunch/reference/index.html ]]; }
headers_are_there() { diff <(ls include) <(ls "$debian/usr/include/hoplaunch"); }

# opened OPENER... LINK: opens the link, and shows what the viewer was given.
opened() {
  rm -f "$debian/tmp/started"
  mkfifo "$debian/tmp/started"
  inside sh -c '"$@" >/dev/null 2>&1 & timeout 60 cat /tmp/started' sh "$@"
}

# opens OPENER... LINK PATTERN: opening the link starts the viewer with such arguments.
opens() {
  local line
  line=$(opened "${@:1:$#-1}")
  printf '%s\n' "$line"
  # shellcheck disable=SC2053  # a pattern
  [[ $line == ${!#} ]]
}

# opens_alike LINK OTHER: the viewer is given the same for both, byte by byte.
opens_alike() {
  local one
  one=$(opened gio open "$1")
  [[ -n $one ]] && diff <(echo "$one") <(opened gio open "$2")
}

# refuses ENTRY LINK CODE: what a desktop does for it, as that entry says, starts and
# writes nothing, and says why in one line.
refuses() {
  local words word line=() status=0
  read -ra words < <(sed -n 's/^Exec=//p' "$debian/usr/share/applications/$1.desktop")
  for word in "${words[@]}"; do
    if [[ $word == %u ]]; then
      word=$2
    fi
    line+=("$word")
  done
  rm -f "$debian/tmp/started" "$debian/tmp/log"
  inside "${line[@]}" >"$scratch/told" 2>&1 || status=$?
  cat "$scratch/told"
  ((status == 2)) && [[ $(wc -l <"$scratch/told") == 1 ]] &&
    grep -q "^hopopen: Cannot open .* ($3)\$" "$scratch/told" &&
    [[ ! -e $debian/tmp/started && ! -e $debian/tmp/log && ! -e $debian/tmp/.config/hoplaunch ]]
}

# --- The upgrade -------------------------------------------------------------

# Another handler of both schemes, which comes first where nobody has chosen.
install_other_handler() {
  mkdir "$debian/usr/local/share/applications"
  cat >"$debian/usr/local/share/applications/another.desktop" <<'END'
[Desktop Entry]
Type=Application
Name=Another
Exec=another %u
MimeType=x-scheme-handler/vnc;x-scheme-handler/ssh;
END
  make_viewer another
  inside update-desktop-database /usr/local/share/applications
}

install_before() {
  inside sh -c 'apt-get install -y --no-install-recommends /tmp/before/*.deb' &&
    inside dpkg --listfiles hoplaunch >"$scratch/files_before"
}

# Of what the package had before, only what the packages have now is there.
no_dead_file() {
  local path
  inside dpkg --listfiles "${packages[@]}" >"$scratch/files_now"
  while read -r path; do
    if [[ -e $debian$path && ! -d $debian$path ]]; then
      printf 'still there: %s\n' "$path"
      return 1
    fi
  done < <(grep -vxFf "$scratch/files_now" "$scratch/files_before")
  [[ ! -e $debian/usr/libexec/hoplaunch ]]
}

# What the desktop offers for a scheme does not have the names of before.
offers_hopopen_alone() {
  inside gio mime "x-scheme-handler/$1" | sed '1,/^Registered/d' >"$scratch/offers"
  cat "$scratch/offers"
  grep -q 'hopopen\.desktop' "$scratch/offers" && ! grep -q 'hoplaunch-' "$scratch/offers"
}

nothing_is_left() { diff "$scratch/before" <(inventory); }

check 'the package of before' build_before
check 'a fresh Debian' make_debian
inventory >"$scratch/before"

check 'install' install_packages
check 'installed' installed
check 'files' files_are_listed
check 'headers' headers_are_there
check 'reference' reference_is_there
check 'entries are valid' inside sh -c 'desktop-file-validate /usr/share/applications/ho*.desktop'
check 'the shared library is known' inside sh -c 'ldconfig -p | grep -q libhoplaunch.so.1'
check 'hopexplain' inside hopexplain 'vnc://localhost/'
check 'no fault in what is installed' complains_only 'warning notifier: PATH'

for scheme in vnc rdp spice spice+tls ssh telnet; do
  check "xdg-mime, $scheme" says hopopen.desktop xdg-mime query default "x-scheme-handler/$scheme"
  check "database, $scheme" inside grep -qx "x-scheme-handler/$scheme=hopopen.desktop;" \
    /usr/share/applications/mimeinfo.cache
done
for opener in 'gio open' xdg-open; do
  # shellcheck disable=SC2086  # two words
  check "$opener, vnc" opens $opener vnc://localhost:5901 'vncviewer <-*> <localhost::5901>'
  # shellcheck disable=SC2086
  check "$opener, vnc with parameters" opens $opener \
    'vnc://[::1]/?ViewOnly=true&VncUsername=me' 'vncviewer <-*> <-ViewOnly=1> <-*> <\[::1\]::5900>'
  # shellcheck disable=SC2086
  check "$opener, ssh" opens $opener ssh://me@localhost:2222 \
    'putty <-*> <-P> <2222> <-l> <me> <localhost>'
done
for query in '?via=-oProxyCommand=false' '?PasswordFile=/etc/passwd&listen=1&FullScreen=1' \
  '?shared=0&via=x' '?a=b%20-via=x' '#-via=x'; do
  check "vnc, $query passes nothing on" opens_alike vnc://h "vnc://h$query"
done
for query in '?proxycmd=false' '?m=/etc/passwd&load=session' '?P=24#-proxycmd'; do
  check "ssh, $query passes nothing on" opens_alike ssh://u@h "ssh://u@h$query"
done
for entry in hopopen hoplaunch-vnc hoplaunch-ssh; do
  # shellcheck disable=SC2016  # no shell is to expand these
  for link in --viewer=putty --viewer --log=/tmp/log --log -l --use --use=tigervnc --trust=h \
    --list --check --help -h --version -program=/usr/local/bin/putty -log=/tmp/log - -- -= '' \
    '[vnc://h,vnc://h]' '%%' 'vnc://h vnc://i' $'vnc://h\n--log=/tmp/log' \
    "vnc://h';touch /tmp/log;'" 'vnc://h$(touch${IFS}/tmp/log)' 'vnc:-via=x'; do
    check "$entry: \"$link\" in place of a link" refuses "$entry" "$link" syntax
  done
  # shellcheck disable=SC2016
  for link in vnc://-via=x vnc://h%20-via=x 'ssh://-oProxyCommand=false' 'vnc://$(false)'; do
    check "$entry: $link" refuses "$entry" "$link" host
  done
done
make_viewer ssh
make_viewer x-terminal-emulator
check 'ssh in a terminal' opens gio open ssh://me@localhost \
  'x-terminal-emulator <-e> </usr/bin/env> <-u> <*> </usr/local/bin/ssh> <-*> <-l> <me> <--> <localhost>'
rm "$debian/usr/local/bin/"{ssh,x-terminal-emulator}

check 'install again' install_packages --reinstall
check 'installed again' installed
check 'files again' files_are_listed
check 'remove' inside apt-get remove -y "${packages[@]}"
check 'no handler is left' says '' xdg-mime query default x-scheme-handler/vnc
check 'purge' inside dpkg --purge "${packages[@]}"
check 'nothing is left' nothing_is_left

# Two ways to choose a handler, one for each scheme.
check 'install the package of before' install_before
check 'another handler' install_other_handler
check 'choose it, vnc' inside xdg-mime default hoplaunch-vnc.desktop x-scheme-handler/vnc
check 'choose it, ssh' inside gio mime x-scheme-handler/ssh hoplaunch-ssh.desktop
check 'the choice held before' opens gio open vnc://localhost/ 'vncviewer *<localhost>'
check 'upgrade' install_packages --reinstall
check 'upgraded' installed
check 'files after the upgrade' files_are_listed
check 'no dead file' no_dead_file
for scheme in vnc ssh; do
  check "the choice holds, $scheme" says "hoplaunch-$scheme.desktop" \
    xdg-mime query default "x-scheme-handler/$scheme"
done
for opener in 'gio open' xdg-open; do
  # shellcheck disable=SC2086
  check "$opener by the choice, vnc" opens $opener vnc://localhost:5901 \
    'vncviewer <-*> <localhost::5901>'
  # shellcheck disable=SC2086
  check "$opener by the choice, ssh" opens $opener ssh://localhost 'putty <-*> <localhost>'
done
# Of the package of before, people were advised to copy an entry for another viewer.
make_viewer x-terminal-emulator
mkdir -p "$debian/tmp/.local/share/applications"
cat >"$debian/tmp/.local/share/applications/hoplaunch-ssh.desktop" <<'END'
[Desktop Entry]
Type=Application
Name=SSH links
Exec=hoplaunch -program=/usr/share/doc/hoplaunch/examples/ssh-in-terminal %u
MimeType=x-scheme-handler/ssh;
END
check 'a copy of the entry counts as before' opens gio open ssh://localhost/ \
  'x-terminal-emulator <-e> <ssh> <--> <localhost>'
rm -r "$debian/tmp/.local" "$debian/usr/local/bin/x-terminal-emulator"
rm "$debian/tmp/.config/mimeapps.list"
for scheme in vnc ssh; do
  check "the names of before are not offered, $scheme" offers_hopopen_alone "$scheme"
done
check 'without a choice, the other handler' opens gio open vnc://h 'another <vnc://h>'
rm -r "$debian/usr/local/share/applications" "$debian/usr/local/bin/another"
check 'purge after the upgrade' inside dpkg --purge "${packages[@]}"
check 'nothing is left after the upgrade' nothing_is_left

# Other programs are built with what the packages have, outside of that Debian.
for package in libhoplaunch1 libhoplaunch-dev; do
  dpkg-deb --extract "build/package/${package}"_*.deb "$scratch/unpacked"
done
check 'programs outside' scripts/check outside -- "$scratch/unpacked/usr"

closing_line
