// SPDX-License-Identifier: MIT
// The rules for links.  They are written from the documents and not from the code, to check
// the code against them.  Short comes before fast here.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A part of a text, from one offset to before another.
struct stretch {
  std::size_t begin;
  std::size_t end;
};

/// A parameter, or a typed pair.
struct ruledParameter {
  std::string name;
  std::string value;  ///< without its type
  char type = 0;      ///< of a typed pair
  bool taken = false;
  stretch where{};
};

/// What a link says by the rules.
struct ruledLink {
  std::string scheme;  ///< in lower case
  std::optional<std::string> user;
  std::optional<std::string> password;
  std::string host;  ///< in lower case and without a last dot; an IPv6 address as it is written
  std::string zone;  ///< of an IPv6 address
  bool bracketed = false;
  std::optional<unsigned int> port;
  std::optional<unsigned int> tlsPort;  ///< in place of the other
  bool plainPortDropped = false;
  std::vector<ruledParameter> parameters;
  bool fragment = false;

  std::string plainHost() const { return zone.empty() ? host : host + '%' + zone; }
  std::string bracketedHost() const { return bracketed ? '[' + plainHost() + ']' : host; }
  /// The host as it is in a link.
  std::string linkedHost() const {
    return zone.empty() ? bracketedHost() : '[' + host + "%25" + zone + ']';
  }
};

/// The result of a link by the rules: nothing, or the code of the first one that it breaks
/// and the part of the text in which the fault is.
struct ruling {
  std::string code;
  stretch where;
};

/// Checks a text against the rules, one after the other.
/// `known` says whether a viewer is known for a scheme.
std::optional<ruling> readByRules(std::string_view text,
                                  const std::function<bool(const std::string&)>& known,
                                  ruledLink& into);

bool isUserByRules(std::string_view user);
bool isPasswordByRules(std::string_view password);

/// Two parameters of one name, in whatever letters.
bool sameName(std::string_view a, std::string_view b);

/// True when both are addresses of one value and have equal zones, or both the same name.
bool sameHost(const ruledLink& a, const ruledLink& b);

/// Reads a host in the form of a list of trusted ones.  False if it is not a host.
bool readHostByRules(std::string_view text, ruledLink& into);

/// The same of a text that is decoded already.
bool readDecodedHostByRules(std::string_view text, ruledLink& into);

/// Where the passwords are, whatever else is wrong with the text.  They may overlap.
std::vector<stretch> secretsOf(std::string_view text);
