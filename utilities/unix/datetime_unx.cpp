// SPDX-License-Identifier: MIT
#include "datetime.h"

#include <sys/time.h>

#include <cerrno>
#include <cstdint>
#include <ctime>

#include "events.h"

DateTime DateTime::now(int zone) {
  struct timeval clock;
  struct timezone local;
  if (gettimeofday(&clock, &local) != 0) {
    return BAD_TIME;
  }
  // Unsigned, so that the seconds wrap.  The subtracted number may be negative.
  auto seconds = static_cast<std::uint32_t>(clock.tv_sec);
  if (zone == LOCAL_TIME) {
    seconds -= static_cast<std::uint32_t>(local.tz_minuteswest) * 60;
  } else if (zone != PRECISE_TIME) {
    seconds -= static_cast<std::uint32_t>(zone) * 60;
  }
  return DateTime(seconds, static_cast<unsigned long>(clock.tv_usec));
}

bool DateTime::wait() const {
  const DateTime current = now(0);
  if (!okay() || !current.okay()) {
    return false;
  }
  if (!(current < *this)) {
    return true;
  }
  std::uint32_t seconds = m_seconds - current.m_seconds;
  std::int64_t microseconds = std::int64_t{m_microseconds} - current.m_microseconds;
  if (microseconds < 0) {
    seconds--;
    microseconds += 1000000;
  }
  struct timespec rest;
  rest.tv_sec = static_cast<time_t>(seconds);
  rest.tv_nsec = static_cast<long>(microseconds * 1000);
  while (nanosleep(&rest, &rest) != 0) {
    if (errno != EINTR) {
      OSevent(FAILURE, AUD_ALL, "nanosleep()", "DateTime::wait()");
      return false;
    }
  }
  return true;
}
