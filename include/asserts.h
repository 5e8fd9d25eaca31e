// SPDX-License-Identifier: MIT
// What a failed assertion reports.  The assertion itself is in assertion.h.
#pragma once

#include <iosfwd>
#include <string>

#include "assertion.h"  // IWYU pragma: export
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

#pragma GCC visibility pop
