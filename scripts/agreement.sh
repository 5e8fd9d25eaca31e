#!/usr/bin/env bash
# Whoever shows a link and whoever opens it must agree: of every link that hopopen accepts,
# browsers' URL standard (by node), libcurl and GLib must read the same user, host and port.
# Tries links of a grammar of confusions, and those of tests/links.txt:
#   scripts/agreement.sh [COUNT] [SEED]
# Installs what it needs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/packages.sh
source scripts/packages.sh
count=${1:-20000}
seed=${2:-1}
if [[ ! $count =~ ^[1-9][0-9]*$ || ! $seed =~ ^[0-9]+$ ]]; then
  printf 'Usage: %s [COUNT] [SEED]\n' "$0" >&2
  exit 2
fi
need "${build_packages[@]}" libcurl4-openssl-dev libglib2.0-dev pkgconf
command -v node >/dev/null || need nodejs

read -ra configuration <<<"${HOPLAUNCH_CMAKE_ARGS:-}"
build=build/agreement
mkdir -p "$build"
{
  cmake --preset release -B "$build" -DHOPLAUNCH_AGREEMENT=ON -DHOPLAUNCH_TESTS=OFF \
    -DHOPLAUNCH_SHARED=OFF "${configuration[@]}" &&
    cmake --build "$build" --target agreement
} >"$build/build.log" 2>&1 || {
  cat "$build/build.log"
  exit 1
}
node tests/agreement/generate.mjs "$count" "$seed" tests/links.txt >"$build/links.txt"
"$build/tests/agreement/agreement" <"$build/links.txt" >"$build/readings.txt"
node tests/agreement/compare.mjs "$build/links.txt" "$build/readings.txt" "$count"
