#!/usr/bin/env bash
# Compares what comes of the same command lines with the 64-bit and with the 32-bit
# launcher.  Installs what building them takes.
#   scripts/word_sizes.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/packages.sh
source scripts/packages.sh
need "${build_packages[@]}" g++-multilib googletest python3
for preset in release i386; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" --target hoplaunch recording_viewer >/dev/null
done
exec python3 scripts/word_sizes.py "$PWD"/build/{release,i386}/hoplaunch \
  "$PWD/build/release/tests/recording_viewer" tests/launcher_cases.txt
