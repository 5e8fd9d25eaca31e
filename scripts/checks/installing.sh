# What scripts/lib.sh says where it cannot install packages.
# shellcheck shell=bash source=scripts/lib.sh
set -uo pipefail
source scripts/lib.sh
need util-linux
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
install='apt-get install -y -qq --no-install-recommends'
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

closing_line
