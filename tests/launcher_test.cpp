// SPDX-License-Identifier: MIT
// The launcher as its users see it.  Command lines go in; the viewer's argument
// vector, the log, standard output and error, and the exit status come out.  The
// cases are in launcher_cases.txt.  Tests that do not fit there follow them here.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "launcher_cases.h"
#include "launcher_runner.h"

namespace launcher_test {

namespace {

using launcher::Case;
using launcher::CasePlace;
using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

class Launcher : public testing::TestWithParam<CasePlace> {};

TEST_P(Launcher, Runs) {
  const Case expected = readCase(GetParam());
  ASSERT_EQ("", expected.broken);
  SCOPED_TRACE("hoplaunch " + testing::PrintToString(expected.run));
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = expected.run, .command = expected.command});

  EXPECT_EQ(expected.err, outcome.err);
  EXPECT_EQ("", outcome.out);
  EXPECT_EQ(expected.status, outcome.status);
  EXPECT_EQ(expected.viewer.has_value(), outcome.viewer.has_value());
  if (outcome.viewer) {
    EXPECT_EQ(expected.program, outcome.viewer->path);
    EXPECT_EQ(expected.viewer.value_or(Strings()), outcome.viewer->arguments);
  }
  EXPECT_EQ(expected.log.empty() ? Strings() : Strings{expected.logfile}, shop.files());
  std::string log = shop.log(expected.logfile);
  if (expected.log.starts_with("TIME")) {
    log = Workshop::withoutStamp(log, outcome);
  }
  EXPECT_EQ(expected.log, log);
}

INSTANTIATE_TEST_SUITE_P(Cases, Launcher, testing::ValuesIn(launcher::allCases()),
                         [](const auto& one) { return one.param.found->name; });

TEST(LauncherCases, AreAllRead) {
  EXPECT_EQ(159U, launcher::allCases().size()) << TEST_DATA;
}

TEST(LauncherLog, IsAppendedTo) {
  Workshop shop;
  writeFile(shop.work() / "log", "kept, without an end of line ");
  const Outcome first = shop.run({.arguments = {"-log=log", "ssh://h/"}});
  EXPECT_EQ(42, first.status);
  const Outcome second = shop.run({.arguments = {"-log=log", "no URI"}});
  EXPECT_EQ(0, second.status);
  const std::string log = shop.log();
  const std::string kept = "kept, without an end of line ";
  ASSERT_EQ(kept, log.substr(0, kept.size()));
  EXPECT_EQ(
      "TIME: URI = ssh://h/\n"
      "executable: putty\n"
      "\t\"putty\"\n"
      "\t\"h\"\n"
      "Bad URI \"no URI\"\n",
      Workshop::withoutStamp(log.substr(kept.size()), first));
}

TEST(LauncherLog, MayBeStandardError) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {"-log=/dev/stderr", "ftp://h/"}});
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("", outcome.out);
  EXPECT_EQ("TIME: URI = ftp://h/\nno executable for scheme ftp\n",
            Workshop::withoutStamp(outcome.err, outcome));
}

TEST(LauncherLog, IsMadeReadableForAllUnlessMasked) {
  Workshop shop;
  const Outcome outcome =
      shop.run({.arguments = {"-log=log", "vnc://h/"}, .prepare = [] { umask(027); }});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ(static_cast<std::filesystem::perms>(0640),
            std::filesystem::status(shop.work() / "log").permissions());
}

TEST(LauncherProgram, TakesThePlaceOfTheLauncher) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {"vnc://h/"}});
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ(outcome.pid, outcome.viewer->pid);
  EXPECT_EQ(std::filesystem::canonical(shop.work()).string(), outcome.viewer->folder);
}

TEST(LauncherProgram, WritesToTheSameStandardOutput) {
  Workshop shop;
  const Outcome outcome =
      shop.run({.arguments = {"-program=/bin/echo", "vnc://h:1/?a=1", "-style=separate"}});
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("--autoreconnect 0 -a 1 h:1\n", outcome.out);
  EXPECT_EQ("", outcome.err);
}

TEST(LauncherProgram, IsSearchedInTheOrderOfThePath) {
  Workshop shop;
  std::filesystem::create_directory(shop.work() / "later");
  std::filesystem::create_symlink(RECORDING_VIEWER, shop.work() / "later" / "vncviewer");
  std::filesystem::create_symlink(RECORDING_VIEWER, shop.work() / "later" / "only");
  Strings environment = shop.environment();
  environment.at(0) = "PATH=nowhere:bin:later";
  Outcome outcome = shop.run({.arguments = {"vnc://h/"}, .environment = environment});
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ("bin/vncviewer", outcome.viewer->path);
  outcome = shop.run({.arguments = {"vnc://h/", "-program=only"}, .environment = environment});
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ("later/only", outcome.viewer->path);
}

TEST(LauncherProgram, MayBeAShellScriptWithoutAFirstLine) {
  Workshop shop;
  writeFile(shop.work() / "bin" / "script", "printf '<%s>' \"$@\"\nexit 7\n");
  std::filesystem::permissions(shop.work() / "bin" / "script", std::filesystem::perms::owner_all);
  const Outcome outcome = shop.run({.arguments = {"-program=script", "ssh://h/?a=b c"}});
  EXPECT_EQ(7, outcome.status);
  EXPECT_EQ("<-a=b c><h>", outcome.out);
  EXPECT_EQ("", outcome.err);
}

}  // namespace

}  // namespace launcher_test
