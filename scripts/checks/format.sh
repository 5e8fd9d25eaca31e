# SPDX-License-Identifier: MIT
# That every C and C++ source is formatted as .clang-format says.
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need clang-format git
git ls-files '*.cpp' '*.c' '*.h' | xargs clang-format --dry-run --Werror
