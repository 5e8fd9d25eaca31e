// SPDX-License-Identifier: MIT
// The configuration database under load: very many edits while other processes
// read, and editors that race.
#include <gtest/gtest.h>
#include <malloc.h>
#include <sched.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "children.h"
#include "configDB.h"
#include "configRef.h"
#include "processes.h"
#include "reports.h"
#include "section_state.h"
#include "semaphore_sets.h"

#ifdef SANITIZED
// Declared in <sanitizer/allocator_interface.h>, which gcc does not install.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

using texts = std::vector<std::string>;

// --- Versions that can be checked ------------------------------------------

const char* const NONE[] = {"none", "-none", nullptr};

const configString LABEL("soakLabel", "none");
const configArray LABELS("soakLabels", NONE);

// Puts one label in several places.  So a version that mixes two others does not go
// unnoticed.
void putLabel(editableConfigDB& editor, const std::string& label) {
  editor.set("soakLabel", label, DistName("CN=" + label, DistName::SIMPLE), false);
  editor.set("soakLabels", texts{label, "-" + label}, DistName(), false);
}

// The label of a version, "torn" when its places disagree.
std::string labelOf(const configDB& db) {
  const configItem& one = db.find("soakLabel");
  const configItem& more = db.find("soakLabels");
  const std::string& label = one[0];
  const bool whole = one.size() == 1 && more.all() == texts{label, "-" + label} &&
                     one.getDN().str() == (label == "none" ? "" : "CN=" + label) &&
                     one.getDefaults() == texts{"none"};
  return whole ? label : "torn";
}

std::string canonicalLabel() {
  return labelOf(configDB(RT_READ));
}

// A thread that has read.  The first read publishes what the items registered.
struct startedThread {
  startedThread() {
    ThreadData::instance(false);
    LABEL.value(false);
  }
};

const char* const LOST = "2/31 commonEvent/4: setCanonical() | editableConfigDB::~editableConfigDB";

// --- Memory ----------------------------------------------------------------

#ifdef SLOW
constexpr int EDITS = 20000;  // each takes long
#else
constexpr int EDITS = 100000;
#endif
constexpr int WARM_UP = 4000;

// The memory that the process may gain between the warm-up and the end.  A block of
// memory has 16 bytes or more, so one leaked block per edit would gain nearly twice as
// much.  The reserve of the allocator is less.
constexpr std::size_t SLACK = EDITS * 8;

struct memoryUse {
  std::size_t allocated;  // bytes that the program has allocated
  std::size_t mapped;     // bytes that the process has for data

  bool isFlatSince(const memoryUse& earlier) const {
    return allocated < earlier.allocated + SLACK && mapped < earlier.mapped + SLACK;
  }
};

memoryUse memoryNow() {
#ifdef SANITIZED
  // The sanitizer keeps freed memory for a while, so the process does grow.
  return {__sanitizer_get_current_allocated_bytes(), 0};
#else
  const struct mallinfo2 heap = mallinfo2();
  std::size_t pages = 0;
  std::ifstream statm("/proc/self/statm");
  for (int field = 0; field < 6; field++) statm >> pages;  // the sixth is that of data
  return {heap.uordblks + heap.hblkhd, pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE))};
#endif
}

// --- Readers ---------------------------------------------------------------

constexpr int READERS = 4;

// Shared by the parent and its children.
struct board {
  volatile int rounds[READERS];
  volatile int faults[READERS];
  volatile int stop;
};

board& newBoard() {
  void* const memory =
      mmap(nullptr, sizeof(board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) std::abort();
  return *static_cast<board*>(memory);
}

// Reads the copies that a child process has of the versions: those that existed when it
// began, and those that it makes.  It reads until the parent ends it.
class reader : public Thread {
 public:
  reader(board& shared, int number) : Thread(true), m_shared(shared), m_number(number) {}

  bool execute() override {
    limitLife();
    threadedConfigDB::refresh();
    m_label = labelOf(threadedConfigDB::local());
    memoryUse before = memoryNow();
    for (int round = 1; m_shared.stop == 0; round++) {
      read();
      if (round % 50 == 0) publish(std::to_string(round) + "of" + std::to_string(m_number));
      if (round == 200) before = memoryNow();
      m_shared.rounds[m_number] = round;
      sched_yield();
    }
    check(memoryNow().isFlatSince(before));
    return m_shared.faults[m_number] == 0;
  }
  Thread* clone() const override { return new reader(*this); }

 private:
  void check(bool good) {
    if (!good) m_shared.faults[m_number] = m_shared.faults[m_number] + 1;
  }

  void read() {
    check(labelOf(threadedConfigDB::local()) == m_label);
    const configDB shared(RT_READ);
    const configDB copy(shared);
    check(labelOf(copy) == m_label);
    const configDB update(RT_UPDATE);
    check(labelOf(update) == m_label);
    check(update.version() == shared.version() + 1);
  }

  void publish(const std::string& label) {
    const configDB old(RT_READ);
    {
      editableConfigDB editor;
      putLabel(editor, label);
    }
    check(labelOf(old) == m_label && old.stage() == RCS_OBSOLETE);
    check(labelOf(threadedConfigDB::local()) == m_label);
    threadedConfigDB::refresh();
    m_label = label;
    check(labelOf(threadedConfigDB::local()) == m_label);
  }

  board& m_shared;
  int m_number;
  std::string m_label;  // of the version that is canonical in the child
};

using readers = std::vector<std::unique_ptr<reader>>;

// Starts a reader and waits until it reads.
bool startReader(board& shared, readers& children) {
  const int number = static_cast<int>(children.size());
  children.push_back(std::make_unique<reader>(shared, number));
  if (!children.back()->create()) return false;
  while (shared.rounds[number] == 0) sched_yield();
  return true;
}

// --- Edits without end -----------------------------------------------------

// Publishes `count` edits, one in ten with a rival that comes too late; the readers
// start on different versions.
class soak {
 public:
  void run() {
    memoryUse before{};
    for (int i = 1; i <= EDITS; i++) {
      if (i % 500 == 0 && m_children.size() < READERS) check(startReader(m_shared, m_children));
      publish(std::to_string(i), i % 10 == 0);
      if (i % 2 == 0) refresh(std::to_string(i));  // other versions have no reader here
      if (i % 10 == 0) sched_yield();              // to the readers
      if (i % 1000 == 0) lookBack(std::to_string(i));
      if (i == WARM_UP) before = memoryNow();
    }
    tell("flat", memoryNow().isFlatSince(before));
    tell("faults", m_faults);
    stop();
  }

 private:
  void check(bool good) { m_faults += good ? 0 : 1; }

  void publish(const std::string& label, bool withRival) {
    {
      const auto rival = withRival ? std::make_unique<editableConfigDB>() : nullptr;
      if (rival) putLabel(*rival, "rival");
      editableConfigDB editor;
      putLabel(editor, label);
    }
    check(m_reports.take() == (withRival ? texts{LOST} : texts{}));
    check(canonicalLabel() == label);
  }

  void refresh(const std::string& label) {
    threadedConfigDB::refresh();
    check(labelOf(threadedConfigDB::local()) == label && LABEL.value(true) == label);
  }

  // A version that was held meanwhile has not changed.
  void lookBack(const std::string& label) {
    check(labelOf(m_held) == m_heldLabel);
    m_held = RT_READ;
    m_heldLabel = label;
  }

  void stop() {
    m_shared.stop = 1;
    for (const auto& child : m_children) {
      if (!child->waitFor() || child->status() != 0) tell("a reader ended with", child->status());
    }
    for (int i = 0; i < READERS; i++) tell("faults of a reader", m_shared.faults[i]);
  }

  startedThread m_thread;
  reportCatcher m_reports;  // in the map of the thread
  board& m_shared = newBoard();
  readers m_children;
  configDB m_held{RT_READ};
  std::string m_heldLabel = "none";
  int m_faults = 0;
};

TEST(ConfigSoak, HoldsThroughEditsWithoutEndBesideReaders) {
  const processEnd end = runFreshChild([] {
    tell("set", semaphoreSet(false));
    soak().run();
    tell("version", threadedConfigDB::local().version());
    dprintf(STDOUT_FILENO, "%s\n", sixValues(semaphoreSet(false)).c_str());
    return 0;
  });
  int set = -1;
  ASSERT_EQ(std::sscanf(end.output.c_str(), "set %d\n", &set), 1) << end.output;
  EXPECT_TRUE(isGone(set)) << set;
  EXPECT_EQ(end.output, "set " + std::to_string(set) +
                            "\nflat 1\nfaults 0\n"
                            "faults of a reader 0\nfaults of a reader 0\n"
                            "faults of a reader 0\nfaults of a reader 0\n"
                            "version " +
                            std::to_string(EDITS) + "\n1 1 1 1 1 1\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

// --- Editors that race -----------------------------------------------------

class EditorRace : public testing::Test {
 protected:
  // At exit a handle can no longer give back an obsolete version.
  ~EditorRace() override { threadedConfigDB::refresh(); }

  startedThread thread;
  reportCatcher reports;  // in the map of the thread
  const std::int32_t start = configDB(RT_READ).version();
};

// An editor of the label "A" or "B", one step at a time: begin, edit, end.
class steppedEditor {
 public:
  explicit steppedEditor(char label) : m_label(1, label) {}

  // Whether this was the end.
  bool step() {
    if (m_steps++ == 0) {
      m_editor = std::make_unique<editableConfigDB>();
    } else if (m_editor->find("soakLabel")[0] != m_label) {
      putLabel(*m_editor, m_label);
    } else {
      m_editor.reset();
      return true;
    }
    return false;
  }

 private:
  std::string m_label;
  std::unique_ptr<editableConfigDB> m_editor;
  int m_steps = 0;
};

TEST_F(EditorRace, EndsWithOneWinnerInEveryOrderOfSteps) {
  const struct {
    const char* steps;
    const char* published;  // the versions, in this order
    const char* told;       // whose edit is lost
  } rows[] = {
      // One after the other: no race.
      {"AAABBB", "AB", ""},
      {"BBBAAA", "BA", ""},
      // A race: who ends first wins.
      {"AABABB", "A", "B"},
      {"AABBAB", "A", "B"},
      {"ABAABB", "A", "B"},
      {"ABABAB", "A", "B"},
      {"ABBAAB", "A", "B"},
      {"BAAABB", "A", "B"},
      {"BAABAB", "A", "B"},
      {"BABAAB", "A", "B"},
      {"BBAAAB", "A", "B"},
      {"AABBBA", "B", "A"},
      {"ABABBA", "B", "A"},
      {"ABBABA", "B", "A"},
      {"ABBBAA", "B", "A"},
      {"BAABBA", "B", "A"},
      {"BABABA", "B", "A"},
      {"BABBAA", "B", "A"},
      {"BBAABA", "B", "A"},
      {"BBABAA", "B", "A"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.steps);
    {
      editableConfigDB editor;
      putLabel(editor, "start");
    }
    const std::int32_t version = configDB(RT_READ).version();
    steppedEditor a('A');
    steppedEditor b('B');
    std::string last = "start";
    std::string published;
    std::string told;
    for (const char* step = row.steps; *step != '\0'; step++) {
      const bool ended = (*step == 'A' ? a : b).step();
      const std::string label = canonicalLabel();
      if (label != last) published += label;
      last = label;
      for (const std::string& line : reports.take()) {
        EXPECT_EQ(line, LOST);
        EXPECT_TRUE(ended);
        told += *step;
      }
    }
    EXPECT_EQ(published, row.published);
    EXPECT_EQ(told, row.told);
    EXPECT_EQ(configDB(RT_READ).version() - version,
              static_cast<std::int32_t>(std::string(row.published).size()));
  }
}

TEST_F(EditorRace, IsWonByTheFirstOfManyThatEnds) {
  std::mt19937 random(20261115);
  for (int round = 1; round <= 500; round++) {
    SCOPED_TRACE(round);
    std::vector<std::unique_ptr<editableConfigDB>> editors;
    for (int i = 0; i < 8; i++) {
      editors.push_back(std::make_unique<editableConfigDB>());
      putLabel(*editors.back(), std::to_string(round) + "of" + std::to_string(i));
    }
    std::vector<std::size_t> order(editors.size());
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), random);
    for (const std::size_t i : order) editors[i].reset();
    ASSERT_EQ(configDB(RT_READ).version(), start + round);
    ASSERT_EQ(canonicalLabel(), std::to_string(round) + "of" + std::to_string(order.front()));
    ASSERT_EQ(reports.take(), texts(7, LOST));
  }
}

TEST_F(EditorRace, LeavesTheReadersOfEveryVersionTheirOwn) {
  std::vector<configDB> held;
  for (int i = 0; i < 100; i++) {
    editableConfigDB late;
    putLabel(late, "late");
    {
      editableConfigDB early;
      putLabel(early, std::to_string(i));
    }
    held.emplace_back(RT_READ);
  }
  for (int i = 0; i < 100; i++) {
    EXPECT_EQ(labelOf(held[static_cast<std::size_t>(i)]), std::to_string(i));
    EXPECT_EQ(held[static_cast<std::size_t>(i)].version(), start + 1 + i);
  }
  EXPECT_EQ(reports.take(), texts(100, LOST));
}

}  // namespace
