#include "shell_word.h"

#include <algorithm>

#include "conversion.h"

std::string shellWord(const std::string& text) {
  constexpr const char* plain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789%+,-./:=@_";
  // zsh takes a word that begins with "=" for the name of a command.
  if (!text.empty() && text.front() != '=' && text.find_first_not_of(plain) == std::string::npos) {
    return text;
  }
  const bool printable =
      std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
  // The escapes of `quote` are those of $'', but for the quote that ends it.
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
