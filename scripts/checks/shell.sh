# SPDX-License-Identifier: MIT
# That shellcheck has nothing to say about any shell script.
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need git shellcheck
{
  git ls-files 'completions/*.bash' '*.sh'
  git ls-files | xargs grep -lE '^#!/(usr/)?bin/(env )?(ba)?sh$'
} | sort -u | xargs shellcheck -x
