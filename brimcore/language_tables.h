// The process-wide tables of the localised strings, each created on first use
// and never destroyed.
#pragma once

#include <list>
#include <map>
#include <string>
#include <vector>

#include "language.h"
#include "stringcomp.h"

namespace internal {

using languageTable = std::map<std::string, language*, caseInsensitive>;

/// The registered languages by name.
languageTable& languages();

/// One default vector.
struct vectorDetails {
  std::vector<const char*> keywords;  // ends with null
  int Nkeywords;
  std::vector<std::string> defaults;
  int Ndefaults;
};

/// The versions of one default vector; the last is the current one.  Texts that
/// were handed out live as long as the process, so those before it are kept.
using vectorVersions = std::list<vectorDetails>;

/// The default vectors by name, case-sensitive as the languages' own are not.
std::map<std::string, vectorVersions>& defaultVectors();

}  // namespace internal
