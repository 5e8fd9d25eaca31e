// SPDX-License-Identifier: MIT
// Use before `main`, while the per-thread data is being built, and at exit.
#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

#include "children.h"
#include "configDB.h"
#include "configRef.h"
#include "events.h"
#include "kept_traces.h"
#include "processes.h"
#include "refcount.h"
#include "reports.h"
#include "semaphore_sets.h"
#include "threading.h"
#include "trace.h"
#include "very_end.h"

namespace {

/// A counted object that has a number.
class page : public counted {
 public:
  counted* clone() const override {
    page* result = new page;
    result->number = number;
    return result;
  }
  const char* className() const override { return "page"; }
  int number = 0;
};

/// Its objects ask for themselves while they are created, and use as much as they can.
class askingSlot : public ThreadedDatatype {
 public:
  explicit askingSlot(const configString& item) : m_item(item) {}
  ThreadedDataObject* create() const override;
  const char* name() const override { return "askingSlot"; }

  mutable int created = 0;
  mutable bool foundItself = false;
  mutable std::string read;

 private:
  const configString& m_item;
};

class slotObject : public ThreadedDataObject {};

ThreadedDataObject* askingSlot::create() const {
  created++;
  foundItself = data(true) != nullptr || data(false) != nullptr;
  read = m_item.value(false);
  commonEvent(WARNING, AUD_ALL, EC_COMMENT, "while building", "static_use_test");
  return new slotObject;
}

/// Objects that are built before all others and never destroyed.
struct lasting {
  const configString& item = *new configString("static.item", "given");
  const configInt& number = *new configInt("static.number", 3);
  const askingSlot& slot = *new askingSlot(item);
};

__attribute__((init_priority(110))) const lasting objects;

/// The whole of the library, used from a static initialiser.
struct staticUse {
  explicit staticUse(const char* who) {
    static const std::ios_base::Init streams;
    commonEvent(WARNING, AUD_ALL, EC_COMMENT, who, "static_use_test");
    {
      reportCatcher recorder;
      commonEvent(FAILURE, AUD_DEVEL, EC_NO_MEMORY, who, "recorded");
      for (const std::string& line : recorder.take()) {
        recorded += line + ";";
      }
    }
    text = objects.item.value(true);
    number = objects.number;
    data = objects.slot.data(false) != nullptr;
    threadData = ThreadData::initialised();
    writeTrace();
    useCounts();
  }

  void writeTrace() {
    std::ostringstream captured;
    std::streambuf* old = traceFlag::out().rdbuf(captured.rdbuf());
    {
      static traceFlag flag("static_use", 1);
      const criticalSection section(CS_LOGOUT, false);
      section_okay = section.okay();
      if (flag.active()) {
        traceFlag::out() << Thread::threadId() << " traced" << std::endl;
      }
    }
    traceFlag::out().rdbuf(old);
    traced = captured.str();
  }

  void useCounts() {
    Treference<page> writer(RT_EMPTY);
    writer->number = 7;
    published = writer.setCanonical(false);
    Treference<page> update(RT_UPDATE);
    copied = update->number;
    republished = update.setCanonical(true);
    obsolete = writer.stage() == RCS_OBSOLETE;
  }

  std::string recorded, text, traced;
  int number = 0;
  int copied = 0;
  bool data = true;
  bool threadData = true;
  bool section_okay = false;
  bool published = false;
  bool republished = false;
  bool obsolete = false;
};

__attribute__((init_priority(120))) const staticUse atTheStart("at the start");
const staticUse amongTheOthers("among the others");

TEST(StaticUse, WorksFromStaticInitialisers) {
  const struct {
    const staticUse& use;
    const char* recorded;
    const char* stored;
  } rows[] = {
      {atTheStart, "2/16 commonEvent/12: at the start | recorded;",
       "Warning: commonEvent/comment \"at the start\" | static_use_test\n"},
      {amongTheOthers, "2/16 commonEvent/12: among the others | recorded;",
       "Warning: commonEvent/comment \"among the others\" | static_use_test\n"},
  };
  const std::string stored = storingHandler::theInstance().str();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.stored);
    EXPECT_NE(stored.find(row.stored), std::string::npos) << "stored: " << stored;
    EXPECT_EQ(row.use.recorded, row.recorded);
    EXPECT_EQ(row.use.text, "given");
    EXPECT_EQ(row.use.number, 3);
    EXPECT_EQ(row.use.traced, "-1 traced\n");
    EXPECT_TRUE(row.use.section_okay);
    EXPECT_FALSE(row.use.data);
    EXPECT_FALSE(row.use.threadData);
    EXPECT_TRUE(row.use.published);
    EXPECT_EQ(row.use.copied, 7);
    EXPECT_TRUE(row.use.republished);
    EXPECT_TRUE(row.use.obsolete);
  }
}

TEST(StaticUse, RegistersBeforeAndAfterTheLibrary) {
  ThreadData::instance(false);
  static_cast<void>(objects.item.value(false));
  const configDB& db = threadedConfigDB::local();
  for (const char* key : {"static.item", "static.number", "PROGRAMS", "URI_SCHEME", "VNC_OPTIONS",
                          "MaxShortName", "LogDateFormat", "LogTimeZone", "defaultLanguage"}) {
    EXPECT_NE(&db.find(key), &configDB::dummy()) << key;
  }
}

TEST(StaticUse, GivesNullToACreateThatAsksForItsOwnObject) {
  ThreadData::instance(false);
  EXPECT_EQ(objects.slot.created, 1);
  EXPECT_FALSE(objects.slot.foundItself);
  EXPECT_EQ(objects.slot.read, "given");
  EXPECT_NE(storingHandler::theInstance().str().find(
                "Warning: commonEvent/comment \"while building\" | static_use_test\n"),
            std::string::npos);
  ThreadedDataObject* object = objects.slot.data(true);
  EXPECT_NE(dynamic_cast<slotObject*>(object), nullptr);
  EXPECT_EQ(objects.slot.data(false), object);
  EXPECT_EQ(objects.slot.created, 1);
}

TEST(StaticUse, BuildsTheThreadDataForTheFirstObjectThatIsAskedFor) {
  EXPECT_NE(objects.slot.data(true), nullptr);
  EXPECT_TRUE(ThreadData::initialised());
  EXPECT_EQ(objects.slot.created, 1);
  EXPECT_FALSE(objects.slot.foundItself);
}

/// True if the kernel no longer has a set with the id that a child printed.
bool setIsGone(const std::string& output) {
  const std::string label = "using set ";
  const std::size_t start = output.find(label);
  EXPECT_NE(start, std::string::npos) << output;
  if (start == std::string::npos) return false;
  return !setExists(std::atoi(output.c_str() + start + label.size()));
}

/// What outlives everything else in the children below.
struct leftovers {
  Treference<page>* shared;
  Treference<page>* obsolete;
  Treference<page>* clone;
  eventHandler* startUpHandler;
  eventHandler* threadHandler;
  const counted* sharedPage;
  const counted* obsoletePage;
};

leftovers left;

void useAtTheEnd() {
  dprintf(STDOUT_FILENO, "ended %d, initialised %d, forced %d, data %d, set %d\n",
          ThreadData::ended(), ThreadData::initialised(), objects.slot.data(true) != nullptr,
          objects.slot.data(false) != nullptr, semaphoreSet(false));
  commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "at the end", "static_use_test");
  delete left.threadHandler;
  delete left.startUpHandler;
  commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "after the handlers", "static_use_test");
  const bool stored = storingHandler::theInstance().str().find(
                          "Failure: commonEvent/comment \"after the handlers\" | "
                          "static_use_test\n") != std::string::npos;
  dprintf(STDOUT_FILENO, "stored %d, item '%s', number %d, handle %d\n", stored,
          objects.item.value(false).c_str(), objects.number.value(false),
          !threadedConfigDB::local().null());
  delete left.shared;
  delete left.obsolete;
  delete left.clone;
  dprintf(STDOUT_FILENO, "shared %d, obsolete %d\n", static_cast<int>(left.sharedPage->count()),
          static_cast<int>(left.obsoletePage->count()));
  { const Treference<page> traced(RT_EMPTY); }
  const criticalSection section(CS_LOGOUT, true);
  dprintf(STDOUT_FILENO, "section %d\n", section.okay());
}

int leaveMuch() {
  left.startUpHandler = new reportTeller(STDERR_FILENO, inAngles);
  ThreadData::instance(false);
  left.threadHandler = new reportTeller(STDERR_FILENO, inAngles);
  static_cast<void>(objects.item.value(false));
  Treference<page> first(RT_EMPTY);
  first.setCanonical(false);
  left.obsolete = new Treference<page>(RT_READ);
  Treference<page> second(RT_UPDATE);
  second.setCanonical(true);
  left.shared = new Treference<page>(RT_READ);
  left.clone = new Treference<page>(RT_UPDATE);
  left.sharedPage = left.shared->ptr();
  left.obsoletePage = left.obsolete->ptr();
  atVeryEnd = useAtTheEnd;
  dprintf(STDOUT_FILENO, "using set %d\n", semaphoreSet(false));
  return 0;
}

TEST(StaticUse, DoesNoHarmAfterEverythingElseIsGone) {
  const processEnd end = runFreshChild(leaveMuch);
  EXPECT_EQ(end.ending, "exit 0") << end.errors;
  EXPECT_NE(end.output.find("ended 1, initialised 1, forced 0, data 0, set -3\n"),
            std::string::npos)
      << end.output;
  EXPECT_NE(end.output.find("stored 1, item '', number 3, handle 0\n"), std::string::npos)
      << end.output;
  EXPECT_NE(end.output.find("obsolete 1\n"), std::string::npos) << end.output;
  EXPECT_NE(end.output.find("section 0\n"), std::string::npos) << end.output;
  const std::string report = "<2/31 commonEvent/13: at the end | static_use_test>\n";
  ASSERT_GT(end.errors.size(), report.size());
  EXPECT_EQ(end.errors.substr(end.errors.size() - report.size()), report)
      << "the handler in the start-up map, and nothing after it";
  EXPECT_TRUE(setIsGone(end.output)) << end.output << "and the set is still there";
}

TEST(StaticUse, DoesNoHarmAtTheEndWhileObjectsAreTraced) {
  const processEnd end = runFreshChild([] {
    if (!traceFlag::set("refcount", 1)) return 3;
    return leaveMuch();
  });
  EXPECT_EQ(end.ending, "exit 0") << end.errors;
  EXPECT_NE(end.output.find("section 0\n"), std::string::npos) << end.output;
}

TEST(StaticUse, DoesNoHarmAtTheEndOfAChildThatSharesTheSections) {
  const int set = semaphoreSet(false);
  const processEnd end = runChild(leaveMuch);
  EXPECT_EQ(end.ending, "exit 0") << end.errors;
  EXPECT_NE(end.output.find("ended 1, initialised 1, forced 0, data 0, "), std::string::npos)
      << end.output;
  EXPECT_EQ(semaphoreSet(false), set);
  EXPECT_EQ(semaphoreValue(set, CS_REFCOUNT), 1) << "the child took the set away";
}

TEST(StaticUse, DoesNoHarmAtTheEndWhenNothingWasUsedBefore) {
  const processEnd end = runFreshChild([] {
    atVeryEnd = [] {
      commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "at the end", "static_use_test");
      { const criticalSection section(CS_LOGOUT, true); }
      dprintf(STDOUT_FILENO, "using set %d\n", semaphoreSet(false));
      const bool stored = storingHandler::theInstance().str().find(
                              "Failure: commonEvent/comment \"at the end\" | static_use_test\n") !=
                          std::string::npos;
      dprintf(STDOUT_FILENO, "stored %d\n", stored);
    };
    return 0;
  });
  EXPECT_EQ(end.ending, "exit 0") << end.errors;
  EXPECT_NE(end.output.find("stored 1\n"), std::string::npos) << end.output;
  EXPECT_TRUE(setIsGone(end.output)) << end.output << "and the set is still there";
}

TEST(StaticUse, ReadsItemsAtTheEndWhenNothingWasReadBefore) {
  const processEnd end = runFreshChild([] {
    atVeryEnd = [] {
      static_cast<void>(objects.item.value(false));
      dprintf(STDOUT_FILENO, "number %d\n", objects.number.value(false));
    };
    return 0;
  });
  EXPECT_EQ(end.ending, "exit 0") << end.errors;
  EXPECT_EQ(end.output, "number 3\n") << "registered and default are the same";
}

}  // namespace
