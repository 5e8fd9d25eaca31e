// SPDX-License-Identifier: MIT
// Objects in the tables of languages, texts and per-thread data that are destroyed
// before the process ends.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "language.h"
#include "reports.h"
#include "threading.h"

namespace leaving_tables_test {

namespace {

int objects = 0;

struct countedObject : ThreadedDataObject {
  explicit countedObject(int number) : kind(number) { objects++; }
  countedObject(const countedObject&) = delete;
  countedObject& operator=(const countedObject&) = delete;
  ~countedObject() override { objects--; }
  int kind;
};

class kindOfData : public ThreadedDatatype {
 public:
  explicit kindOfData(int number) : m_number(number) {}
  ThreadedDataObject* create() const override { return new countedObject(m_number); }
  const char* name() const override { return "kindOfData"; }

  // The number of the object's kind, 0 without an object.
  int kindOfObject() const {
    const ThreadedDataObject* const object = data(true);
    return object != nullptr ? static_cast<const countedObject*>(object)->kind : 0;
  }

 private:
  int m_number;
};

TEST(KindOfData, ThatIsGoneBeforeTheThreadDataMakesNothing) {
  auto first = std::make_unique<kindOfData>(1);
  auto second = std::make_unique<kindOfData>(2);
  first.reset();
  const kindOfData third(3);
  ThreadData::instance(false);
  EXPECT_EQ(objects, 2);
  EXPECT_EQ(second->kindOfObject(), 2);
  EXPECT_EQ(third.kindOfObject(), 3);
  second.reset();
}

TEST(KindOfData, TakesItsObjectAlongAndNoOther) {
  const kindOfData first(1);
  auto second = std::make_unique<kindOfData>(2);
  const kindOfData third(3);
  ThreadData::instance(false);
  EXPECT_EQ(objects, 3);
  second.reset();
  EXPECT_EQ(objects, 2);
  EXPECT_EQ(first.kindOfObject(), 1);
  EXPECT_EQ(third.kindOfObject(), 3);
}

// Its object asks for data that is just being removed.
class asksAtTheEnd : public ThreadedDatatype {
 public:
  ThreadedDataObject* create() const override { return new asker; }
  const char* name() const override { return "asksAtTheEnd"; }
  static const kindOfData* other;
  static int answer;

 private:
  struct asker : ThreadedDataObject {
    asker() = default;
    asker(const asker&) = delete;
    asker& operator=(const asker&) = delete;
    ~asker() override { answer = other->kindOfObject(); }
  };
};
const kindOfData* asksAtTheEnd::other = nullptr;
int asksAtTheEnd::answer = -1;

TEST(KindOfData, MayAskForOtherDataWhileItsObjectGoes) {
  const kindOfData other(7);
  asksAtTheEnd::other = &other;
  auto kind = std::make_unique<asksAtTheEnd>();
  ThreadData::instance(false);
  kind.reset();
  EXPECT_EQ(asksAtTheEnd::answer, 7);
}

class someLanguage : public language {
 public:
  explicit someLanguage(const std::string& name) : language(name) {}
};

std::string languages() {
  std::string result;
  for (const auto& [name, entry] : language::list()) {
    result += name + ' ';
  }
  return result;
}

TEST(Language, ThatIsGoneIsNoLongerListed) {
  const someLanguage first("Danish");
  auto second = std::make_unique<someLanguage>("Dutch");
  const someLanguage third("Finnish");
  EXPECT_EQ(languages(), "Danish Dutch Finnish ");
  second.reset();
  EXPECT_EQ(languages(), "Danish Finnish ");
  EXPECT_EQ(&language::find("Dutch"), &first) << "the first by name replaces it";
  const someLanguage again("DUTCH");
  EXPECT_TRUE(again.okay());
  EXPECT_EQ(&language::find("Dutch"), &again);
}

TEST(Language, ThatWasRefusedTakesNoOtherAlong) {
  const someLanguage first("Danish");
  auto second = std::make_unique<someLanguage>("danish");
  EXPECT_FALSE(second->okay());
  second.reset();
  EXPECT_EQ(languages(), "Danish ");
  EXPECT_EQ(&language::find("Danish"), &first);
  std::make_unique<someLanguage>("").reset();
  EXPECT_EQ(languages(), "Danish ");
}

TEST(LanguageString, ThatIsGoneHasNoPlaceInItsVector) {
  auto first = std::make_unique<languageString>("a", "first", "vector");
  const languageString second("b", "second", "vector");
  first.reset();
  languageString::finalise();
  const language& standard = language::Default();
  EXPECT_EQ(standard.phrase("vector", 0), "second");
  EXPECT_EQ(standard.phrase("vector", 1), "<string index too large>");
  EXPECT_EQ(second(standard), "second");
}

TEST(LanguageString, ThatWasRefusedTakesNoOtherAlong) {
  const languageString first("a", "first", "vector");
  auto second = std::make_unique<languageString>("A", "second", "Vector");
  second.reset();
  languageString::finalise();
  EXPECT_EQ(language::Default().phrase("vector", 0), "first");
}

TEST(LanguageString, MayBeDeclaredAgainOnceItIsGone) {
  auto first = std::make_unique<languageString>("a", "first", "vector");
  first.reset();
  reportCatcher recorder;
  const languageString second("a", "second", "vector");
  EXPECT_EQ(recorder.take().size(), 0U);
  languageString::finalise();
  EXPECT_EQ(second(language::Default()), "second");
}

TEST(LanguageString, LeavesItsTextBehindForWhoHasIt) {
  auto text = std::make_unique<languageString>("a", "a text that is on the heap", "vector");
  languageString::finalise();
  const std::string& kept = (*text)(language::Default());
  text.reset();
  EXPECT_EQ(kept, "a text that is on the heap");
  EXPECT_EQ(language::Default().phrase("vector", 0), "a text that is on the heap");
}

}  // namespace

}  // namespace leaving_tables_test
