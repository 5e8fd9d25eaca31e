// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "children.h"
#include "registered.h"
#include "trace.h"

namespace {

template <class T>
concept canBeNewed = requires {
  new T("new", 0);
};
template <class T>
concept canBeNewedAsArray = requires {
  new T[1]{{"new", 0}};
};

// Used by static initialisers.
traceFlag early("trace_test.early", 2);
const bool earlyWorks = early && traceFlag::active("trace_test.early") &&
                        traceFlag::level("trace_test.early") == 2 &&
                        traceFlag::set("trace_test.early", 3) && early.level() == 3;

// The registered names that begin with `prefix`, in the order of the registry.
std::vector<std::string> namesWith(const std::string& prefix) {
  std::vector<std::string> result;
  for (const auto& [name, flag] : traceFlag::allFlags()) {
    if (name.starts_with(prefix)) result.push_back(name);
  }
  return result;
}

using names = std::vector<std::string>;

}  // namespace

// A flag must live as long as the process: the registry never forgets one.  So
// the flags of the tests are static.

TEST(TraceFlag, HasTheNameAndTheLevelItWasGiven) {
  static const struct {
    const char* name;
    int level;
    std::uint32_t unsignedLevel;
    bool on;
  } cases[] = {
      {"given.off", 0, 0, false},
      {"given.on", 1, 1, true},
      {"given.graded", 5, 5, true},
      {"given.largest", 2147483647, 2147483647, true},
      {"given.negative", -1, 4294967295, true},
      {"given.smallest", -2147483647 - 1, 2147483648, true},
  };
  static traceFlag flags[] = {
      {cases[0].name, cases[0].level}, {cases[1].name, cases[1].level},
      {cases[2].name, cases[2].level}, {cases[3].name, cases[3].level},
      {cases[4].name, cases[4].level}, {cases[5].name, cases[5].level},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(cases[i].name);
    EXPECT_EQ(flags[i].name(), cases[i].name);
    EXPECT_EQ(flags[i].level(), cases[i].unsignedLevel);
    EXPECT_EQ(static_cast<bool>(flags[i]), cases[i].on);
    EXPECT_EQ(flags[i].active(), cases[i].on);
    EXPECT_EQ(traceFlag::level(cases[i].name), cases[i].level);
    EXPECT_EQ(traceFlag::active(cases[i].name), cases[i].on);
  }
}

TEST(TraceFlag, WorksBeforeMain) {
  EXPECT_TRUE(earlyWorks);
  EXPECT_EQ(early.level(), 3U);
}

TEST(TraceFlag, IsUnknownByAnotherName) {
  static const char* const unknown[] = {
      "unknown",    "known.",      "known",       "known.flag2",  "Known.flag",
      "known.FLAG", "known.flag ", " known.flag", "known.flag-1", "",
  };
  static traceFlag flag("known.flag", 7);
  for (const char* const name : unknown) {
    SCOPED_TRACE(testing::PrintToString(std::string(name)));
    EXPECT_FALSE(traceFlag::set(name, 1));
    EXPECT_EQ(traceFlag::level(name), -1);
    EXPECT_FALSE(traceFlag::active(name));
  }
  EXPECT_FALSE(traceFlag::set(std::string("known.flag\0", 11), 1));
  EXPECT_EQ(flag.level(), 7U);
  EXPECT_EQ(namesWith("known"), names({"known.flag"}));
  EXPECT_EQ(namesWith("unknown"), names());
}

TEST(TraceFlag, IsSetByItsName) {
  static const struct {
    unsigned int value;
    std::uint32_t level;
    int staticLevel;
    bool on;
  } cases[] = {
      {1, 1, 1, true},
      {0, 0, 0, false},
      {5, 5, 5, true},
      {0, 0, 0, false},
      {2147483647U, 2147483647U, 2147483647, true},
      {2147483648U, 2147483648U, -2147483647 - 1, true},
      {4294967295U, 4294967295U, -1, true},
      {3, 3, 3, true},
  };
  static traceFlag flag("settable", 0);
  static traceFlag other("settable.not", 4);
  for (const auto& row : cases) {
    SCOPED_TRACE(row.value);
    EXPECT_TRUE(traceFlag::set("settable", row.value));
    EXPECT_EQ(flag.level(), row.level);
    EXPECT_EQ(static_cast<bool>(flag), row.on);
    EXPECT_EQ(flag.active(), row.on);
    EXPECT_EQ(traceFlag::level("settable"), row.staticLevel);
    EXPECT_EQ(traceFlag::active("settable"), row.on);
    EXPECT_EQ(other.level(), 4U);
  }
}

TEST(TraceFlag, NamesAreCaseSensitive) {
  static traceFlag lower("cased", 1);
  static traceFlag upper("CASED", 2);
  EXPECT_EQ(upper.name(), "CASED");
  EXPECT_TRUE(traceFlag::set("cased", 8));
  EXPECT_EQ(lower.level(), 8U);
  EXPECT_EQ(upper.level(), 2U);
  EXPECT_EQ(traceFlag::level("Cased"), -1);
  EXPECT_FALSE(traceFlag::set("ConfigDB", 1));
  EXPECT_EQ(traceFlag::level("configDB"), 0);
}

TEST(TraceFlag, IsNeverFoundByAnEmptyName) {
  const std::size_t before = traceFlag::allFlags().size();
  static traceFlag one("", 3);
  static traceFlag two("", 0);
  EXPECT_EQ(one.name(), "");
  EXPECT_EQ(one.level(), 3U);
  EXPECT_TRUE(one.active());
  EXPECT_EQ(two.name(), "");  // and no number after it
  EXPECT_FALSE(two);
  EXPECT_FALSE(traceFlag::set("", 1));
  EXPECT_EQ(traceFlag::level(""), -1);
  EXPECT_FALSE(traceFlag::active(""));
  EXPECT_EQ(traceFlag::level("-1"), -1);
  EXPECT_EQ(traceFlag::allFlags().size(), before);
  EXPECT_EQ(one.level(), 3U);
}

TEST(TraceFlag, GetsANumberBehindANameThatIsTaken) {
  static traceFlag one("twin", 0);
  static traceFlag two("twin", 0);
  static traceFlag three("twin", 0);
  EXPECT_EQ(one.name(), "twin");
  EXPECT_EQ(two.name(), "twin-1");
  EXPECT_EQ(three.name(), "twin-2");

  EXPECT_TRUE(traceFlag::set("twin", 1));
  EXPECT_EQ(one.level(), 1U);
  EXPECT_EQ(two.level(), 0U);
  EXPECT_EQ(three.level(), 0U);
  EXPECT_TRUE(traceFlag::set("twin-1", 5));
  EXPECT_TRUE(traceFlag::set("twin-2", 6));
  EXPECT_FALSE(traceFlag::set("twin-3", 7));
  EXPECT_EQ(one.level(), 1U);
  EXPECT_EQ(two.level(), 5U);
  EXPECT_EQ(three.level(), 6U);
}

TEST(TraceFlag, GetsTheFirstNumberThatIsFree) {
  static traceFlag taken("gap-1", 0);
  static traceFlag alsoTaken("gap-3", 0);
  static traceFlag one("gap", 0);
  static traceFlag two("gap", 0);
  static traceFlag three("gap", 0);
  static traceFlag again("gap-1", 0);
  EXPECT_EQ(one.name(), "gap");
  EXPECT_EQ(two.name(), "gap-2");
  EXPECT_EQ(three.name(), "gap-4");
  EXPECT_EQ(again.name(), "gap-1-1");
}

TEST(TraceFlag, NumbersAreDecimalWithoutPadding) {
  static traceFlag flags[] = {{"many", 0}, {"many", 0}, {"many", 0}, {"many", 0},
                              {"many", 0}, {"many", 0}, {"many", 0}, {"many", 0},
                              {"many", 0}, {"many", 0}, {"many", 0}, {"many", 0}};
  static const char* const expected[] = {"many",   "many-1", "many-2",  "many-3",
                                         "many-4", "many-5", "many-6",  "many-7",
                                         "many-8", "many-9", "many-10", "many-11"};
  for (std::size_t i = 0; i < std::size(flags); ++i) EXPECT_EQ(flags[i].name(), expected[i]);
  // By bytes, not by numbers.
  EXPECT_EQ(namesWith("many"), names({"many", "many-1", "many-10", "many-11", "many-2", "many-3",
                                      "many-4", "many-5", "many-6", "many-7", "many-8", "many-9"}));
}

TEST(TraceFlag, AllAreListedInByteOrderOfTheirNames) {
  const std::string prefix = "order ";
  static traceFlag high("order \x80", 1);
  static traceFlag highest("order \xFF", 1);
  static traceFlag small("order a", 1);
  static traceFlag capital("order B", 1);
  static traceFlag longer("order a.", 1);
  static traceFlag nothing("order ", 1);
  EXPECT_EQ(namesWith(prefix),
            names({"order ", "order B", "order a", "order a.", "order \x80", "order \xFF"}));

  const std::vector<std::pair<std::string, traceFlag*>> all = traceFlag::allFlags();
  EXPECT_EQ(all.capacity(), all.size());
  const auto flagOf = [&all](const std::string& name) -> traceFlag* {
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&name](const auto& entry) { return entry.first == name; });
    return found != all.end() ? found->second : nullptr;
  };
  EXPECT_EQ(flagOf("order \x80"), &high);
  EXPECT_EQ(flagOf("order \xFF"), &highest);
  EXPECT_EQ(flagOf("order a"), &small);
  EXPECT_EQ(flagOf("order B"), &capital);
  EXPECT_EQ(flagOf("order a."), &longer);
  EXPECT_EQ(flagOf("order "), &nothing);
  EXPECT_TRUE(std::is_sorted(all.begin(), all.end(),
                             [](const auto& a, const auto& b) { return a.first < b.first; }));
}

TEST(TraceFlag, IsRememberedWhenItIsDestroyed) {
  const processEnd end = runFreshChild([] {
    { traceFlag gone("gone", 1); }
    const bool listed = namesWith("gone") == names({"gone"});
    traceFlag next("gone", 1);
    return listed && next.name() == "gone-1" ? 0 : 1;
  });
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(TraceFlag, IsNeitherCopiedNorNewed) {
  EXPECT_FALSE(std::is_copy_constructible_v<traceFlag>);
  EXPECT_FALSE(std::is_copy_assignable_v<traceFlag>);
  EXPECT_FALSE(canBeNewed<traceFlag>);
  EXPECT_FALSE(canBeNewedAsArray<traceFlag>);
  EXPECT_TRUE(std::has_virtual_destructor_v<traceFlag>);
}

TEST(TraceFlag, WritesToStandardError) {
  EXPECT_EQ(&traceFlag::out(), static_cast<std::ostream*>(&std::cerr));
  const processEnd end = runFreshChild([] {
    traceFlag::out() << "-1 a line" << std::endl;
    return 0;
  });
  EXPECT_EQ(end.errors, "-1 a line\n");
  EXPECT_EQ(end.output, "");
}

TEST(TraceFlag, TheLibrarysOwnAreOff) {
  const std::vector<std::string> own = registered::flags();
  names listed;
  for (const auto& [name, flag] : traceFlag::allFlags()) {
    if (std::find(own.begin(), own.end(), name) == own.end()) continue;
    SCOPED_TRACE(name);
    listed.push_back(name);
    EXPECT_EQ(flag->name(), name);
    EXPECT_EQ(flag->level(), 0U);
    EXPECT_FALSE(*flag);
    EXPECT_EQ(traceFlag::level(name), 0);
    EXPECT_FALSE(traceFlag::active(name));
  }
  EXPECT_EQ(listed, own);
}
