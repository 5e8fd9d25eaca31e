// SPDX-License-Identifier: MIT
#include "assoclist.h"

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace assoclist_test {

using std::string_literals::operator""s;

namespace {

using Entries = std::vector<std::pair<std::string, std::string>>;

static_assert(std::is_base_of_v<std::map<std::string, std::string, caseInsensitive>, assocList>);

Entries entriesOf(const assocList& list) {
  return Entries(list.begin(), list.end());
}

// The list that a sequence of strings gives.
assocList listOf(const std::vector<std::string>& entries) {
  return assocList(entries);
}

const assocPair beforeMainTable[] = {{"Key", "value"}, {nullptr, nullptr}};
const assocList builtBeforeMain(beforeMainTable);

}  // namespace

TEST(AssocList, StartsEmpty) {
  const assocList list;
  EXPECT_TRUE(list.empty());
}

TEST(AssocList, CanBeBuiltBeforeMain) {
  EXPECT_EQ(entriesOf(builtBeforeMain), (Entries{{"Key", "value"}}));
}

TEST(AssocList, KeepsTheLetterCaseOfTheFirstInsertion) {
  assocList list;
  list["Log"] = "1";
  list["LOG"] = "2";
  EXPECT_EQ(entriesOf(list), (Entries{{"Log", "2"}}));
}

// The first difference decides, wherever it is.  A difference in case does not count.
TEST(CaseInsensitiveLess, IsDecidedByTheFirstDifference) {
  for (std::size_t place = 0; place < 20; place++) {
    SCOPED_TRACE(place);
    const std::string rest(19 - place, 'z');
    const std::string less = std::string(place, 'm') + 'b' + rest;
    for (const char start : {'m', 'M'}) {
      const std::string greater = std::string(place, start) + 'c' + std::string(19 - place, 'a');
      EXPECT_TRUE(caseInsensitive()(less, greater));
      EXPECT_FALSE(caseInsensitive()(greater, less));
      const std::string same = std::string(place, start) + 'B' + rest;
      EXPECT_FALSE(caseInsensitive()(less, same));
      EXPECT_FALSE(caseInsensitive()(same, less));
    }
  }
}

TEST(AssocList, IteratesInTheCaseInsensitiveOrderOfKeys) {
  assocList list;
  for (const char* key : {"b", "A", "_", "ab", "C", "\xe9", "10", "9", ""}) list[key] = "x";
  EXPECT_EQ(entriesOf(list), (Entries{{"", "x"},
                                      {"\xe9", "x"},
                                      {"10", "x"},
                                      {"9", "x"},
                                      {"_", "x"},
                                      {"A", "x"},
                                      {"ab", "x"},
                                      {"b", "x"},
                                      {"C", "x"}}));
}

TEST(AssocList, IsCopiedAsAValue) {
  assocList list;
  list["a"] = "1";
  assocList copy(list);
  copy["a"] = "2";
  copy["b"] = "3";
  EXPECT_EQ(entriesOf(list), (Entries{{"a", "1"}}));
  EXPECT_EQ(entriesOf(copy), (Entries{{"a", "2"}, {"b", "3"}}));
}

TEST(AssocListFromTable, AddsThePairsUpToTheNullKey) {
  const assocPair table[] = {{"port", "80"},       {"Host", "h"},     {"empty", ""},
                             {"skipped", nullptr}, {"HOST", "other"}, {nullptr, "never"},
                             {"never", "never"}};
  EXPECT_EQ(entriesOf(assocList(table)),
            (Entries{{"empty", ""}, {"Host", "other"}, {"port", "80"}}));
}

TEST(AssocListFromTable, LeavesAValueAloneWhenALaterOneIsNull) {
  const assocPair table[] = {{"a", "1"}, {"A", nullptr}, {nullptr, nullptr}};
  EXPECT_EQ(entriesOf(assocList(table)), (Entries{{"a", "1"}}));
}

TEST(AssocListFromTable, IsEmptyForAnEmptyOrNullTable) {
  const assocPair table[] = {{nullptr, nullptr}};
  const assocPair* const null = nullptr;
  EXPECT_EQ(entriesOf(assocList(table)), Entries{});
  EXPECT_EQ(entriesOf(assocList(null)), Entries{});
}

TEST(AssocListFromSequence, SplitsEntriesAndCountsTheOthers) {
  const struct {
    const char* what;
    std::vector<std::string> entries;
    Entries expected;
  } cases[] = {
      {"nothing", {}, {}},
      {"both kinds mixed", {"x", "k=v", "y", "k=w"}, {{"0", "x"}, {"1", "y"}, {"k", "w"}}},
      {"the first equals sign splits", {"k=a=b"}, {{"k", "a=b"}}},
      {"an empty value", {"k="}, {{"k", ""}}},
      {"an empty key", {"=v"}, {{"", "v"}}},
      {"nothing but an equals sign", {"="}, {{"", ""}}},
      {"an empty entry is a counted one", {"", "x"}, {{"0", ""}, {"1", "x"}}},
      {"keys differ in case only", {"Key=a", "KEY=b"}, {{"Key", "b"}}},
      {"a later empty value replaces", {"k=v", "K="}, {{"k", ""}}},
      {"a counted entry replaces a given key", {"0=a", "x"}, {{"0", "x"}}},
      {"a given key replaces a counted entry", {"x", "0=a"}, {{"0", "a"}}},
      {"blanks are part of key and value", {" k = v "}, {{" k ", " v "}}},
      {"eleven counted entries",
       {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k"},
       {{"0", "a"},
        {"1", "b"},
        {"10", "k"},
        {"2", "c"},
        {"3", "d"},
        {"4", "e"},
        {"5", "f"},
        {"6", "g"},
        {"7", "h"},
        {"8", "i"},
        {"9", "j"}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(entriesOf(assocList(c.entries)), c.expected);
  }
}

TEST(AssocListFromSequence, TakesNULBytesAsTheyAre) {
  EXPECT_EQ(entriesOf(listOf({"a\0=b\0c"s})), (Entries{{"a\0"s, "b\0c"s}}));
}

TEST(AssocListIndex, InsertsAnEmptyValueForAMissingKey) {
  assocList list;
  EXPECT_EQ(list["missing"], "");
  EXPECT_EQ(entriesOf(list), (Entries{{"missing", ""}}));
}

TEST(AssocListIndex, FindsAKeyOfAnyLetterCase) {
  assocList list = listOf({"Host=h"});
  list["HOST"] += "i";
  EXPECT_EQ(entriesOf(list), (Entries{{"Host", "hi"}}));
}

TEST(AssocListConstIndex, FindsAKeyOfAnyLetterCase) {
  const assocList list = listOf({"Host=h"});
  EXPECT_EQ(list["host"], "h");
  EXPECT_EQ(list["HOST"], "h");
}

TEST(AssocListConstIndex, GivesOneSharedEmptyStringForAMissingKey) {
  const assocList list = listOf({"a=1"});
  const assocList other;
  EXPECT_EQ(list["missing"], "");
  EXPECT_EQ(list.size(), 1u);
  EXPECT_EQ(&list["missing"], &list["absent"]);
  EXPECT_EQ(&list["missing"], &other["missing"]);
}

TEST(AssocListConstIndex, GivesTheStoredStringForAnEmptyValue) {
  const assocList list = listOf({"a="});
  EXPECT_EQ(list["a"], "");
  EXPECT_NE(&list["a"], &list["missing"]);
}

TEST(AssocListAddValue, StoresAStringThatIsNotEmptyOrForced) {
  const struct {
    const char* what;
    std::string name, value;
    bool force, stored;
    Entries expected;
  } cases[] = {
      {"a new value", "b", "2", false, true, {{"a", "1"}, {"b", "2"}}},
      {"a new value, forced", "b", "2", true, true, {{"a", "1"}, {"b", "2"}}},
      {"an empty value", "b", "", false, false, {{"a", "1"}}},
      {"an empty value, forced", "b", "", true, true, {{"a", "1"}, {"b", ""}}},
      {"replacing", "A", "2", false, true, {{"a", "2"}}},
      {"replacing by an empty value", "A", "", false, false, {{"a", "1"}}},
      {"replacing by an empty value, forced", "A", "", true, true, {{"a", ""}}},
      {"an empty name", "", "2", false, true, {{"", "2"}, {"a", "1"}}},
      {"a value of one NUL byte", "b", "\0"s, false, true, {{"a", "1"}, {"b", "\0"s}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    assocList list = listOf({"a=1"});
    EXPECT_EQ(list.addValue(c.name, c.value, c.force), c.stored);
    EXPECT_EQ(entriesOf(list), c.expected);
  }
}

TEST(AssocListAddValue, StoresACStringThatIsNotNullOrForced) {
  const struct {
    const char* what;
    const char *name, *value;
    bool force, stored;
    Entries expected;
  } cases[] = {
      {"a new value", "b", "2", false, true, {{"a", "1"}, {"b", "2"}}},
      {"a new value, forced", "b", "2", true, true, {{"a", "1"}, {"b", "2"}}},
      {"an empty value", "b", "", false, true, {{"a", "1"}, {"b", ""}}},
      {"an empty value, forced", "b", "", true, true, {{"a", "1"}, {"b", ""}}},
      {"a null value", "b", nullptr, false, false, {{"a", "1"}}},
      {"a null value, forced", "b", nullptr, true, true, {{"a", "1"}, {"b", ""}}},
      {"replacing", "A", "2", false, true, {{"a", "2"}}},
      {"replacing by an empty value", "A", "", false, true, {{"a", ""}}},
      {"replacing by a null value", "A", nullptr, false, false, {{"a", "1"}}},
      {"replacing by a null value, forced", "A", nullptr, true, true, {{"a", ""}}},
      {"a null name", nullptr, "2", false, false, {{"a", "1"}}},
      {"a null name, forced", nullptr, "2", true, false, {{"a", "1"}}},
      {"a null name and value, forced", nullptr, nullptr, true, false, {{"a", "1"}}},
      {"an empty name", "", "2", false, true, {{"", "2"}, {"a", "1"}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    assocList list = listOf({"a=1"});
    EXPECT_EQ(list.addValue(c.name, c.value, c.force), c.stored);
    EXPECT_EQ(entriesOf(list), c.expected);
  }
}

TEST(AssocListPlus, StoresEveryEntryOfTheOtherList) {
  assocList list = listOf({"a=1", "Both=1", "cleared=1"});
  const assocList other = listOf({"BOTH=2", "b=2", "cleared="});
  assocList& result = list += other;
  EXPECT_EQ(&result, &list);
  EXPECT_EQ(entriesOf(list), (Entries{{"a", "1"}, {"b", "2"}, {"Both", "2"}, {"cleared", ""}}));
  EXPECT_EQ(entriesOf(other), (Entries{{"b", "2"}, {"BOTH", "2"}, {"cleared", ""}}));
}

TEST(AssocListPlus, LeavesAListAddedToItselfAlone) {
  assocList list = listOf({"a=1", "b=2"});
  const assocList& same = list;
  list += same;
  EXPECT_EQ(entriesOf(list), (Entries{{"a", "1"}, {"b", "2"}}));
}

TEST(AssocListPlus, MakesANewList) {
  const assocList list = listOf({"a=1", "Both=1"});
  const assocList other = listOf({"BOTH=2", "b=2"});
  EXPECT_EQ(entriesOf(list + other), (Entries{{"a", "1"}, {"b", "2"}, {"Both", "2"}}));
  EXPECT_EQ(entriesOf(list), (Entries{{"a", "1"}, {"Both", "1"}}));
  EXPECT_EQ(entriesOf(other), (Entries{{"b", "2"}, {"BOTH", "2"}}));
}

TEST(AssocListGetInt, ReadsAPositiveNumberOrGivesTheDefault) {
  const struct {
    const char* value;
    int expected;
  } cases[] = {
      {"80", 80},          {"1", 1},
      {"0080", 80},        {"12ab", 12},
      {"12 34", 12},       {"2147483647", 2147483647},
      {"2147483648", -42}, {"99999999999", -42},
      {"0", -42},          {"000", -42},
      {"-3", -42},         {"+3", -42},
      {" 3", -42},         {"abc", -42},
      {"x3", -42},         {"", -42},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("the value '"s + c.value + "'");
    assocList list;
    list["Port"] = c.value;
    const assocList& constant = list;
    EXPECT_EQ(constant.getInt("port", -42), c.expected);
  }
}

TEST(AssocListGetInt, GivesTheDefaultForAMissingName) {
  const assocList list = listOf({"a=1"});
  EXPECT_EQ(list.getInt("missing", 7), 7);
  EXPECT_EQ(list.getInt("missing", 0), 0);
  EXPECT_EQ(list.size(), 1u);
}

TEST(AssocListFilter, KeepsEntriesByThePrefixOfTheirKey) {
  const assocList list = listOf({"vnc-port=1", "VNC-host=2", "ssh=3", "vn=4", "x-vnc-=5"});
  const char* const prefixes[] = {"Vnc-", "SSH", nullptr, "x"};
  EXPECT_EQ(entriesOf(list.filter(prefixes, false)),
            (Entries{{"ssh", "3"}, {"VNC-host", "2"}, {"vnc-port", "1"}}));
  EXPECT_EQ(entriesOf(list.filter(prefixes, true)), (Entries{{"vn", "4"}, {"x-vnc-", "5"}}));
  EXPECT_EQ(list.size(), 5u);
}

TEST(AssocListFilter, MatchesNoKeyWithoutPrefixes) {
  const assocList list = listOf({"a=1", "b="});
  const char* const none[] = {nullptr};
  EXPECT_EQ(entriesOf(list.filter(none, false)), Entries{});
  EXPECT_EQ(entriesOf(list.filter(none, true)), (Entries{{"a", "1"}, {"b", ""}}));
  EXPECT_EQ(entriesOf(list.filter(nullptr, false)), Entries{});
  EXPECT_EQ(entriesOf(list.filter(nullptr, true)), (Entries{{"a", "1"}, {"b", ""}}));
}

TEST(AssocListFilter, MatchesEveryKeyWithAnEmptyPrefix) {
  const assocList list = listOf({"a=1", "=2"});
  const char* const empty[] = {"", nullptr};
  EXPECT_EQ(entriesOf(list.filter(empty, false)), (Entries{{"", "2"}, {"a", "1"}}));
  EXPECT_EQ(entriesOf(list.filter(empty, true)), Entries{});
}

TEST(AssocListReverse, MapsValuesToTheirLastKeys) {
  const struct {
    const char* what;
    std::vector<std::string> entries;
    Entries expected;
  } cases[] = {
      {"nothing", {}, {}},
      {"distinct values", {"a=X", "b=Y"}, {{"X", "a"}, {"Y", "b"}}},
      {"empty values are left out", {"a=", "b=Y"}, {{"Y", "b"}}},
      {"the last key wins", {"c=X", "A=X", "B=X"}, {{"X", "c"}}},
      {"values are keys of any letter case", {"a=Val", "b=VAL"}, {{"Val", "b"}}},
      {"an empty key", {"=X"}, {{"X", ""}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const assocList list(c.entries);
    EXPECT_EQ(entriesOf(list.reverse()), c.expected);
    EXPECT_EQ(entriesOf(list), entriesOf(assocList(c.entries))) << "the list itself changed";
  }
}

TEST(AssocListConvert, RenamesKeysInTheOrderOfTheMapping) {
  const struct {
    const char* what;
    std::vector<std::string> entries, mapping;
    Entries expected;
  } cases[] = {
      {"no mapping", {"a=1"}, {}, {{"a", "1"}}},
      {"an empty list", {}, {"a=b"}, {}},
      {"one key", {"a=1", "x=2"}, {"A=b"}, {{"b", "1"}, {"x", "2"}}},
      {"a key that is not there", {"a=1"}, {"c=b"}, {{"a", "1"}}},
      {"an absent key leaves the target alone", {"b=1"}, {"c=b"}, {{"b", "1"}}},
      {"an empty name drops", {"a=1", "x=2"}, {"a="}, {{"x", "2"}}},
      {"a target that is there is replaced", {"a=1", "B=2"}, {"a=b"}, {{"B", "1"}}},
      {"an empty value is kept", {"a="}, {"a=b"}, {{"b", ""}}},
      {"an empty value replaces", {"a=", "b=2"}, {"a=b"}, {{"b", ""}}},
      {"to another letter case", {"Key=1"}, {"key=KEY"}, {{"KEY", "1"}}},
      {"a later rename sees an earlier one", {"a=1"}, {"a=b", "b=c"}, {{"c", "1"}}},
      {"an earlier rename sees no later one", {"b=1"}, {"a=c", "b=a"}, {{"a", "1"}}},
      {"two keys that change places", {"a=1", "b=2"}, {"a=b", "b=a"}, {{"a", "1"}}},
      {"a renamed key is dropped", {"a=1"}, {"a=b", "b="}, {}},
      {"two keys to one", {"a=1", "b=2"}, {"a=c", "b=c"}, {{"c", "2"}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    assocList list(c.entries);
    const assocList mapping(c.mapping);
    assocList& result = list.convert(mapping);
    EXPECT_EQ(&result, &list);
    EXPECT_EQ(entriesOf(list), c.expected);
    EXPECT_EQ(mapping.size(), c.mapping.size()) << "the mapping itself changed";
  }
}

TEST(AssocListConvert, TakesTheListItselfAsItWasForTheMapping) {
  assocList list(std::vector<std::string>{"a=b", "b=c"});
  EXPECT_EQ(&list.convert(list), &list);
  EXPECT_EQ(entriesOf(list), (Entries{{"c", "b"}}));
}

TEST(AssocListWrite, WritesBracesAndEntries) {
  const struct {
    std::vector<std::string> entries;
    const char* expected;
  } cases[] = {
      {{}, "{ }"},
      {{"Port=80", "host=h"}, "{ host=h Port=80 }"},
      {{"a="}, "{ a= }"},
      {{"=v"}, "{ =v }"},
      {{"a=b c\"\\"}, "{ a=b c\"\\ }"},
      {{"x", "k=v", "y", "k=w"}, "{ 0=x 1=y k=w }"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    const assocList list(c.entries);
    std::ostringstream written, inserted;
    EXPECT_EQ(&list.write(written), &written);
    EXPECT_EQ(written.str(), c.expected);
    EXPECT_EQ(&(inserted << list), &inserted);
    EXPECT_EQ(inserted.str(), c.expected);
  }
}

}  // namespace assoclist_test
