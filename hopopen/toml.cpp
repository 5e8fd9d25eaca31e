#define TOML_IMPLEMENTATION
#include "toml.h"
