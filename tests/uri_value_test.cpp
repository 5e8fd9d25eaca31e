// SPDX-License-Identifier: MIT
// Uses of a URI other than parsing: writing, copying, assigning, changing.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "bytearray.h"
#include "config_override.h"
#include "uri.h"

namespace uri_value_test {

namespace {

using pairList = std::vector<std::pair<std::string, std::string>>;
using addressList = std::vector<std::string>;

pairList pairsOf(const assocList& list) {
  return pairList(list.begin(), list.end());
}

// The argument vector in its plainest form, without a program name.
addressList argumentsOf(URI& uri) {
  addressList result;
  for (char** element = uri.args("x", 0, AS_EQUALS, nullptr) + 1; *element != nullptr; element++) {
    result.emplace_back(*element);
  }
  return result;
}

// --- Construction and copying --------------------------------------------------

TEST(URIconstructor, MakesAnEmptyURIThatIsNotOkay) {
  const URI uri;
  EXPECT_FALSE(uri.okay());
  EXPECT_EQ(uri.scheme(), "");
  EXPECT_TRUE(uri.addresses.empty());
  EXPECT_EQ(uri.keyId, -1);
  EXPECT_TRUE(uri.ticket.empty());
  EXPECT_EQ(uri.hexString(), "");
  EXPECT_TRUE(uri.parameters.empty());
}

TEST(URIconstructor, RecordsWhetherTheTextParsed) {
  EXPECT_TRUE(URI("vnc://h/").okay());
  EXPECT_FALSE(URI("vnc://h").okay());
  EXPECT_FALSE(URI("").okay());
}

TEST(URIcopy, HasTheTicketTheKeyIdTheAddressesAndTheFlagButNotTheRest) {
  URI original("vnc://a+b:1/7,?p=1");
  ASSERT_TRUE(original.okay());
  original.setTicket(ByteArray(3, "ABC"));
  const URI copy(original);
  EXPECT_TRUE(copy.okay());
  EXPECT_EQ(copy.addresses, (addressList{"a", "b:1"}));
  EXPECT_EQ(copy.keyId, 7);
  EXPECT_EQ(copy.hexString(), "414243");
  EXPECT_EQ(copy.scheme(), "");
  EXPECT_TRUE(copy.parameters.empty());

  const URI bad("vnc://a");
  EXPECT_FALSE(URI(bad).okay());
}

TEST(URIcopy, IsIndependentOfItsOriginal) {
  URI original("vnc://a/QUJD");
  URI copy(original);
  copy.add("b");
  copy.setKeyId(3);
  copy.setTicket(ByteArray());
  EXPECT_EQ(original.addresses, addressList{"a"});
  EXPECT_EQ(original.keyId, -1);
  EXPECT_EQ(original.hexString(), "414243");
  EXPECT_EQ(copy.addresses, (addressList{"a", "b"}));
}

TEST(URIcopy, HasAnArgumentVectorOfItsOwn) {
  URI original("vnc://a/?p=1");
  EXPECT_EQ(argumentsOf(original), (addressList{"--autoreconnect=0", "-p=1", "a"}));
  URI copy(original);
  EXPECT_EQ(argumentsOf(copy), addressList{"a"}) << "a copy has no scheme and no parameters";
  EXPECT_NE(copy.args("x", 0, AS_EQUALS, nullptr), original.args("x", 0, AS_EQUALS, nullptr));
}

// --- Assignment ----------------------------------------------------------------

TEST(URIassignment, OfATextParsesIt) {
  URI uri;
  uri = "vnc://a+b/7,QUJD";
  EXPECT_EQ(uri.scheme(), "vnc");
  EXPECT_EQ(uri.addresses, (addressList{"a", "b"}));
  EXPECT_EQ(uri.keyId, 7);
  EXPECT_EQ(uri.hexString(), "414243");
  URI& result = uri = "ssh://c/";
  EXPECT_EQ(&result, &uri);
  EXPECT_EQ(uri.scheme(), "ssh");
  EXPECT_EQ(uri.addresses, addressList{"c"});
  EXPECT_EQ(uri.keyId, -1);
  EXPECT_TRUE(uri.ticket.empty());
}

TEST(URIassignment, OfATextThatDoesNotParseEmptiesAddressesKeyIdAndTicket) {
  const struct {
    const char* text;
    const char* scheme;
  } cases[] = {
      {"", "vnc"},
      {"nothing", "vnc"},
      {"1x://h/", "vnc"},
      {"new://", "new"},
      {"new://b", "new"},
      {"new://b+-/", "new"},
      {"new://b/abc", "new"},
      {"new://b/9,abc", "new"},
      {"new://b/?", "new"},
      {"new://b/9,?c", "new"},
      {"new://b/9,QUJ", "new"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << "text \"" << expected.text << "\"");
    URI uri("vnc://a/7,QUJD");
    ASSERT_TRUE(uri.okay());
    uri = expected.text;
    EXPECT_TRUE(uri.addresses.empty());
    EXPECT_EQ(uri.keyId, -1);
    EXPECT_TRUE(uri.ticket.empty());
    EXPECT_EQ(uri.scheme(), expected.scheme);
    EXPECT_TRUE(uri.okay()) << "assignment does not change the flag";
  }
}

TEST(URIassignment, OfATextDoesNotChangeTheOkayFlag) {
  URI fresh;
  fresh = "vnc://h/";
  EXPECT_EQ(fresh.addresses, addressList{"h"});
  EXPECT_FALSE(fresh.okay());
  URI bad("nothing");
  bad = "vnc://h/";
  EXPECT_FALSE(bad.okay());
}

TEST(URIassignment, OfATextKeepsParametersUnlessReplaced) {
  URI uri("vnc://h/?a=1&Bc=2");
  uri = "vnc://h/?bC=3&d=4";
  EXPECT_EQ(pairsOf(uri.parameters), (pairList{{"a", "1"}, {"Bc", "3"}, {"d", "4"}}));
  uri = "vnc://h/";
  EXPECT_EQ(pairsOf(uri.parameters), (pairList{{"a", "1"}, {"Bc", "3"}, {"d", "4"}}));
  uri = "nothing";
  EXPECT_EQ(pairsOf(uri.parameters), (pairList{{"a", "1"}, {"Bc", "3"}, {"d", "4"}}));
  uri = "vnc://h/?e=5&f";
  EXPECT_EQ(pairsOf(uri.parameters), (pairList{{"a", "1"}, {"Bc", "3"}, {"d", "4"}, {"e", "5"}}));
}

TEST(URIassignment, OfAnotherURICopiesWhatAConstructedCopyHas) {
  URI source("ssh://b+c/9,?q=2");
  source.setTicket(ByteArray(2, "AB"));
  URI target("nothing");
  ASSERT_FALSE(target.okay());
  URI& result = target = source;
  EXPECT_EQ(&result, &target);
  EXPECT_TRUE(target.okay());
  EXPECT_EQ(target.addresses, (addressList{"b", "c"}));
  EXPECT_EQ(target.keyId, 9);
  EXPECT_EQ(target.hexString(), "4142");
  EXPECT_EQ(target.scheme(), "") << "the scheme is not copied";
  EXPECT_TRUE(target.parameters.empty()) << "the parameters are not copied";
  EXPECT_EQ(source.scheme(), "ssh");
  EXPECT_EQ(pairsOf(source.parameters), (pairList{{"q", "2"}}));

  target = URI();
  EXPECT_FALSE(target.okay());
  EXPECT_TRUE(target.addresses.empty());
  EXPECT_EQ(target.keyId, -1);
  EXPECT_TRUE(target.ticket.empty());
}

TEST(URIassignment, OfAnotherURILeavesWhatIsNotCopied) {
  const URI source("ssh://b/?q=2");
  URI target("vnc://a/?p=1");
  target = source;
  EXPECT_EQ(target.scheme(), "vnc");
  EXPECT_EQ(pairsOf(target.parameters), (pairList{{"p", "1"}}));
  EXPECT_EQ(target.addresses, addressList{"b"});
}

TEST(URIassignment, OfAnotherURIDropsTheArgumentVector) {
  URI source("ssh://b/");
  EXPECT_EQ(argumentsOf(source), addressList{"b"});
  URI target("ssh://a/");
  EXPECT_EQ(argumentsOf(target), addressList{"a"});
  target = source;
  EXPECT_EQ(argumentsOf(target), addressList{"b"});
  EXPECT_EQ(argumentsOf(source), addressList{"b"});
}

TEST(URIassignment, ToItselfKeepsTheAddress) {
  URI uri("ssh://a+b/7,QUJD");
  EXPECT_EQ(argumentsOf(uri), (addressList{"-ticket=414243", "a", "b"}));
  const URI& same = uri;
  uri = same;
  EXPECT_TRUE(uri.okay());
  EXPECT_EQ(uri.addresses, (addressList{"a", "b"}));
  EXPECT_EQ(uri.keyId, 7);
  EXPECT_EQ(uri.hexString(), "414243");
  EXPECT_EQ(argumentsOf(uri), (addressList{"-ticket=414243", "a", "b"}));
}

// --- Writing -------------------------------------------------------------------

TEST(URIformat, WritesParsedTextsBack) {
  const struct {
    const char* text;
    const char* expected;
  } cases[] = {
      {"vnc://host/", "vnc://host/"},
      {"VNC://Host:5900/", "VNC://Host:5900/"},
      {"vnc://a+b,c/", "vnc://a+b+c/"},
      {"vnc://[fe80::1]:5900/", "vnc://[fe80::1]:5900/"},
      {"vnc://h/12,QUJD", "vnc://h/12,QUJD"},
      {"vnc://h/,QUJD", "vnc://h/0,QUJD"},
      {"vnc://h/007,", "vnc://h/7,"},
      {"vnc://h/QQ==", "vnc://h/QQ=="},
      {"vnc://h/QR==xyz", "vnc://h/QQ=="},
      {"vnc://h/1234", "vnc://h/1234"},
      {"vnc://h/?shared=1&geometry=800x600", "vnc://h/?geometry=800x600&shared=1"},
      {"vnc://h/?a%41=%41", "vnc://h/?a%41=A"},
      {"vnc://h/?a=", "vnc://h/?a="},
      {"vnc://h/?x=a b&y=%26%3D&z=1/2", "vnc://h/?x=a%20b&y=%26%3D&z=1%2F2"},
      {"vnc://h/?n=\xc3\xa9", "vnc://h/?n=%C3%A9"},
      {"vnc://h/?b=1&A=2&C=3", "vnc://h/?A=2&b=1&C=3"},
      {"vnc://h/9,?a=1", "vnc://h/9,?a=1"},
      {"vnc://h/QUJD?a=1", "vnc://h/QUJD"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << "text \"" << expected.text << "\"");
    const URI uri(expected.text);
    EXPECT_TRUE(uri.okay());
    EXPECT_EQ(uri.format(), expected.expected);
  }
}

TEST(URIformat, WritesKeyIdsOfEverySize) {
  const struct {
    int keyId;
    const char* expected;
  } cases[] = {
      {-1, "vnc://h/"},
      {-2, "vnc://h/"},
      {std::numeric_limits<int>::min(), "vnc://h/"},
      {0, "vnc://h/0,"},
      {9, "vnc://h/9,"},
      {10, "vnc://h/10,"},
      {99, "vnc://h/99,"},
      {100, "vnc://h/100,"},
      {99999, "vnc://h/99999,"},
      {100000, "vnc://h/100000,"},
      {std::numeric_limits<int>::max(), "vnc://h/2147483647,"},
  };
  for (const auto& expected : cases) {
    URI uri("vnc://h/");
    uri.setKeyId(expected.keyId);
    EXPECT_EQ(uri.keyId, expected.keyId);
    EXPECT_EQ(uri.format(), expected.expected) << "key id " << expected.keyId;
  }
}

TEST(URIformat, WritesTicketAndParametersTogether) {
  URI uri("vnc://h/3,?b=2");
  uri.setTicket(ByteArray(4, "ABCD"));
  uri.addParam("A c", "x&y");
  EXPECT_EQ(uri.format(), "vnc://h/3,QUJDRA==?A c=x%26y&b=2") << "names are not encoded";
}

// The strings of the C++ library reserve exactly what they are asked for, from 31 bytes on.
TEST(URIformat, ReservesRoomForAllButTheParameters) {
  const struct {
    const char* text;
    std::size_t room;
  } rows[] = {
      {"vnc://a-name-of-41-characters-it-is-all.example/", 48},
      {"vnc://a-name-of-41-characters-it-is-all.example/0,", 50},
      {"vnc://a-name-of-41-characters-it-is-all.example/9,", 50},
      {"vnc://a-name-of-41-characters-it-is-all.example/10,", 51},
      {"vnc://a-name-of-41-characters-it-is-all.example/99,", 51},
      {"vnc://a-name-of-41-characters-it-is-all.example/100,", 54},
      {"vnc://a-name-of-41-characters-it-is-all.example/99999,", 54},
      {"vnc://a-name-of-41-characters-it-is-all.example,b,c.d/", 54},
      // Ten bytes have fourteen digits, though sixteen are written.
      {"vnc://a-name-of-41-characters-it-is-all.example/100,MDEyMzQ1Njc4OQ==", 68},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const URI uri(row.text);
    ASSERT_TRUE(uri.okay());
    std::string room;
    room.reserve(row.room);
    EXPECT_EQ(uri.format().capacity(), room.capacity());
  }
}

TEST(URIformat, WritesNoSlashWithoutAddresses) {
  URI uri;
  EXPECT_EQ(uri.format(), "VNC://");
  uri.setKeyId(5);
  uri.setTicket(ByteArray(3, "ABC"));
  uri.addParam("a", "1");
  EXPECT_EQ(uri.format(), "VNC://5,QUJD?a=1");
  uri.add("h");
  EXPECT_EQ(uri.format(), "VNC://h/5,QUJD?a=1");
}

TEST(URIformat, TakesAMissingSchemeFromTheConfiguration) {
  URI uri("ssh://h/");
  const URI copy(uri);
  EXPECT_EQ(copy.format(), "VNC://h/");
  {
    const configOverride scheme("URI_SCHEME", {"RDP"});
    EXPECT_EQ(copy.format(), "RDP://h/");
    EXPECT_EQ(uri.format(), "ssh://h/") << "a URI's own scheme comes first";
  }
  EXPECT_EQ(copy.format(), "VNC://h/");
}

// --- Changing ------------------------------------------------------------------

TEST(URIclear, FreesTheArgumentVectorAndNothingElse) {
  URI uri("ssh://a/7,QUJD");
  uri.addParam("p", "1");
  EXPECT_EQ(argumentsOf(uri), (addressList{"-p=1", "-ticket=414243", "a"}));
  uri.clear();
  EXPECT_TRUE(uri.okay());
  EXPECT_EQ(uri.scheme(), "ssh");
  EXPECT_EQ(uri.addresses, addressList{"a"});
  EXPECT_EQ(uri.keyId, 7);
  EXPECT_EQ(uri.hexString(), "414243");
  EXPECT_EQ(pairsOf(uri.parameters), (pairList{{"p", "1"}}));
  uri.clear();
  EXPECT_EQ(argumentsOf(uri), (addressList{"-p=1", "-ticket=414243", "a"}));
}

TEST(URIsetTicket, ReplacesTheTicketAndDropsTheArgumentVector) {
  URI uri("ssh://a/QUJD");
  EXPECT_EQ(argumentsOf(uri), (addressList{"-ticket=414243", "a"}));
  uri.setTicket(ByteArray("00ff", 16));
  EXPECT_EQ(uri.hexString(), "00ff");
  EXPECT_EQ(argumentsOf(uri), (addressList{"-ticket=00ff", "a"}));
  uri.setTicket(ByteArray());
  EXPECT_EQ(uri.hexString(), "");
  EXPECT_EQ(argumentsOf(uri), addressList{"a"});
}

TEST(URIadd, OfOneAddressAppendsItAndDropsTheArgumentVector) {
  URI uri("ssh://a/");
  EXPECT_EQ(argumentsOf(uri), addressList{"a"});
  uri.add("-no machine:1");
  EXPECT_EQ(uri.addresses, (addressList{"a", "-no machine:1"})) << "what is added is not tested";
  EXPECT_EQ(argumentsOf(uri), (addressList{"a", "-no machine:1"}));
}

TEST(URIadd, OfSeveralAddressesSetsTheirPorts) {
  const struct {
    const char* address;
    int port;
    const char* expected;
  } cases[] = {
      {"h", 5900, "h:5900"},
      {"h:1", 5900, "h:5900"},
      {"h:", 5900, "h:5900"},
      {":1", 5900, ":5900"},
      {"", 5900, ":5900"},
      {"a:b:c", 5900, "a:b:5900"},
      {"h:1", 0, "h:0"},
      {"h", std::numeric_limits<int>::max(), "h:2147483647"},
      {"[fe80::1]:1", 5900, "[fe80::1]:5900"},
      // The last colon counts, also inside brackets.
      {"[::1]", 5900, "[::5900"},
      {"[1.2.3.4]", 5900, "[1.2.3.4]:5900"},
      {"h:1", -1, "h:1"},
      {"h", -1, "h"},
      {"", -1, ""},
      {"h:1", std::numeric_limits<int>::min(), "h:1"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << "address " << expected.address << " port " << expected.port);
    URI uri("vnc://first:7/");
    uri.add(addressList{expected.address, "z:9"}, expected.port);
    ASSERT_EQ(uri.addresses.size(), 3U);
    EXPECT_EQ(uri.addresses[0], "first:7") << "addresses that were there stay";
    EXPECT_EQ(uri.addresses[1], expected.expected);
    EXPECT_EQ(uri.addresses[2].substr(0, 2), "z:");
  }
}

TEST(URIadd, OfNoAddressesChangesNothing) {
  URI uri("vnc://a:1/");
  uri.add(addressList(), 5900);
  EXPECT_EQ(uri.addresses, addressList{"a:1"});
}

TEST(URIadd, OfSeveralAddressesKeepsTheArgumentVector) {
  URI uri("ssh://a/");
  EXPECT_EQ(argumentsOf(uri), addressList{"a"});
  uri.add(addressList{"b", "c"}, -1);
  EXPECT_EQ(uri.addresses, (addressList{"a", "b", "c"}));
  EXPECT_EQ(argumentsOf(uri), addressList{"a"});
  uri.clear();
  EXPECT_EQ(argumentsOf(uri), (addressList{"a", "b", "c"}));
}

TEST(URIaddParam, StoresOneParameter) {
  URI uri("vnc://h/?a=1");
  uri.addParam("b", "x y");
  uri.addParam("A", "2");
  uri.addParam("e", "");
  EXPECT_EQ(pairsOf(uri.parameters), (pairList{{"a", "2"}, {"b", "x y"}, {"e", ""}}));
}

}  // namespace

}  // namespace uri_value_test
