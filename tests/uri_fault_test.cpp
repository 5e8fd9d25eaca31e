// How URIs use regular expressions, and what happens when those do not compile.
#include <gtest/gtest.h>
#include <regex.h>

#include <csignal>
#include <cstddef>
#include <string>
#include <vector>

#include "assertion_witness.h"
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

}  // namespace

extern "C" int __real_regcomp(regex_t* expression, const char* pattern, int flags);
extern "C" void __real_regfree(regex_t* expression);

extern "C" int __wrap_regcomp(regex_t* expression, const char* pattern, int flags) {
  compilations.push_back({pattern, flags});
  if (failAt > 0 && --failAt == 0) {
    return __real_regcomp(expression, "(", REG_EXTENDED);
  }
  return __real_regcomp(expression, pattern, flags);
}

extern "C" void __wrap_regfree(regex_t* expression) {
  releases++;
  __real_regfree(expression);
}

namespace {

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
          const assertionWitness witness;
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
  // Before the text is looked at, so for any text.
  for (const char* text : {"vnc://h/", "no URI"}) {
    SCOPED_TRACE(text);
    EXPECT_EXIT(
        {
          const assertionWitness witness;
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
