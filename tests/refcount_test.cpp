// SPDX-License-Identifier: MIT
#include "refcount.h"

#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>
#include <vector>

#include "counted_box.h"
#include "reports.h"
#include "section_watch.h"
#include "semaphore_sets.h"
#include "system_calls.h"

namespace refcount_test {

namespace {

const replacedCalls here(__FILE__, sectionWatch::start);

using lines = std::vector<std::string>;

/// Stands for "no instance" where a table names stages.
constexpr refCountStage NONE = RCS_NULLREF;

box* sample(refCountStage stage, const char* label) {
  return stage == NONE ? nullptr : boxIn(stage, label);
}

TEST(refCountStageText, NamesEveryStage) {
  const struct {
    int stage;
    const char* name;
  } rows[] = {
      {0, "new"},
      {1, "private"},
      {2, "canonical"},
      {3, "obsolete"},
      {4, "null-ref"},
      {5, "<bad refCountStage>"},
      {-1, "<bad refCountStage>"},
      {2147483647, "<bad refCountStage>"},
  };
  for (const auto& row : rows) {
    EXPECT_STREQ(text(static_cast<refCountStage>(row.stage)), row.name) << row.stage;
  }
  EXPECT_EQ(RCS_NEW, 0);
  EXPECT_EQ(RCS_PRIVATE, 1);
  EXPECT_EQ(RCS_CANONICAL, 2);
  EXPECT_EQ(RCS_OBSOLETE, 3);
  EXPECT_EQ(RCS_NULLREF, 4);
}

TEST(refTypeText, NamesEveryKind) {
  const struct {
    int type;
    const char* name;
  } rows[] = {
      {0, "null ref"},      {1, "empty"},          {2, "update"},           {3, "read"},
      {4, "<bad refType>"}, {-1, "<bad refType>"}, {1000, "<bad refType>"},
  };
  for (const auto& row : rows) {
    EXPECT_STREQ(text(static_cast<refType>(row.type)), row.name) << row.type;
  }
  EXPECT_EQ(RT_NULL, 0);
  EXPECT_EQ(RT_EMPTY, 1);
  EXPECT_EQ(RT_UPDATE, 2);
  EXPECT_EQ(RT_READ, 3);
}

TEST(Counted, IsAnAbstractBaseThatIsCopiedByCloneOnly) {
  EXPECT_TRUE(std::is_abstract_v<counted>);
  EXPECT_TRUE(std::has_virtual_destructor_v<counted>);
  EXPECT_FALSE(std::is_copy_constructible_v<box>);
  EXPECT_FALSE(std::is_copy_assignable_v<box>);
  EXPECT_TRUE((std::is_same_v<decltype(boxIn(RCS_NEW, "")->count()), std::int32_t>));
  EXPECT_TRUE((std::is_same_v<decltype(boxIn(RCS_NEW, "")->version()), std::int32_t>));
}

TEST(Counted, StartsNewWithoutHoldersAndParent) {
  const box object("a");
  EXPECT_EQ(state(&object), "new, count 0, version 0");
  EXPECT_TRUE(object.writable());
}

TEST(Counted, MayBeChangedWhileItIsNewOrPrivate) {
  box object("a");
  const struct {
    refCountStage stage;
    bool writable;
  } rows[] = {{RCS_NEW, true}, {RCS_PRIVATE, true}, {RCS_CANONICAL, false}, {RCS_OBSOLETE, false}};
  for (const auto& row : rows) {
    object.put(row.stage);
    EXPECT_EQ(object.stage(), row.stage);
    EXPECT_EQ(object.writable(), row.writable) << row.stage;
  }
}

TEST(Counted, CountsUpAndTellsWhenTheCountReachesZero) {
  box object("a");
  EXPECT_EQ(&++object, &object);
  ++object;
  EXPECT_EQ(object.count(), 2);
  EXPECT_FALSE(--object);
  EXPECT_EQ(object.count(), 1);
  EXPECT_TRUE(--object);
  EXPECT_EQ(object.count(), 0);
  EXPECT_FALSE(--object) << "below zero is not zero";
}

TEST(Counted, AdvancesForwardOnly) {
  const struct {
    int from, to;
    bool moved;
    int after;
  } rows[] = {{0, 0, false, 0}, {0, 1, true, 1},  {0, 2, true, 2},  {0, 3, true, 3},
              {0, 4, false, 0}, {0, 9, false, 0}, {1, 0, false, 1}, {1, 1, false, 1},
              {1, 2, true, 2},  {1, 3, true, 3},  {1, 4, false, 1}, {2, 0, false, 2},
              {2, 1, false, 2}, {2, 2, false, 2}, {2, 3, true, 3},  {2, 4, false, 2},
              {3, 0, false, 3}, {3, 2, false, 3}, {3, 3, false, 3}, {3, 4, false, 3},
              {3, 9, false, 3}, {1, -1, false, 1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.from) + " to " + std::to_string(row.to));
    box object("a");
    object.put(static_cast<refCountStage>(row.from));
    EXPECT_EQ(object.advance(static_cast<refCountStage>(row.to)), row.moved);
    EXPECT_EQ(object.stage(), row.after);
  }
}

TEST(Reference, IsAnAbstractThreadedDataObject) {
  EXPECT_TRUE(std::is_abstract_v<reference>);
  EXPECT_TRUE((std::is_base_of_v<ThreadedDataObject, reference>));
  EXPECT_TRUE(std::has_virtual_destructor_v<reference>);
  EXPECT_TRUE((std::is_base_of_v<reference, temporaryReference>));
  EXPECT_EQ(sizeof(temporaryReference), sizeof(reference));
  EXPECT_EQ(sizeof(Treference<box>), sizeof(reference));
}

TEST(Reference, TakesAnInstanceByItsStage) {
  const struct {
    refCountStage stage;
    const char* after;
    int entries;
  } rows[] = {
      {RCS_NEW, "private, count 1, version 0", 0},
      {RCS_PRIVATE, "private, count 1, version 0", 0},
      {RCS_CANONICAL, "canonical, count 1, version 0", 1},
      {RCS_OBSOLETE, "obsolete, count 1, version 0", 1},
      {NONE, "null", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.after);
    box* object = sample(row.stage, "a");
    EXPECT_EQ(entriesDuring(CS_REFCOUNT,
                            [&] {
                              const boxRef holder(object);
                              EXPECT_EQ(holder.ptr(), object);
                              EXPECT_EQ(state(object), row.after);
                              EXPECT_EQ(holder.null(), object == nullptr);
                            }),
              row.entries * 2)
        << "taking and releasing";
  }
}

TEST(Reference, SharesAnInstanceWhenItIsCopied) {
  const struct {
    refCountStage stage;
    const char* after;
    int entries;
  } rows[] = {
      {RCS_PRIVATE, "private, count 2, version 0", 0},
      {RCS_CANONICAL, "canonical, count 2, version 0", 1},
      {RCS_OBSOLETE, "obsolete, count 2, version 0", 1},
      {NONE, "null", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.after);
    boxRef original(sample(row.stage, "a"));
    const int before = sectionWatch::entries[CS_REFCOUNT];
    const boxRef copy(original);
    EXPECT_EQ(sectionWatch::entries[CS_REFCOUNT] - before, row.entries);
    EXPECT_EQ(state(copy.ptr()), row.after);
    EXPECT_TRUE(copy == original);
  }
}

struct assignment {
  refCountStage held, taken;
  const char* takenAfter;
  int entries;
};

const assignment assignments[] = {
    {NONE, NONE, "null", 0},
    {NONE, RCS_NEW, "private, count 1, version 0", 0},
    {NONE, RCS_PRIVATE, "private, count 1, version 0", 0},
    {NONE, RCS_CANONICAL, "canonical, count 1, version 0", 1},
    {NONE, RCS_OBSOLETE, "obsolete, count 1, version 0", 1},
    {RCS_PRIVATE, NONE, "null", 0},
    {RCS_PRIVATE, RCS_NEW, "private, count 1, version 0", 0},
    {RCS_PRIVATE, RCS_PRIVATE, "private, count 1, version 0", 0},
    {RCS_PRIVATE, RCS_CANONICAL, "canonical, count 1, version 0", 1},
    {RCS_PRIVATE, RCS_OBSOLETE, "obsolete, count 1, version 0", 1},
    {RCS_CANONICAL, NONE, "null", 1},
    {RCS_CANONICAL, RCS_NEW, "private, count 1, version 0", 1},
    {RCS_CANONICAL, RCS_PRIVATE, "private, count 1, version 0", 1},
    {RCS_CANONICAL, RCS_CANONICAL, "canonical, count 1, version 0", 1},
    {RCS_CANONICAL, RCS_OBSOLETE, "obsolete, count 1, version 0", 1},
    {RCS_OBSOLETE, NONE, "null", 1},
    {RCS_OBSOLETE, RCS_NEW, "private, count 1, version 0", 1},
    {RCS_OBSOLETE, RCS_PRIVATE, "private, count 1, version 0", 1},
    {RCS_OBSOLETE, RCS_CANONICAL, "canonical, count 1, version 0", 1},
    {RCS_OBSOLETE, RCS_OBSOLETE, "obsolete, count 1, version 0", 1},
};

TEST(Reference, ExchangesInstancesWhenOneIsAssigned) {
  for (const assignment& row : assignments) {
    SCOPED_TRACE(std::string(text(row.held)) + " replaced by " + text(row.taken));
    box* old = sample(row.held, "old");
    box* taken = sample(row.taken, "taken");
    const boxRef other(old);
    boxRef holder(old);
    EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { holder = taken; }), row.entries);
    EXPECT_EQ(holder.ptr(), taken);
    EXPECT_EQ(state(taken), row.takenAfter);
    if (old != nullptr) {
      EXPECT_EQ(old->count(), 1);
      EXPECT_EQ(old->stage(), row.held);
    }
  }
}

TEST(Reference, DestroysTheInstanceThatItReplacesOutsideTheSection) {
  for (const assignment& row : assignments) {
    SCOPED_TRACE(std::string(text(row.held)) + " replaced by " + text(row.taken));
    boxRef holder(sample(row.held, "old"));
    box* taken = sample(row.taken, "taken");
    takeHistory();
    EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { holder = taken; }), row.entries);
    EXPECT_EQ(takeHistory(), row.held == NONE ? lines{} : lines{"destroyed old"});
    EXPECT_EQ(state(taken), row.takenAfter);
  }
}

TEST(Reference, ChangesNoCountWhenItsOwnInstanceIsAssigned) {
  for (const refCountStage stage : {RCS_PRIVATE, RCS_CANONICAL, RCS_OBSOLETE}) {
    SCOPED_TRACE(text(stage));
    box* object = boxIn(stage, "a");
    boxRef holder(object);
    const boxRef other(object);
    EXPECT_EQ(entriesDuring(CS_REFCOUNT,
                            [&] {
                              holder = object;
                              holder = other;
                              static_cast<reference&>(holder) = static_cast<counted*>(object);
                            }),
              0);
    EXPECT_EQ(object->count(), 2);
    EXPECT_EQ(object->stage(), stage);
  }
}

TEST(Reference, AssignsAHandleAsItsInstance) {
  takeHistory();
  boxRef source(new box("a"));
  boxRef target(new box("b"));
  target = source;
  EXPECT_EQ(target.ptr(), source.ptr());
  EXPECT_EQ(state(source.ptr()), "private, count 2, version 0");
  EXPECT_EQ(takeHistory(), lines{"destroyed b"});
  const boxRef nothing;
  target = nothing;
  EXPECT_TRUE(target.null());
  EXPECT_EQ(state(source.ptr()), "private, count 1, version 0");
}

TEST(Reference, LetsGoWhenItIsDestroyed) {
  const struct {
    refCountStage stage;
    int entries;
  } rows[] = {{NONE, 0}, {RCS_PRIVATE, 0}, {RCS_CANONICAL, 1}, {RCS_OBSOLETE, 1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(text(row.stage));
    takeHistory();
    box* object = sample(row.stage, "a");
    auto* first = new boxRef(object);
    auto* second = new boxRef(object);
    EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { delete second; }), row.entries);
    EXPECT_EQ(takeHistory(), lines{}) << "one holder is left";
    if (object != nullptr) {
      EXPECT_EQ(object->count(), 1);
    }
    EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { delete first; }), row.entries);
    EXPECT_EQ(takeHistory(), object != nullptr ? lines{"destroyed a"} : lines{});
  }
}

TEST(Reference, RecycleLetsGoOfTheInstance) {
  takeHistory();
  boxRef holder(new box("a"));
  holder.recycle();
  EXPECT_TRUE(holder.null());
  EXPECT_EQ(takeHistory(), lines{"destroyed a"});
  holder.recycle();
  EXPECT_TRUE(holder.null());
}

TEST(Reference, TellsOfItsInstance) {
  boxRef nothing;
  EXPECT_TRUE(nothing.null());
  EXPECT_EQ(nothing.ptr(), nullptr);
  EXPECT_FALSE(nothing.writable());
  EXPECT_EQ(nothing.version(), -1);
  EXPECT_TRUE(nothing == boxRef());

  boxRef holder(new box("a"));
  const boxRef& constant = holder;
  EXPECT_FALSE(holder.reference::null());
  EXPECT_EQ(constant.ptr(), holder.ptr());
  EXPECT_TRUE(holder.writable());
  EXPECT_EQ(holder.version(), 0);
  EXPECT_FALSE(holder == nothing);
  EXPECT_TRUE(holder.advance(RCS_CANONICAL));
  EXPECT_FALSE(holder.advance(RCS_CANONICAL));
  EXPECT_EQ(holder.stage(), RCS_CANONICAL);
  EXPECT_FALSE(holder.writable());
  EXPECT_FALSE(nothing.advance(RCS_CANONICAL));
}

TEST(Reference, TakesTheSectionToAdvanceToASharedStage) {
  boxRef holder(new box("a"));
  const struct {
    refCountStage stage;
    bool moved;
    int entries;
  } rows[] = {
      {RCS_NEW, false, 0},     {RCS_PRIVATE, false, 0}, {RCS_CANONICAL, true, 1},
      {RCS_PRIVATE, false, 0}, {RCS_OBSOLETE, true, 1}, {RCS_CANONICAL, false, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(text(row.stage));
    bool moved = !row.moved;
    EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { moved = holder.advance(row.stage); }), row.entries);
    EXPECT_EQ(moved, row.moved);
  }
}

TEST(Reference, RaisesTheVersionOnly) {
  boxRef holder(new box("a"));
  holder.setVersion(7);
  EXPECT_EQ(holder.version(), 7);
  holder.setVersion(7);
  EXPECT_EQ(holder.version(), 7);
  boxRef nothing;
  nothing.setVersion(-5);
  EXPECT_TRUE(nothing.null());
}

TEST(ReferenceSetForReading, SharesWhatTheHolderHolds) {
  const struct {
    refCountStage held, published;
    const char* after;
    int entries;
  } rows[] = {
      {NONE, NONE, "null", 0},
      {NONE, RCS_CANONICAL, "canonical, count 2, version 0", 1},
      {NONE, RCS_PRIVATE, "private, count 2, version 0", 1},
      {RCS_PRIVATE, NONE, "null", 1},
      {RCS_PRIVATE, RCS_CANONICAL, "canonical, count 2, version 0", 1},
      {RCS_PRIVATE, RCS_PRIVATE, "private, count 2, version 0", 1},
      {RCS_CANONICAL, NONE, "null", 1},
      {RCS_OBSOLETE, RCS_CANONICAL, "canonical, count 2, version 0", 1},
      {RCS_OBSOLETE, NONE, "null", 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(text(row.held)) + " replaced by " + text(row.published));
    const boxRef published(sample(row.published, "published"));
    boxRef reader(sample(row.held, "old"));
    takeHistory();
    EXPECT_EQ(
        entriesDuring(CS_REFCOUNT, [&] { EXPECT_EQ(&reader.set(false, published), &reader); }),
        row.entries);
    EXPECT_EQ(reader.ptr(), published.ptr());
    EXPECT_EQ(state(reader.ptr()), row.after);
    EXPECT_EQ(takeHistory(), row.held == NONE ? lines{} : lines{"destroyed old"});
  }
}

TEST(ReferenceSetForReading, ChangesNothingWhenItHoldsThatAlready) {
  const boxRef published(boxIn(RCS_CANONICAL, "published"));
  boxRef reader(published);
  EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { reader.set(false, published); }), 0);
  EXPECT_EQ(state(reader.ptr()), "canonical, count 2, version 0");
}

TEST(ReferenceSetForReading, LeavesAnInstanceToItsOtherHolders) {
  const boxRef published(boxIn(RCS_CANONICAL, "published"));
  const boxRef other(boxIn(RCS_OBSOLETE, "old"));
  boxRef reader(other);
  reader.set(false, published);
  EXPECT_EQ(state(other.ptr()), "obsolete, count 1, version 0");
}

TEST(ReferenceSetForUpdate, HoldsAPrivateCloneOneVersionOn) {
  takeHistory();
  boxRef published(boxIn(RCS_CANONICAL, "published"));
  published.setVersion(41);
  published->contents = 5;
  boxRef writer;
  EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { EXPECT_EQ(&writer.set(true, published), &writer); }),
            1);
  EXPECT_EQ(state(writer.ptr()), "private, count 1, version 42, parent published");
  EXPECT_EQ(state(published.ptr()), "canonical, count 2, version 41");
  EXPECT_EQ(writer->contents, 5);
  EXPECT_EQ(takeHistory(), lines{"cloned published"});
  writer->contents = 6;
  EXPECT_EQ(published->contents, 5);
}

TEST(ReferenceSetForUpdate, GivesSuccessiveClonesTheSameVersion) {
  boxRef published(boxIn(RCS_CANONICAL, "published"));
  boxRef first;
  boxRef second;
  first.set(true, published);
  second.set(true, published);
  EXPECT_EQ(state(first.ptr()), "private, count 1, version 1, parent published");
  EXPECT_EQ(state(second.ptr()), "private, count 1, version 1, parent published");
  EXPECT_EQ(state(published.ptr()), "canonical, count 3, version 0");
  EXPECT_NE(first.ptr(), second.ptr());
}

TEST(ReferenceSetForUpdate, ReleasesWhatItHeld) {
  const struct {
    refCountStage held;
    lines history;
  } rows[] = {
      {NONE, {"cloned published"}},
      {RCS_PRIVATE, {"cloned published", "destroyed old"}},
      {RCS_CANONICAL, {"cloned published", "destroyed old"}},
      {RCS_OBSOLETE, {"cloned published", "destroyed old"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(text(row.held));
    boxRef published(boxIn(RCS_CANONICAL, "published"));
    boxRef writer(sample(row.held, "old"));
    takeHistory();
    EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { writer.set(true, published); }), 1);
    EXPECT_EQ(takeHistory(), row.history);
    EXPECT_EQ(state(writer.ptr()), "private, count 1, version 1, parent published");
    EXPECT_EQ(state(published.ptr()), "canonical, count 2, version 0");
  }
}

TEST(ReferenceSetForUpdate, LeavesAnInstanceToItsOtherHolders) {
  boxRef published(boxIn(RCS_CANONICAL, "published"));
  const boxRef other(new box("old"));
  boxRef writer(other);
  writer.set(true, published);
  EXPECT_EQ(state(other.ptr()), "private, count 1, version 0");
}

TEST(ReferenceSetForUpdate, ReplacesAReadingOfThePublishedInstance) {
  boxRef published(boxIn(RCS_CANONICAL, "published"));
  boxRef writer(published);
  writer.set(true, published);
  EXPECT_EQ(state(published.ptr()), "canonical, count 2, version 0");
  EXPECT_EQ(state(writer.ptr()), "private, count 1, version 1, parent published");
}

TEST(ReferenceSetForUpdate, ReplacesAnEarlierCloneAndItsHoldOnTheParent) {
  boxRef published(boxIn(RCS_CANONICAL, "published"));
  boxRef writer;
  writer.set(true, published);
  takeHistory();
  EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { writer.set(true, published); }), 2);
  EXPECT_EQ(takeHistory(), (lines{"cloned published", "destroyed published'"}));
  EXPECT_EQ(state(published.ptr()), "canonical, count 2, version 0");
}

TEST(ReferenceSetForUpdate, IsNullWithoutAPublishedInstanceAndDestroysNothing) {
  const boxRef published;
  for (const refCountStage held : {NONE, RCS_PRIVATE, RCS_CANONICAL, RCS_OBSOLETE}) {
    SCOPED_TRACE(text(held));
    box* old = sample(held, "old");
    boxRef writer(old);
    takeHistory();
    EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { EXPECT_EQ(&writer.set(true, published), &writer); }),
              1);
    EXPECT_TRUE(writer.null());
    EXPECT_EQ(takeHistory(), lines{}) << "the released instance stays, without holders";
    if (old != nullptr) {
      EXPECT_EQ(old->count(), 0);
      EXPECT_EQ(old->stage(), held);
    }
    delete old;
  }
}

TEST(ReferenceSetForUpdate, IsNullWhenTheInstanceDoesNotClone) {
  takeHistory();
  boxRef published(boxIn(RCS_CANONICAL, "published"));
  published->cloneable = false;
  boxRef writer(new box("old"));
  EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { writer.set(true, published); }), 2)
      << "taking the source and giving it back";
  EXPECT_TRUE(writer.null());
  EXPECT_EQ(state(published.ptr()), "canonical, count 1, version 0");
  EXPECT_EQ(takeHistory(), (lines{"cloned published", "destroyed old"}));
}

TEST(Counted, HoldsItsParentUntilItIsDestroyed) {
  auto* published = new boxRef(boxIn(RCS_CANONICAL, "parent"));
  auto* writer = new boxRef;
  writer->set(true, *published);
  delete published;
  EXPECT_EQ(state(writer->ptr()), "private, count 1, version 1, parent parent");
  EXPECT_EQ(state((*writer)->parent()), "canonical, count 1, version 0");
  takeHistory();
  EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { delete writer; }), 1);
  EXPECT_EQ(takeHistory(), (lines{"destroyed parent'", "destroyed parent"}));
}

TEST(Counted, LeavesItsParentToOtherHolders) {
  const boxRef published(boxIn(RCS_CANONICAL, "parent"));
  {
    boxRef writer;
    writer.set(true, published);
    EXPECT_EQ(published.ptr()->count(), 2);
  }
  EXPECT_EQ(state(published.ptr()), "canonical, count 1, version 0");
}

TEST(Counted, PassesTheReleaseOnFromParentToParent) {
  boxRef writer;
  {
    const boxRef oldest(boxIn(RCS_CANONICAL, "a"));
    boxRef middle;
    middle.set(true, oldest);
    writer.set(true, middle);
  }
  EXPECT_EQ(state(writer.ptr()), "private, count 1, version 2, parent a'");
  takeHistory();
  EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { writer.recycle(); }), 2);
  EXPECT_EQ(takeHistory(), (lines{"destroyed a''", "destroyed a'", "destroyed a"}));
}

void takeBadStage(int stage) {
  const boxRef holder(boxIn(static_cast<refCountStage>(stage), "a"));
}

void publishTwice() {
  boxRef holder(new box("a"));
  boxRef published(holder);
  holder.publishIn(published, false);
}

void lowerTheVersion() {
  boxRef holder(new box("a"));
  holder.setVersion(3);
  holder.setVersion(2);
}

void assignBadType(int type) {
  boxRef holder;
  holder = static_cast<refType>(type);
}

TEST(RefcountAssertions, ReportTheirPositions) {
  const struct {
    const char* what;
    void (*fail)();
    const char* report;
  } rows[] = {
      {"taking a null-ref stage", [] { takeBadStage(4); },
       "<4/31 assert/0: false [|] [.][.]/utilities/refcount @ 177>"},
      {"taking a stage of 5", [] { takeBadStage(5); },
       "<4/31 assert/0: false [|] [.][.]/utilities/refcount @ 179>"},
      {"taking a stage of -1", [] { takeBadStage(-1); },
       "<4/31 assert/0: false [|] [.][.]/utilities/refcount @ 179>"},
      {"publishing what is held as published", publishTwice,
       "<4/31 assert/0: oldCanonical != instance [|] [.][.]/utilities/refcount @ 289>"},
      {"lowering a version", lowerTheVersion,
       "<4/31 assert/0: instance->m_version <= newValue [|] [.][.]/utilities/refcount @ 349>"},
      {"assigning a type of 4", [] { assignBadType(4); },
       "<4/31 assert/0: false [|] [.][.]/include/refcount @ 606>"},
      {"assigning a type of -1", [] { assignBadType(-1); },
       "<4/31 assert/0: false [|] [.][.]/include/refcount @ 606>"},
  };
  const int set = semaphoreSet(false);  // the children share it, and remove none
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EXIT(
        {
          const reportTeller printer(STDERR_FILENO, inAngles);
          row.fail();
        },
        testing::KilledBySignal(SIGABRT), row.report);
    // The publication dies inside the section.
    ASSERT_EQ(semctl(set, CS_REFCOUNT, SETVAL, semaphoreArgument{1}), 0);
  }
}

/// Runs in a child.  Uses handles after the sections are gone.
[[noreturn]] void releaseWithoutSections() {
  auto* privateOne = new boxRef(new box("private"));
  auto* sharedOne = new boxRef(boxIn(RCS_CANONICAL, "canonical"));
  auto* obsoleteOne = new boxRef(boxIn(RCS_OBSOLETE, "obsolete"));
  box* parent = boxIn(RCS_CANONICAL, "parent");
  auto* parentHolder = new boxRef(parent);
  auto* clone = new boxRef;
  clone->set(true, *parentHolder);
  box* shared = sharedOne->pointer();
  box* obsolete = obsoleteOne->pointer();
  takeHistory();
  semaphoreClose();

  delete sharedOne;
  delete obsoleteOne;
  delete parentHolder;
  delete privateOne;
  delete clone;
  for (const std::string& line : takeHistory()) {
    std::fprintf(stderr, "%s; ", line.c_str());
  }
  std::fprintf(stderr, "%s; %s; %s.\n", state(shared).c_str(), state(obsolete).c_str(),
               state(parent).c_str());
  _exit(0);
}

TEST(Reference, LeavesSharedInstancesAliveWhenTheSectionIsGone) {
  const int set = semaphoreSet(false);
  EXPECT_EXIT(releaseWithoutSections(), testing::ExitedWithCode(0),
              "destroyed private; destroyed parent'; canonical, count 1, version 0; obsolete, "
              "count 1, version 0; canonical, count 2, version 0[.]");
  EXPECT_EQ(semaphoreValue(set, CS_REFCOUNT), 1) << "the child removed the set of its parent";
}

}  // namespace

}  // namespace refcount_test
