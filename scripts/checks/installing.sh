# SPDX-License-Identifier: MIT
# What scripts/lib.sh says where it cannot install packages, and what it shows while it builds.
# shellcheck shell=bash source=scripts/lib.sh
set -uo pipefail
source scripts/lib.sh
need bsdutils util-linux
lib=$PWD/scripts/lib.sh
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
chmod 755 "$scratch"

# --- Installing ------------------------------------------------------------------

# Programs that only say how they are called.  UPDATE and INSTALL are how apt-get ends.
fake() { install -m 755 /dev/stdin "$scratch/$1/$2"; }
mkdir "$scratch"/{sudo,refused,none}
for folder in sudo refused none; do
  ln -s "$(command -v env)" "$(command -v bash)" "$scratch/$folder"
  fake "$folder" apt-get <<'END'
#!/usr/bin/env bash
printf 'apt-get %s\n' "$*"
[[ $1 == update ]] && exit "$UPDATE"
exit "$INSTALL"
END
  fake "$folder" dpkg-query <<'END'
#!/usr/bin/env bash
[[ $3 == here ]] && printf 'install ok installed'
END
  fake "$folder" apt-cache <<'END'
#!/usr/bin/env bash
[[ $2 != unknown ]] && printf '%s:\n  Installed: (none)\n  Candidate: 1.0\n' "$2"
END
done
fake sudo sudo <<'END'
#!/usr/bin/env bash
printf 'sudo '
[[ $1 != --non-interactive ]] || shift
exec "$@"
END
fake refused sudo <<'END'
#!/usr/bin/env bash
printf 'sudo: a password is required\n'
exit 1
END

# wants WHO FOLDER UPDATE INSTALL STATUS TEXT PACKAGE...: a script that needs the packages,
# run by root or by another user, ends with the status and says the text.
wants() {
  local who=() said status=0
  if [[ $1 == user && $EUID == 0 ]]; then
    who=(setpriv --reuid=65534 --regid=65534 --clear-groups)
  elif [[ $1 == root && $EUID != 0 ]]; then
    return 0 # nobody else can be root
  fi
  # shellcheck disable=SC2016  # the other shell's
  said=$("${who[@]}" env -i "PATH=$scratch/$2" "UPDATE=$3" "INSTALL=$4" "$(command -v bash)" -c \
    'source "$0"; need "$@"; printf "It goes on.\n"' "$lib" "${@:7}" 2>&1 </dev/null) || status=$?
  printf 'It ended with status %s, and said:\n%s\n' "$status" "$said"
  ((status == $5)) && [[ $said == *"$6"* ]] &&
    { ((status == 0)) || [[ $said != *'It goes on.'* ]]; }
}
install='apt-get install -y -qq -o DPkg::Lock::Timeout=600 --no-install-recommends'
command='apt-get update && apt-get install -y --no-install-recommends'

check 'what is installed is not installed again' wants root none 9 9 0 'It goes on.' here
check 'root installs the others' wants root none 0 0 0 "$install one two"$'\nIt goes on.' one here two
check 'a user installs them by sudo' wants user sudo 0 0 0 "sudo $install one"$'\nIt goes on.' one
check 'a package source that fails stops root' \
  wants root none 100 0 1 'The package one was not installed.' one
check 'no package is then asked for' \
  wants root none 100 0 1 $'Error-Mode=any\n\nThe package one' one
check 'it stops a user' wants user sudo 100 0 1 '"apt-get update" failed with status 100;' one
check 'a package that fails stops' wants root none 0 100 1 \
  $'The package one was not installed.\nThe package two was not installed.\n"apt-get install" failed' one two
check 'a package that nobody has' wants root none 0 100 1 \
  'The package unknown was not installed: no package source has it.' unknown
check 'a user whom sudo refuses' wants user refused 0 0 1 "  $command one two" one two
check 'a user without sudo' wants user none 0 0 1 "  $command one" one

# --- Building ----------------------------------------------------------------------

# builds STATUS TEXT COMMAND: what quietly shows of the shell's command.
log=$scratch/some\ folder/build.log
builds() {
  local said status=0
  said=$(quietly "$log" bash -c "$3" 2>&1 >/dev/null) || status=$?
  printf 'It ended with status %s, and said:\n%s\n' "$status" "$said"
  ((status == $1)) && [[ $said == "$2" ]]
}
steps="printf -- '-- Configuring\n[1/2] Building a.o\nc.cpp: warning\n[2/2] Linking\n'"
check 'the steps are shown, one a line' builds 0 $'[1/2] Building a.o\n[2/2] Linking' "$steps"
check 'all is in the log' diff <(bash -c "$steps") "$log"
check 'a failure has the last lines and the log' builds 1 \
  $'[1/2] Building a.o\n\n[1/2] Building a.o\nc.cpp: error\n\nThis failed.  All that was printed is in '"$log" \
  "printf '[1/2] Building a.o\nc.cpp: error\n'; exit 7"
check 'of many lines only forty' \
  builds 1 $'\n'"$(seq 61 100)"$'\n\nThis failed.  All that was printed is in '"$log" 'seq 100; false'

# On a terminal each line takes the place of the one before.
on_terminal() {
  local said erase=$'\r\e[K'
  # shellcheck disable=SC2016  # the other shell's
  said=$(TERM=xterm script -qec "bash -c 'stty cols 12; source \"$lib\"; quietly \"$log\" seq 9 3 15'" \
    /dev/null </dev/null)
  printf '%q\n' "$said"
  [[ $said == "${erase}9${erase}12${erase}15${erase}" ]]
}
check 'a terminal shows one line at a time' on_terminal
closing_line
