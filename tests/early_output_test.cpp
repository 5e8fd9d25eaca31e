// SPDX-License-Identifier: MIT
// Output to standard error from a static initialiser, in a program whose sources do
// not set up the standard streams themselves.  And types that a program first uses
// late, and still uses at the very end.

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "children.h"
#include "countedMap.h"
#include "events.h"
#include "refcount.h"
#include "stack.h"
#include "stringcomp.h"
#include "trace.h"
#include "very_end.h"

#include <gtest/gtest.h>

namespace {

// What standard error received while `body` ran.
template <class Body>
std::string standardErrorOf(Body body) {
  std::FILE* const file = std::tmpfile();
  const int kept = dup(STDERR_FILENO);
  dup2(fileno(file), STDERR_FILENO);
  body();
  dup2(kept, STDERR_FILENO);
  close(kept);
  std::rewind(file);
  std::string result(10000, '\0');
  result.resize(std::fread(result.data(), 1, result.size(), file));
  std::fclose(file);
  return result;
}

struct earlyOutput {
  earlyOutput()
      : traced(runSharingChild([] {
          traceFlag::out() << "early trace\n";
          return 0;
        })),
        handled(standardErrorOf([] {
          const stderrHandler handler(5, AUD_ALL);
          commonEvent(WARNING, AUD_ALL, EC_COMMENT, "early", "earlyOutput");
        })),
        child(runSharingChild([] {
          signalHandler(SIGFPE);
          return 0;
        })) {}

  processEnd traced;  // the first, before anything else sets the streams up
  std::string handled;
  processEnd child;
};

__attribute__((init_priority(110))) const earlyOutput early;

// A value of a counted map.
struct value {
  value(const std::string&, const std::string&, bool, bool) {}
  static const char* className() { return "value"; }
};

using lateMap = countedMap<std::string, value, caseInsensitive>;

}  // namespace

TEST(EarlyOutput, OfATraceReachesStandardError) {
  EXPECT_EQ(early.traced.errors, "early trace\n");
  EXPECT_EQ(early.traced.ending, "exit 0");
}

TEST(EarlyOutput, OfAHandlerReachesStandardError) {
  const std::size_t colon = early.handled.find(": ");
  ASSERT_NE(colon, std::string::npos) << early.handled;
  EXPECT_EQ(early.handled.substr(colon),
            ": Warning: commonEvent/comment \"early\" | earlyOutput\n");
}

TEST(EarlyOutput, OfTheSignalHandlerReachesStandardError) {
  EXPECT_EQ(early.child.errors.substr(0, 31), "signal 8 caught: \nStack trace:\n");
  EXPECT_EQ(early.child.ending, "exit 0");
}

TEST(LateUse, OfATypeWhoseHolderIsGoneFindsNothing) {
  const processEnd end = runFreshChild([] {
    {
      Treference<lateMap> writer(RT_EMPTY);
      if (!writer.setCanonical(false)) return 1;
    }
    atVeryEnd = [] {
      Treference<lateMap> reader(RT_READ);
      Treference<lateMap> writer(RT_UPDATE);
      dprintf(STDOUT_FILENO, "reader %s, writer %s, %s\n", reader.null() ? "null" : "holds",
              writer.null() ? "null" : "holds", lateMap().className());
    };
    return 0;
  });
  EXPECT_EQ(end.output, "reader null, writer null, countedMap<value>\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}
