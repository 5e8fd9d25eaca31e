// SPDX-License-Identifier: MIT
// What happens when memory runs out: the link is refused, in words that need no memory.
#pragma once

#include "options.h"

namespace hopopen {

/// Has the process say so and end where an exception cannot be thrown for want of memory.
/// `asked` is looked at then, and must outlive the process.
void guardMemory(const options& asked);

/// Says so without taking memory, and on the desktop if there is enough for that again.
/// Returns the exit status.
int refuseWithoutMemory(const options& asked);

}  // namespace hopopen
