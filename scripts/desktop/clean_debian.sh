#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A clean Debian of this machine's release for tests, in build/clean_debian/.  As root.
# CLEAN_DEBIAN names another release; it is in a folder of its own, such as
# build/clean_debian_trixie/.
#
#   scripts/desktop/clean_debian.sh make PACKAGE...   makes it, with these packages in it
#   scripts/desktop/clean_debian.sh run COMMAND...    runs a command in it
#
# What a command changes there is in memory and gone with it: every run begins with what
# was made.  It has its own processes, and a network of its own that ends at the machine.
# The project is at /srv/hoplaunch, and only build/desktop can be written there.  Nothing is
# left on the machine but the folder itself, which is made anew when it is a week old, or
# lacks a package.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh

project=$PWD
home=$project/build/clean_debian${CLEAN_DEBIAN:+_$CLEAN_DEBIAN}
base=$home/base

# furnish ROOT: what programs expect of a running system.
furnish() {
  mount -t proc proc "$1/proc"
  mount -t sysfs -o ro sysfs "$1/sys"
  furnish_devices "$1/dev"
}

# enter ROOT FOLDER COMMAND...: runs it there, in place of this script.
enter() {
  exec chroot "$1" env --ignore-environment --chdir="$2" HOME=/root USER=root LANG=C.UTF-8 TERM=dumb \
    PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
    DEBIAN_FRONTEND=noninteractive "${@:3}"
}

# --- Making --------------------------------------------------------------------

# is_made PACKAGE...
is_made() {
  [[ -n $(find "$base/made_with" -mtime -7 2>/dev/null) && $(<"$base/made_with") == "$*" ]]
}

# make PACKAGE...: in a folder that gets its name when all is there.
make() {
  is_made "$@" && return
  need debootstrap
  rm -rf --one-file-system "$home"
  mkdir -p "$home/top"
  unshare --mount --pid --ipc --fork --kill-child --mount-proc "$0" fill "$@"
  printf '%s\n' "$*" >"$home/partial/made_with"
  mv "$home/partial" "$base"
}

# fill PACKAGE...
fill() {
  local debian=$home/partial suite mirror=http://deb.debian.org
  suite=${CLEAN_DEBIAN:-$(. /etc/os-release && echo "$VERSION_CODENAME")}
  debootstrap --variant=minbase "$suite" "$debian" "$mirror/debian"
  printf 'deb %s main\n' "$mirror/debian $suite" "$mirror/debian $suite-updates" \
    "$mirror/debian-security $suite-security" >"$debian/etc/apt/sources.list"
  printf '127.0.0.1 localhost\n::1 localhost ip6-localhost\n' >"$debian/etc/hosts"
  # No service is started, and nobody misses the files after a crash.
  printf '#!/bin/sh\nexit 101\n' | install -m 755 /dev/stdin "$debian/usr/sbin/policy-rc.d"
  echo force-unsafe-io >"$debian/etc/dpkg/dpkg.cfg.d/unsafe-io"
  mkdir "$debian/srv/hoplaunch"
  furnish "$debian"
  borrow_cache "$debian/var/cache/apt/archives"
  # shellcheck disable=SC2016  # the other shell's
  enter "$debian" / sh -c 'apt-get update && apt-get install -y --no-install-recommends "$@"' \
    sh "$@"
}

# borrow_cache FOLDER: packages that this machine has are not fetched again.  What is
# fetched is not added to its cache.
borrow_cache() {
  mount -t tmpfs tmpfs "$home/top"
  mkdir "$home/top/new" "$home/top/work"
  mount -t overlay -o "lowerdir=/var/cache/apt/archives,upperdir=$home/top/new" \
    -o "workdir=$home/top/work" overlay "$1"
}

# --- Running -------------------------------------------------------------------

# inside COMMAND...
inside() {
  local top=$home/top root=$home/top/root place
  mount -t tmpfs tmpfs "$top"
  mkdir "$top/new" "$top/work" "$root"
  mount -t overlay -o "lowerdir=$base,upperdir=$top/new,workdir=$top/work" overlay "$root"
  furnish "$root"
  chroot "$root" ip link set lo up
  place=$root/srv/hoplaunch
  mount --bind -o ro "$project" "$place"
  mount --bind "$project/build/desktop" "$place/build/desktop"
  enter "$root" /srv/hoplaunch "$@"
}

case ${1:-} in
  make) make iproute2 "${@:2}" ;;
  fill) fill "${@:2}" ;;
  run) exec unshare --mount --pid --ipc --net --fork --kill-child "$0" inside "${@:2}" ;;
  inside) inside "${@:2}" ;;
  *)
    sed -n 's/^# \{0,1\}//; 3,8p' "$0" >&2
    exit 2
    ;;
esac
