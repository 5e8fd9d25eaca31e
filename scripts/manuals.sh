#!/usr/bin/env bash
# The manual pages: that mandoc finds no fault in them, that they name all that the
# programs know and nothing else, and that their examples print what they show.
#   scripts/manuals.sh [BUILD-FOLDER]
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
# shellcheck source=scripts/packages.sh
source scripts/packages.sh
need mandoc
build=$(realpath "${1:-build/release}")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
pages=(man/hoplaunch.1 man/hopexplain.1)
passed=0
failed=0

# check NAME COMMAND...: the command must print nothing and succeed.
check() {
  local name=$1 said
  shift
  if said=$("$@" 2>&1) && [[ -z $said ]]; then
    passed=$((passed + 1))
  else
    printf 'FAILED: %s\n%s\n' "$name" "$said"
    failed=$((failed + 1))
  fi
}

# Which other manuals are installed says nothing about a page.
lint() {
  mandoc -T lint "$1" 2>&1 | grep -v -e 'STYLE: referenced manual not found' \
    -e 'outdated mandoc.db' || true
}

# The keys of the options that the launcher's page lists.
listed_options() { sed -n 's/^\.It Fl \([^ ]*\) Ns.*/\1/p' man/hoplaunch.1 | grep -v '^0$' | sort; }

# Those that the sources define.
known_options() {
  {
    sed -n 's/.*for (const char\* const known : {\(.*\)}).*/\1/p' tools/explain.cpp |
      grep -o '[A-Za-z]*'
    cat tools/*.cpp utilities/*.cpp utilities/unix/*.cpp brimcore/*.cpp directory/*.cpp |
      grep -oE '(config(String|Int|Array)|traceFlag>?) [A-Za-z_]+\("[A-Za-z_]+"' |
      grep -o '"[^"]*"' | tr -d '"'
  } | sort
}

listed_keys() { sed -n 's/^\.It Li //p' man/hopexplain.1; }
written_keys() { "$build/hopexplain" -format=json vnc://h/ | sed -n 's/^  "\([^"]*\)": .*/\1/p'; }

# An option that somebody knows; the name of a trace flag counts in its own case only.
is_known() {
  "$build/hopexplain" -format=json "-$1=1" vnc://h/ >"$scratch/json" 2>"$scratch/traces"
  grep -q '"use": "\(item\|flag\|launch\)"' "$scratch/json"
}

# The examples as a reader sees them: each command, and below it what it prints.
examples() {
  mandoc -T ascii -O width=120 "$1" | sed 's/.\x08//g' | # no overstriking
    sed -n '/^EXAMPLES/,/^[A-Z]/s/^           //p'
}

# Runs the commands of a page where the bundled viewer stands in for those of the
# system, and prints them with what comes of them.
run_examples() {
  local line
  mkdir "$scratch/$1"
  examples "man/$1.1" | grep '^\$ ' | while read -r line; do
    printf '%s\n' "$line"
    (cd "$scratch/$1" && PATH=$build/viewers:$build:$PATH bash -c "${line#\$ }" 2>&1)
  done | sed "s#$build/viewers/#/usr/bin/#"
}

for page in "${pages[@]}"; do
  name=$(basename "$page" .1)
  check "$page: lint" lint "$page"
  check "$page: there are examples" grep -q '^\$ '"$name" <(examples "$page")
  check "$page: the examples" diff <(examples "$page") <(run_examples "$name")
done
check 'the options' diff <(known_options) <(listed_options)
while read -r option; do
  check "the option $option" is_known "$option"
done < <(listed_options)
check 'the keys of JSON' diff <(written_keys) <(listed_keys)
for status in 0 255 'that of the viewer'; do
  check "the status $status" grep -q "^\.It $status\$" man/hoplaunch.1
done
for status in 0 1 255; do
  check "the status $status" grep -q "^\.It $status\$" man/hopexplain.1
done
check 'the format' grep -q '^\.It Fl format Ns' man/hopexplain.1

printf '%d passed, %d failed\n' "$passed" "$failed"
((failed == 0))
