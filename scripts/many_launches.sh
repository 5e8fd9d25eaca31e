#!/usr/bin/env bash
# A thousand launches in a row and a thousand side by side leave no semaphore set
# behind, also in a new IPC namespace, where the kernel's first id is 0.
#   scripts/many_launches.sh [BUILD-FOLDER]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
launcher=$(realpath "${1:-build/release}")/hoplaunch

sets() { tail -n +2 /proc/sysvipc/sem | awk '{print $2}' | sort; }

launches() {
  for ((i = 0; i < $1; i++)); do
    "$launcher" -program=/bin/true 'vnc://host:5900/?shared=1' || return 1
  done
}

check() {
  local before after job jobs=()
  before=$(sets)
  launches 1000
  for _ in 1 2 3 4; do
    launches 250 &
    jobs+=($!)
  done
  for job in "${jobs[@]}"; do
    wait "$job"
  done
  after=$(sets)
  if [[ $before != "$after" ]]; then
    printf '%s: sets left behind:\n%s\n' "$1" "$(comm -13 <(echo "$before") <(echo "$after"))" >&2
    return 1
  fi
  printf '%s: 2000 launches left no set behind\n' "$1"
}

if [[ ${2:-} == namespace ]]; then
  check 'new IPC namespace'
  exit
fi
check 'this IPC namespace'
if ((EUID == 0)); then
  unshare --ipc "${BASH_SOURCE[0]}" "${1:-build/release}" namespace
else
  printf 'new IPC namespace: left out, it takes root\n'
fi
