// SPDX-License-Identifier: MIT
// Reads form-encoded texts.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "assoclist.h"
#include "html_escape.h"

namespace form_encoding_test {

namespace {

using pairList = std::vector<std::pair<std::string, std::string>>;

pairList pairsOf(const assocList& list) {
  return pairList(list.begin(), list.end());
}

TEST(getEscapedPair, ReadsOnePair) {
  const struct {
    const char* text;
    std::string name;
    std::string value;
    const char* rest;  // null when the text is used up
  } cases[] = {
      {"", "", "", nullptr},
      {"a", "a", "", nullptr},
      {"a=", "a", "", nullptr},
      {"a=1", "a", "1", nullptr},
      {"a=1&b=2", "a", "1", "b=2"},
      {"a&b=2", "a", "", "b=2"},
      {"a=&b", "a", "", "b"},
      {"&", "", "", ""},
      {"&&", "", "", "&"},
      {"=", "", "", nullptr},
      {"=x", "", "x", nullptr},
      {"a=1&", "a", "1", ""},
      {"+a+b+=+c+d+", " a b ", " c d ", nullptr},
      {"%41%62=%63%44", "Ab", "cD", nullptr},
      {"a%3Db=c%3Dd", "a=b", "c=d", nullptr},
      {"a%26b=c%26d&e", "a&b", "c&d", "e"},
      {"%2B=%2b", "+", "+", nullptr},
      {"%00=%00", std::string(1, '\0'), std::string(1, '\0'), nullptr},
      {"\xe9=\xff", "\xe9", "\xff", nullptr},
      {"a;b=c;d", "a;b", "c;d", nullptr},
      // In a name, a "%" that does not begin an escape is dropped, and so is a first digit.
      {"%", "", "", nullptr},
      {"a%", "a", "", nullptr},
      {"%4", "", "", nullptr},
      {"a%4", "a", "", nullptr},
      {"%G1=x", "G1", "x", nullptr},
      {"%4G=x", "G", "x", nullptr},
      {"%=x", "", "x", nullptr},
      {"%4=x", "", "x", nullptr},
      {"a%&b", "a", "", "b"},
      {"a%4&b", "a", "", "b"},
      {"%+a=x", " a", "x", nullptr},
      {"%4+a=x", " a", "x", nullptr},
      {"%%41=x", "A", "x", nullptr},
      {"%4%41=x", "A", "x", nullptr},
      {"%4\xe9=x", "\xe9", "x", nullptr},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << "text \"" << expected.text << "\"");
    const char* cursor = expected.text;
    std::string name = "old name";
    std::string value = "old value";
    EXPECT_TRUE(getEscapedPair(cursor, name, value));
    EXPECT_EQ(name, expected.name);
    EXPECT_EQ(value, expected.value);
    if (expected.rest == nullptr) {
      EXPECT_EQ(static_cast<const void*>(cursor), nullptr);
    } else {
      EXPECT_STREQ(cursor, expected.rest);
    }
  }
}

TEST(getEscapedPair, AnswersFalseForANullCursor) {
  const char* cursor = nullptr;
  std::string name = "n";
  std::string value = "v";
  EXPECT_FALSE(getEscapedPair(cursor, name, value));
  EXPECT_EQ(static_cast<const void*>(cursor), nullptr);
  EXPECT_EQ(name, "n");
  EXPECT_EQ(value, "v");
}

TEST(getEscapedPair, FailsForABadEscapeInAValueAndEndsTheText) {
  const char* const texts[] = {"a=%",    "a=%4",   "a=%G1",  "a=%4G",    "a=1%&b=2",
                               "a=%4&b", "a=%+41", "a=%%41", "a=%\xe9g", "a=%4="};
  for (const char* text : texts) {
    SCOPED_TRACE(testing::Message() << "text \"" << text << "\"");
    const char* cursor = text;
    std::string name = "n";
    std::string value = "v";
    EXPECT_FALSE(getEscapedPair(cursor, name, value));
    EXPECT_EQ(static_cast<const void*>(cursor), nullptr);
    EXPECT_EQ(name, "n") << "only success stores";
    EXPECT_EQ(value, "v") << "only success stores";
  }
}

TEST(getEscapedPair, FailsForASecondEqualsSign) {
  const char* const texts[] = {"a=1=2", "a==", "==", "a==&b", "a=1=2&b=3"};
  for (const char* text : texts) {
    SCOPED_TRACE(testing::Message() << "text \"" << text << "\"");
    const char* cursor = text;
    std::string name = "n";
    std::string value = "v";
    EXPECT_FALSE(getEscapedPair(cursor, name, value));
    EXPECT_NE(static_cast<const void*>(cursor), nullptr) << "the text is not used up";
    EXPECT_EQ(name, "n") << "only success stores";
    EXPECT_EQ(value, "v") << "only success stores";
  }
}

TEST(getEscapedPair, WalksThroughAText) {
  const char* cursor = "a=1&b&=x&c=%2F";
  pairList read;
  std::string name;
  std::string value;
  while (read.size() < 10 && getEscapedPair(cursor, name, value)) {
    read.emplace_back(name, value);
  }
  EXPECT_EQ(read, (pairList{{"a", "1"}, {"b", ""}, {"", "x"}, {"c", "/"}}));
}

TEST(parseArguments, StoresThePairs) {
  const struct {
    const char* text;
    pairList expected;
  } cases[] = {
      {nullptr, {}},
      {"", {}},
      {"a=1", {{"a", "1"}}},
      {"a", {{"a", ""}}},
      {"a&b=2", {{"a", ""}, {"b", "2"}}},
      {"b=2&a=1", {{"a", "1"}, {"b", "2"}}},
      {"n+m=x+y&%6E=%31", {{"n", "1"}, {"n m", "x y"}}},
      {"=x", {{"", "x"}}},
      {"%=1&%4G=2", {{"", "1"}, {"G", "2"}}},
      // A "&" at the end is followed by one more, empty pair.
      {"a=1&", {{"", ""}, {"a", "1"}}},
      // Repeated names, whatever their case, accumulate.
      {"a=1&a=2",
       {{"a",
         "1\x1e"
         "2"}}},
      {"a=1&a=2&b=x&a=3",
       {{"a",
         "1\x1e"
         "2\x1e"
         "3"},
        {"b", "x"}}},
      {"Ab=1&aB=2",
       {{"Ab",
         "1\x1e"
         "2"}}},
      {"a&a", {{"a", "\x1e"}}},
      {"a&a=2",
       {{"a",
         "\x1e"
         "2"}}},
      {"a=1&a", {{"a", "1\x1e"}}},
      {"&&", {{"", "\x1e\x1e"}}},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message()
                 << "text \"" << (expected.text == nullptr ? "(null)" : expected.text) << "\"");
    assocList list;
    EXPECT_TRUE(parseArguments(list, expected.text));
    EXPECT_EQ(pairsOf(list), expected.expected);
  }
}

TEST(parseArguments, AddsToWhatIsInTheList) {
  assocList list;
  list["Port"] = "80";
  list["x"] = "";
  ASSERT_TRUE(parseArguments(list, "port=90&x=1&y=2"));
  EXPECT_EQ(pairsOf(list), (pairList{{"Port",
                                      "80\x1e"
                                      "90"},
                                     {"x",
                                      "\x1e"
                                      "1"},
                                     {"y", "2"}}));
  ASSERT_TRUE(parseArguments(list, ""));
  ASSERT_TRUE(parseArguments(list, nullptr));
  EXPECT_EQ(list.size(), 3U);
}

TEST(parseArguments, FailsAtTheFirstMalformedPairAndKeepsThoseBefore) {
  const struct {
    const char* text;
    pairList expected;
  } cases[] = {
      {"a=1=2", {}},
      {"a=%", {}},
      {"a=%4", {}},
      {"a=1&b=%zz&c=3", {{"a", "1"}}},
      {"a=1&b=2=3&c=4", {{"a", "1"}}},
      {"a=1&a=%4G", {{"a", "1"}}},
      {"a&b=2&c==", {{"a", ""}, {"b", "2"}}},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << "text \"" << expected.text << "\"");
    assocList list;
    EXPECT_FALSE(parseArguments(list, expected.text));
    EXPECT_EQ(pairsOf(list), expected.expected);
  }
}

}  // namespace

}  // namespace form_encoding_test
