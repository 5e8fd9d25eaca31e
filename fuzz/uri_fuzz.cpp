// SPDX-License-Identifier: MIT
// URIs.  For every text:
//
// - Parsing stops within the text.  The text before the byte that does not fit is a
//   URI, or parsing it stops at its end.
// - A URI has a scheme that begins with a letter, and at least one address, none of them
//   empty or with a delimiter in it.  It has parameters only without a ticket.
// - What `format` writes parses back to the same scheme, addresses, ticket, parameters and
//   key id, except for a key id that wrapped to a negative number, which is not written; and
//   formats to itself.
// - A copy has the addresses, the key id and the ticket, but no scheme and no parameters.
// - Assigning a text gives what constructing from it gives; when it does not parse, the
//   addresses, the key id and the ticket are gone.
//
// For every URI, style, number of hosts and port option:
//
// - The argument vector ends with null, and is no longer than the room computed for it.
// - The program is first.  Options follow, each with a dash; the last arguments are the
//   addresses, without their ports if there is a port option.
// - Both styles pass the same options in the same order.
// - In a second vector only the program is new.

#include <algorithm>
#include <cstring>
#include <vector>

#include "conversion.h"
#include "fuzz.h"
#include "uri.h"

namespace {

void checkParsed(const URI& uri, const std::string& text) {
  check(!uri.scheme().empty() && only(uri.scheme().substr(0, 1), LETTERS),
        "a scheme begins with a letter", text);
  check(!uri.addresses.empty(), "there is an address", text);
  for (const std::string& address : uri.addresses) {
    check(!address.empty() && address.find_first_of("+,/") == address.npos,
          "an address has no delimiter", text, address);
  }
  check(uri.ticket.empty() || uri.parameters.empty(), "only a URI without a ticket has parameters",
        text);
  checkSame(uri.hexString(), uri.ticket.format(16), "the ticket in hexadecimal", text);
}

void checkFormatted(const URI& uri, const std::string& text) {
  const std::string formatted = uri.format();
  const URI again(formatted);
  check(again.okay() && again.scheme() == uri.scheme() && again.addresses == uri.addresses &&
            again.keyId == std::max(uri.keyId, -1) && again.ticket == uri.ticket &&
            again.parameters == uri.parameters,
        "what is written parses back", text, formatted);
  checkSame(again.format(), formatted, "and is written alike", text);
}

void checkCopies(const URI& uri, const std::string& text) {
  const URI copy(uri);
  check(copy.scheme().empty() && copy.parameters.empty() && copy.addresses == uri.addresses &&
            copy.keyId == uri.keyId && copy.ticket == uri.ticket && copy.okay() == uri.okay(),
        "a copy is good for whom to call, not how", text);
}

void checkAssigned(const URI& uri, const std::string& text) {
  URI assigned;
  assigned.add("former");
  assigned.setKeyId(7);
  assigned = text;
  check(!assigned.okay(), "assigning a text does not change okay", text);
  if (uri.okay()) {
    check(assigned.scheme() == uri.scheme() && assigned.addresses == uri.addresses &&
              assigned.keyId == uri.keyId && assigned.ticket == uri.ticket &&
              assigned.parameters == uri.parameters,
          "assigning a text is parsing it", text);
  } else {
    check(assigned.addresses.empty() && assigned.keyId == -1 && assigned.ticket.empty(),
          "a text that does not parse leaves nothing", text);
  }
}

std::string withoutPort(const std::string& address) {
  return address.substr(0, address.rfind(':'));
}

// The options that the viewer gets, without the one for the port.
std::size_t options(const URI& uri) {
  const bool isVNC = uri.scheme().size() == 3 && caseInsensitive::same(uri.scheme(), "vnc");
  assocList all = (isVNC ? VNC_OPTIONS.list() : assocList()) + uri.parameters;
  if (!uri.ticket.empty()) {
    all["ticket"] = "";
  }
  return all.size();
}

std::vector<std::string> vectorOf(URI& uri, unsigned int maxHosts, argsStyle style,
                                  const char* portArg) {
  uri.clear();
  const std::vector<std::string> arguments =
      vectorOfStrings(uri.args("viewer", maxHosts, style, portArg));
  const std::size_t hosts =
      maxHosts == 0 ? uri.addresses.size() : std::min<std::size_t>(maxHosts, uri.addresses.size());
  const std::size_t perOption = style == AS_EQUALS ? 1 : 2;
  const std::size_t optionCount = options(uri);
  const std::size_t room =
      hosts + perOption * optionCount + (portArg != nullptr ? perOption : 0) + 2;
  check(arguments.size() + 1 <= room, "the vector fits into the room computed for it");
  check(arguments.size() >= 1 + perOption * optionCount + hosts && arguments[0] == "viewer",
        "the program is first");
  for (std::size_t i = 0; i < hosts; i++) {
    const std::string& address = uri.addresses[i];
    checkSame(arguments[arguments.size() - hosts + i],
              portArg != nullptr ? withoutPort(address) : address, "the addresses are last");
  }
  return std::vector<std::string>(arguments.begin() + 1,
                                  arguments.end() - static_cast<std::ptrdiff_t>(hosts));
}

void checkArguments(URI& uri, const std::string& text, const std::string& portOption) {
  for (const char* portArg : {static_cast<const char*>(nullptr), portOption.c_str()}) {
    for (const unsigned int maxHosts : {0U, 1U}) {
      const auto equals = vectorOf(uri, maxHosts, AS_EQUALS, portArg);
      const auto separate = vectorOf(uri, maxHosts, AS_SEPARATE, portArg);
      check(separate.size() == 2 * equals.size(), "both styles have the same options", text);
      for (std::size_t i = 0; i < equals.size(); i++) {
        checkSame(separate[2 * i] + '=' + separate[2 * i + 1], equals[i],
                  "both styles have the same options", text);
        check(equals[i].front() == '-', "an option begins with a dash", text, equals[i]);
      }
    }
  }
  char** const first = uri.args("first", 1, AS_EQUALS, nullptr);
  const std::vector<char*> before(first + 1, first + 1 + vectorOfStrings(first + 1).size());
  char** const second = uri.args("second", 0, AS_SEPARATE, "port");
  check(first == second && std::equal(before.begin(), before.end(), second + 1) &&
            second[before.size() + 1] == nullptr,
        "of a second vector only the program is new", text);
  checkSame(second[0], "second", "the program is new", text);
}

}  // namespace

void fuzz(std::string_view input) {
  const auto [portOption, rest] = parts<2>(input);
  const std::string text = rest.substr(0, rest.find('\0'));
  URI uri(rest);
  const uriParse parsed = URI().parse(rest);
  check(uri.okay() == (parsed.stop == US_COMPLETE), "a URI is a text that parses", text);
  check(parsed.offset <= text.size(), "parsing stops within the text", text);
  checkCopies(uri, text);
  checkAssigned(uri, text);
  if (!uri.okay()) {
    const uriParse before = URI().parse(text.substr(0, parsed.offset));
    check(before.stop == US_COMPLETE || before.offset == parsed.offset,
          "what is before the byte that does not fit does fit", text);
    return;
  }
  checkParsed(uri, text);
  checkFormatted(uri, text);
  checkArguments(uri, text, portOption.c_str());
}
