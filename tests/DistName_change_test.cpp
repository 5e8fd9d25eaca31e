// SPDX-License-Identifier: MIT
// Renaming, the search for a free name, escaping and the orderings.

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "DistName.h"
#include "configDB.h"
#include "configRef.h"
#include "events.h"
#include "stringcomp.h"
#include "threading.h"

namespace DistName_change_test {

namespace {

// The private step of `sortable`.
void makeSortable(const DistName& dn);

template <void (DistName::*step)() const>
struct opened {
  friend void makeSortable(const DistName& dn) { (dn.*step)(); }
};
template struct opened<&DistName::makeSortable>;

DistName name(const std::string& text) {
  return DistName(text, DistName::SIMPLE);
}

/// -1, 0 or 1.
int sign(int value) {
  return (value > 0) - (value < 0);
}

// --- Renaming ----------------------------------------------------------------

TEST(DistNameRename, ReplacesTheValueOfTheFirstSegment) {
  const struct {
    const char* text;
    const char* value;
    const char* expected;
  } cases[] = {
      {"CN=a,OU=b,DC=c", "z", "CN=z,OU=b,DC=c"},
      {"CN=a", "z", "CN=z"},
      {"CN=a,OU=b", "", "CN=,OU=b"},
      {"CN=,OU=b", "z", "CN=z,OU=b"},
      {"CN=", "z", "CN=z"},
      {"CN=a\\,b,OU=c", "z", "CN=z,OU=c"},
      {"CN=a\\\\,OU=c", "z", "CN=z,OU=c"},
      {"CN=a=b,OU=c", "z", "CN=z,OU=c"},
      {" CN = a , OU=b", "z", " CN =z, OU=b"},
      // The value is used as it is.
      {"CN=a,OU=b", "x,y", "CN=x,y,OU=b"},
      {"CN=a,OU=b", " x\\", "CN= x\\,OU=b"},
      // Without "=" nothing changes.
      {"a,b", "z", "a,b"},
      {"a", "z", "a"},
      {"", "z", ""},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    const DistName dn(row.text);
    EXPECT_EQ(dn.rename(row.value).str(), row.expected);
    EXPECT_EQ(dn.str(), row.text);
  }
}

// --- The search for a free name ----------------------------------------------

/// Accepts one text, and keeps every text that it was asked about.
class wanted : public DistName::criterion {
 public:
  explicit wanted(const std::string& text) : m_text(text) {}
  bool operator()(const DistName& dn) const override {
    asked.push_back(dn.str());
    return dn.str() == m_text;
  }

  mutable std::vector<std::string> asked;

 private:
  std::string m_text;
};

using texts = std::vector<std::string>;

TEST(DistNameNewName, IsTheNameItselfWhenThatIsAcceptable) {
  const wanted criterion("CN=host-4,DC=c");
  EXPECT_EQ(name("CN=host-4,DC=c").newName(criterion, 3, 20).str(), "CN=host-4,DC=c");
  EXPECT_EQ(criterion.asked, (texts{"CN=host-4,DC=c"}));
}

TEST(DistNameNewName, TriesAsManySuffixesAsTheLimitAllows) {
  const wanted criterion("none");
  EXPECT_EQ(name("CN=host,DC=c").newName(criterion, 3, 20).str(), "");
  EXPECT_EQ(criterion.asked,
            (texts{"CN=host,DC=c", "CN=host-1,DC=c", "CN=host-2,DC=c", "CN=host-3,DC=c"}));
}

TEST(DistNameNewName, ReturnsTheFirstAcceptableName) {
  const wanted criterion("CN=host-2,DC=c");
  EXPECT_EQ(name("CN=host,DC=c").newName(criterion, 3, 20).str(), "CN=host-2,DC=c");
  EXPECT_EQ(criterion.asked, (texts{"CN=host,DC=c", "CN=host-1,DC=c", "CN=host-2,DC=c"}));

  const wanted last("CN=host-3,DC=c");
  EXPECT_EQ(name("CN=host,DC=c").newName(last, 3, 20).str(), "CN=host-3,DC=c");
}

TEST(DistNameNewName, CountsOnFromTheSuffixOfTheName) {
  const wanted criterion("none");
  EXPECT_EQ(name("CN=host-9,DC=c").newName(criterion, 2, 20).str(), "");
  EXPECT_EQ(criterion.asked, (texts{"CN=host-9,DC=c", "CN=host-10,DC=c", "CN=host-11,DC=c"}));
}

TEST(DistNameNewName, GoesOnWithoutALimit) {
  for (const int limit : {0, -1, -5}) {
    SCOPED_TRACE(limit);
    const wanted criterion("CN=host-50,DC=c");
    EXPECT_EQ(name("CN=host,DC=c").newName(criterion, limit, 20).str(), "CN=host-50,DC=c");
    EXPECT_EQ(criterion.asked.size(), 51U);
  }
}

TEST(DistNameNewName, EndsAtTwoThousandMillionWithoutALimit) {
  const wanted criterion("none");
  EXPECT_EQ(name("CN=h-1999999998,DC=c").newName(criterion, 0, 20).str(), "");
  EXPECT_EQ(criterion.asked,
            (texts{"CN=h-1999999998,DC=c", "CN=h-1999999999,DC=c", "CN=h-2000000000,DC=c"}));
}

TEST(DistNameNewName, CutsTheShortNameForTheSuffix) {
  const wanted criterion("none");
  EXPECT_EQ(name("CN=abcdef-8,DC=c").newName(criterion, 2, 5).str(), "");
  EXPECT_EQ(criterion.asked, (texts{"CN=abcdef-8,DC=c", "CN=abc-9,DC=c", "CN=ab-10,DC=c"}));
}

TEST(DistNameNewName, WritesTheCommaAlsoWithoutAParent) {
  const wanted criterion("none");
  EXPECT_EQ(name("CN=host").newName(criterion, 1, 20).str(), "");
  EXPECT_EQ(criterion.asked, (texts{"CN=host", "CN=host-1,"}));
}

TEST(DistNameNewName, BuildsOnTheParsedParts) {
  // Blanks after the first comma are gone, and the short name is not escaped
  // again.
  const wanted criterion("none");
  name("CN = a\\,b ,  OU=x, DC=c").newName(criterion, 1, 20);
  EXPECT_EQ(criterion.asked, (texts{"CN = a\\,b ,  OU=x, DC=c", "CN =a,b-1,OU=x, DC=c"}));
}

TEST(DistNameNewName, CountsFromMinusOneBehindASuffixThatIsTooLarge) {
  const wanted criterion("none");
  name("CN=h-99999999999,DC=c").newName(criterion, 2, 20);
  EXPECT_EQ(criterion.asked, (texts{"CN=h-99999999999,DC=c", "CN=h-0,DC=c", "CN=h-1,DC=c"}));
}

// --- Texts of values ---------------------------------------------------------

TEST(DistNameNameOkay, TakesUTF8WithoutControlCodesAndTildes) {
  const struct {
    const char* text;
    bool okay;
  } cases[] = {
      {"", true},
      {"John Smith", true},
      {"\xC3\xA9t\xC3\xA9", true},
      {"\xF0\x9F\x98\x80", true},
      {"a\x7F", true},
      {"a}", true},
      {"a~b", false},
      {"a\x1F", false},
      {"a\tb", false},
      {"a\nb", false},
      {"\xFF", false},
      {"\xC3", false},
      {"\xC0\x80", false},
      {"\xED\xA0\x80", false},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(DistName::nameOkay(row.text), row.okay);
  }
  EXPECT_FALSE(DistName::nameOkay(std::string("a\0b", 3)));
}

struct escapeCase {
  std::string text;
  std::string escaped;
};

TEST(DistNameEscape, PutsABackslashBeforeWhatHasAMeaning) {
  const escapeCase cases[] = {
      {"", ""},
      {"John Smith", "John Smith"},
      {",", "\\,"},
      {"+", "\\+"},
      {"\"", "\\\""},
      {"\\", "\\\\"},
      {";", "\\;"},
      {"<", "\\<"},
      {"=", "\\="},
      {">", "\\>"},
      {"a,b+c\"d\\e;f<g=h>i", "a\\,b\\+c\\\"d\\\\e\\;f\\<g\\=h\\>i"},
      {"#a", "\\#a"},
      {"#", "\\#"},
      {"a#", "a#"},
      {"##", "\\##"},
      {" a#", "\\ a#"},
      {" #", "\\ #"},
      {"a ", "a\\ "},
      {" a b ", "\\ a b\\ "},
      {" ", "\\ "},
      {"  ", "\\ \\ "},
      {"   ", "\\  \\ "},
      {"\ta\t", "\ta\t"},
      {"a/b.c:d*e?f", "a/b.c:d*e?f"},
      {"\xC3\xA9\xFF", "\xC3\xA9\xFF"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE("<" + row.text + ">");
    EXPECT_EQ(DistName::escape(row.text), row.escaped);
  }
}

TEST(DistNameEscape, WritesANulAsABackslashAndTwoZeros) {
  EXPECT_EQ(DistName::escape(std::string("a\0b", 3)), "a\\00b");
  EXPECT_EQ(DistName::escape(std::string("\0", 1)), "\\00");
  EXPECT_EQ(DistName::escape(std::string(" \0 ", 3)), "\\ \\00\\ ");
}

TEST(DistNameUnescape, ReadsPairsOfHexadecimalDigitsWithoutZeros) {
  const escapeCase cases[] = {
      {"\\2C", ","},
      {"\\2c", ","},
      {"\\11", "\x11"},
      {"\\C3\\a9", "\xC3\xA9"},
      {"\\fF", "\xFF"},
      {"\\2C2C", ",2C"},
      {"a\\2Cb", "a,b"},
      // A digit 0 makes no pair.
      {"\\20", "20"},
      {"\\02", "02"},
      {"\\00", "00"},
      {"\\0\\2C", "0,"},
      {"\\2\\2C", "2,"},
      {"\\A0\\0A", "A00A"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(DistName::unescape(row.text), row.escaped);
  }
}

TEST(DistNameUnescape, DropsOtherBackslashes) {
  const escapeCase cases[] = {
      {"", ""},           {"plain", "plain"}, {"\\,", ","},
      {"\\\\", "\\"},     {"\\\\2C", "\\2C"}, {"\\\\\\2C", "\\,"},
      {"\\ a\\ ", " a "}, {"\\#", "#"},       {"\\G2", "G2"},
      {"\\2G", "2G"},     {"\\2", "2"},       {"\\", ""},
      {"a\\", "a"},       {"a\\\\\\", "a\\"}, {"\\\xC3\xA9", "\xC3\xA9"},
      {"2C", "2C"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(DistName::unescape(row.text), row.escaped);
  }
}

// --- The sortable form and the order by it -----------------------------------

TEST(DistNameSortable, StartsAtTheRootInLowerCase) {
  const struct {
    const char* text;
    const char* expected;
  } cases[] = {
      {"CN=John, OU=Users, DC=com", "dc=com\tou=users\tcn=john"},
      {"CN=John", "cn=john"},
      {"", ""},
      {"\t CN=x \n,\r OU=y \v,\f DC=c ", "dc=c\tou=y\tcn=x"},
      // Blanks inside a segment stay.
      {"CN = X  Y,DC=c", "dc=c\tcn = x  y"},
      // Escapes stay, and so does an escaped blank at the end.
      {"CN=A\\,B,DC=c", "dc=c\tcn=a\\,b"},
      {"CN=a\\\\,DC=c", "dc=c\tcn=a\\\\"},
      {"CN=a\\\\\\,b,DC=c", "dc=c\tcn=a\\\\\\,b"},
      {"CN=a\\ ,DC=c", "dc=c\tcn=a\\ "},
      {"CN=a\\  ,DC=c", "dc=c\tcn=a\\ "},
      {"CN=a\\\\ ,DC=c", "dc=c\tcn=a\\\\ "},
      // Empty segments count.
      {"CN=x,,DC=c", "dc=c\t\tcn=x"},
      {"CN=x,  ,DC=c", "dc=c\t\tcn=x"},
      {"CN=x,", "\tcn=x"},
      // Only the letters A to Z have case.
      {"CN=\xC3\x89\xC4", "cn=\xC3\x89\xC4"},
      {"CN=[@Z`{", "cn=[@z`{"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_STREQ(name(row.text).sortable(), row.expected);
  }
}

TEST(DistNameSortable, KeepsAnEmptySegmentBeforeALeadingComma) {
  EXPECT_STREQ(name(",CN=x").sortable(), "cn=x\t");
  EXPECT_EQ(name(",DC=com").canonicalName(), "com");
}

TEST(DistNameSortable, IsMadeOnce) {
  const DistName dn("CN=x,DC=c");
  const char* const first = dn.sortable();
  EXPECT_EQ(dn.compare(DistName("CN=y")), dn.compare(DistName("CN=y")));
  EXPECT_EQ(dn.sortable(), first);
}

TEST(DistNameSortable, CannotBeMadeAgain) {
  semaphoreSet(false);  // so the child, which aborts, need not remove it
  const auto make = [](const DistName& dn) {
    stderrHandler handler(5, AUD_ALL);
    makeSortable(dn);
  };
  const char* const told =
      "Fatal: assert/assert failure \"m_sortable == NULL\" \\| \\.\\./directory/DNorder @ 342";
  const DistName dn("CN=x,DC=c");
  make(dn);
  EXPECT_STREQ(dn.sortable(), "dc=c\tcn=x");
  EXPECT_EXIT(make(dn), testing::KilledBySignal(SIGABRT), told);
  // A copy has the form of its original.  A name that is assigned to has none.
  const DistName copy(dn);
  EXPECT_EXIT(make(copy), testing::KilledBySignal(SIGABRT), told);
  DistName assigned("CN=y");
  make(assigned);
  assigned = dn;
  make(assigned);
  EXPECT_STREQ(assigned.sortable(), "dc=c\tcn=x");
}

TEST(DistNameCompare, PutsParentsBeforeTheirChildren) {
  const texts ascending = {
      "",
      "CN=a",
      "DC=com",
      "CN=Users, DC=com",
      "CN=a,CN=users,DC=COM",
      "CN=b,CN=Users,DC=com",
      "OU=x,DC=com",
      "CN=a,OU=x,DC=com",
      "OU=x y,DC=com",
      "DC=com!",
      "DC=com2",
      "DC=\xC3\xA9",
  };
  for (std::size_t i = 0; i < ascending.size(); i++) {
    for (std::size_t j = 0; j < ascending.size(); j++) {
      SCOPED_TRACE("<" + ascending[i] + "> and <" + ascending[j] + ">");
      const DistName left = name(ascending[i]);
      const DistName right = name(ascending[j]);
      EXPECT_EQ(sign(left.compare(right)), i < j ? -1 : i > j ? 1 : 0);
      EXPECT_EQ(left < right, i < j);
      EXPECT_EQ(left == right, i == j);
      EXPECT_EQ(left.same(right), i == j);
    }
  }
}

TEST(DistNameCompare, IgnoresCaseAndBlanksAfterCommas) {
  const DistName left("CN=X,DC=COM");
  const DistName right("cn=x, dc=com");
  EXPECT_EQ(left.compare(right), 0);
  EXPECT_TRUE(left.same(right));
  EXPECT_TRUE(left == right);
  EXPECT_FALSE(left < right);
  EXPECT_FALSE(right < left);
  EXPECT_NE(left.compare(DistName("CN =X,DC=COM")), 0);
}

// --- Orderings of texts ------------------------------------------------------

struct pairCase {
  const char* left;
  const char* right;
  int order;
};

TEST(DisplayOrder, ComparesShortNamesThenWholeTexts) {
  const pairCase cases[] = {
      {"CN=a,DC=z", "CN=b,DC=a", -1},
      {"CN=B", "CN=a", 1},
      {"OU=a,DC=c", "CN=b,DC=c", -1},
      {"CN=a,DC=c", "CN=ab,DC=c", -1},
      {"CN=ab,DC=c", "CN=A,DC=c", 1},
      {"CN=,", "CN=a", -1},
      {"CN=a,DC=x", "CN=a,DC=y", -1},
      {"CN=A,DC=y", "CN=a,DC=x", 1},
      {"CN=a,DC=c", "CN=a,DC=c,DC=d", -1},
      {"CN=a", "OU=a", -1},
      {"CN=a,DC=c", "cn=A,dc=C", 0},
      {"CN=a,DC=c", "CN=a, DC=c", 1},
      // Short names are compared unescaped, digits as characters.
      {"CN=\\2Ca", "CN=-a", -1},
      {"CN=\\61", "CN=a", -1},
      {"CN=10", "CN=9", -1},
      // Bytes from 128 up come before all others.
      {"CN=\xC3\xA9", "CN=a", -1},
      {"CN=\x80", "CN=\x7F", -1},
      {"CN=\x80", "CN=\xFF", -1},
      {"CN=a,DC=\xC3\xA9", "CN=a,DC=a", -1},
      // Without "=" the short name is empty.
      {"zzz", "CN=a", -1},
      {"b", "A", 1},
      {"b", "B", 0},
      {"", "", 0},
      {"", "a", -1},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(std::string(row.left) + " and " + row.right);
    const displayOrder& order = displayOrder::instance;
    EXPECT_EQ(sign(order.compare(row.left, row.right)), row.order);
    EXPECT_EQ(sign(order.compare(row.right, row.left)), -row.order);
    EXPECT_EQ(order(row.left, row.right), row.order < 0);
    EXPECT_EQ(order(row.right, row.left), row.order > 0);
    EXPECT_EQ(displayOrder::same(row.left, row.right), row.order == 0);
    EXPECT_EQ(displayOrder::same(row.right, row.left), row.order == 0);
  }
}

TEST(DisplayOrder, GivesOneForADifferentCharacter) {
  EXPECT_EQ(displayOrder::instance.compare("CN=a", "CN=z"), -1);
  EXPECT_EQ(displayOrder::instance.compare("CN=z", "CN=a"), 1);
  EXPECT_EQ(displayOrder::instance.compare("CN=a,DC=a", "CN=a,DC=z"), -1);
}

TEST(DisplayOrder, OrdersAContainer) {
  std::map<std::string, int, strCompRef> map(displayOrder::instance.ref());
  map["CN=b,DC=1"] = 1;
  map["CN=A,DC=2"] = 2;
  map["cn=B,dc=1"] = 3;
  map["CN=a,DC=1"] = 4;
  texts keys;
  for (const auto& entry : map) keys.push_back(entry.first);
  EXPECT_EQ(keys, (texts{"CN=a,DC=1", "CN=A,DC=2", "CN=b,DC=1"}));
  EXPECT_EQ(map["CN=b,DC=1"], 3);
}

TEST(NumericOrder, ComparesShortNamesAsNumbers) {
  const struct {
    const char* left;
    const char* right;
    int difference;
  } cases[] = {
      {"CN=10,DC=a", "CN=9,DC=b", 1},
      {"CN=5", "CN=12", -7},
      {"CN=7,DC=a", "OU=7,DC=b", 0},
      {"CN=007", "CN=7", 0},
      {"CN=12abc", "CN=12", 0},
      {"CN=2147483647", "CN=0", 2147483647},
      // A text without a digit at its start is -1, and so is a number that is too large.
      {"CN=x", "CN=0", -1},
      {"CN=x", "CN=y", 0},
      {"12", "CN=0", -1},
      {"", "CN=3", -4},
      {"CN=-5", "CN=0", -1},
      {"CN=2147483648", "CN=1", -2},
      // The short name is unescaped and trimmed.
      {"CN=\\31\\32", "CN=2", 10},
      {"CN= 12 ,DC=c", "CN=2", 10},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(std::string(row.left) + " and " + row.right);
    const numericOrder& order = numericOrder::instance;
    EXPECT_EQ(order.compare(row.left, row.right), row.difference);
    EXPECT_EQ(order.compare(row.right, row.left), -row.difference);
    EXPECT_EQ(order(row.left, row.right), row.difference < 0);
    EXPECT_EQ(order(row.right, row.left), row.difference > 0);
    EXPECT_EQ(numericOrder::same(row.left, row.right), row.difference == 0);
  }
}

TEST(NumericOrder, OrdersAContainer) {
  std::map<std::string, int, strCompRef> map(numericOrder::instance.ref());
  map["CN=10"] = 1;
  map["CN=9"] = 2;
  map["OU=10"] = 3;
  map["CN=1"] = 4;
  texts keys;
  for (const auto& entry : map) keys.push_back(entry.first);
  EXPECT_EQ(keys, (texts{"CN=1", "CN=9", "CN=10"}));
}

TEST(StringOrders, AreComparators) {
  const stringComparator& display = displayOrder::instance;
  const stringComparator& numeric = numericOrder::instance;
  EXPECT_TRUE(display("CN=10", "CN=9"));
  EXPECT_FALSE(numeric("CN=10", "CN=9"));
}

TEST(StringOrders, MayBeMadeForTheOccasion) {
  const std::unique_ptr<stringComparator> display = std::make_unique<displayOrder>();
  const std::unique_ptr<stringComparator> numeric = std::make_unique<numericOrder>();
  EXPECT_TRUE((*display)("CN=10", "CN=9"));
  EXPECT_FALSE((*numeric)("CN=10", "CN=9"));
}

// --- Configuration -----------------------------------------------------------

TEST(DistNameConfiguration, RegistersTheLengthOfShortNames) {
  ThreadData::instance(false);
  const configString own("DistName_change_test", "read");
  EXPECT_EQ(own.value(true), "read");  // the first read publishes the items
  EXPECT_EQ(threadedConfigDB::local().find("MaxShortName").all(), (texts{"16"}));
  EXPECT_EQ(threadedConfigDB::local().find("maxshortname").getDefaults(), (texts{"16"}));
}

}  // namespace

}  // namespace DistName_change_test
