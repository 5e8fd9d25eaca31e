// SPDX-License-Identifier: MIT
// How URIs use regular expressions, and what happens when those do not compile.
#include <gtest/gtest.h>
#include <regex.h>

#include <csignal>
#include <cstddef>
#include <string>
#include <vector>

#include "children.h"
#include "reports.h"
#include "system_calls.h"
#include "uri.h"

namespace uri_fault_test {

namespace {

struct compilation {
  std::string pattern;
  int flags;
};

// Only what happens between startRecording and the next look is recorded: the test
// framework uses regular expressions too.
std::vector<compilation> compilations;
int releases = 0;
int failAt = 0;  // which compilation from now on fails; 0 for none

void startRecording() {
  compilations.clear();
  releases = 0;
}

int compile(regex_t* expression, const char* pattern, int flags) {
  compilations.push_back({pattern, flags});
  if (failAt > 0 && --failAt == 0) {
    return systemCalls::regcomp.real(expression, "(", REG_EXTENDED);
  }
  return systemCalls::regcomp.real(expression, pattern, flags);
}

void release(regex_t* expression) {
  releases++;
  systemCalls::regfree.real(expression);
}

const replacedCalls here(__FILE__, [] {
  systemCalls::regcomp.replace(compile);
  systemCalls::regfree.replace(release);
});

// The compilations of one parse, whatever the text.
void checkRecorded() {
  const std::vector<compilation> recorded = compilations;
  const int released = releases;
  ASSERT_EQ(recorded.size(), 2U);
  EXPECT_EQ(recorded[0].pattern, "^[a-z][a-z0-9+.\\-]*://");
  EXPECT_EQ(recorded[0].flags, REG_EXTENDED | REG_ICASE);
  EXPECT_EQ(recorded[1].pattern, "^([a-z0-9]+([-.][a-z0-9]+)*)|(\\[[0-9a-f:.]+\\])(:[0-9]+)?$");
  EXPECT_EQ(recorded[1].flags, REG_EXTENDED | REG_ICASE);
  EXPECT_EQ(released, 2) << "both are released again";
}

TEST(URIexpressions, AreCompiledAfreshForEveryText) {
  startRecording();
  URI uri("vnc://h/");
  checkRecorded();
  for (const char* text : {"ssh://a+b/?p=1", "vnc://h/", "vnc://-/", "no URI", ""}) {
    SCOPED_TRACE(testing::Message() << "text \"" << text << "\"");
    startRecording();
    uri.set(text);
    checkRecorded();
    startRecording();
    uri = text;
    checkRecorded();
  }
}

TEST(URIexpressions, AreNotNeededWithoutAText) {
  startRecording();
  URI uri;
  URI copy(uri);
  copy.add("h");
  copy.args("x", 0, AS_EQUALS, nullptr);
  EXPECT_TRUE(copy.format() == "VNC://h/");
  const std::size_t compiled = compilations.size();
  EXPECT_EQ(compiled, 0U);
}

TEST(URIexpressionsDeathTest, AbortWhenTheSchemeExpressionDoesNotCompile) {
  ownTheSemaphores();
  for (const char* text : {"vnc://h/", "no URI"}) {
    SCOPED_TRACE(text);
    EXPECT_EXIT(
        {
          leaveNoCoreFile();
          const reportTeller witness(STDERR_FILENO, inWords);
          failAt = 1;
          const URI uri(text);
        },
        testing::KilledBySignal(SIGABRT),
        "severity=Fatal domain=assert code=assert failure "
        "expression=<REGEXPR_OKAY == scheme_RE\\.CompileError\\(\\)> "
        "at <\\.\\./utilities/uri @ [0-9]+>");
  }
}

TEST(URIexpressionsDeathTest, AbortWhenTheMachineExpressionDoesNotCompile) {
  ownTheSemaphores();
  // This happens before the text is read, so it holds for any text.
  for (const char* text : {"vnc://h/", "no URI"}) {
    SCOPED_TRACE(text);
    EXPECT_EXIT(
        {
          leaveNoCoreFile();
          const reportTeller witness(STDERR_FILENO, inWords);
          failAt = 2;
          const URI uri(text);
        },
        testing::KilledBySignal(SIGABRT),
        "severity=Fatal domain=assert code=assert failure "
        "expression=<REGEXPR_OKAY == machine_RE\\.CompileError\\(\\)> "
        "at <\\.\\./utilities/uri @ [0-9]+>");
  }
}

}  // namespace

}  // namespace uri_fault_test
