#!/usr/bin/env bash
# Tries the completions in bash, zsh and fish.
#   scripts/completions.sh [BUILD-FOLDER]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/packages.sh
source scripts/packages.sh
need bash-completion fish python3 python3-pexpect zsh
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
/usr/bin/python3 tests/completions.py "$scratch" "${1:-build/release}/hopopen"
