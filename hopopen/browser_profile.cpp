// SPDX-License-Identifier: MIT
#include "browser_profile.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

#include "firefox_handler.h"
#include "json.h"

namespace hopopen {

namespace {

bool isTrue(const jsonData* value) {
  return value != nullptr && *value == true;
}

// The value of a line such as `user_pref("NAME", false);`, and nothing of any other line.
std::string valueIn(std::string_view line, const std::string& name) {
  std::string bare;
  std::copy_if(line.begin(), line.end(), std::back_inserter(bare),
               [](char c) { return c != ' ' && c != '\t' && c != '\r'; });
  const std::string start = "user_pref(\"" + name + "\",";
  const std::size_t end = bare.rfind(')');
  if (!bare.starts_with(start) || end == std::string::npos || end < start.size()) {
    return {};
  }
  return bare.substr(start.size(), end - start.size());
}

}  // namespace

std::optional<std::string> chromiumKeeps(const jsonData& preferences, const std::string& scheme) {
  if (isTrue(memberOf(preferences, {"protocol_handler", "excluded_schemes", scheme}))) {
    return "blocks " + scheme + " links";
  }
  const jsonData* const handlers =
      memberOf(preferences, {"custom_handlers", "registered_protocol_handlers"});
  if (handlers == nullptr || !handlers->is_array()) {
    return {};
  }
  for (const jsonData& one : *handlers) {
    const jsonData* const protocol = memberOf(one, {"protocol"});
    const jsonData* const url = memberOf(one, {"url"});
    if (protocol != nullptr && *protocol == scheme && isTrue(memberOf(one, {"default"}))) {
      const bool named = url != nullptr && url->is_string();
      return "gives " + scheme + " links to " + (named ? url->get<std::string>() : "a web site");
    }
  }
  return {};
}

std::optional<std::string> firefoxKeeps(const jsonData& handlers, const std::string& scheme) {
  const jsonData* const handler = memberOf(handlers, {"schemes", scheme});
  const auto other = handler == nullptr ? std::nullopt : otherHandler(*handler);
  return other ? std::optional("gives " + scheme + " links to " + *other) : std::nullopt;
}

std::optional<std::string> firefoxSwitchesOff(const std::string& preferences,
                                              const std::string& scheme) {
  const std::string name = "network.protocol-handler.external." + scheme;
  bool off = false;
  std::string_view rest = preferences;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string value = valueIn(rest.substr(0, end), name);
    off = value.empty() ? off : value == "false";  // the last one counts
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return off ? std::optional("blocks " + scheme + " links") : std::nullopt;
}

}  // namespace hopopen
