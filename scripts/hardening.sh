#!/usr/bin/env bash
# Looks into the built programs for what hardens them (see cmake/Options.cmake).
#   scripts/hardening.sh [BUILD-FOLDER]
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
build=${1:-build/release}

passed=0
failed=0
# check WHAT PATTERN TEXT: the text has a line that the pattern matches.
check() {
  if grep -qE -- "$2" <<<"$3"; then
    passed=$((passed + 1))
  else
    printf 'FAILED: %s\n' "$1"
    failed=$((failed + 1))
  fi
}

for program in hoplaunch hopexplain hopopen; do
  file=$build/$program
  header=$(readelf --wide --file-header "$file")
  segments=$(readelf --wide --program-headers "$file")
  dynamic=$(readelf --wide --dynamic "$file")
  check "$program is position-independent" 'Type: +DYN' "$header"
  check "$program is a program, not a library" 'FLAGS_1.* PIE' "$dynamic"
  check "$program has its tables read-only" GNU_RELRO "$segments"
  check "$program has all its calls bound before main" 'FLAGS.* BIND_NOW' "$dynamic"
  check "$program has no stack that could be executed" 'GNU_STACK.* RW ' "$segments"
  check "$program has no memory both writable and executable" '^0$' \
    "$(grep -cE '^ +LOAD.* RWE ' <<<"$segments")"
done
# A linked program may have these for the sake of the C library alone.
calls=$(readelf --wide --syms "$build/libhoplaunch.a" | grep ' UND ')
check 'the library notices a broken stack' ' __stack_chk_fail' "$calls"
# Only calls whose sizes the compiler cannot prove are replaced.
check 'the library calls what checks sizes' ' __syslog_chk' "$calls"

printf '%d passed, %d failed\n' "$passed" "$failed"
((failed == 0))
