// SPDX-License-Identifier: MIT
#include "scheme.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

#include "characters.h"
#include "meaning.h"
#include "parameters.h"
#include "scheme_rdp.h"
#include "scheme_rules.h"
#include "scheme_spice.h"

namespace hopopen {

namespace {

// RFC 7869, section 2.1.
constexpr std::array<ownParameter, 2> OF_VNC = {{
    {"VncUsername", meaning::USER},
    {"VncPassword", meaning::PASSWORD},
}};

constinit const schemeRules VNC{.name = "vnc", .parameters = OF_VNC};

// The IETF draft on ssh URIs.
constinit const schemeRules SSH{.name = "ssh", .userParameters = true};

// RFC 4248: a password in a link means nothing, and programs have no place for one.
constinit const schemeRules TELNET{.name = "telnet", .passwords = false};

// A socket of this machine is nothing that somebody else may point at.
constinit const schemeRules SPICE_UNIX{
    .name = "spice+unix",
    .never =
        "It leads to a socket of this computer, and such links are never opened. Ask for a "
        "link with a host and a port."};

constinit const schemeRules OTHER{};

const schemeRules* const ALL[] = {&VNC, &SSH, &RDP, &SPICE, &TELNET, &SPICE_TLS, &SPICE_UNIX};

const ownNumber* numberOf(const schemeRules& rules, std::string_view name) {
  const auto* const found =
      std::find_if(rules.numbers.data(), rules.numbers.data() + rules.numbers.size(),
                   [&](const ownNumber& one) { return sameLetters(one.name, name); });
  return found == rules.numbers.data() + rules.numbers.size() ? nullptr : found;
}

}  // namespace

const schemeRules& rulesOf(std::string_view scheme) {
  for (const schemeRules* const rules : ALL) {
    if (rules->name == scheme) {
      return *rules;
    }
  }
  return OTHER;
}

meaning meaningIn(const schemeRules& rules, const parameter& one) {
  const std::string name = one.key();
  for (const ownParameter& own : rules.parameters) {
    if (sameLetters(own.name, name)) {
      return own.what;
    }
  }
  if (one.type == 'i' && numberOf(rules, name) != nullptr) {
    return meaning::NUMBER;
  }
  const meaning usual = meaningOf(name);
  return usual == meaning::WISH && !rules.wishes ? meaning::NONE : usual;
}

bool isWithinLimits(const schemeRules& rules, const parameter& one, bool trusted) {
  const ownNumber* const limits = numberOf(rules, one.key());
  const std::string text = one.meant();
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return limits != nullptr && error == std::errc() && end == text.data() + text.size() &&
         number >= limits->least && number <= (trusted ? limits->most : limits->mostForStrangers);
}

bool isConfigurable(std::string_view name) {
  return meaningOf(name) != meaning::NONE ||
         std::any_of(std::begin(ALL), std::end(ALL),
                     [&](const schemeRules* rules) { return numberOf(*rules, name) != nullptr; });
}

}  // namespace hopopen
