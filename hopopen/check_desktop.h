// SPDX-License-Identifier: MIT
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
    std::string folder;  // of entries, which may have folders of its own
    bool ofUser = false;
    std::string error;
    desktopEntry read;
  };

  std::optional<foundEntry> find(const std::string& id);
  bool works(const std::string& id, const std::string& cache);
  std::string pathOf(const std::string& program) const;
  static std::string remedyFor(const foundEntry& own);
  finding ofProgram(const foundEntry& own) const;
  finding ofCache(const foundEntry& own);

  const clickPlaces& m_places;
  const programFinder& m_programs;
  placeReader& m_reader;
  std::vector<associations> m_associations;
  // Of the entries that were looked at: the folder of each that works.
  std::map<std::string, std::string> m_works;
};

}  // namespace hopopen
