// Reads links.txt, which has links and their results.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "launcher_runner.h"

namespace links {

using launcher::Strings;

/// One link of links.txt.  The head of that file says the form.
struct Row {
  std::string number;   // "017"
  std::string section;  // the heading above it
  int line = 0;         // its first line in the file
  std::string link;
  Strings options;
  std::map<std::string, std::string> with;
  std::vector<std::pair<std::string, Strings>> expected;  // a key and the words after it
  std::string broken;                                     // what is wrong with the row itself
};

/// The number of the row, which names its test.
std::ostream& operator<<(std::ostream& out, const Row& row);

/// The text with "\xHH" and "\{TEXT*N}" replaced by their meanings.
std::string unescaped(std::string_view text);

/// The words of a line, with quotes and escapes resolved.
Strings words(std::string_view line);

/// All rows of the file.  A line that makes no sense breaks its row, or is a broken row of
/// its own.
std::vector<Row> readRows(const std::string& file);

}  // namespace links
