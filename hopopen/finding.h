// SPDX-License-Identifier: MIT
// What a check of one thing came to.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace hopopen {

enum class state : std::uint8_t {
  OK,
  WARNING,  ///< may be meant, or may keep some clicks from working
  FAULT     ///< clicks do nothing, or not what they should
};

/// "ok", "warning" or "fault".
const char* text(state how);

/// Texts may have any bytes: they are made printable where they are shown.
struct finding {
  state how;
  std::string name;     ///< what was checked, such as "handler vnc"
  std::string place;    ///< a file, a folder or a variable
  std::string message;  ///< what is there, without a full stop
  std::string remedy;   ///< what to do, in sentences; empty if all is well
};

using findings = std::vector<finding>;

/// True when one of them is a fault.
bool hasFault(const findings& told);

/// For people: "STATE NAME: PLACE: MESSAGE" for each, and a second line with what to do.
std::string findingsAsText(const findings& told);

}  // namespace hopopen
