// SPDX-License-Identifier: MIT
#include "firefox_policy.h"

#include <vector>

#include "characters.h"
#include "firefox_handler.h"
#include "json.h"

namespace hopopen {

namespace {

bool matches(const std::string& pattern, const std::string& scheme) {
  const std::string text = lower(pattern);
  return text == "<all_urls>" || text == scheme + "://*" || text == scheme + "://*/*" ||
         text == scheme + ":*";
}

std::optional<std::string> byFilter(const jsonData& policies, const std::string& scheme) {
  for (const std::string& pattern :
       textsOf(policies, {"policies", "WebsiteFilter", "Exceptions"})) {
    if (matches(pattern, scheme)) {
      return {};
    }
  }
  for (const std::string& pattern : textsOf(policies, {"policies", "WebsiteFilter", "Block"})) {
    if (matches(pattern, scheme)) {
      return "WebsiteFilter blocks \"" + pattern + '"';
    }
  }
  return {};
}

std::optional<std::string> byHandler(const jsonData& policies, const std::string& scheme) {
  const jsonData* const handler = memberOf(policies, {"policies", "Handlers", "schemes", scheme});
  const auto other = handler == nullptr ? std::nullopt : otherHandler(*handler);
  return other ? std::optional("Handlers gives " + scheme + " links to " + *other) : std::nullopt;
}

// A preference is a value, or an object that has one.
std::optional<std::string> byPreference(const jsonData& policies, const std::string& scheme) {
  const std::string name = "network.protocol-handler.external." + scheme;
  const jsonData* const preference = memberOf(policies, {"policies", "Preferences", name});
  if (preference == nullptr) {
    return {};
  }
  const jsonData* const inside = memberOf(*preference, {"Value"});
  const bool off = (inside == nullptr ? *preference : *inside) == false;
  return off ? std::optional("Preferences switches " + name + " off") : std::nullopt;
}

}  // namespace

std::optional<std::string> firefoxForbids(const jsonData& policies, const std::string& scheme) {
  for (const auto& reader : {byFilter, byHandler, byPreference}) {
    if (auto found = reader(policies, scheme)) {
      return found;
    }
  }
  return {};
}

}  // namespace hopopen
