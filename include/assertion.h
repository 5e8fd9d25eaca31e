// SPDX-License-Identifier: MIT
// The assertion alone.  asserts.h has what it reports.
//
// `ASSERT(condition)` checks an invariant of the program, in every build type.
// When the condition is false, a fatal `assertEvent` with the condition's text,
// the source and the line is offered to the event handlers, and the process
// aborts.  Not for bad input: that gets an error.
//
// The source is the file's path without its ending, from "../" and the top
// folder on, for example "../utilities/uri".
//
// Assertions may be made before `main`, in a forked child and at exit.
#pragma once

#pragma GCC visibility push(default)

/// Reports the failed assertion and aborts.  An ending of `filename` such as
/// ".cpp" is left out of the report.
[[noreturn]] void assertionFailed(const char* expression, const char* filename, int line);

/// Checks `condition`.
#define ASSERT(condition) \
  ((condition) ? static_cast<void>(0) : assertionFailed(#condition, __FILE__, __LINE__))

/// Checks `condition` and reports a fixed position.  The position is a stable
/// diagnostic id that support relies on: it stays when the code moves.
#define ASSERT_AT(condition, filename, line) \
  ((condition) ? static_cast<void>(0) : assertionFailed(#condition, filename, line))

#pragma GCC visibility pop
