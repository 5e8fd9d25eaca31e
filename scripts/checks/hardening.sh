# SPDX-License-Identifier: MIT
# What hardens the built programs (see cmake/Options.cmake).
# Arguments: [BUILD-FOLDER]
# shellcheck shell=bash source=scripts/lib.sh
set -uo pipefail
source scripts/lib.sh
need binutils
(($# > 0)) || build release hoplaunch hopexplain hopopen hoplaunch_support || exit 1
build=${1:-build/release}

for program in hoplaunch hopexplain hopopen; do
  file=$build/$program
  header=$(readelf --wide --file-header "$file")
  segments=$(readelf --wide --program-headers "$file")
  dynamic=$(readelf --wide --dynamic "$file")
  check "$program is position-independent" has_line 'Type: +DYN' "$header"
  check "$program is a program, not a library" has_line 'FLAGS_1.* PIE' "$dynamic"
  check "$program has its tables read-only" has_line GNU_RELRO "$segments"
  check "$program has all its calls bound before main" has_line 'FLAGS.* BIND_NOW' "$dynamic"
  check "$program has no stack that could be executed" has_line 'GNU_STACK.* RW ' "$segments"
  check "$program has no memory both writable and executable" has_line '^0$' \
    "$(grep -cE '^ +LOAD.* RWE ' <<<"$segments")"
done
# A linked program may have these because of the C library alone.
calls=$(readelf --wide --syms "$build/libhoplaunch.a" | grep ' UND ')
check 'the library notices a broken stack' has_line ' __stack_chk_fail' "$calls"
# Only calls whose sizes the compiler cannot prove are replaced.
check 'the library calls what checks sizes' has_line ' __syslog_chk' "$calls"

closing_line
