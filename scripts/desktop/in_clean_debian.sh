# SPDX-License-Identifier: MIT
# Sourced by the tests that ./test --desktop runs in a clean Debian.  They install packages,
# and write below /etc and /root, so they run nowhere else.
# shellcheck shell=bash

if [[ ! -e /made_with ]]; then
  printf 'This is a part of ./test --desktop, and runs in a Debian of its own.\n' >&2
  exit 1
fi

install_package() {
  apt-get install -y --no-install-recommends "$@" "$PWD"/build/package/hoplaunch_*.deb
}
