// SPDX-License-Identifier: MIT
#include "DistName.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>

#include "events.h"
#include "reports.h"
#include "threading.h"

namespace DistName_test {

namespace {

// Created before the library's own initialisers can run.
__attribute__((init_priority(101))) const std::string madeBeforeMain =
    DistName("CN=a,DC=B").sortable();

DistName name(const std::string& text) {
  return DistName(text, DistName::SIMPLE);
}

struct textCase {
  const char* text;
  const char* expected;
};

template <std::size_t N, class Function>
void expectTexts(const textCase (&cases)[N], Function function) {
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(std::string(function(row.text)), row.expected);
  }
}

// --- Construction and assignment ---------------------------------------------

TEST(DistName, IsPolymorphic) {
  EXPECT_TRUE(std::has_virtual_destructor_v<DistName>);
  EXPECT_TRUE(std::has_virtual_destructor_v<DistName::criterion>);
}

TEST(DistName, StartsEmpty) {
  EXPECT_EQ(DistName().str(), "");
  EXPECT_TRUE(DistName().empty());
}

TEST(DistName, KeepsTheTextAsPassedIn) {
  EXPECT_EQ(DistName(" CN = x , DC=c").str(), " CN = x , DC=c");
  EXPECT_EQ(DistName("no name, at all\\").str(), "no name, at all\\");
  EXPECT_EQ(DistName("").str(), "");
  EXPECT_EQ(DistName(static_cast<const char*>(nullptr)).str(), "");
  EXPECT_EQ(DistName("CN=x,DC=c", 4).str(), "CN=x");
  EXPECT_EQ(DistName("CN=x,DC=c", 0).str(), "");
  EXPECT_EQ(name(" CN = x , DC=c").str(), " CN = x , DC=c");
  EXPECT_EQ(name("a.b").str(), "a.b");
}

TEST(DistName, ConvertsADottedDomainName) {
  const textCase cases[] = {
      {"a.b.c", "DC=a,DC=b,DC=c"},
      {"a.b", "DC=a,DC=b"},
      {"example", "DC=example"},
      {"", "DC="},
      {".", "DC=,DC="},
      {"a..b", "DC=a,DC=,DC=b"},
      {"Host.Example.COM", "DC=Host,DC=Example,DC=COM"},
  };
  expectTexts(cases,
              [](const char* text) { return DistName(std::string(text), DistName::DOMAIN); });
}

TEST(DistName, ReportsAnUnknownConstructionStyleAndKeepsTheText) {
  EXPECT_EQ(DistName::SIMPLE, 0);
  EXPECT_EQ(DistName::DOMAIN, 1);

  reportCatcher probe(5);
  const DistName odd(std::string("a.b"), static_cast<DistName::DNconStyle>(7));
  EXPECT_EQ(odd.str(), "a.b");
  ASSERT_EQ(probe.seen.size(), 1U);
  const seenReport& report = probe.seen[0];
  EXPECT_EQ(report.severity, SEVERE);
  EXPECT_EQ(report.audience, AUD_DEVEL | AUD_AUDIT);
  EXPECT_EQ(report.code, EC_UNKNOWN_VALUE);
  EXPECT_EQ(report.qualifier, "DNconStyle: 7");
  EXPECT_EQ(report.operation, "DistName::DistName");
  EXPECT_EQ(report.written,
            "Severe: commonEvent/unknown value \"DNconStyle: 7\" | DistName::DistName");

  const DistName negative(std::string(), static_cast<DistName::DNconStyle>(-1));
  ASSERT_EQ(probe.seen.size(), 2U);
  EXPECT_EQ(probe.seen[1].qualifier, "DNconStyle: -1");
}

TEST(DistName, ReportsNothingForTheKnownStyles) {
  reportCatcher probe(5);
  EXPECT_EQ(DistName(std::string("a.b"), DistName::SIMPLE).str(), "a.b");
  EXPECT_EQ(DistName(std::string("a.b"), DistName::DOMAIN).str(), "DC=a,DC=b");
  EXPECT_EQ(probe.seen.size(), 0U);
}

TEST(DistName, CopiesItsTextAndItsSortableForm) {
  auto original = std::make_unique<DistName>("CN=X,DC=C");
  const std::string before = original->sortable();
  const DistName copy(*original);
  EXPECT_NE(copy.sortable(), original->sortable()) << "the two share one buffer";
  original.reset();
  EXPECT_EQ(copy.str(), "CN=X,DC=C");
  EXPECT_STREQ(copy.sortable(), "dc=c\tcn=x");
  EXPECT_EQ(before, "dc=c\tcn=x");

  const DistName fresh("CN=Y");
  const DistName copyOfFresh(fresh);
  EXPECT_STREQ(copyOfFresh.sortable(), "cn=y");
}

TEST(DistName, DropsItsSortableFormWhenItIsAssignedTo) {
  DistName target("CN=old,DC=c");
  EXPECT_STREQ(target.sortable(), "dc=c\tcn=old");
  const DistName source("CN=new");
  EXPECT_STREQ(source.sortable(), "cn=new");
  DistName& result = (target = source);
  EXPECT_EQ(&result, &target);
  EXPECT_EQ(target.str(), "CN=new");
  EXPECT_STREQ(target.sortable(), "cn=new");
  EXPECT_NE(target.sortable(), source.sortable()) << "the two share one buffer";
  EXPECT_EQ(source.str(), "CN=new");

  const DistName& same = target;
  target = same;
  EXPECT_EQ(target.str(), "CN=new");
  EXPECT_STREQ(target.sortable(), "cn=new");
}

TEST(DistName, ConcatenatesTextsWithoutAComma) {
  const DistName left("CN=x");
  EXPECT_EQ((left + DistName(",DC=c")).str(), "CN=x,DC=c");
  EXPECT_EQ((left + DistName("DC=c")).str(), "CN=xDC=c");
  EXPECT_EQ((left + std::string(",DC=c")).str(), "CN=x,DC=c");
  EXPECT_EQ((left + ",DC=c").str(), "CN=x,DC=c");
  EXPECT_EQ((left + 'y').str(), "CN=xy");
  EXPECT_EQ((left + "").str(), "CN=x");
  EXPECT_EQ(left.str(), "CN=x");
}

TEST(DistName, ActsLikeItsText) {
  DistName dn("CN=x,DC=c");
  const std::string text = dn;
  EXPECT_EQ(text, "CN=x,DC=c");
  EXPECT_EQ(dn.size(), 9U);
  EXPECT_EQ(dn.length(), 9U);
  EXPECT_STREQ(dn.c_str(), "CN=x,DC=c");
  EXPECT_EQ(std::string(dn.data(), dn.size()), "CN=x,DC=c");
  EXPECT_EQ(dn.find(','), 4U);
  EXPECT_EQ(dn.find('=', 3), 7U);
  EXPECT_EQ(dn.find('z'), std::string::npos);
  EXPECT_EQ(dn.find("DC"), 5U);
  EXPECT_EQ(dn.substr(5), "DC=c");
  EXPECT_EQ(dn.substr(3, 1), "x");
  EXPECT_FALSE(dn.empty());
  dn.resize(4);
  EXPECT_EQ(dn.str(), "CN=x");
  dn.clear();
  EXPECT_EQ(dn.str(), "");
  EXPECT_TRUE(dn.empty());
}

TEST(DistName, SortsByItsTextAfterThatChanged) {
  DistName dn("CN=x,DC=c");
  EXPECT_STREQ(dn.sortable(), "dc=c\tcn=x");
  dn.resize(4);
  EXPECT_STREQ(dn.sortable(), "cn=x");
  dn.clear();
  EXPECT_STREQ(dn.sortable(), "");
}

TEST(DistName, MayBeUsedBeforeMain) {
  EXPECT_EQ(madeBeforeMain, "dc=b\tcn=a");
}

// --- Segments ----------------------------------------------------------------

TEST(DistNameSegments, CountsUnescapedCommas) {
  const struct {
    const char* text;
    unsigned int segments;
  } cases[] = {
      {"", 0},
      {"CN=x", 1},
      {"x", 1},
      {" ", 1},
      {"CN=x,DC=c", 2},
      {"CN=x, OU=y, DC=c", 3},
      {"CN=a\\,b,DC=c", 2},
      {"CN=a\\\\,b,DC=c", 3},
      {"CN=a\\\\\\,b,DC=c", 2},
      {"CN=a\\b,c", 2},
      {"\\,a,b", 2},
      {"CN=x,", 2},
      {"a,,b", 3},
      {"CN=x\\", 1},
      {"CN=x\\,", 1},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(DistName::segments(row.text), row.segments);
    EXPECT_EQ(name(row.text).segments(), row.segments);
  }
}

TEST(DistNameSegments, TakesNoCommaAtTheStartOfTheText) {
  EXPECT_EQ(DistName::segments(","), 1U);
  EXPECT_EQ(DistName::segments(",DC=c"), 1U);
  EXPECT_EQ(DistName::parent(",DC=c"), "");
}

TEST(DistNameParent, IsTheTextBehindTheFirstUnescapedComma) {
  const textCase cases[] = {
      {"", ""},
      {"CN=x", ""},
      {"CN=x,OU=y,DC=c", "OU=y,DC=c"},
      {"CN=x, \t\n OU=y, DC=c", "OU=y, DC=c"},
      {"CN=a\\,b,DC=c", "DC=c"},
      {"CN=a\\\\,b,DC=c", "b,DC=c"},
      {"\\,a,b", "b"},
      {"CN=,OU=y", "OU=y"},
      {"CN=x,", ""},
      {"CN=x,  ", ""},
      {"CN=x,DC=c ", "DC=c "},
      {"a,,b", ",b"},
      {"CN=x\\,DC=c", ""},
  };
  expectTexts(cases, [](const char* text) { return DistName::parent(text); });
  expectTexts(cases, [](const char* text) { return name(text).parent().str(); });
}

TEST(DistNameFirstKey, IsTheTextBeforeTheFirstEqualsSign) {
  const textCase cases[] = {
      {"CN=x,DC=c", "CN"}, {" CN =x", " CN "}, {"CN=a=b", "CN"}, {"=x", ""},
      {"x", ""},           {"", ""},           {"x,y", ""},      {"a,CN=x", "a,CN"},
  };
  expectTexts(cases, [](const char* text) { return DistName::firstKey(text); });
  expectTexts(cases, [](const char* text) { return name(text).firstKey(); });
}

TEST(DistNameShortName, IsTheValueOfTheFirstSegment) {
  const textCase cases[] = {
      {"CN=John,OU=Users,DC=com", "John"},
      {"CN=John", "John"},
      {"CN=John Smith,DC=c", "John Smith"},
      {"CN= \t John \n ,DC=c", "John"},
      {"CN=a=b,DC=c", "a=b"},
      {"CN=", ""},
      {"CN=   ", ""},
      {"John", ""},
      {"John,DC", ""},
      {"", ""},
      // The key does not matter, nor does the segment that it is in.
      {"=x", "x"},
      {"a,CN=x,DC=c", "x"},
  };
  expectTexts(cases, [](const char* text) { return DistName::shortName(text); });
  expectTexts(cases, [](const char* text) { return name(text).shortName(); });
}

TEST(DistNameShortName, IsUnescaped) {
  const textCase cases[] = {
      {"CN=a\\,b,DC=c", "a,b"},     {"CN = a\\,b ,DC=c", "a,b"},      {"CN=\\,x,DC=c", ",x"},
      {"CN=\\ x,DC=c", " x"},       {"CN=\\2Cx,DC=c", ",x"},          {"CN=a\\\\,DC=c", "a\\"},
      {"CN=\\#1\\+2,DC=c", "#1+2"}, {"CN=\\C3\\A9,DC=c", "\xC3\xA9"},
  };
  expectTexts(cases, [](const char* text) { return DistName::shortName(text); });
}

TEST(DistNameShortName, KeepsAnEscapedTrailingBlank) {
  const textCase cases[] = {
      {"CN=x\\ ,DC=c", "x "},
      {"CN=x\\ ", "x "},
      {"CN=x\\    ,DC=c", "x "},
      {"CN=x \\ ,DC=c", "x  "},
      {"CN=\\ ,DC=c", " "},
      // Any backslash before the blank keeps it, even an escaped one.
      {"CN=a\\\\ ,DC=c", "a\\ "},
  };
  expectTexts(cases, [](const char* text) { return DistName::shortName(text); });
}

TEST(DistNameShortName, TakesTheCommaDirectlyBehindTheEqualsSignIntoAnEmptyValue) {
  const textCase cases[] = {
      {"CN=,OU=x", ",OU=x"}, {"CN=,OU=x,DC=c", ",OU=x"}, {"CN= ,OU=x,DC=c", ",OU=x"},
      {"CN=,", ","},         {"CN=,,DC=c", ","},
  };
  expectTexts(cases, [](const char* text) { return DistName::shortName(text); });
}

// --- Parts by keyword --------------------------------------------------------

struct extractCase {
  const char* dn;
  const char* keyword;
  const char* single;
  const char* forward;
  const char* reverse;
  const char* pathUntil;
  const char* allUntil;
};

TEST(DistNameExtractId, CollectsWhatItsModeAsksFor) {
  EXPECT_EQ(DistName::SINGLE, 0);
  EXPECT_EQ(DistName::FORWARD, 1);
  EXPECT_EQ(DistName::REVERSE, 2);
  EXPECT_EQ(DistName::PATH_UNTIL, 3);
  EXPECT_EQ(DistName::ALL_UNTIL, 4);

  const extractCase cases[] = {
      {"CN=x,OU=a,OU=b,DC=c", "OU", "a", "a/b", "b/a", "", "x"},
      {"CN=x,OU=a,OU=b,DC=c", "DC", "c", "c", "c", "a/b", "x/a/b"},
      {"CN=x,OU=a,OU=b,DC=c", "CN", "x", "x", "x", "", ""},
      {"CN=x,OU=a,OU=b,DC=c", "L", "", "", "", "a/b/c", "x/a/b/c"},
      {"OU=a,CN=x,OU=b,DC=d,OU=c", "OU", "a", "a/b/c", "c/b/a", "", ""},
      {"OU=a,CN=x,OU=b,DC=d,OU=c", "DC", "d", "d", "d", "x/b", "a/x/b"},
      {"", "CN", "", "", "", "", ""},
      {"CN=x", "CN", "x", "x", "x", "", ""},
      {"CN=x", "DC", "", "", "", "", "x"},
      // Letter case of the key does not count.
      {"cn=x,ou=a,Ou=b,dC=c", "oU", "a", "a/b", "b/a", "", "x"},
      // A part of a key is not the key.
      {"CN=x,OUX=a,O=b,OU=c", "OU", "c", "c", "c", "a/b", "x/a/b"},
      // White space around keys and values is not part of them.
      {" CN = x y ,\t OU\t=\ta ,OU = b ", "OU", "a", "a/b", "b/a", "", "x y"},
      {" CN = x y , OU = a ,OU = b , DC = c ", "DC", "c", "c", "c", "a/b", "x y/a/b"},
      // Values are not unescaped, and escaped commas do not end them.
      {"CN=x,OU=a\\,b,OU=\\2C,DC=c", "OU", "a\\,b", "a\\,b/\\2C", "\\2C/a\\,b", "", "x"},
      {"CN=x,OU=a\\ ,DC=c", "OU", "a\\ ", "a\\ ", "a\\ ", "", "x"},
      {"CN=x,OU=a=b,DC=c", "OU", "a=b", "a=b", "a=b", "", "x"},
      // An empty value counts between the separators.
      {"OU= ,OU=b", "OU", "", "/b", "b/", "", ""},
      {"CN=x,OU= ,L=b", "DC", "", "", "", "/b", "x//b"},
      // A segment without "=" ends the search.
      {"CN=x,OU=a,junk", "L", "", "", "", "a", "x/a"},
      {"junk,OU=a", "OU", "", "", "", "", ""},
      {"CN=x,junk,OU=a", "DC", "", "", "", "", "x"},
  };
  const struct {
    DistName::extractMode mode;
    const char* extractCase::*expected;
  } modes[] = {
      {DistName::SINGLE, &extractCase::single},
      {DistName::FORWARD, &extractCase::forward},
      {DistName::REVERSE, &extractCase::reverse},
      {DistName::PATH_UNTIL, &extractCase::pathUntil},
      {DistName::ALL_UNTIL, &extractCase::allUntil},
  };
  for (const auto& row : cases) {
    for (const auto& mode : modes) {
      SCOPED_TRACE(std::string(row.dn) + " keyword " + row.keyword + " mode " +
                   std::to_string(mode.mode));
      EXPECT_EQ(DistName::extractId(row.dn, row.keyword, mode.mode, '/'), row.*mode.expected);
      EXPECT_EQ(name(row.dn).extractId(row.keyword, mode.mode, '/'), row.*mode.expected);
    }
  }
}

TEST(DistNameExtractId, JoinsByTheSeparator) {
  const DistName dn("CN=x,OU=a,OU=b,OU=c");
  EXPECT_EQ(dn.extractId("OU", DistName::FORWARD, '.'), "a.b.c");
  EXPECT_EQ(dn.extractId("OU", DistName::REVERSE, ','), "c,b,a");
  EXPECT_EQ(dn.extractId("L", DistName::ALL_UNTIL, ' '), "x a b c");
}

TEST(DistNameExtractId, AbortsOnAnUnknownModeWhenAKeyMatches) {
  semaphoreSet(false);  // so the child, which aborts, need not remove it
  const auto extract = [] {
    stderrHandler handler(5, AUD_ALL);
    DistName("CN=x,OU=a").extractId("OU", static_cast<DistName::extractMode>(5), '/');
  };
  EXPECT_EXIT(extract(), testing::KilledBySignal(SIGABRT),
              "Fatal: assert/assert failure \"false\" \\| \\.\\./directory/DNorder @ 426");
}

TEST(DistNameExtractId, ToleratesAnUnknownModeWhenNoKeyMatches) {
  EXPECT_EQ(DistName("CN=x,OU=a").extractId("DC", static_cast<DistName::extractMode>(5), '/'), "");
}

// --- Canonical names ---------------------------------------------------------

TEST(DistNameCanonicalName, IsAPathWithTheDomainFirst) {
  const textCase cases[] = {
      {"CN=John,OU=Users,DC=example,DC=com", "example.com/Users/John"},
      {"DC=example,DC=com", "example.com"},
      {"DC=a,DC=b,DC=c", "a.b.c"},
      {"DC=com", "com"},
      {"CN=John", "/John"},
      {"CN=John,OU=Users", "/Users/John"},
      {"", ""},
      {"CN=John,dc=Example,Dc=Com", "Example.Com/John"},
      {"CN=a=b,DC=c", "c/a=b"},
  };
  expectTexts(cases, [](const char* text) { return name(text).canonicalName(); });
}

TEST(DistNameCanonicalName, IsEmptyForANameThatEndsInABackslash) {
  const textCase cases[] = {{"CN=a\\", ""}, {"CN=a,DC=c\\", ""}, {"CN=a\\\\", ""}, {"\\", ""}};
  expectTexts(cases, [](const char* text) { return name(text).canonicalName(); });
}

TEST(DistNameCanonicalName, EndsTheDomainAtTheFirstOtherSegment) {
  const textCase cases[] = {
      {"DC=b,CN=x,DC=a", "a/x/b"},
      {"DC=c,DC=b,CN=x,DC=a", "a/x/b/c"},
      // The key of a domain component has two characters and comes directly
      // after the comma.
      {"CN=x, DC=com", "/com/x"},
      {"DC=x, DC=com", "/com/x"},
      {"CN=x,DC =com", "/com/x"},
      {"CN=x,DCX=com", "/com/x"},
      {"CN=x,D=com", "/com/x"},
      {"CN=x,XDC=com", "/com/x"},
      {"CN=x,CD=com", "/com/x"},
  };
  expectTexts(cases, [](const char* text) { return name(text).canonicalName(); });
}

TEST(DistNameCanonicalName, SkipsSegmentsWithoutAnEqualsSign) {
  const textCase cases[] = {
      {"junk", ""},           {"CN=x,junk,DC=com", "com/x"},
      {"junk,DC=com", "com"}, {"DC=a,junk,DC=com", "a.com"},
      {"DC=com,", "com"},     {"CN=x,,DC=com", "com/x"},
  };
  expectTexts(cases, [](const char* text) { return name(text).canonicalName(); });
}

TEST(DistNameCanonicalName, TakesDomainComponentsRaw) {
  const textCase cases[] = {
      {"DC= a b ,DC=com", " a b .com"}, {"DC=a\\,b,DC=com", "a\\,b.com"},
      {"DC=a/b,DC=com", "a/b.com"},     {"DC=\\2C,DC=com", "\\2C.com"},
      {"DC=,DC=com", ".com"},
  };
  expectTexts(cases, [](const char* text) { return name(text).canonicalName(); });
}

TEST(DistNameCanonicalName, EscapesSlashesAndUnescapesTheRest) {
  const textCase cases[] = {
      {"CN=a/b,DC=com", "com/a\\/b"},
      {"CN=a\\/b,DC=com", "com/a\\/b"},
      {"CN=a\\\\b,DC=com", "com/a\\\\b"},
      {"CN=a\\\\,DC=com", "com/a\\\\"},
      {"CN=a\\,b,DC=com", "com/a,b"},
      {"CN=a\\+b\\=c,DC=com", "com/a+b=c"},
      {"CN=\\2C,DC=com", "com/2C"},
      {"CN= a ,DC=com", "com/ a "},
      {"CN=,DC=com", "com/"},
  };
  expectTexts(cases, [](const char* text) { return name(text).canonicalName(); });
}

}  // namespace

}  // namespace DistName_test
