// SPDX-License-Identifier: MIT
// Localised strings.
//
// User-visible texts are in named vectors and are addressed by vector name and
// index.  A module declares its texts as static `languageString` objects with the
// text in the default language; `languageString::finalise()`, which the first
// read of the configuration calls, groups them into vectors and gives each its
// index.  A `language` may have vectors of its own; for what it lacks, the
// default language and then the declared texts are used.
//
// Languages and strings are registered in tables that live as long as the
// process.  One that is destroyed, such as a static object of a library that is unloaded,
// leaves them.  The tables are filled during start-up and not locked.  Declaring and
// looking up texts works before `main` and at exit.
//
// What is kept here is for one thread of a process only.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "stringcomp.h"

#pragma GCC visibility push(default)

/// A language, registered by name until it is destroyed.
class language {
 public:
  language(const language&) = delete;
  language& operator=(const language&) = delete;
  /// Takes the language out of the table, and no other of its name.  The texts that it
  /// gave out go with it.
  virtual ~language();

  /// The registered name; empty when it was taken.
  const std::string& name() const { return m_name; }
  /// The language code (RFC 5646), "en" when none is set.
  std::string code() const;
  /// True when the language is registered.
  bool okay() const { return !m_name.empty(); }

  /// Fills the language's vectors and its code from the directory entry `source`.
  /// There is no directory in this build: reports `EC_NOT_IMPL`, returns false.
  bool load(const std::string& source);

  /// The language `name`, or `Default()` when there is none.
  static language& find(const std::string& name);
  /// The language that the item `defaultLanguage` names, else the first by name,
  /// else the reserve language "BAD".
  static language& Default();
  /// All languages in the order of their names.
  static std::vector<std::pair<std::string, language*>> list();

  /// The language's own vector of that name, or one with the only text
  /// "<vector name not found>".
  const std::vector<std::string>& phraseVec(const std::string& vectorName) const;

  /// The text at `index` modulo 1000 of a vector: this language's, the default
  /// language's, or the declared one.  Where there is none, a text in angle
  /// brackets says why.  The string lives as long as the language that it comes
  /// from; a declared one as long as the process.
  const std::string& phrase(const std::string& vectorName, int index) const;

 protected:
  /// Registers the language; a name that is taken is reported as `EC_DUPL_VALUE`.
  explicit language(const std::string& name);

  /// The language's own vectors by name, for a derived class to fill.
  std::map<std::string, std::vector<std::string>, caseInsensitive>& phrases() { return phrasesMap; }
  /// Sets the language code (RFC 5646); an empty one means "en".
  void setCode(const std::string& newCode) { m_code = newCode; }

 private:
  std::string registerName(const std::string& name);

  std::string m_name;
  std::string m_code;
  std::map<std::string, std::vector<std::string>, caseInsensitive> phrasesMap;
};

/// The language "BAD" that is used while none is registered.
class badLanguage : public language {
 private:
  friend class language;
  badLanguage() : language("BAD") {}
};

/// A text declared in the default language.
class languageString {
 public:
  /// Declares a text.  `keyword` and `vectorName`, which are not copied, must live as
  /// long as the object.  A second text of that keyword and vector, in any
  /// letter case, is reported as `EC_DUPL_VALUE` and keeps to its own default.
  languageString(const char* keyword, const std::string& defaultText, const char* vectorName);
  languageString(const languageString&) = delete;
  languageString& operator=(const languageString&) = delete;
  /// Takes the text out of the table of declared texts.  In a vector that `finalise()`
  /// has built the text stays.
  ~languageString();

  /// The text in a language; the default text before `finalise()`.
  const std::string& operator()(const language& lang) const;
  /// The text in the default language, as declared.
  const std::string& defaultValue() const { return m_default; }

  /// Groups the declared texts into vectors, in the order of their keywords.  A
  /// repeated call is reported as `EC_BAD_SEQUENCE` and builds again.
  static void finalise();

 private:
  const char* m_vector;
  int m_offset = -1;
  std::string m_default;
};

/// Declares a whole vector at once.
class languageVector {
 public:
  /// `keywords` and `defaults` are null-terminated arrays of at most 9999 texts;
  /// the keywords are not copied and must live as long as the process.
  languageVector(const std::string& name, const char* const* keywords, const char* const* defaults);
};

/// The number of texts of a null-terminated array, 0 for null.  Past 9999 an
/// assertion fails: the end must be missing.
int length(const char* const* array);

#pragma GCC visibility pop
