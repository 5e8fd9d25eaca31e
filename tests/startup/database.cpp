// SPDX-License-Identifier: MIT
// A program that uses localised strings, which read an item, and the database.  It prints
// the names in the database that the first read published.

#include <cstdio>

#include "configDB.h"
#include "language.h"

int main() {
  language::Default();
  ThreadData::instance(false);
  language::Default();
  for (const auto& [name, item] : configDB(RT_READ).pointer()->map()) {
    std::printf("%s\n", name.c_str());
  }
}
