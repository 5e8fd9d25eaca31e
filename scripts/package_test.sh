#!/usr/bin/env bash
# Tries the packages that ./package has built, as root, in a fresh Debian that is
# removed at the end: installs them, uses them, installs them over themselves, removes
# and purges them, and shows that nothing is left.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/packages.sh
source scripts/packages.sh
if ((EUID != 0)); then
  printf '%s takes root: it makes a Debian of its own.\n' "$0" >&2
  exit 1
fi
need debootstrap

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
debian=$scratch/debian
packages=(hoplaunch libhoplaunch1 libhoplaunch-dev)

passed=0
failed=0
# check NAME COMMAND...: shows what the command says only when it fails.
check() {
  local name=$1
  shift
  if "$@" >"$scratch/output" 2>&1; then
    passed=$((passed + 1))
  else
    printf 'FAILED: %s\n' "$name"
    cat "$scratch/output"
    failed=$((failed + 1))
  fi
}

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

# Every file with its content, but for the books and logs of dpkg and apt.
inventory() {
  (
    cd "$debian"
    find . \( -path ./proc -o -path ./tmp -o -path ./var/log -o -path ./var/cache \
      -o -path ./var/lib/apt -o -path ./var/lib/dpkg \) -prune \
      -o -type f -exec sha256sum {} + -o -printf '%y %p %l\n'
    find var/lib/dpkg/info
  ) | sort
}

# Both viewers note what they are given: in a file, or to whoever reads a pipe.
make_viewers() {
  local viewer
  for viewer in vncviewer putty; do
    cat >"$debian/usr/local/bin/$viewer" <<'END'
#!/bin/sh
{ printf '%s' "${0##*/}" && printf ' <%s>' "$@" && echo; } >>/tmp/started
END
    chmod +x "$debian/usr/local/bin/$viewer"
  done
}

make_debian() {
  local package
  debootstrap --variant=minbase "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$debian"
  inside apt-get install -y --no-install-recommends desktop-file-utils libglib2.0-bin xdg-utils
  make_viewers
  mkdir "$debian/tmp/packages"
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
  diff <(sed "s/MACHINE/$(inside ls /usr/lib | grep linux-gnu)/" tests/package_files.txt) <(
    for package in "${packages[@]}"; do
      while read -r path; do
        if [[ ! -d $debian$path && $path != /usr/include/* ]]; then
          printf '%s %s\n' "$package" "$path"
        fi
      done < <(inside dpkg --listfiles "$package")
    done | LC_ALL=C sort
  )
}
headers_are_there() { diff <(ls include) <(ls "$debian/usr/include/hoplaunch"); }

# opens OPENER... URI EXPECTED: opening the link starts the viewer with these arguments.
opens() {
  rm -f "$debian/tmp/started"
  mkfifo "$debian/tmp/started"
  says "${!#}" sh -c '"$@" >/dev/null 2>&1 & timeout 60 cat /tmp/started' sh "${@:1:$#-1}"
}

# exec_line SCHEME LINK: what a desktop does for it, as the entry says.
exec_line() {
  local words word line=()
  read -ra words < <(sed -n 's/^Exec=//p' "$debian/usr/share/applications/hoplaunch-$1.desktop")
  for word in "${words[@]}"; do
    if [[ $word == %u ]]; then
      word=$2
    fi
    line+=("$word")
  done
  rm -f "$debian/tmp/started" "$debian/tmp/log"
  inside "${line[@]}"
}

# starts SCHEME LINK EXPECTED
starts() {
  exec_line "$1" "$2"
  diff <(echo "$3") "$debian/tmp/started"
}

# starts_nothing LINK: neither entry starts or writes anything for it.
starts_nothing() {
  local scheme
  for scheme in vnc ssh; do
    exec_line "$scheme" "$1" || true
    [[ ! -e $debian/tmp/started && ! -e $debian/tmp/log ]] || return
  done
}

nothing_is_left() { diff "$scratch/before" <(inventory); }

check 'a fresh Debian' make_debian
inventory >"$scratch/before"

check 'install' install_packages
check 'installed' installed
check 'files' files_are_listed
check 'headers' headers_are_there
check 'entries are valid' inside sh -c 'desktop-file-validate /usr/share/applications/hoplaunch-*'
check 'the shared library is known' inside sh -c 'ldconfig -p | grep -q libhoplaunch.so.1'
check 'hopexplain' inside hopexplain 'vnc://localhost/'

for scheme in vnc ssh; do
  check "xdg-mime, $scheme" says "hoplaunch-$scheme.desktop" \
    xdg-mime query default "x-scheme-handler/$scheme"
  check "database, $scheme" inside grep -qx "x-scheme-handler/$scheme=hoplaunch-$scheme.desktop;" \
    /usr/share/applications/mimeinfo.cache
done
for opener in 'gio open' xdg-open; do
  # shellcheck disable=SC2086  # two words
  check "$opener, vnc" opens $opener 'vnc://localhost:5901/?shared=1' \
    'vncviewer <-ReconnectOnError=0> <-shared=1> <localhost:5901>'
  # shellcheck disable=SC2086
  check "$opener, ssh" opens $opener 'ssh://localhost:2222/' 'putty <-ssh> <-P> <2222> <localhost>'
done
check 'a link with options of hoplaunch in it stays one argument' \
  starts vnc 'vnc://h/?shared=1&a=b -program=/bin/false' \
  'vncviewer <-ReconnectOnError=0> <-shared=1> <h>'
check 'a link cannot make the VNC viewer run a command' \
  starts vnc 'vnc://h/?via=-oProxyCommand=false' 'vncviewer <-ReconnectOnError=0> <h>'
check 'a link cannot make PuTTY run a command' \
  starts ssh 'ssh://u@h/?proxycmd=false' 'putty <-ssh> <-P> <22> <u@h>'
for link in -program=/usr/local/bin/putty --program=/usr/local/bin/putty -program -log=/tmp/log \
  -log -PROGRAMS=VNC=putty -VNC_OPTIONS -style -portArg -refcount - -= ''; do
  check "\"$link\" in the place of a link" starts_nothing "$link"
done

check 'install again' install_packages --reinstall
check 'installed again' installed
check 'files again' files_are_listed
check 'remove' inside apt-get remove -y "${packages[@]}"
check 'no handler is left' says '' xdg-mime query default x-scheme-handler/vnc
check 'purge' inside dpkg --purge "${packages[@]}"
check 'nothing is left' nothing_is_left

# Other programs are built with what the packages have, outside of that Debian.
for package in libhoplaunch1 libhoplaunch-dev; do
  dpkg-deb --extract "build/package/${package}"_*.deb "$scratch/unpacked"
done
check 'programs outside' scripts/outside.sh "$scratch/unpacked/usr"

printf '%d passed, %d failed\n' "$passed" "$failed"
((failed == 0))
