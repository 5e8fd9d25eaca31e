# SPDX-License-Identifier: MIT
# That the reference of the library is built without a warning: each entity has a comment.
# shellcheck shell=bash
set -euo pipefail
scripts/reference
