// SPDX-License-Identifier: MIT
// What the policy files of Chromium forbid: the lists URLBlocklist and URLAllowlist
// (https://chromium.org/administrators/url-blocklist-filter-format).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "json_read.h"

namespace hopopen {

/// A policy that forbids links of a scheme.
struct forbiddance {
  std::string file;
  std::string rule;  ///< what the file says, as people read it
};

/// The policies of all files of a browser together.
class chromiumPolicy {
 public:
  void add(const std::string& file, const jsonData& policy);

  /// What forbids all links of the scheme: "*", "SCHEME:*" or "SCHEME://*" in a URLBlocklist,
  /// unless a URLAllowlist has one of them, too.
  std::optional<forbiddance> forbids(const std::string& scheme) const;

 private:
  struct filter {
    std::string file;
    std::string text;
  };
  std::vector<filter> m_blocked;
  std::vector<std::string> m_allowed;
};

}  // namespace hopopen
