// SPDX-License-Identifier: MIT
// What the handlers write: dates, lines, thread ids and stack traces.

#include <gtest/gtest.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cstddef>
#include <iostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "DistName.h"
#include "asserts.h"
#include "captured_errors.h"
#include "children.h"
#include "configDB.h"
#include "datetime.h"
#include "events.h"
#include "fake_clock.h"
#include "kept_traces.h"
#include "reports.h"
#include "system_calls.h"
#include "threading.h"
#include "trace.h"

namespace handler_output_test {

namespace {

// One operation on a critical section, and how much was written before it.
struct sectionStep {
  int section;
  int change;
  std::size_t written;
};

std::vector<sectionStep> steps;
const capturedErrors* watched = nullptr;

int recordedStep(int set, sembuf* operations, std::size_t count) {
  for (std::size_t i = 0; i < count; i++)
    steps.push_back(
        {operations[i].sem_num, operations[i].sem_op, watched == nullptr ? 0 : watched->size()});
  return systemCalls::semop.real(set, operations, count);
}

const replacedCalls here(__FILE__, [] {
  systemCalls::semop.replace(recordedStep);
  fakeClock::stop();
});

// Makes `value` the value of a configuration item.
void configure(const char* item, const std::string& value) {
  ThreadData::instance(false);
  getDateFormat("");  // the first read publishes the database
  {
    editableConfigDB editor;
    editor.set(item, value, DistName(), false);
  }
  threadedConfigDB::refresh();
}

void report() {
  commonEvent(FAILURE, AUD_ALL, EC_UNKNOWN_VALUE, "ftp", "open");
}

std::string logged(const std::string& dateFormat, int timeZone) {
  std::ostringstream out;
  loggingHandler handler(out, 5, AUD_ALL, dateFormat, timeZone);
  report();
  return out.str();
}

std::string stored() {
  storingHandler handler(5, AUD_ALL, SUCCESS);
  report();
  return handler.str();
}

std::string onStandardError() {
  const capturedErrors errors;
  stderrHandler handler(5, AUD_ALL);
  report();
  return errors.str();
}

// --- Lines -----------------------------------------------------------------

TEST(stderrHandler, WritesALineWithTheTimeToTheMicrosecond) {
  EXPECT_EQ(onStandardError(),
            "20261115T110734.042517: Failure: commonEvent/unknown value \"ftp\" | open\n");
}

TEST(stderrHandler, TakesTheTimeOfNoZone) {
  fakeClock::now.minutesWest = -60;
  EXPECT_EQ(onStandardError(),
            "20261115T110734.042517: Failure: commonEvent/unknown value \"ftp\" | open\n");
}

TEST(stderrHandler, WritesAllThatAReportHas) {
  const capturedErrors errors;
  stderrHandler handler(5, AUD_ALL);
  {
    commonEvent event(SEVERE, AUD_OUSER, EC_LOOPING, "a\nb", "");
    event.addParameter("1");
    event.addParameter("2%");
  }
  OSevent(WARNING, AUD_OUSER, 2, "", "load");
  EXPECT_EQ(errors.str(),
            "20261115T110734.042517: Severe: commonEvent/?infinite? loop \"a\\nb\" "
            "{ \"1\" \"2%\" }\n"
            "20261115T110734.042517: Warning: O/S/No such file or directory \"\" | load\n");
}

TEST(storingHandler, WritesALineWithTheTimeToTheSecond) {
  fakeClock::now.minutesWest = -60;
  EXPECT_EQ(stored(), "20261115T110734: Failure: commonEvent/unknown value \"ftp\" | open\n");
}

TEST(storingHandler, CollectsWhatItStores) {
  storingHandler handler(5, AUD_ALL, SUCCESS);
  EXPECT_EQ(handler.str(), "");
  report();
  commonEvent(SUCCESS, AUD_DEVEL, EC_COMMENT, "", "");
  EXPECT_EQ(handler.str(),
            "20261115T110734: Failure: commonEvent/unknown value \"ftp\" | open\n"
            "20261115T110734: Success: commonEvent/comment \"\"\n");
}

TEST(loggingHandler, WritesTheDateOfItsPatternAndZone) {
  const struct {
    const char* pattern;
    int zone;
    int west;
    const char* expected;
  } cases[] = {
      {"[%f %i %d %H:%M:%S %Y] ", 0, 0, "[Sun Nov 15 11:07:34 2026] : "},
      {"%d/%m/%y %H:%M:%N", 0, 0, "15/11/26 11:07:34.042517: "},
      {"no date", 0, 0, "no date: "},
      {"%", 0, 0, "%: "},
      {"%%n%q", 0, 0, "%n%q: "},
      // Minutes are subtracted from the clock.
      {"%Y%m%dT%H%M%S", 60, 0, "20261115T100734: "},
      {"%Y%m%dT%H%M%S", -90, 0, "20261115T123734: "},
      {"%Y%m%dT%H%M%S", 1440, 0, "20261114T110734: "},
      {"%Y%m%dT%H%M%S", PRECISE_TIME, -120, "20261115T110734: "},
      {"%Y%m%dT%H%M%S", LOCAL_TIME, -120, "20261115T130734: "},
      {"%Y%m%dT%H%M%S", LOCAL_TIME, 300, "20261115T060734: "},
      {"%Y%m%dT%H%M%S", 0, 300, "20261115T110734: "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    fakeClock::now.minutesWest = c.west;
    EXPECT_EQ(logged(c.pattern, c.zone),
              c.expected + std::string("Failure: commonEvent/unknown value \"ftp\" | open\n"));
  }
}

TEST(loggingHandler, TakesPatternAndZoneFromTheConfiguration) {
  fakeClock::now.minutesWest = -60;
  EXPECT_EQ(logged("", BAD_TIMEZONE),
            "[Sun Nov 15 12:07:34 2026] : Failure: commonEvent/unknown value \"ftp\" | open\n");
  EXPECT_EQ(logged("", 0),
            "[Sun Nov 15 11:07:34 2026] : Failure: commonEvent/unknown value \"ftp\" | open\n");
  EXPECT_EQ(logged("%H", BAD_TIMEZONE), "12: Failure: commonEvent/unknown value \"ftp\" | open\n");
}

TEST(loggingHandler, FollowsAnOverrideOfTheConfiguration) {
  configure("LogDateFormat", "%H.%M");
  configure("LogTimeZone", "+0130");
  EXPECT_EQ(logged("", BAD_TIMEZONE), "09.37: Failure: commonEvent/unknown value \"ftp\" | open\n");
}

TEST(loggingHandler, HasACompactDateWhenTheConfiguredPatternIsEmpty) {
  configure("LogDateFormat", "");
  EXPECT_EQ(logged("", 0), "20261115T110734: Failure: commonEvent/unknown value \"ftp\" | open\n");
}

TEST(loggingHandler, ReadsTheConfigurationWhenItIsConstructed) {
  ThreadData::instance(false);
  std::ostringstream out;
  loggingHandler handler(out, 5, AUD_ALL, "", BAD_TIMEZONE);
  configure("LogDateFormat", "%H.%M");
  configure("LogTimeZone", "+0130");
  report();
  EXPECT_EQ(out.str(),
            "[Sun Nov 15 11:07:34 2026] : Failure: commonEvent/unknown value \"ftp\" | open\n");
}

TEST(getDateFormat, FallsBackToTheConfigurationAndThenToACompactPattern) {
  EXPECT_EQ(getDateFormat("%Y"), "%Y");
  EXPECT_EQ(getDateFormat(" "), " ");
  EXPECT_EQ(getDateFormat(""), "[%f %i %d %H:%M:%S %Y] ");
  configure("LogDateFormat", "%e");
  EXPECT_EQ(getDateFormat(""), "%e");
  EXPECT_EQ(getDateFormat("%Y"), "%Y");
  configure("LogDateFormat", "");
  EXPECT_EQ(getDateFormat(""), "%Y%m%dT%H%M%S");
}

TEST(getTimeZone, FallsBackToTheConfiguration) {
  for (const int zone : {0, 60, -60, LOCAL_TIME, PRECISE_TIME, -99998, 99999})
    EXPECT_EQ(getTimeZone(zone), zone);
  EXPECT_EQ(getTimeZone(-99999), -9999);
  const struct {
    const char* value;
    int expected;
  } cases[] = {{"precise", -9998}, {"-05:00", -300}, {"UTC", 0}, {"", 0}, {"Local", -9999}};
  for (const auto& c : cases) {
    configure("LogTimeZone", c.value);
    EXPECT_EQ(getTimeZone(-99999), c.expected) << "for \"" << c.value << "\"";
    EXPECT_EQ(getTimeZone(60), 60) << "for \"" << c.value << "\"";
  }
}

// --- Flushing and locking --------------------------------------------------

TEST(loggingHandler, FlushesInsideItsSection) {
  class buffer : public std::stringbuf {
   public:
    int flushes = 0;
    bool alwaysHeld = true;
    std::string flushed;

   protected:
    int sync() override {
      flushes++;
      flushed = str();
      alwaysHeld = alwaysHeld && criticalSection::have(CS_LOGOUT);
      return 0;
    }
  } target;
  std::ostream out(&target);
  loggingHandler handler(out, 5, AUD_ALL, "%Y", 0);
  report();
  EXPECT_GE(target.flushes, 1);
  EXPECT_EQ(target.flushed, "2026: Failure: commonEvent/unknown value \"ftp\" | open\n");
  EXPECT_TRUE(target.alwaysHeld);
}

TEST(eventHandler, HoldsItsSectionOnlyWhileItWrites) {
  semaphoreSet(false);
  const capturedErrors errors;
  watched = &errors;
  {
    stderrHandler handler(5, AUD_ALL);
    steps.clear();
    report();
  }
  ASSERT_EQ(steps.size(), 2u);
  EXPECT_EQ(steps[0].section, 0);
  EXPECT_EQ(steps[0].change, -1);
  EXPECT_EQ(steps[0].written, 0u);
  EXPECT_EQ(steps[1].section, 0);
  EXPECT_EQ(steps[1].change, 1);
  EXPECT_EQ(steps[1].written,
            sizeof "20261115T110734.042517: Failure: commonEvent/unknown value \"ftp\" | open");
  watched = nullptr;
  {
    std::ostringstream out;
    loggingHandler handler(out, 5, AUD_ALL, "%Y", 0);
    steps.clear();
    report();
  }
  ASSERT_EQ(steps.size(), 2u);
  EXPECT_EQ(steps[0].section, 1);
  EXPECT_EQ(steps[0].change, -1);
  EXPECT_EQ(steps[1].section, 1);
  EXPECT_EQ(steps[1].change, 1);
}

TEST(eventHandler, BuildsItsMessageBeforeItTakesItsSection) {
  // Notes at each write whether a section is held.
  class watcher : public bareEvent {
   public:
    explicit watcher(std::string& notes) : bareEvent(FAILURE, AUD_ALL), m_notes(notes) {}

   protected:
    void writeExtras(std::ostream&) const override {
      const bool held = criticalSection::have(CS_STDOUT) || criticalSection::have(CS_LOGOUT);
      m_notes += held ? "held " : "free ";
    }

   private:
    std::string& m_notes;
  };
  const capturedErrors errors;
  std::ostringstream out;
  stderrHandler toErrors(3, AUD_OUSER);
  loggingHandler toLog(out, 4, AUD_DEVEL, "%Y", 0);
  std::string notes;
  watcher(notes).report();
  EXPECT_EQ(notes.substr(0, 10), "free free ");
  EXPECT_EQ(out.str(), "2026: Failure: bare/0 \"what\"\n");
}

TEST(eventHandler, TakesNoSectionWhenItWritesNothing) {
  semaphoreSet(false);
  std::ostringstream out;
  stderrHandler toErrors(3, AUD_DEVEL);
  loggingHandler toLog(out, 4, AUD_DEVEL, "%Y", 0);
  storingHandler toMemory(5, AUD_OUSER, SUCCESS);
  steps.clear();
  commonEvent(FAILURE, AUD_OUSER, EC_COMMENT, "x", "y");
  EXPECT_TRUE(steps.empty()) << "section " << steps[0].section;
}

TEST(eventHandler, CannotWriteOnceTheSectionsHaveGone) {
  for (const bool toErrors : {true, false}) {
    const processEnd end = runSharingChild([toErrors] {
      semaphoreClose();
      if (toErrors) {
        stderrHandler handler(5, AUD_ALL);
        report();
      } else {
        loggingHandler handler(std::cerr, 5, AUD_ALL, "%Y", 0);
        report();
      }
    });
    EXPECT_EQ(end.ending, "signal 6");
    EXPECT_TRUE(end.errors.starts_with("set_id == FINISH_VALUE && checked in ")) << end.errors;
    EXPECT_EQ(end.errors.find("ftp"), std::string::npos) << end.errors;
  }
}

// --- Trace flags -----------------------------------------------------------

TEST(eventHandler, HasItsTraceFlagsOff) {
  EXPECT_EQ(eventHandler::reportThread.name(), "reportThread");
  EXPECT_EQ(eventHandler::reportThread.level(), 0u);
  EXPECT_EQ(eventHandler::reportStack.name(), "reportStack");
  EXPECT_EQ(eventHandler::reportStack.level(), 0u);
  EXPECT_EQ(traceFlag::level("reportThread"), 0);
  EXPECT_EQ(traceFlag::level("reportStack"), 0);
}

TEST(eventHandler, PutsTheThreadBeforeEachLineWhenAsked) {
  ASSERT_TRUE(traceFlag::set("reportThread", 1));
  const std::string thread = std::to_string(getpid()) + "/-1-";
  EXPECT_EQ(onStandardError(), thread +
                                   "20261115T110734.042517: Failure: commonEvent/unknown "
                                   "value \"ftp\" | open\n");
  EXPECT_EQ(stored(),
            thread + "20261115T110734: Failure: commonEvent/unknown value \"ftp\" | open\n");
  EXPECT_EQ(logged("%Y", 0), thread + "2026: Failure: commonEvent/unknown value \"ftp\" | open\n");
  traceFlag::set("reportThread", 0);
  EXPECT_EQ(logged("%Y", 0), "2026: Failure: commonEvent/unknown value \"ftp\" | open\n");
}

TEST(eventHandler, AddsAStackAfterEachLineWhenAsked) {
  ASSERT_TRUE(traceFlag::set("reportStack", 1));
  const struct {
    std::string text;
    const char* line;
  } cases[] = {
      {onStandardError(),
       "20261115T110734.042517: Failure: commonEvent/unknown value \"ftp\" | open\n"
       "Stack trace:\n"},
      {stored(),
       "20261115T110734: Failure: commonEvent/unknown value \"ftp\" | open\nStack trace:\n"},
      {logged("%Y", 0), "2026: Failure: commonEvent/unknown value \"ftp\" | open\nStack trace:\n"},
  };
  for (const auto& c : cases) {
    EXPECT_TRUE(c.text.starts_with(c.line)) << c.text;
    EXPECT_TRUE(c.text.ends_with("\nEnd of stack trace\n")) << c.text;
  }
  traceFlag::set("reportStack", 0);
}

TEST(eventHandler, GradesTheStacksBySeverity) {
  const struct {
    unsigned int level;
    int severity;
    bool traced;
  } cases[] = {
      {0, SUCCESS, false},
      {0, FATAL, false},
      {1, SUCCESS, true},
      {1, WARNING, true},
      {1, FAILURE, true},
      {1, SEVERE, true},
      {1, FATAL, true},
      {2, SUCCESS, false},
      {2, WARNING, true},
      {2, FAILURE, true},
      {2, SEVERE, true},
      {2, FATAL, true},
      {3, SUCCESS, false},
      {3, WARNING, false},
      {3, FAILURE, true},
      {3, SEVERE, true},
      {3, FATAL, true},
      {4, SUCCESS, false},
      {4, WARNING, false},
      {4, FAILURE, false},
      {4, SEVERE, true},
      {4, FATAL, true},
      {5, SUCCESS, false},
      {5, WARNING, false},
      {5, FAILURE, false},
      {5, SEVERE, false},
      {5, FATAL, true},
      {6, FATAL, false},
      {0xFFFFFFFF, FATAL, false},
      // The comparison is unsigned.
      {5, -3, true},
      {1, -2, false},
      {1, -1, false},
      {0xFFFFFFFE, -3, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("level " + std::to_string(c.level) + ", severity " + std::to_string(c.severity));
    traceFlag::set("reportStack", c.level);
    const bareEvent event(static_cast<eventSeverity>(c.severity), AUD_ALL, 1, "q", "op");
    const std::string message = reportCatcher::buildMessage(event, "now");
    EXPECT_EQ(message.ends_with("\nEnd of stack trace\n"), c.traced) << message;
    EXPECT_EQ(message.find("\nStack trace:\n") != std::string::npos, c.traced) << message;
    EXPECT_TRUE(message.starts_with("now: ")) << message;
  }
  traceFlag::set("reportStack", 0);
}

TEST(eventHandler, BuildsAMessageOfDateAndReport) {
  const bareEvent event(FATAL, AUD_ALL, 1, "q", "op");
  EXPECT_EQ(reportCatcher::buildMessage(event, "now"), "now: Fatal: bare/1 \"q\" | op\n");
  EXPECT_EQ(reportCatcher::buildMessage(event, ""), ": Fatal: bare/1 \"q\" | op\n");
  traceFlag::set("reportThread", 3);
  EXPECT_EQ(reportCatcher::buildMessage(event, "now"),
            std::to_string(getpid()) + "/-1-now: Fatal: bare/1 \"q\" | op\n");
  traceFlag::set("reportThread", 0);
}

TEST(storingHandler, KeepsTheTraceOfAnAssertion) {
  storingHandler handler(5, AUD_ALL, WARNING);
  assertEvent("a < b", "../utilities/uri", 142);
  EXPECT_TRUE(
      handler.str().starts_with("20261115T110734: Fatal: assert/assert failure \"a < b\" | "
                                "../utilities/uri @ 142\nStack trace:\n"))
      << handler.str();
  // The trace ends its line; the report ends one more, and so does the message.
  EXPECT_TRUE(handler.str().ends_with("\nEnd of stack trace\n\n\n")) << handler.str();
}

}  // namespace

}  // namespace handler_output_test
