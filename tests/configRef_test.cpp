// SPDX-License-Identifier: MIT
#include "configRef.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

#include "children.h"
#include "configDB.h"
#include "registered.h"
#include "reports.h"
#include "system.h"
#include "threading.h"

namespace {
int domainQuestions = 0;
}

std::string InterfaceFinder::FQDN() {
  domainQuestions++;
  return "host.example.com";
}

namespace {

using texts = std::vector<std::string>;

const char* const colours[] = {"red", "green=2", "", nullptr};
const char* const noColours[] = {nullptr};

const configString greeting("test.Greeting", "hello");
const configString sameGreeting("TEST.GREETING", "");
const configString blank("test.blank", "");
const configString digits("test.digits", "12ab");
const configString place("test.place", "CN=a,DC=b");
const configString first("test.twice", "one");
const configString second("test.twice", "two");
const configInt five("test.five", 5);
const configInt zero("test.zero", 0);
const configInt negative("test.negative", -3);
const configInt largest("test.largest", INT_MAX);
const configArray list("test.list", colours);
const configArray none("test.none", noColours);
const configArray null("test.null", nullptr);

/// What the references read during static initialisation.
struct earlyReading {
  std::string text = greeting.value(false);
  std::string sameText = sameGreeting.value(false);
  std::string missing = blank.value(true);
  int number = five;
  int fallback = negative;
  texts all = list.values();
  std::size_t noneSize = none.size();
  bool published = !configDB(RT_READ).null();
  bool threadData = ThreadData::initialised();
};

const earlyReading early;

/// A published database, and a recorder in the map that this thread keeps using.
class ConfigRef : public testing::Test {
 protected:
  ConfigRef() {
    static_cast<void>(greeting.value(false));
    threadedConfigDB::refresh();
  }
  // At exit a handle can no longer give back an obsolete version.
  ~ConfigRef() override { threadedConfigDB::refresh(); }

  static void store(const char* key, const char* value) {
    {
      editableConfigDB editor;
      editor.set(key, value, DistName(), false);
    }
    threadedConfigDB::refresh();
  }
  static const configItem& item(const char* key) { return threadedConfigDB::local().find(key); }
  static bool has(const char* key) { return &item(key) != &configDB::dummy(); }

  ThreadData& m_data = ThreadData::instance(false);
  reportCatcher reports;
};

// --- Start-up; each of these needs a process of its own ---------------------

TEST(ConfigRefStart, ReadsTheRegistrationDatabaseDuringStaticInitialisation) {
  EXPECT_EQ(early.text, "hello");
  EXPECT_EQ(early.sameText, "hello");
  EXPECT_EQ(early.missing, "");
  EXPECT_EQ(early.number, 5);
  EXPECT_EQ(early.fallback, -3);
  EXPECT_EQ(early.all, (texts{"red", "green=2", ""}));
  EXPECT_EQ(early.noneSize, 0U);
  EXPECT_FALSE(early.published);
  EXPECT_FALSE(early.threadData);
}

TEST(ConfigRefStart, PublishesWithTheFirstReadAfterTheThreadDataWasBuilt) {
  EXPECT_EQ(greeting.value(false), "hello");
  EXPECT_TRUE(configDB(RT_READ).null()) << "still registering";
  ThreadData::instance(false);
  EXPECT_TRUE(configDB(RT_READ).null()) << "not read yet";
  EXPECT_TRUE(threadedConfigDB::local().null());
  EXPECT_EQ(greeting.value(false), "hello");
  EXPECT_EQ(threadedConfigDB::local().version(), 0);
  EXPECT_EQ(threadedConfigDB::local().stage(), RCS_CANONICAL);
  EXPECT_EQ(threadedConfigDB::local().ptr(), configDB::getCanonical().ptr());
  {
    editableConfigDB editor;
    editor.set("test.greeting", "good day", DistName(), false);
  }
  EXPECT_EQ(configDB(RT_READ).version(), 1);
  EXPECT_EQ(greeting.value(false), "hello") << "not before a refresh";
  threadedConfigDB::refresh();
  EXPECT_EQ(greeting.value(false), "good day");
  EXPECT_EQ(threadedConfigDB::local().version(), 1);
}

TEST(ConfigRefStart, RegistersUntilTheFirstRead) {
  ThreadData::instance(false);
  reportCatcher reports;
  const configString late("test.late", "in time");
  EXPECT_EQ(reports.take(), texts{});
  EXPECT_EQ(late.value(true), "in time");
  const configString tooLate("test.tooLate", "x");
  EXPECT_EQ(reports.take(),
            texts{"2/24 commonEvent/18: test.tooLate | configString::configString"});
  EXPECT_EQ(tooLate.value(false), "");
}

TEST(ConfigRefStart, RegistersNothingOnceAnyDatabaseIsPublished) {
  reportCatcher reports;
  {
    writeableConfigDB other(RT_EMPTY);
    ASSERT_TRUE(other.setCanonical(true));
  }
  const configString late("test.late", "x");
  EXPECT_EQ(reports.take(), texts{"2/24 commonEvent/18: test.late | configString::configString"});
  EXPECT_EQ(late.value(false), "");
  EXPECT_EQ(greeting.value(false), "hello") << "read where it registered";
  ThreadData::instance(false);
  EXPECT_EQ(greeting.value(false), "") << "read where it is not";
}

TEST(ConfigRefStart, KeepsTheRegisteredItemsBackWhileAnotherDatabaseIsPublished) {
  ThreadData::instance(false);
  EXPECT_TRUE(threadedConfigDB::local().null());
  {
    writeableConfigDB other(RT_EMPTY);
    other.set("test.greeting", "good day", DistName(), false, true);
    ASSERT_TRUE(other.setCanonical(true));
  }
  EXPECT_EQ(greeting.value(false), "good day");
  EXPECT_EQ(five, 5);
  configDB nothing(RT_NULL);
  ASSERT_TRUE(nothing.setCanonical(false));
  threadedConfigDB::refresh();
  EXPECT_EQ(greeting.value(false), "hello") << "published when there is no other";
  EXPECT_EQ(threadedConfigDB::local().version(), 0);
}

TEST(ConfigRefStart, AbortsWhenNoDatabaseCanBeHad) {
  const processEnd end = runSharingChild([] {
    ThreadData::instance(false);
    const reportTeller printer(STDERR_FILENO, inAngles);
    static_cast<void>(greeting.value(false));
    configDB nothing(RT_NULL);
    nothing.setCanonical(false);
    threadedConfigDB::refresh();
    return greeting.value(false).empty() ? 1 : 2;
  });
  EXPECT_EQ(end.ending, "signal 6");
  EXPECT_EQ(end.errors,
            "<2/16 commonEvent/18: Repeated calls | languageString::finalise()>\n" +
                std::string(program_invocation_short_name) +
                ": ../brimcore/configRef:122: const configItem& configRef::item() const: "
                "Assertion `!cDB.null()' failed.\n");
}

// --- Registered items -------------------------------------------------------

TEST_F(ConfigRef, RegistersWhatItsClassSays) {
  const struct {
    const char* key;
    bool registered;
    texts values, defaults;
  } rows[] = {
      {"test.greeting", true, {"hello"}, {"hello"}},
      {"test.blank", true, {}, {}},
      {"test.five", true, {"5"}, {"5"}},
      {"test.zero", true, {"0"}, {"0"}},
      {"test.negative", true, {}, {}},
      {"test.largest", true, {"2147483647"}, {"2147483647"}},
      {"test.list", true, {"red", "green=2", ""}, {}},
      {"test.none", false, {}, {}},
      {"test.null", true, {}, {}},
      {"test.twice", true, {"two"}, {"one"}},
      {"test.unknown", false, {}, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.key);
    EXPECT_EQ(has(row.key), row.registered);
    EXPECT_EQ(item(row.key).all(), row.values);
    EXPECT_EQ(item(row.key).getDefaults(), row.defaults);
    EXPECT_TRUE(item(row.key).getDN().empty());
    EXPECT_FALSE(item(row.key).isDN());
  }
}

TEST_F(ConfigRef, FindsTheItemsOfTheLibrary) {
  std::vector<registered::item> rows = registered::items();
  rows.push_back({"programs", {"VNC=vncviewer", "SSH=putty"}, {}});
  for (const registered::item& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_TRUE(has(row.name));
    EXPECT_EQ(item(row.name).all(), row.values);
    EXPECT_EQ(item(row.name).getDefaults(), row.defaults);
  }
}

TEST_F(ConfigRef, IsNotCopiedAndKeepsItsName) {
  EXPECT_FALSE(std::is_copy_constructible_v<configString>);
  EXPECT_FALSE(std::is_copy_assignable_v<configInt>);
  EXPECT_FALSE(std::is_copy_constructible_v<configArray>);
  EXPECT_EQ(greeting.name(), "test.Greeting");
  EXPECT_EQ(sameGreeting.name(), "TEST.GREETING");
  EXPECT_EQ(five.name(), "test.five");
  EXPECT_EQ(list.name(), "test.list");
}

// --- Strings ----------------------------------------------------------------

TEST_F(ConfigRef, ReadsAString) {
  EXPECT_EQ(greeting.value(true), "hello");
  EXPECT_EQ(sameGreeting.value(true), "hello");
  const std::string& converted = greeting;
  EXPECT_EQ(converted, "hello");
  EXPECT_FALSE(greeting.empty());
  EXPECT_EQ(reports.take(), texts{});
}

TEST_F(ConfigRef, ReportsAMissingStringOnlyWhenAsked) {
  EXPECT_TRUE(blank.empty());
  EXPECT_EQ(blank.value(false), "");
  EXPECT_EQ(reports.take(), texts{});
  const texts report{"1/24 commonEvent/10: test.blank[0] | configString::value"};
  EXPECT_EQ(blank.value(true), "");
  EXPECT_EQ(reports.take(), report);
  const std::string& converted = blank;
  EXPECT_EQ(converted, "");
  EXPECT_EQ(reports.take(), report);
}

TEST_F(ConfigRef, TakesAnEmptyValueForAValue) {
  store("test.emptied", "");
  EXPECT_TRUE(has("test.emptied"));
  EXPECT_TRUE(item("test.emptied").empty()) << "a new item with an empty value has none";
  store("test.emptied", "x");
  store("test.emptied", "");
  EXPECT_EQ(item("test.emptied").all(), texts{""});
  const configString late("test.emptied", "");
  reports.take();
  EXPECT_EQ(late.value(true), "");
  EXPECT_FALSE(late.empty());
  EXPECT_EQ(late.getInt(), -1);
  EXPECT_EQ(reports.take(), texts{});
}

TEST_F(ConfigRef, ReadsAStringAsANumber) {
  EXPECT_EQ(digits.getInt(), 12);
  EXPECT_EQ(greeting.getInt(), -1);
  EXPECT_EQ(reports.take(), texts{});
  EXPECT_EQ(blank.getInt(), -1);
  EXPECT_EQ(reports.take(), texts{"1/24 commonEvent/10: test.blank[0] | configString::getInt"});
}

TEST_F(ConfigRef, ReadsAStringAsADistinguishedName) {
  EXPECT_EQ(place.asDN().str(), "CN=a,DC=b");
  EXPECT_EQ(place.asDN().shortName(), "a");
}

// --- Integers ---------------------------------------------------------------

TEST_F(ConfigRef, ReadsANumberAboveZeroOrTheDefault) {
  const struct {
    const char* stored;
    int read;
  } rows[] = {
      {"7", 7},
      {"0", 5},
      {"1", 1},
      {"-4", 5},
      {"abc", 5},
      {"12ab", 12},
      {"", 5},
      {"007", 7},
      {" 7", 5},
      {"+7", 5},
      {"00", 5},
      {"5", 5},
      {"2147483647", 2147483647},
      {"2147483648", 5},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string("\"") + row.stored + "\"");
    store("test.five", row.stored);
    EXPECT_EQ(five.value(true), row.read);
    EXPECT_EQ(five.value(false), row.read);
    const int converted = five;
    EXPECT_EQ(converted, row.read);
    EXPECT_EQ(item("test.five").getDefaults(), texts{"5"});
  }
  EXPECT_EQ(reports.take(), texts{}) << "a bad number is not a missing one";
}

TEST_F(ConfigRef, FallsBackToItsOwnDefault) {
  EXPECT_EQ(zero.value(true), 0);
  EXPECT_EQ(largest.value(true), 2147483647);
  EXPECT_EQ(reports.take(), texts{});
  EXPECT_EQ(negative.value(false), -3);
  EXPECT_EQ(reports.take(), texts{});
  const texts report{"1/24 commonEvent/10: test.negative[0] | configInt::value"};
  EXPECT_EQ(negative.value(true), -3);
  EXPECT_EQ(reports.take(), report);
  const int converted = negative;
  EXPECT_EQ(converted, -3);
  EXPECT_EQ(reports.take(), report);
  store("test.negative", "-7");
  EXPECT_EQ(negative.value(true), -3);
  store("test.negative", "9");
  EXPECT_EQ(negative.value(true), 9);
  EXPECT_EQ(reports.take(), texts{});
}

// --- Arrays -----------------------------------------------------------------

TEST_F(ConfigRef, ReadsAnArray) {
  EXPECT_EQ(list.values(), (texts{"red", "green=2", ""}));
  EXPECT_EQ(list.size(), 3U);
  const texts& converted = list;
  EXPECT_EQ(converted, (texts{"red", "green=2", ""}));
  EXPECT_EQ(list[0], "red");
  EXPECT_EQ(list[1], "green=2");
  EXPECT_EQ(list[2], "");
  EXPECT_EQ(none.size(), 0U);
  EXPECT_EQ(null.size(), 0U);
  EXPECT_EQ(null.values(), texts{});
  EXPECT_EQ(reports.take(), texts{});
}

TEST_F(ConfigRef, ReadsAnArrayAsAnAssociationList) {
  const assocList pairs = list.list();
  ASSERT_EQ(pairs.size(), 3U);
  EXPECT_EQ(pairs["0"], "red");
  EXPECT_EQ(pairs["GREEN"], "2");
  EXPECT_EQ(pairs["1"], "");
  EXPECT_EQ(pairs.count("1"), 1U);
  EXPECT_TRUE(none.list().empty());
}

TEST_F(ConfigRef, ReportsAnIndexPastTheEndOfAnArray) {
  const struct {
    const configArray& array;
    std::size_t offset;
    const char* report;
  } rows[] = {
      {list, 3,
       "2/24 commonEvent/10: configItem test.list[3] does not exist | configArray::operator[]"},
      {list, 17,
       "2/24 commonEvent/10: configItem test.list[17] does not exist | configArray::operator[]"},
      {list, 4294967295U,
       "2/24 commonEvent/10: configItem test.list[4294967295] does not exist | "
       "configArray::operator[]"},
      {null, 0,
       "2/24 commonEvent/10: configItem test.null[0] does not exist | configArray::operator[]"},
      {none, 0,
       "2/24 commonEvent/10: configItem test.none[0] does not exist | configArray::operator[]"},
  };
  const std::string* empty = &list[3];
  reports.take();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.report);
    const std::string& value = row.array[row.offset];
    EXPECT_EQ(value, "");
    EXPECT_EQ(&value, empty) << "one shared empty string";
    EXPECT_EQ(reports.take(), texts{row.report});
  }
}

TEST_F(ConfigRef, ReadsAnArrayThatGetsItsItemLater) {
  EXPECT_FALSE(has("test.none"));
  store("test.none", "now");
  EXPECT_EQ(none.values(), texts{"now"});
}

TEST_F(ConfigRef, ReadsOverriddenArraysAsTheOneValue) {
  store("test.list", "only=1");
  EXPECT_EQ(list.values(), texts{"only=1"});
  EXPECT_EQ(list.list()["only"], "1");
}

// --- After registration -----------------------------------------------------

TEST_F(ConfigRef, ReportsALateRegistrationWhateverItsClass) {
  const configString text("late.string", "x");
  EXPECT_EQ(reports.take(), texts{"2/24 commonEvent/18: late.string | configString::configString"});
  const configInt number("late.int", 4);
  EXPECT_EQ(reports.take(), texts{"2/24 commonEvent/18: late.int | configString::configString"});
  const configArray array("late.array", colours);
  EXPECT_EQ(reports.take(), texts{"2/24 commonEvent/18: late.array | configString::configString"});
  const configArray nullArray("late.null", nullptr);
  EXPECT_EQ(reports.take(), texts{"2/24 commonEvent/18: late.null | configString::configString"});

  for (const char* key : {"late.string", "late.int", "late.array", "late.null"}) {
    EXPECT_FALSE(has(key)) << key;
  }
  EXPECT_EQ(text.value(false), "");
  EXPECT_EQ(number.value(false), 4);
  EXPECT_EQ(array.size(), 0U);
  store("late.string", "s");
  store("late.int", "8");
  store("late.array", "a");
  EXPECT_EQ(text.value(false), "s");
  EXPECT_EQ(number.value(false), 8);
  EXPECT_EQ(array.values(), texts{"a"});
}

TEST_F(ConfigRef, ReadsARegisteredItemThroughALateReference) {
  static const configString late("TEST.place", "another default");
  EXPECT_EQ(reports.take(), texts{"2/24 commonEvent/18: TEST.place | configString::configString"});
  EXPECT_EQ(late.value(true), "CN=a,DC=b");
}

TEST_F(ConfigRef, LooksItsItemUpAfreshOnEveryRead) {
  store("test.Greeting", "one");
  EXPECT_EQ(greeting.value(false), "one");
  {
    editableConfigDB editor;
    editor.set("test.greeting", "two", DistName(), false);
  }
  EXPECT_EQ(greeting.value(false), "one");
  threadedConfigDB::refresh();
  EXPECT_EQ(greeting.value(false), "two");
  threadedConfigDB::local() = RT_NULL;
  EXPECT_EQ(greeting.value(false), "two") << "a null handle is refreshed";
  {
    editableConfigDB editor;
    editor.set("test.greeting", texts{}, DistName(), false);
  }
  threadedConfigDB::refresh();
  EXPECT_EQ(greeting.value(false), "two") << "an empty vector sets nothing";
}

TEST_F(ConfigRef, TakesTheRootNameFromTheDomainOnFirstUse) {
  EXPECT_EQ(domainQuestions, 0);
  EXPECT_EQ(configRef::RootDN().str(), "DC=host,DC=example,DC=com");
  EXPECT_EQ(&configRef::RootDN(), &configRef::RootDN());
  EXPECT_EQ(domainQuestions, 1);
}

}  // namespace
