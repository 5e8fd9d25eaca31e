#include "link.h"

#include <algorithm>
#include <string_view>

#include "characters.h"
#include "credentials.h"
#include "percent.h"
#include "piece.h"

namespace hopopen {

namespace {

constexpr std::size_t LONGEST_LINK = 8192;
constexpr std::uint32_t HIGHEST_PORT = 65535;

verdict at(code why, std::size_t position, const char* message) {
  return refusal{why, message, position};
}

verdict syntax(std::size_t position, const char* message) {
  return at(code::SYNTAX, position, message);
}

// --- The text --------------------------------------------------------------

verdict checkLength(std::string_view text) {
  if (text.empty()) {
    return syntax(0, "The link is empty. Copy it again.");
  }
  if (text.size() > LONGEST_LINK) {
    return syntax(LONGEST_LINK, "The link is longer than 8192 characters. Ask for a shorter one.");
  }
  return {};
}

verdict checkBytes(std::string_view text) {
  bool inFragment = false;
  for (std::size_t i = 0; i < text.size(); i++) {
    if (!isOfURI(text[i])) {
      return syntax(i, "The link has a character that links cannot have. Copy it again.");
    }
    if (text[i] == '%') {
      for (std::size_t digit = i + 1; digit <= i + 2; digit++) {
        if (digit >= text.size() || !isHexDigit(text[digit])) {
          return syntax(std::min(digit, text.size()),
                        "A \"%\" in the link is not followed by two hexadecimal digits. Check the "
                        "link.");
        }
      }
    }
    if (text[i] == '#') {
      if (inFragment) {
        return syntax(i, "The link has a second \"#\". Check the link.");
      }
      inFragment = true;
    }
  }
  return {};
}

// Where the authority is, if the text has one: after the first colon and two slashes.
piece authorityOf(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos || text.substr(colon, 3) != "://") {
    return {text.substr(text.size()), text.size()};
  }
  return piece{text, 0}.part(colon + 3).takeUntil("/?#");
}

// Brackets are for an IPv6 address, right where the host begins.
verdict checkBrackets(std::string_view text) {
  constexpr const char* MISPLACED =
      "The link has a bracket that is not around an IPv6 address. Check the link.";
  const piece authority = authorityOf(text);
  const std::size_t at = authority.text.rfind('@');
  const std::size_t host = authority.start + (at == std::string_view::npos ? 0 : at + 1);
  const std::size_t open = text.find_first_of("[]");
  if (open == std::string_view::npos) {
    return {};
  }
  if (text[open] != '[' || open != host || open >= authority.end()) {
    return syntax(open, MISPLACED);
  }
  const std::size_t close = std::min(text.find_first_of("[]", open + 1), text.size());
  if (close >= authority.end()) {
    return syntax(authority.end(), R"(The link has a "[" without its "]". Check the link.)");
  }
  if (text[close] == '[') {
    return syntax(close, MISPLACED);
  }
  const std::size_t next = close + 1;
  if (next < authority.end() && text[next] != ':') {
    return syntax(next, "Only a port may follow the \"]\" of an address. Check the link.");
  }
  const std::size_t more = text.find_first_of("[]", next);
  return more == std::string_view::npos ? verdict() : syntax(more, MISPLACED);
}

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
      return syntax(end + i, NO_SCHEME);
    }
  }
  into = lower(text.substr(0, end));
  return {};
}

// --- The authority ---------------------------------------------------------

verdict readUser(const piece& encoded, link& into) {
  const std::string user = decode(encoded.text);
  if (const auto fault = faultOfUser(user)) {
    return at(code::USER, origin(encoded, *fault), BAD_USER);
  }
  if (!user.empty()) {
    into.user = user;
  }
  return {};
}

verdict readPassword(const piece& encoded, link& into) {
  const std::string password = decode(encoded.text);
  if (const auto fault = faultOfPassword(password)) {
    return at(code::USER, origin(encoded, *fault), BAD_PASSWORD);
  }
  if (!password.empty()) {
    into.password = password;
  }
  return {};
}

// [user] [";" parameters] [":" password], the parameters for ssh alone.
verdict readUserInformation(piece text, link& into) {
  piece name = text.takeUntil(":");
  const piece parameters = name;
  const piece user = into.scheme == "ssh" ? name.takeUntil(";") : name;
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
    return at(code::HOST, fault->position, fault->message);
  }
  into.machine = machine;
  return {};
}

verdict readPort(const piece& text, link& into) {
  constexpr const char* BAD_PORT =
      "The port is not a number from 1 to 65535 without leading zeros. Check the link.";
  std::uint32_t port = 0;
  if (text.text.empty()) {
    return {};
  }
  for (std::size_t i = 0; i < text.text.size(); i++) {
    if (!isDigit(text.text[i])) {
      return at(code::PORT, text.start + i, BAD_PORT);
    }
    port = std::min(port * 10 + static_cast<std::uint32_t>(text.text[i] - '0'), HIGHEST_PORT + 1);
  }
  if (text.text.front() == '0' || port > HIGHEST_PORT) {
    return at(code::PORT, text.start, BAD_PORT);
  }
  into.port = static_cast<std::uint16_t>(port);
  into.portPosition = text.start;
  return {};
}

verdict readAuthority(piece text, link& into) {
  const std::size_t mark = text.text.find('@');
  if (mark != std::string_view::npos) {
    const std::size_t second = text.text.find('@', mark + 1);
    if (second != std::string_view::npos) {
      return syntax(text.start + second, "The link has a second \"@\". Check the link.");
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
  return colon == std::string_view::npos ? verdict() : readPort(text.part(colon + 1), into);
}

verdict checkPath(const piece& path) {
  if (path.text.size() > 1) {
    return at(code::PATH, path.start + 1,
              "The link names something on the machine, not the machine alone. Ask for a link "
              "that ends after the host and port.");
  }
  return {};
}

}  // namespace

verdict readScheme(const std::string& text, link& into) {
  into.text = text;
  for (const auto& check : {checkLength, checkBytes, checkBrackets}) {
    if (auto fault = check(text)) {
      return fault;
    }
  }
  return readSchemeName(text, into.scheme);
}

verdict readRest(link& into) {
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
    if (auto fault = readParameters(query.part(1), "&", code::SYNTAX, into.parameters)) {
      return fault;
    }
  }
  into.parametersKnown = true;
  into.fragment = hash != std::string_view::npos && hash + 1 < rest.text.size();
  return {};
}

}  // namespace hopopen
