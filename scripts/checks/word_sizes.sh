# SPDX-License-Identifier: MIT
# That the 64-bit and the 32-bit launcher do the same with the same command lines.
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need "${build_packages[@]}" g++-multilib googletest python3
for preset in release i386; do
  build "$preset" hoplaunch recording_viewer
done
exec python3 scripts/checks/word_sizes.py "$PWD"/build/{release,i386}/hoplaunch \
  "$PWD/build/release/tests/recording_viewer" tests/data/launcher_cases.txt
