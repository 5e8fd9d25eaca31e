// SPDX-License-Identifier: MIT
// A language that tests fill themselves.
#pragma once

#include <string>
#include <vector>

#include "language.h"

class testLanguage : public language {
 public:
  /// The table of languages never drops one, so a test's languages live as long as it.
  static testLanguage& make(const std::string& name) {
    static std::vector<testLanguage*>& all = *new std::vector<testLanguage*>;
    all.push_back(new testLanguage(name));
    return *all.back();
  }

  using language::phrases;
  using language::setCode;

 private:
  explicit testLanguage(const std::string& name) : language(name) {}
};
