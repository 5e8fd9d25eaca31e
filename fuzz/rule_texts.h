// SPDX-License-Identifier: MIT
// What the rules for links are made of: texts and their parts.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz.h"
#include "link_rules.h"

constexpr std::size_t npos = std::string_view::npos;
constexpr std::string_view HEX = "0123456789abcdefABCDEF";

std::string lowered(std::string_view text);

/// True when a "%" with two hexadecimal digits is at the offset.
bool escapeAt(std::string_view text, std::size_t i);

std::string decoded(std::string_view text);

bool hasControl(std::string_view text);

/// The parts of a part, which `separator` divides.
std::vector<stretch> split(std::string_view text, stretch part, char separator);

std::string_view cut(std::string_view text, stretch part);

/// The first of the bytes within a part, or its end.
std::size_t find(std::string_view text, stretch part, std::string_view bytes);

/// Reads a port.  True when the text is empty or is one.
bool readDigits(std::string_view digits, std::optional<unsigned int>& port);
