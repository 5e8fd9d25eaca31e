// SPDX-License-Identifier: MIT
// Localised strings: languages, vectors of texts, and declared texts.

#include "language.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <type_traits>
#include <vector>

#include "../brimcore/language_tables.h"
#include "DistName.h"
#include "children.h"
#include "configDB.h"
#include "events.h"
#include "kept_traces.h"
#include "reports.h"
#include "test_language.h"
#include "threading.h"

namespace language_test {

namespace {

static_assert(!std::is_copy_constructible_v<language>);
static_assert(!std::is_copy_assignable_v<language>);
static_assert(std::has_virtual_destructor_v<language>);
static_assert(!std::is_constructible_v<language, const std::string&>);
static_assert(std::is_base_of_v<language, badLanguage>);

// Declared before `main`.  The order does not matter.
languageString banana("banana", "a banana", "Early Fruit");
languageString apple("Apple", "an apple", "Early Fruit");

// Makes `value` the value of the item `defaultLanguage`.  The first read of the
// configuration with thread data finalises the declared texts.
void configure(const std::string& value) {
  ThreadData::instance(false);
  getDateFormat("");
  {
    editableConfigDB editor;
    editor.set("defaultLanguage", value, DistName(), false);
  }
  threadedConfigDB::refresh();
}

std::string names() {
  std::string result;
  for (const auto& [name, entry] : language::list()) result += name + "=" + entry->name() + " ";
  return result;
}

// --- Languages -------------------------------------------------------------

TEST(language, IsRegisteredUnderItsName) {
  reportCatcher probe(5);
  testLanguage& french = testLanguage::make("French");
  EXPECT_EQ(french.name(), "French");
  EXPECT_TRUE(french.okay());
  EXPECT_EQ(&language::find("French"), &french);
  EXPECT_EQ(&language::find("fRENCH"), &french);
  EXPECT_TRUE(probe.seen.empty());
}

TEST(language, RefusesANameThatIsTaken) {
  testLanguage& first = testLanguage::make("French");
  reportCatcher probe(5);
  testLanguage& second = testLanguage::make("FRENCH");
  ASSERT_EQ(probe.seen.size(), 1u);
  EXPECT_EQ(probe.seen[0].written,
            "Severe: commonEvent/duplicate value \"FRENCH\" | language::registerName");
  EXPECT_EQ(static_cast<int>(probe.seen[0].audience), 24);
  EXPECT_EQ(second.name(), "");
  EXPECT_FALSE(second.okay());
  EXPECT_EQ(&language::find("FRENCH"), &first);
  EXPECT_EQ(names(), "French=French ");
}

TEST(language, WithoutANameIsNotRegistered) {
  reportCatcher probe(5);
  testLanguage& first = testLanguage::make("");
  testLanguage& second = testLanguage::make("");
  EXPECT_EQ(first.name() + second.name(), "");
  EXPECT_TRUE(probe.seen.empty());
  EXPECT_EQ(names(), "");
}

TEST(language, HasACode) {
  testLanguage& french = testLanguage::make("French");
  EXPECT_EQ(french.code(), "en");
  french.setCode("fr");
  EXPECT_EQ(french.code(), "fr");
  french.setCode("");
  EXPECT_EQ(french.code(), "en");
}

TEST(language, ListsAllInTheOrderOfTheirNames) {
  EXPECT_EQ(names(), "");
  testLanguage::make("gamma");
  testLanguage::make("Beta");
  testLanguage::make("alpha");
  testLanguage::make("Delta");
  EXPECT_EQ(names(), "alpha=alpha Beta=Beta Delta=Delta gamma=gamma ");
}

TEST(language, FindsItsStandByWhileNoneIsRegistered) {
  reportCatcher probe(5);
  language& bad = language::Default();
  EXPECT_EQ(bad.name(), "BAD");
  EXPECT_NE(dynamic_cast<badLanguage*>(&bad), nullptr);
  EXPECT_EQ(&language::find("French"), &bad);
  EXPECT_EQ(&language::find(""), &bad);
  EXPECT_EQ(&language::Default(), &bad) << "created once";
  EXPECT_EQ(bad.code(), "en");
  EXPECT_TRUE(probe.seen.empty()) << probe.seen[0].written;
}

TEST(language, KeepsItsStandByAmongTheRegistered) {
  language& bad = language::Default();
  EXPECT_EQ(names(), "BAD=BAD ");
  testLanguage& zulu = testLanguage::make("Zulu");
  EXPECT_EQ(&language::Default(), &bad) << "the first by name";
  EXPECT_EQ(&language::find("Zulu"), &zulu);
  testLanguage& afrikaans = testLanguage::make("Afrikaans");
  EXPECT_EQ(&language::Default(), &afrikaans);
}

TEST(language, TakesTheOnlyOneForItsDefault) {
  testLanguage& french = testLanguage::make("French");
  EXPECT_EQ(&language::Default(), &french);
  EXPECT_EQ(&language::find("German"), &french);
  EXPECT_EQ(names(), "French=French ") << "no substitute is needed";
}

TEST(language, TakesTheFirstByNameWithoutTheConfiguredOne) {
  testLanguage& german = testLanguage::make("german");
  EXPECT_EQ(&language::Default(), &german);
  testLanguage& french = testLanguage::make("French");
  EXPECT_EQ(&language::Default(), &french);
  testLanguage::make("Welsh");
  EXPECT_EQ(&language::Default(), &french);
  EXPECT_EQ(&language::find("nowhere"), &french);
  EXPECT_EQ(&language::find("GERMAN"), &german);
}

TEST(language, TakesTheConfiguredOneForItsDefault) {
  testLanguage& danish = testLanguage::make("Danish");
  testLanguage& english = testLanguage::make("ENGLISH");
  testLanguage& french = testLanguage::make("French");
  EXPECT_EQ(&language::Default(), &english) << "the item's own default is English";
  EXPECT_EQ(&language::find("Klingon"), &english);
  configure("french");
  EXPECT_EQ(&language::Default(), &french);
  configure("Klingon");
  EXPECT_EQ(&language::Default(), &danish);
  configure("");
  reportCatcher probe(5);
  EXPECT_EQ(&language::Default(), &danish);
  EXPECT_TRUE(probe.seen.empty()) << probe.seen[0].written;
}

TEST(language, CannotBeLoaded) {
  testLanguage& french = testLanguage::make("French");
  french.phrases()["own"] = {"un"};
  reportCatcher probe(5);
  EXPECT_FALSE(french.load("cn=French"));
  ASSERT_EQ(probe.seen.size(), 1u);
  EXPECT_EQ(probe.seen[0].domain, "commonEvent");
  EXPECT_EQ(probe.seen[0].code, EC_NOT_IMPL);
  EXPECT_NE(probe.seen[0].operation, "");
  EXPECT_EQ(french.code(), "en");
  EXPECT_EQ(french.phrase("own", 0), "un");
}

// --- Vectors of a language -------------------------------------------------

TEST(language, GivesItsOwnVectors) {
  testLanguage& french = testLanguage::make("French");
  french.phrases()["Numbers"] = {"un", "deux", "trois"};
  EXPECT_EQ(french.phraseVec("Numbers"), (std::vector<std::string>{"un", "deux", "trois"}));
  EXPECT_EQ(&french.phraseVec("NUMBERS"), &french.phraseVec("numbers"));
}

TEST(language, SharesAVectorForAllThatAreMissing) {
  testLanguage& french = testLanguage::make("French");
  testLanguage& german = testLanguage::make("German");
  german.phrases()["Numbers"] = {"eins"};
  const std::vector<std::string>& missing = french.phraseVec("Numbers");
  EXPECT_EQ(missing, (std::vector<std::string>{"<vector name not found>"}));
  EXPECT_EQ(&french.phraseVec("other"), &missing);
  EXPECT_EQ(&german.phraseVec("other"), &missing);
}

TEST(language, LooksUpATextInItsOwnVector) {
  testLanguage& french = testLanguage::make("French");
  french.phrases()["Numbers"] = {"un", "deux", ""};
  french.phrases()["empty"] = {};
  const struct {
    const char* vector;
    int index;
    const char* expected;
  } cases[] = {
      {"Numbers", 0, "un"},
      {"Numbers", 1, "deux"},
      {"Numbers", 2, ""},
      {"Numbers", 3, "<string index too large>"},
      {"Numbers", 999, "<string index too large>"},
      {"Numbers", 1000, "un"},
      {"Numbers", 1001, "deux"},
      {"Numbers", 1003, "<string index too large>"},
      {"Numbers", 2147483000, "un"},
      {"Numbers", INT_MAX, "<string index too large>"},  // the entry 647
      {"Numbers", -1, "<negative string index>"},
      {"Numbers", -1000, "<negative string index>"},
      {"Numbers", INT_MIN, "<negative string index>"},
      {"nUMBERS", 1, "deux"},
      {"empty", 0, "<string index too large>"},
      {"missing", -1, "<negative string index>"},
      {"missing", 0, "<string vector not found>"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(french.phrase(c.vector, c.index), c.expected) << c.vector << " " << c.index;
}

TEST(language, SelectsAnEntryModulo1000) {
  testLanguage& french = testLanguage::make("French");
  std::vector<std::string>& many = french.phrases()["many"];
  for (int i = 0; i < 1200; i++) many.push_back("text " + std::to_string(i));
  EXPECT_EQ(french.phrase("many", 5), "text 5");
  EXPECT_EQ(french.phrase("many", 1005), "text 5");
  EXPECT_EQ(french.phrase("many", 999), "text 999");
  EXPECT_EQ(french.phrase("many", 1000), "text 0");
  EXPECT_EQ(french.phrase("many", INT_MAX), "text 647");
}

TEST(language, SharesItsFallbackTexts) {
  testLanguage& french = testLanguage::make("French");
  testLanguage& german = testLanguage::make("German");
  EXPECT_EQ(&french.phrase("x", -1), &german.phrase("y", -2));
  EXPECT_EQ(&french.phrase("x", 0), &german.phrase("y", 1));
}

TEST(language, DefersToTheDefaultLanguageForAVectorThatItLacks) {
  testLanguage& english = testLanguage::make("English");
  testLanguage& french = testLanguage::make("French");
  english.phrases()["Numbers"] = {"one", "two", "three"};
  english.phrases()["Colours"] = {"red"};
  french.phrases()["Numbers"] = {"un"};
  EXPECT_EQ(french.phrase("Numbers", 0), "un");
  EXPECT_EQ(french.phrase("Numbers", 1), "<string index too large>")
      << "a short vector is not completed";
  EXPECT_EQ(french.phrase("COLOURS", 1000), "red");
  EXPECT_EQ(french.phrase("Colours", 1), "<string index too large>");
  EXPECT_EQ(french.phrase("Shapes", 0), "<string vector not found>");
  // A language that is not registered takes them from the default, too.
  EXPECT_EQ(testLanguage::make("French").phrase("Numbers", 2), "three");
}

TEST(language, FollowsAChangeOfTheDefaultLanguage) {
  testLanguage& english = testLanguage::make("English");
  testLanguage& french = testLanguage::make("French");
  testLanguage& welsh = testLanguage::make("Welsh");
  english.phrases()["Numbers"] = {"one"};
  french.phrases()["Numbers"] = {"un"};
  EXPECT_EQ(welsh.phrase("Numbers", 0), "one");
  configure("French");
  EXPECT_EQ(welsh.phrase("Numbers", 0), "un");
  configure("Welsh");
  EXPECT_EQ(welsh.phrase("Numbers", 0), "<string vector not found>");
}

// --- Default vectors -------------------------------------------------------

const char* const fruitKeywords[] = {"apple", "banana", "cherry", nullptr};
const char* const fruitTexts[] = {"an apple", "a banana", "a cherry", nullptr};

TEST(languageVector, ServesAsTheDefault) {
  const languageVector fruit("Fruit", fruitKeywords, fruitTexts);
  testLanguage& english = testLanguage::make("English");
  testLanguage& french = testLanguage::make("French");
  for (const language* asked :
       {static_cast<language*>(&english), static_cast<language*>(&french)}) {
    SCOPED_TRACE(asked->name());
    EXPECT_EQ(asked->phrase("Fruit", 0), "an apple");
    EXPECT_EQ(asked->phrase("Fruit", 2), "a cherry");
    EXPECT_EQ(asked->phrase("Fruit", 1001), "a banana");
    EXPECT_EQ(asked->phrase("Fruit", 3), "<string index too large>");
    EXPECT_EQ(asked->phrase("Fruit", -1), "<negative string index>");
    // Default vectors are looked up case-sensitively.
    EXPECT_EQ(asked->phrase("fruit", 0), "<string vector not found>");
    EXPECT_EQ(asked->phrase("Fruits", 0), "<string vector not found>");
    // No language has them as its own.
    EXPECT_EQ(asked->phraseVec("Fruit"), (std::vector<std::string>{"<vector name not found>"}));
  }
  french.phrases()["FRUIT"] = {"une pomme"};
  EXPECT_EQ(french.phrase("Fruit", 0), "une pomme");
  EXPECT_EQ(french.phrase("Fruit", 1), "<string index too large>");
}

TEST(languageVector, ServesTheStandByLanguage) {
  const languageVector fruit("Fruit", fruitKeywords, fruitTexts);
  EXPECT_EQ(language::find("none").phrase("Fruit", 1), "a banana");
}

TEST(languageVector, CountsItsTextsApartFromItsKeywords) {
  static const char* const one[] = {"one", nullptr};
  const char* const none[] = {nullptr};
  const languageVector moreTexts("more texts", one, fruitTexts);
  const languageVector moreKeywords("more keywords", fruitKeywords, one);
  const languageVector noTexts("no texts", fruitKeywords, none);
  const languageVector nothing("nothing", nullptr, nullptr);
  const language& any = language::Default();
  EXPECT_EQ(any.phrase("more texts", 2), "a cherry");
  EXPECT_EQ(any.phrase("more keywords", 0), "one");
  EXPECT_EQ(any.phrase("more keywords", 1), "<string index too large>");
  EXPECT_EQ(any.phrase("no texts", 0), "<string index too large>");
  EXPECT_EQ(any.phrase("nothing", 0), "<string index too large>");
}

// Code that reads vectors from elsewhere uses the keywords.
TEST(languageVector, IsKeptWithItsKeywords) {
  const languageVector fruit("Fruit", fruitKeywords, fruitTexts);
  const internal::vectorDetails& details = internal::defaultVectors()["Fruit"].back();
  ASSERT_EQ(details.Nkeywords, 3);
  ASSERT_EQ(details.keywords.size(), 4u);
  EXPECT_EQ(details.keywords[0], fruitKeywords[0]);
  EXPECT_EQ(details.keywords[2], fruitKeywords[2]);
  EXPECT_EQ(details.keywords[3], nullptr);
  EXPECT_EQ(details.Ndefaults, 3);
}

TEST(languageVector, ReplacesOneOfItsName) {
  const char* const texts[] = {"eine Frucht", nullptr};
  const languageVector first("Fruit", fruitKeywords, fruitTexts);
  const std::string& before = language::Default().phrase("Fruit", 2);
  const languageVector second("Fruit", fruitKeywords, texts);
  EXPECT_EQ(language::Default().phrase("Fruit", 0), "eine Frucht");
  EXPECT_EQ(language::Default().phrase("Fruit", 2), "<string index too large>");
  EXPECT_EQ(before, "a cherry") << "a text lives as long as the process";
}

TEST(languageVector, CopiesItsTexts) {
  std::string text = "before";
  const char* const texts[] = {text.c_str(), nullptr};
  const languageVector copied("copied", fruitKeywords, texts);
  text[0] = 'B';
  EXPECT_EQ(language::Default().phrase("copied", 0), "before");
}

TEST(length, CountsUpToTheNullEntry) {
  const char* const none[] = {nullptr};
  const char* const two[] = {"", "b", nullptr, "c"};
  EXPECT_EQ(length(nullptr), 0);
  EXPECT_EQ(length(none), 0);
  EXPECT_EQ(length(two), 2);
  EXPECT_EQ(length(fruitTexts), 3);
}

TEST(length, GuardsAgainstAMissingEnd) {
  std::vector<const char*> many(9999, "text");
  many.push_back(nullptr);
  EXPECT_EQ(length(many.data()), 9999);
  many.back() = "text";
  many.push_back(nullptr);
  const processEnd end = runSharingChild([&] {
    stderrHandler handler(5, AUD_ALL);
    length(many.data());
  });
  EXPECT_EQ(end.ending, "signal 6");
  EXPECT_NE(
      end.errors.find(": Fatal: assert/assert failure \"++result < 10000\" | ../brimcore/language"),
      std::string::npos)
      << end.errors;
}

TEST(length, LooksNoFurtherThanItsGuard) {
  const std::vector<const char*> endless(10000, "text");  // without a null entry
  const processEnd end = runSharingChild([&] { length(endless.data()); });
  EXPECT_EQ(end.ending, "signal 6") << end.errors;
  EXPECT_EQ(end.errors, "");
}

// --- Declared texts --------------------------------------------------------

TEST(languageString, GivesItsDefaultBeforeItIsFinalised) {
  testLanguage& english = testLanguage::make("English");
  english.phrases()["Early Fruit"] = {"of the language", "of the language"};
  EXPECT_EQ(apple(english), "an apple");
  EXPECT_EQ(banana(english), "a banana");
  EXPECT_EQ(apple.defaultValue(), "an apple");
  EXPECT_EQ(language::Default().phrase("Fruit", 0), "<string vector not found>");
}

TEST(languageString, IsLookedUpInTheLanguageOnceItIsFinalised) {
  testLanguage& english = testLanguage::make("English");
  testLanguage& french = testLanguage::make("French");
  reportCatcher probe(5);
  languageString::finalise();
  EXPECT_TRUE(probe.seen.empty()) << probe.seen[0].written;
  EXPECT_EQ(apple(english), "an apple");
  EXPECT_EQ(banana(english), "a banana");
  french.phrases()["EARLY FRUIT"] = {"une pomme"};
  EXPECT_EQ(apple(french), "une pomme");
  EXPECT_EQ(banana(french), "<string index too large>");
  EXPECT_EQ(banana.defaultValue(), "a banana");
  english.phrases()["early fruit"] = {"the apple", "the banana"};
  EXPECT_EQ(banana(testLanguage::make("Welsh")), "the banana");
}

TEST(languageString, IsFinalisedByTheFirstReadOfTheConfiguration) {
  configure("English");
  EXPECT_EQ(language::Default().phrase("Early Fruit", 0), "an apple");
  reportCatcher probe(5);
  languageString::finalise();
  ASSERT_EQ(probe.seen.size(), 1u);
  EXPECT_EQ(probe.seen[0].qualifier, "Repeated calls");
}

TEST(languageString, StandsInTheOrderOfTheKeywords) {
  static languageString d("delta", "D", "Greek"), b("Beta", "B", "Greek"), a("alpha", "A", "Greek"),
      c("Chi", "C", "Greek");
  static languageString first("x", "1", "Digits"), second("Y", "2", "Digits");
  languageString::finalise();
  const language& any = language::Default();
  const char* const expected[] = {"A", "B", "C", "D", "<string index too large>"};
  for (int i = 0; i < 5; i++) EXPECT_EQ(any.phrase("Greek", i), expected[i]) << i;
  EXPECT_EQ(any.phrase("Digits", 0), "1");
  EXPECT_EQ(any.phrase("Digits", 1), "2");
  EXPECT_EQ(any.phrase("Digits", 2), "<string index too large>");
  for (languageString* one : {&a, &b, &c, &d, &first, &second})
    EXPECT_EQ((*one)(any), one->defaultValue());
  EXPECT_EQ(any.phrase("GREEK", 0), "<string vector not found>");
}

TEST(languageString, IsKeptWithItsKeyword) {
  static languageString b("Beta", "B", "Greek"), a("alpha", "A", "Greek");
  languageString::finalise();
  const internal::vectorDetails& details = internal::defaultVectors()["Greek"].back();
  ASSERT_EQ(details.Nkeywords, 2);
  ASSERT_EQ(details.keywords.size(), 3u);
  EXPECT_STREQ(details.keywords[0], "alpha");
  EXPECT_STREQ(details.keywords[1], "Beta");
  EXPECT_EQ(details.keywords[2], nullptr);
  EXPECT_EQ(details.Ndefaults, 2);
}

TEST(languageString, StandsUnderTheVectorNameOfTheFirstOfItsRun) {
  static languageString z("zebra", "a zebra", "Animals"), a("ant", "an ant", "ANIMALS"),
      m("mouse", "a mouse", "animals");
  languageString::finalise();
  const language& any = language::Default();
  EXPECT_EQ(any.phrase("ANIMALS", 0), "an ant");
  EXPECT_EQ(any.phrase("ANIMALS", 1), "a mouse");
  EXPECT_EQ(any.phrase("ANIMALS", 2), "a zebra");
  EXPECT_EQ(any.phrase("Animals", 0), "<string vector not found>");
  EXPECT_EQ(a(any), "an ant");
  // The others ask by their own spelling, which the default vectors do not know.
  EXPECT_EQ(m(any), "<string vector not found>");
  EXPECT_EQ(z(any), "<string vector not found>");
  testLanguage& french = testLanguage::make("French");
  french.phrases()["animals"] = {"une fourmi", "une souris", "un zèbre"};
  EXPECT_EQ(z(french), "un zèbre");
}

TEST(languageString, RefusesAKeywordThatIsTaken) {
  static languageString first("Open", "open it", "Actions");
  reportCatcher probe(5);
  static languageString second("OPEN", "open again", "actions");
  ASSERT_EQ(probe.seen.size(), 1u);
  EXPECT_EQ(
      probe.seen[0].written,
      "Severe: commonEvent/duplicate value \"OPEN/actions\" | languageString::languageString");
  EXPECT_EQ(probe.seen[0].audience, AUD_DEVEL);
  static languageString elsewhere("Open", "open elsewhere", "Other actions");
  EXPECT_EQ(probe.seen.size(), 1u) << "another vector is another matter";
  languageString::finalise();
  testLanguage& french = testLanguage::make("French");
  french.phrases()["Actions"] = {"ouvrir"};
  EXPECT_EQ(first(french), "ouvrir");
  EXPECT_EQ(second(french), "open again");
  EXPECT_EQ(second.defaultValue(), "open again");
  EXPECT_EQ(elsewhere(french), "open elsewhere");
  french.phrases()["Actions"] = {"ouvrir", "fermer"};
  EXPECT_EQ(second(french), "open again");
}

TEST(languageString, ReplacesADefaultVectorOfItsName) {
  const languageVector vector("Fruit", fruitKeywords, fruitTexts);
  static languageString only("pear", "a pear", "Fruit");
  EXPECT_EQ(language::Default().phrase("Fruit", 0), "an apple");
  languageString::finalise();
  EXPECT_EQ(language::Default().phrase("Fruit", 0), "a pear");
  EXPECT_EQ(language::Default().phrase("Fruit", 1), "<string index too large>");
}

TEST(languageString, ReportsASecondFinaliseAndKeepsItsIndices) {
  static languageString b("b", "the second", "Letters"), a("a", "the first", "Letters");
  languageString::finalise();
  testLanguage& french = testLanguage::make("French");
  const std::string& before = french.phrase("Letters", 1);
  reportCatcher probe(5);
  languageString::finalise();
  ASSERT_EQ(probe.seen.size(), 1u);
  EXPECT_EQ(probe.seen[0].written,
            "Failure: commonEvent/Bad sequence of operations \"Repeated calls\" | "
            "languageString::finalise()");
  EXPECT_EQ(probe.seen[0].audience, AUD_DEVEL);
  EXPECT_EQ(french.phrase("Letters", 0), "the first");
  EXPECT_EQ(french.phrase("Letters", 1), "the second");
  EXPECT_EQ(before, "the second") << "a text lives as long as the process";
  french.phrases()["Letters"] = {"premier", "deuxième"};
  EXPECT_EQ(a(french), "premier");
  EXPECT_EQ(b(french), "deuxième");
  languageString::finalise();
  EXPECT_EQ(probe.seen.size(), 2u) << "every repeated call is reported";
}

TEST(languageString, IsTakenInByASecondFinalise) {
  static languageString b("b", "the second", "Letters");
  languageString::finalise();
  static languageString a("a", "the first", "Letters");
  testLanguage& french = testLanguage::make("French");
  french.phrases()["Letters"] = {"premier", "deuxième"};
  EXPECT_EQ(a(french), "the first") << "not finalised yet";
  EXPECT_EQ(b(french), "premier");
  languageString::finalise();
  EXPECT_EQ(a(french), "premier");
  EXPECT_EQ(b(french), "deuxième");
}

}  // namespace

}  // namespace language_test
