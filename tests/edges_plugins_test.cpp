// SPDX-License-Identifier: MIT
// Objects of plugins leave their tables when they are destroyed.

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "events.h"
#include "language.h"
#include "processes.h"
#include "reports.h"
#include "threading.h"

namespace edges_plugins_test {

namespace {

class plainLanguage : public language {
 public:
  explicit plainLanguage(const std::string& name) : language(name) {}
  void setText(const std::string& vectorName, const std::string& text) {
    phrases()[vectorName] = {text};
  }
};

int madeObjects = 0;
int destroyedObjects = 0;

class countedObject : public ThreadedDataObject {
 public:
  explicit countedObject(std::string objectText) : text(std::move(objectText)) { madeObjects++; }
  ~countedObject() override { destroyedObjects++; }
  std::string text;
};

class countedType : public ThreadedDatatype {
 public:
  explicit countedType(std::string text) : m_text(std::move(text)) {}
  ThreadedDataObject* create() const override { return new countedObject(m_text); }
  const char* name() const override { return "countedType"; }
  std::string found() const {
    const auto* object = dynamic_cast<const countedObject*>(data(false));
    return object != nullptr ? object->text : "nothing";
  }

 private:
  std::string m_text;
};

}  // namespace

TEST(PluginString, MayBeDeclaredAgainAfterItsEnd) {
  reportCatcher watch;
  { const languageString text("key", "first", "vector"); }
  const languageString text("KEY", "second", "Vector");
  EXPECT_TRUE(watch.seen.empty());
  const languageString again("key", "third", "vector");
  ASSERT_EQ(watch.seen.size(), 1U);
  EXPECT_EQ(watch.seen[0].code, EC_DUPL_VALUE);
}

TEST(PluginString, IsNotInAVectorThatIsBuiltAfterItsEnd) {
  auto gone = std::make_unique<languageString>("a", "text of a", "vector");
  const languageString stays("b", "text of b", "vector");
  gone.reset();
  languageString::finalise();
  EXPECT_EQ(language::Default().phrase("vector", 0), "text of b");
  EXPECT_EQ(language::Default().phrase("vector", 1), "<string index too large>");
  EXPECT_EQ(stays(language::Default()), "text of b");
}

TEST(PluginString, LeavesTheOthersTheirTextsAfterFinalise) {
  const languageString first("a", "text of a", "vector");
  auto gone = std::make_unique<languageString>("b", "text of b", "vector");
  const languageString last("c", "text of c", "vector");
  languageString::finalise();
  gone.reset();
  EXPECT_EQ(first(language::Default()), "text of a");
  EXPECT_EQ(last(language::Default()), "text of c");
}

TEST(PluginString, ThatIsADuplicateDoesNotTakeTheOtherOneOut) {
  reportCatcher watch;
  const languageString first("key", "first", "vector");
  { const languageString duplicate("key", "second", "vector"); }
  ASSERT_EQ(watch.seen.size(), 1U);
  languageString::finalise();
  EXPECT_EQ(language::Default().phrase("vector", 0), "first");
  const languageString third("key", "third", "vector");
  EXPECT_EQ(watch.seen.size(), 2U);
}

TEST(PluginString, OfAWholeVectorLeavesNoVectorThatIsBuiltAgain) {
  reportCatcher watch;
  auto only = std::make_unique<languageString>("a", "text of a", "short-lived");
  only.reset();
  languageString::finalise();
  EXPECT_EQ(language::Default().phrase("short-lived", 0), "<string vector not found>");
}

TEST(PluginLanguage, IsNotFoundAfterItsEnd) {
  {
    const plainLanguage welsh("Welsh");
    EXPECT_EQ(&language::find("Welsh"), &welsh);
    EXPECT_EQ(language::list().size(), 1U);
  }
  EXPECT_TRUE(language::list().empty() || language::list()[0].first == "BAD");
  EXPECT_EQ(language::find("Welsh").name(), "BAD");
}

TEST(PluginLanguage, MayBeRegisteredAgainAfterItsEnd) {
  reportCatcher watch;
  { const plainLanguage welsh("Welsh"); }
  plainLanguage welsh("welsh");
  EXPECT_TRUE(welsh.okay());
  EXPECT_TRUE(watch.seen.empty());
  welsh.setText("vector", "bore da");
  EXPECT_EQ(language::find("WELSH").phrase("vector", 0), "bore da");
}

TEST(PluginLanguage, ThatIsADuplicateDoesNotTakeTheOtherOneOut) {
  reportCatcher watch;
  const plainLanguage welsh("Welsh");
  {
    const plainLanguage duplicate("WELSH");
    EXPECT_FALSE(duplicate.okay());
  }
  EXPECT_EQ(&language::find("Welsh"), &welsh);
}

TEST(PluginLanguage, ThatWasTheDefaultLeavesTheNextOne) {
  const plainLanguage welsh("Welsh");
  {
    const plainLanguage english("English");
    EXPECT_EQ(&language::Default(), &english);
  }
  EXPECT_EQ(&language::Default(), &welsh);
}

TEST(PluginDatatype, TakesItsObjectAlong) {
  auto gone = std::make_unique<countedType>("gone");
  const countedType stays("stays");
  ThreadData::instance(false);
  ASSERT_EQ(gone->found(), "gone");
  ASSERT_EQ(madeObjects, 2);
  gone.reset();
  EXPECT_EQ(destroyedObjects, 1);
  EXPECT_EQ(stays.found(), "stays");
}

TEST(PluginDatatype, ThatEndsBeforeTheDataIsBuiltIsNeverAsked) {
  auto gone = std::make_unique<countedType>("gone");
  const countedType stays("stays");
  gone.reset();
  ThreadData::instance(false);
  EXPECT_EQ(madeObjects, 1);
  EXPECT_EQ(stays.found(), "stays");
}

TEST(PluginDatatype, DoesNotGiveItsSlotToTheNext) {
  auto gone = std::make_unique<countedType>("gone");
  const countedType stays("stays");
  gone.reset();
  const countedType next("next");
  ThreadData::instance(false);
  EXPECT_EQ(stays.found(), "stays");
  EXPECT_EQ(next.found(), "next");
  EXPECT_EQ(madeObjects, 2);
}

TEST(PluginDatatype, IsNotDestroyedTwiceAtTheEnd) {
  EXPECT_EXIT(
      {
        alarm(10);
        auto gone = std::make_unique<countedType>("gone");
        static const countedType stays("stays");
        ThreadData::instance(false);
        gone.reset();
        static const struct atEnd {
          ~atEnd() {
            if (ThreadData::ended()) {
              std::fprintf(stderr, "%d made, %d destroyed\n", madeObjects, destroyedObjects);
            }
          }
        } unused;
        std::atexit([] {
          std::fprintf(stderr, "at exit: %d of %d destroyed\n", destroyedObjects, madeObjects);
        });
        std::exit(0);
      },
      testing::ExitedWithCode(0), "at exit: 1 of 2 destroyed");
}

}  // namespace edges_plugins_test
