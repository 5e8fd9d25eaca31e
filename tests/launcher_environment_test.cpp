// SPDX-License-Identifier: MIT
// What the viewer finds: the descriptors, the environment and the signals that the
// launcher got, and nothing else.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <map>
#include <string>

#include "launcher_runner.h"

namespace launcher_environment_test {

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

// A sanitizer's runtime uses some signals itself.
#ifdef SANITIZED
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

void closeFrom(int first) {
  for (int descriptor = first; descriptor < 1024; ++descriptor) {
    close(descriptor);
  }
}

struct DescriptorCase {
  const char* what;
  Strings arguments;
  std::function<void()> prepare;
  std::map<int, std::string> expected;  // "out" and "err" stand for their files
};

TEST(ViewerDescriptors, AreThoseOfTheLauncher) {
  const DescriptorCase cases[] = {
      {"without a log",
       {"vnc://h/"},
       [] { closeFrom(3); },
       {{0, "/dev/null"}, {1, "out"}, {2, "err"}}},
      {"with a log",
       {"vnc://h/", "-log=log"},
       [] { closeFrom(3); },
       {{0, "/dev/null"}, {1, "out"}, {2, "err"}}},
      {"with traces",
       {"vnc://h/", "-log=log", "-refcount=1"},
       [] { closeFrom(3); },
       {{0, "/dev/null"}, {1, "out"}, {2, "err"}}},
      {"with more descriptors",
       {"vnc://h/", "-log=log"},
       [] {
         closeFrom(3);
         dup2(1, 3);
         dup2(0, 5);
         dup2(2, 250);
       },
       {{0, "/dev/null"}, {1, "out"}, {2, "err"}, {3, "out"}, {5, "/dev/null"}, {250, "err"}}},
      {"without standard error",
       {"vnc://h/", "-log=log"},
       [] { closeFrom(2); },
       {{0, "/dev/null"}, {1, "out"}}},
      {"with traces but without standard error",
       {"vnc://h/", "-log=log", "-refcount=1"},
       [] { closeFrom(2); },
       {{0, "/dev/null"}, {1, "out"}}},
      {"without any", {"vnc://h/", "-log=log"}, [] { closeFrom(0); }, {}},
  };
  for (const DescriptorCase& one : cases) {
    SCOPED_TRACE(one.what);
    Workshop shop;
    const Outcome outcome = shop.run({.arguments = one.arguments, .prepare = one.prepare});
    EXPECT_EQ(42, outcome.status);
    ASSERT_TRUE(outcome.viewer) << outcome.err;
    std::map<int, std::string> found = outcome.viewer->descriptors;
    for (auto& [number, what] : found) {
      if (what != "/dev/null") {
        what = std::filesystem::path(what).filename();
      }
    }
    EXPECT_EQ(one.expected, found);
    if (one.arguments.size() > 1) {
      EXPECT_EQ(
          "TIME: URI = vnc://h/\n"
          "executable: vncviewer\n"
          "\t\"vncviewer\"\n"
          "\t\"--autoreconnect=0\"\n"
          "\t\"h\"\n",
          Workshop::withoutStamp(shop.log(), outcome));
    }
  }
}

TEST(ViewerEnvironment, IsThatOfTheLauncher) {
  Workshop shop;
  Strings environment = shop.environment();
  environment.insert(environment.begin(), "FIRST=1");
  for (const char* variable :
       {"EMPTY=", "TWICE=1", "TWICE=2", "NO_EQUALS", "=x", "A=b=c", "BYTES=\x01\x7f\xff \n",
        "LANG=xx_YY", "LC_ALL=tr_TR.UTF-8", "COLUMNS=10", "lower=Case"}) {
    environment.emplace_back(variable);
  }
  environment.push_back("LARGE=" + std::string(100000, 'x'));
  const Outcome outcome =
      shop.run({.arguments = {"vnc://h/", "-log=log", "-URI_SCHEME=SSH", "-hoplaunch=1"},
                .environment = environment});
  EXPECT_EQ(42, outcome.status);
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ(environment, outcome.viewer->environment);
}

TEST(ViewerEnvironment, MayBeEmpty) {
  Workshop shop;
  const Outcome outcome = shop.run(
      {.arguments = {"vnc://h/", "-log=log", "-program=bin/xyz"}, .environment = Strings()});
  EXPECT_EQ(42, outcome.status);
  const auto viewer = Workshop::recording(shop.work() / "recording");
  ASSERT_TRUE(viewer) << outcome.err;
  EXPECT_EQ(Strings(), viewer->environment);
  EXPECT_EQ((Strings{"xyz", "--autoreconnect=0", "h"}), viewer->arguments);
}

// A Turkish locale would change the case of "I".
TEST(ViewerEnvironment, ChangesNothingByItsLocale) {
  Workshop shop;
  Strings environment = shop.environment();
  environment.insert(environment.end(), {"LANG=tr_TR.UTF-8", "LC_ALL=tr_TR.UTF-8"});
  const Outcome outcome =
      shop.run({.arguments = {"vnc://h/?I=1&i=2&I=3", "-PROGRAMS=vnc=xyz", "-style=SEPARATE"},
                .environment = environment});
  EXPECT_EQ(42, outcome.status);
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ((Strings{"xyz", "--autoreconnect", "0", "-I", "3", "h"}), outcome.viewer->arguments);
}

// All signals but SIGKILL, SIGSTOP and the two that the C library keeps for itself.
bool changeable(int number) {
  return number != SIGKILL && number != SIGSTOP && number != 32 && number != 33 &&
         !(sanitized && (number == SIGSEGV || number == SIGBUS || number == SIGFPE));
}

void setSignals(void (*disposition)(int), bool blocked) {
  for (int number = 1; number <= 64; ++number) {
    if (number != 32 && number != 33) {
      signal(number, changeable(number) ? disposition : SIG_DFL);
    }
  }
  sigset_t mask;
  if (blocked) {
    sigfillset(&mask);
  } else {
    sigemptyset(&mask);
  }
  sigprocmask(SIG_SETMASK, &mask, nullptr);
}

TEST(ViewerSignals, AreThoseOfTheLauncher) {
  constexpr const char* none = "0000000000000000";
  constexpr const char* all = "fffffffe7ffbfeff";
  constexpr const char* allIgnored = sanitized ? "fffffffe7ffbfa3f" : all;
  struct {
    const char* what;
    std::function<void()> prepare;
    const char* ignored;
    const char* blocked;
  } const cases[] = {
      {"nothing ignored or blocked", [] { setSignals(SIG_DFL, false); }, none, none},
      {"everything ignored", [] { setSignals(SIG_IGN, false); }, allIgnored, none},
      {"everything blocked", [] { setSignals(SIG_DFL, true); }, none, all},
      {"everything ignored and blocked", [] { setSignals(SIG_IGN, true); }, allIgnored, all},
      {"a hangup ignored",
       [] {
         setSignals(SIG_DFL, false);
         signal(SIGHUP, SIG_IGN);
       },
       "0000000000000001", none},
      {"a broken pipe ignored",
       [] {
         setSignals(SIG_DFL, false);
         signal(SIGPIPE, SIG_IGN);
       },
       "0000000000001000", none},
  };
  for (const auto& one : cases) {
    for (const char* log : {"-log=log", "-log=/dev/full", "-log="}) {
      SCOPED_TRACE(std::string(one.what) + ", " + log);
      Workshop shop;
      const Outcome outcome = shop.run({.arguments = {"vnc://h/", log}, .prepare = one.prepare});
      EXPECT_EQ(42, outcome.status);
      ASSERT_TRUE(outcome.viewer) << outcome.err;
      std::map<std::string, std::string> status = outcome.viewer->status;
      EXPECT_EQ(one.ignored, status["SigIgn"]);
      EXPECT_EQ(one.blocked, status["SigBlk"]);
      EXPECT_EQ(none, status["SigCgt"]);
      EXPECT_EQ(none, status["SigPnd"]);
      EXPECT_EQ(none, status["ShdPnd"]);
    }
  }
}

TEST(ViewerProcess, HasTheFileCreationMaskAndFolderOfTheLauncher) {
  struct {
    mode_t mask;
    const char* text;
  } const cases[] = {{027, "0027"}, {0, "0000"}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.text);
    Workshop shop;
    std::filesystem::create_directory(shop.work() / "below");
    const Outcome outcome =
        shop.run({.arguments = {"vnc://h/", "-log=log", "-program=../bin/xyz"}, .prepare = [&] {
                    umask(one.mask);
                    if (chdir("below") != 0) {
                      _exit(124);
                    }
                  }});
    EXPECT_EQ(42, outcome.status);
    ASSERT_TRUE(outcome.viewer) << outcome.err;
    EXPECT_EQ(one.text, outcome.viewer->status.at("Umask"));
    EXPECT_EQ(std::filesystem::canonical(shop.work() / "below").string(), outcome.viewer->folder);
  }
}

}  // namespace

}  // namespace launcher_environment_test
