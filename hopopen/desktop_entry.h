// SPDX-License-Identifier: MIT
// A desktop entry, as far as opening links goes: whether a desktop takes it, what it starts,
// and for which schemes it offers itself.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace hopopen {

struct desktopEntry {
  std::string fault;                 ///< why no desktop starts it for a link; empty if it would
  bool hidden = false;               ///< counts as not there
  std::string tryExec;               ///< must be there, or else the entry does not count
  std::vector<std::string> command;  ///< the words of Exec, "%u" and the like included
  std::vector<std::string> schemes;  ///< those of MimeType

  /// True when the program, or a word that it is given, is hopopen.
  bool startsHopopen() const;
};

/// Reads a desktop entry.  It is valid when its first group is "Desktop Entry", with the
/// Type "Application", a Name, and an Exec that has "%u" or "%U" and is quoted well.
desktopEntry readDesktopEntry(std::string_view text);

}  // namespace hopopen
