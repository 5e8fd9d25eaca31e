# SPDX-License-Identifier: MIT
# That every source, script and CMake file names its license at its head.
# (REUSE.toml has the license of everything else.)
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need git

unnamed() {
  local file
  while read -r file; do
    head -n 2 "$file" | grep -q 'SPDX-License''-Identifier: MIT$' || printf '%s\n' "$file"
  done < <(
    git ls-files '*.c' '*.cpp' '*.mjs' '*.h' '*.py' '*.sh' '*.cmake' '*CMakeLists.txt' 'completions/*'
    git grep -lI '^#!' -- ':!docs' ':!*.md' ':!fuzz/corpus' ':!tests/data'
  )
}
# What the tools of REUSE would take for the name of a license.
tag='SPDX-License''-Identifier:'
misread() { git grep -n "$tag" | grep -vE "$tag MIT( \*/|-->)?\$"; }
nothing_misread() { ! misread; }
check 'each names its license' silent unnamed
check 'nothing else looks like one' nothing_misread
closing_line
