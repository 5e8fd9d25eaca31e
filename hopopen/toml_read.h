// SPDX-License-Identifier: MIT
// Reading a text as TOML.
#pragma once

#include <cstddef>
#include <string>

#include "toml.h"

namespace hopopen {

/// The most parts that a key may have: "a.b.c" has three.
constexpr std::size_t MOST_PARTS = 32;

/// Reads a text.  The library makes a table within a table for every part of a key, and
/// reads, compares and destroys them within one another; the stack ends before a file of
/// LONGEST_FILE does.  So a key of more than MOST_PARTS is a fault, as any other.
toml::parse_result readToml(const std::string& text);

}  // namespace hopopen
