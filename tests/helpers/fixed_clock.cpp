#include "fixed_clock.h"

#include <sys/time.h>

extern "C" int __wrap_gettimeofday(struct timeval* now, void* zone);

int __wrap_gettimeofday(struct timeval* now, void* zone) {
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
