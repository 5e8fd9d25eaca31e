// SPDX-License-Identifier: MIT
#include "countedMap.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "children.h"
#include "configDB.h"
#include "stringcomp.h"
#include "very_end.h"

namespace countedMap_test {

namespace {

/// A value that shows how it was built.
struct entry {
  entry(std::string aText, std::string aSource, bool aFirst, bool aSecond)
      : text(std::move(aText)), source(std::move(aSource)), first(aFirst), second(aSecond) {}
  static const char* className() { return "entry"; }

  std::string text;
  std::string source;
  bool first;
  bool second;
};

using entryMap = countedMap<std::string, entry, caseInsensitive>;

/// A value that records its end.
struct mortal {
  mortal(const std::string&, const std::string&, bool, bool) {}
  mortal(const mortal&) = default;
  mortal& operator=(const mortal&) = default;
  ~mortal() { dprintf(STDOUT_FILENO, "destroyed\n"); }
  static const char* className() { return "mortal"; }
};

/// A handle whose protected operations are public.
class entryRef : public countedMapRef<std::string, entry, caseInsensitive> {
 public:
  explicit entryRef(refType type) : countedMapRef(type) {}
  using countedMapRef::operator=;
  using reference::advance;
};

/// Every test starts and ends without a canonical map, and with a clean dummy.
class CountedMap : public testing::Test {
 protected:
  CountedMap() { clear(); }
  ~CountedMap() override { clear(); }

  static void clear() {
    entryRef(RT_NULL).setCanonical(false);
    entryMap::dummy() = entry("", "", false, false);
  }

  /// Publishes a map with one entry, Key=value.
  static void publish() {
    entryRef writer(RT_EMPTY);
    writer.make("Key", true).text = "value";
    ASSERT_TRUE(writer.setCanonical(true));
  }
};

TEST_F(CountedMap, IsACountedObjectThatIsNotCopied) {
  EXPECT_TRUE((std::is_base_of_v<counted, entryMap>));
  EXPECT_FALSE(std::is_copy_constructible_v<entryMap>);
  EXPECT_FALSE(std::is_copy_assignable_v<entryMap>);
  EXPECT_TRUE((std::is_base_of_v<Treference<entryMap>, entryRef>));
  EXPECT_EQ(sizeof(countedMapRef<std::string, entry, caseInsensitive>), sizeof(reference));
}

TEST_F(CountedMap, StartsEmpty) {
  entryMap map;
  EXPECT_TRUE(map.map().empty());
  EXPECT_EQ(map.count(), 0);
  EXPECT_EQ(map.stage(), RCS_NEW);
  EXPECT_EQ(map.version(), 0);
  EXPECT_EQ(map.parent(), nullptr);
}

TEST_F(CountedMap, IsNamedAfterItsValues) {
  const entryMap map;
  EXPECT_STREQ(map.className(), "countedMap<entry>");
  const entryMap other;
  EXPECT_EQ(map.className(), other.className()) << "built once and kept";
  const countedMap<std::string, configItem, caseInsensitive> database;
  EXPECT_STREQ(database.className(), "countedMap<configItem>");
}

TEST_F(CountedMap, KeepsItsNameToTheVeryEndOfTheProcess) {
  using databaseMap = countedMap<std::string, configItem, caseInsensitive>;
  const processEnd end = runFreshChild([] {
    atVeryEnd = [] { dprintf(STDOUT_FILENO, "<%s>\n", databaseMap().className()); };
    return databaseMap().className() == nullptr ? 1 : 0;
  });
  EXPECT_EQ(end.output, "<countedMap<configItem>>\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST_F(CountedMap, DestroysItsDummyAtExit) {
  const processEnd end = runFreshChild([] {
    const auto& dummy = countedMap<std::string, mortal, caseInsensitive>::dummy();
    dprintf(STDOUT_FILENO, "made\n");
    return &dummy == &countedMap<std::string, mortal, caseInsensitive>::dummy() ? 0 : 1;
  });
  EXPECT_EQ(end.output, "made\ndestroyed\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST_F(CountedMap, HasOneEmptyDummy) {
  const entry& dummy = entryMap::dummy();
  EXPECT_EQ(dummy.text, "");
  EXPECT_EQ(dummy.source, "");
  EXPECT_FALSE(dummy.first);
  EXPECT_FALSE(dummy.second);
  EXPECT_EQ(&entryMap::dummy(), &dummy);
  EXPECT_EQ(&entryRef::dummy(), &dummy);
}

TEST_F(CountedMap, HasAnEmptyConfigurationItemAsTheDummyOfTheDatabase) {
  const configItem& dummy = configDB::dummy();
  EXPECT_TRUE(dummy.empty());
  EXPECT_TRUE(dummy.getDefaults().empty());
  EXPECT_TRUE(dummy.getDN().empty());
  EXPECT_FALSE(dummy.isDN());
}

TEST_F(CountedMap, SharesTheDummyAmongAllCallers) {
  entryMap map;
  map.make("", true).text = "stored by mistake";
  const entryMap other;
  EXPECT_EQ(other.find("nothing").text, "stored by mistake");
  EXPECT_EQ(entryRef(RT_NULL).find("nothing").text, "stored by mistake");
}

TEST_F(CountedMap, FindsWhatIsStored) {
  entryMap map;
  map.make("Key", true).text = "value";
  const struct {
    const char* key;
    bool found;
  } rows[] = {{"Key", true}, {"KEY", true},   {"key", true},   {"kEy", true},
              {"Ke", false}, {"Keys", false}, {" Key", false}, {"", false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.key);
    const entry& found = map.find(row.key);
    EXPECT_EQ(found.text, row.found ? "value" : "");
    EXPECT_EQ(&found == &entryMap::dummy(), !row.found);
  }
}

TEST_F(CountedMap, MakesEntriesByStageKeyAndWish) {
  enum what { STORED, INSERTED, DUMMY };
  const struct {
    refCountStage stage;
    const char* key;
    bool create;
    what result;
  } rows[] = {
      {RCS_NEW, "key", true, STORED},
      {RCS_NEW, "key", false, STORED},
      {RCS_NEW, "other", true, INSERTED},
      {RCS_NEW, "other", false, DUMMY},
      {RCS_NEW, "", true, DUMMY},
      {RCS_NEW, "", false, DUMMY},
      {RCS_PRIVATE, "KEY", true, STORED},
      {RCS_PRIVATE, "KEY", false, STORED},
      {RCS_PRIVATE, "other", true, INSERTED},
      {RCS_PRIVATE, "other", false, DUMMY},
      {RCS_PRIVATE, "", true, DUMMY},
      {RCS_PRIVATE, "", false, DUMMY},
      {RCS_CANONICAL, "Key", true, DUMMY},
      {RCS_CANONICAL, "Key", false, DUMMY},
      {RCS_CANONICAL, "other", true, DUMMY},
      {RCS_CANONICAL, "other", false, DUMMY},
      {RCS_CANONICAL, "", true, DUMMY},
      {RCS_OBSOLETE, "Key", true, DUMMY},
      {RCS_OBSOLETE, "Key", false, DUMMY},
      {RCS_OBSOLETE, "other", true, DUMMY},
      {RCS_OBSOLETE, "other", false, DUMMY},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(text(row.stage)) + " \"" + row.key + "\"" +
                 (row.create ? " create" : ""));
    auto* map = new entryMap;
    entry& stored = map->make("Key", true);
    stored.text = "value";
    entryRef holder(RT_NULL);
    if (row.stage != RCS_NEW) {
      holder = map;
      holder.advance(row.stage);
    }
    ASSERT_EQ(map->stage(), row.stage);
    entry& made = map->make(row.key, row.create);
    EXPECT_EQ(&made == &stored, row.result == STORED);
    EXPECT_EQ(&made == &entryMap::dummy(), row.result == DUMMY);
    EXPECT_EQ(map->map().size(), row.result == INSERTED ? 2U : 1U);
    EXPECT_EQ(map->map().count(row.key),
              row.result == INSERTED || *row.key == 'K' || *row.key == 'k' ? 1U : 0U);
    if (row.result == INSERTED) {
      EXPECT_EQ(made.text, "");
      EXPECT_EQ(made.source, "");
      EXPECT_FALSE(made.first);
      EXPECT_FALSE(made.second);
      EXPECT_EQ(&map->find(row.key), &made);
    }
    if (row.stage == RCS_NEW) {
      delete map;
    }
  }
}

TEST_F(CountedMap, MakesAFirstEntryOnlyOnWish) {
  entryMap map;
  EXPECT_EQ(&map.make("key", false), &entryMap::dummy());
  EXPECT_TRUE(map.map().empty());
  EXPECT_NE(&map.make("key", true), &entryMap::dummy());
  EXPECT_EQ(map.map().size(), 1U);
}

TEST_F(CountedMap, KeepsTheLetterCaseOfTheFirstInsertionAndTheOrderOfItsKeys) {
  entryMap map;
  map.make("b", true);
  map.make("C", true);
  map.make("A", true);
  map.make("B", true);
  std::vector<std::string> keys;
  for (const auto& [key, value] : map.map()) {
    keys.push_back(key);
  }
  EXPECT_EQ(keys, (std::vector<std::string>{"A", "b", "C"}));
}

TEST_F(CountedMap, ClonesIntoAFreshObjectWithCopiesOfTheValues) {
  entryRef holder(RT_EMPTY);
  entry& original = holder.make("Key", true);
  original = entry("value", "source", true, true);
  holder.advance(RCS_CANONICAL);
  counted* copy = holder.pointer()->clone();
  auto* map = dynamic_cast<entryMap*>(copy);
  ASSERT_NE(map, nullptr);
  EXPECT_EQ(map->stage(), RCS_NEW);
  EXPECT_EQ(map->count(), 0);
  EXPECT_EQ(map->version(), 0);
  EXPECT_EQ(map->parent(), nullptr);
  entry& copied = map->make("key", false);
  EXPECT_NE(&copied, &original);
  EXPECT_EQ(copied.text, "value");
  EXPECT_EQ(copied.source, "source");
  EXPECT_TRUE(copied.first);
  EXPECT_TRUE(copied.second);
  copied.text = "changed";
  EXPECT_EQ(holder.find("Key").text, "value");
  delete copy;
}

TEST_F(CountedMap, RemovesAnEntryByItsKey) {
  entryMap map;
  map.make("Key", true);
  EXPECT_FALSE(map.remove("other"));
  EXPECT_FALSE(map.remove(""));
  EXPECT_EQ(map.map().size(), 1U);
  EXPECT_TRUE(map.remove("KEY"));
  EXPECT_EQ(map.map().size(), 0U);
  EXPECT_FALSE(map.remove("Key"));
}

TEST_F(CountedMap, KeepsItsEntriesWhenItIsNotWritable) {
  for (const refCountStage stage : {RCS_CANONICAL, RCS_OBSOLETE}) {
    SCOPED_TRACE(text(stage));
    entryRef holder(RT_EMPTY);
    holder.make("Key", true).text = "value";
    holder.advance(stage);
    EXPECT_FALSE(holder.remove("Key"));
    EXPECT_FALSE(holder->remove("Key"));
    EXPECT_EQ(holder.find("Key").text, "value");
  }
}

TEST_F(CountedMap, GivesItsContentsForWritingWhileItIsWritable) {
  entryRef holder(RT_EMPTY);
  holder->Wmap(true).try_emplace("Key", "value", "", false, false);
  holder->Wmap(false).try_emplace("Other", "more", "", false, false);
  EXPECT_EQ(holder.find("key").text, "value");
  EXPECT_EQ(holder.find("other").text, "more");
  holder.advance(RCS_CANONICAL);
  holder->Wmap(false).try_emplace("Third", "lost", "", false, false);
  EXPECT_EQ(&holder.find("Third"), &entryMap::dummy());
  EXPECT_EQ(holder.size(), 2U);
}

TEST_F(CountedMap, LooksUpNothingThroughANullHandle) {
  entryRef nothing(RT_NULL);
  EXPECT_EQ(&nothing.find("Key"), &entryMap::dummy());
  EXPECT_EQ(&nothing.find(""), &entryMap::dummy());
  EXPECT_EQ(&nothing.make("Key", true), &entryMap::dummy());
  EXPECT_EQ(&nothing.make("Key", false), &entryMap::dummy());
  EXPECT_FALSE(nothing.remove("Key"));
  EXPECT_EQ(nothing.size(), 0U);
}

TEST_F(CountedMap, HoldsWhatATypeSays) {
  const struct {
    refType type;
    bool published, null;
    refCountStage stage;
    std::size_t size;
  } rows[] = {
      {RT_NULL, false, true, RCS_NULLREF, 0},   {RT_EMPTY, false, false, RCS_PRIVATE, 0},
      {RT_UPDATE, false, true, RCS_NULLREF, 0}, {RT_READ, false, true, RCS_NULLREF, 0},
      {RT_NULL, true, true, RCS_NULLREF, 0},    {RT_EMPTY, true, false, RCS_PRIVATE, 0},
      {RT_UPDATE, true, false, RCS_PRIVATE, 1}, {RT_READ, true, false, RCS_CANONICAL, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(text(row.type)) + (row.published ? " of a published map" : ""));
    clear();
    if (row.published) {
      publish();
    }
    const entryRef built(row.type);
    EXPECT_EQ(built.null(), row.null);
    EXPECT_EQ(built.stage(), row.stage);
    EXPECT_EQ(built.size(), row.size);
    // An update that finds nothing published does not destroy the version that it releases.
    entryRef assigned(row.published ? RT_EMPTY : RT_NULL);
    assigned = row.type;
    EXPECT_EQ(assigned.null(), row.null);
    EXPECT_EQ(assigned.stage(), row.stage);
    EXPECT_EQ(assigned.size(), row.size);
  }
}

TEST_F(CountedMap, KeepsThePublishedMapApartFromAnUpdate) {
  publish();
  const entryRef reader(RT_READ);
  entryRef writer(RT_UPDATE);
  EXPECT_EQ(writer.version(), 1);
  writer.make("key", false).text = "changed";
  writer.make("new", true).text = "added";
  EXPECT_EQ(reader.find("Key").text, "value");
  EXPECT_EQ(&reader.find("new"), &entryMap::dummy());
  ASSERT_TRUE(writer.setCanonical(true));
  EXPECT_EQ(reader.find("Key").text, "value") << "a reader keeps its version";
  EXPECT_EQ(reader.stage(), RCS_OBSOLETE);
  EXPECT_EQ(entryRef(RT_READ).find("Key").text, "changed");
  EXPECT_EQ(&writer.make("late", true), &entryMap::dummy());
  EXPECT_EQ(writer.size(), 2U);
}

TEST_F(CountedMap, SharesTheMapAmongCopiesOfAHandle) {
  entryRef holder(RT_EMPTY);
  entryRef copy(holder);
  copy.make("Key", true).text = "value";
  EXPECT_EQ(holder.find("Key").text, "value");
  entryRef assigned(RT_NULL);
  assigned = copy;
  EXPECT_EQ(assigned.ptr(), holder.ptr());
  EXPECT_EQ(holder.ptr()->count(), 3);
}

}  // namespace

}  // namespace countedMap_test
