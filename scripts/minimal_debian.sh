#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A minimal Debian of any release, for trying the project there.  As root.
#
#   scripts/minimal_debian.sh make FOLDER RELEASE [PACKAGE...]   makes it in FOLDER/base
#   scripts/minimal_debian.sh run FOLDER RESULT COMMAND...       runs a command in it
#
# The command runs in a clean clone of what is committed here, in a folder with a blank and an
# umlaut in its name; RESULT is /result there.  What it changes elsewhere is in FOLDER/top, and
# gone afterwards.  Packages that were fetched stay in FOLDER/archives.  There is a user,
# "somebody".  sid is what the mirror has, even where its index has expired.  A package may be
# one of another machine: libc6:arm64.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh

place='/srv/ein Ördner/hoplaunch'

# make FOLDER RELEASE [PACKAGE...]
make() {
  local folder=$1 base=$1/base options=() machines source=()
  [[ ! -e $base/etc/made ]] || return 0
  need mmdebstrap
  rm -rf --one-file-system "$base"
  mkdir -p "$folder/archives/partial"
  # The mirror may be a snapshot.  Of the other releases an expired index is a fault.
  [[ $2 != sid ]] || options=(--aptopt='Acquire::Check-Valid-Until "false"')
  machines=$(printf '%s\n' "${@:3}" | sed -n 's/.*:/,/p' | sort -u | paste -sd '')
  # Libraries must have the same version on all machines, and updates come to some before others.
  [[ -z $machines ]] || source=("deb http://deb.debian.org/debian $2 main")
  (($# == 2)) || options+=("--include=$(IFS=, && echo "${*:3}")") # which may not be empty
  # shellcheck disable=SC2016  # the hooks'
  quietly "$folder/base.log" mmdebstrap --variant=minbase \
    --architectures="$(dpkg --print-architecture)$machines" "${options[@]}" \
    --customize-hook='chroot "$1" useradd --create-home --shell /bin/bash somebody' \
    --customize-hook='mkdir "$1/result"' \
    --customize-hook='cat "$1"/var/lib/apt/lists/*_dists_'"$2"'_InRelease >"$1/etc/made"' \
    "$2" "$base" "${source[@]}"
}

# run FOLDER RESULT COMMAND...
run() {
  local status=0
  rm -rf --one-file-system "${1:?}/top"
  mkdir -p "$1/top"/{new,work,root} "$2"
  unshare --mount --pid --ipc --fork --kill-child "$PWD/scripts/minimal_debian.sh" enter "$@" ||
    status=$?
  rm -rf --one-file-system "${1:?}/top"
  return "$status"
}

# enter FOLDER RESULT COMMAND...: in a mount namespace, makes the Debian the root of it.  A
# chroot would not do: the kernel refuses user namespaces there.
enter() {
  local top=$1/top root=$1/top/root
  mount -t overlay -o "lowerdir=$1/base,upperdir=$top/new,workdir=$top/work" overlay "$root"
  mount -t proc proc "$root/proc"
  furnish_devices "$root/dev"
  mount --bind "$1/archives" "$root/var/cache/apt/archives"
  mount --bind "$2" "$root/result"
  cp --remove-destination /etc/resolv.conf "$root/etc/resolv.conf"
  printf '127.0.0.1 localhost %s\n' "$(uname -n)" >"$root/etc/hosts"
  git clone -q . "$root$place"
  cd "$root"
  pivot_root . .
  umount -l .
  exec env -i --chdir="$place" HOME=/root USER=root LANG=C.UTF-8 \
    PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin "${@:3}"
}

case ${1:-} in
  make | run | enter)
    need_root 'it makes and enters installations of Debian'
    need git
    "$@"
    ;;
  *)
    sed -n 's/^# \{0,1\}//; 3,6p' "$0" >&2
    exit 2
    ;;
esac
