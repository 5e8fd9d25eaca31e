// SPDX-License-Identifier: MIT
#include "explain_kernel.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <string_view>

#include "explain_elf.h"
#include "explain_permission.h"
#include "explain_room.h"
#include "explain_source.h"

namespace {

// The first bytes of a file, which are all that the kernel looks at to know a script.
// After the end of a shorter file there are zeros.
using fileStart = std::array<char, 256>;

struct scriptLine {
  bool okay = false;
  bool hasArgument = false;
  std::string interpreter = {};
  std::string argument = {};
};

constexpr std::string_view blanks = " \t";

// The interpreter and its argument, out of what follows "#!".  `ends` says that the text
// ends where the line or the file does.
scriptLine interpreterOf(std::string_view text, bool ends) {
  text.remove_prefix(text.find_first_not_of(blanks));
  const std::size_t blank = text.find_first_of(blanks);
  if (!ends && blank == text.npos) {
    return {};  // the name may be longer
  }
  scriptLine result{.okay = true, .interpreter = std::string(text.substr(0, blank))};
  if (blank != text.npos) {
    const std::size_t argument = std::min(text.find_first_not_of(blanks, blank), text.size());
    result.argument = text.substr(argument);
    result.hasArgument = true;
  }
  return result;
}

// What the first line of a script says, as Linux reads it.
scriptLine readScriptLine(const fileStart& start) {
  const std::string_view all(start.data(), start.size());
  const std::string_view text = all.substr(0, all.find('\0')).substr(2);
  const std::string_view line = text.substr(0, text.find('\n'));
  const bool isLine = line.size() < text.size();
  const bool isFile = !isLine && text.size() + 2 < all.size();
  if (line.find_first_not_of(blanks) == line.npos) {
    return {.okay = isFile};  // a file that ends here names the empty interpreter
  }
  if (isFile) {
    return interpreterOf(line, true);
  }
  // Blanks at the end do not count, nor does the very last byte that is looked at.
  scriptLine result = interpreterOf(line, isLine);
  const std::string_view kept = isLine ? line : line.substr(0, line.size() - 1);
  const std::size_t end = kept.find_last_not_of(blanks);
  return result.okay ? interpreterOf(kept.substr(0, end + 1), true) : result;
}

}  // namespace

int executionError(const std::string& file, const std::vector<std::string>& arguments) {
  constexpr int depthLimit = 6;  // a script, and five interpreters that are scripts
  argumentRoom room(file, arguments);
  std::string current = file;
  for (int depth = 0; depth < depthLimit; depth++) {
    const int denied = permissionError(current);
    if (denied != 0) {
      return denied;
    }
    if (!room.okay()) {
      return E2BIG;
    }
    const sourceFile source(current);
    if (!source.okay()) {
      return 0;
    }
    fileStart start = {};
    source.read(start.data(), start.size(), 0);
    if (start[0] != '#' || start[1] != '!') {
      return programError(source);
    }
    const scriptLine line = readScriptLine(start);
    if (!line.okay) {
      return ENOEXEC;
    }
    room.interpret(current, line.hasArgument ? &line.argument : nullptr, line.interpreter);
    if (!room.okay()) {
      return E2BIG;
    }
    // The kernel opens the empty name as the current folder.
    current = line.interpreter.empty() ? "." : line.interpreter;
  }
  return ELOOP;
}
