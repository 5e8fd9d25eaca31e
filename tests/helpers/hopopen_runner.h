// SPDX-License-Identifier: MIT
// Runs the built hopopen on a machine of its own.  The machine has its own home, folders of
// data and settings, and programs.  It has no desktop unless a test gives it one.
//
// Everything is below one new folder: "home", "config" and "data" are the user's (HOME,
// XDG_CONFIG_HOME and XDG_DATA_HOME), "etc" and "share" the administrators' (XDG_CONFIG_DIRS
// and XDG_DATA_DIRS), "bin" is PATH, and the program runs in "work".  Files are named by
// their paths below that folder.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "json.h"
#include "launcher_runner.h"

namespace door {

namespace fs = std::filesystem;
using launcher::Recording;
using launcher::Strings;

/// Variables of the environment; those without a value are removed.
using Variables = std::map<std::string, std::optional<std::string>>;

/// One command line of hopopen.
struct Call {
  Strings arguments;
  Variables variables = {};               // in place of the usual ones
  Strings further = {};                   // "NAME=VALUE", after all other variables
  bool terminal = false;                  // whether standard error is a terminal
  Strings under = {};                     // a program, and its arguments, that runs hopopen
  std::function<void()> prepare = [] {};  // runs in the child before hopopen
};

/// The result of a call.
struct Outcome {
  int status = -1;  // the exit status, or 1000 and the signal
  std::string out;
  std::string err;
  std::optional<Recording> viewer;  // or another recording program that was started last
  pid_t pid = 0;
  double seconds = 0;  // until the started process ended
};

/// The shortest definition of a viewer for vnc.
inline const char* const PLAIN =
    "name = \"Plain\"\n"
    "schemes = [\"vnc\"]\n"
    "programs = [\"plain\"]\n"
    "arguments = [\"{host}\"]\n";

/// True if each byte is printable ASCII or a line feed.
bool isPlain(std::string_view text);

class Machine {
 public:
  Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  ~Machine();

  std::string path(const std::string& name) const;
  std::string read(const std::string& name) const;
  bool has(const std::string& name) const;

  void write(const std::string& name, const std::string& text) const;
  /// The path of the definition NAME below a folder.
  static std::string definition(const std::string& name, const std::string& folder = "share");
  void define(const std::string& name, const std::string& text,
              const std::string& folder = "share") const;
  /// The path of the settings below a folder.
  static std::string settings(const std::string& folder = "config");
  void set(const std::string& text, const std::string& folder = "config") const;

  /// A program that records what it gets and ends with status 42.
  void program(const std::string& name, const std::string& folder = "bin") const;
  /// A program that is a shell script.
  void script(const std::string& name, const std::string& text,
              const std::string& folder = "bin") const;
  /// `PLAIN`, with its program.
  void plain() const;
  /// What the package brings for these schemes: a hopopen, its desktop entry, and the cache
  /// that names it, all in "share" and "bin".
  void registered(const Strings& schemes = {"vnc"}) const;

  Variables variables() const;

  Outcome call(const Call& wanted) const;
  Outcome run(const Strings& arguments, const Variables& changed = {}) const;

  /// The JSON that a dry run with these arguments prints.
  Json dry(Strings arguments, const Variables& changed = {}) const;
  /// The JSON that hopopen prints with these arguments, which ask for it.
  Json json(const Strings& arguments, const Variables& changed = {}) const;
  /// The code of the refusal that a dry run prints, or the name of the viewer.
  std::string comesOf(const Strings& arguments, const Variables& changed = {}) const;
  /// The arguments that the viewer gets from a launch that works.
  Strings launch(const Strings& arguments, const Variables& changed = {}) const;

  /// Waits for all processes that hopopen left.
  static void settle();

 private:
  pid_t start(const Call& wanted, int& screen) const;
  [[noreturn]] void become(Strings& words, Strings& texts,
                           const std::function<void()>& prepare) const;

  fs::path m_root;
};

}  // namespace door
