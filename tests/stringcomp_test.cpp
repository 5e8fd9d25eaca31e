// SPDX-License-Identifier: MIT
#include "stringcomp.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace stringcomp_test {

using std::string_literals::operator""s;

namespace {

// Evaluated while static objects are created, possibly before those of the library.
const bool orderedBeforeMain = caseInsensitive::instance("a", "B");

static_assert(std::is_abstract_v<stringComparator>);
static_assert(std::has_virtual_destructor_v<stringComparator>);
static_assert(std::is_base_of_v<stringComparator, caseInsensitive>);

// The position of a virtual operation in the table of virtual operations.  The first word is
// its distance in bytes; some machines add one to mark it.
template <class Member>
std::uintptr_t slotOf(Member member) {
  std::uintptr_t words[2];
  static_assert(sizeof member == sizeof words);
  std::memcpy(words, &member, sizeof words);
  return words[0] / sizeof(void*);
}

}  // namespace

TEST(StringComparator, HasItsOrderBehindTheTwoDestructorSlots) {
  EXPECT_EQ(slotOf(&stringComparator::operator()), 2u);
}

TEST(CaseInsensitive, AddsTheOrderOfCStringsBehindThatOfStrings) {
  using Strings = bool (caseInsensitive::*)(const std::string&, const std::string&) const;
  using CStrings = bool (caseInsensitive::*)(const char*, const char*) const;
  EXPECT_EQ(slotOf(static_cast<Strings>(&caseInsensitive::operator())), 2u);
  EXPECT_EQ(slotOf(static_cast<CStrings>(&caseInsensitive::operator())), 3u);
}

TEST(CaseInsensitive, CanBeUsedBeforeMain) {
  EXPECT_TRUE(orderedBeforeMain);
}

TEST(CaseInsensitive, OrdersStringsThroughItsBase) {
  const stringComparator& base = caseInsensitive::instance;
  EXPECT_TRUE(base("a"s, "B"s));
  EXPECT_FALSE(base("B"s, "a"s));
}

TEST(CaseInsensitive, CanBeDestroyedThroughItsBase) {
  const std::unique_ptr<stringComparator> owned = std::make_unique<caseInsensitive>();
  EXPECT_TRUE((*owned)("a"s, "b"s));
}

TEST(CaseInsensitive, OrdersStrings) {
  const struct {
    std::string a, b;
    bool aFirst, bFirst;
  } cases[] = {
      {"", "", false, false},
      {"", "a", true, false},
      {"a", "a", false, false},
      {"a", "A", false, false},
      {"Log", "LOG", false, false},
      {"a", "ab", true, false},
      {"A", "ab", true, false},
      {"AB", "a", false, true},
      {"a", "B", true, false},
      {"A", "b", true, false},
      {"B", "a", false, true},
      {"abc", "ABD", true, false},
      {"ABC", "abd", true, false},
      {"z", "aa", false, true},
      {"b", "aZZZZ", false, true},
      {"0", "a", true, false},
      {"1", "10", true, false},
      {"10", "2", true, false},
      // Letters count as lower-case ones against the characters between "Z" and "a".
      {"_", "A", true, false},
      {"_", "z", true, false},
      {"[", "a", true, false},
      {"[", "Z", true, false},
      {"`", "A", true, false},
      {"{", "Z", false, true},
      // The neighbours of the letters have no case.
      {"@", "`", true, false},
      {"[", "{", true, false},
      // The first difference decides.  A difference in case does not count.
      {"aBcD1", "AbCd2", true, false},
      {"aBcD2", "AbCd1", false, true},
  };
  const caseInsensitive order;
  for (const auto& c : cases) {
    SCOPED_TRACE("a is '" + c.a + "', b is '" + c.b + "'");
    EXPECT_EQ(order(c.a, c.b), c.aFirst);
    EXPECT_EQ(order(c.b, c.a), c.bFirst);
    EXPECT_EQ(order(c.a.c_str(), c.b.c_str()), c.aFirst) << "as C strings";
    EXPECT_EQ(order(c.b.c_str(), c.a.c_str()), c.bFirst) << "as C strings";
  }
}

TEST(CaseInsensitive, OrdersBytesFrom128UpBeforeASCII) {
  const struct {
    std::string first, second;
  } cases[] = {
      {"\x80", "\x01"},   {"\xff", "\x01"}, {"\xff", "A"},         {"\xff", "a"},
      {"\x80", "0"},      {"\x80", "\xff"}, {"\xc1", "\xe1"},      {"\xc3\x89", "\xc3\xa9"},
      {"x\xe9", "xa"},    {"X\xe9z", "xA"}, {"\xc3\xa9", "\xc3 "}, {"\x9f", "\xa0"},
      {"a\x80zzz", "AB"}, {"", "\x80"},     {"\xe9", "\xe9\x80"},
  };
  const caseInsensitive order;
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.first) + " before " + testing::PrintToString(c.second));
    EXPECT_TRUE(order(c.first, c.second));
    EXPECT_FALSE(order(c.second, c.first));
    EXPECT_TRUE(order(c.first.c_str(), c.second.c_str())) << "as C strings";
    EXPECT_FALSE(order(c.second.c_str(), c.first.c_str())) << "as C strings";
  }
}

TEST(CaseInsensitive, OrdersStringsBehindANULByte) {
  const caseInsensitive order;
  EXPECT_TRUE(order("a\0b"s, "A\0C"s));
  EXPECT_FALSE(order("A\0C"s, "a\0b"s));
  EXPECT_TRUE(order("a"s, "a\0"s)) << "the shorter string comes first";
  EXPECT_FALSE(order("a\0"s, "a"s));
  EXPECT_TRUE(order("a\xff"s, "a\0"s)) << "a byte of 255 is below NUL";
  EXPECT_FALSE(order("a\0"s, "a\xff"s));
}

TEST(CaseInsensitive, OrdersEachPairOfSingleBytes) {
  // All bytes in their order; upper-case letters are with their lower-case ones.
  std::vector<int> ranked;
  for (int byte = 128; byte < 256; byte++) ranked.push_back(byte);
  for (int byte = 0; byte < 128; byte++) ranked.push_back(byte);
  const std::string upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  const std::string lower = "abcdefghijklmnopqrstuvwxyz";
  int rank[256];
  for (std::size_t i = 0; i < ranked.size(); i++) rank[ranked[i]] = static_cast<int>(i);
  for (std::size_t i = 0; i < upper.size(); i++)
    rank[static_cast<unsigned char>(upper[i])] = rank[static_cast<unsigned char>(lower[i])];

  const caseInsensitive order;
  for (int a = 0; a < 256; a++)
    for (int b = 0; b < 256; b++)
      ASSERT_EQ(order(std::string(1, static_cast<char>(a)), std::string(1, static_cast<char>(b))),
                rank[a] < rank[b])
          << "byte " << a << " against byte " << b;
}

TEST(CaseInsensitive, OrdersNullBeforeEveryCString) {
  const caseInsensitive order;
  const char* const none = nullptr;
  EXPECT_TRUE(order(none, ""));
  EXPECT_TRUE(order(none, "a"));
  EXPECT_FALSE(order("", none));
  EXPECT_FALSE(order("a", none));
  EXPECT_FALSE(order(none, none));
}

TEST(CaseInsensitiveSame, ComparesLengthAndLetters) {
  const struct {
    std::string a, b;
    bool same;
  } cases[] = {
      {"", "", true},
      {"", "a", false},
      {"a", "a", true},
      {"a", "A", true},
      {"abcXYZ", "ABCxyz", true},
      {"abc", "abd", false},
      {"abc", "ab", false},
      {"ab", "abc", false},
      {"a-1", "A-1", true},
      {"@", "`", false},
      {"[", "{", false},
      {"a\0b"s, "A\0B"s, true},
      {"a\0b"s, "A\0C"s, false},
      {"a\0"s, "a", false},
      {"\xc9", "\xe9", false},
      {"\xc3\x89", "\xc3\xa9", false},
      {"\xc3\xa9T", "\xc3\xa9t", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.a) + " and " + testing::PrintToString(c.b));
    EXPECT_EQ(caseInsensitive::same(c.a, c.b), c.same);
    EXPECT_EQ(caseInsensitive::same(c.b, c.a), c.same);
  }
}

TEST(CaseInsensitivePrefix, ComparesTheStart) {
  const struct {
    std::string s;
    const char* p;
    bool prefix;
  } cases[] = {
      {"", "", true},           {"abc", "", true},         {"", "a", false},
      {"abc", "a", true},       {"abc", "AB", true},       {"ABC", "abc", true},
      {"abc", "abcd", false},   {"abc", "b", false},       {"abc", "ac", false},
      {"xabc", "abc", false},   {"a\0c"s, "A", true},      {"a\0c"s, "ab", false},
      {"\xc9t", "\xc9T", true}, {"\xc9t", "\xe9t", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.s) + " with the prefix '" + c.p + "'");
    EXPECT_EQ(caseInsensitive::prefix(c.s, c.p), c.prefix);
  }
}

TEST(CaseInsensitiveStarts, LooksForAnyPrefix) {
  const char* const list[] = {"vnc-", "SSH", nullptr, "never"};
  EXPECT_TRUE(caseInsensitive::starts("VNC-port", list));
  EXPECT_TRUE(caseInsensitive::starts("vnc-", list));
  EXPECT_TRUE(caseInsensitive::starts("sshd", list));
  EXPECT_FALSE(caseInsensitive::starts("vnc", list));
  EXPECT_FALSE(caseInsensitive::starts("my-ssh", list));
  EXPECT_FALSE(caseInsensitive::starts("", list));
  EXPECT_FALSE(caseInsensitive::starts("never", list)) << "the list ends at the null pointer";
}

TEST(CaseInsensitiveStarts, TakesAnEmptyPrefixForAPrefixOfEverything) {
  const char* const list[] = {"x", "", nullptr};
  EXPECT_TRUE(caseInsensitive::starts("abc", list));
  EXPECT_TRUE(caseInsensitive::starts("", list));
}

TEST(CaseInsensitiveStarts, FindsNothingInAnEmptyOrNullList) {
  const char* const list[] = {nullptr};
  EXPECT_FALSE(caseInsensitive::starts("abc", list));
  EXPECT_FALSE(caseInsensitive::starts("", list));
  EXPECT_FALSE(caseInsensitive::starts("abc", nullptr));
}

TEST(CaseInsensitiveContains, LooksForTheSameString) {
  const char* const array[] = {"Log", "style", "", nullptr, "never"};
  const std::vector<std::string> sequence = {"Log", "style", ""};
  const struct {
    const char* s;
    bool contained;
  } cases[] = {
      {"log", true}, {"LOG", true},   {"Style", true},     {"", true},
      {"lo", false}, {"logs", false}, {"styl\xc9", false}, {"never", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.s);
    EXPECT_EQ(caseInsensitive::contains(c.s, array), c.contained) << "in an array";
    EXPECT_EQ(caseInsensitive::contains(c.s, sequence), c.contained) << "in a sequence";
  }
}

TEST(CaseInsensitiveContains, FindsNothingInAnEmptyOrNullList) {
  const char* const array[] = {nullptr};
  const std::vector<std::string> sequence;
  const char* const* const null = nullptr;
  EXPECT_FALSE(caseInsensitive::contains("", array));
  EXPECT_FALSE(caseInsensitive::contains("", sequence));
  EXPECT_FALSE(caseInsensitive::contains("", null));
}

TEST(StrCompRef, OrdersAsTheComparatorThatItRefersTo) {
  struct : stringComparator {
    bool operator()(const std::string& a, const std::string& b) const override { return b < a; }
  } backwards;
  const strCompRef plain;
  const strCompRef reversed(backwards);
  const strCompRef copy = reversed;
  EXPECT_TRUE(plain("a", "B"));
  EXPECT_FALSE(plain("B", "a"));
  EXPECT_FALSE(reversed("a", "b"));
  EXPECT_TRUE(reversed("b", "a"));
  EXPECT_TRUE(copy("b", "a"));
}

}  // namespace stringcomp_test
