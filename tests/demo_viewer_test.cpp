// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <unistd.h>

#include "children.h"

namespace demo_viewer_test {

namespace {

TEST(DemoViewer, WritesEachElementOfItsArgumentVectorQuotedOnALine) {
  const processEnd end = runChild([] {
    execl(DEMO_VIEWER, "vncviewer", "-shared", "1", "", "a b\"c\\d\ne", "h", nullptr);
    return 1;
  });
  EXPECT_EQ(end.output, "\"vncviewer\"\n\"-shared\"\n\"1\"\n\"\"\n\"a b\\\"c\\\\d\\ne\"\n\"h\"\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

}  // namespace

}  // namespace demo_viewer_test
