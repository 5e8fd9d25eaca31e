// SPDX-License-Identifier: MIT
// Adding keys to a table of a settings file, however the table is written.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "text_edit.h"
#include "toml.h"
#include "toml_text.h"

namespace hopopen {

/// A key and the text of its value.
using keyAndValue = std::pair<std::string, std::string>;

/// What a table is called in the text.
struct tableName {
  std::string header;     ///< in brackets: host."a.example"
  std::size_t parts = 1;  ///< how many keys that is
  std::string dotted;     ///< before a key of it, where it is written by dotted keys
};

/// Adds keys that the table does not have yet.  Null is a table that is not there.
void addPairs(textEdit& edit, tomlText& source, const tableName& name, const toml::table* table,
              const std::vector<keyAndValue>& pairs);

/// The text of a table as a value: { a = 1, b = 2 }
/// REQUIRES: there are pairs.
std::string inlineTable(const std::vector<keyAndValue>& pairs);

}  // namespace hopopen
