// SPDX-License-Identifier: MIT
// Assertions: the report, and the end of the process.

#include "asserts.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <ostream>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "children.h"
#include "events.h"
#include "kept_traces.h"
#include "reports.h"
#include "threading.h"

namespace asserts_test {

namespace {

template <class Report>
concept onTheHeap = requires {
  new Report("", "", 0);
};
template <class Report>
concept onTheStack = requires {
  Report("", "", 0);
};

static_assert(onTheStack<assertEvent> && !onTheHeap<assertEvent>);
static_assert(!std::is_copy_constructible_v<assertEvent>);
static_assert(!std::is_copy_assignable_v<assertEvent>);

// What is printed of a report, except for the stack trace.
std::string told(const eventReport& event) {
  const seenReport seen = look(event);
  return std::to_string(seen.severity) + " " + std::to_string(seen.audience) + " " +
         std::to_string(seen.code) + " " + seen.domain + " [" + seen.qualifier + "] [" +
         seen.operation + "] " + event.codeText();
}

// What a handler saw of a failing assertion, and how the process ended.
template <class Body>
std::string toldOf(Body body) {
  const processEnd end = runSharingChild([&] {
    reportTeller handler(STDERR_FILENO, told);
    body();
    std::_Exit(42);
  });
  return end.errors + end.ending;
}

std::string expected(const char* expression, const std::string& position) {
  return "4 31 0 assert [" + std::string(expression) + "] [" + position +
         "] assert failure\nsignal 6";
}

std::string here(int line) {
  return "../tests/asserts_test @ " + std::to_string(line);
}

// --- The event -------------------------------------------------------------

TEST(assertEvent, HasItsFields) {
  reportCatcher probe(5);
  {
    assertEvent event("a == \"b\"", "../utilities/uri", 142);
    EXPECT_EQ(event.severity(), FATAL);
    EXPECT_EQ(event.audience(), AUD_ALL);
    EXPECT_EQ(event.code(), 0);
    EXPECT_EQ(event.qualifier(), "a == \"b\"");
    EXPECT_EQ(event.operation(), "../utilities/uri @ 142");
    EXPECT_STREQ(event.domain(), "assert");
    EXPECT_TRUE(event.parameters().empty());
    EXPECT_TRUE(probe.seen.empty());
  }
  ASSERT_EQ(probe.seen.size(), 1u) << "reported by its destructor";
  EXPECT_EQ(probe.seen[0].operation, "../utilities/uri @ 142");
}

TEST(assertEvent, HasOneTextForEveryCode) {
  const assertEvent event("x", "y", 1);
  for (const int code : {0, 1, -1, 4711}) EXPECT_EQ(event.codeToText(code), "assert failure");
  EXPECT_EQ(event.codeText(), "assert failure");
}

TEST(assertEvent, WritesItsReportAndAStackTrace) {
  assertEvent event("++result < 10000", "../brimcore/language", 7);
  event.addParameter("p");
  const std::string written = look(event).written;
  const std::string start =
      "Fatal: assert/assert failure \"++result < 10000\" { \"p\" } | ../brimcore/language @ 7\n"
      "Stack trace:\n";
  const std::string finish = "\nEnd of stack trace\n\n";
  ASSERT_GT(written.size(), start.size() + finish.size());
  EXPECT_EQ(written.substr(0, start.size()), start);
  EXPECT_EQ(written.substr(written.size() - finish.size()), finish);
}

TEST(assertEvent, IsFlushedBeforeAndBehindItsStackTrace) {
  class buffer : public std::stringbuf {
   public:
    std::vector<std::string> flushed;

   protected:
    int sync() override {
      flushed.push_back(str());
      return 0;
    }
  } target;
  std::ostream out(&target);
  out << assertEvent("x", "../utilities/uri", 1);
  ASSERT_EQ(target.flushed.size(), 2u);
  EXPECT_EQ(target.flushed[0], "Fatal: assert/assert failure \"x\" | ../utilities/uri @ 1\n");
  EXPECT_EQ(target.flushed[1], target.str());
}

TEST(assertEvent, TakesAnyLineAndFile) {
  const struct {
    const char* file;
    int line;
    const char* expected;
  } cases[] = {
      {"f", 0, "f @ 0"},
      {"", 1, " @ 1"},
      {"f", -1, "f @ -1"},
      {"f", 2147483647, "f @ 2147483647"},
  };
  for (const auto& c : cases) EXPECT_EQ(assertEvent("x", c.file, c.line).operation(), c.expected);
}

TEST(assertEvent, IsReportedOnce) {
  reportCatcher probe(5);
  {
    assertEvent event("x", "y", 1);
    event.report();
    event.report();
  }
  EXPECT_EQ(probe.seen.size(), 1u);
}

// --- Conditions that hold --------------------------------------------------

TEST(ASSERT, PassesAConditionThatHolds) {
  reportCatcher probe(5);
  int evaluated = 0;
  ASSERT(++evaluated == 1);
  ASSERT_AT(++evaluated == 2, "../utilities/uri", 142);
  EXPECT_EQ(evaluated, 2) << "a condition is evaluated once";
  const int* pointer = &evaluated;
  ASSERT(pointer);
  EXPECT_TRUE(probe.seen.empty());
}

TEST(ASSERT, IsOneStatementWhateverStandsAroundIt) {
  int branch = 0;
  if (branch == 0)
    ASSERT(branch < 1);
  else
    branch = 1;
  EXPECT_EQ(branch, 0);
  (ASSERT(true), branch = 2);
  EXPECT_EQ(branch, 2);
}

// --- Conditions that fail --------------------------------------------------

TEST(ASSERT, ReportsTheConditionAndItsPositionAndAborts) {
  const int two = 2;
  int line = __LINE__ + 1;
  const auto wrong = [&] { ASSERT(two + two == 5); };
  EXPECT_EQ(toldOf(wrong), expected("two + two == 5", here(line)));
  line = __LINE__ + 1;
  const auto unconditional = [] { ASSERT(false); };
  EXPECT_EQ(toldOf(unconditional), expected("false", here(line)));
  line = __LINE__ + 1;
  const auto explained = [&] { ASSERT(two == 1 && "why\\not"); };
  EXPECT_EQ(toldOf(explained), expected("two == 1 && \"why\\\\not\"", here(line)));
}

TEST(ASSERT, ReportsAGivenPosition) {
  const struct {
    const char* file;
    int line;
    const char* expected;
  } cases[] = {
      {"../utilities/uri", 142, "../utilities/uri @ 142"},
      {"../brimcore/configRef", 122, "../brimcore/configRef @ 122"},
      {"../utilities/unix/stack_unx", 1, "../utilities/unix/stack_unx @ 1"},
      // An ending is left out; a dot in a folder's name does not begin one.
      {"../utilities/uri.cpp", 142, "../utilities/uri @ 142"},
      {"../include/uri.h", 9, "../include/uri @ 9"},
      {"../release-1.2/uri", 9, "../release-1.2/uri @ 9"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(toldOf([&] { ASSERT_AT(c.line < 0, c.file, c.line); }),
              expected("c.line < 0", c.expected));
  }
  EXPECT_EQ(toldOf([] { ASSERT_AT(false, "../utilities/uri", 201); }),
            expected("false", "../utilities/uri @ 201"));
}

TEST(ASSERT, AbortsWhetherOrNotTheReportIsClaimed) {
  for (const bool claims : {true, false}) {
    const processEnd end = runSharingChild([claims] {
      reportTeller handler(STDERR_FILENO, told, claims);
      ASSERT_AT(false, "f", 1);
    });
    EXPECT_EQ(end.errors + end.ending, expected("false", "f @ 1"));
  }
}

TEST(ASSERT, AbortsSilentlyWhenTheStoringHandlerClaimsTheReport) {
  const processEnd end = runSharingChild([] {
    stderrHandler handler(100, AUD_ALL);
    ASSERT(false);
  });
  EXPECT_EQ(end.ending, "signal 6");
  EXPECT_EQ(end.errors, "");
}

TEST(ASSERT, AbortsSilentlyWhenTheReportIsIgnored) {
  const processEnd end = runSharingChild([] {
    ThreadData::instance(false);
    ignoreHandler handler(1, FATAL, AUD_ALL);
    ASSERT(false);
  });
  EXPECT_EQ(end.ending, "signal 6");
  EXPECT_EQ(end.errors, "");
}

TEST(ASSERT, ShowsReportAndTraceOnStandardError) {
  for (const bool ownMap : {false, true}) {
    const processEnd end = runSharingChild([ownMap] {
      if (ownMap) ThreadData::instance(false);
      stderrHandler handler(5, AUD_ALL);
      ASSERT_AT(1 > 2, "../utilities/uri", 142);
    });
    EXPECT_EQ(end.ending, "signal 6");
    // The time stamp has 22 characters: 20261115T110734.042517.
    const std::string start =
        ": Fatal: assert/assert failure \"1 > 2\" | ../utilities/uri @ 142\nStack trace:\n";
    const std::string finish = "\nEnd of stack trace\n\n\n";
    ASSERT_GT(end.errors.size(), 22 + start.size() + finish.size()) << end.errors;
    EXPECT_EQ(end.errors.substr(22, start.size()), start) << end.errors;
    EXPECT_EQ(end.errors.substr(end.errors.size() - finish.size()), finish) << end.errors;
  }
}

TEST(ASSERT, ReportsOnceAndNeverReturns) {
  std::string told = toldOf([] {
    ASSERT_AT(false, "f", 1);
    ASSERT_AT(false, "g", 2);
  });
  EXPECT_EQ(told, expected("false", "f @ 1"));
  told = toldOf([] { assertionFailed("direct", "../utilities/uri.cpp", 3); });
  EXPECT_EQ(told, expected("direct", "../utilities/uri @ 3"));
}

}  // namespace

}  // namespace asserts_test
