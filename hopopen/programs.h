// SPDX-License-Identifier: MIT
// Finding programs in the folders of PATH.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "definition.h"

namespace hopopen {

/// A program that is there.
struct program {
  std::string name;  ///< under which it was found; its first argument
  std::string path;  ///< the file that is executed
};

/// A viewer that is there, and what is needed to start it.
struct installed {
  program viewer;                      ///< `path` is without symbolic links
  std::optional<program> terminal;     ///< what it runs in, if it needs a terminal
  std::vector<std::string> separator;  ///< what the terminal wants before a command
  std::string env;                     ///< the program that changes variables in the terminal
};

/// True when this process may execute the file at the path.
bool isExecutable(const std::string& path);

/// Looks at files, and starts nothing.
class programFinder {
 public:
  /// `path` is the value of PATH; null when it is not set, which means the folders of the
  /// system.  Empty and relative entries are skipped.
  explicit programFinder(const char* path);

  /// The first file of that name that this process may execute.
  std::optional<program> find(const std::string& name) const;

  /// The next file of that name that is another one than the first, whatever links lead there.
  std::optional<program> findOther(const std::string& name) const;

  /// The program of a viewer: its names in their order, each in all folders before the next.
  /// A file counts only if its name after all symbolic links is one of the viewer's, too: it
  /// may be another viewer, which would take the arguments for something else.
  std::optional<installed> find(const definition& viewer) const;

 private:
  std::optional<installed> findTerminal() const;
  std::optional<program> findViewer(const std::vector<std::string>& names) const;

  std::vector<std::string> m_folders;
};

}  // namespace hopopen
