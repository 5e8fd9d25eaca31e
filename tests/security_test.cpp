// SPDX-License-Identifier: MIT
// What a stranger's URI can do, and what it cannot.  Each sentence of SECURITY.md is tried
// on the real launcher with a viewer that records what it gets.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "launcher_runner.h"

namespace security_test {

namespace {

using launcher::Outcome;
using launcher::Recording;
using launcher::Strings;
using launcher::Workshop;

// The options of a registration.  Each has its value after an "=", and the URI is the
// last argument.
struct Entry {
  Strings options;
  std::size_t perOption;  // arguments that one option of the viewer takes
};

const std::vector<Entry> entries{
    {{}, 1},
    {{"-VNC_OPTIONS=-ReconnectOnError=0"}, 1},
    {{"-style=separate", "-portArg=P"}, 2},
    {{"-program=xyz", "-log="}, 1},
};

// Attacks that somebody would try.  Each begins with the scheme of its registration.
const Strings hostile{
    "vnc://h/?program=xyz&log=pwned&style=separate&portArg=p&PROGRAMS=VNC=xyz&refcount=1",
    "vnc://h/?-program=xyz&-log=pwned&-PROGRAMS=VNC=xyz&-refcount=1",
    "vnc://h/%20-program=xyz",
    "vnc://h/ -program=xyz -log=pwned -refcount=1",
    "vnc://h/\n-log=pwned",
    "vnc://h/%00-log=pwned",
    "vnc://h/?a=1%0A-log=pwned",
    "vnc://h/?a=1%00%20-program=xyz",
    "vnc://-program=xyz[::1]/",
    "vnc://-log=pwned[::1]/?-log=pwned",
    "ssh://-oProxyCommand=touch%20pwned;%23[::1]/",
    "ssh://$(touch%20pwned)[::1]/?a=$(touch%20pwned)",
    "vnc://`touch%20pwned`[::1]/?a=`touch%20pwned`",
    "vnc://h;touch%20pwned/?a=;touch%20pwned;",
    "vnc://h|touch%20pwned/?a=|touch%20pwned",
    "vnc://h%0Atouch%20pwned/?a=%0Atouch%20pwned%0A",
    "vnc://h>pwned/?a=>pwned&>pwned=<pwned",
    "vnc://h/?'=%27;touch%20pwned;'&%22=%22;touch%20pwned;%22",
    "vnc://h/?a=%25%32%30-program=xyz",
    "vnc://h/?a=%2526-program=xyz",
    "vnc://../../bin/xyz/?../xyz=../xyz",
    "vnc://bin%2Fxyz/",
    "ssh://h/?=bin/xyz&%2Fbin%2Fsh=-c",
    "vnc:-program=xyz",
    "vnc:",
    "vnc://",
    "ssh://a,b+c,-log=pwned[::1]/",
    "ssh://a/+b/",
    "vnc://a/,-log=pwned[::1]/",
    "ssh://h/7,QUJD?program=xyz",
    "ssh://h/?PATH=.&LD_PRELOAD=pwned&HOME=/",
};

// Puts together URIs from texts that might confuse the launcher, a shell or the viewer.
class Stranger {
 public:
  explicit Stranger(std::uint32_t seed) : m_numbers(seed) {}

  std::string uri() {
    std::string result = below(2) == 0 ? "vnc:" : "ssh:";
    result += below(20) == 0 ? "" : "//";
    result += below(3) != 0 ? "h" : text(2) + "[::1]:5";
    if (below(4) == 0) {
      result += (below(2) == 0 ? ",h" : "+[::1]") + text(2);
    }
    result += "/";
    result += below(10) == 0 ? text(1) : "";
    char separator = '?';
    for (std::size_t more = below(6); more > 0; more--) {
      result += separator + text(2) + "=" + text(3);
      separator = '&';
    }
    return result;
  }

 private:
  std::size_t below(std::size_t limit) { return m_numbers() % limit; }

  std::string text(std::size_t pieces) {
    static const Strings fragments{"h",
                                   "x",
                                   "1",
                                   ":5900",
                                   "[::1]",
                                   "-",
                                   "--",
                                   "=",
                                   "&",
                                   "?",
                                   "/",
                                   "+",
                                   ",",
                                   "%",
                                   "'",
                                   "\"",
                                   "\\",
                                   ";",
                                   "|",
                                   ">pwned",
                                   "<",
                                   "\n",
                                   "\r",
                                   "\t",
                                   " ",
                                   "~",
                                   "*",
                                   "#",
                                   "!",
                                   "$(touch pwned)",
                                   "`touch pwned`",
                                   ";touch pwned;",
                                   "-program=xyz",
                                   "-log=pwned",
                                   "-PROGRAMS=VNC=xyz",
                                   "-refcount=1",
                                   "-style",
                                   "%00",
                                   "%2500",
                                   "%252500",
                                   "%26",
                                   "%3D",
                                   "%2526",
                                   "%25",
                                   "%0A",
                                   "%2F",
                                   "%C3%A9",
                                   "\xff",
                                   "\x01",
                                   "\x7f",
                                   "../",
                                   "bin/xyz",
                                   "QUJD",
                                   "QQ==",
                                   "7,"};
    std::string result;
    for (std::size_t count = below(pieces + 1); count > 0; count--) {
      if (below(4) == 0) {
        result += static_cast<char>(1 + below(255));
      } else {
        result += fragments[below(fragments.size())];
      }
    }
    return result;
  }

  std::mt19937 m_numbers;
};

struct Attempt {
  std::string uri;
  const Entry& entry;
  Workshop& shop;
  Outcome outcome;
};

#ifdef SLOW
constexpr int RANDOM_URIS = 5;  // each launch takes long
#else
constexpr int RANDOM_URIS = 40;
#endif

// Hands every hostile URI, and random ones, to every entry, and looks at the outcome.
void forAll(std::uint32_t seed, const std::function<void(const Attempt&)>& look) {
  Strings uris = hostile;
  Stranger stranger(seed);
  for (int i = 0; i < RANDOM_URIS; i++) {
    uris.push_back(stranger.uri());
  }
  Workshop shop;
  std::size_t launched = 0;
  for (const std::string& uri : uris) {
    for (const Entry& entry : entries) {
      SCOPED_TRACE(testing::PrintToString(entry.options) + " " + testing::PrintToString(uri));
      Strings arguments = entry.options;
      arguments.push_back(uri);
      const Attempt attempt{uri, entry, shop, shop.run({.arguments = arguments})};
      launched += attempt.outcome.viewer ? 1U : 0U;
      look(attempt);
      if (testing::Test::HasFatalFailure()) {
        return;
      }
    }
  }
  // Most of these URIs must reach a viewer.  Otherwise the test shows nothing.
  EXPECT_GT(launched, 2 * uris.size());
}

Strings viewerOf(const Strings& arguments) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = arguments});
  return outcome.viewer ? outcome.viewer->arguments : Strings{"no viewer"};
}

// --- What a URI can do ---------------------------------------------------------

TEST(AURI, CanHandAnyOptionToTheViewer) {
  EXPECT_EQ((Strings{"putty", "-proxycmd", "any command", "h"}),
            viewerOf({"-style=separate", "-portArg=P", "ssh://h/?proxycmd=any%20command"}));
  EXPECT_EQ(
      (Strings{"vncviewer", "--ReconnectOnError=0", "-via=-oProxyCommand=any command", "h"}),
      viewerOf({"-VNC_OPTIONS=-ReconnectOnError=0", "vnc://h/?via=-oProxyCommand=any%20command"}));
  EXPECT_EQ((Strings{"vncviewer", "-=", "---x=1", "--autoreconnect=9", "h"}),
            viewerOf({"vnc://h/?--x=1&-autoreconnect=9&="}));
}

TEST(AURI, CanHandAnyByteButNulToTheViewerInAValue) {
  std::string encoded;
  std::string expected;
  for (int byte = 1; byte < 256; byte++) {
    const char* const digits = "0123456789abcdef";
    encoded += std::string("%25") + digits[byte / 16] + digits[byte % 16];
    expected += static_cast<char>(byte);
  }
  EXPECT_EQ((Strings{"putty", "-a=" + expected, "h"}), viewerOf({"ssh://h/?a=" + encoded}));
}

TEST(AURI, CanHandAnAddressToTheViewerThatLooksLikeAnOption) {
  EXPECT_EQ((Strings{"putty", "-x[::1]"}), viewerOf({"ssh://-x[::1]/"}));
  EXPECT_EQ((Strings{"putty", "-oProxyCommand=any command;#[::1]"}),
            viewerOf({"ssh://-oProxyCommand=any%20command;%23[::1]/"}));
}

TEST(AURI, CanChooseAmongTheRegisteredPrograms) {
  EXPECT_EQ("putty", viewerOf({"-VNC_OPTIONS=-a=1", "ssh://h/"}).at(0));
}

// --- What a URI cannot do ------------------------------------------------------

TEST(AURI, CannotNameTheProgram) {
  forAll(1, [](const Attempt& attempt) {
    if (attempt.outcome.viewer) {
      const std::string program =
          attempt.entry.options.empty() || attempt.entry.options[0] != "-program=xyz"
              ? attempt.uri.starts_with("vnc:") ? "vncviewer" : "putty"
              : "xyz";
      EXPECT_EQ("bin/" + program, attempt.outcome.viewer->path);
      EXPECT_EQ(program, attempt.outcome.viewer->arguments.at(0));
    }
  });
}

// A shell would have run "touch pwned", or would have written to standard error.
TEST(AURI, CannotReachAShellNorWriteAFile) {
  forAll(2, [](const Attempt& attempt) {
    EXPECT_EQ(Strings(), attempt.shop.files());
    EXPECT_EQ("", attempt.outcome.out);
    EXPECT_EQ("", attempt.outcome.err);
  });
}

TEST(AURI, CannotAddAnOptionToTheLauncher) {
  forAll(3, [](const Attempt& attempt) {
    EXPECT_EQ(Strings(), attempt.shop.files()) << "the option log";
    EXPECT_EQ("", attempt.outcome.err) << "the trace flag refcount";
    if (attempt.outcome.viewer) {
      const Strings& arguments = attempt.outcome.viewer->arguments;
      const bool vnc = attempt.uri.starts_with("vnc:");
      const bool reconnects = attempt.entry.options.empty() ||
                              attempt.entry.options[0] != "-VNC_OPTIONS=-ReconnectOnError=0";
      const std::string name = reconnects ? "--autoreconnect" : "--ReconnectOnError";
      EXPECT_EQ(vnc ? 1 : 0, std::count_if(arguments.begin(), arguments.end(),
                                           [&](const std::string& argument) {
                                             return argument == name || argument == name + "=0";
                                           }))
          << "the item VNC_OPTIONS, or the option style";
    }
  });
}

TEST(AURI, CannotPassMoreThanOneArgumentForAParameterOrTwoInSeparateStyle) {
  forAll(4, [](const Attempt& attempt) {
    if (attempt.outcome.viewer) {
      // Each parameter but the first follows a "&", which may be written "%26".
      std::size_t parameters = 1;
      for (std::size_t at = 0; at < attempt.uri.size(); at++) {
        parameters += attempt.uri[at] == '&' || attempt.uri.compare(at, 3, "%26") == 0 ? 1U : 0U;
      }
      // The program, the item's option, the port option, and the address.
      const std::size_t most = 1 + attempt.entry.perOption * (parameters + 2) + 1;
      EXPECT_LE(attempt.outcome.viewer->arguments.size(), most);
    }
  });
}

TEST(AURI, CannotPassMoreThanOneAddressAndThatIsTheLastArgument) {
  forAll(5, [](const Attempt& attempt) {
    if (attempt.outcome.viewer) {
      const Strings& arguments = attempt.outcome.viewer->arguments;
      for (std::size_t at = 1; at + 1 < arguments.size(); at += attempt.entry.perOption) {
        EXPECT_TRUE(arguments[at].starts_with("-")) << arguments[at];
      }
      EXPECT_EQ(0U, (arguments.size() - 2) % attempt.entry.perOption);
      EXPECT_EQ(std::string::npos, arguments.back().find_first_of("/,+")) << arguments.back();
    }
  });
}

TEST(AURI, CannotChangeTheEnvironmentTheFolderOrTheDescriptorsOfTheViewer) {
  Workshop shop;
  const Outcome harmless = shop.run({.arguments = {"vnc://h/"}});
  ASSERT_TRUE(harmless.viewer);
  forAll(6, [&](const Attempt& attempt) {
    if (attempt.outcome.viewer) {
      const Recording& viewer = *attempt.outcome.viewer;
      EXPECT_EQ(attempt.shop.environment(), viewer.environment);
      EXPECT_EQ(std::filesystem::canonical(attempt.shop.work()).string(), viewer.folder);
      EXPECT_EQ(harmless.viewer->descriptors.size(), viewer.descriptors.size());
    }
  });
}

TEST(AURI, CannotMakeTheLauncherFailOtherThanByLaunchingNothing) {
  forAll(7, [](const Attempt& attempt) {
    EXPECT_EQ(attempt.outcome.viewer ? 42 : 0, attempt.outcome.status);
    EXPECT_EQ(attempt.outcome.pid,
              attempt.outcome.viewer ? attempt.outcome.viewer->pid : attempt.outcome.pid);
  });
}

// The launcher decodes the URI before it looks for the scheme.
TEST(AURI, CannotHaveAnotherSchemeThanTheOneBeforeItsColon) {
  for (const std::string uri : {"vnc:ssh://h/", "vnc:%73sh://h/", "vnc:%2F%2Fh/%00ssh://h/",
                                "vnc:\nssh://h/", "vnc:%08%08%08%08ssh://h/"}) {
    const Strings arguments = viewerOf({uri});
    EXPECT_NE("putty", arguments.at(0)) << uri;
  }
  EXPECT_EQ((Strings{"vncviewer", "--autoreconnect=0", "h"}), viewerOf({"vnc:%2F%2Fh/"}));
}

TEST(AText, ThatBeginsWithADashLaunchesNothing) {
  const std::map<std::string, int> texts{
      {"-program=xyz", 0},
      {"-log=pwned", 0},
      {"--", 255},
      {"-", 255},
      {"-vnc://h/", 255},
      {"-refcount=1", 0},
      {"-=vnc://h/", 0},
      {"-a vnc://h/", 255},
      {"-program=xyz vnc://h/", 0},
      {"-x=-log=vnc://h/", 0},
      {"-PROGRAMS=VNC=xyz", 0},
  };
  for (const auto& [text, status] : texts) {
    for (const Entry& entry : entries) {
      SCOPED_TRACE(testing::PrintToString(entry.options) + " " + text);
      Workshop shop;
      Strings arguments = entry.options;
      arguments.push_back(text);
      const Outcome outcome = shop.run({.arguments = arguments});
      EXPECT_FALSE(outcome.viewer.has_value());
      EXPECT_EQ(Strings(), shop.files());
      EXPECT_EQ(status, outcome.status);
      EXPECT_EQ(
          status == 0 ? "Usage: tools/hoplaunch <uri> \n" : "Keyword " + text + " has no value\n",
          outcome.err);
    }
  }
}

// This is why every option of an entry has its value after an "=".
TEST(ARegistration, ThatEndsInABareKeywordLosesItsURI) {
  for (const std::string keyword : {"--", "-log", "-style"}) {
    EXPECT_EQ(Strings{"no viewer"}, viewerOf({keyword, "vnc://h/"})) << keyword;
  }
}

// The wrapper is the first script in the document, indented by three.
TEST(TheWrapperOfTheDocument, HandsNothingButAnAddressToTheViewer) {
  const std::string document = readFile(SECURITY_DOCUMENT);
  std::string script;
  bool inside = false;
  for (const std::string& line : split(document, '\n')) {
    if (line.starts_with("   ```")) {
      inside = line == "   ```sh";
    } else if (inside) {
      script += line.substr(3) + "\n";
    }
  }
  ASSERT_TRUE(script.ends_with("\nexec vncviewer \"$address\"\n")) << script;
  Workshop shop;
  const auto wrapper = shop.work() / "bin" / "wrapper";
  writeFile(wrapper, script);
  std::filesystem::permissions(wrapper, std::filesystem::perms::owner_all);

  Strings uris = hostile;
  Stranger stranger(8);
  for (int i = 0; i < 5 * RANDOM_URIS; i++) {
    uris.push_back(stranger.uri());
  }
  std::size_t refused = 0;
  for (const std::string& uri : uris) {
    SCOPED_TRACE(testing::PrintToString(uri));
    const Outcome outcome = shop.run({.arguments = {"-program=wrapper", uri}});
    EXPECT_EQ(Strings(), shop.files());
    EXPECT_EQ("", outcome.out);
    EXPECT_EQ(outcome.status == 1 ? "vnc-address-only: the link has no plain address\n" : "",
              outcome.err);
    refused += outcome.status == 1 ? 1U : 0U;
    if (outcome.viewer) {
      const Strings& arguments = outcome.viewer->arguments;
      ASSERT_EQ(2U, arguments.size());
      EXPECT_FALSE(arguments[1].starts_with("-")) << arguments[1];
      EXPECT_EQ(std::string::npos, arguments[1].find_first_not_of(
                                       "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                       "0123456789.:_-[]"))
          << arguments[1];
    }
  }
  EXPECT_GT(refused, 10U);
  for (const std::string address : {"h:0", "h:65536", "h:022", "h:1:2", "h:", "[]", "[:]", "[::1]x",
                                    "[::1]:", "[::1]:[::1]", "::1", "x[::1]", "[h]", "", "-h"}) {
    const Outcome outcome =
        shop.run({.arguments = {address}, .command = "wrapper", .binary = wrapper.c_str()});
    EXPECT_FALSE(outcome.viewer.has_value()) << address;
    EXPECT_EQ(1, outcome.status) << address;
  }
  for (const std::string address :
       {"h", "h:5900", "h:65535", "[::1]", "[fe80::1]:1", "a-b.example", "1.2.3.4"}) {
    const Outcome outcome =
        shop.run({.arguments = {"-program=wrapper", "vnc://" + address + ",b/?via=x&-y=z"}});
    ASSERT_TRUE(outcome.viewer) << address;
    EXPECT_EQ((Strings{"vncviewer", address}), outcome.viewer->arguments);
  }
}

// 131072 bytes, its end included, is the most that one argument may have.
TEST(AURI, OfAnySizeThatTheKernelAllowsIsEitherPassedOnOrRefused) {
  const std::size_t most = 131071;
  const auto filled = [](std::string front, const std::string& piece, const std::string& end) {
    while (front.size() + piece.size() + end.size() <= most) {
      front += piece;
    }
    return front + end;
  };
  std::string parameters = "ssh://h/?0=";
  std::size_t count = 1;
  for (; parameters.size() + 7 <= most; count++) {
    parameters += "&" + std::to_string(count) + "=";
  }
  Workshop shop;
  Outcome outcome = shop.run({.arguments = {"-style=separate", parameters}});
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ(1 + 2 * count + 1, outcome.viewer->arguments.size());

  const std::string address = filled("ssh://", "a-b.", "c/");
  outcome = shop.run({.arguments = {address}});
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ(address, "ssh://" + outcome.viewer->arguments.at(1) + "/");

  outcome = shop.run({.arguments = {filled("ssh://", "a,", "a/")}});
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"putty", "a"}), outcome.viewer->arguments);

  outcome = shop.run({.arguments = {"-log=log", filled("ssh://h/", "QUJD", "")}});
  EXPECT_FALSE(outcome.viewer) << "a ticket grows by a half";
  EXPECT_EQ(0, outcome.status);
  EXPECT_TRUE(shop.log().ends_with(" errno = 7 Argument list too long\n"));
}

}  // namespace

}  // namespace security_test
