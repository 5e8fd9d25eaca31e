// SPDX-License-Identifier: MIT
// Why nothing is started: a code for programs, a message for people, and the place in the
// link that is at fault.  The sentences are where the fault is found: those about a link in
// link.cpp, host.cpp and parameters.cpp, those about viewers in decide.cpp and fill.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace hopopen {

enum class code : std::uint8_t {
  SYNTAX,       ///< the text is no link
  SCHEME,       ///< no viewer is known for the scheme
  USER,         ///< a bad user name or password
  HOST,         ///< a bad host
  PORT,         ///< a bad port
  PATH,         ///< a path, which no viewer could follow
  SETTINGS,     ///< a settings file has a fault
  CHOICE,       ///< the viewer that was chosen cannot be used
  VIEWER,       ///< no viewer is installed that could be used
  RESTRICTION,  ///< the link asks for a protection that the viewer does not give
  TUNNEL,       ///< no tunnel through the ssh gateway could be made
  START         ///< the viewer could not be started
};

/// What the code is called where it is shown: "syntax" and so on.
const char* text(code what);

/// The exit status of a refusal with that code, 2 to 4.
int exitStatus(code what);

struct refusal {
  code why;
  std::string message;  ///< what was wrong and what to do, in sentences, printable ASCII
  /// The byte of the link, from 0, its length for something missing at the end; nothing
  /// where the link is not at fault.
  std::optional<std::size_t> position;
};

/// The line on standard error: "hopopen: MESSAGE (CODE)", without a line feed.
std::string refusalLine(const refusal& why);

/// Empty when all is well.
using verdict = std::optional<refusal>;

/// A refusal for that byte of the link.
verdict faultAt(code why, std::size_t position, const char* message);
verdict syntaxFault(std::size_t position, const char* message);

/// A refusal for what is not in the link.
refusal faultOutside(code why, const std::string& message);

}  // namespace hopopen
