// SPDX-License-Identifier: MIT
// Reads links.txt, which has links and their results.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "launcher_runner.h"

namespace links {

using launcher::Strings;

/// The lines of one link of links.txt.  The head of that file says the form.
struct Block {
  std::string number;   // "017", which names its test
  std::string section;  // the heading above it
  int line = 0;         // its first line in the file
  Strings lines;
};

/// What the lines of a block mean.
struct Row {
  std::string section;
  int line = 0;
  std::string link;
  Strings options;
  std::map<std::string, std::string> with;
  std::vector<std::pair<std::string, Strings>> expected;  // a key and the words after it
  std::string broken;                                     // what is wrong with the row itself
};

/// The text with "\xHH" and "\{TEXT*N}" replaced by their meanings.
std::string unescaped(std::string_view text);

/// The words of a line, with quotes and escapes resolved.
Strings words(std::string_view line);

/// All blocks of the file.
std::vector<Block> readBlocks(const std::string& file);

/// The row of a block.  A line that makes no sense breaks it.
Row readRow(const Block& block);

}  // namespace links
