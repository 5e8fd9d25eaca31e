# SPDX-License-Identifier: MIT
# That clang-tidy, configured in .clang-tidy, has nothing to say about the product.
#   scripts/check tidy -- quick   without the analyzer, several sources at once
# Then headers are read once for many sources, which takes a tenth of the time.
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need "${build_packages[@]}" clang-tidy git googletest

folders=(brimcore directory examples hopopen include tools utilities)
arguments=()
together=OFF
if [[ ${1:-} == quick ]]; then
  together=ON
  # CMake includes the sources, and clang-tidy takes them for headers.  The analyzer would pass
  # over them.  What begins with "cert" are mostly other names of the others.
  arguments=('--checks=-clang-analyzer-*,-cert-*,-bugprone-suspicious-include'
    "--header-filter=/($(IFS='|' && echo "${folders[*]}"))/.*\.(h|cpp)\$")
fi
# In a folder of its own, since it may run beside a build.
cmake --preset release -B build/tidy -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DHOPLAUNCH_SHARED=OFF \
  -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON "-DCMAKE_UNITY_BUILD=$together" \
  -DCMAKE_UNITY_BUILD_BATCH_SIZE=12 >/dev/null

sources() {
  if [[ $together == ON ]]; then
    sed -n 's|^  "file": "\(.*/build/tidy/.*\)",\{0,1\}$|\1|p' build/tidy/compile_commands.json |
      grep -v '/build/tidy/\(tests\|fuzz\)/'
  else
    git ls-files "${folders[@]}" | grep '\.cpp$'
  fi
}
# Two jobs at a time.  What sed drops are warnings in headers of the system.
sources | xargs -d '\n' -P 2 -n "$([[ $together == ON ]] && echo 1 || echo 4)" \
  clang-tidy -p build/tidy --quiet "${arguments[@]}" 2>&1 |
  sed '/^[0-9]* warnings\{0,1\} generated\.$/d'
