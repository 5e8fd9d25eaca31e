#!/usr/bin/env bash
# Tries the completions in bash and in zsh.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/packages.sh
source scripts/packages.sh
need bash-completion python3 python3-pexpect zsh
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
/usr/bin/python3 tests/completions.py "$scratch"
