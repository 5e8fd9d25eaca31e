// SPDX-License-Identifier: MIT
#include "chromium_policy.h"

#include <utility>

#include "characters.h"

namespace hopopen {

namespace {

// Letter case does not count in a scheme.
bool covers(const std::string& text, const std::string& scheme) {
  const std::string filter = lower(text);
  return filter == "*" || filter == "*://*" || filter == scheme + ":*" || filter == scheme + "://*";
}

}  // namespace

void chromiumPolicy::add(const std::string& file, const jsonData& policy) {
  for (std::string& text : textsOf(policy, {"URLBlocklist"})) {
    m_blocked.push_back({file, std::move(text)});
  }
  for (std::string& text : textsOf(policy, {"URLAllowlist"})) {
    m_allowed.push_back(std::move(text));
  }
}

std::optional<forbiddance> chromiumPolicy::forbids(const std::string& scheme) const {
  for (const std::string& text : m_allowed) {
    if (covers(text, scheme)) {
      return {};
    }
  }
  for (const filter& one : m_blocked) {
    if (covers(one.text, scheme)) {
      return forbiddance{one.file, "URLBlocklist has \"" + one.text + '"'};
    }
  }
  return {};
}

}  // namespace hopopen
