# SPDX-License-Identifier: MIT
# Names that a shell would run or split are completed as they are.
# shellcheck shell=bash
# shellcheck disable=SC2154,SC2034  # the variables are those of scripts/checks/edges.sh

mkdir completions
python_limit=900
from_python edges_completions.py "$scratch/completions" "$opener"
