// SPDX-License-Identifier: MIT
// The clock and the sleep of these tests are fake unless a test says otherwise.

#include <gtest/gtest.h>
#include <sys/time.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <string>

#include "datetime.h"
#include "datetime_probe.h"
#include "events.h"
#include "fake_clock.h"
#include "reports.h"
#include "system_calls.h"

namespace datetime_clock_test {

namespace {

volatile std::sig_atomic_t signals = 0;

using fakeClock::sleeps;

std::string text(const timespec& interval) {
  return std::to_string(interval.tv_sec) + " s " + std::to_string(interval.tv_nsec) + " ns";
}

/// Stops the clock, and makes every sleep succeed at once.
class DateTimeClock : public testing::Test {
 protected:
  DateTimeClock() { fakeClock::stop(); }
};

// --- Reading the clock -------------------------------------------------------

TEST_F(DateTimeClock, SubtractsTheMinutesOfTheZone) {
  const struct {
    int zone;
    const char* expected;
  } cases[] = {
      {0, "1794740854.042517"},
      {60, "1794737254.042517"},
      {-60, "1794744454.042517"},
      {1, "1794740794.042517"},
      {330, "1794721054.042517"},
      {-720, "1794784054.042517"},
      {PRECISE_TIME, "1794740854.042517"},
      {LOCAL_TIME, "1794740854.042517"},
      // Neither code is near a real offset, and others are offsets.
      {BAD_TIMEZONE, "1800740794.042517"},
      {-9997, "1795340674.042517"},
      {-10000, "1795340854.042517"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE("zone " + std::to_string(row.zone));
    EXPECT_EQ(raw(DateTime::now(row.zone)), row.expected);
  }
}

TEST_F(DateTimeClock, TakesLocalTimeFromTheSystem) {
  const struct {
    int minutesWest;
    const char* expected;
  } cases[] = {
      {0, "1794740854.042517"},
      {-60, "1794744454.042517"},
      {300, "1794722854.042517"},
      {-345, "1794761554.042517"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(std::to_string(row.minutesWest) + " minutes west");
    fakeClock::now = {1794740854, 42517, row.minutesWest};
    EXPECT_EQ(raw(DateTime::now(LOCAL_TIME)), row.expected);
    EXPECT_EQ(raw(DateTime::now("localtime")), row.expected);
    EXPECT_EQ(raw(DateTime::now(PRECISE_TIME)), "1794740854.042517");
    EXPECT_EQ(raw(DateTime::now(0)), "1794740854.042517");
  }
}

TEST_F(DateTimeClock, TakesTheZoneOfAText) {
  EXPECT_EQ(raw(DateTime::now("+0130")), "1794735454.042517");
  EXPECT_EQ(raw(DateTime::now("-05:00")), "1794758854.042517");
  EXPECT_EQ(raw(DateTime::now("UTC")), "1794740854.042517");
  EXPECT_EQ(raw(DateTime::now("precise")), "1794740854.042517");
  EXPECT_EQ(raw(DateTime::now(std::string())), "1794740854.042517");
}

TEST_F(DateTimeClock, WrapsTheSecondsIn32Bits) {
  fakeClock::now = {0, 5};
  EXPECT_EQ(raw(DateTime::now(60)), "4294963696.000005");
  fakeClock::now = {2147483647, 999999};
  EXPECT_EQ(raw(DateTime::now(-1)), "2147483707.999999");
  fakeClock::now = {-1, 7};  // 1969
  EXPECT_EQ(raw(DateTime::now(0)), "4294967295.000007");
  if constexpr (sizeof(time_t) > 4) {
    fakeClock::now = {static_cast<time_t>(4294967295LL), 0};
    EXPECT_EQ(raw(DateTime::now(0)), "4294967295.000000");
    EXPECT_EQ(raw(DateTime::now(-1)), "59.000000");
    fakeClock::now = {static_cast<time_t>(4294967297LL), 0};
    EXPECT_EQ(raw(DateTime::now(0)), "1.000000");
  }
}

TEST_F(DateTimeClock, GivesAnInvalidTimeWhenTheClockCannotBeRead) {
  fakeClock::now = {1794740854, 42517, 0, true};
  for (const int zone : {0, 60, -60, LOCAL_TIME, PRECISE_TIME}) {
    SCOPED_TRACE("zone " + std::to_string(zone));
    const DateTime time = DateTime::now(zone);
    EXPECT_FALSE(time.okay());
    EXPECT_EQ(time.format(DS_ISO8601), "<bad time>");
  }
  EXPECT_EQ(raw(DateTime::now(0)), "0.invalid");
}

TEST(DateTimeNow, FollowsTheSystemsClock) {
  timeval before;
  timeval after;
  ASSERT_EQ(systemCalls::gettimeofday.real(&before, nullptr), 0);
  const DateTime now = DateTime::now(0);
  ASSERT_EQ(systemCalls::gettimeofday.real(&after, nullptr), 0);
  const rawTime first(static_cast<unsigned long>(before.tv_sec),
                      static_cast<unsigned long>(before.tv_usec));
  const rawTime last(static_cast<unsigned long>(after.tv_sec),
                     static_cast<unsigned long>(after.tv_usec));
  EXPECT_FALSE(now < first) << raw(now) << " is before " << raw(first);
  EXPECT_FALSE(last < now) << raw(now) << " is after " << raw(last);
}

// --- Zones -------------------------------------------------------------------

TEST(DateTimeTimezone, HasItsCodes) {
  EXPECT_EQ(LOCAL_TIME, -9999);
  EXPECT_EQ(PRECISE_TIME, -9998);
  EXPECT_EQ(BAD_TIMEZONE, -99999);
}

TEST(DateTimeTimezone, ReadsTheTextOfAZone) {
  const struct {
    const char* text;
    int zone;
  } cases[] = {
      {"L", -9999},
      {"l", -9999},
      {"localtime", -9999},
      {"London", -9999},
      {"P", -9998},
      {"p", -9998},
      {"precise", -9998},
      {"Paris", -9998},
      {"+0130", 90},
      {"+01:30", 90},
      {"0130", 90},
      {"01:30", 90},
      {"-0130", -90},
      {"-05:00", -300},
      {"+05", 300},
      {"5", 300},
      {"-5", -300},
      {"1:05", 65},
      {"+1:3", 63},
      {"-00:30", -30},
      {"+00:00", 0},
      {"+01x30", 90},
      {"+01300", 90},
      {"530", 3180},
      {"+0199", 159},
      {"99:99", 6039},
      {"+14:00 or so", 840},
      // White space is not a separator, and one separator is enough.
      {"+01 30", 60},
      {"+01::30", 60},
      {"+ 01", 0},
      {"+", 0},
      {"-", 0},
      {"+-5", 0},
      {"--5", 0},
      {"", 0},
      {"UTC", 0},
      {"GMT+1", 0},
      {"Z", 0},
      {" +01", 0},
      {":30", 0},
      {"\xE9", 0},
      {"\xFF", 0},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(DateTime::timezone(row.text), row.zone);
  }
}

// --- Waiting -----------------------------------------------------------------

TEST_F(DateTimeClock, DoesNotSleepForATimeThatHasCome) {
  EXPECT_TRUE(rawTime(1794740854, 42517).wait());
  EXPECT_TRUE(rawTime(1794740854, 42516).wait());
  EXPECT_TRUE(rawTime(1794740853, 999999).wait());
  EXPECT_TRUE(DateTime::MIN_TIME.wait());
  EXPECT_EQ(sleeps.size(), 0U);
}

TEST_F(DateTimeClock, DoesNotWaitForAnInvalidTime) {
  reportCatcher probe(5);
  EXPECT_FALSE(DateTime().wait());
  EXPECT_FALSE(rawTime(0xFFFFFFFF, 0xFFFFFFFF).wait());
  EXPECT_EQ(sleeps.size(), 0U);
  EXPECT_EQ(probe.seen.size(), 0U);
}

TEST_F(DateTimeClock, DoesNotWaitWithoutAClock) {
  fakeClock::now = {1794740854, 42517, 0, true};
  reportCatcher probe(5);
  EXPECT_FALSE(DateTime::MAX_TIME.wait());
  EXPECT_FALSE(DateTime::MIN_TIME.wait());
  EXPECT_EQ(sleeps.size(), 0U);
  EXPECT_EQ(probe.seen.size(), 0U);
}

TEST_F(DateTimeClock, SleepsForWhatIsLeft) {
  const struct {
    fakeClock::reading now;
    rawTime time;
    const char* expected;
  } cases[] = {
      {{98, 250000}, {100, 500000}, "2 s 250000000 ns"},
      {{98, 500000}, {100, 500000}, "2 s 0 ns"},
      {{98, 500000}, {98, 500001}, "0 s 1000 ns"},
      // A second is borrowed.
      {{98, 500000}, {100, 250000}, "1 s 750000000 ns"},
      {{99, 999999}, {100, 0}, "0 s 1000 ns"},
      {{99, 1}, {100, 0}, "0 s 999999000 ns"},
      {{1794740854, 42517}, {1794740859, 42517}, "5 s 0 ns"},
      {{2147483647, 0}, {2147483649, 0}, "2 s 0 ns"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(raw(row.time));
    fakeClock::now = row.now;
    sleeps.clear();
    EXPECT_TRUE(row.time.wait());
    ASSERT_EQ(sleeps.size(), 1U);
    EXPECT_EQ(text(sleeps[0]), row.expected);
  }
}

TEST_F(DateTimeClock, SleepsOnAfterASignal) {
  reportCatcher probe(5);
  fakeClock::sleepEnds = {{EINTR, {3, 123456789}}, {EINTR, {0, 1}}, {0, {}}};
  EXPECT_TRUE(rawTime(1794740859, 42517).wait());
  ASSERT_EQ(sleeps.size(), 3U);
  EXPECT_EQ(text(sleeps[0]), "5 s 0 ns");
  EXPECT_EQ(text(sleeps[1]), "3 s 123456789 ns");
  EXPECT_EQ(text(sleeps[2]), "0 s 1 ns");
  EXPECT_EQ(probe.seen.size(), 0U);
}

TEST_F(DateTimeClock, ReportsThatTheSystemCannotSleep) {
  reportCatcher probe(5);
  fakeClock::sleepEnds = {{EINVAL, {0, 0}}};
  EXPECT_FALSE(rawTime(1794740859, 42517).wait());
  EXPECT_EQ(sleeps.size(), 1U);
  ASSERT_EQ(probe.seen.size(), 1U);
  const seenReport& report = probe.seen[0];
  EXPECT_EQ(report.written, "Failure: O/S/Invalid argument \"nanosleep()\" | DateTime::wait()");
  EXPECT_EQ(report.domain, "O/S");
  EXPECT_EQ(report.severity, FAILURE);
  EXPECT_EQ(report.audience, AUD_ALL);
  EXPECT_EQ(report.code, EINVAL);
  EXPECT_EQ(report.qualifier, "nanosleep()");
  EXPECT_EQ(report.operation, "DateTime::wait()");
}

TEST_F(DateTimeClock, ReportsAFailureBehindASignal) {
  reportCatcher probe(5);
  fakeClock::sleepEnds = {{EINTR, {2, 0}}, {EFAULT, {1, 0}}};
  EXPECT_FALSE(rawTime(1794740859, 42517).wait());
  EXPECT_EQ(sleeps.size(), 2U);
  ASSERT_EQ(probe.seen.size(), 1U);
  EXPECT_EQ(probe.seen[0].written, "Failure: O/S/Bad address \"nanosleep()\" | DateTime::wait()");
}

TEST(DateTimeWait, ReturnsWhenTheTimeHasCome) {
  const DateTime time = DateTime::now(0) + 0.2;
  EXPECT_TRUE(time.wait());
  // The clock may be slewed a little meanwhile.
  EXPECT_LT(time - DateTime::now(0), 0.01) << "returned too early";
}

TEST(DateTimeWait, IsNotCutShortBySignals) {
  struct sigaction action = {};
  struct sigaction before;
  action.sa_handler = [](int) { signals = signals + 1; };
  ASSERT_EQ(sigaction(SIGALRM, &action, &before), 0);
  const itimerval often = {{0, 50000}, {0, 50000}};
  const itimerval never = {};

  signals = 0;
  const DateTime time = DateTime::now(0) + 0.4;
  ASSERT_EQ(setitimer(ITIMER_REAL, &often, nullptr), 0);
  EXPECT_TRUE(time.wait());
  const DateTime end = DateTime::now(0);
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &before, nullptr);

  EXPECT_LT(time - end, 0.01) << "returned too early";
  EXPECT_GE(signals, 1) << "no signal came";
}

}  // namespace

}  // namespace datetime_clock_test
