// SPDX-License-Identifier: MIT
// The pairs of rdp links and the queries of spice links, as strangers write them.  The first
// line of an input is the scheme; what follows is the rest of the link, with a line for each pair
// or parameter.  For every link:
//
// - It is refused exactly when it breaks a rule of scheme_rules.h or link_rules.h, with the
//   code of the first one that it breaks.
// - Otherwise a viewer with arguments for everything gets its own words, the user, the host and
//   the port, numbers within their limits, and nothing else: no word of the link begins one.
// - A machine that nobody trusts gets no whole screen and no larger desktop.
// - A link that asks for TLS never gets a plain port.
// - Passwords are not shown.

#include <algorithm>

#include "decide.h"
#include "definition_reader.h"
#include "fuzz.h"
#include "link_rules.h"
#include "rule_texts.h"
#include "scheme_rules.h"
#include "shown.h"

namespace {

using words = std::vector<std::string>;

constexpr const char* DEFINITION = R"(name = "V"
schemes = ["rdp", "spice", "spice+tls"]
programs = ["viewer"]
arguments = ["/u:{user}", "/v:{bracketed}", "/p:{port}", "/s:{tlsport}"]
stranger = ["-stranger"]
trusted = ["-trusted"]
[parameters.desktopwidth]
allow = "-?[0-9]+"
arguments = ["/w:{value}"]
[parameters.desktopheight]
allow = "-?[0-9]+"
arguments = ["/h:{value}"]
[parameters.audiomode]
allow = "-?[0-9]+"
arguments = ["/audio:{value}"]
[parameters."screen mode id"]
allow = "-?[0-9]+"
arguments = ["/f:{value}"]
[parameters.ViewOnly]
arguments = ["/look"]
[parameters.Shared]
arguments = ["/shared"]
[parameters.SecurityType]
allow = "[0-9]+"
arguments = ["/security:{value}"]
)";

hopopen::definition viewer() {
  hopopen::faults found;
  const auto result = hopopen::readDefinition("v", DEFINITION, "v.toml", found);
  check(result.has_value(), "the definition is one");
  return *result;
}

// The link of an input.
std::string linkOf(std::string_view input) {
  const auto [scheme, rest] = parts<2>(input);
  std::string result = scheme + "://" + rest;
  std::replace(result.begin(), result.end(), '\n', '&');
  return result;
}

// A word of the viewer: what it begins with, and what may follow.
bool isExpected(const std::string& word, const ruledLink& link, bool trusted) {
  if (word.starts_with("/u:") || word.starts_with("/v:")) {
    return word == "/u:" + link.user.value_or("") || word == "/v:" + link.bracketedHost();
  }
  if (word.starts_with("/p:")) {
    return !link.tlsPort && link.port && word == "/p:" + std::to_string(*link.port);
  }
  if (word.starts_with("/s:")) {
    return link.tlsPort && word == "/s:" + std::to_string(*link.tlsPort);
  }
  const std::size_t colon = word.find(':');
  const std::string number = colon == npos ? "" : word.substr(colon + 1);
  if (number.size() > 4096 || !only(number, DIGITS)) {
    return false;
  }
  if (word.starts_with("/w:") || word.starts_with("/h:")) {
    return number.size() <= 4 && std::stoi(number) >= 200 &&
           std::stoi(number) <= (trusted ? 8192 : 4096);
  }
  return word == "/audio:0" || word == "/audio:1" || word == "/audio:2" ||
         (trusted && word == "/f:2") || word == "/look" || word.starts_with("/security:") ||
         (word == "/shared" && link.scheme != "rdp");
}

void checkVector(const words& arguments, const ruledLink& link, bool trusted,
                 const std::string& text) {
  check(arguments.size() >= 3 && arguments[0] == "viewer" &&
            arguments[1] == (trusted ? "-trusted" : "-stranger"),
        "the program comes first, and its words for strangers", text);
  for (std::size_t i = 2; i < arguments.size(); i++) {
    check(isExpected(arguments[i], link, trusted), "each word is the definition's", arguments[i],
          text);
    check(std::count(arguments.begin(), arguments.end(), arguments[i]) == 1, "and comes once",
          arguments[i], text);
  }
  check(std::find(arguments.begin(), arguments.end(), "/v:" + link.bracketedHost()) !=
            arguments.end(),
        "the host is there", text);
}

bool asksForGateway(const ruledLink& link) {
  return std::any_of(link.parameters.begin(), link.parameters.end(), [](const auto& one) {
    const std::string name = keyByRules(one);
    return sameName(name, "SshHost") || sameName(name, "SshPort") || sameName(name, "SshUsername");
  });
}

void checkOpening(const std::string& text, bool trusted) {
  static const hopopen::definition ONE = viewer();
  ruledLink link;
  const auto broken = readByRules(
      text, [](const std::string& s) { return s == "rdp" || s == "spice" || s == "spice+tls"; },
      link);
  hopopen::definitions known;
  known.viewers.push_back(ONE);
  hopopen::preferences wishes;
  if (trusted && !broken) {
    hopopen::settings file;
    if (const auto host = hopopen::readTrusted(link.linkedHost())) {
      file.trust.push_back(*host);
    }
    wishes.files.push_back(file);
  }
  const hopopen::opening result = hopopen::decide(
      text, {},
      {known, wishes, [](const hopopen::definition&) {
         return std::optional<hopopen::installed>({{"viewer", "/usr/bin/viewer"}, {}, {}, {}});
       }});
  const std::string code = result.why ? hopopen::text(result.why->why) : "";
  check(!result.why || (printable(result.why->message) &&
                        (!result.why->position || *result.why->position <= text.size())),
        "a refusal is printable and at a place of the link", text);
  if (broken) {
    checkSame(code, broken->code, "the first rule that is broken decides", text);
    return;
  }
  // What may not be passed on is refused, and so is a gateway that is not one.
  check(code.empty() || code == "restriction" || code == "user" ||
            ((code == "host" || code == "port") && asksForGateway(link)),
        "what breaks no rule is opened", code, text);
  if (result.filled) {
    check(result.trusted == trusted, "a host is trusted as the settings say", text);
    checkVector(result.filled->arguments, link, trusted, text);
  }
}

// No word of a password is shown.  Its letters are made others, and what is shown stays.
void checkShown(const std::string& text) {
  std::string other = text;
  for (const stretch secret : secretsOf(text)) {
    for (std::size_t i = secret.begin; i < secret.end; i++) {
      if (only(other.substr(i, 1), LETTERS) && text.find('%') == std::string::npos &&
          lowered(text.substr(secret.begin)).find("password") == std::string::npos) {
        other[i] = 'x';
      }
    }
  }
  checkSame(hopopen::masked(other), hopopen::masked(text), "a password does not show", text);
}

}  // namespace

void fuzz(std::string_view input) {
  const std::string text = linkOf(input);
  checkOpening(text, false);
  checkOpening(text, true);
  checkShown(text);
}
