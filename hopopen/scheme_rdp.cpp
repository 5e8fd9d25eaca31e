// SPDX-License-Identifier: MIT
#include "scheme_rdp.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "characters.h"
#include "credentials.h"
#include "host.h"
#include "link.h"
#include "parameters.h"
#include "percent.h"
#include "piece.h"
#include "port.h"
#include "rdp_pairs.h"
#include "refusal.h"
#include "scheme_rules.h"

namespace hopopen {

namespace {

// Of all that pairs can say, what a viewer may be told beside the address and the user.
// Larger desktops are no stranger's to ask for: the window would fill the screen.
constexpr std::array<ownNumber, 4> NUMBERS = {{
    {"desktopwidth", 200, 8192, 4096},
    {"desktopheight", 200, 8192, 4096},
    {"audiomode", 0, 2, 2},
    {"screen mode id", 2, 2, 0},
}};

constexpr const char* BAD_PAIR =
    "The link has something that is not of the form \"name=s:text\" or \"name=i:number\". Check "
    "the link.";

verdict readName(const piece& encoded, std::string& into) {
  into = decode(encoded.text);
  if (into.empty()) {
    return syntaxFault(encoded.start, NO_NAME);
  }
  for (std::size_t i = 0; i < into.size(); i++) {
    const bool allowed =
        isLetter(into[i]) ||
        (i > 0 && (isWord(into[i]) || std::string_view(" .-+").find(into[i]) != std::string::npos));
    if (!allowed || i == LONGEST_PARAMETER) {
      return syntaxFault(origin(encoded, i), BAD_NAME);
    }
  }
  return {};
}

// A number is an optional "-" and digits.
std::optional<std::size_t> faultOfNumber(std::string_view text) {
  const std::size_t first = text.starts_with('-') ? 1 : 0;
  if (first == text.size()) {
    return first;
  }
  const auto* const end = std::find_if_not(text.begin() + first, text.end(), isDigit);
  return end == text.end() ? std::nullopt
                           : std::optional(static_cast<std::size_t>(end - text.begin()));
}

// Takes the type off the front of a value.
verdict readTyped(const piece& encoded, parameter& into) {
  if (auto fault = readValue(encoded, code::SYNTAX, into.value)) {
    return fault;
  }
  constexpr std::string_view types = "sib";
  for (std::size_t i = 0; i < 2; i++) {
    const bool right =
        i < into.value.size() &&
        (i == 0 ? types.find(into.value[0]) != std::string_view::npos : into.value[1] == ':');
    if (!right) {
      return syntaxFault(origin(encoded, i), BAD_PAIR);
    }
  }
  into.type = into.value[0];
  into.valuePosition = origin(encoded, 2);
  into.value.erase(0, 2);
  const auto fault = into.type == 'i' ? faultOfNumber(into.value) : std::nullopt;
  return fault ? syntaxFault(origin(encoded, 2 + *fault), BAD_PAIR) : verdict();
}

verdict readPairs(piece rest, std::vector<parameter>& into) {
  while (!rest.text.empty()) {
    const piece pair = rest.takeUntil("&");
    if (pair.text.empty()) {
      continue;
    }
    const auto parts = divide(pair);
    if (!parts) {
      return syntaxFault(pair.end(), BAD_PAIR);
    }
    parameter read{.name = {}, .value = {}, .position = pair.start};
    if (auto fault = readName(parts->name, read.name)) {
      return fault;
    }
    if (auto fault = readTyped(parts->value, read)) {
      return fault;
    }
    if (auto fault = addParameter(std::move(read), code::SYNTAX, into)) {
      return fault;
    }
  }
  return {};
}

// The pair of that name and type, or null.
parameter* find(std::vector<parameter>& among, std::string_view name, char type) {
  const auto found = std::find_if(among.begin(), among.end(), [&](const parameter& one) {
    return one.type == type && sameLetters(one.key(), name);
  });
  return found == among.end() ? nullptr : &*found;
}

// Where in the link a byte of a pair's text comes from.
std::size_t place(const link& what, const parameter& one, std::size_t index) {
  const piece pair = piece{what.text, 0}.part(one.position).takeUntil("&");
  return origin(divide(pair)->value, 2 + index);
}

verdict readUser(link& into) {
  parameter* const name = find(into.parameters, "username", 's');
  parameter* const domain = find(into.parameters, "domain", 's');
  for (const parameter* const one : {name, domain}) {
    if (one == nullptr) {
      continue;
    }
    auto fault = faultOfUser(one->value);
    if (one == domain) {
      fault = std::min(fault.value_or(std::string::npos), one->value.find_first_of("\\@"));
      fault = *fault == std::string::npos ? std::nullopt : fault;
    }
    if (fault) {
      return faultAt(code::USER, place(into, *one, *fault), BAD_USER);
    }
  }
  if (name == nullptr || name->value.empty()) {
    return {};
  }
  name->taken = true;
  into.user = name->value;
  if (domain != nullptr && !domain->value.empty() &&
      name->value.find_first_of("\\@") == std::string::npos) {
    domain->taken = true;
    into.user = domain->value + '\\' + name->value;
  }
  return {};
}

// The pair with the address, which is no parameter any more.
std::optional<parameter> takeAddress(std::vector<parameter>& from) {
  const parameter* const found = find(from, "full address", 's');
  if (found == nullptr) {
    return {};
  }
  std::optional<parameter> result(*found);
  from.erase(from.begin() + (found - from.data()));
  return result;
}

// The address is a host and a port, decoded already.
verdict readAddress(const std::optional<parameter>& address, link& into) {
  if (!address) {
    return faultAt(code::HOST, into.text.size(),
                   "The link names no host: it has no \"full address\". Check the link.");
  }
  const std::string& text = address->value;
  const std::size_t close = text.find(']');
  const std::size_t colon = text.find(':', close == std::string::npos ? 0 : close);
  const piece whole{text, 0};
  host machine;
  if (const auto fault = readHost(whole.part(0, colon), machine, coding::DECODED)) {
    return faultAt(code::HOST, place(into, *address, fault->position), fault->message);
  }
  into.machine = machine;
  const piece port = whole.part(std::min(colon, text.size() - 1) + 1);
  if (auto fault = readPort(port, into.port)) {
    fault->position = place(into, *address, *fault->position);
    return fault;
  }
  into.portPosition = place(into, *address, port.start);
  return {};
}

verdict readServerPort(link& into) {
  parameter* const given = find(into.parameters, "server port", 'i');
  if (given == nullptr) {
    return {};
  }
  const std::string digits = given->meant();
  std::optional<std::uint16_t> port;
  if (readPort({digits, 0}, port)) {
    return faultAt(code::PORT, place(into, *given, 0), BAD_PORT);
  }
  if (into.port && into.port != port) {
    return faultAt(code::PORT, place(into, *given, 0), TWO_PORTS);
  }
  if (!into.port) {
    into.portPosition = place(into, *given, 0);
  }
  given->taken = true;
  into.port = port;
  return {};
}

verdict readOlderForm(link& into) {
  const piece pairs = pairsOf(into.text);
  const std::size_t hash = into.text.find('#');
  if (auto fault = readPairs(pairs, into.parameters)) {
    return fault;
  }
  into.parametersKnown = true;
  into.fragment = hash != std::string::npos && hash + 1 < into.text.size();
  const std::optional<parameter> address = takeAddress(into.parameters);
  if (auto fault = readUser(into)) {
    return fault;
  }
  if (auto fault = readAddress(address, into)) {
    return fault;
  }
  return readServerPort(into);
}

}  // namespace

constinit const schemeRules RDP{.name = "rdp",
                                .wishes = false,
                                .numbers = NUMBERS,
                                .hasOwnForm = isMadeOfPairs,
                                .readOwnForm = readOlderForm};

}  // namespace hopopen
