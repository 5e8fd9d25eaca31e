// SPDX-License-Identifier: MIT
// Files with groups of keys: desktop entries, mimeapps.list, mimeinfo.cache, and Firefox's
// profiles.ini are of this form.
//
//     [Default Applications]
//     x-scheme-handler/vnc=hopopen.desktop;krdc.desktop;
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace hopopen {

/// What such a text says:
///
/// - a line that begins with "#", and what is neither a group nor a key, means nothing;
/// - blanks around a key and a value do not count;
/// - of a key that is given twice in a group the last one counts.
class keyFile {
 public:
  explicit keyFile(std::string_view text);

  /// The names of the groups, in their order.
  const std::vector<std::string>& groups() const { return m_groups; }
  /// The value of a key; empty when there is none.
  std::string value(const std::string& group, const std::string& key) const;
  /// The value as a list that is separated by ";".  Empty elements are left out.
  std::vector<std::string> list(const std::string& group, const std::string& key) const;

 private:
  std::vector<std::string> m_groups;
  std::map<std::string, std::map<std::string, std::string>> m_values;
};

}  // namespace hopopen
