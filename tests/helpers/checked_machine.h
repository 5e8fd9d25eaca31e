// SPDX-License-Identifier: MIT
// A machine on which a click on a vnc link works, for tests that break one thing and see what
// `hopopen --check` says.  It has a root folder of its own, so that /etc and /snap are its own.
#pragma once

#include <map>
#include <string>

#include "hopopen_runner.h"

namespace door {

class CheckedMachine : public Machine {
 public:
  CheckedMachine();

  /// What `hopopen --check` prints, with "@" for the folder of the machine.  Skips the test
  /// where no process may have a root of its own.
  Outcome check(
      const Strings& options = {}, const Variables& changed = {},
      const std::function<void()>& prepare = [] {}) const;

  /// The lines of the check that the same machine does not print when all is well, each with
  /// its remedy, and "gone NAME" for what is not checked any more.
  std::string told(
      const Variables& changed = {}, const std::function<void()>& prepare = [] {}) const;

  /// The path of a file that has an absolute path for hopopen.
  static std::string absolute(const std::string& path) { return "root" + path; }

 private:
  std::string m_good;
};

}  // namespace door
