// SPDX-License-Identifier: MIT
// The program's locale changes nothing.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <clocale>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string>

#include "DistName.h"
#include "asserts.h"
#include "conversion.h"
#include "datetime.h"
#include "events.h"
#include "locales.h"
#include "processes.h"
#include "regexpr.h"
#include "reports.h"
#include "stringcomp.h"
#include "uri.h"

namespace edges_locale_test {

namespace {

// Groups every digit, and has "!" for the decimal point.
class oddNumbers : public std::numpunct<char> {
 protected:
  char do_thousands_sep() const override { return '\''; }
  char do_decimal_point() const override { return '!'; }
  std::string do_grouping() const override { return "\1"; }
};

void chooseOddNumbers() {
  std::locale::global(std::locale(std::locale::classic(), new oddNumbers));
}

std::string lower(std::string text) {
  setCase(text.data(), static_cast<int>(text.size()), false);
  return text;
}

std::string upper(std::string text) {
  setCase(text.data(), static_cast<int>(text.size()), true);
  return text;
}

// Exactly the URIs of the C locale are URIs.
void expectTheUsualURIs() {
  for (const char* good : {"vnc://I/", "VNC://i/", "vnc://h/", "SSH://Istanbul:22/", "i://I/?i=I",
                           "Z://z/", "vnc://[ABC::F]/"}) {
    EXPECT_TRUE(URI(good).okay()) << good;
  }
  for (const char* bad :
       {"\xE9x://h/", "\xC3\xA9x://h/", "\xFDx://h/", "\xDDx://h/", "vnc://\xE9/",
        "vnc://\xC3\xA9/", "vnc://\xFD/", "x\xE9://h/", "vnc://\xB5/", "1x://h/", "vnc://-h/"}) {
    EXPECT_FALSE(URI(bad).okay()) << quote(bad);
  }
  EXPECT_EQ(URI().parse("vnc://I").stop, US_DELIMITER);
  EXPECT_EQ(URI().parse("vnc://\xE9/").stop, US_ADDRESS);
}

void expectTheUsualCases() {
  EXPECT_EQ(lower("AZIaz[]@`{"), "aziaz[]@`{");
  EXPECT_EQ(upper("AZiaz[]@`{"), "AZIAZ[]@`{");
  EXPECT_EQ(lower("I"), "i");
  EXPECT_EQ(upper("i"), "I");
  EXPECT_EQ(lower("\xC9\xDD\xD0"), "\xC9\xDD\xD0");
  EXPECT_EQ(upper("\xE9\xFD\xFF\xB5\xDF"), "\xE9\xFD\xFF\xB5\xDF");
  EXPECT_TRUE(caseInsensitive::same("TITLE", "title"));
  EXPECT_FALSE(caseInsensitive::same("\xC9", "\xE9"));
}

}  // namespace

TEST(Locale, OfTurkeyInUtf8ChangesNoUri) {
  ASSERT_TRUE(chooseLocale("tr_TR.UTF-8")) << "install the package locales";
  expectTheUsualURIs();
  expectTheUsualCases();
}

TEST(Locale, OfTurkeyInLatin5ChangesNoUri) {
  ASSERT_TRUE(chooseLocale("tr_TR.ISO-8859-9")) << "install the package locales";
  expectTheUsualURIs();
  expectTheUsualCases();
}

TEST(Locale, OfFranceInLatin1ChangesNoUri) {
  ASSERT_TRUE(chooseLocale("fr_FR.ISO-8859-1")) << "install the package locales";
  expectTheUsualURIs();
  expectTheUsualCases();
}

TEST(Locale, OfFranceInUtf8ChangesNoUri) {
  ASSERT_TRUE(chooseLocale("fr_FR.UTF-8")) << "install the package locales";
  expectTheUsualURIs();
}

TEST(Locale, OfCIsTheMeasure) {
  expectTheUsualURIs();
  expectTheUsualCases();
}

TEST(Locale, ChosenForAnotherThreadOnlyChangesNoUri) {
  ASSERT_TRUE(chooseLocale("tr_TR.ISO-8859-9")) << "install the package locales";
  std::setlocale(LC_ALL, "C");
  expectTheUsualURIs();
}

TEST(Locale, StaysAsItWasWhenAUriIsRead) {
  ASSERT_TRUE(chooseLocale("fr_FR.ISO-8859-1")) << "install the package locales";
  const std::string before = std::setlocale(LC_ALL, nullptr);
  URI("vnc://h/?a=b").okay();
  lower("ABC");
  EXPECT_EQ(before, std::setlocale(LC_ALL, nullptr));
}

TEST(Locale, OfTheProgramChangesNoCaseWithoutRegardToC) {
  ASSERT_TRUE(chooseLocale("tr_TR.ISO-8859-9")) << "install the package locales";
  URI link("vnc://h/?TITLE=1");
  EXPECT_EQ(link.parameters["title"], "1");
}

TEST(Locale, OfStreamsChangesNoDate) {
  chooseOddNumbers();
  gregorianDate date;
  date.year = 2026;
  date.month = 11;
  date.day = 15;
  date.hour = 11;
  date.minute = 7;
  date.second = 34;
  date.mseconds = 42517;
  std::ostringstream out;
  out << date;
  EXPECT_EQ(out.str(), "2026/11/15@11:7:34.042517");
}

TEST(Locale, OfStreamsChangesNoThreadId) {
  chooseOddNumbers();
  std::ostringstream out;
  out << thisThreadId{};
  std::string expected;
  for (pid_t rest = getpid(); rest > 0; rest /= 10) {
    expected.insert(expected.begin(), static_cast<char>('0' + rest % 10));
  }
  EXPECT_EQ(out.str(), expected + "/-1");
}

TEST(Locale, OfStreamsChangesNoPositionOfAnAssertion) {
  chooseOddNumbers();
  const assertEvent event("x > 0", "../utilities/uri.cpp", 12345);
  EXPECT_EQ(event.operation().substr(event.operation().find('@')), "@ 12345");
}

TEST(Locale, OfStreamsChangesNoCodeInAMessage) {
  chooseOddNumbers();
  std::ostringstream out;
  out << bareEvent(FAILURE, AUD_DEVEL, 10000, "some words", "open");
  EXPECT_EQ(out.str(), "Failure: bare/10000 \"some words\" | open");
}

TEST(Locale, OfStreamsChangesNoMessage) {
  chooseOddNumbers();
  std::ostringstream out;
  {
    commonEvent event(WARNING, AUD_DEVEL, EC_COMMENT, "some words", "main");
    event.write(out);
  }
  EXPECT_EQ(out.str(), "Warning: commonEvent/comment \"some words\" | main");
}

TEST(StreamFlags, ChangeNoDate) {
  gregorianDate date;
  date.year = 2026;
  date.month = 11;
  date.day = 15;
  date.hour = 11;
  date.minute = 7;
  date.second = 34;
  date.mseconds = 42517;
  for (const auto base : {std::ios::hex, std::ios::oct, std::ios::dec}) {
    std::ostringstream out;
    out.setf(base, std::ios::basefield);
    out << std::showbase << std::showpos << std::uppercase << std::left;
    const std::ios::fmtflags before = out.flags();
    out << date;
    EXPECT_EQ(out.str(), "2026/11/15@11:7:34.042517");
    EXPECT_EQ(out.flags(), before);
  }
}

TEST(StreamFlags, ChangeNoMicroseconds) {
  gregorianDate date;
  date.mseconds = 7;
  std::ostringstream out;
  out << std::left << std::showpos << std::hex << date;
  EXPECT_EQ(out.str(), "1970/1/1@0:0:0.000007");
}

TEST(StreamFlags, ChangeNoThreadId) {
  std::ostringstream plain;
  plain << thisThreadId{};
  std::ostringstream out;
  out << std::hex << std::showbase << std::showpos << thisThreadId{};
  EXPECT_EQ(out.str(), plain.str());
  EXPECT_EQ(plain.str().substr(plain.str().find('/')), "/-1");
}

TEST(StreamFlags, ChangeNoMessage) {
  std::ostringstream out;
  out << std::hex << std::showbase << std::showpos << std::boolalpha << std::scientific;
  out << bareEvent(FAILURE, AUD_DEVEL, 10000, "some words", "open");
  EXPECT_EQ(out.str(), "Failure: bare/10000 \"some words\" | open");
}

}  // namespace edges_locale_test
