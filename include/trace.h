// SPDX-License-Identifier: MIT
// Trace flags: named switches for diagnostic output.
//
// A module declares its flag as a static object and tests it before it writes a
// trace line.  Flags enter themselves into one registry by name, so that a
// command line can switch any of them on.  The registry does not own the flags
// and never forgets one, so a flag lives as long as the process.
//
// To write a trace line: test the flag; take `CS_LOGOUT`; write to
// `traceFlag::out()` the `Thread::threadId()`, the message and an end of line.
//
// Flags may be created and used before `main`, in a forked child and at exit.
// The registry is not locked: flags are for one thread of a process only.  A shared object
// with a flag of its own is never unloaded, and a process has one copy of the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#pragma GCC visibility push(default)

/// A named, process-wide switch with a level; 0 is off.
class traceFlag {
 public:
  /// Registers a flag under `name` with a level to start from.  A name that is
  /// taken gets "-1", "-2" and so on after it, the first that is free.  An empty
  /// name is not registered.
  traceFlag(const std::string& name, int level);
  traceFlag(const traceFlag&) = delete;
  traceFlag& operator=(const traceFlag&) = delete;
  virtual ~traceFlag() = default;

  static void* operator new(std::size_t) = delete;
  static void* operator new[](std::size_t) = delete;

  /// True when the flag is on.
  operator bool() const { return m_level != 0; }
  /// The same as a named operation.
  bool active() const { return m_level != 0; }
  /// The level; modules may grade their output by it.
  std::uint32_t level() const { return m_level; }
  /// The name under which the flag is registered.
  const std::string& name() const { return m_name; }

  /// Sets the level of the flag `name`, compared case-sensitively.  Returns
  /// whether there is one.
  static bool set(const std::string& name, unsigned int value);
  /// The level of the flag `name` as a signed number, -1 when there is none.
  static int level(const std::string& name);
  /// True when the flag `name` exists and is on.
  static bool active(const std::string& name);
  /// Every registered flag with its name, in byte order of the names.
  static std::vector<std::pair<std::string, traceFlag*>> allFlags();
  /// The stream that trace lines go to: standard error.
  static std::ostream& out();

 private:
  std::string registerName(const std::string& name);

  const std::string m_name;
  std::uint32_t m_level;

  static std::ostream* c_output;
};

#pragma GCC visibility pop
