// SPDX-License-Identifier: MIT
#include "uri.h"

#include <gtest/gtest.h>
#include <regex.h>

#include <climits>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace uri_test {

namespace {

using pairList = std::vector<std::pair<std::string, std::string>>;
using addressList = std::vector<std::string>;

pairList pairsOf(const assocList& list) {
  return pairList(list.begin(), list.end());
}

// The result of a text that parses.
struct parsed {
  std::string text;
  std::string scheme;
  addressList addresses;
  std::int32_t keyId;
  std::string ticket;  // in hexadecimal
  pairList parameters;
};

void checkParsed(const parsed& expected) {
  SCOPED_TRACE(testing::Message() << "text \"" << expected.text << "\"");
  const URI uri(expected.text);
  EXPECT_TRUE(uri.okay());
  EXPECT_EQ(uri.scheme(), expected.scheme);
  EXPECT_EQ(uri.addresses, expected.addresses);
  EXPECT_EQ(uri.keyId, expected.keyId);
  EXPECT_EQ(uri.ticket.format(16), expected.ticket);
  EXPECT_EQ(uri.hexString(), expected.ticket);
  EXPECT_EQ(pairsOf(uri.parameters), expected.parameters);

  URI later;
  EXPECT_TRUE(later.set(expected.text));
  EXPECT_EQ(later.addresses, expected.addresses);
}

void checkRefused(const std::string& text) {
  SCOPED_TRACE(testing::Message() << "text \"" << text << "\"");
  EXPECT_FALSE(URI(text).okay());
  URI later;
  EXPECT_FALSE(later.set(text));
}

TEST(URIparse, ReadsAllPiecesOfAText) {
  const parsed cases[] = {
      {"vnc://host/", "vnc", {"host"}, -1, "", {}},
      {"VNC://Host:5900/", "VNC", {"Host:5900"}, -1, "", {}},
      {"vnc://localhost:5900/?shared=1", "vnc", {"localhost:5900"}, -1, "", {{"shared", "1"}}},
      {"vnc://[fe80::1]:5900/", "vnc", {"[fe80::1]:5900"}, -1, "", {}},
      {"ssh://host:2222/", "ssh", {"host:2222"}, -1, "", {}},
      {"vnc://a+b:1/7,QUJD", "vnc", {"a", "b:1"}, 7, "414243", {}},
      {"vnc://a/7,?x=1", "vnc", {"a"}, 7, "", {{"x", "1"}}},
  };
  for (const parsed& expected : cases) {
    checkParsed(expected);
  }
}

// --- Schemes -------------------------------------------------------------------

TEST(URIparse, TakesSchemesOfLettersDigitsAndSomePunctuation) {
  const char* const schemes[] = {"vnc", "V", "SsH", "a1", "x-y+z.1", "a-", "a.", "a+", "z000",
                                 "a--b",
                                 // The bracket that lists the characters holds a backslash too.
                                 "a\\b"};
  for (const std::string scheme : schemes) {
    checkParsed({scheme + "://h/", scheme, {"h"}, -1, "", {}});
  }
}

TEST(URIparse, RefusesWhatIsNoScheme) {
  const char* const texts[] = {
      "",        "h",         "/",         "://",       "://h/",       "1vnc://h/", "+x://h/",
      "-x://h/", ".x://h/",   " vnc://h/", "v_c://h/",  "v c://h/",    "vnc//h/",   "vnc:/h/",
      "vnc:h/",  "vnc: //h/", "vnc:/ /h/", "v:nc://h/", "v/nc://h/",   "\xe9://h/", "v\xe9://h/",
      "v]://h/", "v[://h/",   "v^://h/",   "v@://h/",   "x\nvnc://h/", "\nvnc://h/"};
  for (const char* text : texts) {
    checkRefused(text);
  }
}

TEST(URIparse, EndsTheSchemeAtItsFirstSeparator) {
  checkParsed({"a://b://hx/", "a", {"b:"}, -1, "fe1c7f", {}});
}

// --- Addresses -----------------------------------------------------------------

TEST(URIparse, SplitsTheAddresses) {
  const struct {
    const char* text;
    addressList addresses;
  } cases[] = {
      {"vnc://a+b,c/", {"a", "b", "c"}},
      {"vnc://a,b/", {"a", "b"}},
      {"vnc://a:1+[::1]:2,b.c/", {"a:1", "[::1]:2", "b.c"}},
      {"vnc://a+a+a/", {"a", "a", "a"}},
      {"vnc://h:/", {"h:"}},
      {"vnc://user@host/", {"user@host"}},
      {"vnc://h?x=1/", {"h?x=1"}},
  };
  for (const auto& expected : cases) {
    checkParsed({expected.text, "vnc", expected.addresses, -1, "", {}});
  }
}

TEST(URIparse, TakesAddressesThatBeginWithAHostNameOrEndInBrackets) {
  const char* const addresses[] = {
      // A letter or a digit at the beginning is enough.
      "a", "7", "h-1", "a.b.c", "1.2.3.4", "host:5900", "HOST", "host:", "a-", "a..b", "a b",
      "a\xe9", "h[", "a%41", "h\n",
      // A bracketed group of hexadecimal digits, colons and dots at the end, with or
      // without a port, whatever comes before it.
      "[::1]", "[fe80::1]:5900", "[FE80::A]:1", "[1.2.3.4]", "[:]", "[.]", "[a]:0", "x[::1]",
      "-x[::1]", "-x[::1]:22", "[g]x[::1]", "_[::1]", " [::1]", "\xe9[::1]", "[::1][::2]",
      "\n[::1]"};
  for (const std::string address : addresses) {
    checkParsed({"vnc://" + address + "/", "vnc", {address}, -1, "", {}});
  }
}

TEST(URIparse, RefusesOtherAddresses) {
  const char* const addresses[] = {"-bad",
                                   ".a",
                                   ":5900",
                                   "_host",
                                   " h",
                                   "*",
                                   "?a",
                                   "@h",
                                   "\xe9",
                                   "\na",
                                   "[",
                                   "]",
                                   "[::1",
                                   "::1]",
                                   "[]",
                                   "[]:1",
                                   "[::1]:",
                                   "[::1]:x",
                                   "[::1]:5900x",
                                   "[::1]5900",
                                   "[::1]x",
                                   "[g]",
                                   "[fe80::1%eth0]",
                                   "-[::1]:-1",
                                   "[::1]\n",
                                   "[::1]:22\n"};
  for (const std::string address : addresses) {
    checkRefused("vnc://" + address + "/");
    checkRefused("vnc://h+" + address + "/");
    checkRefused("vnc://" + address + ",h/");
  }
}

// Every address of up to three characters, and up to three more after each that fails
// alone, compared with the one search that decides it.
TEST(URIparse, TakesTheAddressesThatTheExpressionFindsAMatchIn) {
  const std::string letters = "af1g:.[]-\n";
  regex_t machine;
  ASSERT_EQ(0, regcomp(&machine, "^([a-z0-9]+([-.][a-z0-9]+)*)|(\\[[0-9a-f:.]+\\])(:[0-9]+)?$",
                       REG_EXTENDED | REG_ICASE));
  addressList addresses{""};
  for (std::size_t begin = 0, length = 1; length <= 3; ++length) {
    const std::size_t end = addresses.size();
    for (; begin < end; ++begin) {
      for (const char letter : letters) {
        addresses.push_back(addresses[begin] + letter);
      }
    }
  }
  std::size_t taken = 0;
  for (const std::string& address : addresses) {
    for (const std::string& whole : {address, "-[F" + address, "[a]" + address}) {
      const bool expected = regexec(&machine, whole.c_str(), 0, nullptr, 0) == 0;
      EXPECT_EQ(expected, URI("vnc://" + whole + "/").okay()) << whole;
      taken += expected ? 1 : 0;
    }
  }
  regfree(&machine);
  EXPECT_LT(400U, taken);
}

TEST(URIparse, RefusesEmptyAddresses) {
  const char* const texts[] = {"vnc:///",     "vnc://+/",    "vnc://,/",   "vnc://a,,b/",
                               "vnc://a++b/", "vnc://a+,b/", "vnc://+a/",  "vnc://,a/",
                               "vnc://a+/",   "vnc://a,/",   "vnc:////a/", "vnc:///a"};
  for (const char* text : texts) {
    checkRefused(text);
  }
}

TEST(URIparse, NeedsASlashBehindTheAddresses) {
  const char* const texts[] = {"vnc://",      "vnc://host",  "vnc://host:5900",
                               "vnc://a+b",   "vnc://a,b,c", "vnc://host?a=1",
                               "vnc://[::1]", "vnc://a+",    "vnc://h\\"};
  for (const char* text : texts) {
    checkRefused(text);
  }
}

// --- Key ids and tickets -------------------------------------------------------

TEST(URIparse, ReadsKeyIdsAndTickets) {
  const struct {
    const char* rest;  // after the addresses
    std::int32_t keyId;
    const char* ticket;
  } cases[] = {
      {"", -1, ""},
      {"12,QUJD", 12, "414243"},
      {"1234", -1, "d76df8"},
      {"1234,", 1234, ""},
      {"1234,5678", 1234, "e7aefc"},
      {"0,", 0, ""},
      {"007,", 7, ""},
      // Without a digit before the comma.
      {",", 0, ""},
      {",QUJD", 0, "414243"},
      {"2147483647,", 2147483647, ""},
      // The value wraps in 32 bits.
      {"2147483648,", INT32_MIN, ""},
      {"4294967295,", -1, ""},
      {"4294967296,", 0, ""},
      {"99999999999,QQ==", 1215752191, "41"},
      {"QUJD", -1, "414243"},
      {"QUI=", -1, "4142"},
      {"QQ==", -1, "41"},
      {"QUJDRUZH", -1, "414243454647"},
      {"QUJD/xyz", -1, "414243ff1cb3"},
      {"QU+/", -1, "414fbf"},
      // No digits, so no key id.
      {"-1,", -1, ""},
      {" 12,QUJD", -1, ""},
      // Decoding stops at the first character outside the alphabet.
      {"QUJD,7", -1, "414243"},
      {"QUJD xyz", -1, "414243"},
      {"QUJD-", -1, "414243"},
      {"QQ==xyz", -1, "41"},
      {"!", -1, ""},
      {"#QUJD", -1, ""},
      {"12,,", 12, ""},
      {"12,-3", 12, ""},
      {"\xe9", -1, ""},
  };
  for (const auto& expected : cases) {
    const std::string text = std::string("vnc://h/") + expected.rest;
    checkParsed({text, "vnc", {"h"}, expected.keyId, expected.ticket, {}});
  }
}

TEST(URIparse, RefusesTicketsThatAreNoBase64) {
  const char* const rests[] = {
      "a",      "ab",   "abc",    "abcde", "/",        "QUJD/",    "QQ=",      "Q===", "=",
      "==",     "===",  "====",   "QUJD=", "QUJD====", "QQ====",   "12",       "1",    "12,a",
      "12,abc", "12,=", "12?a=1", "a?a=1", "=?a=1",    "7,a,QUJD", "12 ,QUJD", "a,"};
  for (const char* rest : rests) {
    checkRefused(std::string("vnc://h/") + rest);
  }
}

// --- Parameters ----------------------------------------------------------------

TEST(URIparse, ReadsParameters) {
  const struct {
    const char* rest;
    pairList parameters;
  } cases[] = {
      {"?geometry=800x600&shared=1", {{"geometry", "800x600"}, {"shared", "1"}}},
      {"?a=", {{"a", ""}}},
      {"?=x", {{"", "x"}}},
      {"?=", {{"", ""}}},
      {"?a=&b=", {{"a", ""}, {"b", ""}}},
      {"?a=1=2", {{"a", "1=2"}}},
      {"?a==", {{"a", "="}}},
      {"?a=?b", {{"a", "?b"}}},
      {"??a=1", {{"?a", "1"}}},
      {"?a=/+,", {{"a", "/+,"}}},
      {"?a=x y", {{"a", "x y"}}},
      // The name runs to the next "=", whatever is between.
      {"?a&b=1", {{"a&b", "1"}}},
      {"?&a=1", {{"&a", "1"}}},
      {"?a=1&&b=2", {{"&b", "2"}, {"a", "1"}}},
      {"?a=1&b&c=2", {{"a", "1"}, {"b&c", "2"}}},
      // Values are percent-decoded, names are not.
      {"?a%41=%41", {{"a%41", "A"}}},
      {"?a=%26&b=%3D&c=%25", {{"a", "&"}, {"b", "="}, {"c", "%"}}},
      {"?a=%", {{"a", ""}}},
      {"?a=%4&b=%G", {{"a", ""}, {"b", "%G"}}},
      {"?a=%2541", {{"a", "%41"}}},
      {"?a=1+2", {{"a", "1+2"}}},
      {"?a=x%00y", {{"a", std::string("x\0y", 3)}}},
      {"?a=%e9\xff", {{"a", "\xe9\xff"}}},
      // Names are kept without regard to case, with the first spelling.
      {"?a=1&a=2", {{"a", "2"}}},
      {"?Ab=1&aB=2&AB=3", {{"Ab", "3"}}},
      {"?b=1&C=2&a=3", {{"a", "3"}, {"b", "1"}, {"C", "2"}}},
  };
  for (const auto& expected : cases) {
    checkParsed(
        {std::string("vnc://h/") + expected.rest, "vnc", {"h"}, -1, "", expected.parameters});
  }
}

TEST(URIparse, ReadsParametersBehindAKeyId) {
  checkParsed({"vnc://h/12,?a=1", "vnc", {"h"}, 12, "", {{"a", "1"}}});
  checkParsed({"vnc://h/,?a=1", "vnc", {"h"}, 0, "", {{"a", "1"}}});
}

TEST(URIparse, ReadsNoParametersBehindATicketOrAnythingElse) {
  checkParsed({"vnc://h/QUJD?shared=1", "vnc", {"h"}, -1, "414243", {}});
  checkParsed({"vnc://h/QQ==?shared=1", "vnc", {"h"}, -1, "41", {}});
  checkParsed({"vnc://h/1234?shared=1", "vnc", {"h"}, -1, "d76df8", {}});
  checkParsed({"vnc://h/7,QUJD?shared", "vnc", {"h"}, 7, "414243", {}});
  checkParsed({"vnc://h/#?a=1", "vnc", {"h"}, -1, "", {}});
  checkParsed({"vnc://h/ ?a=1", "vnc", {"h"}, -1, "", {}});
  checkParsed({"vnc://h/&a=1", "vnc", {"h"}, -1, "", {}});
}

TEST(URIparse, RefusesParametersWithoutAnEqualsSign) {
  const char* const rests[] = {"?",      "?a",        "?a&b",     "?a=1&", "?a=1&b",
                               "?a=1&&", "?a=1&b=2&", "?a=1&%3D", "12,?a", "?&"};
  for (const char* rest : rests) {
    checkRefused(std::string("vnc://h/") + rest);
  }
}

// --- Odd texts -----------------------------------------------------------------

TEST(URIparse, EndsAtTheFirstNul) {
  const std::string nul(1, '\0');
  checkParsed({"vnc://h/" + nul + "?a=1", "vnc", {"h"}, -1, "", {}});
  checkParsed({"vnc://h/?a=1" + nul + "&b=2", "vnc", {"h"}, -1, "", {{"a", "1"}}});
  checkParsed({"vnc://h/QQ==" + nul + "QQ", "vnc", {"h"}, -1, "41", {}});
  checkParsed({"vnc://h/1234" + nul + ",", "vnc", {"h"}, -1, "d76df8", {}});
  checkRefused("vnc://h" + nul + "/");
  checkRefused("vnc://" + nul + "h/");
  checkRefused("vnc" + nul + "://h/");
  checkRefused(nul + "vnc://h/");
  checkRefused("vnc://h/?a" + nul + "=1");
}

TEST(URIparse, TakesVeryLongTexts) {
  std::string text = "vnc://h0";
  for (int i = 1; i < 1000; i++) {
    text += "+h" + std::to_string(i) + ":5900";
  }
  text += "/?big=" + std::string(1000000, 'x');
  for (int i = 0; i < 10000; i++) {
    text += "&option" + std::to_string(i) + "=" + std::to_string(i);
  }
  const URI uri(text);
  ASSERT_TRUE(uri.okay());
  ASSERT_EQ(uri.addresses.size(), 1000U);
  EXPECT_EQ(uri.addresses.front(), "h0");
  EXPECT_EQ(uri.addresses.back(), "h999:5900");
  EXPECT_EQ(uri.parameters.size(), 10001U);
  EXPECT_EQ(uri.parameters["big"], std::string(1000000, 'x'));
  EXPECT_EQ(uri.parameters["option9999"], "9999");
}

// --- What a failed parse leaves ------------------------------------------------

TEST(URIset, LeavesWhatItHadStoredWhenItFails) {
  const struct {
    const char* text;
    const char* scheme;
    addressList addresses;
    std::int32_t keyId;
    const char* ticket;
    pairList parameters;
  } cases[] = {
      // Refused before anything was stored: all is as it was.
      {"1x://b/", "old", {"o1", "o2"}, 5, "4f4f4f", {{"old", "1"}}},
      {"", "old", {"o1", "o2"}, 5, "4f4f4f", {{"old", "1"}}},
      // The scheme is new, and the ticket and the addresses are emptied.
      {"new://", "new", {}, 5, "", {{"old", "1"}}},
      {"new://b", "new", {}, 5, "", {{"old", "1"}}},
      {"new://b+c", "new", {"b"}, 5, "", {{"old", "1"}}},
      {"new://b,c:1,-d,e/", "new", {"b", "c:1"}, 5, "", {{"old", "1"}}},
      // The key id is read before the ticket.
      {"new://b/abc", "new", {"b"}, -1, "", {{"old", "1"}}},
      {"new://b/77,abc", "new", {"b"}, 77, "", {{"old", "1"}}},
      {"new://b/77,?a=1&c", "new", {"b"}, 77, "", {{"a", "1"}, {"old", "1"}}},
      {"new://b/?OLD=2&", "new", {"b"}, -1, "", {{"old", "2"}}},
      {"new://b/?", "new", {"b"}, -1, "", {{"old", "1"}}},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << "text \"" << expected.text << "\"");
    URI uri("old://o1+o2/5,?old=1");
    ASSERT_TRUE(uri.okay());
    uri.setTicket(ByteArray(3, "OOO"));
    EXPECT_FALSE(uri.set(expected.text));
    EXPECT_TRUE(uri.okay()) << "only construction from a text decides that";
    EXPECT_EQ(uri.scheme(), expected.scheme);
    EXPECT_EQ(uri.addresses, expected.addresses);
    EXPECT_EQ(uri.keyId, expected.keyId);
    EXPECT_EQ(uri.hexString(), expected.ticket);
    EXPECT_EQ(pairsOf(uri.parameters), expected.parameters);
  }
}

TEST(URIset, KeepsParametersOfEarlierTextsAndReplacesTheRest) {
  URI uri("old://o1+o2/?a=1&b=2");
  ASSERT_TRUE(uri.set("new://n/QUJD"));
  EXPECT_EQ(uri.scheme(), "new");
  EXPECT_EQ(uri.addresses, addressList{"n"});
  EXPECT_EQ(uri.hexString(), "414243");
  EXPECT_EQ(pairsOf(uri.parameters), (pairList{{"a", "1"}, {"b", "2"}}));
  ASSERT_TRUE(uri.set("new://n/9,?B=3&c=4"));
  EXPECT_EQ(uri.keyId, 9);
  EXPECT_TRUE(uri.ticket.empty());
  EXPECT_EQ(pairsOf(uri.parameters), (pairList{{"a", "1"}, {"b", "3"}, {"c", "4"}}));
}

TEST(URIset, DoesNotTouchTheOkayFlag) {
  URI bad("nothing");
  EXPECT_FALSE(bad.okay());
  EXPECT_TRUE(bad.set("vnc://h/"));
  EXPECT_FALSE(bad.okay());

  URI good("vnc://h/");
  EXPECT_TRUE(good.okay());
  EXPECT_FALSE(good.set("nothing"));
  EXPECT_TRUE(good.okay());
}

// --- Decimal numbers -----------------------------------------------------------

TEST(decimalInt, ReadsDigitsUpToTheFirstOtherCharacter) {
  const struct {
    const char* text;
    std::int32_t value;
  } cases[] = {
      {"", 0},
      {"0", 0},
      {"7", 7},
      {"12", 12},
      {"0012", 12},
      {"12,QUJD", 12},
      {"12 34", 12},
      {"1a", 1},
      {"a1", 0},
      {"-5", 0},
      {"+5", 0},
      {" 5", 0},
      {"/", 0},
      {":", 0},
      {"\xb2", 0},
      {"2147483647", INT32_MAX},
      {"2147483648", INT32_MIN},
      {"2147483649", -2147483647},
      {"4294967294", -2},
      {"4294967295", -1},
      {"4294967296", 0},
      {"4294967297", 1},
      {"99999999999", 1215752191},
      {"12345678901234567890", -350287150},
      {"340282366920938463463374607431768211457", 1},
  };
  for (const auto& expected : cases) {
    EXPECT_EQ(decimalInt(expected.text), expected.value) << "text \"" << expected.text << "\"";
  }
}

}  // namespace

}  // namespace uri_test
