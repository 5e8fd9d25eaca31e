// SPDX-License-Identifier: MIT
// What the library knows of the system that it runs in.  May be asked before `main`, in
// a forked child and at exit.
#pragma once

#include <string>

#pragma GCC visibility push(default)

/// Process-wide facts about the installation.
class SystemEnv {
 public:
  SystemEnv(const SystemEnv&) = delete;
  SystemEnv& operator=(const SystemEnv&) = delete;

  /// The one instance, created on first use and never destroyed.
  static SystemEnv& instance();

  /// The folder that the installation's files are under; empty when unknown.
  const std::string& ServerRoot() const { return m_ServerRoot; }

 private:
  SystemEnv() = default;

  std::string m_ServerRoot;
};

/// What the program says to the library about its host.
struct InterfaceFinder {
  /// The host's fully qualified domain name, from which `configRef::RootDN`
  /// builds the root of the directory.  A program may define this function
  /// itself; the library's own answer is an empty name.
  static std::string FQDN();
};

#pragma GCC visibility pop
