// SPDX-License-Identifier: MIT
#include "link_reader.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "characters.h"
#include "credentials.h"
#include "host.h"
#include "link.h"
#include "link_text.h"
#include "parameters.h"
#include "percent.h"
#include "piece.h"
#include "port.h"
#include "refusal.h"
#include "scheme.h"
#include "scheme_rules.h"

namespace hopopen {

namespace {

verdict readSchemeName(std::string_view text, std::string& into) {
  constexpr const char* NO_SCHEME =
      "The link does not begin with a scheme, as in \"vnc://host\". Check the link.";
  std::size_t end = 0;
  while (end < text.size() &&
         (isLetter(text[end]) || (end > 0 && (isDigit(text[end]) || text[end] == '+' ||
                                              text[end] == '-' || text[end] == '.')))) {
    end++;
  }
  constexpr std::string_view mark = "://";
  for (std::size_t i = 0; i < mark.size(); i++) {
    if (end == 0 || end + i >= text.size() || text[end + i] != mark[i]) {
      return syntaxFault(end + i, NO_SCHEME);
    }
  }
  into = lower(text.substr(0, end));
  return {};
}

// --- The authority ---------------------------------------------------------

verdict readUser(const piece& encoded, link& into) {
  const std::string user = decode(encoded.text);
  if (const auto fault = faultOfUser(user)) {
    return faultAt(code::USER, origin(encoded, *fault), BAD_USER);
  }
  if (!user.empty()) {
    into.user = user;
  }
  return {};
}

verdict readPassword(const piece& encoded, link& into) {
  const std::string password = decode(encoded.text);
  if (const auto fault = faultOfPassword(password)) {
    return faultAt(code::USER, origin(encoded, *fault), BAD_PASSWORD);
  }
  if (!password.empty()) {
    into.password = password;
  }
  return {};
}

// [user] [";" parameters] [":" password], the parameters where the scheme has them.
verdict readUserInformation(piece text, link& into) {
  piece name = text.takeUntil(":");
  const piece parameters = name;
  const piece user = rulesOf(into.scheme).userParameters ? name.takeUntil(";") : name;
  if (auto fault = readUser(user, into)) {
    return fault;
  }
  if (user.text.size() < parameters.text.size()) {
    if (auto fault = readParameters(name, ",", code::USER, into.parameters)) {
      return fault;
    }
  }
  return readPassword(text, into);
}

verdict readMachine(const piece& text, link& into) {
  host machine;
  if (const auto fault = readHost(text, machine)) {
    return faultAt(code::HOST, fault->position, fault->message);
  }
  into.machine = machine;
  return {};
}

verdict readAuthority(piece text, link& into) {
  const std::size_t mark = text.text.find('@');
  if (mark != std::string_view::npos) {
    const std::size_t second = text.text.find('@', mark + 1);
    if (second != std::string_view::npos) {
      return syntaxFault(text.start + second, "The link has a second \"@\". Check the link.");
    }
    if (auto fault = readUserInformation(text.takeUntil("@"), into)) {
      return fault;
    }
  }
  const std::size_t close = text.text.find(']');
  const std::size_t colon = text.text.find(':', close == std::string_view::npos ? 0 : close);
  if (auto fault = readMachine(text.part(0, colon), into)) {
    return fault;
  }
  if (colon == std::string_view::npos) {
    return {};
  }
  const piece port = text.part(colon + 1);
  into.portPosition = port.start;
  return readPort(port, into.port);
}

verdict checkPath(const piece& path) {
  if (path.text.size() > 1) {
    return faultAt(code::PATH, path.start + 1,
                   "The link names something on the machine, not the machine alone. Ask for a link "
                   "that ends after the host and port.");
  }
  return {};
}

verdict readUsualForm(link& into) {
  const piece whole{into.text, 0};
  const piece authority = authorityOf(into.text);
  piece rest = whole.part(authority.end());
  if (auto fault = readAuthority(authority, into)) {
    return fault;
  }
  const piece path = rest.part(0, rest.text.find_first_of("?#"));
  if (auto fault = checkPath(path)) {
    return fault;
  }
  rest = rest.part(path.text.size());
  const std::size_t hash = rest.text.find('#');
  const piece query = rest.part(0, hash);
  if (!query.text.empty()) {
    const char* const separators = rulesOf(into.scheme).separators;
    if (auto fault = readParameters(query.part(1), separators, code::SYNTAX, into.parameters)) {
      return fault;
    }
  }
  into.parametersKnown = true;
  into.fragment = hash != std::string_view::npos && hash + 1 < rest.text.size();
  return {};
}

}  // namespace

verdict readScheme(const std::string& text, link& into) {
  into.text = text;
  if (auto fault = checkText(text)) {
    return fault;
  }
  return readSchemeName(text, into.scheme);
}

verdict readRest(link& into) {
  const schemeRules& rules = rulesOf(into.scheme);
  const bool ownForm = rules.hasOwnForm(into.text);
  if (auto fault = ownForm ? rules.readOwnForm(into) : readUsualForm(into)) {
    return fault;
  }
  return rules.settle(into);
}

}  // namespace hopopen
