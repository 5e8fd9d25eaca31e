// SPDX-License-Identifier: MIT
// What a link has for the placeholders of a definition, by the rules of link_rules.h.
#pragma once

#include <regex.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz.h"
#include "link_rules.h"

inline std::string encoded(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (only({&c, 1}, LETTERS) || only({&c, 1}, "0123456789-._~")) {
      result += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      result += {'%', UPPER_HEX[byte / 16], UPPER_HEX[byte % 16]};
    }
  }
  return result;
}

inline bool isSpice(const ruledLink& link) {
  return link.scheme == "spice" || link.scheme == "spice+tls";
}

// What placeholders stand for.
using pieces = std::map<std::string, std::string>;

inline pieces piecesOf(const ruledLink& link, std::optional<unsigned int> port) {
  pieces result = {{"host", link.plainHost()}, {"bracketed", link.bracketedHost()}};
  if (link.user) {
    result["user"] = *link.user;
  }
  if (link.password && link.scheme != "telnet") {
    result["password"] = *link.password;
  }
  if (port) {
    result["port"] = std::to_string(*port);
    result["display"] = std::to_string(static_cast<int>(*port) - 5900);
  }
  if (link.tlsPort) {
    result["tlsport"] = std::to_string(*link.tlsPort);
  }
  const auto connected = link.tlsPort ? link.tlsPort : link.port;
  result["link"] = (link.tlsPort ? "spice+tls" : link.scheme) + "://" +
                   (link.user && !isSpice(link) ? encoded(*link.user) + '@' : "") +
                   link.linkedHost() + (connected ? ':' + std::to_string(*connected) : "");
  return result;
}

// Whether the expression takes the whole value.
inline bool allows(const std::string& expression, const std::string& value) {
  regex_t compiled;
  if (regcomp(&compiled, expression.c_str(), REG_EXTENDED) != 0) {
    return false;
  }
  regmatch_t whole{};
  const bool found = regexec(&compiled, value.c_str(), 1, &whole, 0) == 0;
  regfree(&compiled);
  return found && whole.rm_so == 0 && static_cast<std::size_t>(whole.rm_eo) == value.size();
}
