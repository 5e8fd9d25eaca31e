// SPDX-License-Identifier: MIT
// Logs that would make the launcher wait: the launch goes on at once.

#include <sys/stat.h>

#include "blocking_logs.h"
#include "launcher_runner.h"

namespace launcher_log_test {

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

const Strings plainVector{"vncviewer", "--autoreconnect=0", "h"};

void expectLaunch(const Outcome& outcome, const Strings& vector = plainVector) {
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ(vector, outcome.viewer->arguments);
  EXPECT_EQ("0000000000000000", outcome.viewer->status.at("SigIgn"));
  EXPECT_LE(outcome.ended - outcome.started, 3);
}

TEST(LauncherLog, ThatIsANamedPipeWithoutAReaderIsNone) {
  Workshop shop;
  ASSERT_EQ(0, mkfifo((shop.work() / "log").c_str(), 0600));
  expectLaunch(shop.run({.arguments = {"vnc://h/", "-log=log"}, .prepare = limitTheWait}));
}

TEST(LauncherLog, ThatIsANamedPipeWithAReaderIsWritten) {
  Workshop shop;
  const readPipe log(shop.work() / "log");
  const Outcome outcome =
      shop.run({.arguments = {"vnc://h/", "-log=log"}, .prepare = limitTheWait});
  expectLaunch(outcome);
  EXPECT_EQ(
      "TIME: URI = vnc://h/\nexecutable: vncviewer\n"
      "\t\"vncviewer\"\n\t\"--autoreconnect=0\"\n\t\"h\"\n",
      Workshop::withoutStamp(log.written(), outcome));
}

TEST(LauncherLog, ThatIsAFullPipeLosesItsLines) {
  for (const char* name : {"-log=/dev/fd/9", "-log=/dev/stdout"}) {
    SCOPED_TRACE(name);
    Workshop shop;
    const watchedPipe full(0);
    expectLaunch(shop.run({.arguments = {"vnc://h/", name}, .prepare = [&full] {
                             limitTheWait();
                             full.pass(9);
                             full.pass(1);
                           }}));
    EXPECT_EQ("", full.written());
    EXPECT_TRUE(full.stillBlocks()) << "other writers of the pipe are affected";
  }
}

TEST(LauncherLog, ThatIsNearlyFullLosesTheLinesThatDoNotFit) {
  Workshop shop;
  const watchedPipe nearlyFull(100);
  const std::string value(200, 'x');
  const Outcome outcome =
      shop.run({.arguments = {"vnc://h/?a=" + value, "-log=/dev/fd/9"}, .prepare = [&nearlyFull] {
                  limitTheWait();
                  nearlyFull.pass(9);
                }});
  expectLaunch(outcome, {"vncviewer", "--autoreconnect=0", "-a=" + value, "h"});
  EXPECT_EQ("executable: vncviewer\n\t\"vncviewer\"\n\t\"--autoreconnect=0\"\n\t\"h\"\n",
            nearlyFull.written());
}

TEST(LauncherLog, ThatIsAStoppedTerminalStopsNothing) {
  Workshop shop;
  const stoppedTerminal terminal;
  expectLaunch(
      shop.run({.arguments = {"vnc://h/", "-log=" + terminal.name()}, .prepare = limitTheWait}));
}

TEST(LauncherLog, ThatWouldWaitDoesNotDelayAFailure) {
  Workshop shop;
  ASSERT_EQ(0, mkfifo((shop.work() / "log").c_str(), 0600));
  const Outcome outcome = shop.run({.arguments = {"no URI", "-log=log"}, .prepare = limitTheWait});
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("", outcome.err);
}

}  // namespace

}  // namespace launcher_log_test
