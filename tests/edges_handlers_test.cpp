// SPDX-License-Identifier: MIT
// Handlers that throw, report, destroy and register while they handle a report.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "events.h"

namespace edges_handlers_test {

namespace {

// Notes the description of each report, and then does its work with it.
class busyHandler : public eventHandler {
 public:
  using Work = std::function<bool(eventReport&)>;
  busyHandler(int priority, const std::string& tag, std::vector<std::string>& notes, Work work)
      : eventHandler(priority), m_tag(tag), m_notes(notes), m_work(std::move(work)) {}
  bool handle(eventReport& event) override {
    m_notes.push_back(m_tag + " " + event.qualifier());
    // A copy, because this object may be gone before the work is done.
    const Work work = m_work;
    return work(event);
  }
  const char* name() const override { return "busyHandler"; }

 private:
  std::string m_tag;
  std::vector<std::string>& m_notes;
  Work m_work;
};

bool passOn(eventReport&) {
  return false;
}

void raise(const std::string& text) {
  commonEvent(WARNING, AUD_DEVEL, EC_COMMENT, text, "test").report();
}

using Notes = std::vector<std::string>;

}  // namespace

TEST(ThrowingHandler, CountsAsNotClaimed) {
  Notes notes;
  const busyHandler first(1, "a", notes,
                          [](eventReport&) -> bool { throw std::runtime_error("no"); });
  const busyHandler second(2, "b", notes, passOn);
  raise("one");
  EXPECT_EQ(notes, (Notes{"a one", "b one"}));
  raise("two");
  EXPECT_EQ(notes, (Notes{"a one", "b one", "a two", "b two"}));
}

TEST(ThrowingHandler, ThatThrowsWhatIsNoExceptionClassCountsAsNotClaimed) {
  Notes notes;
  const busyHandler first(1, "a", notes, [](eventReport&) -> bool { throw 7; });
  const busyHandler second(2, "b", notes, passOn);
  raise("one");
  EXPECT_EQ(notes, (Notes{"a one", "b one"}));
}

TEST(ThrowingHandler, DoesNotEndTheProgramWhenADestructorReports) {
  Notes notes;
  const busyHandler first(1, "a", notes,
                          [](eventReport&) -> bool { throw std::runtime_error("no"); });
  const busyHandler second(2, "b", notes, passOn);
  { const commonEvent event(WARNING, AUD_DEVEL, EC_COMMENT, "one", "test"); }
  EXPECT_EQ(notes, (Notes{"a one", "b one"}));
}

TEST(ThrowingHandler, DoesNotEndTheProgramWhileAnotherExceptionIsOnItsWay) {
  Notes notes;
  const busyHandler first(1, "a", notes,
                          [](eventReport&) -> bool { throw std::runtime_error("no"); });
  try {
    const commonEvent event(WARNING, AUD_DEVEL, EC_COMMENT, "one", "test");
    throw std::logic_error("on its way");
  } catch (const std::logic_error& error) {
    EXPECT_STREQ(error.what(), "on its way");
  }
  EXPECT_EQ(notes, (Notes{"a one"}));
}

TEST(ThrowingHandler, AtTheLastPlaceLeavesTheReportUnclaimed) {
  Notes notes;
  const busyHandler first(1, "a", notes, passOn);
  const busyHandler last(1000, "z", notes, [](eventReport&) -> bool { throw 1; });
  raise("one");  // the storing handler claims it before the last one
  EXPECT_EQ(notes, (Notes{"a one"}));
}

TEST(ReportingHandler, IsNotEnteredAgainByItsOwnReport) {
  Notes notes;
  const busyHandler first(1, "a", notes, [](eventReport&) {
    raise("inner");
    return false;
  });
  const busyHandler second(2, "b", notes, passOn);
  raise("outer");
  EXPECT_EQ(notes, (Notes{"a outer", "b inner", "b outer"}));
}

TEST(ReportingHandler, IsEnteredByTheNextReport) {
  Notes notes;
  const busyHandler first(1, "a", notes, [](eventReport&) {
    raise("inner");
    return false;
  });
  raise("one");
  raise("two");
  EXPECT_EQ(notes, (Notes{"a one", "a two"}));
}

TEST(ReportingHandler, SkipsNoOtherHandler) {
  Notes notes;
  const busyHandler before(0, "z", notes, passOn);
  const busyHandler first(1, "a", notes, [](eventReport& event) {
    if (event.qualifier() == "outer") {
      raise("inner");
    }
    return false;
  });
  const busyHandler second(2, "b", notes, passOn);
  raise("outer");
  EXPECT_EQ(notes, (Notes{"z outer", "a outer", "z inner", "b inner", "b outer"}));
}

TEST(ReportingHandler, AndAnotherOneEnterEachOtherOnce) {
  Notes notes;
  const busyHandler first(1, "a", notes, [](eventReport&) {
    raise("from a");
    return false;
  });
  const busyHandler second(2, "b", notes, [](eventReport&) {
    raise("from b");
    return false;
  });
  const busyHandler third(3, "c", notes, passOn);
  raise("outer");
  EXPECT_EQ(notes, (Notes{"a outer", "b from a", "c from b", "c from a", "b outer", "a from b",
                          "c from a", "c from b", "c outer"}));
}

TEST(ReportingHandler, ThatThrewIsEnteredByTheNextReport) {
  Notes notes;
  const busyHandler first(1, "a", notes, [](eventReport&) -> bool {
    raise("inner");
    throw std::runtime_error("no");
  });
  const busyHandler second(2, "b", notes, passOn);
  raise("one");
  raise("two");
  EXPECT_EQ(notes, (Notes{"a one", "b inner", "b one", "a two", "b inner", "b two"}));
}

TEST(ReportingHandler, WhoseReportIsClaimedStillHasItsOwn) {
  Notes notes;
  const busyHandler first(1, "a", notes, [](eventReport&) {
    raise("inner");
    return true;
  });
  const busyHandler second(2, "b", notes, passOn);
  raise("outer");
  EXPECT_EQ(notes, (Notes{"a outer", "b inner"}));
}

TEST(DestroyingHandler, ThatDestroysItselfIsNotCalledAnyMore) {
  Notes notes;
  busyHandler* first = nullptr;
  first = new busyHandler(1, "a", notes, [&first](eventReport&) {
    delete first;
    first = nullptr;
    return false;
  });
  const busyHandler second(2, "b", notes, passOn);
  raise("one");
  EXPECT_EQ(first, nullptr);
  raise("two");
  EXPECT_EQ(notes, (Notes{"a one", "b one", "b two"}));
}

TEST(DestroyingHandler, ThatDestroysItselfMayClaim) {
  Notes notes;
  busyHandler* first = nullptr;
  first = new busyHandler(1, "a", notes, [&first](eventReport&) {
    delete first;
    return true;
  });
  const busyHandler second(2, "b", notes, passOn);
  raise("one");
  raise("two");
  EXPECT_EQ(notes, (Notes{"a one", "b two"}));
}

TEST(DestroyingHandler, ThatDestroysItselfMayThrow) {
  Notes notes;
  busyHandler* first = nullptr;
  first = new busyHandler(1, "a", notes, [&first](eventReport&) -> bool {
    delete first;
    throw std::runtime_error("no");
  });
  const busyHandler second(2, "b", notes, passOn);
  raise("one");
  raise("two");
  EXPECT_EQ(notes, (Notes{"a one", "b one", "b two"}));
}

TEST(DestroyingHandler, ThatDestroysTheNextOneKeepsItFromTheReport) {
  Notes notes;
  auto second = std::make_unique<std::unique_ptr<busyHandler>>();
  const busyHandler first(1, "a", notes, [&second](eventReport&) {
    second->reset();
    return false;
  });
  *second = std::make_unique<busyHandler>(2, "b", notes, passOn);
  const busyHandler third(3, "c", notes, passOn);
  raise("one");
  EXPECT_EQ(notes, (Notes{"a one", "c one"}));
}

TEST(DestroyingHandler, ThatDestroysAnEarlierOneGoesOn) {
  Notes notes;
  auto first = std::make_unique<busyHandler>(1, "a", notes, passOn);
  const busyHandler second(2, "b", notes, [&first](eventReport&) {
    first.reset();
    return false;
  });
  const busyHandler third(3, "c", notes, passOn);
  raise("one");
  raise("two");
  EXPECT_EQ(notes, (Notes{"a one", "b one", "c one", "b two", "c two"}));
}

TEST(DestroyingHandler, ThatDestroysAllOthersEndsTheWalk) {
  Notes notes;
  std::vector<std::unique_ptr<busyHandler>> others;
  const busyHandler first(1, "a", notes, [&others](eventReport&) {
    others.clear();
    return false;
  });
  for (int priority = 1; priority < 9; priority++) {
    others.push_back(std::make_unique<busyHandler>(priority, "x", notes, passOn));
  }
  raise("one");
  EXPECT_EQ(notes, (Notes{"a one"}));
}

TEST(DestroyingHandler, InAReportOfItsOwnKeepsTheOuterWalkIntact) {
  Notes notes;
  auto third = std::make_unique<busyHandler>(3, "c", notes, passOn);
  const busyHandler first(1, "a", notes, [](eventReport& event) {
    if (event.qualifier() == "outer") {
      raise("inner");
    }
    return false;
  });
  const busyHandler second(2, "b", notes, [&third](eventReport& event) {
    if (event.qualifier() == "inner") {
      third.reset();
    }
    return false;
  });
  raise("outer");
  EXPECT_EQ(notes, (Notes{"a outer", "b inner", "b outer"}));
}

TEST(RegisteringHandler, GivesTheNewOneTheNextReport) {
  Notes notes;
  std::vector<std::unique_ptr<busyHandler>> made;
  const busyHandler first(2, "a", notes, [&](eventReport&) {
    if (made.empty()) {
      made.push_back(std::make_unique<busyHandler>(3, "new", notes, passOn));
    }
    return false;
  });
  const busyHandler last(4, "z", notes, passOn);
  raise("one");
  raise("two");
  EXPECT_EQ(notes, (Notes{"a one", "z one", "a two", "new two", "z two"}));
}

TEST(RegisteringHandler, OfTheSamePriorityDoesNotLoop) {
  Notes notes;
  std::vector<std::unique_ptr<busyHandler>> made;
  const busyHandler first(2, "a", notes, [&](eventReport&) {
    if (made.size() < 100) {
      made.push_back(std::make_unique<busyHandler>(2, "new", notes, passOn));
    }
    return false;
  });
  raise("one");
  EXPECT_EQ(notes, (Notes{"a one"}));
  raise("two");
  EXPECT_EQ(notes, (Notes{"a one", "a two", "new two"}));
}

TEST(RegisteringHandler, WhoseCopiesRegisterMoreDoesNotLoop) {
  Notes notes;
  std::vector<std::unique_ptr<busyHandler>> made;
  std::function<bool(eventReport&)> grow = [&](eventReport&) {
    if (made.size() < 1000) {
      made.push_back(std::make_unique<busyHandler>(3, "new", notes, grow));
    }
    return false;
  };
  const busyHandler first(2, "a", notes, grow);
  raise("one");
  EXPECT_EQ(made.size(), 1U);
  raise("two");
  EXPECT_EQ(made.size(), 3U);
  EXPECT_EQ(notes, (Notes{"a one", "a two", "new two"}));
}

TEST(RegisteringHandler, ThatReplacesAHandlerAtTheSamePlaceSeesTheNextReport) {
  Notes notes;
  std::unique_ptr<busyHandler> second;
  const busyHandler first(1, "a", notes, [&](eventReport& event) {
    if (event.qualifier() == "one") {
      second.reset();
      second = std::make_unique<busyHandler>(2, "new", notes, passOn);
    }
    return false;
  });
  second = std::make_unique<busyHandler>(2, "old", notes, passOn);
  raise("one");
  raise("two");
  EXPECT_EQ(notes, (Notes{"a one", "a two", "new two"}));
}

}  // namespace edges_handlers_test
