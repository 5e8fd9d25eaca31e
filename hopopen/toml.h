// The TOML reader (https://toml.io, version 1.0.0), set up for this program: faults are
// results, not exceptions, nothing is ever written, and toml.cpp has its code.
#pragma once

#define TOML_EXCEPTIONS 0
#define TOML_HEADER_ONLY 0
#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>
