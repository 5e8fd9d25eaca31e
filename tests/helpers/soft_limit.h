// SPDX-License-Identifier: MIT
// Limits for programs that tests run.
#pragma once

#include <sys/resource.h>

/// Limits what this process and those that it becomes and starts may use of a resource.  The
/// most that they may set stays, so that what counts coverage can lift the limit for itself.
/// False when that cannot be.
template <class Resource>
bool setSoftLimit(Resource resource, rlim_t most) {
  rlimit limit{};
  if (getrlimit(resource, &limit) != 0) {
    return false;
  }
  limit.rlim_cur = most;
  return setrlimit(resource, &limit) == 0;
}
