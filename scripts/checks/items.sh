# SPDX-License-Identifier: MIT
# That docs/items.tsv lists what the programs register, and that pages and completions have it.
# shellcheck shell=bash source=scripts/lib.sh
set -uo pipefail
source scripts/lib.sh
need "${build_packages[@]}"
build release hoplaunch_support hoplaunch_driver hopexplain || exit 1
folder=build/release
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# rows PATTERN: the keys of the rows that begin with the pattern.
rows() { grep -E "^$1" docs/items.tsv | cut -f 2 | LC_ALL=C sort; }

# A program that has nothing of its own but what it prints: the kind and key of each.
cat >"$scratch/registered.cpp" <<'TEXT'
#include <hoplaunch/configDB.h>
#include <hoplaunch/configRef.h>
#include <hoplaunch/threading.h>
#include <hoplaunch/trace.h>
#include <hoplaunch/uri.h>

#include <iostream>

int main() {
  ThreadData::instance(false);
  URI_SCHEME.value(true);
  const configDB database(RT_READ);
  for (const auto& [name, item] : database.pointer()->map()) std::cout << "item " << name << '\n';
  for (const auto& [name, flag] : traceFlag::allFlags()) std::cout << "flag " << name << '\n';
}
TEXT
# register WHO OBJECT...: lists in $scratch/WHO what a program of these registers.
register() {
  g++ -std=c++20 -I"$folder/include" -o "$scratch/registered" "$scratch/registered.cpp" \
    "${@:2}" "$folder/libhoplaunch.a" && "$scratch/registered" >"$scratch/$1"
}
register library || exit 1
register launcher "$folder"/CMakeFiles/hoplaunch_driver.dir/tools/*.o \
  "$folder/libhoplaunch_log.a" || exit 1
# registered WHO KIND
registered() { sed -n "s/^$2 //p" "$scratch/$1" | LC_ALL=C sort; }
for kind in item flag; do
  check "the ${kind}s of the library" \
    diff <(registered library "$kind") <(rows "$kind.*	library	")
  check "the ${kind}s of the launcher" diff <(registered launcher "$kind") <(rows "$kind	")
done

# is_used KEY KIND: what hopexplain says of an option with this key.
is_used() {
  "$folder/hopexplain" -format=json "-$1=1" vnc://h/ 2>"$scratch/traces" >"$scratch/json"
  grep -q "\"use\": \"$2\"" "$scratch/json"
}
while IFS=$'\t' read -r kind key _; do
  check "the $kind $key" is_used "$key" "$kind"
done < <(grep -v '^#' docs/items.tsv)
no_more() { ! is_used unknown item && ! is_used unknown flag && ! is_used unknown launch; }
check 'a key that is not in the list' no_more

# keys_of FILE: those that a page or a completion has.
keys_of() {
  case $1 in
    *.1) sed -n 's/^\.It Fl \([^ ]*\) Ns = Ns.*/\1/p' "$1" | grep -v '^0$' ;;
    *) sed -n '/list of docs/,/end of list/p' "$1" | grep -oE -- "-[A-Za-z_]+=" | tr -d '=-' ;;
  esac | LC_ALL=C sort -u
}
for file in man/hoplaunch.1 completions/hoplaunch.bash completions/_hoplaunch completions/hoplaunch.fish; do
  check "$file" diff <(rows '(launch|item|flag)') <(keys_of "$file")
done
# What is there before main.
for key in $(rows '(item|flag)	'); do
  check "$key in docs/life_of_a_process.md" grep -qF "\`$key\`" docs/life_of_a_process.md
done
# The README names the items that its example needs, and leaves the list to the page.
check 'README.md' grep -q 'hoplaunch(1) lists options, items and flags' README.md
closing_line
