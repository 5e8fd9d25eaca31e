// SPDX-License-Identifier: MIT
// The handler that passes reports to the system log.

#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <string>
#include <vector>

#include "events.h"
#include "reports.h"
#include "system_calls.h"
#include "trace.h"

namespace syslog_test {

namespace {

struct record {
  int priority;
  std::string format;
};
std::vector<record> records;

// The format is kept as it came; what it would convert was not passed.
const replacedCalls here(__FILE__, [] {
  systemCalls::syslog.replace([](int priority, const char* format, std::va_list) {
    records.push_back({priority, format});
  });
});

TEST(systemLogHandler, PassesTheWrittenReport) {
  systemLogHandler handler(5, AUD_ALL);
  {
    commonEvent event(FAILURE, AUD_ALL, EC_UNKNOWN_VALUE, "ftp\n", "open");
    event.addParameter("a");
  }
  OSevent(WARNING, AUD_DEVEL, 2, "", "");
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].format, "Failure: commonEvent/unknown value \"ftp\\n\" { \"a\" } | open");
  EXPECT_EQ(records[0].priority, 3);
  EXPECT_EQ(records[1].format, "Warning: O/S/No such file or directory \"\"");
  EXPECT_EQ(records[1].priority, 4);
}

TEST(systemLogHandler, PassesPerCentSignsUnchangedAsTheFormat) {
  systemLogHandler handler(5, AUD_ALL);
  commonEvent(SEVERE, AUD_ALL, EC_COMMENT, "100% %s %n %%", "50%d");
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].format, "Severe: commonEvent/comment \"100% %s %n %%\" | 50%d");
}

TEST(systemLogHandler, ChoosesThePriorityBySeverity) {
  const struct {
    eventSeverity severity;
    int expected;
  } cases[] = {
      {SUCCESS, 6},
      {WARNING, 4},
      {FAILURE, 3},
      {SEVERE, 2},
      {FATAL, 1},
      {static_cast<eventSeverity>(5), 7},
      {static_cast<eventSeverity>(-1), 7},
      {static_cast<eventSeverity>(INT_MAX), 7},
      {static_cast<eventSeverity>(INT_MIN), 7},
  };
  systemLogHandler handler(5, AUD_ALL);
  for (const auto& c : cases) {
    SCOPED_TRACE(static_cast<int>(c.severity));
    records.clear();
    EXPECT_EQ(priority(c.severity), c.expected);
    commonEvent(c.severity, AUD_ALL, EC_COMMENT, "", "");
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].priority, c.expected);
  }
}

TEST(systemLogHandler, ClaimsWhatNobodyElseIsLeftFor) {
  const struct {
    const char* situation;
    eventSeverity severity;
    int reported;
    bool claimed;
    int left;
    bool passed;
  } cases[] = {
      {"no overlap", FAILURE, 4, false, 4, false},
      {"no overlap with several", FATAL, 28, false, 28, false},
      {"part overlap", FAILURE, 5, false, 4, true},
      {"part overlap with all", SUCCESS, 31, false, 28, true},
      {"full overlap with one", SUCCESS, 1, true, 0, true},
      {"full overlap with both", FATAL, 3, true, 0, true},
      {"a severity below all", static_cast<eventSeverity>(-1), 2, true, 0, true},
      {"audience already empty", FAILURE, 0, true, 0, false},
  };
  systemLogHandler handler(100, AUD_USER);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.situation);
    records.clear();
    bareEvent event(c.severity, static_cast<eventAudience>(c.reported));
    EXPECT_EQ(handler.handle(event), c.claimed);
    EXPECT_EQ(static_cast<int>(event.audience()), c.left);
    EXPECT_EQ(records.size(), c.passed ? 1u : 0u);
  }
}

TEST(systemLogHandler, ThatServesNobodyPassesNothing) {
  systemLogHandler handler(100, AUD_NULL);
  bareEvent forAll(FAILURE, AUD_ALL), forNobody(FAILURE, AUD_NULL);
  EXPECT_FALSE(handler.handle(forAll));
  EXPECT_TRUE(handler.handle(forNobody));
  EXPECT_TRUE(records.empty());
}

TEST(systemLogHandler, AddsNeitherThreadNorStack) {
  ASSERT_TRUE(traceFlag::set("reportThread", 1));
  ASSERT_TRUE(traceFlag::set("reportStack", 1));
  systemLogHandler handler(5, AUD_ALL);
  commonEvent(FATAL, AUD_ALL, EC_COMMENT, "x", "y");
  traceFlag::set("reportThread", 0);
  traceFlag::set("reportStack", 0);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].format, "Fatal: commonEvent/comment \"x\" | y");
}

TEST(systemLogHandler, IsNotReachedByWhatTheStoringHandlerClaims) {
  systemLogHandler handler(100, AUD_ALL);
  commonEvent(FATAL, AUD_ALL, EC_COMMENT, "x", "y");
  EXPECT_TRUE(records.empty());
}

}  // namespace

}  // namespace syslog_test
