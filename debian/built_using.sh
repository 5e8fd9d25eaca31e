#!/bin/sh
# SPDX-License-Identifier: MIT
# Prints the source packages whose code is compiled or linked into the programs, as a line of
# substitution variables.
set -eu
compiler="${DEB_HOST_GNU_TYPE:-$(dpkg-architecture -qDEB_HOST_GNU_TYPE)}-g++"
printf 'hoplaunch:Static-Built-Using='
{
  dpkg-query --search "$(realpath "$("$compiler" -print-file-name=libstdc++.a)")" | sed 's/: .*//'
  printf '%s\n' libcli11-dev libtomlplusplus-dev nlohmann-json3-dev
} | while read -r package; do
  # shellcheck disable=SC2016  # dpkg-query's
  dpkg-query --show -f '${source:Package} (= ${source:Version})\n' "$package"
done | LC_ALL=C sort -u | paste -sd , | sed 's/,/, /g'
