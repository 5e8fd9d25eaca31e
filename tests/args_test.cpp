// SPDX-License-Identifier: MIT
// The argument vectors that URIs make for viewers.
#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "bytearray.h"
#include "children.h"
#include "config_override.h"
#include "reports.h"
#include "uri.h"

namespace args_test {

namespace {

using textList = std::vector<std::string>;
using pairList = std::vector<std::pair<std::string, std::string>>;

static_assert(AS_EQUALS == 0 && AS_SEPARATE == 1);

// The strings of a vector up to its null.
textList stringsOf(char* const* vector) {
  textList result;
  while (*vector != nullptr) {
    result.emplace_back(*vector++);
  }
  return result;
}

textList simpleArgs(URI& uri) {
  return stringsOf(uri.args("x", 0, AS_EQUALS, nullptr));
}

pairList pairsOf(const assocList& list) {
  return pairList(list.begin(), list.end());
}

struct argsCase {
  const char* uri;
  const char* command;
  unsigned int maxHosts;
  argsStyle style;
  const char* portArg;
  textList expected;
};

template <std::size_t N>
void checkArgs(const argsCase (&cases)[N]) {
  for (const argsCase& entry : cases) {
    SCOPED_TRACE(testing::Message()
                 << "URI \"" << entry.uri << "\" style " << text(entry.style) << " port option "
                 << (entry.portArg == nullptr ? "(none)" : entry.portArg) << " at most "
                 << entry.maxHosts);
    URI uri(entry.uri);
    ASSERT_TRUE(uri.okay());
    EXPECT_EQ(stringsOf(uri.args(entry.command, entry.maxHosts, entry.style, entry.portArg)),
              entry.expected);
  }
}

// --- Configuration -------------------------------------------------------------

TEST(viewerItems, HaveTheirDefaults) {
  EXPECT_EQ(PROGRAMS.name(), "PROGRAMS");
  EXPECT_EQ(PROGRAMS.values(), (textList{"VNC=vncviewer", "SSH=putty"}));
  EXPECT_EQ(pairsOf(PROGRAMS.list()), (pairList{{"SSH", "putty"}, {"VNC", "vncviewer"}}));
  EXPECT_EQ(URI_SCHEME.name(), "URI_SCHEME");
  EXPECT_EQ(URI_SCHEME.value(false), "VNC");
  EXPECT_EQ(VNC_OPTIONS.name(), "VNC_OPTIONS");
  EXPECT_EQ(VNC_OPTIONS.values(), textList{"-autoreconnect=0"});
  EXPECT_EQ(pairsOf(VNC_OPTIONS.list()), (pairList{{"-autoreconnect", "0"}}));
}

TEST(viewerItems, FindProgramsWithoutRegardToCase) {
  const assocList programs = PROGRAMS.list();
  EXPECT_EQ(programs["vnc"], "vncviewer");
  EXPECT_EQ(programs["sSh"], "putty");
  EXPECT_EQ(programs["ftp"], "");
}

// --- Styles --------------------------------------------------------------------

TEST(argsStyle, HasTexts) {
  EXPECT_STREQ(text(AS_EQUALS), "equals");
  EXPECT_STREQ(text(AS_SEPARATE), "separate");
  for (const int value : {2, 3, -1, 100}) {
    EXPECT_STREQ(text(static_cast<argsStyle>(value)), "<invalid argsStyle>") << "value " << value;
  }
}

TEST(argsStyle, IsReadFromItsTextWithoutRegardToCase) {
  const struct {
    std::string text;
    argsStyle style;
  } cases[] = {
      {"equals", AS_EQUALS},
      {"EQUALS", AS_EQUALS},
      {"separate", AS_SEPARATE},
      {"SEPARATE", AS_SEPARATE},
      {"Separate", AS_SEPARATE},
      {"sEpArAtE", AS_SEPARATE},
      {"separated", AS_EQUALS},
      {"separat", AS_EQUALS},
      {" separate", AS_EQUALS},
      {"separate ", AS_EQUALS},
      {"x", AS_EQUALS},
      {"", AS_EQUALS},
      {"1", AS_EQUALS},
      {"<invalid argsStyle>", AS_EQUALS},
      {std::string("separate\0", 9), AS_EQUALS},
  };
  for (const auto& expected : cases) {
    EXPECT_EQ(args_style(expected.text), expected.style) << "text \"" << expected.text << "\"";
  }
}

TEST(argsStyle, SaysHowManyArgumentsAnOptionTakes) {
  const URI uri;
  EXPECT_EQ(uri.valuesPerOption(AS_EQUALS), 1U);
  EXPECT_EQ(uri.valuesPerOption(AS_SEPARATE), 2U);
}

// --- Whole vectors -------------------------------------------------------------

TEST(URIargs, BuildsTheVectorsOfTypicalViewers) {
  const argsCase cases[] = {
      {"vnc://host:5900/?shared=1",
       "vncviewer",
       1,
       AS_EQUALS,
       nullptr,
       {"vncviewer", "--autoreconnect=0", "-shared=1", "host:5900"}},
      {"vnc://host:5900/?shared=1",
       "vncviewer",
       1,
       AS_SEPARATE,
       "port",
       {"vncviewer", "--autoreconnect", "0", "-shared", "1", "-port", "5900", "host"}},
      {"ssh://host:2222/", "putty", 1, AS_SEPARATE, "P", {"putty", "-P", "2222", "host"}},
      {"ssh://host:2222/", "putty", 1, AS_EQUALS, "P", {"putty", "-P=2222", "host"}},
      {"vnc://h/QUJD",
       "vncviewer",
       1,
       AS_EQUALS,
       nullptr,
       {"vncviewer", "--autoreconnect=0", "-ticket=414243", "h"}},
      {"vnc://h:5901/",
       "vncviewer",
       1,
       AS_SEPARATE,
       "port",
       {"vncviewer", "--autoreconnect", "0", "-port", "5901", "h"}},
      {"ssh://host/", "putty", 1, AS_EQUALS, nullptr, {"putty", "host"}},
  };
  checkArgs(cases);
}

TEST(URIargs, GivesDefaultOptionsToVNCInAnyCaseOnly) {
  const argsCase cases[] = {
      {"vnc://h/", "x", 1, AS_EQUALS, nullptr, {"x", "--autoreconnect=0", "h"}},
      {"VNC://h/", "x", 1, AS_EQUALS, nullptr, {"x", "--autoreconnect=0", "h"}},
      {"vNc://h/", "x", 1, AS_EQUALS, nullptr, {"x", "--autoreconnect=0", "h"}},
      {"vnc2://h/", "x", 1, AS_EQUALS, nullptr, {"x", "h"}},
      {"vn://h/", "x", 1, AS_EQUALS, nullptr, {"x", "h"}},
      {"ssh://h/", "x", 1, AS_EQUALS, nullptr, {"x", "h"}},
      {"ssh://h/?a=1", "x", 1, AS_EQUALS, nullptr, {"x", "-a=1", "h"}},
  };
  checkArgs(cases);
}

TEST(URIargs, LetsAParameterReplaceTheDefaultOfTheSameName) {
  const argsCase cases[] = {
      // The default's name itself begins with a dash.
      {"vnc://h/?autoreconnect=1",
       "x",
       1,
       AS_EQUALS,
       nullptr,
       {"x", "--autoreconnect=0", "-autoreconnect=1", "h"}},
      {"vnc://h/?-autoreconnect=1", "x", 1, AS_EQUALS, nullptr, {"x", "--autoreconnect=1", "h"}},
      {"vnc://h/?-autoreconnect=1",
       "x",
       1,
       AS_SEPARATE,
       nullptr,
       {"x", "--autoreconnect", "1", "h"}},
      {"vnc://h/?-AutoReconnect=7", "x", 1, AS_EQUALS, nullptr, {"x", "--autoreconnect=7", "h"}},
      {"vnc://h/?-autoreconnect=", "x", 1, AS_EQUALS, nullptr, {"x", "--autoreconnect=", "h"}},
  };
  checkArgs(cases);
}

TEST(URIargs, OrdersOptionsByNameWithoutRegardToCase) {
  const argsCase cases[] = {
      {"vnc://h/?b=1&A=2&\xe9=3&_=4&0=5&ab=6",
       "x",
       1,
       AS_EQUALS,
       nullptr,
       {"x", "-\xe9=3", "--autoreconnect=0", "-0=5", "-_=4", "-A=2", "-ab=6", "-b=1", "h"}},
      {"ssh://h/?Zulu=1&alpha=2&Mike=3",
       "x",
       1,
       AS_SEPARATE,
       nullptr,
       {"x", "-alpha", "2", "-Mike", "3", "-Zulu", "1", "h"}},
  };
  checkArgs(cases);
}

TEST(URIargs, PassesNamesAndValuesAsTheyAre) {
  const argsCase cases[] = {
      {"ssh://h/?a=", "x", 1, AS_EQUALS, nullptr, {"x", "-a=", "h"}},
      {"ssh://h/?a=", "x", 1, AS_SEPARATE, nullptr, {"x", "-a", "", "h"}},
      {"ssh://h/?=v", "x", 1, AS_EQUALS, nullptr, {"x", "-=v", "h"}},
      {"ssh://h/?=v", "x", 1, AS_SEPARATE, nullptr, {"x", "-", "v", "h"}},
      {"ssh://h/?a=b=c", "x", 1, AS_EQUALS, nullptr, {"x", "-a=b=c", "h"}},
      {"ssh://h/?a=%20%22%27%0a%e9", "x", 1, AS_EQUALS, nullptr, {"x", "-a= \"'\n\xe9", "h"}},
      {"ssh://h/?a%41=-b", "x", 1, AS_SEPARATE, nullptr, {"x", "-a%41", "-b", "h"}},
      // An argument ends at its first NUL.
      {"ssh://h/?a=1%002&b=3", "x", 1, AS_EQUALS, nullptr, {"x", "-a=1", "-b=3", "h"}},
      {"ssh://h/?a=1%002&b=3", "x", 1, AS_SEPARATE, nullptr, {"x", "-a", "1", "-b", "3", "h"}},
      {"ssh://h/", "", 1, AS_EQUALS, nullptr, {"", "h"}},
      {"ssh://h/", "/usr/bin/a b", 1, AS_EQUALS, nullptr, {"/usr/bin/a b", "h"}},
  };
  checkArgs(cases);
}

TEST(URIargs, PassesTheTicketAsAnOption) {
  const argsCase cases[] = {
      {"ssh://h/QUJD", "x", 1, AS_EQUALS, nullptr, {"x", "-ticket=414243", "h"}},
      {"ssh://h/QUJD", "x", 1, AS_SEPARATE, nullptr, {"x", "-ticket", "414243", "h"}},
      {"ssh://h/9,//8=", "x", 1, AS_EQUALS, nullptr, {"x", "-ticket=ffff", "h"}},
      {"vnc://h/QQ==?z=1",
       "x",
       1,
       AS_SEPARATE,
       nullptr,
       {"x", "--autoreconnect", "0", "-ticket", "41", "h"}},
  };
  checkArgs(cases);
}

TEST(URIargs, PrefersTheTicketToAParameterOfThatName) {
  URI uri("ssh://h/?Ticket=x&u=1&a=2");
  uri.setTicket(ByteArray(3, "ABC"));
  EXPECT_EQ(simpleArgs(uri), (textList{"x", "-a=2", "-Ticket=414243", "-u=1", "h"}));
  uri.setTicket(ByteArray());
  EXPECT_EQ(simpleArgs(uri), (textList{"x", "-a=2", "-Ticket=x", "-u=1", "h"}));
}

// --- Addresses and ports -------------------------------------------------------

TEST(URIargs, LimitsTheAddresses) {
  const argsCase cases[] = {
      {"ssh://a+b:1,c/", "x", 0, AS_EQUALS, nullptr, {"x", "a", "b:1", "c"}},
      {"ssh://a+b:1,c/", "x", 1, AS_EQUALS, nullptr, {"x", "a"}},
      {"ssh://a+b:1,c/", "x", 2, AS_EQUALS, nullptr, {"x", "a", "b:1"}},
      {"ssh://a+b:1,c/", "x", 3, AS_EQUALS, nullptr, {"x", "a", "b:1", "c"}},
      {"ssh://a+b:1,c/", "x", 4, AS_EQUALS, nullptr, {"x", "a", "b:1", "c"}},
      {"ssh://a+b:1,c/", "x", 4294967295U, AS_SEPARATE, nullptr, {"x", "a", "b:1", "c"}},
      {"ssh://a+b:1,c/?o=1", "x", 1, AS_SEPARATE, nullptr, {"x", "-o", "1", "a"}},
  };
  checkArgs(cases);
}

TEST(URIargs, PassesThePortOfTheFirstAddressAsAnOption) {
  const argsCase cases[] = {
      {"ssh://h:22/", "x", 0, AS_EQUALS, "p", {"x", "-p=22", "h"}},
      {"ssh://h:22/", "x", 0, AS_SEPARATE, "p", {"x", "-p", "22", "h"}},
      {"ssh://h/", "x", 0, AS_EQUALS, "p", {"x", "h"}},
      {"ssh://h/", "x", 0, AS_SEPARATE, "p", {"x", "h"}},
      // Every address loses its port, whether or not the first one has a port.
      {"ssh://a:1+b:2,c/", "x", 0, AS_EQUALS, "p", {"x", "-p=1", "a", "b", "c"}},
      {"ssh://a+b:2,c:3/", "x", 0, AS_SEPARATE, "p", {"x", "a", "b", "c"}},
      {"ssh://a+b:2/", "x", 1, AS_SEPARATE, "p", {"x", "a"}},
      {"ssh://a:1+b:2/", "x", 1, AS_SEPARATE, "p", {"x", "-p", "1", "a"}},
      // The port is all that follows the last colon.
      {"ssh://h:/", "x", 0, AS_EQUALS, "p", {"x", "-p=", "h"}},
      {"ssh://h:/", "x", 0, AS_SEPARATE, "p", {"x", "-p", "", "h"}},
      {"ssh://h:22:33/", "x", 0, AS_EQUALS, "p", {"x", "-p=33", "h:22"}},
      {"ssh://h:abc/", "x", 0, AS_EQUALS, "p", {"x", "-p=abc", "h"}},
      {"ssh://[fe80::1]:22/", "x", 0, AS_EQUALS, "p", {"x", "-p=22", "[fe80::1]"}},
      {"ssh://[::1]/", "x", 0, AS_EQUALS, "p", {"x", "-p=1]", "[:"}},
      // The option's name is used as it is.
      {"ssh://h:22/", "x", 0, AS_EQUALS, "", {"x", "-=22", "h"}},
      {"ssh://h:22/", "x", 0, AS_SEPARATE, "", {"x", "-", "22", "h"}},
      {"ssh://h:22/", "x", 0, AS_EQUALS, "-port", {"x", "--port=22", "h"}},
      // It comes after the other options and replaces none of them.
      {"ssh://h:22/?p=1&z=2", "x", 0, AS_EQUALS, "p", {"x", "-p=1", "-z=2", "-p=22", "h"}},
  };
  checkArgs(cases);
}

TEST(URIargs, PassesAddedAddressesInOrder) {
  URI uri("ssh://a/");
  uri.add("b:1");
  uri.add(textList{"c:1", "d"}, 7);
  EXPECT_EQ(simpleArgs(uri), (textList{"x", "a", "b:1", "c:7", "d:7"}));
}

TEST(URIargs, PassesNoPortWithoutAddresses) {
  for (const argsStyle style : {AS_EQUALS, AS_SEPARATE}) {
    for (const unsigned int maxHosts : {0U, 1U}) {
      SCOPED_TRACE(testing::Message() << text(style) << " at most " << maxHosts);
      URI uri;
      EXPECT_EQ(stringsOf(uri.args("x", maxHosts, style, "port")), textList{"x"});
      URI without;
      EXPECT_EQ(stringsOf(without.args("x", maxHosts, style, nullptr)), textList{"x"});
    }
  }
  URI uri;
  uri.addParam("a", "1");
  uri.setTicket(ByteArray(1, "A"));
  EXPECT_EQ(stringsOf(uri.args("x", 1, AS_SEPARATE, "port")),
            (textList{"x", "-a", "1", "-ticket", "41"}));
}

TEST(URIargs, GivesACopyOfAURINeitherDefaultsNorParameters) {
  const URI original("vnc://h:1/?a=1");
  URI copy(original);
  EXPECT_EQ(stringsOf(copy.args("x", 1, AS_EQUALS, "port")), (textList{"x", "-port=1", "h"}));
}

// --- Configured options --------------------------------------------------------

TEST(URIargs, TakesTheDefaultOptionsFromTheConfiguration) {
  const struct {
    textList options;
    textList expected;
  } cases[] = {
      {{"Zlib=9", "-a=b=c"}, {"x", "--a=b=c", "-p=1", "-Zlib=9", "h"}},
      {{"P=2"}, {"x", "-P=1", "h"}},
      // Options without "=" are numbered.
      {{"first", "k=v", "second"}, {"x", "-0=first", "-1=second", "-k=v", "-p=1", "h"}},
      {{""}, {"x", "-0=", "-p=1", "h"}},
      {{"a=1", "A=2"}, {"x", "-a=2", "-p=1", "h"}},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::PrintToString(expected.options));
    const configOverride options("VNC_OPTIONS", expected.options);
    ASSERT_EQ(VNC_OPTIONS.values(), expected.options);
    URI uri("vnc://h/?p=1");
    EXPECT_EQ(simpleArgs(uri), expected.expected);
    URI other("ssh://h/?p=1");
    EXPECT_EQ(simpleArgs(other), (textList{"x", "-p=1", "h"}));
  }
  EXPECT_EQ(VNC_OPTIONS.values(), textList{"-autoreconnect=0"});
}

TEST(URIargs, PrefersTheTicketToAConfiguredOption) {
  const configOverride options("VNC_OPTIONS", {"TICKET=none"});
  URI uri("vnc://h/QUJD");
  EXPECT_EQ(simpleArgs(uri), (textList{"x", "-TICKET=414243", "h"}));
}

TEST(URIargs, DoesNotTakeTheConfiguredSchemeForAMissingOne) {
  const URI original("vnc://h/");
  URI copy(original);
  EXPECT_EQ(copy.format(), "VNC://h/");
  EXPECT_EQ(simpleArgs(copy), (textList{"x", "h"}));
}

// --- One vector for the life of a URI --------------------------------------------

TEST(URIargs, KeepsTheVectorAndReplacesTheCommandOnly) {
  URI uri("vnc://a:1+b/?p=1");
  char** first = uri.args("one", 1, AS_EQUALS, nullptr);
  ASSERT_EQ(stringsOf(first), (textList{"one", "--autoreconnect=0", "-p=1", "a:1"}));
  const std::vector<char*> before(first + 1, first + 4);

  char** second = uri.args("another command", 0, AS_SEPARATE, "port");
  EXPECT_EQ(second, first);
  EXPECT_EQ(stringsOf(second), (textList{"another command", "--autoreconnect=0", "-p=1", "a:1"}));
  EXPECT_EQ(std::vector<char*>(second + 1, second + 4), before) << "the strings are the same ones";

  uri.args("", 0, AS_SEPARATE, nullptr);
  EXPECT_EQ(stringsOf(first), (textList{"", "--autoreconnect=0", "-p=1", "a:1"}));
}

TEST(URIargs, DoesNotLookAtTheStyleOfALaterCall) {
  URI uri("ssh://a:1/?p=1");
  uri.args("one", 1, AS_SEPARATE, "port");
  EXPECT_EQ(stringsOf(uri.args("two", 1, static_cast<argsStyle>(2), nullptr)),
            (textList{"two", "-p", "1", "-port", "1", "a"}));
}

TEST(URIargs, TakesItsOwnFirstElementAsTheCommand) {
  URI uri("ssh://a/");
  char** vector = uri.args("a command that is longer than a short string", 1, AS_EQUALS, nullptr);
  uri.args(vector[0], 1, AS_EQUALS, nullptr);
  EXPECT_EQ(stringsOf(vector), (textList{"a command that is longer than a short string", "a"}));
  uri.args(vector[0] + 2, 1, AS_EQUALS, nullptr);
  EXPECT_EQ(stringsOf(vector), (textList{"command that is longer than a short string", "a"}));
}

TEST(URIargs, CopiesTheCommand) {
  std::string command = "viewer";
  URI uri("ssh://a/");
  char** vector = uri.args(command.c_str(), 1, AS_EQUALS, nullptr);
  EXPECT_NE(static_cast<const void*>(vector[0]), static_cast<const void*>(command.c_str()));
  command[0] = 'V';
  EXPECT_STREQ(vector[0], "viewer");
}

TEST(URIargs, KeepsTheVectorWhenTheURIIsParsedAnewOrChanged) {
  URI uri("ssh://a/?p=1");
  const textList kept{"x", "-p=1", "a"};
  ASSERT_EQ(simpleArgs(uri), kept);
  ASSERT_TRUE(uri.set("vnc://b/?q=2"));
  EXPECT_EQ(simpleArgs(uri), kept);
  uri.add(textList{"c"}, 5);
  EXPECT_EQ(simpleArgs(uri), kept);
  uri.clear();
  EXPECT_EQ(simpleArgs(uri), (textList{"x", "--autoreconnect=0", "-p=1", "-q=2", "b", "c:5"}));
}

TEST(URIargs, IsBuiltAnewAfterClear) {
  URI uri("ssh://a:1+b/");
  EXPECT_EQ(stringsOf(uri.args("x", 0, AS_EQUALS, nullptr)), (textList{"x", "a:1", "b"}));
  uri.clear();
  EXPECT_EQ(stringsOf(uri.args("y", 1, AS_SEPARATE, "port")), (textList{"y", "-port", "1", "a"}));
}

TEST(URIargs, IsBuiltAnewAfterAssignmentOfAText) {
  URI uri("ssh://a/?p=1");
  EXPECT_EQ(simpleArgs(uri), (textList{"x", "-p=1", "a"}));
  uri = "vnc://b/";
  EXPECT_EQ(simpleArgs(uri), (textList{"x", "--autoreconnect=0", "-p=1", "b"}));
  uri = "nothing";
  EXPECT_EQ(simpleArgs(uri), (textList{"x", "--autoreconnect=0", "-p=1"}));
}

TEST(URIargs, IsNotSharedByURIs) {
  URI one("ssh://a/");
  char** first = one.args("one", 0, AS_EQUALS, nullptr);
  {
    URI two(one);
    EXPECT_NE(two.args("two", 0, AS_EQUALS, nullptr), first);
  }
  EXPECT_EQ(stringsOf(first), (textList{"one", "a"}));
}

// --- Size ----------------------------------------------------------------------

TEST(URIargs, TakesThousandsOfOptionsAndAddresses) {
  for (const argsStyle style : {AS_EQUALS, AS_SEPARATE}) {
    SCOPED_TRACE(text(style));
    URI uri("ssh://h0:1/");
    for (int i = 0; i < 10000; i++) {
      uri.addParam("option" + std::to_string(10000 + i), std::to_string(i));
    }
    uri.add(textList(9999, "h"), 7);
    const textList result = stringsOf(uri.args("x", 0, style, "port"));
    if (style == AS_EQUALS) {
      ASSERT_EQ(result.size(), 20002U);
      EXPECT_EQ(result[1], "-option10000=0");
      EXPECT_EQ(result[10000], "-option19999=9999");
      EXPECT_EQ(result[10001], "-port=1");
      EXPECT_EQ(result[10002], "h0");
    } else {
      ASSERT_EQ(result.size(), 30003U);
      EXPECT_EQ(result[1], "-option10000");
      EXPECT_EQ(result[20000], "9999");
      EXPECT_EQ(result[20001], "-port");
      EXPECT_EQ(result[20003], "h0");
    }
    EXPECT_EQ(result.back(), "h");
  }
}

TEST(URIargs, TakesAnOptionOfAMegabyte) {
  const std::string big(1000000, 'v');
  URI uri("ssh://h/?big=" + big);
  ASSERT_TRUE(uri.okay());
  EXPECT_EQ(simpleArgs(uri), (textList{"x", "-big=" + big, "h"}));
}

// --- Faults of the program -----------------------------------------------------

const char* const invalidStyle =
    "severity=Fatal domain=assert code=assert failure expression=<false> "
    "at <\\.\\./utilities/uri @ [0-9]+>";

TEST(URIvaluesPerOptionDeathTest, AbortsForAnInvalidStyle) {
  ownTheSemaphores();
  const URI uri;
  for (const int value : {2, -1}) {
    SCOPED_TRACE(testing::Message() << "style " << value);
    EXPECT_EXIT(
        {
          leaveNoCoreFile();
          const reportTeller witness(STDERR_FILENO, inWords);
          uri.valuesPerOption(static_cast<argsStyle>(value));
        },
        testing::KilledBySignal(SIGABRT), invalidStyle);
  }
}

TEST(URIargsDeathTest, AbortsForAnInvalidStyleEvenWithoutOptions) {
  ownTheSemaphores();
  for (const char* uriText : {"ssh://h/", "vnc://h/?a=1"}) {
    SCOPED_TRACE(uriText);
    URI uri(uriText);
    ASSERT_TRUE(uri.okay());
    EXPECT_EXIT(
        {
          leaveNoCoreFile();
          const reportTeller witness(STDERR_FILENO, inWords);
          uri.args("x", 1, static_cast<argsStyle>(2), nullptr);
        },
        testing::KilledBySignal(SIGABRT), invalidStyle);
  }
}

TEST(URIargsDeathTest, AbortsWithoutAWordWhereNoOneShowsReports) {
  ownTheSemaphores();
  URI uri("ssh://h/");
  EXPECT_EXIT(
      {
        leaveNoCoreFile();
        uri.args("x", 1, static_cast<argsStyle>(7), "port");
      },
      testing::KilledBySignal(SIGABRT), "^$");
}

}  // namespace

}  // namespace args_test
