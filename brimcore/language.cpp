// SPDX-License-Identifier: MIT
// Looks up localised strings.

#include "language.h"

#include <cstddef>
#include <list>

#include "configRef.h"
#include "events.h"
#include "items.h"
#include "language_tables.h"
#include "lasting.h"

namespace {

const std::string& negativeIndex() {
  static const internal::lasting<std::string> text("<negative string index>");
  return *text;
}

const std::string& indexTooLarge() {
  static const internal::lasting<std::string> text("<string index too large>");
  return *text;
}

const std::string& vectorNotFound() {
  static const internal::lasting<std::string> text("<string vector not found>");
  return *text;
}

const std::string& at(const std::vector<std::string>& texts, std::size_t index) {
  return index < texts.size() ? texts[index] : indexTooLarge();
}

const std::string& declaredPhrase(const std::string& vectorName, std::size_t index) {
  const auto found = internal::defaultVectors().find(vectorName);
  return found != internal::defaultVectors().end() ? at(found->second.back().defaults, index)
                                                   : vectorNotFound();
}

}  // namespace

internal::languageTable& internal::languages() {
  static internal::lasting<internal::languageTable> table;
  return *table;
}

// --- language --------------------------------------------------------------

language::language(const std::string& name) : m_name(registerName(name)) {}

language::~language() {
  const auto found = internal::languages().find(m_name);
  if (found != internal::languages().end() && found->second == this) {
    internal::languages().erase(found);
  }
}

std::string language::registerName(const std::string& name) {
  if (name.empty()) {
    return name;
  }
  if (!internal::languages().try_emplace(name, this).second) {
    commonEvent(SEVERE, AUD_AUDIT | AUD_DEVEL, EC_DUPL_VALUE, name, "language::registerName");
    return std::string();
  }
  return name;
}

std::string language::code() const {
  return m_code.empty() ? "en" : m_code;
}

bool language::load(const std::string& source) {
  commonEvent(FAILURE, AUD_ALL, EC_NOT_IMPL, source, "language::load");
  return false;
}

language& language::find(const std::string& name) {
  const auto found = internal::languages().find(name);
  return found != internal::languages().end() ? *found->second : Default();
}

language& language::Default() {
  const std::string& wanted = internal::defaultLanguage.value(false);
  if (!wanted.empty()) {
    const auto found = internal::languages().find(wanted);
    if (found != internal::languages().end()) {
      return *found->second;
    }
  }
  if (internal::languages().empty()) {
    static internal::lasting<badLanguage> standBy([] { return badLanguage(); });
    return *standBy;
  }
  return *internal::languages().begin()->second;
}

std::vector<std::pair<std::string, language*>> language::list() {
  return {internal::languages().begin(), internal::languages().end()};
}

const std::vector<std::string>& language::phraseVec(const std::string& vectorName) const {
  static const internal::lasting<std::vector<std::string>> missing(
      std::vector<std::string>{"<vector name not found>"});
  const auto found = phrasesMap.find(vectorName);
  return found != phrasesMap.end() ? found->second : *missing;
}

const std::string& language::phrase(const std::string& vectorName, int index) const {
  if (index < 0) {
    return negativeIndex();
  }
  const auto reduced = static_cast<std::size_t>(index % 1000);
  const auto own = phrasesMap.find(vectorName);
  if (own != phrasesMap.end()) {
    return at(own->second, reduced);
  }
  const language& standard = Default();
  return this != &standard ? standard.phrase(vectorName, index)
                           : declaredPhrase(vectorName, reduced);
}
