// SPDX-License-Identifier: MIT
// What a program's locale and a stream's flags must not change.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <clocale>
#include <iomanip>
#include <locale>
#include <ostream>
#include <sstream>
#include <string>

#include "asserts.h"
#include "conversion.h"
#include "datetime.h"
#include "events.h"
#include "locales.h"
#include "processes.h"
#include "regexpr.h"
#include "uri.h"

namespace locale_test {

namespace {

struct place {
  const char* name;
};

// It names the tests.
std::ostream& operator<<(std::ostream& out, const place& value) {
  return out << value.name;
}

class InTheLocale : public testing::TestWithParam<place> {
 protected:
  void SetUp() override {
    if (!chooseLocale(GetParam().name)) {
      GTEST_SKIP() << "localedef cannot make it: install the package locales";
    }
  }

  void TearDown() override { std::setlocale(LC_ALL, "C"); }
};

TEST_P(InTheLocale, LinksAreReadAsEverywhere) {
  for (const char* good :
       {"vnc://I/", "VNC://h/", "SSH://i/", "DICT://WIKI.I/", "IRI://I-I/", "vnc://[FE80::1]:5/"}) {
    EXPECT_TRUE(URI(good).okay()) << good;
  }
  EXPECT_EQ(URI("DICT://h/").scheme(), "DICT");
  for (const char* bad :
       {"\xC3\xA9x://h/", "\xE9x://h/", "x\xE9://h/", "vnc://\xE9/", "vnc://\xC3\xA9/",
        "\xFDx://h/", "\xDDx://h/", "vnc://\xDD/", "vnc://\xC4\xB0/", "vnc://[\xE9]/"}) {
    EXPECT_FALSE(URI(bad).okay()) << quote(bad);
  }
}

TEST_P(InTheLocale, ExpressionsMatchAsEverywhere) {
  EXPECT_TRUE(RegExpr("^i$", false).matchs("I"));
  EXPECT_TRUE(RegExpr("^I$", false).matchs("i"));
  EXPECT_TRUE(RegExpr("^[a-z]+$", false).matchs("WIKI"));
  EXPECT_FALSE(RegExpr("^[a-z]+$", false).matchs("\xE9"));
  EXPECT_FALSE(RegExpr("^[a-z]+$", true).matchs("\xC3\xA9"));
  EXPECT_FALSE(RegExpr("^[[:alpha:]]$", true).matchs("\xE9"));
  EXPECT_TRUE(RegExpr("^..$", true).matchs("\xC3\xA9")) << "a character is a byte";
  EXPECT_EQ(RegExpr("I", false).match("xi").start, 1U);
  EXPECT_TRUE(RegExpr("I", false).matchsAt("xi", 1));
}

// A locale that is set or left after the expression was made changes nothing, either.
TEST_P(InTheLocale, ExpressionsOfAnotherLocaleMatchAsEverywhere) {
  const RegExpr made("^[a-z]i$", false);
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  std::setlocale(LC_ALL, "C");
  EXPECT_TRUE(made.matchs("II"));
  const RegExpr before("^[a-z]i$", false);
  std::setlocale(LC_ALL, locale.c_str());
  EXPECT_TRUE(before.matchs("II"));
  EXPECT_FALSE(before.matchs("\xE9I"));
}

TEST_P(InTheLocale, TheProgramKeepsItsLocale) {
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  const bool isLetter = std::isalpha(0xE9) != 0;
  EXPECT_TRUE(URI("vnc://h/").okay());
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);
  EXPECT_EQ(std::isalpha(0xE9) != 0, isLetter);
  EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
}

TEST_P(InTheLocale, OnlyAsciiLettersHaveACase) {
  std::string text;
  for (int c = 1; c < 256; c++) {
    text += static_cast<char>(c);
  }
  std::string upper = text;
  for (std::size_t c = 'a'; c <= 'z'; c++) {
    upper[c - 1] = static_cast<char>(c - 'a' + 'A');
  }
  std::string lower = text;
  for (std::size_t c = 'A'; c <= 'Z'; c++) {
    lower[c - 1] = static_cast<char>(c - 'A' + 'a');
  }
  std::string changed = text;
  setCase(changed.data(), static_cast<int>(changed.size()), true);
  EXPECT_EQ(changed, upper);
  changed = text;
  setCase(changed.data(), -1, false);
  EXPECT_EQ(changed, lower);
}

TEST_P(InTheLocale, TextsOfErrorNumbersAreEnglish) {
  const OSevent event(WARNING, AUD_DEVEL, ENOENT, "a", "b");
  EXPECT_EQ(event.codeToText(ENOENT), "No such file or directory");
}

INSTANTIATE_TEST_SUITE_P(Each, InTheLocale,
                         testing::Values(place{"tr_TR.UTF-8"}, place{"tr_TR.ISO-8859-9"},
                                         place{"de_DE.ISO-8859-1"}, place{"de_DE.UTF-8"},
                                         place{"et_EE.UTF-8"}, place{"ja_JP.EUC-JP"}));

// Groups digits by one and by two, as no real locale does.
class groups : public std::numpunct<char> {
 protected:
  char do_thousands_sep() const override { return '\''; }
  std::string do_grouping() const override { return "\1\2"; }
};

class withGroups {
 public:
  withGroups() : m_before(std::locale::global(std::locale(std::locale::classic(), new groups))) {}
  withGroups(const withGroups&) = delete;
  withGroups& operator=(const withGroups&) = delete;
  ~withGroups() { std::locale::global(m_before); }

 private:
  std::locale m_before;
};

// A stream with every flag that changes how numbers look.
struct strangeStream : std::ostringstream {
  strangeStream() {
    imbue(std::locale(std::locale::classic(), new groups));
    *this << std::hex << std::showbase << std::showpos << std::uppercase << std::left;
  }
};

gregorianDate aDate() {
  gregorianDate date;
  date.year = 2026;
  date.month = 11;
  date.day = 15;
  date.hour = 11;
  date.minute = 7;
  date.second = 34;
  date.mseconds = 42517;
  return date;
}

TEST(DateOnAStream, IsTheSameWhateverTheStream) {
  strangeStream out;
  out << aDate();
  EXPECT_EQ(out.str(), "2026/11/15@11:7:34.042517");
  const withGroups grouped;
  std::ostringstream plain;
  plain << aDate();
  EXPECT_EQ(plain.str(), "2026/11/15@11:7:34.042517");
}

TEST(DateOnAStream, HasFieldsOfAnySign) {
  gregorianDate date = aDate();
  date.year = -5;
  date.hour = -2147483647 - 1;
  strangeStream out;
  out << date;
  EXPECT_EQ(out.str(), "-5/11/15@-2147483648:7:34.042517");
}

TEST(ThreadIdOnAStream, IsTheSameWhateverTheStream) {
  const std::string expected = int2decimal(getpid()) + "/-1";
  strangeStream out;
  out << thisThreadId();
  EXPECT_EQ(out.str(), expected);
  const withGroups grouped;
  std::ostringstream plain;
  plain << thisThreadId();
  EXPECT_EQ(plain.str(), expected);
}

// Its extras have a number.
class numberedEvent : public commonEvent {
 public:
  using commonEvent::commonEvent;
  ~numberedEvent() override { report(); }

 protected:
  void writeExtras(std::ostream& out) const override { out << " no. " << 1234567; }
};

TEST(Message, IsTheSameWhateverTheLocale) {
  const withGroups grouped;
  ASSERT_TRUE(traceFlag::set("reportThread", 1));
  const storingHandler handler(1, AUD_ALL, SUCCESS);
  numberedEvent(WARNING, AUD_DEVEL, EC_COMMENT, "a", "b");
  EXPECT_EQ(handler.str().find(int2decimal(getpid()) + "/-1-"), 0U) << handler.str();
  EXPECT_NE(handler.str().find("\"a\" no. 1234567 | b"), std::string::npos) << handler.str();
}

TEST(Message, IsTheSameWhateverTheStream) {
  strangeStream out;
  commonEvent event(WARNING, AUD_DEVEL, EC_COMMENT, "a", "b");
  event.addParameter("c");
  out << event;
  EXPECT_EQ(out.str(), "Warning: commonEvent/comment \"a\" { \"c\" } | b");
}

}  // namespace

}  // namespace locale_test
