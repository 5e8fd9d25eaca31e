#!/bin/sh
# SPDX-License-Identifier: MIT
# Turns the comments of a header into those that doxygen reads, line for line.
#
# - The plain comment at the head is the page of the file.
# - A comment holds for every declaration below it, up to a blank line, the next comment,
#   or one that says enough by itself: a destructor, what is deleted, an override.
# - Copies that are defaulted say nothing.
# - An example after a list is no part of the list.
# - A per-cent sign before a word is one, and not a mark for doxygen.
exec awk '
  { line[NR] = $0 }
  END {
    if (line[1] ~ /SPDX/) line[1] = ""  # no part of the page
    for (i = 1 + (line[1] == ""); line[i] ~ /^\/\//; i++) sub(/^\/\//, "///", line[i])
    line[i] = "/// @file"  # in place of #pragma once
    for (; i <= NR; i++) {
      if (line[i] ~ /\(const [A-Za-z]+&[a-z ]*\) = default;$/) line[i] = ""
    }
    for (i = 2; i <= NR; i++) {
      if (comment(line[i - 1]) && !comment(line[i])) group(i)
    }
    for (i = 2; i <= NR; i++) {
      if (!comment(line[i])) list = 0
      while (comment(line[i]) && match(line[i], / %[A-Za-z]/)) {
        line[i] = substr(line[i], 1, RSTART) "\\" substr(line[i], RSTART + 1)
      }
      if (line[i] ~ /^ *\/\/\/ - /) list = 1
      if (list && line[i - 1] ~ /^ *\/\/\/$/ && line[i] ~ /^ *\/\/\/     /) example(i)
    }
    for (i = 1; i <= NR; i++) print line[i]
  }
  function comment(text) { return text ~ /^ *\/\/\/( |$)/ }
  # Makes one group of the declarations from line "first" on, if there are several.
  function group(first, last, text, depth, declarations) {
    for (last = first; line[last] !~ /^$|\/\/\/|= delete;|~[A-Za-z]|^ *using | override/; last++) {
      text = line[last]
      sub(/ *\/\/.*/, "", text)
      depth += gsub(/[{(]/, "&", text) - gsub(/[})]/, "&", text)
      if (depth == 0 && text ~ /[;}]$/) declarations++
      if (depth < 0) break
    }
    last--
    if (declarations > 1) {
      match(line[first], /^ */)
      line[first] = substr(line[first], 1, RLENGTH) "/**@{*/ " substr(line[first], RLENGTH + 1)
      line[last] = line[last] " /**@}*/"
    }
  }
  function example(first, last) {
    for (last = first; line[last + 1] ~ /^ *\/\/\/     /; last++) {}
    line[first - 1] = line[first - 1] " @code{.cpp}"
    line[last] = line[last] " @endcode"
  }
' "$1"
