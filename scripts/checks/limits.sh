# SPDX-License-Identifier: MIT
# That no file is longer than a reader bears.
# (How long a function may be is a check of clang-tidy.)
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need git

# at_most LINES FILE...
at_most() {
  wc -l "${@:2}" | awk -v limit="$1" '
    $2 != "total" && $1 > limit { print $2 " has " $1 " lines, more than " limit; long++ }
    END { exit long > 0 }
  '
}
mapfile -t product < <(git ls-files brimcore directory hopopen include tools utilities examples)
mapfile -t scripts < <(git ls-files 'scripts/*.sh' 'scripts/checks/*' 'scripts/desktop/*')
check 'the product' at_most 500 "${product[@]}"
check 'the README' at_most 200 README.md
check 'the scripts' at_most 500 "${scripts[@]}"
closing_line
