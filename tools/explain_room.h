// SPDX-License-Identifier: MIT
// The room that Linux has for the strings and pointers of an execution.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// What one `execve` needs of that room: the path, the environment of this process, and
/// the arguments, each with its end.  The room is a quarter of the stack's limit, at least
/// 128 KiB and at most 6 MiB, and no string may have more than 32 pages.
class argumentRoom {
 public:
  /// REQUIRES: there is a first argument.
  argumentRoom(const std::string& path, const std::vector<std::string>& arguments);

  /// False once something did not fit.
  bool okay() const { return m_okay; }
  /// A script's interpreter, its argument if any, and the script take the place of the
  /// first argument.
  void interpret(const std::string& script, const std::string* argument,
                 const std::string& interpreter);

 private:
  void add(std::size_t length);

  bool m_okay = true;
  std::uint64_t m_limit;
  std::uint64_t m_taken = 0;
  std::uint64_t m_first;  // what the first argument needs
};
