# SPDX-License-Identifier: MIT
# That clang-tidy, configured in .clang-tidy, has nothing to say about the product.
# Arguments: those of clang-tidy.
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need "${build_packages[@]}" clang-tidy git googletest
# In a folder of its own, since it may run beside a build.
cmake --preset release -B build/tidy -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
  -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null
# Four sources a job, two jobs at a time.  What sed drops are warnings in headers of the system.
git ls-files utilities brimcore directory tools hopopen examples | grep '\.cpp$' |
  xargs -P 2 -n 4 clang-tidy -p build/tidy --quiet "$@" 2>&1 |
  sed '/^[0-9]* warnings\{0,1\} generated\.$/d'
