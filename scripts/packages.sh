# Sourced by the project's scripts: installs Debian packages that are missing.
# shellcheck shell=bash

# need PACKAGE...: sees to it that the packages are installed.  Installs them as
# root or through sudo; otherwise prints the command to type and ends the script.
need() {
  local missing=() package
  for package in "$@"; do
    if [[ "$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null)" != *' installed' ]]; then
      missing+=("$package")
    fi
  done
  if ((${#missing[@]} == 0)); then
    return
  fi
  local as_root=()
  if ((EUID != 0)); then
    if ! sudo -n true 2>/dev/null && ! { [[ -t 0 ]] && command -v sudo >/dev/null; }; then
      printf 'Missing packages.  As root, type:\n\n  apt-get update && apt-get install -y %s\n\n' \
        "${missing[*]}" >&2
      exit 1
    fi
    as_root=(sudo)
  fi
  printf 'Installing: %s\n' "${missing[*]}" >&2
  {
    "${as_root[@]}" apt-get update -qq &&
      "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}"
  } >&2
}

# The packages that building takes.
# shellcheck disable=SC2034  # for the scripts that source this one
build_packages=(g++ cmake ninja-build libcli11-dev libtomlplusplus-dev nlohmann-json3-dev)
