// SPDX-License-Identifier: MIT
// Stack traces: what is written, and how its lines are made readable.

#include "stack.h"

#include <gtest/gtest.h>
#include <ucontext.h>

#include <csignal>
#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "children.h"
#include "kept_traces.h"
#include "system_calls.h"
#include "texts.h"

namespace {

bool contextFails = false;
bool symbolsFail = false;
volatile int kept = 0;  // stops calls from becoming jumps
std::ostringstream* target = nullptr;

const replacedCalls here(__FILE__, [] {
  systemCalls::getcontext.replace([](ucontext_t* context) {
    return contextFails ? -1 : systemCalls::getcontext.real(context);
  });
  systemCalls::backtrace_symbols.replace([](void* const* frames, int count) {
    return symbolsFail ? nullptr : systemCalls::backtrace_symbols.real(frames, count);
  });
});

}  // namespace

// Exported, so that their names are in the trace, and called through pointers
// that no optimiser follows.
namespace outer {
[[gnu::noinline]] void writeTrace(int, const char*) {
  *target << stack();
  kept = kept + 1;
}
}  // namespace outer
void (*volatile traceWriter)(int, const char*) = outer::writeTrace;

extern void (*volatile deepCaller)(int);
[[gnu::noinline]] void callDeep(int depth) {
  if (depth == 0)
    traceWriter(1, "");
  else
    deepCaller(depth - 1);
  kept = kept + 1;
}
void (*volatile deepCaller)(int) = callDeep;

extern "C" [[gnu::noinline]] void plainName() {
  traceWriter(1, "");
  kept = kept + 1;
}

namespace {

std::string traceFrom(int depth) {
  std::ostringstream out;
  target = &out;
  deepCaller(depth);
  target = nullptr;
  return out.str();
}

// The position of the first line at or after `from` that holds `part`.
std::size_t find(const std::vector<std::string>& lines, const std::string& part,
                 std::size_t from = 0) {
  while (from < lines.size() && lines[from].find(part) == std::string::npos) from++;
  return from;
}

TEST(stack, WritesATraceBetweenTwoLines) {
  const std::string text = traceFrom(0);
  const std::vector<std::string> lines = linesOf(text);
  ASSERT_GE(lines.size(), 4u) << text;
  EXPECT_EQ(lines.front(), "Stack trace:");
  EXPECT_EQ(lines.back(), "End of stack trace");
  EXPECT_EQ(text.back(), '\n');
  for (const std::string& line : lines) EXPECT_NE(line, "") << text;
}

TEST(stack, IsWrittenByItsOperatorAndByWrite) {
  std::ostringstream out;
  const stack trace;
  EXPECT_EQ(&trace.write(out), &out);
  EXPECT_EQ(out.str().substr(0, 13), "Stack trace:\n");
  std::ostringstream streamed;
  EXPECT_EQ(&(streamed << trace), &streamed);
  EXPECT_EQ(streamed.str().substr(0, 13), "Stack trace:\n");
}

TEST(stack, NamesFunctionsFromTheInnermostOut) {
  const std::string text = traceFrom(1);
  const std::vector<std::string> lines = linesOf(text);
  const std::size_t inner = find(lines, "(outer::writeTrace(int, const char*)+0x");
  ASSERT_LT(inner, lines.size()) << text;
  const std::size_t deep = find(lines, "(callDeep(int)+0x");
  ASSERT_LT(deep, lines.size()) << text;
  EXPECT_LT(inner, deep) << text;
  EXPECT_NE(lines[deep + 1].find("(callDeep(int)+0x"), std::string::npos)
      << "each call is a frame:\n"
      << text;
}

TEST(stack, LeavesNamesOfCFunctionsAsTheyAre) {
  std::ostringstream out;
  target = &out;
  plainName();
  target = nullptr;
  const std::vector<std::string> lines = linesOf(out.str());
  EXPECT_LT(find(lines, "(plainName+0x"), lines.size()) << out.str();
}

TEST(stack, HoldsAtMostAHundredFrames) {
  const std::string text = traceFrom(200);
  const std::vector<std::string> lines = linesOf(text);
  EXPECT_EQ(lines.size(), 102u) << text;
  EXPECT_EQ(lines.back(), "End of stack trace");
  EXPECT_NE(lines[100].find("(callDeep(int)+0x"), std::string::npos) << text;
}

TEST(stack, IsTakenWhenItIsWritten) {
  const stack early;
  std::ostringstream out;
  target = &out;
  const std::size_t before = linesOf(traceFrom(0)).size();
  const std::size_t after = linesOf(traceFrom(7)).size();
  EXPECT_EQ(after, before + 7);
  target = nullptr;
  early.write(out);
  EXPECT_EQ(out.str().find("callDeep"), std::string::npos) << out.str();
}

TEST(stack, SaysWhenThereIsNoContext) {
  contextFails = true;
  std::ostringstream out;
  const stack trace;
  EXPECT_EQ(&trace.write(out), &out);
  EXPECT_EQ(out.str(), "getcontext failed\n");
  contextFails = false;
}

TEST(signalHandler, SaysWhenThereIsNoContext) {
  const processEnd end = runSharingChild([] {
    stack::installHandler();
    contextFails = true;
    std::raise(SIGSEGV);  // no fault that would come again
  });
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(end.errors, "signal 11 caught: \ngetcontext failed\n\n");
}

TEST(stack, HasNoFramesWhereThereIsNoMemoryForTheirNames) {
  symbolsFail = true;
  std::ostringstream out;
  const stack trace;
  EXPECT_EQ(&trace.write(out), &out);
  EXPECT_EQ(out.str(), "Stack trace:\nEnd of stack trace\n");
  symbolsFail = false;
}

TEST(convertSymbol, ReplacesTheMangledName) {
  const struct {
    const char* line;
    const char* expected;
  } cases[] = {
      {"./prog(_Z3fooi+0x12) [0x80495e4]", "./prog(foo(int)+0x12) [0x80495e4]"},
      {"/usr/bin/prog(_ZN3foo3barEiPKc+0x0) [0x1]",
       "/usr/bin/prog(foo::bar(int, const char*)+0x0) [0x1]"},
      // A "+" before the symbol does not end it.
      {"/opt/c++/prog(_Z3foov+0x12) [0x1]", "/opt/c++/prog(foo(void)+0x12) [0x1]"},
      {"+(_Z3foov+", "+(foo(void)+"},
      // Neither do those after the first.
      {"p(_Z3foov+0x12+0x13) [0x1]", "p(foo(void)+0x12+0x13) [0x1]"},
      {"p(_Z3fooi+(_Z3bari+", "p(foo(int)+(_Z3bari+"},
  };
  for (const auto& c : cases) EXPECT_EQ(convertSymbol(c.line), c.expected) << c.line;
}

TEST(convertSymbol, LeavesOtherLinesAsTheyAre) {
  const char* const lines[] = {
      "",
      "(",
      "(_",
      "(_Z",
      "./prog [0x80495e4]",
      "./prog() [0x80495e4]",
      "./prog(+0x12) [0x80495e4]",
      "./prog(main+0x12) [0x80495e4]",
      "./prog(_start+0x21) [0x80495e4]",
      "/lib/libc.so.6(__libc_start_main+0xf3) [0xf7]",
      "./prog(_Z3fooi) [0x80495e4]",         // no "+" after it
      "/opt/c++/prog(_Z3fooi) [0x80495e4]",  // only before it
      "./prog(__Z3fooi+0x12) [0x80495e4]",
      "./prog _Z3fooi+0x12 [0x80495e4]",
      "./prog(_z3fooi+0x12) [0x80495e4]",
      "./prog( _Z3fooi+0x12) [0x80495e4]",
  };
  for (const char* line : lines) EXPECT_EQ(convertSymbol(line), line);
}

TEST(convertSymbol, ReadsNoFurtherThanItsLine) {
  const std::string line = "p(_Z3fooi+0x12)";
  for (std::size_t size = 0; size <= line.size(); size++) {
    // An array of its own, whose end the sanitizers know.
    const std::vector<char> part(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(size));
    const std::string expected =
        size < 10 ? line.substr(0, size) : "p(foo(int)" + line.substr(9, size - 9);
    EXPECT_EQ(convertSymbol(std::string_view(part.data(), part.size())), expected);
  }
}

}  // namespace
