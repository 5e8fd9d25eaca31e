// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <type_traits>
#include <vector>

#include "configDB.h"
#include "reports.h"
#include "threading.h"
#include "trace.h"

namespace configItem_test {

namespace {

using texts = std::vector<std::string>;

TEST(ConfigItem, IsAValue) {
  EXPECT_TRUE(std::is_copy_constructible_v<configItem>);
  EXPECT_TRUE(std::is_copy_assignable_v<configItem>);
  EXPECT_STREQ(configItem::className(), "configItem");
}

TEST(ConfigItem, IsBuiltFromOneValue) {
  const struct {
    const char* value;
    const char* source;
    bool isDN, asDefault;
    texts values, defaults;
  } rows[] = {
      {"v", "", false, false, {"v"}, {}},
      {"v", "", false, true, {"v"}, {"v"}},
      {"v", "CN=a,DC=b", true, false, {"v"}, {}},
      {"v", "CN=a,DC=b", true, true, {"v"}, {"v"}},
      {"", "", false, false, {}, {}},
      {"", "", false, true, {}, {}},
      {"", "a.b", true, true, {}, {}},
      {" ", "", false, true, {" "}, {" "}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string("\"") + row.value + "\" from \"" + row.source + "\"" +
                 (row.asDefault ? " as default" : ""));
    const configItem item(std::string(row.value), row.source, row.isDN, row.asDefault);
    EXPECT_EQ(item.all(), row.values);
    EXPECT_EQ(item.getDefaults(), row.defaults);
    EXPECT_EQ(item.getDN().str(), row.source);
    EXPECT_EQ(item.isDN(), row.isDN);
    EXPECT_EQ(item.size(), row.values.size());
    EXPECT_EQ(item.empty(), row.values.empty());
  }
}

TEST(ConfigItem, IsBuiltFromManyValues) {
  const struct {
    bool isDN, asDefault;
    texts values, defaults;
  } rows[] = {
      {false, false, {"a", "", "c"}, {}},
      {true, true, {"a", "", "c"}, {"a", "", "c"}},
      {false, true, {""}, {""}},
      {false, true, {}, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.values.size());
    const configItem item(row.values, "DC=x", row.isDN, row.asDefault);
    EXPECT_EQ(item.all(), row.values);
    EXPECT_EQ(item.getDefaults(), row.defaults);
    EXPECT_EQ(item.getDN().str(), "DC=x");
    EXPECT_EQ(item.isDN(), row.isDN);
  }
}

TEST(ConfigItem, GivesAnEmptyStringWhereThereIsNoValue) {
  const configItem item(texts{"a", "b"}, "", false, false);
  EXPECT_EQ(item[0], "a");
  EXPECT_EQ(item[1], "b");
  for (const int index : {-1, 2, 3, INT_MAX, INT_MIN}) {
    EXPECT_EQ(item[index], "") << index;
    EXPECT_EQ(&item[index], &item[-1]) << "one shared empty string";
  }
  const configItem empty(std::string(), "", false, false);
  EXPECT_EQ(empty[0], "");
  EXPECT_EQ(&empty[0], &item[-1]);
}

TEST(ConfigItem, GivesItsFirstDefault) {
  EXPECT_EQ(configItem(texts{"a", "b"}, "", false, true).getDefault(), "a");
  EXPECT_EQ(configItem(texts{"a", "b"}, "", false, false).getDefault(), "");
}

TEST(ConfigItem, IsSetToOneValue) {
  configItem item(texts{"a", "b"}, "DC=x", true, true);
  item.set(std::string("c"));
  EXPECT_EQ(item.all(), texts{"c"});
  item.set(std::string());
  EXPECT_EQ(item.all(), texts{""}) << "an empty value is a value";
  EXPECT_FALSE(item.empty());
  EXPECT_EQ(item.getDefaults(), (texts{"a", "b"}));
  EXPECT_EQ(item.getDN().str(), "DC=x");
  EXPECT_TRUE(item.isDN());
}

TEST(ConfigItem, IsSetToManyValues) {
  configItem item(std::string("a"), "", false, true);
  item.set(texts{"b", "c"});
  EXPECT_EQ(item.all(), (texts{"b", "c"}));
  EXPECT_EQ(item.getDefaults(), texts{"a"});
}

TEST(ConfigItem, GetsItsDefaultsBackWhenItIsSetToNothing) {
  configItem item(texts{"a", "b"}, "", false, true);
  item.set(std::string("c"));
  item.set(texts{});
  EXPECT_EQ(item.all(), (texts{"a", "b"}));
  configItem plain(texts{"a"}, "", false, false);
  plain.set(texts{});
  EXPECT_EQ(plain.all(), texts{}) << "no defaults, no values";
}

TEST(ConfigItem, KeepsItsDefaultsApartFromItsValues) {
  configItem item(texts{"a"}, "", false, true);
  item.set(texts{});
  item.set(std::string("z"));
  EXPECT_EQ(item.getDefaults(), texts{"a"});
}

/// A recorder in the map that this thread keeps using.
class ConfigItemSource : public testing::Test {
 protected:
  ~ConfigItemSource() override { traceFlag::set("configDB", 0); }

  ThreadData& m_data = ThreadData::instance(false);
  reportCatcher reports;
};

TEST_F(ConfigItemSource, IsRecordedUnlessEmpty) {
  configItem item(std::string("v"), "", false, false);
  item.setDN(DistName("CN=a,DC=b"));
  EXPECT_EQ(item.getDN().str(), "CN=a,DC=b");
  item.setDN(DistName());
  EXPECT_EQ(item.getDN().str(), "CN=a,DC=b");
  item.setDN(DistName("CN=c"));
  EXPECT_EQ(item.getDN().str(), "CN=c");
  item.clearDN();
  EXPECT_TRUE(item.getDN().empty());
  EXPECT_EQ(reports.take(), texts{}) << "the flag is off";
}

TEST_F(ConfigItemSource, IsReportedWhenItChangesWhileTheFlagIsOn) {
  ASSERT_TRUE(traceFlag::set("configDB", 1)) << "there is no such flag";
  const struct {
    const char* before;
    const char* given;
    const char* after;
    texts reported;
  } rows[] = {
      {"", "CN=a", "CN=a", {}},
      {"CN=a", "", "CN=a", {}},
      {"CN=a", "CN=a", "CN=a", {}},
      {"CN=a, DC=B", "cn=A,dc=b", "cn=A,dc=b", {}},
      {"CN=a", "CN=b", "CN=b", {"1/16 commonEvent/14: CN=b=>CN=a | configItem::setDN"}},
      {"CN=a,DC=x", "DC=x", "DC=x", {"1/16 commonEvent/14: DC=x=>CN=a,DC=x | configItem::setDN"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string("\"") + row.before + "\" to \"" + row.given + "\"");
    configItem item(std::string("v"), row.before, false, false);
    item.setDN(DistName(row.given));
    EXPECT_EQ(item.getDN().str(), row.after);
    EXPECT_EQ(reports.take(), row.reported);
  }
}

}  // namespace

}  // namespace configItem_test
