# SPDX-License-Identifier: MIT
# The manual pages: their form, their lists and their examples.
# That mandoc finds no fault in them, that they name all that the programs know and nothing
# else, and that their examples print what they show.
# Arguments: [BUILD-FOLDER]
# shellcheck shell=bash source=scripts/lib.sh
set -uo pipefail
source scripts/lib.sh
need man-db mandoc python3
(($# > 0)) || build release hoplaunch hopexplain hopopen demo_viewer || exit 1
build=$(realpath "${1:-build/release}")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
pages=(man/hoplaunch.1 man/hopexplain.1 man/hopopen.1)

# Which other manuals are installed says nothing about a page.
lint() {
  mandoc -T lint "$1" 2>&1 | grep -v -e 'STYLE: referenced manual not found' \
    -e 'outdated mandoc.db' || true
}

listed_keys() { sed -n 's/^\.It Li //p' man/hopexplain.1; }
written_keys() { "$build/hopexplain" -format=json vnc://h/ | sed -n 's/^  "\([^"]*\)": .*/\1/p'; }

# What troff says of a page, which lintian looks at, too.
typeset_warnings() {
  LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 \
    man --warnings -E UTF-8 -l -Tutf8 -Z "$1" >"$scratch/page" 2>"$scratch/warnings"
  cat "$scratch/warnings"
}

# The examples as a reader sees them: each command, and below it what it prints, without
# empty lines.
examples() {
  mandoc -T ascii -O width=120 "$1" | sed 's/.\x08//g' | # no overstriking
    sed -n '/^EXAMPLES/,/^[A-Z]/s/^           //p'
}

# in_home NAME COMMAND...: runs it in a home folder of its own, where hopopen knows one
# viewer, the bundled one.
in_home() {
  local home=$scratch/homes/$1
  shift
  mkdir -p "$home/.config/hoplaunch/viewers"
  cp tests/data/demo.toml "$home/.config/hoplaunch/viewers/"
  env --chdir="$home" -u DISPLAY -u WAYLAND_DISPLAY -u XDG_CONFIG_HOME -u XDG_DATA_HOME \
    HOME="$home" XDG_CONFIG_DIRS="$scratch/none" XDG_DATA_DIRS="$scratch/none" \
    PATH="$build/viewers:$build:$PATH" "$@" 2>&1
}

# Runs the commands of a page where the bundled viewer replaces those of the
# system, and prints them with what they print.
run_examples() {
  local line
  examples "man/$1.1" | grep '^\$ ' | while read -r line; do
    printf '%s\n' "$line"
    in_home "$1" bash -c "${line#\$ }"
  done | sed "/^\$/d; s#$build/\(viewers/\)\{0,1\}#/usr/bin/#"
}

# --- The page of hopopen -------------------------------------------------------

# items FROM TO: the items of the lists between two headings.
items() { sed -n "/^\.S[hs] $1\$/,/^\.S[hs] $2\$/s/^\.It Li \([^ ]*\).*/\1/p" man/hopopen.1 | sort; }

opening_options() { "$build/hopopen" --help | sed -n 's/^  \(-.,\)\{0,1\}--\([a-z-]*\).*/\2/p' | sort; }
described_options() {
  sed -n '/^\.Ss What to do/,/^\.Ss Links/s/^\.It \(Fl h , \)\{0,1\}Fl Fl \([^ ]*\).*/\2/p' man/hopopen.1 | sort
}
codes() { sed -n 's/^      return "\(.*\)";$/\1/p' hopopen/refusal.cpp | sort; }
known_parameters() { sed -n 's/^    {"\([A-Za-z]*\)", meaning::.*/\1/p' hopopen/meaning.cpp hopopen/scheme.cpp | sort; }
definition_keys() { sed -n 's/^    {"\([a-z]*\)", &definitionReader::.*/\1/p' hopopen/definition_reader.cpp | sort; }
placeholders() { sed -n 's/^    {"\([a-z]*\)", placeholder::.*/{\1}/p' hopopen/template.cpp | sort; }

# opening_json ARGUMENT...: the object that hopopen prints.
opening_json() { in_home json "$build/hopopen" --format=json "$@" || true; }

# members [WHERE]: the names of the members of the object on standard input, or of the one
# that a Python expression finds in it.
members() { python3 -c "import json, sys; it = json.load(sys.stdin); print(*sorted(it$1), sep='\n')"; }

# names_all HEADING: the section has each word of standard input as a literal of its own.
names_all() {
  local word
  while read -r word; do
    sed -n "/^\.Ss $1\$/,/^\.S[hs]/p" man/hopopen.1 | grep -qE "^\.(Ql|Li|It Li) $word( |\$)" ||
      printf 'not there: %s\n' "$word"
  done
}
names_members() { opening_json "${@:3}" | members "$2" | names_all "$1"; }

# refused CODE: a command line that is refused with this code.
refused() {
  local where=refused_$1
  case $1 in
    syntax) in_home "$where" hopopen '' ;;
    scheme) in_home "$where" hopopen ftp://h ;;
    user) in_home "$where" hopopen vnc://-@h ;;
    host) in_home "$where" hopopen vnc://- ;;
    port) in_home "$where" hopopen vnc://h:0 ;;
    path) in_home "$where" hopopen vnc://h/x ;;
    restriction) in_home "$where" hopopen 'vnc://h?IdHash=1' ;;
    choice) in_home "$where" hopopen --viewer=none vnc://h ;;
    viewer) in_home "$where" env PATH= "$build/hopopen" vnc://h ;;
    tunnel)
      mkdir -p "$scratch/homes/$where/.config/hoplaunch/viewers"
      printf '[host."h"]\nthrough = "gate"\n' >"$scratch/homes/$where/.config/hoplaunch/hopopen.toml"
      sed '/^rank/i tunnelled = ["{socket}"]' tests/data/demo.toml \
        >"$scratch/homes/$where/.config/hoplaunch/viewers/sockets.toml"
      in_home "$where" env -u XDG_RUNTIME_DIR "$build/hopopen" --viewer=sockets vnc://h
      ;;
    start)
      mkdir -p "$scratch/homes/$where"
      printf 'no program' >"$scratch/homes/$where/demo_viewer"
      chmod +x "$scratch/homes/$where/demo_viewer"
      in_home "$where" env PATH="$scratch/homes/$where" "$build/hopopen" vnc://h
      ;;
    settings)
      mkdir -p "$scratch/homes/$where/.config/hoplaunch"
      printf 'use = 1' >"$scratch/homes/$where/.config/hoplaunch/hopopen.toml"
      in_home "$where" hopopen vnc://h
      ;;
  esac
}

# has_status CODE STATUS
has_status() {
  local said status=0
  said=$(refused "$1") || status=$?
  if [[ $status != "$2" || $said != 'hopopen: '*" ($1)" ]]; then
    printf '%d: %s\n' "$status" "$said"
  fi
}

for page in "${pages[@]}"; do
  name=$(basename "$page" .1)
  check "$page: lint" silent lint "$page"
  check "$page: typeset" silent typeset_warnings "$page"
  check "$page: there are examples" silent grep -q '^\$ '"$name" <(examples "$page")
  check "$page: the examples" silent diff <(examples "$page") <(run_examples "$name")
done
check 'the keys of JSON' silent diff <(written_keys) <(listed_keys)
for status in 0 255 'that of the viewer'; do
  check "the status $status" silent grep -q "^\.It $status\$" man/hoplaunch.1
done
for status in 0 1 2 255; do
  check "the status $status" silent grep -q "^\.It $status\$" man/hopexplain.1
done
for option in help version; do
  check "the option --$option" silent grep -q "^\.It Fl Fl $option\$" man/hopexplain.1
  check "$option" silent grep -q . <("$build/hopexplain" "--$option")
done
check 'the format' silent grep -q '^\.It Fl format Ns' man/hopexplain.1

check 'hopopen: the options' silent diff <(opening_options) <(described_options)
check 'hopopen: the codes' silent diff <(codes) <(items DIAGNOSTICS 'SEE ALSO')
while read -r code status; do
  check "hopopen: the code $code" silent has_status "$code" "$status"
done < <(sed -n 's/^\.It Li \([a-z]*\) Ta \([0-9]\) Ta .*/\1 \2/p' man/hopopen.1)
for status in 0 1 2 3 4 'that of the viewer'; do
  check "hopopen: the status $status" silent grep -q "^\.It $status\$" man/hopopen.1
done
check 'hopopen: the parameters' silent diff <(known_parameters) \
  <(items Parameters 'Which viewer opens a link')
check 'hopopen: the keys of definitions' silent diff <(definition_keys) <(items Keys Placeholders)
check 'hopopen: the placeholders' silent diff <(placeholders) <(items Placeholders SETTINGS)
check 'hopopen: the keys of JSON' silent diff <(opening_json --dry-run vnc://h | members '') \
  <(items 'Of a dry run' 'Of the list')
check 'hopopen: JSON of parameters' silent names_members 'Of a dry run' '["parameters"][0]' --dry-run 'vnc://h?x'
check 'hopopen: JSON of the viewer' silent names_members 'Of a dry run' '["viewer"]' --dry-run vnc://h
check 'hopopen: JSON of refusals' silent names_members 'Of a dry run' '["refusal"]' --dry-run vnc://-
check 'hopopen: JSON of the list' silent names_members 'Of the list' '' --list
check 'hopopen: JSON of a viewer' silent names_members 'Of the list' '["viewers"][0]' --list
check 'hopopen: JSON of the check' silent names_members 'Of the check' '' --check
mkdir -p "$scratch/homes/json/.config/hoplaunch"
printf 'use = 1' >"$scratch/homes/json/.config/hoplaunch/hopopen.toml"
check 'hopopen: JSON of a line of the check' silent names_members 'Of the check' '["checks"][0]' --check
# Without an entry, neither its program nor its cache is looked at.
checked() {
  opening_json --check |
    python3 -c 'import json, sys; print(*(one["name"].split()[0] for one in json.load(sys.stdin)["checks"]), sep="\n")'
  printf 'tryexec\ncache\n'
}
check 'hopopen: what is checked' silent diff <(checked | sort -u) <(items CHECK Places | sort -u)
check 'hopopen: JSON of a fault' silent names_members 'Of the check' '["faults"][0]' --check

closing_line
