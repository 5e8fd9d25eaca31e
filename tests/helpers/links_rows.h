// Reads links.txt, which says what comes of links.
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

/// One link of links.txt, whose head tells the form.
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

/// The text with "\xHH" and "\{TEXT*N}" replaced by what they mean.
std::string unescaped(std::string_view text);

/// The words of a line, without their quotes and escapes.
Strings words(std::string_view line);

/// All rows of the file.  A line that makes no sense makes its row, or a row of its own,
/// a broken one.
std::vector<Row> readRows(const std::string& file);

}  // namespace links
