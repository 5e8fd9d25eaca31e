// The check of what a desktop needs to start hopopen for a link.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "associations.h"
#include "click_places.h"
#include "desktop_entry.h"
#include "finding.h"
#include "place_reader.h"
#include "programs.h"

namespace hopopen {

class desktopCheck {
 public:
  /// All must outlive this object.
  desktopCheck(const clickPlaces& places, const programFinder& programs, placeReader& reader);

  /// Which entry opens links of the scheme: should be hopopen's.
  finding handler(const std::string& scheme);
  /// Hopopen's own entry, the program that it starts, and the cache that names it.  Of an
  /// entry that is not good, neither program nor cache is looked at.
  findings entry();
  /// What browsers and other programs open a link with.
  finding opener() const;

 private:
  struct foundEntry {
    std::string path;
    bool ofUser = false;
    std::string error;
    desktopEntry read;
  };

  std::optional<foundEntry> find(const std::string& id);
  bool works(const std::string& id);
  std::string pathOf(const std::string& program) const;
  finding ofProgram(const foundEntry& own) const;
  finding ofCache(const foundEntry& own);

  const clickPlaces& m_places;
  const programFinder& m_programs;
  placeReader& m_reader;
  std::vector<associations> m_associations;
  std::map<std::string, bool> m_works;  // of the entries that were looked at
};

}  // namespace hopopen
