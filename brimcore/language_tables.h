// SPDX-License-Identifier: MIT
// The process-wide tables of the localised strings.  Each is created on first use
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

/// The versions of one default vector; the last is the current one.  Callers may use
/// a text as long as the process lives, so all earlier versions are kept.
using vectorVersions = std::list<vectorDetails>;

/// The default vectors by name.  Letter case counts; in a language's own vectors it does not.
std::map<std::string, vectorVersions>& defaultVectors();

}  // namespace internal
