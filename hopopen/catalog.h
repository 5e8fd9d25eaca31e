// The catalog: which links the definitions of viewers are for, as an earlier reading found.
//
// A click must be quick also where hundreds of definitions are installed.  What the catalog
// says of a file holds for as long as the file is the very same; such a file need not be read
// again when it is for other links.  Without a catalog everything works, only slower.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hopopen {

/// What tells a file from all others, and from itself after a change.
struct stamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t modified = 0;  ///< in nanoseconds since 1970
  std::int64_t changed = 0;   ///< the same, of what the system knows about the file

  bool operator==(const stamp&) const = default;
};

/// A definition without fault.
struct catalogEntry {
  std::string path;
  stamp file;
  std::string title;
  std::vector<std::string> schemes;
};

class catalog {
 public:
  catalog() = default;
  /// Reads what `text` wrote.  Whatever is not of that form counts as nothing.
  explicit catalog(std::string_view text);
  explicit catalog(const std::vector<catalogEntry>& entries);

  /// The entry for a file, if it is as it was.
  const catalogEntry* find(const std::string& path, const stamp& file) const;

  /// The catalog as text, a line for each file.
  std::string text() const;

 private:
  std::map<std::string, catalogEntry, std::less<>> m_entries;
};

}  // namespace hopopen
