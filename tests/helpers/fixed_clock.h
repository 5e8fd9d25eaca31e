// A clock that stands still at 2026-11-15 11:07:34.042517 UTC, for a test that is
// linked with `gettimeofday` wrapped.  For one source file of a program only.
#pragma once

#include <sys/time.h>

/// Minutes west of Greenwich, as the clock tells them.
inline int minutesWest = 0;

extern "C" int __wrap_gettimeofday(struct timeval* now, void* zone) {
  if (now != nullptr) {
    now->tv_sec = 1794740854;
    now->tv_usec = 42517;
  }
  if (zone != nullptr) {
    static_cast<struct timezone*>(zone)->tz_minuteswest = minutesWest;
    static_cast<struct timezone*>(zone)->tz_dsttime = 0;
  }
  return 0;
}
