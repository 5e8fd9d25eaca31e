// SPDX-License-Identifier: MIT
// The clock and the sleep of tests, for programs that say WRAPS: the clock says what a test
// wants and does not move, and nobody sleeps.
//
//     fakeClock::stop();                      // until the end of the test
//     fakeClock::now.fails = true;            // it cannot be read
//     EXPECT_EQ(fakeClock::sleeps.size(), 1U);
#pragma once

#include <sys/time.h>

#include <cerrno>
#include <cstddef>
#include <ctime>
#include <vector>

#include "system_calls.h"

namespace fakeClock {

/// What the clock says, in seconds since 1970 and microseconds.
struct reading {
  std::time_t seconds;
  long micros;
  int minutesWest = 0;  ///< of Greenwich
  bool fails = false;
};

/// Sunday 2026-11-15 11:07:34.042517 UTC.
inline constexpr reading USUAL{1794740854, 42517};

inline reading now = USUAL;

/// How a sleep ends: with an error number and what was left of it, or with 0.
struct sleepEnd {
  int error;
  timespec remainder;
};

/// How sleeps end, in turn; further ones succeed at once.
inline std::vector<sleepEnd> sleepEnds;

/// The sleeps that were asked for.
inline std::vector<timespec> sleeps;

inline int read(timeval* time, void* zone) {
  if (now.fails) {
    errno = EFAULT;
    return -1;
  }
  if (time != nullptr) {
    time->tv_sec = now.seconds;
    time->tv_usec = static_cast<decltype(time->tv_usec)>(now.micros);
  }
  if (zone != nullptr) {
    *static_cast<struct timezone*>(zone) = {now.minutesWest, 0};
  }
  return 0;
}

inline int sleep(const timespec* request, timespec* remainder) {
  const std::size_t turn = sleeps.size();
  sleeps.push_back(*request);
  if (turn >= sleepEnds.size() || sleepEnds[turn].error == 0) {
    return 0;
  }
  if (remainder != nullptr) {
    *remainder = sleepEnds[turn].remainder;
  }
  errno = sleepEnds[turn].error;
  return -1;
}

/// Stops the clock until the end of the test.  No sleep has been asked for.
inline void stopAt(const reading& time) {
  now = time;
  sleepEnds.clear();
  sleeps.clear();
  systemCalls::gettimeofday.replace(read);
  systemCalls::nanosleep.replace(sleep);
}
inline void stop() {
  stopAt(USUAL);
}

}  // namespace fakeClock
