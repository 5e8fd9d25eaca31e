// SPDX-License-Identifier: MIT
// The launcher's semaphore set is gone when the viewer runs, and after every launch
// that fails.
//
// Tests with a namespace of their own see no other sets, and the kernel's first id
// is 0 there.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/ipc.h>
#include <sys/sem.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "launcher_runner.h"
#include "semaphore_sets.h"

namespace launcher_semaphore_test {

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

// Returns whether this process is in a namespace of its own now.
bool newNamespace() {
  return unshare(CLONE_NEWIPC) == 0;
}

#define REQUIRE_NEW_NAMESPACE()                                     \
  do {                                                              \
    if (!newNamespace()) {                                          \
      GTEST_SKIP() << "no new namespace: " << std::strerror(errno); \
    }                                                               \
    ASSERT_EQ(std::vector<int>(), setsOfAll());                     \
  } while (false)

struct Launch {
  const char* what;
  Strings arguments;
  int status;
};

const Launch launches[] = {
    {"a good launch", {"vnc://h/"}, 42},
    {"a good launch with a log", {"vnc://h/", "-log=log"}, 42},
    {"a good launch with another item", {"vnc://h/", "-PROGRAMS=VNC=xyz"}, 42},
    {"a good launch with traces", {"vnc://h/", "-refcount=1"}, 42},
    {"a bad URI", {"no URI"}, 0},
    {"a bad URI with traces", {"no URI", "-refcount=1"}, 0},
    {"a scheme without a program", {"ftp://h/", "-log=log"}, 0},
    {"no argument", {}, 0},
    {"a keyword without a value", {"-x"}, 255},
};

TEST(LauncherSemaphores, AreGoneAfterEveryLaunch) {
  for (const Launch& one : launches) {
    SCOPED_TRACE(one.what);
    Workshop shop;
    const Outcome outcome = shop.run({.arguments = one.arguments});
    EXPECT_EQ(one.status, outcome.status) << outcome.err;
    EXPECT_EQ(std::vector<int>(), setsOf(outcome.pid));
  }
}

TEST(LauncherSemaphores, AreGoneWhereTheFirstIdIsZero) {
  for (const Launch& one : launches) {
    SCOPED_TRACE(one.what);
    REQUIRE_NEW_NAMESPACE();
    Workshop shop;
    for (int count = 0; count < 3; ++count) {
      const Outcome outcome = shop.run({.arguments = one.arguments});
      EXPECT_EQ(one.status, outcome.status) << outcome.err;
      EXPECT_EQ(std::vector<int>(), setsOfAll()) << "after launch " << count;
    }
  }
}

TEST(LauncherSemaphores, AreGoneAfterAFailedExecution) {
  const bool own = newNamespace();
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {"vnc://h/", "-program=./nosuch", "-log=log"}});
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("", outcome.err);
  EXPECT_EQ(std::vector<int>(), own ? setsOfAll() : setsOf(outcome.pid));
}

TEST(LauncherSemaphores, OfOthersAreLeftAlone) {
  REQUIRE_NEW_NAMESPACE();
  const int first = semget(IPC_PRIVATE, 6, 0666);
  const int second = semget(IPC_PRIVATE, 1, 0666);
  ASSERT_GE(first, 0);
  ASSERT_GE(second, 0);
  for (const Launch& one : launches) {
    SCOPED_TRACE(one.what);
    Workshop shop;
    const Outcome outcome = shop.run({.arguments = one.arguments});
    EXPECT_EQ(one.status, outcome.status) << outcome.err;
    EXPECT_EQ((std::vector<int>{first, second}), setsOfAll());
  }
  EXPECT_EQ(0, semctl(first, 0, IPC_RMID));
  EXPECT_EQ(0, semctl(second, 0, IPC_RMID));
}

TEST(LauncherSemaphores, DoNotGatherInTwoHundredLaunches) {
  REQUIRE_NEW_NAMESPACE();
  Workshop shop;
  for (int count = 0; count < 200; ++count) {
    const Outcome outcome = shop.run({.arguments = {"vnc://h/"}});
    ASSERT_EQ(42, outcome.status) << "launch " << count << ": " << outcome.err;
    ASSERT_TRUE(outcome.viewer);
  }
  EXPECT_EQ(std::vector<int>(), setsOfAll());
}

TEST(LauncherSemaphores, DoNotGatherInFourLoopsOfFiftyLaunches) {
  REQUIRE_NEW_NAMESPACE();
  Workshop shops[4];
  for (int count = 0; count < 50; ++count) {
    for (Workshop& shop : shops) {
      shop.start({.arguments = {"vnc://h/", "-URI_SCHEME=SSH"}});
    }
    for (Workshop& shop : shops) {
      const Outcome outcome = shop.finish();
      ASSERT_EQ(42, outcome.status) << "launch " << count << ": " << outcome.err;
    }
  }
  EXPECT_EQ(std::vector<int>(), setsOfAll());
}

}  // namespace

}  // namespace launcher_semaphore_test
