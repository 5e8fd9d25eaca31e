// SPDX-License-Identifier: MIT
#include "refusal.h"

namespace hopopen {

const char* text(code what) {
  switch (what) {
    case code::SYNTAX:
      return "syntax";
    case code::SCHEME:
      return "scheme";
    case code::USER:
      return "user";
    case code::HOST:
      return "host";
    case code::PORT:
      return "port";
    case code::PATH:
      return "path";
    case code::SETTINGS:
      return "settings";
    case code::CHOICE:
      return "choice";
    case code::VIEWER:
      return "viewer";
    case code::RESTRICTION:
      return "restriction";
    case code::TUNNEL:
      return "tunnel";
    case code::START:
      return "start";
  }
  return "";
}

int exitStatus(code what) {
  switch (what) {
    case code::SETTINGS:
    case code::CHOICE:
      return 4;
    case code::VIEWER:
    case code::TUNNEL:
    case code::START:
      return 3;
    default:
      return 2;
  }
}

std::string refusalLine(const refusal& why) {
  return "hopopen: " + why.message + " (" + text(why.why) + ')';
}

verdict faultAt(code why, std::size_t position, const char* message) {
  return refusal{why, message, position};
}

verdict syntaxFault(std::size_t position, const char* message) {
  return faultAt(code::SYNTAX, position, message);
}

refusal faultOutside(code why, const std::string& message) {
  return {why, message, {}};
}

}  // namespace hopopen
