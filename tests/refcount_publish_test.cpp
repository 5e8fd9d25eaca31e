// SPDX-License-Identifier: MIT
// Publication: commit tests, stages, counts and the typed handle's canonical
// instance.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "counted_box.h"
#include "refcount.h"
#include "section_watch.h"
#include "system_calls.h"

namespace refcount_publish_test {

namespace {

const replacedCalls here(__FILE__, sectionWatch::start);

using lines = std::vector<std::string>;

TEST(ReferenceSetCanonical, PublishesAnObjectOfItsOwn) {
  for (const bool check : {false, true}) {
    SCOPED_TRACE(check);
    boxRef published;
    boxRef writer(new box("a"));
    takeHistory();
    EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { EXPECT_TRUE(writer.publishIn(published, check)); }),
              1);
    EXPECT_EQ(published.ptr(), writer.ptr());
    EXPECT_EQ(state(writer.ptr()), "canonical, count 2, version 0");
    EXPECT_EQ(takeHistory(),
              lines{"prepared a: canonical, count 2, version 0 (inside the section)"});
  }
}

TEST(ReferenceSetCanonical, PublishesACloneOfWhatIsCanonical) {
  for (const bool check : {false, true}) {
    SCOPED_TRACE(check);
    boxRef published(boxIn(RCS_CANONICAL, "a"));
    boxRef writer;
    writer.set(true, published);
    takeHistory();
    EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { EXPECT_TRUE(writer.publishIn(published, check)); }),
              1);
    EXPECT_EQ(published.ptr(), writer.ptr());
    EXPECT_EQ(state(writer.ptr()), "canonical, count 2, version 1");
    EXPECT_EQ(
        takeHistory(),
        (lines{"prepared a': canonical, count 2, version 1 (inside the section)", "destroyed a"}));
  }
}

TEST(ReferenceSetCanonical, MakesThePreviousInstanceObsoleteForThoseWhoHoldIt) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  published->contents = 1;
  const boxRef reader(published);
  boxRef writer;
  writer.set(true, published);
  writer->contents = 2;
  EXPECT_TRUE(writer.publishIn(published, true));
  EXPECT_EQ(state(reader.ptr()), "obsolete, count 1, version 0");
  EXPECT_EQ(reader->contents, 1);
  EXPECT_EQ(published->contents, 2);
}

TEST(ReferenceSetCanonical, KeepsAParentForItsOtherClones) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef winner;
  boxRef loser;
  winner.set(true, published);
  loser.set(true, published);
  EXPECT_TRUE(winner.publishIn(published, true));
  EXPECT_EQ(state(loser.ptr()), "private, count 1, version 1, parent a");
  EXPECT_EQ(state(loser->parent()), "obsolete, count 1, version 0");
}

TEST(ReferenceSetCanonical, RefusesWhatIsNotPrivate) {
  for (const refCountStage stage : {RCS_CANONICAL, RCS_OBSOLETE, RCS_NEW}) {
    for (const bool check : {false, true}) {
      SCOPED_TRACE(std::string(text(stage)) + (check ? " with check" : " without check"));
      boxRef published(boxIn(RCS_CANONICAL, "a"));
      boxRef holder(new box("b"));
      holder->put(stage);
      const std::string before = state(holder.ptr());
      takeHistory();
      EXPECT_EQ(
          entriesDuring(CS_REFCOUNT, [&] { EXPECT_FALSE(holder.publishIn(published, check)); }), 0);
      EXPECT_EQ(state(holder.ptr()), before);
      EXPECT_EQ(state(published.ptr()), "canonical, count 1, version 0");
      EXPECT_EQ(takeHistory(), lines{});
    }
  }
}

TEST(ReferenceSetCanonical, RefusesTheCanonicalInstanceItself) {
  boxRef published;
  boxRef writer(new box("a"));
  EXPECT_TRUE(writer.publishIn(published, true));
  EXPECT_FALSE(writer.publishIn(published, false));
  EXPECT_FALSE(writer.publishIn(published, true));
  EXPECT_EQ(state(writer.ptr()), "canonical, count 2, version 0");
}

TEST(ReferenceSetCanonical, RefusesNothingAtAllWhenItChecks) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef nothing;
  EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { EXPECT_FALSE(nothing.publishIn(published, true)); }),
            1);
  EXPECT_EQ(state(published.ptr()), "canonical, count 1, version 0");
  boxRef unpublished;
  EXPECT_FALSE(nothing.publishIn(unpublished, true)) << "also where nothing is published";
}

TEST(ReferenceSetCanonical, RefusesAnObjectOfItsOwnWhereOneIsPublishedWhenItChecks) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef writer(new box("b"));
  takeHistory();
  EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { EXPECT_FALSE(writer.publishIn(published, true)); }),
            1);
  EXPECT_EQ(state(published.ptr()), "canonical, count 1, version 0");
  EXPECT_EQ(state(writer.ptr()), "private, count 1, version 0");
  EXPECT_EQ(takeHistory(), lines{});
}

TEST(ReferenceSetCanonical, RefusesTheLaterOfTwoWritersWhenItChecks) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef winner;
  boxRef loser;
  winner.set(true, published);
  loser.set(true, published);
  loser->contents = 3;
  EXPECT_TRUE(winner.publishIn(published, true));
  takeHistory();
  EXPECT_FALSE(loser.publishIn(published, true));
  EXPECT_EQ(published.ptr(), winner.ptr());
  EXPECT_EQ(state(published.ptr()), "canonical, count 2, version 1");
  EXPECT_EQ(state(loser.ptr()), "private, count 1, version 1, parent a");
  EXPECT_EQ(loser->contents, 3);
  EXPECT_TRUE(loser.writable());
  EXPECT_EQ(takeHistory(), lines{});

  loser.set(true, published);
  EXPECT_EQ(state(loser.ptr()), "private, count 1, version 2, parent a'");
  EXPECT_TRUE(loser.publishIn(published, true)) << "starting again helps";
}

TEST(ReferenceSetCanonical, RefusesACloneOfWhatWasClearedWhenItChecks) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef writer;
  writer.set(true, published);
  boxRef nothing;
  EXPECT_TRUE(nothing.publishIn(published, false));
  EXPECT_FALSE(writer.publishIn(published, true));
  EXPECT_TRUE(published.null());
}

TEST(ReferenceSetCanonical, ReplacesAnythingWithoutCheck) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef writer(new box("b"));
  takeHistory();
  EXPECT_TRUE(writer.publishIn(published, false));
  EXPECT_EQ(published.ptr(), writer.ptr());
  EXPECT_EQ(state(writer.ptr()), "canonical, count 2, version 0");
  EXPECT_EQ(takeHistory(), (lines{"prepared b: canonical, count 2, version 0 (inside the section)",
                                  "destroyed a"}));
}

TEST(ReferenceSetCanonical, DestroysThePreviousInstanceAndThenTheParent) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef late;
  late.set(true, published);
  boxRef other(new box("b"));
  EXPECT_TRUE(other.publishIn(published, false));
  other.recycle();
  takeHistory();
  EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { EXPECT_TRUE(late.publishIn(published, false)); }), 1);
  EXPECT_EQ(state(late.ptr()), "canonical, count 2, version 1");
  EXPECT_EQ(takeHistory(), (lines{"prepared a': canonical, count 2, version 1 (inside the section)",
                                  "destroyed b", "destroyed a"}));
}

TEST(ReferenceSetCanonical, ClearsTheHolderWhenNothingIsPublishedWithoutCheck) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  const boxRef reader(published);
  boxRef nothing;
  EXPECT_EQ(entriesDuring(CS_REFCOUNT, [&] { EXPECT_TRUE(nothing.publishIn(published, false)); }),
            1);
  EXPECT_TRUE(published.null());
  EXPECT_EQ(state(reader.ptr()), "obsolete, count 1, version 0");
  EXPECT_TRUE(nothing.publishIn(published, false)) << "clearing what is clear";
  EXPECT_TRUE(published.null());
}

TEST(ReferenceSetCanonical, DestroysWhatItClearsWhenNoOneHoldsIt) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef nothing;
  takeHistory();
  EXPECT_TRUE(nothing.publishIn(published, false));
  EXPECT_EQ(takeHistory(), lines{"destroyed a"});
}

TEST(ReferenceCommitable, HoldsForAPrivateCopyOfWhatIsStillCanonical) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef unpublished;
  boxRef nothing;
  boxRef own(new box("b"));
  boxRef clone;
  clone.set(true, published);
  EXPECT_FALSE(nothing.commitableIn(published));
  EXPECT_FALSE(nothing.commitableIn(unpublished));
  EXPECT_FALSE(own.commitableIn(published));
  EXPECT_TRUE(own.commitableIn(unpublished));
  EXPECT_TRUE(clone.commitableIn(published));
  EXPECT_FALSE(clone.commitableIn(unpublished));
  EXPECT_FALSE(published.commitableIn(unpublished)) << "not writable";
  own->put(RCS_NEW);
  EXPECT_TRUE(own.commitableIn(unpublished)) << "new is writable too";
  own->put(RCS_OBSOLETE);
  EXPECT_FALSE(own.commitableIn(unpublished));
  EXPECT_TRUE(clone.publishIn(published, true));
  EXPECT_FALSE(clone.commitableIn(published));
}

/// The process-wide canonical box, cleared before and after.
class TypedReference : public testing::Test {
 protected:
  TypedReference() { clear(); }
  ~TypedReference() override { clear(); }
  static void clear() { Treference<box>().setCanonical(false); }
};

TEST_F(TypedReference, IsNullByDefault) {
  const boxRef nothing;
  EXPECT_TRUE(nothing.null());
  EXPECT_EQ(nothing.stage(), RCS_NULLREF);
  EXPECT_EQ(nothing.pointer(), nullptr);
  EXPECT_EQ(nothing.operator->(), nullptr);
  EXPECT_FALSE(nothing.commitable());
  EXPECT_TRUE(nothing.parent().null());
}

TEST_F(TypedReference, HoldsWhatATypeSaysWithoutACanonicalInstance) {
  const struct {
    refType type;
    const char* after;
  } rows[] = {
      {RT_NULL, "null"},
      {RT_EMPTY, "private, count 1, version 0"},
      {RT_UPDATE, "null"},
      {RT_READ, "null"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(text(row.type));
    const boxRef built(row.type);
    EXPECT_EQ(state(built.ptr()), row.after);
    boxRef assigned;
    assigned = row.type;
    EXPECT_EQ(state(assigned.ptr()), row.after);
    EXPECT_EQ(assigned.stage(), row.type == RT_EMPTY ? RCS_PRIVATE : RCS_NULLREF);
  }
}

TEST_F(TypedReference, HoldsWhatATypeSaysWithACanonicalInstance) {
  const struct {
    refType type;
    const char* after;
  } rows[] = {
      {RT_NULL, "null"},
      {RT_EMPTY, "private, count 1, version 0"},
      {RT_UPDATE, "private, count 1, version 1, parent first"},
      {RT_READ, "canonical, count 2, version 0"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(text(row.type));
    clear();
    boxRef first(new box("first"));
    ASSERT_TRUE(first.setCanonical(true));
    first.recycle();
    {
      const boxRef built(row.type);
      EXPECT_EQ(state(built.ptr()), row.after);
    }
    boxRef assigned(new box("old"));
    takeHistory();
    assigned = row.type;
    EXPECT_EQ(state(assigned.ptr()), row.after);
    const lines history = takeHistory();
    ASSERT_FALSE(history.empty());
    EXPECT_EQ(history.back(), "destroyed old");
  }
}

TEST_F(TypedReference, GoesThroughTheLifeOfAVersion) {
  boxRef first(RT_EMPTY);
  EXPECT_TRUE(first.commitable());
  EXPECT_TRUE(boxRef::getCanonical().null());
  first->contents = 1;
  EXPECT_TRUE(first.setCanonical(true));
  EXPECT_EQ(boxRef::getCanonical().ptr(), first.ptr());
  EXPECT_EQ(first.stage(), RCS_CANONICAL);
  EXPECT_FALSE(first.commitable());
  EXPECT_FALSE(first.setCanonical(true));

  const boxRef reader(RT_READ);
  EXPECT_EQ(reader.ptr(), first.ptr());
  boxRef second(RT_UPDATE);
  boxRef rival(RT_UPDATE);
  EXPECT_TRUE(second.commitable());
  EXPECT_TRUE(rival.commitable());
  EXPECT_EQ(second.parent().ptr(), first.ptr());
  EXPECT_EQ(state(first.ptr()), "canonical, count 5, version 0")
      << "held by: first, the canonical handle, reader, second, rival";
  second->contents = 2;
  EXPECT_TRUE(second.setCanonical(true));
  EXPECT_TRUE(second.parent().null());
  EXPECT_FALSE(rival.commitable());
  EXPECT_FALSE(rival.setCanonical(true));
  EXPECT_EQ(reader.stage(), RCS_OBSOLETE);
  EXPECT_EQ(reader->contents, 1);
  EXPECT_EQ(boxRef::getCanonical()->contents, 2);
  EXPECT_EQ(boxRef::getCanonical().version(), 1);
  EXPECT_TRUE(rival.setCanonical(false)) << "without check the later writer wins";
  EXPECT_EQ(boxRef::getCanonical()->contents, 1);
}

TEST_F(TypedReference, CountsVersionsUpOnePublicationAtATime) {
  boxRef first(RT_EMPTY);
  ASSERT_TRUE(first.setCanonical(true));
  for (int version = 1; version <= 50; version++) {
    boxRef writer(RT_UPDATE);
    EXPECT_EQ(writer.version(), version);
    ASSERT_TRUE(writer.setCanonical(true));
  }
  EXPECT_EQ(boxRef::getCanonical().version(), 50);
  EXPECT_EQ(state(first.ptr()), "obsolete, count 1, version 0");
}

TEST_F(TypedReference, CopiesAndAssignsAsHandlesDo) {
  boxRef holder(new box("a"));
  boxRef copy(holder);
  EXPECT_EQ(holder.ptr()->count(), 2);
  copy = RT_NULL;
  EXPECT_EQ(holder.ptr()->count(), 1);
  copy = holder.pointer();
  EXPECT_EQ(holder.ptr()->count(), 2);
  EXPECT_EQ(&*copy, holder.pointer());
  const boxRef& constant = copy;
  EXPECT_EQ(&*constant, holder.pointer());
  EXPECT_EQ(constant->label, "a");
}

TEST_F(TypedReference, GivesAHandleToTheParent) {
  boxRef published(boxIn(RCS_CANONICAL, "a"));
  boxRef writer;
  writer.set(true, published);
  {
    const Treference<box> parent = writer.parent();
    EXPECT_EQ(parent.ptr(), published.ptr());
    EXPECT_EQ(published.ptr()->count(), 3);
  }
  EXPECT_EQ(published.ptr()->count(), 2);
  EXPECT_TRUE(published.parent().null());
}

/// Counted, but not a box.
class crate : public counted {
 public:
  counted* clone() const override { return nullptr; }
  const char* className() const override { return "crate"; }
};

TEST_F(TypedReference, GivesNoPointerToAnObjectOfAnotherClass) {
  boxRef holder;
  static_cast<reference&>(holder) = static_cast<counted*>(new crate);
  const boxRef& constant = holder;
  EXPECT_FALSE(holder.null());
  EXPECT_NE(holder.ptr(), nullptr);
  EXPECT_EQ(holder.pointer(), nullptr);
  EXPECT_EQ(constant.pointer(), nullptr);
  EXPECT_EQ(holder.operator->(), nullptr);
  EXPECT_EQ(constant.operator->(), nullptr);
  EXPECT_EQ(holder.stage(), RCS_PRIVATE);
}

TEST_F(TypedReference, KeepsOneCanonicalInstanceForEachType) {
  boxRef first(new box("a"));
  ASSERT_TRUE(first.setCanonical(true));
  EXPECT_TRUE(Treference<crate>::getCanonical().null());
  EXPECT_FALSE(Treference<box>::getCanonical().null());
}

}  // namespace

}  // namespace refcount_publish_test
