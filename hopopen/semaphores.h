// SPDX-License-Identifier: MIT
// How many more semaphore sets of System V this machine can have.
#pragma once

#include <optional>

namespace hopopen {

/// The number of sets that can still be drawn; nothing when the system does not tell.
std::optional<int> semaphoreSetsLeft();

}  // namespace hopopen
