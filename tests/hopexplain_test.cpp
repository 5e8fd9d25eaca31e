// SPDX-License-Identifier: MIT
// hopexplain as its users see it, side by side with the launcher: it says about a
// command line what the launcher does with it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>

#include "explain_runner.h"
#include "launcher_cases.h"
#include "launcher_runner.h"
#include "soft_limit.h"

namespace hopexplain_test {

namespace {

using launcher::Case;
using launcher::CasePlace;
using launcher::explain;
using launcher::explainJSON;
using launcher::labelled;
using launcher::Outcome;
using launcher::readByBash;
using launcher::Strings;
using launcher::Workshop;

class Explained : public testing::TestWithParam<CasePlace> {};

TEST_P(Explained, TellsWhatTheLauncherDoes) {
  const Case expected = readCase(GetParam());
  ASSERT_EQ("", expected.broken);
  SCOPED_TRACE("hopexplain " + testing::PrintToString(expected.run));
  Workshop shop;
  const Outcome outcome = explain(shop, {.arguments = expected.run, .command = expected.command});

  EXPECT_EQ(expected.err, outcome.err);
  EXPECT_EQ(expected.viewer ? 0 : expected.status == 255 ? 255 : 1, outcome.status);
  EXPECT_FALSE(outcome.viewer.has_value()) << "the viewer was started";
  EXPECT_EQ(Strings(), shop.files()) << "a file was written";
  EXPECT_EQ(expected.err.empty(), !outcome.out.empty()) << outcome.out;
  if (!expected.err.empty()) {
    return;
  }
  EXPECT_EQ(expected.viewer.has_value(), outcome.out.ends_with("\nlaunch      yes\n"))
      << outcome.out;
  const Json json = explainJSON(shop, {.arguments = expected.run});
  EXPECT_EQ(expected.viewer ? "true" : "false", json["launches"].text);
  EXPECT_EQ(expected.viewer ? "null" : labelled(outcome.out, "launch"),
            (expected.viewer ? "" : "no: ") + json["obstacle"].text);
  if (!expected.viewer) {
    EXPECT_EQ("", labelled(outcome.out, "arguments"));
    EXPECT_EQ("null", json["arguments"].text);
    return;
  }
  EXPECT_EQ(*expected.viewer, readByBash(shop, labelled(outcome.out, "arguments")));
  EXPECT_EQ(*expected.viewer, json["arguments"].texts());
  EXPECT_EQ(Strings{expected.program}, readByBash(shop, labelled(outcome.out, "file")));
  EXPECT_EQ(expected.program, json["file"].text);
  if (!expected.log.empty()) {
    EXPECT_EQ(expected.logfile, json["log"].text);
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, Explained, testing::ValuesIn(launcher::allCases()),
                         [](const auto& one) { return one.param.found->name; });

TEST(Hopexplain, PrintsTheUsageWithStatusOneWithoutAURI) {
  Workshop shop;
  for (const Strings& arguments : {Strings{}, Strings{"-log=log"}, Strings{"-format=json"}}) {
    const Outcome outcome = explain(shop, {.arguments = arguments, .command = "tools/hopexplain"});
    EXPECT_EQ("Usage: tools/hopexplain <uri> \n", outcome.err);
    EXPECT_EQ("", outcome.out);
    EXPECT_EQ(1, outcome.status);
  }
  EXPECT_EQ(Strings(), shop.files());
}

TEST(Hopexplain, EndsWith255ForAKeywordWithoutAValue) {
  Workshop shop;
  const Outcome outcome = explain(shop, {.arguments = {"vnc://h/", "-format"}});
  EXPECT_EQ("Keyword -format has no value\n", outcome.err);
  EXPECT_EQ("", outcome.out);
  EXPECT_EQ(255, outcome.status);
}

TEST(Hopexplain, SaysWhichFileOfThePathIsExecuted) {
  Workshop shop;
  Strings environment = shop.environment();
  environment.at(0) = "PATH=nowhere:bin";
  Outcome outcome = explain(shop, {.arguments = {"vnc://h/"}, .environment = environment});
  EXPECT_EQ("bin/vncviewer", labelled(outcome.out, "file"));
  EXPECT_EQ(0, outcome.status);
  environment.at(0) = "PATH=nowhere";
  outcome = explain(shop, {.arguments = {"vnc://h/"}, .environment = environment});
  EXPECT_EQ("none", labelled(outcome.out, "file"));
  EXPECT_EQ("no: vncviewer cannot be executed: No such file or directory",
            labelled(outcome.out, "launch"));
  EXPECT_EQ(1, outcome.status);
}

TEST(Hopexplain, SaysWhyAFileCannotBeExecuted) {
  Workshop shop;
  writeFile(shop.work() / "bin" / "plain", "");
  for (const std::string program : {"plain", "./bin/plain", "/", "./bin"}) {
    const Outcome outcome = explain(shop, {.arguments = {"-program=" + program, "vnc://h/"}});
    EXPECT_EQ("no: " + program + " cannot be executed: Permission denied",
              labelled(outcome.out, "launch"));
    EXPECT_EQ("none", labelled(outcome.out, "file"));
    EXPECT_EQ(1, outcome.status);
  }
}

TEST(Hopexplain, LeavesAnExistingLogAlone) {
  Workshop shop;
  writeFile(shop.work() / "log", "kept");
  EXPECT_EQ(0, explain(shop, {.arguments = {"-log=log", "vnc://h/"}}).status);
  EXPECT_EQ(1, explain(shop, {.arguments = {"-log=log", "vnc"}}).status);
  EXPECT_EQ("kept", shop.log());
}

TEST(Hopexplain, TakesTheFormatInAnyLetterCase) {
  Workshop shop;
  EXPECT_EQ('{', explain(shop, {.arguments = {"-FORMAT=Json", "vnc://h/"}}).out[0]);
  const std::string text = explain(shop, {.arguments = {"vnc://h/"}}).out;
  EXPECT_EQ('U', text[0]);
  EXPECT_EQ(text, explain(shop, {.arguments = {"-format=TEXT", "vnc://h/"}}).out);
  EXPECT_EQ(text, explain(shop, {.arguments = {"vnc://h/", "-format", ""}}).out);
}

TEST(Hopexplain, RefusesAnUnknownFormat) {
  Workshop shop;
  for (const Strings& arguments : {Strings{"-format=xml", "vnc://h/"},
                                   Strings{"vnc", "-Format", "xml"}, Strings{"-format=xml"}}) {
    const Outcome outcome = explain(shop, {.arguments = arguments});
    EXPECT_EQ("hopexplain: There is no format \"xml\". Give text or json.\n", outcome.err);
    EXPECT_EQ("", outcome.out);
    EXPECT_EQ(255, outcome.status);
  }
  EXPECT_EQ("hopexplain: There is no format \"\\033json\". Give text or json.\n",
            explain(shop, {.arguments = {"-format=\033json", "vnc://h/"}}).err);
}

TEST(Hopexplain, PrintsHelpAndVersionForTheOnlyArgument) {
  Workshop shop;
  const Outcome help = explain(shop, {.arguments = {"--help"}});
  EXPECT_TRUE(help.out.starts_with(
      "Usage: hopexplain [-format=text|json] [-KEY=VALUE | -KEY VALUE]... URI\n"))
      << help.out;
  EXPECT_EQ("", help.err);
  EXPECT_EQ(0, help.status);
  const Outcome version = explain(shop, {.arguments = {"--version"}});
  EXPECT_EQ("hopexplain " PROJECT_VERSION "\n", version.out);
  EXPECT_EQ("", version.err);
  EXPECT_EQ(0, version.status);
  // Elsewhere they are keywords as before.
  for (const std::string option : {"--help", "--version"}) {
    const Outcome last = explain(shop, {.arguments = {"vnc://h/", option}});
    EXPECT_EQ("Keyword " + option + " has no value\n", last.err);
    EXPECT_EQ(255, last.status);
    EXPECT_EQ(0, explain(shop, {.arguments = {option, "x", "vnc://h/"}}).status);
  }
}

TEST(Hopexplain, SaysUsageAndKeywordsInTextWhateverTheFormat) {
  Workshop shop;
  EXPECT_EQ("Usage: tools/hopexplain <uri> \n",
            explain(shop, {.arguments = {"-format=json"}, .command = "tools/hopexplain"}).err);
  EXPECT_EQ("Keyword -x has no value\n",
            explain(shop, {.arguments = {"-format=json", "vnc://h/", "-x"}}).err);
}

TEST(Hopexplain, SaysWhyALogHasNoLinesWithoutTouchingIt) {
  Workshop shop;
  ASSERT_EQ(0, mkfifo((shop.work() / "bin" / "fifo").c_str(), 0666));
  const struct {
    std::string log;
    std::string error;
  } cases[] = {
      {"nowhere/log", "cannot be opened: No such file or directory"},
      {"bin", "cannot be opened: Is a directory"},
      {"bin/fifo", "is a pipe: lines are lost while nobody reads it or it is full"},
      {"/dev/fd/77", "cannot be opened: No such file or directory"},
  };
  for (const auto& one : cases) {
    for (const std::string uri : {"vnc://h/", "vnc"}) {
      const Strings arguments{"-log=" + one.log, uri};
      const Outcome outcome = explain(shop, {.arguments = arguments});
      EXPECT_EQ(one.log + " " + one.error, labelled(outcome.out, "log"));
      EXPECT_EQ(uri == "vnc" ? 1 : 0, outcome.status);
      EXPECT_EQ("", outcome.err);
      const Json json = explainJSON(shop, {.arguments = arguments});
      EXPECT_EQ(one.error, json["logError"].text);
      EXPECT_EQ(uri == "vnc" ? "false" : "true", json["launches"].text);
    }
  }
  const Strings fine{"-log=log", "vnc://h/"};
  EXPECT_EQ("", labelled(explain(shop, {.arguments = fine}).out, "log"));
  EXPECT_EQ('w', explainJSON(shop, {.arguments = fine})["logError"].kind);
  EXPECT_EQ("null", explainJSON(shop, {.arguments = fine})["logError"].text);
  EXPECT_EQ(Strings(), shop.files());
}

// --- Output that is lost -------------------------------------------------------

// These make standard output something that accepts nothing.
void toFullDisk() {
  dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
}
void toNowhere() {
  close(STDOUT_FILENO);
}
void toPipeWithoutReader() {
  std::signal(SIGPIPE, SIG_IGN);
  int ends[2] = {-1, -1};
  if (pipe(ends) == 0) {
    dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    close(ends[1]);
  }
}
void toFileAtItsLimit() {
  std::signal(SIGXFSZ, SIG_IGN);
  setSoftLimit(RLIMIT_FSIZE, 0);
}

const struct {
  const char* name;
  void (*prepare)();
  const char* error;
} lostOutputs[] = {{"full", toFullDisk, "No space left on device"},
                   {"closed", toNowhere, "Bad file descriptor"},
                   {"pipe", toPipeWithoutReader, "Broken pipe"}};

TEST(Hopexplain, EndsWithTwoWhereItsOutputIsLost) {
  Workshop shop;
  for (const auto& lost : lostOutputs) {
    for (const Strings& arguments :
         {Strings{"vnc://h/"}, Strings{"vnc"}, Strings{"-format=json", "vnc://h/"},
          Strings{"--help"}, Strings{"--version"}}) {
      SCOPED_TRACE(lost.name + testing::PrintToString(arguments));
      const Outcome outcome = explain(shop, {.arguments = arguments, .prepare = lost.prepare});
      EXPECT_EQ(std::string("hopexplain: Cannot write to standard output: ") + lost.error + "\n",
                outcome.err);
      EXPECT_EQ(2, outcome.status);
    }
    const Outcome wrong = explain(shop, {.arguments = {"-x"}, .prepare = lost.prepare});
    EXPECT_EQ("Keyword -x has no value\n", wrong.err);
    EXPECT_EQ(255, wrong.status);
    const Outcome form =
        explain(shop, {.arguments = {"-format=x", "vnc"}, .prepare = lost.prepare});
    EXPECT_EQ(255, form.status);
    // Nothing is written to standard output, so nothing is lost.
    EXPECT_EQ(1, explain(shop, {.arguments = {}, .prepare = lost.prepare}).status);
  }
}

TEST(Hopexplain, EndsWithTwoWhereItsFileMayNotGrow) {
  Workshop shop;
  // The message also goes to a file that may not grow.
  EXPECT_EQ(2, explain(shop, {.arguments = {"vnc://h/"}, .prepare = toFileAtItsLimit}).status);
}

TEST(Hopexplain, EndsWithTwoWhereOnlyTheEndOfItsOutputIsLost) {
  Workshop shop;
  const auto prepare = [] {
    std::signal(SIGXFSZ, SIG_IGN);
    setSoftLimit(RLIMIT_FSIZE, 100);
  };
  const Outcome outcome = explain(shop, {.arguments = {"vnc://h/"}, .prepare = prepare});
  EXPECT_EQ(100U, outcome.out.size());
  EXPECT_EQ("hopexplain: Cannot write to standard output: File too large\n", outcome.err);
  EXPECT_EQ(2, outcome.status);
}

TEST(Hopexplain, LosesNothingInAPipeThatDoesNotBlock) {
  Workshop shop;
  int ends[2] = {-1, -1};
  ASSERT_EQ(0, pipe2(ends, O_CLOEXEC | O_NONBLOCK));
  // More than a pipe accepts at once.
  const std::string host(100000, 'h');
  launcher::Command command{.arguments = {"-format=json", "vnc://" + host + "/"},
                            .prepare = [&] { dup2(ends[1], STDOUT_FILENO); },
                            .binary = HOPEXPLAIN_BINARY};
  shop.start(command);
  close(ends[1]);
  usleep(100000);
  std::string found;
  fcntl(ends[0], F_SETFL, 0);
  char buffer[65536];
  for (ssize_t count = 1; count > 0;) {
    count = read(ends[0], buffer, sizeof buffer);
    found.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
  close(ends[0]);
  const Outcome outcome = shop.finish();
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("", outcome.err);
  EXPECT_EQ(host, JsonReader::read(found)["addresses"].elements.at(0).text);
}

TEST(Hopexplain, TellsWhatTheOptionsTouched) {
  Workshop shop;
  const Json json = explainJSON(
      shop, {.arguments = {"-PROGRAMS=VNC=xyz", "-configDB=1", "-portArg=p", "-x=y", "vnc://h/"}});
  Strings uses;
  for (const Json& option : json["options"].elements) {
    uses.push_back(option["key"].text + " " + option["value"].text + " " + option["use"].text);
  }
  EXPECT_EQ((Strings{"configDB 1 flag", "portArg p launch", "PROGRAMS VNC=xyz item", "x y none"}),
            uses);
  EXPECT_EQ("xyz", json["program"].text);
  EXPECT_EQ("scheme", json["rule"].text);
}

TEST(Hopexplain, KeepsEveryByteOfItsArgumentsInJSON) {
  Workshop shop;
  std::string all;
  for (int byte = 1; byte < 256; byte++) {
    all += static_cast<char>(byte);
  }
  const Json json = explainJSON(
      shop, {.arguments = {"-program=" + all, "-log=" + all, "-x" + all + "=" + all, all}});
  EXPECT_EQ(all, json["uriBytes"].binary());
  // The text loses what is not UTF-8.
  const std::string ascii = all.substr(0, 0x7f);
  EXPECT_EQ(ascii, json["uri"].text.substr(0, 0x7f));
  EXPECT_EQ(ascii, json["log"].text.substr(0, 0x7f));
  EXPECT_EQ("\xef\xbf\xbd\xef\xbf\xbd", json["log"].text.substr(0x7f, 6));
  EXPECT_EQ("x\x01\x02", json["options"].elements.at(2)["key"].text.substr(0, 3));
  // The key ends at the first "=".
  EXPECT_EQ(">" + ascii.substr(0x3e) + "\xef\xbf\xbd",
            json["options"].elements.at(2)["value"].text.substr(0, 1 + 0x7f - 0x3e + 3));
}

TEST(Hopexplain, SeesThatAScriptsInterpreterIsMissing) {
  Workshop shop;
  writeFile(shop.work() / "bin" / "orphan", "#!/no/such/interpreter\n");
  std::filesystem::permissions(shop.work() / "bin" / "orphan", std::filesystem::perms::owner_all);
  const Strings arguments{"-program=orphan", "-log=log", "vnc://h/"};
  const Outcome outcome = explain(shop, {.arguments = arguments});
  EXPECT_EQ("none", labelled(outcome.out, "file"));
  EXPECT_EQ("no: orphan cannot be executed: No such file or directory",
            labelled(outcome.out, "launch"));
  EXPECT_EQ(1, outcome.status);
  EXPECT_EQ(0, shop.run({.arguments = arguments}).status);
  EXPECT_TRUE(
      shop.log().ends_with("_execv() failed; path = orphan errno = 2 No such file or directory\n"))
      << shop.log();
}

TEST(Hopexplain, SeesThatAnArgumentIsTooLong) {
  Workshop shop;
  // 131072 bytes are too many, and a ticket's text grows by a half.
  const Strings arguments{"-log=log", "vnc://h/" + std::string(100000, 'Q')};
  const Outcome told = explain(shop, {.arguments = arguments});
  EXPECT_EQ("no: vncviewer cannot be executed: Argument list too long",
            labelled(told.out, "launch"));
  EXPECT_EQ(1, told.status);
  const Outcome outcome = shop.run({.arguments = arguments});
  EXPECT_EQ(0, outcome.status);
  EXPECT_FALSE(outcome.viewer.has_value());
  EXPECT_TRUE(
      shop.log().ends_with("_execv() failed; path = vncviewer errno = 7 Argument list too long\n"));
}

TEST(Hopexplain, SaysThatTheShellExecutesWhatIsNoProgram) {
  Workshop shop;
  writeFile(shop.work() / "bin" / "formless", "exit 7\n");
  std::filesystem::permissions(shop.work() / "bin" / "formless", std::filesystem::perms::owner_all);
  const Strings arguments{"-program=formless", "vnc://h/"};
  const Json json = explainJSON(shop, {.arguments = arguments});
  EXPECT_EQ("/bin/sh", json["shell"].text);
  EXPECT_EQ("bin/formless", json["file"].text);
  EXPECT_EQ("true", json["launches"].text);
  EXPECT_EQ("formless", json["arguments"].elements.at(0).text);
  EXPECT_EQ(7, shop.run({.arguments = arguments}).status);
  EXPECT_EQ("null", explainJSON(shop, {.arguments = {"vnc://h/"}})["shell"].text);
}

}  // namespace

}  // namespace hopexplain_test
