#!/usr/bin/env bash
# No file of the product has more than 500 lines: split it before a reader gets lost.
# (How long a function may be is a check of clang-tidy.)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
limit=500

git ls-files brimcore directory hopopen include tools utilities examples |
  xargs wc -l |
  awk -v limit="$limit" '
    $2 != "total" && $1 > limit { print $2 " has " $1 " lines, more than " limit; long++ }
    END { exit long > 0 }
  '
