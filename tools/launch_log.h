// SPDX-License-Identifier: MIT
// The log of a launch, which hoplaunch and hopopen share.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

/// A log that is appended to, one system call a line, so that launches side by side
/// do not tear each other's lines.  Whatever goes wrong with it stops nothing: it is
/// opened and written without waiting, so a line that would have to wait is lost, and what
/// cannot be opened at once is no log.  Its descriptor does not reach the viewer.
///
/// REQUIRES: `ignoreOutputSignals`, or a line for a pipe without a reader ends the process.
class [[gnu::visibility("hidden")]] launchLog {
 public:
  /// Opens the file, and makes it if it is missing.  With an empty path there is no log.
  explicit launchLog(const std::string& path);
  launchLog(const launchLog&) = delete;
  launchLog& operator=(const launchLog&) = delete;
  ~launchLog();

  /// True when lines are written.
  bool isOpen() const {
    return m_descriptor >= 0;
  }

  /// Writes a line of the given pieces.
  void line(std::initializer_list<std::string_view> pieces) const;

  /// Writes `text`, which ends with a line end, without taking any memory.
  void fixedLine(std::string_view text) const;

 private:
  void writeAll(std::string_view text) const;

  int m_descriptor = -1;
};
