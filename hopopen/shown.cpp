// SPDX-License-Identifier: MIT
#include "shown.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "characters.h"
#include "percent.h"
#include "piece.h"
#include "rdp_pairs.h"

namespace hopopen {

namespace {

constexpr std::string_view MASK = "***";

void appendEscaped(std::string& out, char c) {
  const auto byte = static_cast<unsigned char>(c);
  out += "\\x";
  out += HEX_DIGITS[byte / 16];
  out += HEX_DIGITS[byte % 16];
}

// Some bytes of a link: those from `begin` to before `end`.
struct stretch {
  std::size_t begin;
  std::size_t end;
};

// Adds the value of each secret parameter in a part of the link.  Parameters begin after any
// of `starts`; a value ends at the first of `ends`.
void findValues(std::string_view link, stretch part, std::string_view starts, std::string_view ends,
                std::vector<stretch>& secrets) {
  std::size_t name = part.begin;
  for (std::size_t i = part.begin; i < part.end; i++) {
    if (starts.find(link[i]) != std::string_view::npos) {
      name = i + 1;
    } else if (link[i] == '=' && isSecret(decode(link.substr(name, i - name)))) {
      const std::size_t end = std::min(link.find_first_of(ends, i + 1), part.end);
      secrets.push_back({i + 1, end});
      i = end - 1;
    }
  }
}

// Adds what would be the password of the user information.  It is looked for after missing
// and additional slashes, too.
void findPassword(std::string_view link, std::size_t start, std::vector<stretch>& secrets) {
  const std::size_t colon = link.find(':', start);
  if (colon == std::string_view::npos) {
    return;
  }
  const std::size_t end = std::min(link.find_first_of("/?#", colon), link.size());
  const std::size_t at = link.substr(0, end).rfind('@');
  if (at != std::string_view::npos && at > colon) {
    secrets.push_back({colon + 1, at});
  }
}

// Adds the value of each typed pair whose name contains "password".
void findPairs(std::string_view link, std::vector<stretch>& secrets) {
  piece rest{link, 0};
  rest.takeUntil(":");
  rest = rest.part(2);
  while (!rest.text.empty()) {
    const piece pair = rest.takeUntil("&#");
    const auto parts = divide(pair);
    if (parts && lower(decode(parts->name.text)).find("password") != std::string::npos) {
      secrets.push_back({parts->value.start, pair.end()});
    }
  }
}

// The link with "***" for each of the stretches, or for several that overlap.
std::string without(std::string_view link, std::vector<stretch> secrets) {
  std::sort(secrets.begin(), secrets.end(),
            [](const stretch& a, const stretch& b) { return a.begin < b.begin; });
  std::string result;
  std::size_t shown = 0;  // up to here
  std::size_t last = std::string::npos;
  for (const stretch& secret : secrets) {
    if (secret.begin >= shown && secret.begin != last) {
      result += link.substr(shown, secret.begin - shown);
      result += MASK;
    }
    last = secret.begin;
    shown = std::max(shown, secret.end);
  }
  result += link.substr(shown);
  return result;
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
  std::vector<stretch> secrets;
  if (isMadeOfPairs(link)) {
    findPairs(link, secrets);
    findValues(link, {0, link.size()}, "/?#&;", "&#", secrets);
    return without(link, std::move(secrets));
  }
  const std::size_t scheme = link.find(':');
  std::size_t start = scheme == std::string_view::npos ? 0 : scheme + 1;
  if (link.substr(start, 2) == "//") {
    start += 2;
  }
  const std::size_t end = std::min(link.find_first_of("/?#", start), link.size());
  const std::size_t at = std::min(link.substr(0, end).rfind('@'), end);
  const std::size_t user = std::min(link.find(':', start), at);
  const bool spice = sameLetters(link.substr(0, std::min<std::size_t>(scheme, 5)), "spice");
  findPassword(link, start, secrets);
  findValues(link, {start, user}, ";,", ",", secrets);
  findValues(link, {user, end}, ";,", ",:@", secrets);
  findValues(link, {end, link.size()}, "/?#&;", spice ? "&;#" : "&#", secrets);
  return without(link, std::move(secrets));
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

std::string shownWord(std::string_view word) {
  return quoted(masked(word), SHORT);
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
