// SPDX-License-Identifier: MIT
// The trace lines of the flag "refcount".
#include <gtest/gtest.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <streambuf>
#include <string>

#include "counted_box.h"
#include "kept_traces.h"
#include "refcount.h"
#include "section_watch.h"
#include "system_calls.h"
#include "trace.h"

namespace refcount_trace_test {

namespace {

const replacedCalls here(__FILE__, sectionWatch::start);

/// Takes the trace output, and watches in which section it is written.
class traceCapture : private std::streambuf {
 public:
  traceCapture() : m_old(traceFlag::out().rdbuf(this)), m_flags(traceFlag::out().flags()) {
    traceFlag::out().unsetf(std::ios_base::unitbuf);
  }
  ~traceCapture() override {
    traceFlag::out().rdbuf(m_old);
    traceFlag::out().flags(m_flags);
  }

  /// What was written since the last call.
  std::string take() {
    std::string result;
    result.swap(m_text);
    m_flushed = 0;
    return result;
  }
  bool empty() const { return m_text.empty(); }
  bool flushed() const { return m_flushed == m_text.size(); }
  /// True if everything was written inside `CS_LOGOUT` and no other section.
  bool inSection() const { return m_inSection; }

 private:
  void note() {
    m_inSection = m_inSection && sectionWatch::held[CS_LOGOUT] && !sectionWatch::held[CS_REFCOUNT];
  }
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    note();
    m_text.append(text, static_cast<std::size_t>(count));
    return count;
  }
  int_type overflow(int_type c) override {
    note();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
      m_text.push_back(traits_type::to_char_type(c));
    }
    return traits_type::not_eof(c);
  }
  int sync() override {
    m_flushed = m_text.size();
    return 0;
  }

  std::streambuf* m_old;
  std::ios_base::fmtflags m_flags;
  std::string m_text;
  std::size_t m_flushed = 0;
  bool m_inSection = true;
};

/// The address as the trace shows it.
std::string address(const counted* object) {
  char result[2 + 16 + 1];
  std::snprintf(result, sizeof result, "0x%" PRIxPTR, reinterpret_cast<std::uintptr_t>(object));
  return result;
}

/// Checks that a block is one line, a stack trace and an empty line.
void expectBlock(const std::string& block, const std::string& line) {
  const std::string start = line + "\nStack trace:\n";
  const std::string end = "\nEnd of stack trace\n\n";
  EXPECT_EQ(block.substr(0, start.size()), start);
  ASSERT_GE(block.size(), start.size() + end.size()) << block;
  EXPECT_EQ(block.substr(block.size() - end.size()), end);
  EXPECT_EQ(block.find("Stack trace:", start.size()), std::string::npos) << "two blocks: " << block;
}

class RefcountTrace : public testing::Test {
 protected:
  RefcountTrace() { EXPECT_TRUE(traceFlag::set("refcount", 1)) << "there is no such flag"; }
  ~RefcountTrace() override { traceFlag::set("refcount", 0); }

  traceCapture trace;
};

/// A box of another class, whose copies are plain boxes.
class lidded : public box {
 public:
  explicit lidded(const std::string& name) : box(name) {}
  const char* className() const override { return "lidded"; }
};

TEST(RefcountFlag, IsOffByDefault) {
  EXPECT_EQ(traceFlag::level("refcount"), 0);
  traceCapture trace;
  {
    boxRef published(boxIn(RCS_CANONICAL, "a"));
    boxRef writer;
    writer.set(true, published);
    EXPECT_TRUE(writer.publishIn(published, true));
  }
  EXPECT_EQ(trace.take(), "");
}

TEST_F(RefcountTrace, TellsOfAClone) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef writer;
  EXPECT_EQ(entriesDuring(CS_LOGOUT, [&] { writer.set(true, published); }), 1);
  EXPECT_TRUE(trace.flushed());
  EXPECT_TRUE(trace.inSection());
  expectBlock(trace.take(),
              "-1 box " + address(published.ptr()) + " cloned as " + address(writer.ptr()));
}

TEST_F(RefcountTrace, TellsTheClassOfTheCloneNotOfTheSource) {
  box* source = new lidded("a");
  source->put(RCS_CANONICAL);
  const boxRef published(source);
  boxRef writer;
  writer.set(true, published);
  expectBlock(trace.take(), "-1 box " + address(source) + " cloned as " + address(writer.ptr()));
}

TEST_F(RefcountTrace, TellsNothingWhenThereIsNoClone) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  published->cloneable = false;
  boxRef writer;
  writer.set(true, published);
  const boxRef nothing;
  writer.set(true, nothing);
  EXPECT_EQ(trace.take(), "");
}

TEST_F(RefcountTrace, TellsNothingOfReadingAndCounting) {
  const boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef reader;
  reader.set(false, published);
  boxRef copy(reader);
  copy.recycle();
  EXPECT_EQ(trace.take(), "");
}

TEST_F(RefcountTrace, TellsOfADestruction) {
  box* object = new box("a");
  delete object;
  EXPECT_TRUE(trace.inSection());
  EXPECT_EQ(trace.take(), "-1 destroying  " + address(object) + " parent = 0x0\n");
}

TEST_F(RefcountTrace, TellsOfTheParentAsACloneIsDestroyed) {
  box* parent = boxIn(RCS_CANONICAL, "a");
  box* clone = nullptr;
  {
    boxRef writer;
    {
      const boxRef published(parent);
      writer.set(true, published);
    }
    clone = writer.pointer();
    trace.take();
  }
  EXPECT_TRUE(trace.inSection());
  EXPECT_EQ(trace.take(), "-1 destroying  " + address(clone) + " parent = " + address(parent) +
                              "\n-1 destroying  " + address(parent) + " parent = 0x0\n");
}

TEST_F(RefcountTrace, TellsOfAFirstPublication) {
  boxRef published;
  boxRef writer(new box("a"));
  EXPECT_EQ(entriesDuring(CS_LOGOUT, [&] { EXPECT_TRUE(writer.publishIn(published, true)); }), 1);
  EXPECT_TRUE(trace.inSection());
  expectBlock(trace.take(), "-1 box " + address(writer.ptr()) + " supercedes 0x0");
}

TEST_F(RefcountTrace, TellsOfAPublicationBeforeTheDestructionOfWhatItReplaces) {
  box* old = boxIn(RCS_CANONICAL, "a");
  boxRef published(old);
  boxRef writer;
  writer.set(true, published);
  trace.take();
  EXPECT_EQ(entriesDuring(CS_LOGOUT, [&] { EXPECT_TRUE(writer.publishIn(published, true)); }), 2);
  EXPECT_TRUE(trace.inSection());
  std::string text = trace.take();
  const std::string last = "-1 destroying  " + address(old) + " parent = 0x0\n";
  ASSERT_GT(text.size(), last.size());
  EXPECT_EQ(text.substr(text.size() - last.size()), last);
  text.resize(text.size() - last.size());
  expectBlock(text, "-1 box " + address(writer.ptr()) + " supercedes " + address(old));
}

TEST_F(RefcountTrace, TellsOfThePreviousInstanceAndThenOfTheParent) {
  box* parent = boxIn(RCS_CANONICAL, "a");
  box* previous = new box("b");
  boxRef published(parent);
  boxRef late;
  late.set(true, published);
  {
    boxRef other(previous);
    EXPECT_TRUE(other.publishIn(published, false));
  }
  trace.take();
  EXPECT_TRUE(late.publishIn(published, false));
  const std::string text = trace.take();
  const std::string last = "-1 destroying  " + address(previous) + " parent = 0x0\n" +
                           "-1 destroying  " + address(parent) + " parent = 0x0\n";
  ASSERT_GT(text.size(), last.size());
  EXPECT_EQ(text.substr(text.size() - last.size()), last);
}

TEST_F(RefcountTrace, NamesTheClassOfTheNewInstanceElseOfTheOldElseNull) {
  boxRef published;
  boxRef nothing;
  EXPECT_TRUE(nothing.publishIn(published, false));
  expectBlock(trace.take(), "-1 <null> 0x0 supercedes 0x0");

  box* first = new lidded("a");
  const boxRef keepsFirst(first);
  {
    boxRef writer(first);
    EXPECT_TRUE(writer.publishIn(published, false));
  }
  expectBlock(trace.take(), "-1 lidded " + address(first) + " supercedes 0x0");

  box* second = new box("b");
  const boxRef keepsSecond(second);
  {
    boxRef writer(second);
    EXPECT_TRUE(writer.publishIn(published, false));
  }
  expectBlock(trace.take(), "-1 box " + address(second) + " supercedes " + address(first));

  EXPECT_TRUE(nothing.publishIn(published, false));
  expectBlock(trace.take(), "-1 box 0x0 supercedes " + address(second));
}

TEST_F(RefcountTrace, TellsNothingOfARefusedPublication) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef nothing;
  boxRef own(new box("b"));
  boxRef canonical(published);
  EXPECT_FALSE(nothing.publishIn(published, true));
  EXPECT_FALSE(own.publishIn(published, true));
  EXPECT_FALSE(canonical.publishIn(published, false));
  EXPECT_EQ(trace.take(), "");
}

TEST_F(RefcountTrace, IsOnAtAnyLevel) {
  EXPECT_TRUE(traceFlag::set("refcount", 5));
  delete new box("a");
  EXPECT_FALSE(trace.empty());
  trace.take();
  EXPECT_TRUE(traceFlag::set("refcount", 0));
  delete new box("a");
  EXPECT_TRUE(trace.empty());
}

/// Runs in a child.
[[noreturn]] void outliveTheSections() {
  traceFlag::set("refcount", 1);
  auto* published = new boxRef(boxIn(RCS_CANONICAL, "parent"));
  auto* clone = new boxRef;
  clone->set(true, *published);
  auto* plain = new boxRef(new box("plain"));
  takeHistory();
  semaphoreClose();
  delete clone;
  delete plain;
  delete published;
  for (const std::string& line : takeHistory()) {
    std::fprintf(stderr, "%s;", line.c_str());
  }
  _exit(0);
}

TEST(RefcountFlag, DoesNotAbortOnObjectsThatOutliveTheSections) {
  EXPECT_EXIT(outliveTheSections(), testing::ExitedWithCode(0),
              "destroyed parent';destroyed plain;");
}

}  // namespace

}  // namespace refcount_trace_test
