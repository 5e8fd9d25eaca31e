// SPDX-License-Identifier: MIT
// The configuration database at the start of a program that is linked with the
// library and mentions none of the modules that register items.
//
// The first test needs a fresh process; the others work in any.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "configDB.h"
#include "configRef.h"
#include "registered.h"
#include "threading.h"

namespace startup_test {

namespace {

using Strings = std::vector<std::string>;

configString ownItem("startup_test.item", "own");

Strings names(const configDB& database) {
  Strings result;
  for (const auto& [name, item] : database.pointer()->map()) {
    result.push_back(name);
  }
  return result;
}

TEST(StartUp, TheFirstReadPublishesVersionZero) {
  EXPECT_TRUE(configDB(RT_READ).null()) << "published before the first read";
  EXPECT_FALSE(ThreadData::initialised());
  EXPECT_EQ("own", ownItem.value(false));
  EXPECT_TRUE(configDB(RT_READ).null()) << "published by a read during registration";

  ThreadData::instance(false);
  EXPECT_TRUE(configDB(RT_READ).null()) << "published without a read";
  EXPECT_TRUE(threadedConfigDB::local().null());

  EXPECT_EQ("own", ownItem.value(false));
  const configDB published(RT_READ);
  ASSERT_FALSE(published.null());
  EXPECT_EQ(0, published.version());
  EXPECT_EQ(RCS_CANONICAL, published.stage());
  EXPECT_EQ(published.ptr(), threadedConfigDB::local().ptr());

  EXPECT_EQ("own", ownItem.value(false));
  EXPECT_EQ(0, configDB(RT_READ).version()) << "a second read published again";
}

TEST(StartUp, AllItemsHaveTheirDefaults) {
  ThreadData::instance(false);
  ASSERT_EQ("own", ownItem.value(false));
  const configDB database(RT_READ);
  ASSERT_FALSE(database.null());
  EXPECT_EQ(registered::itemNames({"startup_test.item"}), names(database));
  std::vector<registered::item> cases = registered::items();
  cases.push_back({"programs", {"VNC=vncviewer", "SSH=putty"}, {}});
  cases.push_back({"DEFAULTLANGUAGE", {"English"}, {"English"}});
  cases.push_back({"dummy", {}, {}});
  cases.push_back({"", {}, {}});
  const configDB* const handles[] = {&database, &threadedConfigDB::local()};
  for (const configDB* handle : handles) {
    for (const auto& one : cases) {
      SCOPED_TRACE(one.name);
      const configItem& item = handle->find(one.name);
      EXPECT_EQ(one.values, item.all());
      EXPECT_EQ(one.defaults, item.getDefaults());
      EXPECT_FALSE(item.isDN());
      EXPECT_TRUE(item.getDN().empty());
      EXPECT_EQ(one.values.empty(), &item == &configDB::dummy());
    }
  }
}

TEST(StartUp, AnOverrideMakesTheNextVersionAndARefreshShowsIt) {
  ThreadData::instance(false);
  ASSERT_EQ("own", ownItem.value(false));
  threadedConfigDB::refresh();
  const int before = configDB(RT_READ).version();
  {
    editableConfigDB editor;
    ASSERT_FALSE(editor.null());
    EXPECT_EQ(before + 1, editor.version());
    EXPECT_EQ(RCS_PRIVATE, editor.stage());
    editor.set("startup_test.ITEM", "overridden", DistName(), false);
    editor.set("PROGRAMS", "FTP=xyz", DistName(), false);
    EXPECT_EQ(before, configDB(RT_READ).version()) << "published before the editor is closed";
    EXPECT_EQ("own", ownItem.value(false));
  }
  EXPECT_EQ(before + 1, configDB(RT_READ).version());
  EXPECT_EQ("overridden", configDB(RT_READ).find("startup_test.item")[0]);

  EXPECT_EQ(before, threadedConfigDB::local().version()) << "seen without a refresh";
  EXPECT_EQ(RCS_OBSOLETE, threadedConfigDB::local().stage());
  EXPECT_EQ("own", ownItem.value(false));

  threadedConfigDB::refresh();
  EXPECT_EQ(before + 1, threadedConfigDB::local().version());
  EXPECT_EQ(RCS_CANONICAL, threadedConfigDB::local().stage());
  EXPECT_EQ("overridden", ownItem.value(false));
  EXPECT_EQ((Strings{"FTP=xyz"}), threadedConfigDB::local().find("PROGRAMS").all());
  EXPECT_EQ((Strings{"own"}), threadedConfigDB::local().find("startup_test.item").getDefaults());
  EXPECT_EQ((Strings{"VNC"}), threadedConfigDB::local().find("URI_SCHEME").all());
}

// In a process of its own the versions are 0 and 1.
TEST(StartUp, TheFirstOverrideMakesVersionOne) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto versions = [] {
    ThreadData::instance(false);
    std::string result = ownItem.value(false);
    result += " " + std::to_string(configDB(RT_READ).version());
    {
      editableConfigDB editor;
      editor.set("startup_test.item", "new", DistName(), false);
    }
    result += " " + std::to_string(configDB(RT_READ).version()) + " " + ownItem.value(false);
    threadedConfigDB::refresh();
    result += " " + std::to_string(threadedConfigDB::local().version()) + " " +
              ownItem.value(false) + ".";
    std::fputs(result.c_str(), stderr);
    std::exit(0);
  };
  EXPECT_EXIT(versions(), testing::ExitedWithCode(0), "own 0 1 own 1 new\\.");
}

}  // namespace

}  // namespace startup_test
