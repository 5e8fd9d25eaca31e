// SPDX-License-Identifier: MIT
#include "configDB.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "children.h"
#include "language.h"
#include "reports.h"
#include "threading.h"
#include "trace.h"

namespace configDB_test {

namespace {

using texts = std::vector<std::string>;

const languageString declaredText("greeting", "hello", "configDBtest");

/// The objects of a `ThreadData`, one for each slot.
ThreadedDataObject** objectsOf(const ThreadData& data);

template <ThreadedDataObject** ThreadData::*objects>
struct opened {
  friend ThreadedDataObject** objectsOf(const ThreadData& data) { return data.*objects; }
};
template struct opened<&ThreadData::clientObjects>;

/// Publishes an empty database for each test, so that no test sees what other tests
/// and the library registered.  Records all reports.
class ConfigDB : public testing::Test {
 protected:
  ConfigDB() {
    publishEmpty();
    threadedConfigDB::refresh();
  }
  ~ConfigDB() override {
    configDB::dummy() = configItem(std::string(), "", false, false);
    // At exit a handle can no longer give back an obsolete version.
    threadedConfigDB::refresh();
  }

  static void publishEmpty() {
    writeableConfigDB empty(RT_EMPTY);
    EXPECT_TRUE(empty.setCanonical(false));
  }
  static void publishNothing() {
    configDB nothing(RT_NULL);
    EXPECT_TRUE(nothing.setCanonical(false));
  }
  static bool has(const configDB& db, const char* key) {
    return &db.find(key) != &configDB::dummy();
  }

  ThreadData& m_data = ThreadData::instance(false);
  reportCatcher reports;
};

TEST(ConfigDBModule, HasItsNamesAndFlags) {
  EXPECT_EQ(std::string(AUTO_CREATED), "__AutoCreated__");
  EXPECT_EQ(traceFlag::level("configDB"), 0);
  EXPECT_TRUE(
      (std::is_base_of_v<countedMapRef<std::string, configItem, caseInsensitive>, configDB>));
  EXPECT_EQ(sizeof(configDB), sizeof(reference));
  EXPECT_STREQ(threadedConfigDB::theInstance().name(), "threadedConfigDB");
  EXPECT_EQ(&threadedConfigDB::theInstance(), &threadedConfigDB::theInstance());
}

TEST_F(ConfigDB, SetsANewItemToOneValue) {
  const struct {
    const char* value;
    const char* source;
    bool isDN, asDefault;
    texts values, defaults;
  } rows[] = {
      {"v", "", false, false, {"v"}, {}},
      {"v", "CN=a", false, true, {"v"}, {"v"}},
      {"v", "CN=a", true, false, {"v"}, {}},
      {"", "", false, true, {}, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string("\"") + row.value + "\" from \"" + row.source + "\"");
    writeableConfigDB db(RT_EMPTY);
    db.set("Key", row.value, DistName(row.source), row.isDN, row.asDefault);
    ASSERT_TRUE(has(db, "KEY"));
    const configItem& item = db.find("key");
    EXPECT_EQ(item.all(), row.values);
    EXPECT_EQ(item.getDefaults(), row.defaults);
    EXPECT_EQ(item.getDN().str(), row.source);
    EXPECT_EQ(item.isDN(), row.isDN);
  }
  EXPECT_EQ(reports.take(), texts{});
}

TEST_F(ConfigDB, ReplacesAnItemWithoutValuesWholly) {
  writeableConfigDB db(RT_EMPTY);
  db.make("scalar", true).setDN(DistName("CN=old"));
  db.set("scalar", "v", DistName(), true, true);
  EXPECT_EQ(db.find("scalar").all(), texts{"v"});
  EXPECT_EQ(db.find("scalar").getDefaults(), texts{"v"});
  EXPECT_EQ(db.find("scalar").getDN().str(), "");
  EXPECT_TRUE(db.find("scalar").isDN());

  db.make("vector", true).setDN(DistName("CN=old"));
  db.set("vector", texts{"v", "w"}, DistName("CN=new"), true, true);
  EXPECT_EQ(db.find("vector").all(), (texts{"v", "w"}));
  EXPECT_EQ(db.find("vector").getDefaults(), (texts{"v", "w"}));
  EXPECT_EQ(db.find("vector").getDN().str(), "CN=new");
  EXPECT_TRUE(db.find("vector").isDN());
  EXPECT_EQ(reports.take(), texts{}) << "the flags differ, but there were no values";
}

TEST_F(ConfigDB, KeepsTheDefaultsOfAnItemThatHasValues) {
  writeableConfigDB db(RT_EMPTY);
  db.set("key", "first", DistName("CN=a"), false, true);
  db.set("key", "second", DistName(), false, true);
  EXPECT_EQ(db.find("key").all(), texts{"second"});
  EXPECT_EQ(db.find("key").getDefaults(), texts{"first"});
  EXPECT_EQ(db.find("key").getDN().str(), "CN=a") << "an empty name changes nothing";
  db.set("key", texts{"third", "fourth"}, DistName("CN=b"), false, true);
  EXPECT_EQ(db.find("key").all(), (texts{"third", "fourth"}));
  EXPECT_EQ(db.find("key").getDefaults(), texts{"first"});
  EXPECT_EQ(db.find("key").getDN().str(), "CN=b");
  db.set("key", "", DistName(), false, false);
  EXPECT_EQ(db.find("key").all(), texts{""}) << "an empty value is a value";
}

TEST_F(ConfigDB, LeavesAnItemOfTheOtherKindUnchangedAndReportsIt) {
  writeableConfigDB db(RT_EMPTY);
  db.set("plain", "p", DistName("CN=p"), false, false);
  db.set("names", "CN=n", DistName("CN=s"), true, false);
  const char* const array[] = {"x", nullptr};

  db.set("Plain", "x", DistName("CN=x"), true, true);
  EXPECT_EQ(reports.take(), texts{"2/16 commonEvent/14: Plain non-DN=>DN | configDB::set{scalar}"});
  db.set("names", "x", DistName("CN=x"), false, true);
  EXPECT_EQ(reports.take(), texts{"2/16 commonEvent/14: names DN=>non-DN | configDB::set{scalar}"});
  db.set("plain", texts{"x"}, DistName("CN=x"), true, true);
  EXPECT_EQ(reports.take(), texts{"2/16 commonEvent/14: plain non-DN=>DN | configDB::set{vector}"});
  db.set("names", texts{"x"}, DistName("CN=x"), false, true);
  EXPECT_EQ(reports.take(), texts{"2/16 commonEvent/14: names DN=>non-DN | configDB::set{vector}"});
  db.set("plain", array, DistName("CN=x"), true, true);
  EXPECT_EQ(reports.take(), texts{"2/16 commonEvent/14: plain non-DN=>DN | configDB::set{vector}"});

  EXPECT_EQ(db.find("plain").all(), texts{"p"});
  EXPECT_EQ(db.find("plain").getDN().str(), "CN=p");
  EXPECT_FALSE(db.find("plain").isDN());
  EXPECT_EQ(db.find("names").all(), texts{"CN=n"});
  EXPECT_EQ(db.find("names").getDN().str(), "CN=s");
  EXPECT_TRUE(db.find("names").isDN());
}

TEST_F(ConfigDB, SetsNothingToAnEmptyVector) {
  writeableConfigDB db(RT_EMPTY);
  db.set("new", texts{}, DistName("CN=x"), false, true);
  EXPECT_FALSE(has(db, "new"));
  db.set("old", "v", DistName(), false, true);
  db.set("old", "w", DistName(), false, false);
  db.set("old", texts{}, DistName("CN=x"), true, true);
  EXPECT_EQ(db.find("old").all(), texts{"w"}) << "the defaults do not come back";
  EXPECT_TRUE(db.find("old").getDN().empty());
  EXPECT_EQ(reports.take(), texts{});
}

TEST_F(ConfigDB, SetsANewItemToAVector) {
  writeableConfigDB db(RT_EMPTY);
  db.set("default", texts{"a", ""}, DistName("CN=x"), true, true);
  EXPECT_EQ(db.find("default").all(), (texts{"a", ""}));
  EXPECT_EQ(db.find("default").getDefaults(), (texts{"a", ""}));
  EXPECT_EQ(db.find("default").getDN().str(), "CN=x");
  EXPECT_TRUE(db.find("default").isDN());
  db.set("plain", texts{"a"}, DistName(), false, false);
  EXPECT_EQ(db.find("plain").all(), texts{"a"});
  EXPECT_EQ(db.find("plain").getDefaults(), texts{});
}

TEST_F(ConfigDB, NeverMakesAnArrayTheDefault) {
  writeableConfigDB db(RT_EMPTY);
  const char* const values[] = {"a", "", "c", nullptr};
  const char* const none[] = {nullptr};
  const char* const* const null = nullptr;
  db.set("array", values, DistName("CN=x"), false, true);
  EXPECT_EQ(db.find("array").all(), (texts{"a", "", "c"}));
  EXPECT_EQ(db.find("array").getDefaults(), texts{});
  EXPECT_EQ(db.find("array").getDN().str(), "CN=x");
  db.set("none", none, DistName(), false, true);
  EXPECT_FALSE(has(db, "none"));
  db.set("null", null, DistName(), false, true);
  EXPECT_FALSE(has(db, "null"));
  db.set("array", null, DistName(), false, true);
  EXPECT_EQ(db.find("array").all(), (texts{"a", "", "c"}));
}

TEST_F(ConfigDB, StoresIntoTheDummyWhereItCannotStore) {
  writeableConfigDB nothing(RT_NULL);
  writeableConfigDB canonical(RT_READ);
  writeableConfigDB obsolete(RT_READ);
  writeableConfigDB writable(RT_EMPTY);
  ASSERT_EQ(canonical.stage(), RCS_CANONICAL);
  publishEmpty();
  canonical = RT_READ;
  ASSERT_EQ(obsolete.stage(), RCS_OBSOLETE);
  const struct {
    const char* what;
    writeableConfigDB* db;
    const char* key;
  } rows[] = {
      {"null handle", &nothing, "key"},
      {"canonical", &canonical, "key"},
      {"obsolete", &obsolete, "key"},
      {"empty key", &writable, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    configDB::dummy() = configItem(std::string(), "", false, false);
    row.db->set(row.key, "stray", DistName(), false, true);
    EXPECT_EQ(row.db->size(), 0U);
    EXPECT_EQ(configDB::dummy().all(), texts{"stray"});
    EXPECT_EQ(nothing.find("anything")[0], "stray");
  }
}

TEST_F(ConfigDB, IsAHandleOfTheKindAskedFor) {
  EXPECT_TRUE(configDB(RT_NULL).null());
  EXPECT_EQ(configDB(RT_EMPTY).stage(), RCS_PRIVATE);
  EXPECT_EQ(configDB(RT_EMPTY).size(), 0U);
  const configDB reader(RT_READ);
  EXPECT_EQ(reader.stage(), RCS_CANONICAL);
  EXPECT_EQ(reader.ptr(), configDB::getCanonical().ptr());
  configDB db(RT_UPDATE);
  EXPECT_EQ(db.stage(), RCS_PRIVATE);
  EXPECT_EQ(db.version(), 1);
  EXPECT_EQ(db.parent().ptr(), reader.ptr());
  EXPECT_EQ(&(db = RT_READ), &db);
  EXPECT_EQ(db.ptr(), reader.ptr());
  EXPECT_EQ(reader.ptr()->count(), 4) << "canonical, this thread's, and two here";
  db = RT_NULL;
  EXPECT_TRUE(db.null());
  db = RT_EMPTY;
  EXPECT_EQ(db.stage(), RCS_PRIVATE);
  const configDB copy(db);
  EXPECT_EQ(copy.ptr(), db.ptr());
  db = reader;
  EXPECT_EQ(db.ptr(), reader.ptr());
  EXPECT_EQ(copy.ptr()->count(), 1);
}

TEST_F(ConfigDB, ReleasesWhatItHeldAlsoWhenThereIsNothingToUpdate) {
  publishNothing();
  threadedConfigDB::refresh();
  const processEnd end = runSharingChild([] {
    configDB db(RT_EMPTY);
    traceFlag::set("refcount", 1);
    db = RT_UPDATE;
    traceFlag::set("refcount", 0);
    return db.null() ? 0 : 1;
  });
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_NE(end.errors.find("-1 destroying  0x"), std::string::npos) << "<" << end.errors << ">";
}

TEST_F(ConfigDB, PublishesAnEditAtItsEnd) {
  const configDB before(RT_READ);
  {
    editableConfigDB editor;
    EXPECT_EQ(editor.stage(), RCS_PRIVATE);
    EXPECT_EQ(editor.version(), 1);
    editor.set("key", "value", DistName("CN=x"), false);
    EXPECT_FALSE(has(configDB(RT_READ), "key")) << "not published yet";
  }
  const configDB after(RT_READ);
  EXPECT_EQ(after.version(), 1);
  EXPECT_EQ(after.stage(), RCS_CANONICAL);
  EXPECT_TRUE(after.parent().null());
  EXPECT_EQ(after.find("KEY").all(), texts{"value"});
  EXPECT_EQ(after.find("key").getDN().str(), "CN=x");
  EXPECT_EQ(before.stage(), RCS_OBSOLETE);
  EXPECT_FALSE(has(before, "key"));
  EXPECT_EQ(reports.take(), texts{});
}

TEST_F(ConfigDB, NeverMakesAnEditTheDefault) {
  const char* const array[] = {"a", "b", nullptr};
  {
    editableConfigDB editor;
    editor.set("scalar", "v", DistName(), false);
    editor.set("vector", texts{"v", "w"}, DistName("CN=x"), true);
    editor.set("array", array, DistName(), false);
  }
  const configDB db(RT_READ);
  EXPECT_EQ(db.find("scalar").all(), texts{"v"});
  EXPECT_EQ(db.find("vector").all(), (texts{"v", "w"}));
  EXPECT_TRUE(db.find("vector").isDN());
  EXPECT_EQ(db.find("array").all(), (texts{"a", "b"}));
  for (const char* key : {"scalar", "vector", "array"}) {
    EXPECT_EQ(db.find(key).getDefaults(), texts{}) << key;
  }
}

TEST_F(ConfigDB, PublishesAnEditThatChangedNothing) {
  { const editableConfigDB editor; }
  EXPECT_EQ(configDB(RT_READ).version(), 1);
  { const editableConfigDB editor; }
  EXPECT_EQ(configDB(RT_READ).version(), 2);
  EXPECT_EQ(reports.take(), texts{});
}

TEST_F(ConfigDB, LosesTheEditOfTheLaterOfTwoEditors) {
  {
    editableConfigDB later;
    later.set("later", "l", DistName(), false);
    {
      editableConfigDB earlier;
      earlier.set("earlier", "e", DistName(), false);
    }
    EXPECT_EQ(reports.take(), texts{});
    EXPECT_FALSE(later.commitable());
  }
  EXPECT_EQ(reports.take(),
            texts{"2/31 commonEvent/4: setCanonical() | editableConfigDB::~editableConfigDB"});
  const configDB db(RT_READ);
  EXPECT_EQ(db.version(), 1);
  EXPECT_TRUE(has(db, "earlier"));
  EXPECT_FALSE(has(db, "later"));
}

TEST_F(ConfigDB, ReportsAnEditorThatHasNothingToPublish) {
  publishNothing();
  {
    editableConfigDB editor;
    EXPECT_TRUE(editor.null());
  }
  EXPECT_EQ(reports.take(), texts{"2/31 commonEvent/18: configDB not RCS_PRIVATE | "
                                  "editableConfigDB::~editableConfigDB"});
  EXPECT_TRUE(configDB(RT_READ).null());
}

TEST_F(ConfigDB, ReportsAnEditorThatIsPublishedAlready) {
  {
    editableConfigDB editor;
    EXPECT_TRUE(editor.setCanonical(true));
  }
  EXPECT_EQ(reports.take(), texts{"2/31 commonEvent/18: configDB not RCS_PRIVATE | "
                                  "editableConfigDB::~editableConfigDB"});
  EXPECT_EQ(configDB(RT_READ).version(), 1);
}

TEST_F(ConfigDB, OverridesOptionsOfItemsAndLeavesTheOthers) {
  {
    writeableConfigDB db(RT_UPDATE);
    db.set("Size", "5", DistName(), false, true);
    ASSERT_TRUE(db.setCanonical(true));
  }
  {
    editableConfigDB editor;
    EXPECT_EQ(&editor.make("unknown", false), &configDB::dummy());
    EXPECT_NE(&editor.make("size", false), &configDB::dummy());
    editor.set("size", "7", DistName(), false);
  }
  threadedConfigDB::refresh();
  EXPECT_EQ(threadedConfigDB::local().find("SIZE").all(), texts{"7"});
  EXPECT_EQ(threadedConfigDB::local().find("size").getDefaults(), texts{"5"});
  EXPECT_FALSE(has(threadedConfigDB::local(), "unknown"));
}

TEST_F(ConfigDB, OnlyReleasesAWriteableDatabaseAtItsEnd) {
  {
    writeableConfigDB db(RT_UPDATE);
    db.set("key", "value", DistName(), false, false);
  }
  EXPECT_EQ(configDB(RT_READ).version(), 0);
  EXPECT_EQ(reports.take(), texts{});
}

TEST_F(ConfigDB, FinalisesADatabaseWhenNoneIsCanonical) {
  publishNothing();
  writeableConfigDB db(RT_EMPTY);
  db.set("key", "value", DistName(), false, true);
  EXPECT_TRUE(db.finalise());
  EXPECT_TRUE(db.null());
  const configDB published(RT_READ);
  EXPECT_EQ(published.version(), 0);
  EXPECT_EQ(published.stage(), RCS_CANONICAL);
  EXPECT_EQ(published.find("key").all(), texts{"value"});
}

TEST_F(ConfigDB, RefusesToFinaliseWhenAnotherDatabaseIsCanonical) {
  const configDB before(RT_READ);
  writeableConfigDB db(RT_EMPTY);
  EXPECT_FALSE(db.finalise());
  EXPECT_TRUE(db.null());
  EXPECT_FALSE(db.finalise()) << "a null handle is refused too";
  EXPECT_EQ(configDB(RT_READ).ptr(), before.ptr());
  EXPECT_EQ(before.stage(), RCS_CANONICAL);
}

TEST_F(ConfigDB, FinalisesACopyOfWhatIsCanonical) {
  writeableConfigDB db(RT_UPDATE);
  EXPECT_TRUE(db.finalise());
  EXPECT_EQ(configDB(RT_READ).version(), 1);
}

TEST(ConfigDBFinalise, BuildsTheThreadDataAndTheLocalisedStrings) {
  const processEnd end = runFreshChild([] {
    const reportTeller printer(STDERR_FILENO, inAngles);
    const bool before = ThreadData::initialised();
    writeableConfigDB db(RT_EMPTY);
    const bool published = db.finalise();
    std::printf("%d %d %d\n", before, published, ThreadData::initialised());
    const reportTeller inTheMapOfTheThread(STDERR_FILENO, inAngles);
    languageString::finalise();
    return 0;
  });
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(end.output, "0 1 1\n") << "run each test in a process of its own";
  EXPECT_EQ(end.errors, "<2/16 commonEvent/18: Repeated calls | languageString::finalise()>\n");
}

TEST(ConfigDBFinalise, PublishesBehindTheThreadData) {
  const processEnd end = runFreshChild([] {
    writeableConfigDB db(RT_EMPTY);
    const bool published = db.finalise();
    std::printf("%d %d\n", published, threadedConfigDB::local().null());
    return 0;
  });
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(end.output, "1 1\n") << "run each test in a process of its own";
}

TEST_F(ConfigDB, FinalisesTheLocalisedStringsBeforeItPublishes) {
  /// Records whether a database was published at the time of a report.
  class watch : public eventHandler {
   public:
    watch() : eventHandler(0) {}
    bool handle(eventReport& event) override {
      seen.push_back(reportLine(event) + (configDB(RT_READ).null() ? ", before" : ", after"));
      return true;
    }
    const char* name() const override { return "watch"; }
    texts seen;
  };
  languageString::finalise();  // so that it reports the next time
  publishNothing();
  watch handler;
  writeableConfigDB db(RT_EMPTY);
  EXPECT_TRUE(db.finalise());
  EXPECT_EQ(handler.seen,
            texts{"2/16 commonEvent/18: Repeated calls | languageString::finalise(), before"});
}

TEST_F(ConfigDB, KeepsAThreadOnItsVersionUntilItRefreshes) {
  configDB& local = threadedConfigDB::local();
  EXPECT_EQ(&threadedConfigDB::local(), &local);
  EXPECT_EQ(local.version(), 0);
  const counted* old = local.ptr();
  const configDB elsewhere(local);
  {
    editableConfigDB editor;
    editor.set("key", "value", DistName(), false);
  }
  EXPECT_EQ(local.ptr(), old);
  EXPECT_EQ(local.stage(), RCS_OBSOLETE);
  EXPECT_FALSE(has(local, "key"));
  EXPECT_EQ(old->count(), 2) << "this thread's handle and the one elsewhere";
  threadedConfigDB::refresh();
  EXPECT_EQ(&threadedConfigDB::local(), &local) << "the handle stays, but holds another version";
  EXPECT_EQ(local.version(), 1);
  EXPECT_EQ(local.stage(), RCS_CANONICAL);
  EXPECT_TRUE(has(local, "key"));
  EXPECT_EQ(elsewhere.ptr(), old);
  EXPECT_FALSE(has(elsewhere, "key"));
  EXPECT_EQ(old->count(), 1);
}

TEST_F(ConfigDB, RefreshesToNothingWhenNothingIsPublished) {
  publishNothing();
  EXPECT_FALSE(threadedConfigDB::local().null());
  threadedConfigDB::refresh();
  EXPECT_TRUE(threadedConfigDB::local().null());
}

TEST_F(ConfigDB, CreatesAReadingHandleForEachThread) {
  const std::unique_ptr<ThreadedDataObject> made(threadedConfigDB::theInstance().create());
  auto* db = dynamic_cast<configDB*>(made.get());
  ASSERT_NE(db, nullptr);
  EXPECT_EQ(db->ptr(), configDB::getCanonical().ptr());
  EXPECT_EQ(db->stage(), RCS_CANONICAL);
}

TEST_F(ConfigDB, ThrowsWhenTheSlotHoldsSomethingElse) {
  struct something : ThreadedDataObject {};
  something other;
  ThreadedDataObject** slot = objectsOf(m_data);
  while (*slot != &threadedConfigDB::local()) slot++;
  ThreadedDataObject* const own = std::exchange(*slot, &other);
  EXPECT_THROW(static_cast<void>(threadedConfigDB::local()), std::bad_cast);
  EXPECT_THROW(threadedConfigDB::refresh(), std::bad_cast);
  *slot = own;
}

TEST_F(ConfigDB, KeepsAChildProcessOnItsVersion) {
  {
    editableConfigDB editor;
    editor.set("key", "value", DistName(), false);
  }
  const processEnd end = runSharingChild([] {
    std::printf("%d %s\n", static_cast<int>(threadedConfigDB::local().version()),
                threadedConfigDB::local().find("key")[0].c_str());
    threadedConfigDB::refresh();
    std::printf("%d %s\n", static_cast<int>(threadedConfigDB::local().version()),
                threadedConfigDB::local().find("key")[0].c_str());
    {
      editableConfigDB editor;
      editor.set("key", "child's", DistName(), false);
    }
    threadedConfigDB::refresh();
    return 0;
  });
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(end.output, "0 \n1 value\n");
  EXPECT_EQ(end.errors, "");
  threadedConfigDB::refresh();
  EXPECT_EQ(threadedConfigDB::local().version(), 1);
  EXPECT_EQ(threadedConfigDB::local().find("key")[0], "value") << "a child has its own copies";
}

TEST_F(ConfigDB, StaysInOnePieceThroughManyEdits) {
  for (int i = 1; i <= 1000; i++) {
    editableConfigDB editor;
    editor.set("count", std::to_string(i), DistName(), false);
  }
  threadedConfigDB::refresh();
  EXPECT_EQ(threadedConfigDB::local().version(), 1000);
  EXPECT_EQ(threadedConfigDB::local().find("count").all(), texts{"1000"});
  EXPECT_EQ(threadedConfigDB::local().ptr()->count(), 2)
      << "the canonical handle and this thread's";
  EXPECT_EQ(reports.take(), texts{});
}

}  // namespace

}  // namespace configDB_test
