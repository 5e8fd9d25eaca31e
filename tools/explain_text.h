// SPDX-License-Identifier: MIT
// An explanation for people.
#pragma once

#include <string>

#include "explain.h"

/// A line for each fact, and a caret under what does not parse.  Whatever is not printable
/// ASCII is escaped.
std::string asText(const explanation& launch);
