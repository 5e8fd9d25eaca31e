// SPDX-License-Identifier: MIT
#include "link_rules.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstring>

#include "fuzz.h"
#include "rule_texts.h"
#include "scheme_rules.h"

namespace {

std::string concat(std::initializer_list<std::string_view> sets) {
  std::string result;
  for (const std::string_view set : sets) {
    result += set;
  }
  return result;
}

const std::string WORD = concat({LETTERS, DIGITS, "_"});
const std::string USER = concat({WORD, ".@\\-"});
const std::string LABEL = concat({WORD, "-"});
const std::string NAME = concat({WORD, ".-"});
const std::string SCHEME = concat({LETTERS, DIGITS, "+-."});
const std::string URI = concat({LETTERS, DIGITS, "-._~", ":/?#[]@", "!$&'()*+,;=", "%"});

// --- The parts -------------------------------------------------------------

struct layout {
  std::size_t mark = npos;  // "://"
  stretch authority{};
  stretch user{};  // the user information
  bool hasUser = false;
  stretch host{};  // and port
  stretch path{};
  stretch query{};
  stretch fragment{};
};

layout layoutOf(std::string_view text) {
  layout result;
  result.mark = text.find("://");
  const std::size_t begin = result.mark == npos ? text.size() : result.mark + 3;
  const stretch all{begin, text.size()};
  result.authority = {begin, find(text, all, "/?#")};
  const std::size_t at = cut(text, result.authority).rfind('@');
  result.hasUser = at != npos;
  result.user = {begin, result.hasUser ? begin + at : begin};
  result.host = {result.hasUser ? begin + at + 1 : begin, result.authority.end};
  const std::size_t hash = find(text, all, "#");
  result.path = {result.authority.end, find(text, {result.authority.end, hash}, "?")};
  result.query = {std::min(result.path.end + 1, hash), hash};
  result.fragment = {std::min(hash + 1, text.size()), text.size()};
  return result;
}

bool bracketsFit(std::string_view text, const layout& parts) {
  if (text.find_first_of("[]") == npos) {
    return true;
  }
  const std::string_view host = cut(text, parts.host);
  const std::size_t close = host.find(']');
  return std::count(text.begin(), text.end(), '[') == 1 &&
         std::count(text.begin(), text.end(), ']') == 1 && host.starts_with('[') && close != npos &&
         (close + 1 == host.size() || host[close + 1] == ':');
}

bool escapesFit(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); i++) {
    if (text[i] == '%' && !escapeAt(text, i)) {
      return false;
    }
  }
  return true;
}

bool isSchemeName(std::string_view text) {
  return !text.empty() && only(text.substr(0, 1), LETTERS) && only(text, SCHEME);
}

// --- Hosts -----------------------------------------------------------------

bool isLabel(std::string_view text) {
  return !text.empty() && text.size() <= 63 && only(text, LABEL) && text.front() != '-' &&
         text.back() != '-';
}

bool isFourNumbers(std::string_view text) {
  const auto numbers = split(text, {0, text.size()}, '.');
  return numbers.size() == 4 && std::all_of(numbers.begin(), numbers.end(), [&](stretch part) {
           const std::string number(cut(text, part));
           return !number.empty() && number.size() <= 3 && only(number, DIGITS) &&
                  (number == "0" || number[0] != '0') && std::stoi(number) <= 255;
         });
}

bool readName(std::string_view encoded, ruledLink& into) {
  const std::string name = lowered(decoded(encoded));
  const bool dot = name.ends_with('.');
  into.host = name.substr(0, name.size() - (dot ? 1 : 0));
  const auto labels = split(into.host, {0, into.host.size()}, '.');
  for (const stretch label : labels) {
    if (!isLabel(cut(into.host, label))) {
      return false;
    }
  }
  const std::string_view last = cut(into.host, labels.back());
  const bool number = only(last, DIGITS) || (last.starts_with("0x") && only(last.substr(2), HEX));
  return into.host.size() <= 253 && (!number || (!dot && isFourNumbers(into.host)));
}

bool readAddress(std::string_view text, ruledLink& into) {
  const std::size_t percent = text.find('%');
  into.bracketed = true;
  into.host = text.substr(0, percent);
  in6_addr address;
  if (inet_pton(AF_INET6, into.host.c_str(), &address) != 1) {
    return false;
  }
  if (percent == npos) {
    return true;
  }
  const std::string_view zone = text.substr(percent);
  into.zone = zone.substr(std::min<std::size_t>(zone.size(), 3));
  return zone.starts_with("%25") && !into.zone.empty() && into.zone.size() <= 15 &&
         only(into.zone, NAME);
}

// --- Parameters ------------------------------------------------------------

bool readParameters(std::string_view text, stretch part, char separator, ruledLink& into) {
  std::string other(text);
  if (separator == '&' && lowered(into.scheme).starts_with("spice")) {
    std::replace(other.begin(), other.end(), ';', '&');
  }
  for (const stretch one : split(other, part, separator)) {
    if (one.begin == one.end) {
      continue;
    }
    const std::size_t equals = find(text, one, "=");
    const std::string name = decoded(cut(text, {one.begin, equals}));
    const std::string value = decoded(cut(text, {std::min(equals + 1, one.end), one.end}));
    if (name.empty() || name.size() > 64 || !only(name, NAME) ||
        !only(std::string_view(name).substr(0, 1), LETTERS) || value.size() > 4096 ||
        hasControl(value)) {
      return false;
    }
    const auto known =
        std::find_if(into.parameters.begin(), into.parameters.end(),
                     [&](const auto& before) { return sameName(before.name, name); });
    if (known == into.parameters.end()) {
      into.parameters.push_back({name, value, 0, false, one});
    } else if (known->value != value) {
      return false;
    }
  }
  return true;
}

// [user] [";" parameters] [":" password]
bool readUser(std::string_view text, stretch part, ruledLink& into) {
  const std::size_t colon = find(text, part, ":");
  const std::size_t end = into.scheme == "ssh" ? find(text, {part.begin, colon}, ";") : colon;
  const std::string user = decoded(cut(text, {part.begin, end}));
  const std::string password = decoded(cut(text, {std::min(colon + 1, part.end), part.end}));
  if (!user.empty()) {
    into.user = user;
  }
  if (!password.empty()) {
    into.password = password;
  }
  return (user.empty() || isUserByRules(user)) && isPasswordByRules(password) &&
         readParameters(text, {std::min(end + 1, colon), colon}, ',', into);
}

}  // namespace

bool isUserByRules(std::string_view user) {
  return !user.empty() && user.size() <= 64 && only(user.substr(0, 1), WORD) && only(user, USER);
}

bool isPasswordByRules(std::string_view password) {
  return password.size() <= 255 && !hasControl(password);
}

bool sameName(std::string_view a, std::string_view b) {
  return lowered(a) == lowered(b);
}

bool sameHost(const ruledLink& a, const ruledLink& b) {
  if (!a.bracketed || !b.bracketed) {
    return a.bracketed == b.bracketed && a.host == b.host;
  }
  in6_addr one{};
  in6_addr other{};
  inet_pton(AF_INET6, a.host.c_str(), &one);
  inet_pton(AF_INET6, b.host.c_str(), &other);
  return a.zone == b.zone && std::memcmp(&one, &other, sizeof one) == 0;
}

bool readHostByRules(std::string_view text, ruledLink& into) {
  return text.size() > 1 && text.front() == '[' && text.back() == ']'
             ? readAddress(text.substr(1, text.size() - 2), into)
             : readName(text, into);
}

bool readDecodedHostByRules(std::string_view text, ruledLink& into) {
  std::string encoded;
  for (const char c : text) {
    encoded += c == '%' ? "%25" : std::string(1, c);
  }
  return readHostByRules(encoded, into);
}

std::optional<ruling> readByRules(std::string_view text,
                                  const std::function<bool(const std::string&)>& known,
                                  ruledLink& into) {
  const layout parts = layoutOf(text);
  const ruling syntax{"syntax", {0, text.size()}};
  if (text.empty() || text.size() > 8192 || !only(text, URI) || !escapesFit(text) ||
      std::count(text.begin(), text.end(), '#') > 1 ||
      !(isPairsByRules(text) ? pairBracketsFit(text) : bracketsFit(text, parts)) ||
      parts.mark == npos || !isSchemeName(text.substr(0, parts.mark))) {
    return syntax;
  }
  into.scheme = lowered(text.substr(0, parts.mark));
  if (!known(into.scheme)) {
    return ruling{"scheme", {0, 0}};
  }
  if (isPairsByRules(text)) {
    return readPairsByRules(text, into);
  }
  const std::string_view authority = cut(text, parts.authority);
  if (std::count(authority.begin(), authority.end(), '@') > 1) {
    return ruling{"syntax", parts.authority};
  }
  if (parts.hasUser && !readUser(text, parts.user, into)) {
    return ruling{"user", parts.user};
  }
  const std::size_t close = cut(text, parts.host).find(']');
  const std::size_t colon =
      find(text, {parts.host.begin + (close == npos ? 0 : close), parts.host.end}, ":");
  if (!readHostByRules(cut(text, {parts.host.begin, colon}), into)) {
    return ruling{"host", {parts.host.begin, colon}};
  }
  const stretch port{std::min(colon + 1, parts.host.end), parts.host.end};
  if (!readDigits(cut(text, port), into.port)) {
    return ruling{"port", port};
  }
  if (parts.path.end - parts.path.begin > 1) {
    return ruling{"path", parts.path};
  }
  if (!readParameters(text, parts.query, '&', into)) {
    return ruling{"syntax", parts.query};
  }
  into.fragment = parts.fragment.begin < parts.fragment.end;
  return into.scheme.starts_with("spice") ? readSpiceByRules(text, port, into) : std::nullopt;
}

std::vector<stretch> secretsOf(std::string_view text) {
  std::vector<stretch> result;
  const std::size_t scheme = text.find(':');
  if (scheme == npos) {
    return result;
  }
  if (isPairsByRules(text)) {
    return secretPairs(text);
  }
  const std::size_t begin = scheme + (text.substr(scheme + 1, 2) == "//" ? 3 : 1);
  const std::size_t colon = text.find(':', begin);
  if (colon != npos) {
    const std::size_t at = cut(text, {colon, find(text, {colon, text.size()}, "/?#")}).rfind('@');
    if (at != npos) {
      result.push_back({colon + 1, colon + at});
    }
  }
  std::string divided(text);
  if (lowered(text).starts_with("spice")) {
    std::replace(divided.begin(), divided.end(), ';', '&');
  }
  const auto addValues = [&](stretch part, char separator) {
    for (const stretch one : split(separator == '&' ? divided : text, part, separator)) {
      const std::size_t equals = find(text, one, "=");
      const std::string name = lowered(decoded(cut(text, {one.begin, equals})));
      if (equals < one.end &&
          (name == "vncpassword" || name == "sshpassword" || name == "password")) {
        result.push_back({equals + 1, one.end});
      }
    }
  };
  const stretch beforeFragment{begin, find(text, {begin, text.size()}, "#")};
  const std::size_t query = find(text, beforeFragment, "?");
  addValues({std::min(query + 1, beforeFragment.end), beforeFragment.end}, '&');
  const stretch user = text.find("://") == scheme ? layoutOf(text).user : stretch{begin, begin};
  const std::size_t pairs = find(text, user, ":;");
  if (pairs < user.end && text[pairs] == ';') {
    addValues({pairs + 1, find(text, {pairs, user.end}, ":")}, ',');
  }
  result.erase(std::remove_if(result.begin(), result.end(),
                              [](stretch one) { return one.begin >= one.end; }),
               result.end());
  return result;
}
