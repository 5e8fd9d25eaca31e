# SPDX-License-Identifier: MIT
# That cppcheck has nothing to say about the product.
# .cppcheck-suppressions has what it must not say, with the reason; cppcheck reports one that is
# no longer needed.
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need cppcheck git
git ls-files '*.cpp' | grep -E '^(brimcore|directory|hopopen|tools|utilities)/' |
  xargs cppcheck --quiet --error-exitcode=1 --std=c++20 --language=c++ -j 2 \
    --enable=warning,style,performance,portability,information -I include -I tools -I utilities -I hopopen \
    --suppressions-list=.cppcheck-suppressions
