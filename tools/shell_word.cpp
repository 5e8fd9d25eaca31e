// SPDX-License-Identifier: MIT
#include "shell_word.h"

#include <algorithm>
#include <string_view>

#include "../utilities/ascii.h"
#include "conversion.h"

namespace {

// What means itself to every shell.
bool isPlain(char c) {
  return internal::isLetterOrDigit(c) ||
         std::string_view("%+,-./:=@_").find(c) != std::string_view::npos;
}

}  // namespace

std::string shellWord(const std::string& text) {
  // A word that begins with "=" is the name of a command for zsh.
  if (!text.empty() && text.front() != '=' && std::all_of(text.begin(), text.end(), isPlain)) {
    return text;
  }
  const bool printable = std::all_of(text.begin(), text.end(), internal::isPrintable);
  // The escapes of `quote` are those of $'', except for the quote that ends it.
  const std::string inner = printable ? text : quote(text).substr(1, quote(text).size() - 2);
  std::string result = printable ? "'" : "$'";
  for (const char c : inner) {
    if (c != '\'') {
      result += c;
    } else {
      result += printable ? "'\\''" : "\\'";
    }
  }
  return result + "'";
}
