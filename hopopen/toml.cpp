// SPDX-License-Identifier: MIT
#define TOML_IMPLEMENTATION
#include "toml.h"
