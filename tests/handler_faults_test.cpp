// SPDX-License-Identifier: MIT
// Handlers that throw, that report, and that come and go while a report is offered.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "asserts.h"
#include "events.h"

namespace handler_faults_test {

namespace {

std::string calls;  // the names of handlers, in the order in which they were called

// Does the action that it was made with.
class scriptedHandler : public eventHandler {
 public:
  using action = std::function<bool(eventReport&)>;

  scriptedHandler(int priority, std::string letter, action todo = nullptr)
      : eventHandler(priority), m_letter(std::move(letter)), m_todo(std::move(todo)) {}
  bool handle(eventReport& event) override {
    calls += m_letter + event.qualifier() + ' ';
    // A copy, because the handler may be gone before the action is over.
    const action todo = m_todo;
    return todo && todo(event);
  }
  const char* name() const override { return "scriptedHandler"; }

 private:
  std::string m_letter;
  action m_todo;
};

void raise(const std::string& text) {
  commonEvent(WARNING, AUD_DEVEL, EC_COMMENT, text, "test");
}

// The calls for one report.
std::string callsOf(const std::string& text) {
  calls.clear();
  raise(text);
  return calls;
}

TEST(ThrowingHandler, HasNotClaimedTheReport) {
  const scriptedHandler first(1, "a", [](eventReport&) -> bool { throw std::runtime_error("a"); });
  const scriptedHandler second(2, "b", [](eventReport&) -> bool { throw 5; });
  const scriptedHandler third(3, "c", [](eventReport&) -> bool { throw std::bad_alloc(); });
  const scriptedHandler last(4, "d", [](eventReport&) { return true; });
  const scriptedHandler unreached(5, "e");
  EXPECT_EQ(callsOf("1"), "a1 b1 c1 d1 ");
}

TEST(ThrowingHandler, DoesNotEndAReportThatIsAskedFor) {
  const scriptedHandler only(1, "a", [](eventReport&) -> bool { throw std::runtime_error("a"); });
  commonEvent event(WARNING, AUD_DEVEL, EC_COMMENT, "1", "test");
  calls.clear();
  EXPECT_NO_THROW(event.report());
  EXPECT_EQ(calls, "a1 ");
}

TEST(ThrowingHandler, IsCalledForTheNextReport) {
  const scriptedHandler only(1, "a", [](eventReport&) -> bool { throw std::runtime_error("a"); });
  EXPECT_EQ(callsOf("1"), "a1 ");
  EXPECT_EQ(callsOf("2"), "a2 ");
}

TEST(ThrowingHandler, LeavesTheReportOfAnAssertionToTheOthers) {
  const auto failing = []() {
    const scriptedHandler first(1, "a", [](eventReport&) -> bool { throw 5; });
    const stderrHandler second(2, AUD_ALL);
    ASSERT(1 + 1 == 3);
  };
  EXPECT_EXIT(failing(), testing::KilledBySignal(SIGABRT), "assert failure \"1 \\+ 1 == 3\"");
}

TEST(ReportingHandler, IsSkippedByItsOwnReportAndNoOtherIs) {
  const scriptedHandler first(1, "a");
  const scriptedHandler second(2, "b", [](eventReport& event) {
    if (event.qualifier() == "1") {
      raise("2");
    }
    return false;
  });
  const scriptedHandler third(3, "c");
  EXPECT_EQ(callsOf("1"), "a1 b1 a2 c2 c1 ");
  EXPECT_EQ(callsOf("3"), "a3 b3 c3 ");
}

TEST(ReportingHandler, MayReportEachTime) {
  const scriptedHandler only(1, "a", [](eventReport& event) {
    raise(event.qualifier() + "1");
    return false;
  });
  const scriptedHandler other(2, "b", [](eventReport&) { return true; });
  EXPECT_EQ(callsOf("1"), "a1 b11 b1 ");
}

// Two that answer each other: each is entered once.
TEST(ReportingHandler, EndsWhenTwoAnswerEachOther) {
  const auto answer = [](eventReport& event) {
    raise(event.qualifier() + "1");
    return true;
  };
  const scriptedHandler first(1, "a", answer);
  const scriptedHandler second(2, "b", answer);
  const scriptedHandler third(3, "c");
  EXPECT_EQ(callsOf("1"), "a1 b11 c111 ");
}

TEST(ReportingHandler, ThatThrowsAsWellIsCalledForTheNextReport) {
  const scriptedHandler only(1, "a", [](eventReport& event) -> bool {
    raise(event.qualifier() + "1");
    throw 5;
  });
  EXPECT_EQ(callsOf("1"), "a1 ");
  EXPECT_EQ(callsOf("2"), "a2 ");
}

TEST(LeavingHandler, MayDestroyItself) {
  for (const bool claims : {false, true}) {
    auto first = std::make_unique<scriptedHandler>(1, "a");
    std::unique_ptr<scriptedHandler> second;
    second = std::make_unique<scriptedHandler>(1, "b", [&second, claims](eventReport&) {
      second.reset();
      return claims;
    });
    const scriptedHandler third(1, "c");
    EXPECT_EQ(callsOf("1"), claims ? "a1 b1 " : "a1 b1 c1 ");
    EXPECT_EQ(callsOf("2"), "a2 c2 ");
  }
}

TEST(LeavingHandler, MayDestroyItselfAndThrow) {
  std::unique_ptr<scriptedHandler> first;
  first = std::make_unique<scriptedHandler>(1, "a", [&first](eventReport&) -> bool {
    first.reset();
    throw 5;
  });
  const scriptedHandler second(2, "b");
  EXPECT_EQ(callsOf("1"), "a1 b1 ");
}

TEST(LeavingHandler, IsNotCalledOnceAnotherDestroyedIt) {
  std::vector<std::unique_ptr<scriptedHandler>> others;
  others.push_back(std::make_unique<scriptedHandler>(1, "a"));
  const scriptedHandler destroyer(2, "b", [&others](eventReport&) {
    others.clear();
    return false;
  });
  others.push_back(std::make_unique<scriptedHandler>(2, "c"));
  others.push_back(std::make_unique<scriptedHandler>(3, "d"));
  const scriptedHandler last(4, "e");
  EXPECT_EQ(callsOf("1"), "a1 b1 e1 ");
}

TEST(LeavingHandler, IsNotCalledOnceAReportInBetweenDestroyedIt) {
  std::unique_ptr<scriptedHandler> victim;
  const scriptedHandler first(1, "a", [](eventReport& event) {
    if (event.qualifier() == "1") {
      raise("2");
    }
    return false;
  });
  const scriptedHandler second(2, "b", [&victim](eventReport&) {
    victim.reset();
    return false;
  });
  victim = std::make_unique<scriptedHandler>(3, "c");
  const scriptedHandler last(4, "d");
  EXPECT_EQ(callsOf("1"), "a1 b2 d2 b1 d1 ");
}

TEST(LeavingHandler, OfTheReportThatItIsHandlingMayGoInAReportInBetween) {
  std::unique_ptr<scriptedHandler> first;
  first = std::make_unique<scriptedHandler>(1, "a", [](eventReport&) {
    raise("2");
    return false;
  });
  const scriptedHandler second(2, "b", [&first](eventReport&) {
    first.reset();
    return false;
  });
  EXPECT_EQ(callsOf("1"), "a1 b2 b1 ");
}

TEST(NewHandler, SeesTheNextReportAndNotThisOne) {
  for (const int priority : {0, 1, 2, 3}) {
    std::unique_ptr<scriptedHandler> added;
    const scriptedHandler first(1, "a", [&added, priority](eventReport&) {
      if (added == nullptr) {
        added = std::make_unique<scriptedHandler>(priority, "n");
      }
      return false;
    });
    const scriptedHandler second(2, "b");
    EXPECT_EQ(callsOf("1"), "a1 b1 ") << priority;
    const std::string next[] = {"n2 a2 b2 ", "a2 n2 b2 ", "a2 b2 n2 ", "a2 b2 n2 "};
    EXPECT_EQ(callsOf("2"), next[priority]) << priority;
  }
}

TEST(NewHandler, SeesAReportThatIsRaisedAfterItWasMade) {
  std::unique_ptr<scriptedHandler> added;
  const scriptedHandler first(1, "a", [&added](eventReport&) {
    added = std::make_unique<scriptedHandler>(3, "n");
    raise("2");
    return false;
  });
  EXPECT_EQ(callsOf("1"), "a1 n2 ");
}

// If each were called, this would never end.
TEST(NewHandler, DoesNotLoopWhenEachMakesAnother) {
  std::vector<std::unique_ptr<scriptedHandler>> all;
  scriptedHandler::action another = [&all, &another](eventReport&) {
    all.push_back(std::make_unique<scriptedHandler>(1, "n", another));
    return false;
  };
  const scriptedHandler first(1, "a", another);
  EXPECT_EQ(callsOf("1"), "a1 ");
  EXPECT_EQ(callsOf("2"), "a2 n2 ");
}

// In reused memory, the new handler must not count as the old one.
TEST(NewHandler, InThePlaceOfADestroyedOneSeesTheNextReportOnly) {
  alignas(scriptedHandler) static unsigned char place[sizeof(scriptedHandler)];
  const scriptedHandler first(1, "a", [](eventReport& event) {
    if (event.qualifier() == "1") {
      reinterpret_cast<scriptedHandler*>(place)->~scriptedHandler();
      new (place) scriptedHandler(2, "n");
    }
    return false;
  });
  new (place) scriptedHandler(2, "o");
  const scriptedHandler last(3, "b");
  EXPECT_EQ(callsOf("1"), "a1 b1 ");
  EXPECT_EQ(callsOf("2"), "a2 n2 b2 ");
  reinterpret_cast<scriptedHandler*>(place)->~scriptedHandler();
}

TEST(NewHandler, InThePlaceOfTheOneThatIsHandlingSeesItsReport) {
  alignas(scriptedHandler) static unsigned char place[sizeof(scriptedHandler)];
  new (place) scriptedHandler(1, "o", [](eventReport&) {
    reinterpret_cast<scriptedHandler*>(place)->~scriptedHandler();
    new (place) scriptedHandler(1, "n");
    raise("2");
    return false;
  });
  const scriptedHandler last(3, "b");
  EXPECT_EQ(callsOf("1"), "o1 n2 b2 b1 ");
  reinterpret_cast<scriptedHandler*>(place)->~scriptedHandler();
}

TEST(Handlers, MayBeMany) {
  std::vector<std::unique_ptr<scriptedHandler>> all;
  std::string expected;
  for (int i = 0; i < 100; i++) {
    all.push_back(std::make_unique<scriptedHandler>(1, "h" + std::to_string(i) + "/"));
    expected += "h" + std::to_string(i) + "/1 ";
  }
  EXPECT_EQ(callsOf("1"), expected);
}

TEST(Handlers, AreNotCalledOnceTakenOutOfTheMapByHand) {
  scriptedHandler* other = nullptr;
  const scriptedHandler first(1, "a", [&other](eventReport&) {
    handlerMap& map = ThreadedEventHandlerList::local().theMap;
    for (auto entry = map.begin(); entry != map.end(); entry++) {
      if (entry->second == other) {
        map.erase(entry);
        break;
      }
    }
    return false;
  });
  scriptedHandler second(2, "b");
  other = &second;
  const scriptedHandler third(3, "c");
  EXPECT_EQ(callsOf("1"), "a1 c1 ");
}

}  // namespace

}  // namespace handler_faults_test
