#!/usr/bin/env bash
# Runs cppcheck over the sources of the product.  What it is not to say stands, with the
# reason, in .cppcheck-suppressions; one that is no longer needed is told of.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
git ls-files '*.cpp' | grep -E '^(brimcore|directory|hopopen|tools|utilities)/' |
  xargs cppcheck --quiet --error-exitcode=1 --std=c++20 --language=c++ -j 2 \
    --enable=warning,style,performance,portability,information -I include -I tools -I utilities -I hopopen \
    --suppressions-list=.cppcheck-suppressions
