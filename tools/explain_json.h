// SPDX-License-Identifier: MIT
// An explanation for programs.
#pragma once

#include <string>

#include "explain.h"

/// One JSON object (RFC 8259), of which every byte is ASCII.  Each byte that is not UTF-8 is
/// U+FFFD; the URI and the arguments are there in hexadecimal, too.
std::string asJSON(const explanation& launch);
