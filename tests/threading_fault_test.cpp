// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "children.h"
#include "reports.h"
#include "system_calls.h"
#include "threading.h"

namespace threading_fault_test {

namespace {

bool failNext = false;  // makes the next array that may fail, fail

// The array of a `ThreadData` is one whose allocation yields null when it fails.
void* allocate(std::size_t size) {
  if (failNext) {
    failNext = false;
    return nullptr;
  }
  return systemCalls::newArray.real(size);
}

const replacedCalls here(__FILE__, [] { systemCalls::newArray.replace(allocate); });

}  // namespace

TEST(ThreadData, AssertsThatThereIsMemory) {
  const processEnd end = runFreshChild([] {
    reportTeller handler;
    failNext = true;
    ThreadData::instance(false);
    return 0;
  });
  const std::string_view output = end.output;
  EXPECT_TRUE(output.starts_with(
      "assert 0, severity 4, audience 31: clientObjects != NULL | ../utilities/"))
      << output;
  EXPECT_NE(output.find("threading @ "), std::string_view::npos) << output;
  EXPECT_EQ(end.ending, "signal 6");
}

TEST(ThreadData, IsBuiltWhereThereIsMemory) {
  const processEnd end = runFreshChild([] {
    ThreadData::instance(false);
    return ThreadData::initialised() ? 0 : 1;
  });
  EXPECT_EQ(end.output, "");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

}  // namespace threading_fault_test
