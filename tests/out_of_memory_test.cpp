// SPDX-License-Identifier: MIT
// hopopen without memory: the message when there is none even for an exception.

#include "out_of_memory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <new>
#include <string>

#include "children.h"
#include "options.h"
#include "texts.h"

namespace out_of_memory_test {

namespace {

constexpr char noMemory[] =
    "hopopen: There is not enough memory. Close some programs, and try again. (start)\n";

template <class What>
void throwOne(What what) {
  throw what;
}

template <class What>
void throwInVain(What what) noexcept {
  throwOne(what);
}

// The ending of a process that throws where nothing may be thrown.
template <class What>
processEnd endOf(const hopopen::options& asked, What what) {
  return runChild([&] {
    hopopen::guardMemory(asked);
    throwInVain(what);
    return 0;
  });
}

TEST(EndWithoutMemory, IsARefusalThatIsSaidAndLogged) {
  const std::string log = std::filesystem::temp_directory_path() /
                          ("out-of-memory-" + std::to_string(getpid()) + ".log");
  hopopen::options asked;
  asked.log = log;
  const processEnd end = endOf(asked, std::bad_alloc());
  EXPECT_EQ("exit 3", end.ending);
  EXPECT_EQ(noMemory, end.errors);
  EXPECT_EQ("", end.output);
  const std::string logged = readFile(log);
  EXPECT_TRUE(logged.ends_with(noMemory)) << logged;
  std::filesystem::remove(log);
}

TEST(EndWithoutMemory, OfAWishOrADryRunIsNotLogged) {
  const std::string log = std::filesystem::temp_directory_path() /
                          ("out-of-memory-" + std::to_string(getpid()) + ".log");
  for (const bool dry : {false, true}) {
    hopopen::options asked;
    asked.log = log;
    asked.dryRun = dry;
    asked.what = dry ? hopopen::wish::OPEN : hopopen::wish::LIST;
    const processEnd end = endOf(asked, std::bad_alloc());
    EXPECT_EQ("exit 3", end.ending);
    EXPECT_EQ(noMemory, end.errors);
    EXPECT_FALSE(std::filesystem::exists(log));
  }
}

TEST(EndWithoutMemory, IsQuietWhenAsked) {
  hopopen::options asked;
  asked.quiet = true;
  const processEnd end = endOf(asked, std::bad_alloc());
  EXPECT_EQ("exit 3", end.ending);
  EXPECT_EQ("", end.errors);
}

// What the C++ library says, each in its words.
TEST(EndWithoutMemory, IsNotThatOfOtherExceptions) {
  const processEnd usual = runChild([] {
    throwInVain(1);
    return 0;
  });
  const processEnd end = endOf(hopopen::options(), 1);
  EXPECT_EQ("signal 6", end.ending);
  EXPECT_NE(end.errors.find("terminat"), end.errors.npos);
  EXPECT_EQ(usual.errors, end.errors);
#ifdef __GLIBCXX__
  EXPECT_EQ("terminate called after throwing an instance of 'int'\n", end.errors);
#endif
}

// `std::terminate` without an exception.
TEST(EndWithoutMemory, IsNotThatOfAProgramThatGivesUp) {
  const hopopen::options asked;
  const processEnd usual = runChild([]() -> int { std::terminate(); });
  const processEnd end = runChild([&]() -> int {
    hopopen::guardMemory(asked);
    std::terminate();
  });
  EXPECT_EQ("signal 6", end.ending);
  EXPECT_NE(end.errors.find("terminat"), end.errors.npos);
  EXPECT_EQ(usual.errors, end.errors);
#ifdef __GLIBCXX__
  EXPECT_EQ("terminate called without an active exception\n", end.errors);
#endif
}

}  // namespace

}  // namespace out_of_memory_test
