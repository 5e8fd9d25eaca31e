// SPDX-License-Identifier: MIT
// The catalog: the definitions of viewers in outline, as an earlier reading found them.
//
// A click must be quick also where hundreds of definitions are installed.  An outline is
// enough to choose a viewer, so that only the file of the chosen one need be read.  What the
// catalog says of a file holds for as long as the file is the very same.  Without a catalog
// everything works, only slower.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "definition.h"
#include "stamp.h"

namespace hopopen {

class catalog {
 public:
  catalog() = default;
  /// Reads what `text` wrote.  Whatever is not of that form counts as nothing.
  explicit catalog(std::string_view text);
  explicit catalog(const std::vector<definition>& viewers);

  /// True when no file is known.
  bool empty() const { return m_lines.empty(); }

  /// The outline of the definition in a file, if the file is as it was.
  std::optional<definition> find(const std::string& path, const stamp& identity) const;

  /// The catalog as text, a line for each file.
  std::string text() const;

 private:
  std::string_view line(std::size_t start) const;

  std::string m_text;                // after the head
  std::vector<std::size_t> m_lines;  // where they start; sorted by what they say
};

}  // namespace hopopen
