#include "shown.h"

#include <algorithm>

#include "characters.h"
#include "piece.h"

namespace hopopen {

namespace {

constexpr std::string_view MASK = "***";

void appendEscaped(std::string& out, char c) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  out += "\\x";
  out += digits[byte / 16];
  out += digits[byte % 16];
}

// Appends the text, each value of a secret parameter masked: those of the query, which end
// at "&" or "#", and those before it, which end at "," and at what ends the user information.
void appendParameters(std::string& out, std::string_view text) {
  const std::size_t query = std::min(text.find_first_of("/?#"), text.size());
  std::size_t name = 0;
  for (std::size_t i = 0; i < text.size(); i++) {
    out += text[i];
    const std::string_view starts = i < query ? ";," : "/?#&;";
    if (starts.find(text[i]) != std::string_view::npos) {
      name = i + 1;
    } else if (text[i] == '=' && isSecret(decode(text.substr(name, i - name)))) {
      out += MASK;
      i = std::min(text.find_first_of(i < query ? ",:@/?#" : "&#", i + 1), text.size()) - 1;
    }
  }
}

}  // namespace

bool isSecret(std::string_view name) {
  for (const std::string_view secret : {"vncpassword", "sshpassword", "password"}) {
    if (sameLetters(name, secret)) {
      return true;
    }
  }
  return false;
}

std::string masked(std::string_view link) {
  const std::size_t scheme = link.find(':');
  std::size_t start = scheme == std::string_view::npos ? 0 : scheme + 1;
  if (link.substr(start, 2) == "//") {
    start += 2;
  }
  std::string result(link.substr(0, start));
  std::string_view rest = link.substr(start);
  const std::size_t colon = rest.find(':');
  const std::size_t end =
      std::min(rest.find_first_of("/?#", std::min(colon, rest.size())), rest.size());
  const std::size_t at = rest.substr(0, end).rfind('@');
  if (colon != std::string_view::npos && at != std::string_view::npos && colon < at) {
    appendParameters(result, rest.substr(0, colon));
    result += ':';
    result += MASK;
    rest.remove_prefix(at);
  }
  appendParameters(result, rest);
  return result;
}

std::string quoted(std::string_view text, std::size_t most) {
  std::string result = "\"";
  for (const char c : text.substr(0, most)) {
    if (isPrintable(c) && c != '"' && c != '\\') {
      result += c;
    } else {
      appendEscaped(result, c);
    }
  }
  return result + (text.size() > most ? "...\"" : "\"");
}

std::string printable(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (isPrintable(c)) {
      result += c;
    } else {
      appendEscaped(result, c);
    }
  }
  return result;
}

std::string withoutMarkup(std::string_view line) {
  std::string result;
  for (const char c : line) {
    if (c == '<' || c == '>' || c == '&') {
      appendEscaped(result, c);
    } else {
      result += c;
    }
  }
  return result;
}

}  // namespace hopopen
