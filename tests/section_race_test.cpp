// SPDX-License-Identifier: MIT
#include <sched.h>
#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "children.h"
#include "processes.h"
#include "section_state.h"
#include "semaphore_sets.h"
#include "threading.h"

namespace section_race_test {

namespace {

// Shared by the parent and its children.
struct board {
  volatile int counters[6];
  volatile int inside[6];
  volatile int clashes;
  volatile int releasing;
  volatile int go;  // lets the counters start, all at once
};

// A board that lives as long as the process and its children.
board& newBoard() {
  void* const memory =
      mmap(nullptr, sizeof(board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) std::abort();
  return *static_cast<board*>(memory);
}

// Counts up under the sections in turn.  It yields in the middle of each step, so
// a step is surely lost without the section.
class counter : public Thread {
 public:
  counter(board& shared, int rounds, int first, int last)
      : Thread(true), m_shared(shared), m_rounds(rounds), m_first(first), m_last(last) {}

  bool execute() override {
    limitLife();
    while (m_shared.go == 0) sched_yield();
    for (int i = 0; i < m_rounds; ++i) {
      for (int id = m_first; id <= m_last; ++id) step(static_cast<sectionId>(id));
    }
    return true;
  }
  Thread* clone() const override { return new counter(*this); }

 private:
  void step(sectionId id) {
    criticalSection section(id, false);
    if (m_shared.inside[id] != 0 || !criticalSection::have(id)) m_shared.clashes = 1;
    m_shared.inside[id] = 1;
    const int before = m_shared.counters[id];
    sched_yield();
    m_shared.counters[id] = before + 1;
    m_shared.inside[id] = 0;
  }

  board& m_shared;
  int m_rounds;
  int m_first;
  int m_last;
};

// Starts `count` counters and waits for them; reports those that do not end well.
void race(board& shared, int count, int rounds, int first, int last) {
  semaphoreSet(false);
  std::vector<std::unique_ptr<counter>> children;
  for (int i = 0; i < count; ++i) {
    children.push_back(std::make_unique<counter>(shared, rounds, first, last));
    if (!children.back()->create()) tell("not started", i);
  }
  shared.go = 1;
  for (const auto& child : children) {
    if (!child->waitFor() || child->status() != 0) tell("ended with", child->status());
  }
}

// Holds a section until a process waits for `awaited`; if that is -1, until the test ends it.
class holder : public Thread {
 public:
  holder(board& shared, sectionId id, int awaited)
      : Thread(true), m_shared(shared), m_id(id), m_awaited(awaited) {
    if (pipe(m_ready) != 0 || pipe(m_end) != 0) std::abort();
  }

  bool execute() override {
    limitLife();
    const int set = semaphoreSet(false);
    criticalSection section(m_id, false);
    char byte = 'x';
    if (::write(m_ready[1], &byte, 1) != 1) return false;
    const bool good =
        m_awaited >= 0 ? someoneWaits(set, m_awaited) : ::read(m_end[0], &byte, 1) == 1;
    m_shared.releasing = 1;
    return good;
  }
  Thread* clone() const override { return new holder(*this); }

  // Waits until the section is held.
  bool ready() const {
    char byte = ' ';
    return ::read(m_ready[0], &byte, 1) == 1;
  }
  bool end() const { return ::write(m_end[1], "x", 1) == 1; }

 private:
  board& m_shared;
  sectionId m_id;
  int m_awaited;
  int m_ready[2];
  int m_end[2];
};

}  // namespace

TEST(SectionRace, CountsExactlyUnderOneSection) {
  const processEnd end = runFreshChild([] {
    board& shared = newBoard();
    race(shared, 8, 1000, CS_NETWORK, CS_NETWORK);
    tell("total", shared.counters[CS_NETWORK]);
    tell("clashes", shared.clashes);
    return 0;
  });
  EXPECT_EQ(end.output, "total 8000\nclashes 0\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(SectionRace, CountsExactlyUnderAllSections) {
  const processEnd end = runFreshChild([] {
    board& shared = newBoard();
    race(shared, 4, 300, CS_STDOUT, CS_STACK);
    for (const sectionId id : sections) tell("total", shared.counters[id]);
    tell("clashes", shared.clashes);
    dprintf(STDOUT_FILENO, "%s\n", sixValues(semaphoreSet(false)).c_str());
    return 0;
  });
  EXPECT_EQ(end.output,
            "total 1200\ntotal 1200\ntotal 1200\ntotal 1200\ntotal 1200\ntotal 1200\n"
            "clashes 0\n1 1 1 1 1 1\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(SectionRace, TheParentTakesPart) {
  const processEnd end = runFreshChild([] {
    board& shared = newBoard();
    semaphoreSet(false);
    counter child(shared, 1000, CS_STACK, CS_STACK);
    counter parent(shared, 1000, CS_STACK, CS_STACK);
    shared.go = 1;
    const bool good = child.create() && parent.execute() && child.waitFor();
    tell("good", good);
    tell("total", shared.counters[CS_STACK]);
    tell("clashes", shared.clashes);
    return 0;
  });
  EXPECT_EQ(end.output, "good 1\ntotal 2000\nclashes 0\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(SectionRace, AChildThatHoldsASectionMakesTheParentWait) {
  for (const sectionId id : sections) {
    SCOPED_TRACE(testing::Message() << "section " << id);
    const processEnd end = runFreshChild([id] {
      board& shared = newBoard();
      semaphoreSet(false);
      holder child(shared, id, id);
      if (!child.create() || !child.ready()) return 1;
      {
        criticalSection section(id, false);
        tell("released before", shared.releasing);
        tell("have", criticalSection::have(id));
      }
      const bool good = child.waitFor();
      tell("good", good);
      tell("status", child.status());
      return 0;
    });
    EXPECT_EQ(end.output, "released before 1\nhave 1\ngood 1\nstatus 0\n");
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.ending, "exit 0");
  }
}

TEST(SectionRace, AParentThatHoldsASectionMakesTheChildWait) {
  const processEnd end = runFreshChild([] {
    board& shared = newBoard();
    const int set = semaphoreSet(false);
    counter child(shared, 1, CS_LOGOUT, CS_LOGOUT);
    shared.go = 1;
    {
      criticalSection section(CS_LOGOUT, false);
      if (!child.create()) return 1;
      tell("waits", someoneWaits(set, CS_LOGOUT));
      tell("counted", shared.counters[CS_LOGOUT]);
    }
    const bool good = child.waitFor();
    tell("good", good);
    tell("status", child.status());
    tell("counted", shared.counters[CS_LOGOUT]);
    return 0;
  });
  EXPECT_EQ(end.output, "waits 1\ncounted 0\ngood 1\nstatus 0\ncounted 1\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(SectionRace, AChildThatHoldsASectionLeavesTheOthersFree) {
  const processEnd end = runFreshChild([] {
    board& shared = newBoard();
    semaphoreSet(false);
    holder child(shared, CS_REFCOUNT, -1);
    if (!child.create() || !child.ready()) return 1;
    for (const sectionId id : sections) {
      if (id == CS_REFCOUNT) continue;
      criticalSection section(id, false);
      tell("okay", section.okay());
    }
    tell("released before", shared.releasing);
    const bool good = child.end() && child.waitFor();
    tell("good", good);
    tell("status", child.status());
    return 0;
  });
  EXPECT_EQ(end.output,
            "okay 1\nokay 1\nokay 1\nokay 1\nokay 1\n"
            "released before 0\ngood 1\nstatus 0\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

}  // namespace section_race_test
