# SPDX-License-Identifier: MIT
# That whoever shows a link and whoever opens it agree.
# Of every link that hopopen accepts, browsers' URL standard (by node), libcurl and GLib must
# read the same user, host and port.
# Tries links of a grammar of confusions, and those of tests/links.txt.
# Arguments: [COUNT [SEED]]
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
count=${1:-20000}
seed=${2:-1}
if [[ ! $count =~ ^[1-9][0-9]*$ || ! $seed =~ ^[0-9]+$ ]]; then
  printf 'Usage: scripts/check agreement -- [COUNT [SEED]]\n' >&2
  exit 2
fi
need "${build_packages[@]}" libcurl4-openssl-dev libglib2.0-dev pkgconf
command -v node >/dev/null || need nodejs

read -ra configuration <<<"${HOPLAUNCH_CMAKE_ARGS:-}"
folder=build/agreement
configure_and_build() {
  cmake --preset release -DHOPLAUNCH_AGREEMENT=ON "${configuration[@]}" &&
    cmake --build --preset release --target hoplaunch_agreement
}
quietly "$folder/build.log" configure_and_build
node tests/agreement/generate.mjs "$count" "$seed" tests/links.txt >"$folder/links.txt"
build/release/tests/agreement/agreement <"$folder/links.txt" >"$folder/readings.txt"
node tests/agreement/compare.mjs "$folder/links.txt" "$folder/readings.txt" "$count"
