// SPDX-License-Identifier: MIT
// What hopexplain finds, and what it prints about it.

#include "explain.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "children.h"
#include "explain_json.h"
#include "explain_text.h"
#include "find_program.h"
#include "shell_word.h"
#include "system_calls.h"
#include "texts.h"
#include "threading.h"
#include "working_folder.h"

namespace explain_test {

namespace {

using namespace std::string_literals;

int remoteError = 0;  // of what is in a folder "remote"

const replacedCalls here(__FILE__, [] {
  systemCalls::stat64.replace([](const char* path, struct stat64* status) {
    if (std::string(path).starts_with("remote/")) {
      errno = remoteError;
      return -1;
    }
    return systemCalls::stat64.real(path, status);
  });
});

using Folder = workingFolder;

// --- The search ------------------------------------------------------------

// Folders without permissions do not let this user in.
void becomeNobody() {
  if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
    std::exit(99);
  }
}

// Each program ends with a different status.
void makePrograms() {
  for (const char* const folder : {"first", "second", "plain", "dirs", "dirs/tool", "locked"}) {
    std::filesystem::create_directory(folder);
    ASSERT_EQ(0, chmod(folder, 0755));
  }
  writeFile("first/tool", "#!/bin/sh\nexit 201\n", 0755);
  writeFile("second/tool", "#!/bin/sh\nexit 202\n", 0755);
  writeFile("second/only", "#!/bin/sh\nexit 203\n", 0755);
  writeFile("local", "#!/bin/sh\nexit 204\n", 0755);
  writeFile("plain/tool", "#!/bin/sh\nexit 205\n", 0644);
  writeFile("locked/tool", "#!/bin/sh\nexit 206\n", 0755);
  ASSERT_EQ(0, chmod("locked", 0));
  std::filesystem::create_symlink("loop", "loop");
  std::filesystem::create_symlink("nowhere", "dangling");
  std::filesystem::create_symlink("first/tool", "link");
  ASSERT_EQ(0, mkfifo("fifo", 0755));
  ASSERT_EQ(0, chmod("fifo", 0755));
}

struct searchCase {
  std::string program;
  std::optional<std::string> path;  // the value of PATH
  std::string found;
  int result;  // the status of the program, or the error number
};

// The file and the error number that a process without privileges finds.
std::string searched(const searchCase& one) {
  return runChild([&] {
           becomeNobody();
           const foundProgram found =
               findProgram(one.program, one.path ? one.path->c_str() : nullptr, {one.program});
           std::printf("%s %d", found.path.c_str(), found.error);
           return 0;
         })
      .output;
}

// The ending of a process that really executes the program: the program's status or
// the error number.
std::string executed(const searchCase& one) {
  return runChild([&] {
           becomeNobody();
           if (one.path) {
             setenv("PATH", one.path->c_str(), 1);
           } else {
             unsetenv("PATH");
           }
           std::string name = one.program;
           char* const arguments[] = {name.data(), nullptr};
           execvp(name.c_str(), arguments);
           std::_Exit(errno);
           return 0;
         })
      .ending;
}

void check(const searchCase& one) {
  SCOPED_TRACE(testing::Message() << one.program << " on " << testing::PrintToString(one.path));
  const int error = one.found.empty() ? one.result : 0;
  EXPECT_EQ(searched(one), one.found + " " + std::to_string(error));
  EXPECT_EQ(executed(one), "exit " + std::to_string(one.result));
}

template <std::size_t size>
void check(const searchCase (&cases)[size]) {
  const Folder folder;
  makePrograms();
  for (const searchCase& one : cases) {
    check(one);
  }
}

const std::string tooLong(256, 'x');

// glibc 2.43 refuses such a name before it looks into a folder.
#if __GLIBC_PREREQ(2, 43)
constexpr int LONG_NAME_NOWHERE = ENAMETOOLONG;
#else
constexpr int LONG_NAME_NOWHERE = ENOENT;
#endif

TEST(FindProgram, SearchesThePathInOrderLikeExecvp) {
  const searchCase cases[] = {
      {"tool", "first:second", "first/tool", 201},
      {"tool", "second:first", "second/tool", 202},
      {"only", "first:second", "second/only", 203},
      {"tool", "nowhere:second", "second/tool", 202},
      {"tool", "first/", "first//tool", 201},
      {"none", "first:second", "", ENOENT},
      {"tool", "nowhere", "", ENOENT},
      {"dangling", ".", "", ENOENT},
      {"link", ".", "./link", 201},
      {"", "first", "", ENOENT},
  };
  check(cases);
}

TEST(FindProgram, TakesAnEmptyFolderForTheCurrentOneLikeExecvp) {
  const searchCase cases[] = {
      {"local", "", "local", 204},
      {"local", ":", "local", 204},
      {"local", ":nowhere", "local", 204},
      {"local", "nowhere:", "local", 204},
      {"local", "nowhere::first", "local", 204},
      {"tool", "first:", "first/tool", 201},
      {"local", "nowhere:first", "", ENOENT},
  };
  check(cases);
}

TEST(FindProgram, SearchesTheSystemsFoldersWithoutAPathLikeExecvp) {
  const searchCase cases[] = {
      {"true", std::nullopt, "/bin/true", 0},
      {"local", std::nullopt, "", ENOENT},
      {"first/tool", std::nullopt, "first/tool", 201},
  };
  check(cases);
}

TEST(FindProgram, GoesOnWhereAccessIsDeniedLikeExecvp) {
  const searchCase cases[] = {
      {"tool", "plain:second", "second/tool", 202},
      {"tool", "plain", "", EACCES},
      {"tool", "plain:nowhere", "", EACCES},
      {"tool", "dirs:first", "first/tool", 201},
      {"tool", "dirs", "", EACCES},
      {"tool", "locked:first", "first/tool", 201},
      {"tool", "locked", "", EACCES},
      {"tool", "locked:nowhere", "", EACCES},
      {"fifo", ".:first", "", EACCES},
  };
  check(cases);
}

TEST(FindProgram, ReportsTheLastFolderUnlessAccessWasDeniedLikeExecvp) {
  const searchCase cases[] = {
      {"tool", "local:first", "first/tool", 201},  {"tool", "local", "", ENOTDIR},
      {"tool", "nowhere:local", "", ENOTDIR},      {"tool", "local:nowhere", "", ENOENT},
      {"tool", "plain:local:nowhere", "", EACCES}, {"tool", "local:plain:local", "", EACCES},
  };
  check(cases);
}

TEST(FindProgram, StopsAtAnyOtherErrorLikeExecvp) {
  const searchCase cases[] = {
      {"tool", "loop:first", "", ELOOP},
      {"tool", "first:loop", "first/tool", 201},
      {"tool", "plain:loop:first", "", ELOOP},
      {tooLong, "first:second", "", ENAMETOOLONG},
      {tooLong, "nowhere", "", LONG_NAME_NOWHERE},
      {std::string(255, 'x'), "first", "", ENOENT},
      {"tool", tooLong + ":first", "", ENAMETOOLONG},
  };
  check(cases);
}

TEST(FindProgram, GoesOnBehindARemoteFolderThatIsGone) {
  const Folder folder;
  makePrograms();
  for (const int error : {ESTALE, ENODEV, ETIMEDOUT}) {
    remoteError = error;
    EXPECT_EQ(findProgram("tool", "remote:first", {"tool"}).path, "first/tool");
    EXPECT_EQ(findProgram("tool", "remote", {"tool"}).error, error);
  }
  remoteError = EIO;
  EXPECT_EQ(findProgram("tool", "remote:first", {"tool"}).path, "");
  EXPECT_EQ(findProgram("tool", "remote:first", {"tool"}).error, EIO);
}

TEST(FindProgram, LeavesThePathAloneForANameWithASlashLikeExecvp) {
  const searchCase cases[] = {
      {"./local", "first", "./local", 204},
      {"first/tool", "second", "first/tool", 201},
      {"first/none", "first", "", ENOENT},
      {"first/only", "second", "", ENOENT},
      {"plain/tool", "first", "", EACCES},
      {"dirs/tool", "first", "", EACCES},
      {"first/", "first", "", EACCES},
      {"/", "first", "", EACCES},
      {"local/", "first", "", ENOTDIR},
      {"local/tool", "first", "", ENOTDIR},
      {"locked/tool", "first", "", EACCES},
      {"loop/tool", "first", "", ELOOP},
      {"./fifo", "first", "", EACCES},
      {"/dev/null", "first", "", EACCES},
      {"./" + tooLong, "first", "", ENAMETOOLONG},
  };
  check(cases);
}

TEST(FindProgram, FindsAFileOfAnySize) {
  const Folder folder;
  writeFile("large", "#!/bin/sh\nexit 207\n", 0755);
  ASSERT_EQ(0, truncate64("large", 3000000000)) << "no room for a sparse file";
  check({"./large", "", "./large", 207});
}

// --- Words of a shell -------------------------------------------------------

TEST(ShellWord, IsTheTextItselfWhereAShellLeavesItAlone) {
  for (const std::string text : {"h", "vncviewer", "-shared=1", "host:5900", "/usr/bin/x",
                                 "a@b%20c", "a+b,c.d_e", "0", "-", "--"}) {
    EXPECT_EQ(shellWord(text), text);
  }
}

TEST(ShellWord, IsInSingleQuotesWhereItIsPrintable) {
  EXPECT_EQ(shellWord(""), "''");
  EXPECT_EQ(shellWord(" "), "' '");
  EXPECT_EQ(shellWord("a b"), "'a b'");
  EXPECT_EQ(shellWord("$(x)"), "'$(x)'");
  EXPECT_EQ(shellWord("`x`"), "'`x`'");
  EXPECT_EQ(shellWord("a;b"), "'a;b'");
  EXPECT_EQ(shellWord("a\\b"), "'a\\b'");
  EXPECT_EQ(shellWord("\""), "'\"'");
  EXPECT_EQ(shellWord("'"), "''\\'''");
  EXPECT_EQ(shellWord("it's"), "'it'\\''s'");
  EXPECT_EQ(shellWord("[::1]"), "'[::1]'");
  EXPECT_EQ(shellWord("~"), "'~'");
  EXPECT_EQ(shellWord("!a"), "'!a'");
  EXPECT_EQ(shellWord("a?b*"), "'a?b*'");
  // Some shells replace a word that begins with "=" by the path of a command.
  EXPECT_EQ(shellWord("=ls"), "'=ls'");
}

TEST(ShellWord, HasEscapesWhereItIsNotPrintable) {
  EXPECT_EQ(shellWord("a\nb"), "$'a\\nb'");
  EXPECT_EQ(shellWord("\r\t"), "$'\\r\\t'");
  EXPECT_EQ(shellWord("\x01\x1f\x7f"), "$'\\001\\037\\177'");
  EXPECT_EQ(shellWord("\xc3\xa9"), "$'\\303\\251'");
  EXPECT_EQ(shellWord("\xff'\\\""), "$'\\377\\'\\\\\\\"'");
  EXPECT_EQ(shellWord("\n7"), "$'\\n7'");
  EXPECT_EQ(shellWord("\x01"
                      "7"),
            "$'\\0017'");
}

TEST(ShellWord, IsReadBackByBash) {
  const Folder folder;
  std::vector<std::string> texts{"", "'", "\\", "\\n", "$x", "a'b\nc", "$'", "\n'"};
  std::string all;
  for (int byte = 1; byte < 256; byte++) {
    all += static_cast<char>(byte);
    texts.push_back(std::string(1, static_cast<char>(byte)));
    texts.push_back(std::string(1, static_cast<char>(byte)) + "7'\"");
  }
  texts.push_back(all);
  std::string script = "printf '%s\\0' ";
  std::string expected;
  for (const std::string& text : texts) {
    script += shellWord(text) + " ";
    expected += text + "\0"s;
  }
  writeFile("script", script, 0644);
  EXPECT_EQ(runChild([] { return std::system("bash script"); }).output, expected);
}

// --- The text ----------------------------------------------------------------

assocList listOf(const std::vector<std::pair<std::string, std::string>>& pairs) {
  assocList result;
  for (const auto& [key, value] : pairs) {
    result[key] = value;
  }
  return result;
}

// A launch with the default viewers on the path, and its folder.
class Launch {
 public:
  Launch() {
    std::filesystem::create_directory("bin");
    for (const char* const name : {"bin/vncviewer", "bin/putty"}) {
      writeFile(name, "#!/bin/sh\n", 0755);
    }
    setenv("PATH", "bin", 1);
    ThreadData::instance(false);  // so that the configuration is published
  }
  explanation of(const std::string& uri, const assocList& options = assocList()) const {
    return explanation(uri, options, options);
  }

 private:
  Folder m_folder;
};

TEST(ExplainText, HasALineForEachFact) {
  const Launch launch;
  EXPECT_EQ(asText(launch.of("vnc://h/")),
            "URI         \"vnc://h/\"\n"
            "scheme      vnc\n"
            "address     h\n"
            "program     vncviewer, registered for the scheme in PROGRAMS\n"
            "file        bin/vncviewer\n"
            "style       equals\n"
            "arguments   vncviewer --autoreconnect=0 h\n"
            "launch      yes\n");
}

TEST(ExplainText, NamesTheShellThatExecutesAFile) {
  const Launch launch;
  writeFile("bin/vncviewer", "", 0755);
  const std::string text = asText(launch.of("vnc://h/"));
  EXPECT_NE(text.find("\nfile        bin/vncviewer\n"
                      "shell       /bin/sh, as the file is not a program that Linux knows\n"
                      "style       equals\n"
                      "arguments   vncviewer --autoreconnect=0 h\n"
                      "launch      yes\n"),
            std::string::npos)
      << text;
  EXPECT_NE(asJSON(launch.of("vnc://h/")).find("  \"shell\": \"/bin/sh\",\n"), std::string::npos);
}

TEST(ExplainText, SaysThatAFolderOfThePathIsSkipped) {
  const Launch launch;
  writeFile("vncviewer", "#!/bin/sh\n", 0755);
  const std::string longFolder(4096, 'x');
  setenv("PATH", (longFolder + ":bin").c_str(), 1);
  const std::string text = asText(launch.of("vnc://h/"));
  EXPECT_NE(text.find("\nPATH        has a folder of 4096 bytes or more, which is skipped; the "
                      "current folder is searched in its place\n"
                      "file        vncviewer\n"),
            std::string::npos)
      << text;
  setenv("PATH", ("nowhere:" + longFolder).c_str(), 1);
  const std::string last = asText(launch.of("vnc://h/"));
  EXPECT_NE(last.find("\nPATH        has a folder of 4096 bytes or more, which is skipped\n"
                      "file        none\n"),
            std::string::npos)
      << last;
}

TEST(ExplainText, ShowsEveryPieceOfAURI) {
  const Launch launch;
  EXPECT_EQ(asText(launch.of("VNC://Host:1+b:2,[::1]/7,?b=%2520&A=1")),
            "URI         \"VNC://Host:1+b:2,[::1]/7,?b=%2520&A=1\"\n"
            "decoded     \"VNC://Host:1+b:2,[::1]/7,?b=%20&A=1\"\n"
            "scheme      VNC\n"
            "address     Host:1\n"
            "address     b:2 (not passed on)\n"
            "address     '[::1]' (not passed on)\n"
            "key id      7 (not passed on)\n"
            "parameter   A = 1\n"
            "parameter   b = ' '\n"
            "program     vncviewer, registered for the scheme in PROGRAMS\n"
            "file        bin/vncviewer\n"
            "style       equals\n"
            "arguments   vncviewer --autoreconnect=0 -A=1 '-b= ' Host:1\n"
            "launch      yes\n");
  EXPECT_EQ(asText(launch.of("ssh://h/0,QUJD?a=1")),
            "URI         \"ssh://h/0,QUJD?a=1\"\n"
            "scheme      ssh\n"
            "address     h\n"
            "key id      0 (not passed on)\n"
            "ticket      414243\n"
            "program     putty, registered for the scheme in PROGRAMS\n"
            "file        bin/putty\n"
            "style       equals\n"
            "arguments   putty -ticket=414243 h\n"
            "launch      yes\n");
}

TEST(ExplainText, TellsWhatEachOptionDid) {
  const Launch launch;
  const assocList rest = listOf({{"LOG", "a b"},
                                 {"program", "bin/putty"},
                                 {"Style", "separate"},
                                 {"portarg", "P"},
                                 {"nobody", "1"},
                                 {"", "2"}});
  assocList options = rest;
  options["vnc_options"] = "a=1";
  options["refcount"] = "on";
  EXPECT_EQ(asText(explanation("vnc://h:1/", options, rest)),
            "URI         \"vnc://h:1/\"\n"
            "scheme      vnc\n"
            "address     h:1\n"
            "option      -=2 is ignored: not a known option\n"
            "option      '-LOG=a b' steers the launch\n"
            "option      -nobody=1 is ignored: not a known option\n"
            "option      -portarg=P steers the launch\n"
            "option      -program=bin/putty steers the launch\n"
            "option      -refcount=on switches the trace flag on\n"
            "option      -Style=separate steers the launch\n"
            "option      -vnc_options=a=1 sets the configuration item\n"
            "program     bin/putty, named by the option program\n"
            "file        bin/putty\n"
            "style       separate\n"
            "arguments   putty --autoreconnect 0 -P 1 h\n"
            "launch      yes\n");
}

TEST(ExplainText, SaysThatNoProgramIsRegistered) {
  const Launch launch;
  EXPECT_EQ(asText(launch.of("f\\p://h/")),
            "URI         \"f\\\\p://h/\"\n"
            "scheme      'f\\p'\n"
            "address     h\n"
            "launch      no: no program is registered for the scheme f\\p\n");
}

TEST(ExplainText, SaysWhyAProgramCannotBeExecuted) {
  const Launch launch;
  EXPECT_EQ(asText(launch.of("ssh://h/", listOf({{"program", "no ne"}}))),
            "URI         \"ssh://h/\"\n"
            "scheme      ssh\n"
            "address     h\n"
            "option      '-program=no ne' steers the launch\n"
            "program     'no ne', named by the option program\n"
            "file        none\n"
            "style       equals\n"
            "arguments   'no ne' h\n"
            "launch      no: 'no ne' cannot be executed: No such file or directory\n");
  const std::string text = asText(launch.of("ssh://h/", listOf({{"program", "./bin"}})));
  EXPECT_NE(text.find("\nlaunch      no: ./bin cannot be executed: Permission denied\n"),
            std::string::npos)
      << text;
}

TEST(ExplainText, HasACaretUnderWhatDoesNotParse) {
  const Launch launch;
  const std::string end = "launch      no: the URI does not parse\n";
  EXPECT_EQ(asText(launch.of("")),
            "URI         \"\"\n"
            "             ^ expected a scheme, which begins with a letter\n" +
                end);
  EXPECT_EQ(asText(launch.of("vnc:h/")),
            "URI         \"vnc:h/\"\n"
            "                 ^ expected \"://\" after the scheme\n" +
                end);
  EXPECT_EQ(asText(launch.of("vnc://h")),
            "URI         \"vnc://h\"\n"
            "                    ^ expected \"/\" after the addresses\n" +
                end);
  EXPECT_EQ(asText(launch.of("vnc://a,-b/")),
            "URI         \"vnc://a,-b/\"\n"
            "                     ^ expected an address, which begins with a letter or digit or "
            "ends in brackets\n" +
                end);
  EXPECT_EQ(asText(launch.of("vnc://h/abc!")),
            "URI         \"vnc://h/abc!\"\n"
            "                        ^ expected a ticket in base64, whose length is a multiple of "
            "four\n" +
                end);
  EXPECT_EQ(asText(launch.of("vnc://h/?a")),
            "URI         \"vnc://h/?a\"\n"
            "                       ^ expected \"=\" after the name of a parameter\n" +
                end);
}

TEST(ExplainText, PutsTheCaretUnderTheDecodedTextAndCountsEscapes) {
  const Launch launch;
  EXPECT_EQ(asText(launch.of("vnc://%C3%A9[%0A/")),
            "URI         \"vnc://%C3%A9[%0A/\"\n"
            "decoded     \"vnc://\\303\\251[\\n/\"\n"
            "                   ^ expected an address, which begins with a letter or digit or ends "
            "in brackets\n"
            "launch      no: the URI does not parse\n");
  EXPECT_EQ(asText(launch.of("vnc://h\x01\"\\")),
            "URI         \"vnc://h\\001\\\"\\\\\"\n"
            "                            ^ expected \"/\" after the addresses\n"
            "launch      no: the URI does not parse\n");
  EXPECT_EQ(asText(launch.of("vnc%00://h/")),
            "URI         \"vnc%00://h/\"\n"
            "decoded     \"vnc\\000://h/\"\n"
            "                ^ expected \"://\" after the scheme\n"
            "launch      no: the URI does not parse\n");
}

TEST(ExplainText, CutsALongTextAroundTheCaret) {
  const Launch launch;
  const std::string a24(24, 'a');
  const std::string end = "launch      no: the URI does not parse\n";
  // 48 bytes in front of the caret, and 24 from there, are shown.
  EXPECT_EQ(asText(launch.of("vnc://" + std::string(42, 'a'))),
            "URI         \"vnc://" + std::string(42, 'a') + "\"\n" + std::string(61, ' ') +
                "^ expected \"/\" after the addresses\n" + end);
  EXPECT_EQ(asText(launch.of("vnc://" + std::string(43, 'a'))),
            "URI         ...\"nc://" + std::string(43, 'a') + "\"\n" + std::string(64, ' ') +
                "^ expected \"/\" after the addresses\n" + end);
  EXPECT_EQ(asText(launch.of("1" + a24)),
            "URI         \"1" + std::string(23, 'a') + "\"...\n" +
                "             ^ expected a scheme, which begins with a letter\n" + end);
  EXPECT_EQ(asText(launch.of("1" + std::string(23, 'a'))),
            "URI         \"1" + std::string(23, 'a') + "\"\n" +
                "             ^ expected a scheme, which begins with a letter\n" + end);
  EXPECT_EQ(asText(launch.of("vnc://" + a24 + a24 + ",-" + a24 + "/")),
            "URI         ...\"" + std::string(47, 'a') + ",-" + std::string(23, 'a') + "\"...\n" +
                std::string(64, ' ') +
                "^ expected an address, which begins with a letter or digit or ends in brackets\n" +
                end);
}

// Every byte but NUL, at every place that a user chooses.
TEST(ExplainText, IsPrintableASCII) {
  const Launch launch;
  for (int byte = 1; byte < 256; byte++) {
    const std::string c(1, static_cast<char>(byte));
    const assocList options = listOf({{c, c}, {"program", c}, {"log", c}, {"portArg", c}});
    for (const std::string& uri :
         {c, "vnc://" + c,
          "vnc://h" + c + ":" + c + ",b" + c + "/?a" + c + "=" + c + "&" + c + "=%2500"}) {
      for (const char found : asText(launch.of(uri, options))) {
        ASSERT_TRUE((found >= ' ' && found <= '~') || found == '\n') << "byte " << byte;
      }
    }
  }
}

// --- JSON ---------------------------------------------------------------------

TEST(ExplainJSON, HasTheSameKeysForEveryLaunch) {
  const Launch launch;
  const std::string bad = asJSON(launch.of("vnc://h\""));
  EXPECT_EQ(bad,
            "{\n"
            "  \"uri\": \"vnc://h\\\"\",\n"
            "  \"uriBytes\": \"766e633a2f2f6822\",\n"
            "  \"decoded\": \"vnc://h\\\"\",\n"
            "  \"parses\": false,\n"
            "  \"error\": {\"offset\": 8, \"expected\": \"\\\"/\\\" after the addresses\"},\n"
            "  \"scheme\": null,\n"
            "  \"addresses\": [],\n"
            "  \"keyId\": null,\n"
            "  \"ticket\": null,\n"
            "  \"parameters\": {},\n"
            "  \"options\": [],\n"
            "  \"log\": null,\n"
            "  \"logError\": null,\n"
            "  \"program\": null,\n"
            "  \"rule\": null,\n"
            "  \"file\": null,\n"
            "  \"shell\": null,\n"
            "  \"style\": \"equals\",\n"
            "  \"portArg\": null,\n"
            "  \"arguments\": null,\n"
            "  \"argumentsBytes\": null,\n"
            "  \"launches\": false,\n"
            "  \"obstacle\": \"the URI does not parse\"\n"
            "}\n");
  EXPECT_EQ(asJSON(launch.of("ftp://h/?%2541=%2541")),
            "{\n"
            "  \"uri\": \"ftp://h/?%2541=%2541\",\n"
            "  \"uriBytes\": \"6674703a2f2f682f3f25323534313d2532353431\",\n"
            "  \"decoded\": \"ftp://h/?%41=%41\",\n"
            "  \"parses\": true,\n"
            "  \"error\": null,\n"
            "  \"scheme\": \"ftp\",\n"
            "  \"addresses\": [\"h\"],\n"
            "  \"keyId\": null,\n"
            "  \"ticket\": null,\n"
            "  \"parameters\": {\"%41\": \"A\"},\n"
            "  \"options\": [],\n"
            "  \"log\": null,\n"
            "  \"logError\": null,\n"
            "  \"program\": null,\n"
            "  \"rule\": null,\n"
            "  \"file\": null,\n"
            "  \"shell\": null,\n"
            "  \"style\": \"equals\",\n"
            "  \"portArg\": null,\n"
            "  \"arguments\": null,\n"
            "  \"argumentsBytes\": null,\n"
            "  \"launches\": false,\n"
            "  \"obstacle\": \"no program is registered for the scheme ftp\"\n"
            "}\n");
  const assocList rest = listOf(
      {{"log", "l"}, {"program", "./none"}, {"style", "separate"}, {"portArg", "P"}, {"x", "y"}});
  assocList options = rest;
  options["PROGRAMS"] = "a=b";
  options["configDB"] = "";
  EXPECT_EQ(asJSON(explanation("SSH://h:22,b/0,QUJD", options, rest)),
            "{\n"
            "  \"uri\": \"SSH://h:22,b/0,QUJD\",\n"
            "  \"uriBytes\": \"5353483a2f2f683a32322c622f302c51554a44\",\n"
            "  \"decoded\": \"SSH://h:22,b/0,QUJD\",\n"
            "  \"parses\": true,\n"
            "  \"error\": null,\n"
            "  \"scheme\": \"SSH\",\n"
            "  \"addresses\": [\"h:22\", \"b\"],\n"
            "  \"keyId\": 0,\n"
            "  \"ticket\": \"414243\",\n"
            "  \"parameters\": {},\n"
            "  \"options\": [{\"key\": \"configDB\", \"value\": \"\", \"use\": \"flag\"}, "
            "{\"key\": \"log\", \"value\": \"l\", \"use\": \"launch\"}, "
            "{\"key\": \"portArg\", \"value\": \"P\", \"use\": \"launch\"}, "
            "{\"key\": \"program\", \"value\": \"./none\", \"use\": \"launch\"}, "
            "{\"key\": \"PROGRAMS\", \"value\": \"a=b\", \"use\": \"item\"}, "
            "{\"key\": \"style\", \"value\": \"separate\", \"use\": \"launch\"}, "
            "{\"key\": \"x\", \"value\": \"y\", \"use\": \"none\"}],\n"
            "  \"log\": \"l\",\n"
            "  \"logError\": null,\n"
            "  \"program\": \"./none\",\n"
            "  \"rule\": \"option\",\n"
            "  \"file\": null,\n"
            "  \"shell\": null,\n"
            "  \"style\": \"separate\",\n"
            "  \"portArg\": \"P\",\n"
            "  \"arguments\": [\"none\", \"-ticket\", \"414243\", \"-P\", \"22\", \"h\"],\n"
            "  \"argumentsBytes\": [\"6e6f6e65\", \"2d7469636b6574\", \"343134323433\", \"2d50\", "
            "\"3232\", \"68\"],\n"
            "  \"launches\": false,\n"
            "  \"obstacle\": \"./none cannot be executed: No such file or directory\"\n"
            "}\n");
}

TEST(ExplainJSON, NamesTheFileAndTheRuleOfALaunch) {
  const Launch launch;
  const std::string json = asJSON(launch.of("vnc://h/?b=2&a=1"));
  EXPECT_NE(
      json.find("\n  \"parameters\": {\"a\": \"1\", \"b\": \"2\"},\n"
                "  \"options\": [],\n"
                "  \"log\": null,\n"
                "  \"logError\": null,\n"
                "  \"program\": \"vncviewer\",\n"
                "  \"rule\": \"scheme\",\n"
                "  \"file\": \"bin/vncviewer\",\n"
                "  \"shell\": null,\n"
                "  \"style\": \"equals\",\n"
                "  \"portArg\": null,\n"
                "  \"arguments\": [\"vncviewer\", \"--autoreconnect=0\", \"-a=1\", \"-b=2\", "
                "\"h\"],\n"
                "  \"argumentsBytes\": [\"766e63766965776572\", "
                "\"2d2d6175746f7265636f6e6e6563743d30\", \"2d613d31\", \"2d623d32\", \"68\"],\n"
                "  \"launches\": true,\n"
                "  \"obstacle\": null\n"
                "}\n"),
      std::string::npos)
      << json;
}

// The string that stands for a text.
std::string written(const std::string& text) {
  const std::string json = asJSON(explanation(text, assocList(), assocList()));
  return json.substr(11, json.find(",\n") - 11);
}

TEST(ExplainJSON, EscapesControlBytesQuotesAndBackslashes) {
  const Launch launch;
  EXPECT_EQ(written("\x01\x02\x08\t\n\f\r\x1f"),
            "\"\\u0001\\u0002\\u0008\\u0009\\u000A\\u000C\\u000D\\u001F\"");
  EXPECT_EQ(written(" !\"#'/[\\]~\x7f"), "\" !\\\"#'/[\\\\]~\\u007F\"");
  EXPECT_NE(asJSON(launch.of("vnc://h/?a=%2500b")).find("{\"a\": \"\\u0000b\"}"),
            std::string::npos);
}

TEST(ExplainJSON, IsPureASCII) {
  const Launch launch;
  EXPECT_EQ(written("\xc2\x80"), "\"\\u0080\"");
  EXPECT_EQ(written("\xc3\xa9"), "\"\\u00E9\"");
  EXPECT_EQ(written("\xe2\x82\xac"), "\"\\u20AC\"");
  EXPECT_EQ(written("\xef\xbf\xbf"), "\"\\uFFFF\"");
  EXPECT_EQ(written("\xf0\x90\x80\x80"), "\"\\uD800\\uDC00\"");
  EXPECT_EQ(written("\xf0\x9f\x96\xa5"), "\"\\uD83D\\uDDA5\"");
  EXPECT_EQ(written("\xf4\x8f\xbf\xbf"), "\"\\uDBFF\\uDFFF\"");
}

TEST(ExplainJSON, WritesEachByteThatIsNotUTF8AsTheReplacementCharacter) {
  const Launch launch;
  EXPECT_EQ(written("\x80\xff"), "\"\\uFFFD\\uFFFD\"");
  EXPECT_EQ(written("\xc3"), "\"\\uFFFD\"");
  EXPECT_EQ(written("\xc3("), "\"\\uFFFD(\"");
  EXPECT_EQ(written("\xe2\x82"), "\"\\uFFFD\\uFFFD\"");
  EXPECT_EQ(written("\xc0\xaf"), "\"\\uFFFD\\uFFFD\"");
  EXPECT_EQ(written("\xed\xa0\x80"), "\"\\uFFFD\\uFFFD\\uFFFD\"");
  EXPECT_EQ(written("\xf4\x90\x80\x80"), "\"\\uFFFD\\uFFFD\\uFFFD\\uFFFD\"");
}

TEST(ExplainJSON, HasTheExactBytesOfTheURIAndTheArguments) {
  const Launch launch;
  const std::string json = asJSON(launch.of("vnc://h/?\xff=%25fe\xc3\xa9"));
  EXPECT_NE(json.find("  \"uriBytes\": \"766e633a2f2f682f3fff3d2532356665c3a9\",\n"),
            std::string::npos)
      << json;
  EXPECT_NE(json.find("\"-\\uFFFD=\\uFFFD\\u00E9\", \"--autoreconnect=0\", \"h\"],\n"
                      "  \"argumentsBytes\": [\"766e63766965776572\", \"2dff3dfec3a9\", "
                      "\"2d2d6175746f7265636f6e6e6563743d30\", \"68\"],\n"),
            std::string::npos)
      << json;
}

}  // namespace

}  // namespace explain_test
