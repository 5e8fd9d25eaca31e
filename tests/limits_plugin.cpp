// SPDX-License-Identifier: MIT
// A shared object that a test loads: it has a trace flag of its own.
#include "trace.h"

namespace {
const traceFlag flag("plugin", 2);
}
