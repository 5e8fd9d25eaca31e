# SPDX-License-Identifier: MIT
# That each figure in the documents is the one that was measured and kept.
# shellcheck shell=bash
set -euo pipefail
scripts/figures --check
