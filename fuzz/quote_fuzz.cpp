// SPDX-License-Identifier: MIT
// Quoting, for every text:
//
// - The result is printable ASCII, so it shows on one line.
// - It reads back: it is in double quotes, and undoing its escapes gives the text.
// - Texts are quoted byte by byte: the quoted whole is that of its two halves.
// - A sequence is written as "{ ", its quoted strings with a blank after each, "}".

#include <sstream>
#include <vector>

#include "conversion.h"
#include "fuzz.h"

namespace {

// Undoes the escapes between the double quotes.
std::string unquote(std::string_view quoted) {
  check(quoted.size() >= 2 && quoted.front() == '"' && quoted.back() == '"',
        "a quoted text is in double quotes", quoted);
  std::string result;
  for (std::size_t i = 1; i + 1 < quoted.size(); i++) {
    check(quoted[i] != '"', "a double quote in the text is escaped", quoted);
    if (quoted[i] != '\\') {
      result += quoted[i];
      continue;
    }
    i++;
    constexpr std::string_view letters = "nrt\"\\";
    constexpr std::string_view meanings = "\n\r\t\"\\";
    const std::size_t letter = letters.find(quoted[i]);
    if (letter != letters.npos) {
      result += meanings[letter];
      continue;
    }
    const std::string_view octal = quoted.substr(i, 3);
    check(octal.size() == 3 && only(octal, "01234567") && octal.front() <= '3',
          "any other escape has three octal digits", quoted);
    result += static_cast<char>(64 * (octal[0] - '0') + 8 * (octal[1] - '0') + octal[2] - '0');
    i += 2;
  }
  return result;
}

std::string inside(const std::string& quoted) {
  return quoted.substr(1, quoted.size() - 2);
}

}  // namespace

void fuzz(std::string_view input) {
  const std::string text(input);
  const std::string quoted = quote(text);
  check(printable(quoted), "a quoted text is printable", quoted);
  checkSame(unquote(quoted), text, "a quoted text reads back", quoted);

  const std::vector<std::string> halves = {text.substr(0, text.size() / 2),
                                           text.substr(text.size() / 2)};
  const std::string first = quote(halves[0]);
  const std::string second = quote(halves[1]);
  checkSame(quoted, '"' + inside(first) + inside(second) + '"', "quoting is done byte by byte");

  std::ostringstream out;
  out << halves;
  checkSame(out.str(), "{ " + first + ' ' + second + " }", "a sequence is written quoted");
}
