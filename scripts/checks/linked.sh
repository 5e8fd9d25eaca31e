# SPDX-License-Identifier: MIT
# That nothing beyond the C and C++ libraries is in what is shipped, except for hopopen.
# Arguments: [BUILD-FOLDER]
# The folder must be one that Ninja has built in, the shared library included.
# shellcheck shell=bash source=scripts/lib.sh
set -uo pipefail
source scripts/lib.sh
need binutils dpkg
(($# > 0)) || build release hoplaunch hopexplain hopopen hoplaunch_support hoplaunch_support_shared || exit 1
build=$(realpath "${1:-build/release}")
top=$PWD
made=("$build"/{hoplaunch,hopexplain,libhoplaunch.a,libhoplaunch.so})
# What these are made of, by the targets of the build.
targets='hoplaunch(|_support|_support_shared|_log|_driver|_explain|_shared)|hopexplain'

# --- Shared libraries that are needed -----------------------------------------

# needs FILE [LIBRARY...]: these and no others, the loader itself aside.
needs() {
  diff <(printf '%s\n' "${@:2}" | sed '/^$/d' | sort) <(
    readelf --wide --dynamic "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p' |
      grep -v '^ld-linux' | sort
  )
}

# --- What is linked in ----------------------------------------------------------

# Names of further libraries, and of the front door itself, as a linker knows them: a
# namespace is its length and its name.
foreign='3CLI|4toml|8nlohmann|7hopopen'
has_foreign() { grep -m 5 -E "$foreign" <(nm "$1" 2>/dev/null); }
has_no_foreign() { [[ -s $1 ]] && ! has_foreign "$1"; }

# --- What is compiled in ----------------------------------------------------------

# The headers of the system that the targets include, each in its real place.
system_headers() {
  ninja -C "$build" -t deps |
    awk -v targets="^CMakeFiles/($1)\\\\.dir/" \
      '/^[^ ]/ { wanted = $1 ~ targets } wanted && sub(/^    \//, "/")' |
    sort -u | xargs -rd '\n' realpath | grep -vF "$top/" | sort -u
}

# The packages that they are from.
packages_of() { system_headers "$1" | xargs -rd '\n' dpkg --search | sed 's/[:,].*//' | sort -u; }
only_the_languages() {
  local packages
  packages=$(packages_of "$1")
  printf '%s\n' "$packages"
  grep -q '^libstdc++-[0-9]*-dev$' <<<"$packages" &&
    ! grep -vE '^(libstdc\+\+-[0-9]+-dev|libgcc-[0-9]+-dev|libc6-dev|linux-libc-dev)$' <<<"$packages"
}
includes_more() {
  diff <(printf '%s\n' libcli11-dev libtomlplusplus-dev nlohmann-json3-dev) \
    <(packages_of "$1" | grep -vE '^(libstdc\+\+-|libgcc-|libc6-dev|linux-libc-dev)')
}

# No folder of the front door or of another library is searched for headers.
only_own_folders() {
  local folders
  folders=$(ninja -C "$build" -t compdb | grep -E "\"command\": .* -o CMakeFiles/($targets)\\.dir/" |
    grep -oE -- ' -(I|isystem |iquote )[^ ]+' | sort -u)
  printf '%s\n' "$folders"
  diff <(printf ' %s\n' "-I$top/include" "-I$top/tools" "-isystem $build/include") \
    <(printf '%s\n' "$folders")
}

check 'hoplaunch needs no shared library' needs "$build/hoplaunch"
check 'hopopen needs no shared library' needs "$build/hopopen"
for file in hopexplain libhoplaunch.so; do
  check "$file needs the libraries of C and C++ alone" needs "$build/$file" \
    libc.so.6 libgcc_s.so.1 libstdc++.so.6
done
for file in "${made[@]}"; do
  check "${file##*/} has nothing of another library" has_no_foreign "$file"
done
# What is looked for would be found.
check 'hopopen has something of other libraries' has_foreign "$build/hopopen"
check 'the headers of the C and C++ libraries alone' only_the_languages "$targets"
check 'hopopen includes more' includes_more 'hoplaunch_opening|hopopen'
check 'the folders of headers' only_own_folders

closing_line
