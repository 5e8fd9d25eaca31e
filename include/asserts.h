// Assertions.
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

#include <string>

#include "events.h"
#include "stack.h"

#pragma GCC visibility push(default)

/// A failed assertion: severity `FATAL`, all audiences, domain "assert", the
/// operation "file @ line".
class assertEvent : public eventReport {
 public:
  /// `description` is the failed condition as written, `filename` the source.
  assertEvent(const std::string& description, const char* filename, int line);
  ~assertEvent() override;
  using eventReport::codeToText;
  const char* domain() const override;
  /// "assert failure", whatever the code.
  std::string codeToText(int code) const override;
  /// The report, a line end, a stack trace and a line end.
  std::ostream& write(std::ostream& out) const override;

 private:
  stack m_stack;
};

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
