# SPDX-License-Identifier: MIT
# The completions, typed into bash, zsh and fish.
# Arguments: [BUILD-FOLDER]
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need bash-completion fish python3 python3-pexpect zsh
(($# > 0)) || build release hopopen
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
/usr/bin/python3 tests/completions.py "$scratch" "${1:-build/release}/hopopen"
