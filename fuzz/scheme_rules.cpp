// SPDX-License-Identifier: MIT
#include "scheme_rules.h"

#include <algorithm>
#include <map>
#include <regex>

#include "fuzz.h"
#include "rule_texts.h"

namespace {

// What is between "rdp://" and the fragment, without one "/" at the end.
stretch bodyOf(std::string_view text) {
  const std::size_t end = std::min(text.find('#'), text.size());
  return {6, end > 6 && text[end - 1] == '/' ? end - 1 : end};
}

std::string keyOf(std::string_view name) {
  std::string result = lowered(name);
  std::replace(result.begin(), result.end(), '_', ' ');
  std::replace(result.begin(), result.end(), '+', ' ');
  return result;
}

bool isName(const std::string& name) {
  return !name.empty() && name.size() <= 64 && only(name.substr(0, 1), LETTERS) &&
         only(name, std::string(LETTERS) + std::string(DIGITS) + "_ .-+");
}

bool isNumber(std::string_view text) {
  const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
  return !digits.empty() && only(digits, DIGITS);
}

// Reads one pair.  False when it is none.
bool readPair(std::string_view text, stretch pair, ruledParameter& into) {
  const std::size_t sign = find(text, pair, "=:");
  if (sign == pair.end) {
    return false;
  }
  into.where = pair;
  into.name = decoded(cut(text, {pair.begin, sign}));
  const std::string value = decoded(cut(text, {sign + 1, pair.end}));
  if (!isName(into.name) || value.size() < 2 || value.size() > 4096 || hasControl(value) ||
      value[1] != ':') {
    return false;
  }
  into.type = value[0];
  into.value = value.substr(2);
  return into.type == 's' || into.type == 'b' || (into.type == 'i' && isNumber(into.value));
}

bool readPairs(std::string_view text, std::vector<ruledParameter>& into) {
  for (const stretch pair : split(text, bodyOf(text), '&')) {
    ruledParameter read;
    if (pair.begin == pair.end) {
      continue;
    }
    if (!readPair(text, pair, read)) {
      return false;
    }
    const auto known = std::find_if(into.begin(), into.end(), [&](const ruledParameter& one) {
      return keyOf(one.name) == keyOf(read.name);
    });
    if (known == into.end()) {
      into.push_back(read);
    } else if (known->type != read.type || known->value != read.value) {
      return false;
    }
  }
  return true;
}

// The pair of that name, if it has that type.
ruledParameter* named(std::vector<ruledParameter>& among, std::string_view key, char type) {
  for (ruledParameter& one : among) {
    if (keyOf(one.name) == key && one.type == type) {
      return &one;
    }
  }
  return nullptr;
}

std::optional<ruling> readUser(ruledLink& into) {
  ruledParameter* const user = named(into.parameters, "username", 's');
  ruledParameter* const domain = named(into.parameters, "domain", 's');
  for (const ruledParameter* const one : {user, domain}) {
    if (one == nullptr || one->value.empty()) {
      continue;
    }
    if (!isUserByRules(one->value) || (one == domain && one->value.find_first_of("\\@") != npos)) {
      return ruling{"user", one->where};
    }
  }
  if (user != nullptr && !user->value.empty()) {
    const bool both =
        domain != nullptr && !domain->value.empty() && user->value.find_first_of("\\@") == npos;
    user->taken = true;
    into.user = both ? domain->value + '\\' + user->value : user->value;
    if (both) {
      domain->taken = true;
    }
  }
  return {};
}

std::optional<ruling> readAddress(std::string_view text, ruledLink& into) {
  const ruledParameter* const found = named(into.parameters, "full address", 's');
  if (found == nullptr) {
    return ruling{"host", {text.size(), text.size()}};
  }
  const ruledParameter address = *found;
  into.parameters.erase(into.parameters.begin() + (found - into.parameters.data()));
  const std::size_t close = address.value.find(']');
  const std::size_t colon = address.value.find(':', close == npos ? 0 : close);
  if (!readDecodedHostByRules(std::string_view(address.value).substr(0, colon), into)) {
    return ruling{"host", address.where};
  }
  if (colon != npos && !readDigits(std::string_view(address.value).substr(colon + 1), into.port)) {
    return ruling{"port", address.where};
  }
  return {};
}

std::optional<ruling> readServerPort(ruledLink& into) {
  ruledParameter* const given = named(into.parameters, "server port", 'i');
  if (given == nullptr) {
    return {};
  }
  std::optional<unsigned int> port;
  if (!readDigits(meantByRules(*given), port) || (into.port && into.port != port)) {
    return ruling{"port", given->where};
  }
  given->taken = true;
  into.port = port;
  return {};
}

}  // namespace

std::string keyByRules(const ruledParameter& one) {
  return one.type == 0 ? lowered(one.name) : keyOf(one.name);
}

std::string meantByRules(const ruledParameter& one) {
  if (one.type != 'i') {
    return one.value;
  }
  const std::string result = std::regex_replace(one.value, std::regex("^(-?)0+"), "$1");
  return only(result, "-") ? "0" : result;
}

bool isPairsByRules(std::string_view text) {
  if (lowered(text.substr(0, 6)) != "rdp://") {
    return false;
  }
  const std::size_t sign = find(text, {6, text.size()}, "=/?#@:[");
  return sign < text.size() && text[sign] == '=';
}

bool pairBracketsFit(std::string_view text) {
  const auto opened = std::count(text.begin(), text.end(), '[');
  const auto closed = std::count(text.begin(), text.end(), ']');
  if (opened == 0 && closed == 0) {
    return true;
  }
  const std::size_t open = text.find('[');
  const std::size_t close = text.find(']');
  if (opened != 1 || closed != 1 || close < open) {
    return false;
  }
  for (const stretch pair : split(text, bodyOf(text), '&')) {
    const std::size_t sign = find(text, pair, "=:");
    if (pair.begin <= open && open < pair.end && sign < open) {
      const std::string key = keyOf(decoded(cut(text, {pair.begin, sign})));
      return (key == "full address" || key == "alternate full address") &&
             decoded(cut(text, {sign + 1, open})) == "s:" && close < pair.end &&
             (close + 1 == pair.end || text[close + 1] == ':');
    }
  }
  return false;
}

std::optional<ruling> readPairsByRules(std::string_view text, ruledLink& into) {
  if (!readPairs(text, into.parameters)) {
    return ruling{"syntax", {0, text.size()}};
  }
  const std::size_t hash = text.find('#');
  into.fragment = hash != npos && hash + 1 < text.size();
  const auto user = readUser(into);
  if (user) {
    return user;
  }
  const auto address = readAddress(text, into);
  return address ? address : readServerPort(into);
}

std::optional<ruling> readSpiceByRules(std::string_view text, stretch port, ruledLink& into) {
  const std::map<std::string, char> kinds = {
      {"port", 'p'}, {"tls-port", 't'}, {"tls_port", 't'}, {"tlsport", 't'}};
  const bool tls = into.scheme == "spice+tls";
  std::map<char, std::optional<unsigned int>> ports;
  ports[tls ? 't' : 'p'] = into.port;
  for (const ruledParameter& one : into.parameters) {
    const auto kind = kinds.find(lowered(one.name));
    if (kind == kinds.end()) {
      continue;
    }
    std::optional<unsigned int> given;
    auto& known = ports[kind->second];
    if (!readDigits(one.value, given) || (given && known && given != known)) {
      return ruling{"port", one.where};
    }
    known = given ? given : known;
  }
  if (tls && !ports['t']) {
    return ruling{"port", {std::min(port.begin, text.size()), text.size()}};
  }
  into.tlsPort = ports['t'];
  into.plainPortDropped = ports['t'] && ports['p'];
  into.port = into.tlsPort ? std::nullopt : std::optional(ports['p'].value_or(5900));
  for (ruledParameter& one : into.parameters) {
    const auto kind = kinds.find(lowered(one.name));
    one.taken = kind != kinds.end() && !one.value.empty() && (kind->second == 't' || !into.tlsPort);
  }
  return {};
}

std::vector<stretch> secretPairs(std::string_view text) {
  std::vector<stretch> result;
  for (const stretch pair : split(text, {6, std::min(text.find('#'), text.size())}, '&')) {
    const std::size_t sign = find(text, pair, "=:");
    if (sign + 1 < pair.end &&
        lowered(decoded(cut(text, {pair.begin, sign}))).find("password") != std::string::npos) {
      result.push_back({sign + 1, pair.end});
    }
  }
  return result;
}

bool isNumberToPassByRules(const ruledParameter& one, bool trusted) {
  struct limits {
    std::string_view name;
    int least;
    int most;
  };
  const std::string value = meantByRules(one);
  if (one.type != 'i' || value.size() > 4 || value.starts_with('-')) {
    return false;
  }
  const int largest = trusted ? 8192 : 4096;
  for (const limits& each : {limits{"desktopwidth", 200, largest},
                             {"desktopheight", 200, largest},
                             {"audiomode", 0, 2},
                             {"screen mode id", 2, trusted ? 2 : 1}}) {
    if (keyByRules(one) == each.name) {
      return std::stoi(value) >= each.least && std::stoi(value) <= each.most;
    }
  }
  return false;
}
