# SPDX-License-Identifier: MIT
# That each file of the product includes what it uses and nothing else, its own header first.
#   scripts/check includes -- FILE...    these files
# include-what-you-use looks.  Where it is wrong, includes.imp says so, or a comment
# "IWYU pragma: keep" after the #include, or `brought_along` or `wrong` below.
# shellcheck shell=bash source=scripts/lib.sh
set -euo pipefail
source scripts/lib.sh
need git iwyu "${build_packages[@]}"

folders=(brimcore directory hopopen include tools utilities)

# The sources, and the headers that no source of the same name is looked at with.
product_files() {
  local file name
  git ls-files --cached --others --exclude-standard "${folders[@]}" | grep '\.cpp$'
  for file in $(git ls-files --cached --others --exclude-standard "${folders[@]}" | grep '\.h$'); do
    name=$(basename "$file" .h)
    if [[ ! -f "${file%.h}.cpp" ]] &&
      ! { [[ "$file" == include/* ]] && compgen -G "*/$name.cpp" >/dev/null; }; then
      echo "$file"
    fi
  done
}

# What a file says about another library's types without naming them, such as the types of
# iterators in a loop: the header of the container brings it.
brought_along='^(operator.*|_.*|.*<>::.*|add_const|allocator|basic_(istream|ostream)|char_traits|common_comparison_category_t|conditional_t|copy|default_delete|equal|initializer_list|is_lt|max|partial_ordering|strong_ordering|tuple_element)$'

# What it does not see, the priorities of startup.h in attributes, and what it sees in
# templates of others.
wrong=(
  'startup.h"'
  '/utilities/ascii.h"'
  'include/lasting.h: remove #include <concepts>'
  'utilities/demangler.h: add #include <iterator>'
  'hopopen/catalog_file.cpp: add #include <variant>'
  'hopopen/definition_reader.cpp: add #include <variant>'
  'hopopen/options.cpp: add #include <stdexcept>'
)

# Findings of include-what-you-use as lines "FILE: add #include <X>  // for Y".
findings() {
  local language=()
  [[ "$1" == *.h ]] && language=(-x c++)
  include-what-you-use "${language[@]}" -std=c++20 -I include -I tools \
    -D HOPLAUNCH_VERSION='""' -D HOPOPEN_VERSION='""' -Xiwyu --no_fwd_decls -Xiwyu --cxx17ns \
    -Xiwyu --max_line_length=1000 -Xiwyu --mapping_file=scripts/checks/includes.imp "$1" 2>&1 |
    awk -v brought="$brought_along" '
      / error: / { print; next }
      / should (add|remove) these lines:$/ { file = $1; what = $3; next }
      /^The full include-list/ || /^---$/ || /^$/ || file ~ /^\// { if (!/^$/) what = ""; next }
      what == "remove" { sub(/^- /, ""); sub(/ *\/\/.*/, ""); print file ": remove " $0 }
      what == "add" {
        uses = $0
        sub(/.*\/\/ for /, "", uses)
        count = split(uses, names, ", ")
        named = /#include "/
        for (i = 1; i <= count; i++) named = named || names[i] !~ brought
        sub(/ +\/\//, "  //")
        if (named) print file ": add " $0
      }
    '
}
export -f findings
export brought_along

# The own header of a source is the first that it includes.
own_header() {
  local file=$1 name own first
  name=$(basename "$file" .cpp)
  for own in "$name" "${name%_unx}"; do
    if compgen -G "$(dirname "$file")/$own.h" >/dev/null || [[ -f "include/$own.h" ]] ||
      [[ -f "$(dirname "$file")/../$own.h" ]]; then
      first=$(sed -n 's/^#include [<"]\([^>"]*\).*/\1/p' "$file" | head -n 1)
      if [[ "$(basename "$first")" != "$own.h" ]]; then
        echo "$file: include \"$own.h\" first"
      fi
      return
    fi
  done
}

if (($# > 0)); then
  files=("$@")
else
  mapfile -t files < <(product_files)
fi
found=$(
  # shellcheck disable=SC2016  # the inner shell expands it
  printf '%s\0' "${files[@]}" | xargs -0 -P "$(nproc)" -n 1 bash -c 'findings "$1"' findings
  for file in "${files[@]}"; do
    [[ "$file" == *.cpp ]] && own_header "$file"
  done
  true
)
found=$(sort -u <<<"$found" | grep -vF "$(printf '%s\n' "${wrong[@]}")" || true)
if [[ -n "$found" ]]; then
  printf '%s\n' "$found"
  exit 1
fi
printf '%d files include what they use\n' "${#files[@]}"
