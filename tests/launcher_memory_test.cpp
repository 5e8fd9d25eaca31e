// SPDX-License-Identifier: MIT
// Memory that runs out in hoplaunch and hopexplain: no exception ends the process, and no
// semaphore set is left behind.

#include <sched.h>
#include <sys/resource.h>

#include "explain_runner.h"
#include "launcher_runner.h"
#include "semaphore_sets.h"
#include "soft_limit.h"

namespace launcher_memory_test {

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

std::string manyParameters() {
  std::string uri = "vnc://h/";
  for (int count = 0; count < 8000; ++count) {
    uri += (count == 0 ? "?p" : "&p") + std::to_string(count) + "=v";
  }
  return uri;
}

// Limits the addresses to so many bytes.
std::function<void()> withAddresses(rlim_t bytes) {
  return [bytes] {
    const rlimit noCore{0, 0};
    if (setrlimit(RLIMIT_CORE, &noCore) != 0 || !setSoftLimit(RLIMIT_AS, bytes)) {
      _exit(124);
    }
  };
}

// The smallest number of bytes with which the program starts, with as many arguments as it
// gets later.
rlim_t smallest(const char* binary, const std::string& uri) {
  rlim_t size = 1U << 20;
  for (; size < 64U << 20; size += 64U << 10) {
    Workshop shop;
    const Outcome outcome = shop.run(
        {.arguments = {"-log=log", "-x=" + uri}, .prepare = withAddresses(size), .binary = binary});
    if (outcome.status < 2) {
      break;
    }
  }
  return size;
}

TEST(LauncherMemory, ThatRunsOutIsAFailedLaunch) {
#ifdef SANITIZED
  GTEST_SKIP() << "sanitizers use addresses without bound";
#endif
  const bool own = unshare(CLONE_NEWIPC) == 0;
  const std::string uri = manyParameters();
  int failures = 0;
  int logged = 0;
  int launches = 0;
  const rlim_t first = smallest(HOPLAUNCH_BINARY, uri);
  for (rlim_t size = first; size < first + (16U << 20) && launches < 3; size += 64U << 10) {
    SCOPED_TRACE(std::to_string(size) + " bytes");
    Workshop shop;
    const Outcome outcome =
        shop.run({.arguments = {"-log=log", uri}, .prepare = withAddresses(size)});
    // The viewer may be too large for the limit, then the system ends it.
    if (shop.log().ends_with("\t\"h\"\n")) {
      ++launches;
    } else {
      ++failures;
      EXPECT_EQ(0, outcome.status);
      EXPECT_EQ("", outcome.err);
      EXPECT_FALSE(outcome.viewer);
      EXPECT_LE(outcome.ended - outcome.started, 3) << "nobody may wait";
      // Memory may run out before the options are read.
      EXPECT_TRUE(shop.log().empty() || shop.log().ends_with("not enough memory\n")) << shop.log();
      logged += shop.log().empty() ? 0 : 1;
    }
    EXPECT_EQ(std::vector<int>(), own ? setsOfAll() : setsOf(outcome.pid));
  }
  EXPECT_GE(failures, 10);
  EXPECT_GE(logged, 10);
  EXPECT_EQ(3, launches);
}

TEST(LauncherMemory, ThatRunsOutWithoutALogIsSilent) {
#ifdef SANITIZED
  GTEST_SKIP() << "sanitizers use addresses without bound";
#endif
  const std::string uri = manyParameters();
  Workshop shop;
  const Outcome outcome =
      shop.run({.arguments = {uri},
                .prepare = withAddresses(smallest(HOPLAUNCH_BINARY, uri) + (192U << 10))});
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("", outcome.out);
  EXPECT_EQ("", outcome.err);
  EXPECT_FALSE(outcome.viewer);
  EXPECT_EQ(Strings(), shop.files());
}

TEST(ExplanationMemory, ThatRunsOutIsSaid) {
#ifdef SANITIZED
  GTEST_SKIP() << "sanitizers use addresses without bound";
#endif
  const bool own = unshare(CLONE_NEWIPC) == 0;
  const std::string uri = manyParameters();
  int failures = 0;
  int answers = 0;
  const rlim_t first = smallest(HOPEXPLAIN_BINARY, uri);
  for (rlim_t size = first; size < first + (24U << 20) && answers < 3; size += 128U << 10) {
    SCOPED_TRACE(std::to_string(size) + " bytes");
    Workshop shop;
    const Outcome outcome =
        launcher::explain(shop, {.arguments = {uri}, .prepare = withAddresses(size)});
    if (outcome.status == 0) {
      ++answers;
      EXPECT_EQ("yes", launcher::labelled(outcome.out, "launch"));
    } else {
      ++failures;
      EXPECT_EQ(1, outcome.status);
      EXPECT_EQ("hopexplain: There is not enough memory.\n", outcome.err);
    }
    EXPECT_EQ(std::vector<int>(), own ? setsOfAll() : setsOf(outcome.pid));
  }
  EXPECT_GE(failures, 10);
  EXPECT_EQ(3, answers);
}

}  // namespace

}  // namespace launcher_memory_test
