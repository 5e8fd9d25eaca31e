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

// Appends the text, each value of a secret parameter masked.  Parameters begin after any of
// `starts`; a value ends at the first of `ends`.
void appendParameters(std::string& out, std::string_view text, std::string_view starts,
                      std::string_view ends) {
  std::size_t name = 0;
  for (std::size_t i = 0; i < text.size(); i++) {
    out += text[i];
    if (starts.find(text[i]) != std::string_view::npos) {
      name = i + 1;
    } else if (text[i] == '=' && isSecret(decode(text.substr(name, i - name)))) {
      const std::size_t end = std::min(text.find_first_of(ends, i + 1), text.size());
      if (end > i + 1) {
        out += MASK;
      }
      i = end - 1;
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
  const std::size_t end = std::min(link.find_first_of("/?#", start), link.size());
  std::string_view authority = link.substr(start, end - start);
  std::string result(link.substr(0, start));
  const std::size_t at = authority.rfind('@');
  const std::size_t colon = authority.find(':');
  if (at != std::string_view::npos && colon < at) {
    appendParameters(result, authority.substr(0, colon), ";,", ",");
    result += ':';
    if (colon + 1 < at) {
      result += MASK;
    }
    authority.remove_prefix(at);
  }
  appendParameters(result, authority, ";,", ",:@");
  appendParameters(result, link.substr(end), "/?#&;", "&#");
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
