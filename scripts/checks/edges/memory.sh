# SPDX-License-Identifier: MIT
# Memory runs out: a failed launch, an explanation that fails, never an exception.
# shellcheck shell=bash
# shellcheck disable=SC2154,SC2034  # the variables are those of scripts/checks/edges.sh

python_limit=200
from_python edges_memory.py hoplaunch "$scratch/bin" "$launch"
from_python edges_memory.py hopexplain "$scratch/bin" "$explain"
