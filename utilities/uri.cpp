// SPDX-License-Identifier: MIT
#include "uri.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "ascii.h"
#include "assertion.h"
#include "conversion.h"
#include "html_escape.h"
#include "regexpr.h"
#include "stringcomp.h"

namespace {

const char* skipDigits(const char* p) {
  while (internal::isDigit(*p)) {
    p++;
  }
  return p;
}

// An address is cut before its last colon, where its port begins.
std::string withoutPort(const std::string& address) {
  return address.substr(0, address.rfind(':'));
}

// The forms of addresses and schemes.  An address begins with a host name, or it
// ends in a bracketed number and perhaps a port.
constexpr const char* MACHINE = "^([a-z0-9]+([-.][a-z0-9]+)*)|(\\[[0-9a-f:.]+\\])(:[0-9]+)?$";
constexpr const char* SCHEME = "^[a-z][a-z0-9+.\\-]*://";

// MACHINE matches at the beginning of an address or at its last "[", and nowhere between.
// A failing search through a long address would need quadratic time.
bool isAddress(const RegExpr& machine_RE, const std::string& address) {
  if (internal::isLetterOrDigit(address[0])) {
    return machine_RE.matchs(address);
  }
  const std::size_t bracket = address.rfind('[');
  return bracket != std::string::npos &&
         machine_RE.matchsAt(address, static_cast<unsigned int>(bracket));
}

// The place where a text leaves the form that SCHEME gives.
uriParse badScheme(const char* text) {
  if (!internal::isLetter(*text)) {
    return {US_SCHEME, 0};
  }
  const char* p = text;
  while (internal::isLetterOrDigit(*p) || (*p != '\0' && std::strchr("+.\\-", *p) != nullptr)) {
    p++;
  }
  for (const char* expected = "://"; *expected != '\0' && *p == *expected; expected++) {
    p++;
  }
  return {US_SEPARATOR, static_cast<std::size_t>(p - text)};
}

}  // namespace

// --- Styles ----------------------------------------------------------------

const char* text(argsStyle style) {
  switch (style) {
    case AS_EQUALS:
      return "equals";
    case AS_SEPARATE:
      return "separate";
  }
  return "<invalid argsStyle>";
}

argsStyle args_style(const std::string& name) {
  for (const argsStyle style : {AS_EQUALS, AS_SEPARATE}) {
    if (caseInsensitive::same(name, text(style))) {
      return style;
    }
  }
  return AS_EQUALS;
}

std::int32_t decimalInt(const char* digits) {
  std::uint32_t result = 0;  // wraps
  for (; digits != nullptr && internal::isDigit(*digits); digits++) {
    result = 10 * result + static_cast<std::uint32_t>(*digits - '0');
  }
  return static_cast<std::int32_t>(result);
}

// --- Life ------------------------------------------------------------------

URI::URI(const std::string& text) {
  m_okay = set(text);
}

// A copy has the addresses and the ticket, but no scheme and no parameters: callers
// rely on that.
URI::URI(const URI& other)
    : ticket(other.ticket), keyId(other.keyId), addresses(other.addresses), m_okay(other.m_okay) {}

URI& URI::operator=(const URI& other) {
  if (this != &other) {
    clear();
    ticket = other.ticket;
    keyId = other.keyId;
    addresses = other.addresses;
    m_okay = other.m_okay;
  }
  return *this;
}

URI::~URI() {
  clear();
}

URI& URI::operator=(const std::string& text) {
  clear();
  if (!set(text)) {
    addresses.clear();
    keyId = -1;
    ticket = ByteArray();
  }
  return *this;
}

void URI::clear() {
  if (argsList != nullptr) {
    delete[] argsList[0];  // the command; only this one may be null
    for (std::size_t i = 1; argsList[i] != nullptr; i++) {
      delete[] argsList[i];
    }
    delete[] argsList;
    argsList = nullptr;
  }
  ticketText.clear();
}

void URI::setTicket(const ByteArray& newTicket) {
  clear();
  ticket = newTicket;
}

void URI::add(const std::string& address) {
  clear();
  addresses.push_back(address);
}

void URI::add(const std::vector<std::string>& extra, int port) {
  // By number, because `extra` may be the addresses themselves and grow.
  const std::size_t count = extra.size();
  addresses.reserve(addresses.size() + count);
  for (std::size_t i = 0; i < count; i++) {
    addresses.push_back(port < 0 ? extra[i] : withoutPort(extra[i]) + ":" + int2decimal(port));
  }
}

void URI::addParam(const std::string& name, const std::string& value) {
  parameters[name] = value;
}

// --- Parsing ---------------------------------------------------------------

const char* text(uriStop stop) {
  switch (stop) {
    case US_COMPLETE:
      return "nothing more";
    case US_SCHEME:
      return "a scheme, which begins with a letter";
    case US_SEPARATOR:
      return "\"://\" after the scheme";
    case US_DELIMITER:
      return "\"/\" after the addresses";
    case US_ADDRESS:
      return "an address, which begins with a letter or digit or ends in brackets";
    case US_TICKET:
      return "a ticket in base64, whose length is a multiple of four";
    case US_PARAMETER:
      return "\"=\" after the name of a parameter";
  }
  return "<invalid uriStop>";
}

uriParse URI::parse(const std::string& wholeText) {
  // Up to the first NUL.  NOLINTNEXTLINE(readability-redundant-string-cstr)
  const std::string text = wholeText.c_str();
  const RegExpr scheme_RE(SCHEME, false);
  const RegExpr machine_RE(MACHINE, false);
  ASSERT(REGEXPR_OKAY == scheme_RE.CompileError());
  ASSERT(REGEXPR_OKAY == machine_RE.CompileError());
  // No scheme has a colon.  The whole text may be too long for a search.
  const std::size_t colon = std::min(text.find(':'), text.size());
  const RegExpr::Match schemeMatch = scheme_RE.match(text.substr(0, colon + 3));
  if (schemeMatch.length == 0 || schemeMatch.start != 0) {
    return badScheme(text.c_str());
  }
  m_scheme = text.substr(0, schemeMatch.length - std::strlen("://"));
  ticket = ByteArray();
  addresses.clear();
  const char* ptr = text.c_str() + schemeMatch.length;
  uriStop stop = parseAddresses(ptr, machine_RE);
  if (stop == US_COMPLETE) {
    const char* const digitsEnd = skipDigits(ptr);
    if (*digitsEnd == ',') {
      keyId = decimalInt(ptr);
      ptr = digitsEnd + 1;
    } else {
      keyId = -1;
    }
    stop = parseTicket(ptr);
  }
  // Parameters begin where the ticket begins.  So there are some only when it is empty.
  if (stop == US_COMPLETE && *ptr == '?') {
    stop = parseParameters(ptr);
  }
  return {stop, static_cast<std::size_t>(ptr - text.c_str())};
}

// Each reader moves `ptr` past what it could read.  Only the reader of the ticket leaves
// `ptr` where it is when it succeeds.

uriStop URI::parseAddresses(const char*& ptr, const RegExpr& machine_RE) {
  for (;;) {
    const char* const delimiter = std::strpbrk(ptr, "+,/");
    if (delimiter == nullptr) {
      ptr += std::strlen(ptr);
      return US_DELIMITER;
    }
    std::string address(ptr, delimiter);
    if (!isAddress(machine_RE, address)) {
      return US_ADDRESS;
    }
    addresses.push_back(std::move(address));
    ptr = delimiter + 1;
    if (*delimiter == '/') {
      return US_COMPLETE;
    }
  }
}

uriStop URI::parseTicket(const char*& ptr) {
  if (ticket.set(ptr, 64)) {
    return US_COMPLETE;
  }
  const char* const begin = ptr;
  while (internal::isBase64Digit(*ptr)) {
    ptr++;
  }
  // The "=" that fill a group of four fit, but three never do.
  const auto last = (ptr - begin) % 4;
  for (auto room = last < 2 ? 0 : 4 - last; room > 0 && *ptr == '='; room--) {
    ptr++;
  }
  return US_TICKET;
}

// Reads name=value pairs after a "?" or "&" at `ptr`.
uriStop URI::parseParameters(const char*& ptr) {
  do {
    ptr++;
    const char* const equals = std::strchr(ptr, '=');
    if (equals == nullptr) {
      ptr += std::strlen(ptr);
      return US_PARAMETER;
    }
    const char* const value = equals + 1;
    const std::size_t length = std::strcspn(value, "&");
    parameters[std::string(ptr, equals)] = URIunEscape(std::string(value, length));
    ptr = value + length;
  } while (*ptr == '&');
  return US_COMPLETE;
}

// --- Formatting ------------------------------------------------------------

std::string URI::format() const {
  const std::string& scheme = m_scheme.empty() ? URI_SCHEME.value(true) : m_scheme;
  std::size_t room = scheme.size() + (std::size_t{4} * ticket.size() + 2) / 3 + 3;
  if (keyId >= 0) {
    room += keyId < 10 ? 2 : keyId < 100 ? 3 : 6;
  }
  for (const std::string& address : addresses) {
    room += address.size() + 1;
  }
  std::string result;
  result.reserve(room);
  result += scheme;
  result += "://";
  for (const std::string& address : addresses) {
    result += address;
    result += &address == &addresses.back() ? '/' : '+';
  }
  if (keyId >= 0) {
    int2decimal(result, keyId);
    result += ',';
  }
  result += ticket.format(64);
  char separator = '?';
  for (const auto& [name, value] : parameters) {
    result += separator;
    result += name;
    result += '=';
    result += URIescape(value);
    separator = '&';
  }
  return result;
}

// --- The argument vector ---------------------------------------------------

unsigned int URI::valuesPerOption(argsStyle style) const {
  switch (style) {
    case AS_EQUALS:
      return 1;
    case AS_SEPARATE:
      return 2;
  }
  ASSERT(false);
  return 0;
}

char** URI::args(const char* commandName, unsigned int maxHosts, argsStyle style,
                 const char* portArg) {
  char* const command = copyString(commandName);  // it may be the element that is replaced below
  if (argsList == nullptr) {
    const bool isVNC = caseInsensitive::same(m_scheme, "VNC");
    buildArgs(isVNC ? VNC_OPTIONS.list() : assocList(), maxHosts, style, portArg);
  } else {
    delete[] argsList[0];
  }
  argsList[0] = command;
  return argsList;
}

void URI::buildArgs(assocList options, unsigned int maxHosts, argsStyle style,
                    const char* portArg) {
  options += parameters;
  if (!ticket.empty()) {
    options["ticket"] = ticket.format(16);
  }
  const std::size_t Naddr =
      maxHosts != 0 && maxHosts < addresses.size() ? maxHosts : addresses.size();
  const std::size_t perOption = valuesPerOption(style);
  const std::size_t length =
      Naddr + perOption * options.size() + (portArg != nullptr ? perOption : 0) + 2;
  argsList = new char*[length];
  std::size_t pos = 0;
  argsList[pos++] = nullptr;  // the command's place
  const auto addOption = [this, &pos, style](const std::string& name, const std::string& value) {
    if (style == AS_EQUALS) {
      argsList[pos++] = copyString("-" + name + "=" + value);
    } else {
      argsList[pos++] = copyString("-" + name);
      argsList[pos++] = copyString(value);
    }
  };
  for (const auto& [name, value] : options) {
    addOption(name, value);
  }
  if (portArg != nullptr && !addresses.empty()) {
    const std::size_t colon = addresses.front().rfind(':');
    if (colon != std::string::npos) {
      addOption(portArg, addresses.front().substr(colon + 1));
    }
  }
  for (std::size_t i = 0; i < Naddr; i++) {
    argsList[pos++] = copyString(portArg != nullptr ? withoutPort(addresses[i]) : addresses[i]);
  }
  ASSERT(pos < length);
  argsList[pos] = nullptr;
}
