// SPDX-License-Identifier: MIT
// The lists of a definition as they are written.
#pragma once

#include <string>
#include <vector>

#include "toml.h"

using words = std::vector<std::string>;

inline words wordsOf(const toml::node& node) {
  words result;
  if (const toml::array* const list = node.as_array()) {
    for (const toml::node& word : *list) {
      result.push_back(word.value_or(std::string()));
    }
    return result;
  }
  return {node.value_or(std::string())};
}

inline std::vector<words> elementsOf(const toml::node* node) {
  std::vector<words> result;
  if (node != nullptr && node->is_array()) {
    for (const toml::node& one : *node->as_array()) {
      result.push_back(wordsOf(one));
    }
  }
  return result;
}
