// SPDX-License-Identifier: MIT
// Handlers: which reports they claim, their order, and their registration.

#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "captured_errors.h"
#include "children.h"
#include "events.h"
#include "fake_clock.h"
#include "reports.h"
#include "system_calls.h"
#include "threading.h"

namespace handlers_test {

namespace {

const replacedCalls here(__FILE__, fakeClock::stop);

static_assert(!std::is_copy_constructible_v<storingHandler>);
static_assert(!std::is_copy_assignable_v<storingHandler>);
static_assert(!std::is_copy_constructible_v<stderrHandler>);
static_assert(!std::is_copy_assignable_v<stderrHandler>);

handlerMap& localMap() {
  return ThreadedEventHandlerList::local().theMap;
}

// The current map, for example "5 reportCatcher, 10 storingHandler".
std::string registered() {
  std::string result;
  for (const auto& [priority, handler] : localMap()) {
    if (!result.empty()) result += ", ";
    result += std::to_string(priority) + " " + handler->name();
  }
  return result;
}

// --- What each handler claims ----------------------------------------------

struct claim {
  const char* situation;
  eventSeverity severity;
  int reported;  // the report's audience
  bool claimed;
  int left;  // what is left of the audience
  bool written;
};

// For the handlers that write whatever the severity.
const claim byAudience[] = {
    {"no overlap", FAILURE, 4, false, 4, false},
    {"no overlap with several", FATAL, 28, false, 28, false},
    {"no overlap with bits beyond the names", FAILURE, 32, false, 32, false},
    {"part overlap", FAILURE, 5, false, 4, true},
    {"part overlap with all", FAILURE, 31, false, 28, true},
    {"full overlap with one", FAILURE, 1, true, 0, true},
    {"full overlap with both", FAILURE, 3, true, 0, true},
    {"the least severity", SUCCESS, 2, true, 0, true},
    {"the greatest severity", FATAL, 2, true, 0, true},
    {"a severity below all", static_cast<eventSeverity>(-1), 2, true, 0, true},
    {"audience already empty", FAILURE, 0, true, 0, false},
};

// For a storing handler from WARNING up.
const claim byAudienceFromWarning[] = {
    {"no overlap, below", SUCCESS, 4, false, 4, false},
    {"no overlap, at", WARNING, 4, false, 4, false},
    {"no overlap, above", FAILURE, 28, false, 28, false},
    {"part overlap, below", SUCCESS, 5, false, 4, false},
    {"part overlap, at", WARNING, 5, false, 4, true},
    {"part overlap, above", FAILURE, 31, false, 28, true},
    {"full overlap, below", SUCCESS, 3, true, 0, false},
    {"full overlap, far below", static_cast<eventSeverity>(INT_MIN), 1, true, 0, false},
    {"full overlap, at", WARNING, 3, true, 0, true},
    {"full overlap, above", FATAL, 2, true, 0, true},
    {"audience already empty, below", SUCCESS, 0, true, 0, false},
    {"audience already empty, at", WARNING, 0, true, 0, false},
    {"audience already empty, above", FAILURE, 0, true, 0, false},
};

// For an ignoring handler up to WARNING.
const claim byAudienceUpToWarning[] = {
    {"no overlap, below", SUCCESS, 4, false, 4, false},
    {"no overlap, at", WARNING, 28, false, 28, false},
    {"no overlap, above", FAILURE, 4, false, 4, false},
    {"part overlap, below", SUCCESS, 5, false, 4, false},
    {"part overlap, at", WARNING, 31, false, 28, false},
    {"part overlap, above", FAILURE, 5, false, 5, false},
    {"full overlap, below", SUCCESS, 3, true, 0, false},
    {"full overlap, far below", static_cast<eventSeverity>(INT_MIN), 1, true, 0, false},
    {"full overlap, at", WARNING, 3, true, 0, false},
    {"full overlap, above", FAILURE, 3, false, 3, false},
    {"full overlap, far above", static_cast<eventSeverity>(INT_MAX), 1, false, 1, false},
    {"audience already empty, below", SUCCESS, 0, true, 0, false},
    {"audience already empty, above", FAILURE, 0, true, 0, false},
};

// Hands a report of each case to `handler`; `output` returns all that it has written.
template <std::size_t N, class Output>
void checkClaims(eventHandler& handler, const claim (&cases)[N], Output output) {
  for (const claim& c : cases) {
    SCOPED_TRACE(c.situation);
    const std::string before = output();
    bareEvent event(c.severity, static_cast<eventAudience>(c.reported));
    EXPECT_EQ(handler.handle(event), c.claimed);
    EXPECT_EQ(static_cast<int>(event.audience()), c.left);
    EXPECT_EQ(event.severity(), c.severity);
    EXPECT_EQ(output().size() > before.size(), c.written) << "output so far:\n" << output();
  }
}

TEST(stderrHandler, ClaimsWhatNobodyElseIsLeftFor) {
  const capturedErrors errors;
  stderrHandler handler(100, AUD_USER);
  checkClaims(handler, byAudience, [&] { return errors.str(); });
}

TEST(loggingHandler, ClaimsWhatNobodyElseIsLeftFor) {
  std::ostringstream out;
  loggingHandler handler(out, 100, AUD_USER, "%Y", 0);
  checkClaims(handler, byAudience, [&] { return out.str(); });
}

TEST(storingHandler, ClaimsWhatNobodyElseIsLeftFor) {
  storingHandler handler(100, AUD_USER, WARNING);
  checkClaims(handler, byAudienceFromWarning, [&] { return handler.str(); });
}

TEST(ignoreHandler, ClaimsWhatNobodyElseIsLeftFor) {
  const capturedErrors errors;
  ignoreHandler handler(100, WARNING, AUD_USER);
  checkClaims(handler, byAudienceUpToWarning, [&] { return errors.str(); });
}

TEST(eventHandler, ThatServesNobodyClaimsOnlyWhatIsForNobody) {
  const capturedErrors errors;
  std::ostringstream out;
  stderrHandler toErrors(100, AUD_NULL);
  loggingHandler toLog(out, 100, AUD_NULL, "%Y", 0);
  storingHandler toMemory(100, AUD_NULL, SUCCESS);
  ignoreHandler toNowhere(100, FATAL, AUD_NULL);
  for (eventHandler* handler :
       std::vector<eventHandler*>{&toErrors, &toLog, &toMemory, &toNowhere}) {
    SCOPED_TRACE(handler->name());
    bareEvent forAll(FAILURE, AUD_ALL);
    EXPECT_FALSE(handler->handle(forAll));
    EXPECT_EQ(forAll.audience(), AUD_ALL);
    bareEvent forNobody(FAILURE, AUD_NULL);
    EXPECT_TRUE(handler->handle(forNobody));
  }
  EXPECT_EQ(errors.str() + out.str() + toMemory.str(), "");
}

TEST(storingHandler, StoresFromItsSeverityUp) {
  const struct {
    eventSeverity least;
    const char* expected;
  } cases[] = {
      {SUCCESS, "SWFXT"}, {WARNING, "WFXT"}, {FAILURE, "FXT"},
      {SEVERE, "XT"},     {FATAL, "T"},      {static_cast<eventSeverity>(5), ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.least);
    storingHandler handler(5, AUD_ALL, c.least);
    commonEvent(SUCCESS, AUD_ALL, EC_COMMENT, "", "S");
    commonEvent(WARNING, AUD_ALL, EC_COMMENT, "", "W");
    commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "", "F");
    commonEvent(SEVERE, AUD_ALL, EC_COMMENT, "", "X");
    commonEvent(FATAL, AUD_ALL, EC_COMMENT, "", "T");
    std::string operations;
    const std::string stored = handler.str();
    for (std::size_t at = stored.find(" | "); at != std::string::npos;
         at = stored.find(" | ", at + 1))
      operations += stored[at + 3];
    EXPECT_EQ(operations, c.expected) << stored;
  }
}

TEST(storingHandler, SwallowsAReportBelowItsSeverity) {
  storingHandler handler(5, AUD_ALL, WARNING);
  reportCatcher next(6);
  commonEvent(SUCCESS, AUD_ALL, EC_COMMENT, "x", "y");
  EXPECT_EQ(handler.str(), "");
  EXPECT_EQ(next.seen.size(), 0u);
}

TEST(ignoreHandler, PassesOnWhatIsAboveItsSeverity) {
  ignoreHandler handler(5, WARNING, AUD_ALL);
  reportCatcher next(6);
  commonEvent(SUCCESS, AUD_ALL, EC_COMMENT, "s", "");
  commonEvent(WARNING, AUD_ALL, EC_COMMENT, "w", "");
  EXPECT_EQ(next.seen.size(), 0u);
  commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "f", "");
  ASSERT_EQ(next.seen.size(), 1u);
  EXPECT_EQ(next.seen[0].qualifier, "f");
  EXPECT_EQ(next.seen[0].audience, AUD_ALL);
}

TEST(eventHandler, LeavesTheRestOfTheAudienceToTheNext) {
  storingHandler users(3, AUD_USER, SUCCESS), admins(4, AUD_SYSM, SUCCESS);
  reportCatcher after(5, false);
  storingHandler developers(6, AUD_DEVEL, SUCCESS), late(7, AUD_ALL, SUCCESS);
  commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
  const char* line = "20261115T110734: Failure: commonEvent/comment \"x\" | y\n";
  EXPECT_EQ(users.str(), line);
  EXPECT_EQ(admins.str(), line);
  ASSERT_EQ(after.seen.size(), 1u);
  EXPECT_EQ(after.seen[0].audience, AUD_DEVEL);
  EXPECT_EQ(developers.str(), line);
  EXPECT_EQ(late.str(), "");
}

TEST(eventHandler, ChangesOnlyWhatItIsTold) {
  bareEvent event(FATAL, AUD_ALL);
  reportCatcher::clearAudience(event, AUD_AUDIT | AUD_OUSER);
  EXPECT_EQ(static_cast<int>(event.audience()), 22);
  reportCatcher::clearAudience(event, AUD_AUDIT | AUD_DEVEL);
  EXPECT_EQ(static_cast<int>(event.audience()), 6);
  reportCatcher::clearAudience(event, AUD_NULL);
  EXPECT_EQ(static_cast<int>(event.audience()), 6);
  EXPECT_EQ(event.severity(), FATAL);
  reportCatcher::changeSeverity(event, SUCCESS);
  EXPECT_EQ(event.severity(), SUCCESS);
  reportCatcher::changeSeverity(event, SEVERE);
  EXPECT_EQ(event.severity(), SEVERE);
  EXPECT_EQ(static_cast<int>(event.audience()), 6);
}

// --- Registration ----------------------------------------------------------

TEST(eventHandler, NamesItsClass) {
  std::ostringstream out;
  EXPECT_STREQ(stderrHandler(100, AUD_ALL).name(), "stderrHandler");
  EXPECT_STREQ(loggingHandler(out, 100, AUD_ALL, "%Y", 0).name(), "loggingHandler");
  EXPECT_STREQ(storingHandler(100, AUD_ALL, SUCCESS).name(), "storingHandler");
  EXPECT_STREQ(ignoreHandler(100, SUCCESS, AUD_ALL).name(), "ignoreHandler");
  EXPECT_STREQ(systemLogHandler(100, AUD_ALL).name(), "systemLogHandler");
}

TEST(eventHandler, IsRegisteredWhileItLives) {
  ASSERT_EQ(registered(), "10 storingHandler");
  {
    std::ostringstream out;
    stderrHandler a(100, AUD_ALL);
    loggingHandler b(out, 11, AUD_ALL, "%Y", 0);
    storingHandler c(9, AUD_ALL, SUCCESS);
    ignoreHandler d(-7, SUCCESS, AUD_ALL);
    systemLogHandler e(INT_MAX, AUD_ALL);
    reportCatcher f(INT_MIN);
    EXPECT_EQ(registered(),
              "-2147483648 reportCatcher, -7 ignoreHandler, 9 storingHandler, 10 storingHandler, "
              "11 loggingHandler, 100 stderrHandler, 2147483647 systemLogHandler");
  }
  EXPECT_EQ(registered(), "10 storingHandler");
}

TEST(eventHandler, IsAskedInAscendingPriority) {
  class numbered : public eventHandler {
   public:
    numbered(int priority, const char* label, std::string& order)
        : eventHandler(priority), m_label(label), m_order(order) {}
    bool handle(eventReport&) override {
      m_order += m_label;
      return false;
    }
    const char* name() const override { return m_label; }

   private:
    const char* m_label;
    std::string& m_order;
  };
  std::string order;
  numbered seven(7, "7", order), firstThree(3, "3a", order), minus(-5, "-5", order);
  auto gone = std::make_unique<numbered>(3, "gone", order);
  numbered secondThree(3, "3b", order), zero(0, "0", order), thirdThree(3, "3c", order);
  numbered late(11, "late", order), least(INT_MIN, "least", order);
  gone.reset();
  commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
  EXPECT_EQ(order, "least-503a3b3c7") << "the storing handler at 10 claims before 11";
}

TEST(eventHandler, GivesUpOneRegistrationOnly) {
  auto twice = std::make_unique<reportCatcher>(5);
  localMap().insert({5, twice.get()});
  localMap().insert({6, twice.get()});
  ASSERT_EQ(localMap().count(5), 2u);
  twice.reset();
  EXPECT_EQ(localMap().count(5), 1u);
  EXPECT_EQ(localMap().count(6), 1u);
  localMap().erase(5);
  localMap().erase(6);
}

TEST(eventHandler, GivesUpItsRegistrationOfLowestPriority) {
  auto twice = std::make_unique<reportCatcher>(5);
  localMap().insert({1, twice.get()});
  twice.reset();
  EXPECT_EQ(localMap().count(1), 0u);
  EXPECT_EQ(localMap().count(5), 1u);
  localMap().erase(5);
}

TEST(eventHandler, GivesUpNothingThatIsNotItsOwn) {
  reportCatcher other(5);
  auto unlisted = std::make_unique<reportCatcher>(5);
  // It leaves the map before it is destroyed.
  for (auto entry = localMap().begin(); entry != localMap().end(); ++entry) {
    if (entry->second != unlisted.get()) continue;
    localMap().erase(entry);
    break;
  }
  ASSERT_EQ(registered(), "5 reportCatcher, 10 storingHandler");
  unlisted.reset();
  EXPECT_EQ(registered(), "5 reportCatcher, 10 storingHandler");
}

TEST(ThreadedEventHandlerList, MakesEmptyMaps) {
  ThreadedEventHandlerList& list = ThreadedEventHandlerList::theInstance();
  EXPECT_EQ(&list, &ThreadedEventHandlerList::theInstance());
  EXPECT_STREQ(list.name(), "ThreadedEventHandlerList");
  const std::unique_ptr<ThreadedDataObject> made(list.create()), another(list.create());
  EXPECT_NE(made.get(), another.get());
  const auto* map = dynamic_cast<EventHandlerMap*>(made.get());
  ASSERT_NE(map, nullptr);
  EXPECT_TRUE(map->theMap.empty());
}

TEST(ThreadedEventHandlerList, GivesTheThreadsOwnMapOnceThereIsOne) {
  EventHandlerMap* startUp = &ThreadedEventHandlerList::local();
  EXPECT_EQ(&ThreadedEventHandlerList::local(), startUp);
  EXPECT_FALSE(ThreadData::initialised()) << "reading the map must not build the thread data";
  ThreadData::instance(false);
  EventHandlerMap* own = &ThreadedEventHandlerList::local();
  EXPECT_NE(own, startUp);
  EXPECT_EQ(&ThreadedEventHandlerList::local(), own);
}

// --- The storing handler of the process ------------------------------------

TEST(storingHandler, StandsInTheStartUpMapFromTheBeginning) {
  ASSERT_EQ(registered(), "10 storingHandler");
  EXPECT_EQ(localMap().begin()->second, &storingHandler::theInstance());
  EXPECT_EQ(&storingHandler::theInstance(), &storingHandler::theInstance());
  { bareEvent event(FAILURE, AUD_ALL); }
  EXPECT_EQ(registered(), "10 storingHandler");
}

TEST(storingHandler, OfTheProcessStoresWarningsForAll) {
  const std::string before = storingHandler::theInstance().str();
  commonEvent(SUCCESS, AUD_ALL, EC_COMMENT, "s", "");
  commonEvent(WARNING, AUD_OUSER, EC_COMMENT, "w", "");
  commonEvent(FAILURE, AUD_DEVEL, EC_COMMENT, "f", "op");
  EXPECT_EQ(storingHandler::theInstance().str().substr(before.size()),
            "20261115T110734: Warning: commonEvent/comment \"w\"\n"
            "20261115T110734: Failure: commonEvent/comment \"f\" | op\n");
}

TEST(storingHandler, StandsOnceInTheThreadsMap) {
  const std::string before = storingHandler::theInstance().str();
  ThreadData::instance(false);
  reportCatcher later(11);
  for (int i = 0; i < 3; i++) commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
  EXPECT_EQ(registered(), "10 storingHandler, 11 reportCatcher");
  storingHandler::theInstance();
  EXPECT_EQ(registered(), "10 storingHandler, 11 reportCatcher");
  EXPECT_EQ(localMap().begin()->second, &storingHandler::theInstance());
  EXPECT_EQ(later.seen.size(), 0u);
  EXPECT_EQ(storingHandler::theInstance().str().substr(before.size()),
            "20261115T110734: Failure: commonEvent/comment \"x\" | y\n"
            "20261115T110734: Failure: commonEvent/comment \"x\" | y\n"
            "20261115T110734: Failure: commonEvent/comment \"x\" | y\n");
}

TEST(storingHandler, IsInTheThreadsMapOnceItIsAskedFor) {
  ThreadData::instance(false);
  storingHandler::theInstance();
  EXPECT_EQ(registered(), "10 storingHandler");
}

TEST(storingHandler, IsInTheThreadsMapBeforeAReportIsOffered) {
  ThreadData::instance(false);
  ASSERT_EQ(registered(), "");
  const bareEvent neverOffered(FAILURE, AUD_ALL);
  EXPECT_EQ(registered(), "10 storingHandler");
}

TEST(storingHandler, ClaimsBeforeStandardErrorInEveryMap) {
  for (const bool ownMap : {false, true}) {
    SCOPED_TRACE(ownMap ? "the thread's map" : "the start-up map");
    if (ownMap) ThreadData::instance(false);
    const std::string before = storingHandler::theInstance().str();
    const capturedErrors errors;
    stderrHandler handler(100, AUD_ALL);
    commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
    EXPECT_EQ(errors.str(), "");
    EXPECT_EQ(storingHandler::theInstance().str().substr(before.size()),
              "20261115T110734: Failure: commonEvent/comment \"x\" | y\n");
  }
}

TEST(eventHandler, OfTheStartUpMapSeesNothingOfTheThreadsMap) {
  reportCatcher early(5);
  ThreadData::instance(false);
  commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
  EXPECT_EQ(early.seen.size(), 0u);
  reportCatcher late(5);
  commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
  EXPECT_EQ(early.seen.size(), 0u);
  EXPECT_EQ(late.seen.size(), 1u);
}

// --- At exit ---------------------------------------------------------------

void tell(const std::string& line) {
  if (write(STDERR_FILENO, line.data(), line.size()) < 0) std::_Exit(99);
}

TEST(eventReport, GoesToTheStartUpMapAfterTheThreadsMapHasGone) {
  const processEnd end = runSharingChild([] {
    static reportCatcher early(5, false);
    std::atexit([] {
      const std::string before = storingHandler::theInstance().str();
      commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "at exit", "bye");
      tell(std::to_string(early.seen.size()) + " seen\n");
      tell(storingHandler::theInstance().str().substr(before.size()));
      tell(registered() + "\n");
    });
    ThreadData::instance(false);  // destroyed before the function above runs
    std::exit(0);
  });
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(end.errors,
            "1 seen\n"
            "20261115T110734: Failure: commonEvent/comment \"at exit\" | bye\n"
            "5 reportCatcher, 10 storingHandler\n");
}

TEST(eventHandler, MayOutliveTheMapThatItStoodIn) {
  const processEnd end = runSharingChild([] {
    static reportCatcher* late = nullptr;
    std::atexit([] {
      delete late;
      commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "at exit", "bye");
      tell(registered() + "\n");
    });
    ThreadData::instance(false);
    late = new reportCatcher(5);
    std::exit(0);
  });
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(end.errors, "10 storingHandler\n");
}

TEST(eventHandler, OfTheStartUpMapMayEndWhileTheThreadHasItsOwn) {
  const processEnd end = runSharingChild([] {
    static reportCatcher* early = new reportCatcher(5);
    std::atexit([] {
      commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "at exit", "bye");
      tell(registered() + "\n");
    });
    ThreadData::instance(false);
    delete early;
    std::exit(0);
  });
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(end.errors, "10 storingHandler\n");
}

}  // namespace

}  // namespace handlers_test
