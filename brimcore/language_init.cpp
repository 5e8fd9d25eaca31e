// SPDX-License-Identifier: MIT
// Declares localised strings.

#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "assertion.h"
#include "events.h"
#include "language.h"
#include "language_tables.h"
#include "lasting.h"
#include "stringcomp.h"

namespace {

// The address of a declared text.
struct langStringKey {
  const char* vector;
  const char* keyword;

  bool operator<(const langStringKey& other) const {
    const caseInsensitive& before = caseInsensitive::instance;
    if (before(vector, other.vector)) {
      return true;
    }
    return !before(other.vector, vector) && before(keyword, other.keyword);
  }
};

using declaredTable = std::map<langStringKey, languageString*>;

declaredTable& declaredStrings() {
  static internal::lasting<declaredTable> table;
  return *table;
}

bool sameVector(const langStringKey& a, const langStringKey& b) {
  return caseInsensitive::same(a.vector, b.vector);
}

}  // namespace

std::map<std::string, internal::vectorVersions>& internal::defaultVectors() {
  static internal::lasting<std::map<std::string, internal::vectorVersions>> table;
  return *table;
}

// --- languageString --------------------------------------------------------

languageString::languageString(const char* keyword, const std::string& defaultText,
                               const char* vectorName)
    : m_vector(vectorName), m_default(defaultText) {
  if (!declaredStrings().try_emplace({vectorName, keyword}, this).second) {
    commonEvent(SEVERE, AUD_DEVEL, EC_DUPL_VALUE, std::string(keyword) + "/" + vectorName,
                "languageString::languageString");
  }
}

languageString::~languageString() {
  // The key is no help here: its texts may be gone by now.
  std::erase_if(declaredStrings(), [this](const auto& entry) { return entry.second == this; });
}

const std::string& languageString::operator()(const language& lang) const {
  return m_offset >= 0 ? lang.phrase(m_vector, m_offset) : m_default;
}

void languageString::finalise() {
  static constinit bool done = false;
  if (done) {
    commonEvent(FAILURE, AUD_DEVEL, EC_BAD_SEQUENCE, "Repeated calls",
                "languageString::finalise()");
  }
  const auto end = declaredStrings().end();
  for (auto run = declaredStrings().begin(); run != end;) {
    const langStringKey& first = run->first;
    internal::vectorDetails details{};
    for (; run != end && sameVector(first, run->first); run++) {
      run->second->m_offset = details.Nkeywords++;
      details.keywords.push_back(run->first.keyword);
      details.defaults.push_back(run->second->m_default);
    }
    details.keywords.push_back(nullptr);
    details.Ndefaults = details.Nkeywords;
    internal::defaultVectors()[first.vector].push_back(std::move(details));
  }
  done = true;
}

// --- languageVector --------------------------------------------------------

languageVector::languageVector(const std::string& name, const char* const* keywords,
                               const char* const* defaults) {
  internal::vectorDetails details{};
  details.Nkeywords = length(keywords);
  details.keywords.assign(keywords, keywords + details.Nkeywords);
  details.keywords.push_back(nullptr);
  details.Ndefaults = length(defaults);
  details.defaults.assign(defaults, defaults + details.Ndefaults);
  internal::defaultVectors()[name].push_back(std::move(details));
}

int length(const char* const* array) {
  int result = 0;
  if (array != nullptr) {
    while (*array++ != nullptr) {
      ASSERT(++result < 10000);
    }
  }
  return result;
}
