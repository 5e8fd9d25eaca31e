// SPDX-License-Identifier: MIT
// How an exception ends a launch: nothing of the launch is left.

#include "launch_end.h"

#include <gtest/gtest.h>

#include <string>

#include "children.h"
#include "semaphore_sets.h"
#include "threading.h"

namespace launch_end_test {

namespace {

void throwOne() {
  throw 1;
}

void throwInVain() noexcept {
  throwOne();
}

TEST(LaunchEnd, ByAnExceptionLeavesNoSet) {
  const processEnd usual = runChild([] {
    throwInVain();
    return 0;
  });
  const processEnd end = runChild([] {
    guardProcess();
    tell("set", semaphoreSet(false));
    throwInVain();
    return 0;
  });
  EXPECT_EQ("signal 6", end.ending);
  EXPECT_NE(end.errors.find("terminat"), end.errors.npos);  // in the words of the C++ library
  EXPECT_EQ(usual.errors, end.errors);
#ifdef __GLIBCXX__
  EXPECT_EQ("terminate called after throwing an instance of 'int'\n", end.errors);
#endif
  ASSERT_TRUE(end.output.starts_with("set ")) << end.output;
  EXPECT_TRUE(isGone(std::stoi(end.output.substr(4))));
}

}  // namespace

}  // namespace launch_end_test
