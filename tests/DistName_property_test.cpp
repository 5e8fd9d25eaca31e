// SPDX-License-Identifier: MIT
// Properties of all names, tried on many names from a fixed seed.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "DistName.h"
#include "conversion.h"

namespace DistName_property_test {

namespace {

DistName name(const std::string& text) {
  return DistName(text, DistName::SIMPLE);
}

/// -1, 0 or 1.
int sign(int value) {
  return (value > 0) - (value < 0);
}

/// A source of texts.  They are the same in every run.
class texts {
 public:
  explicit texts(unsigned int seed) : m_engine(seed) {}

  /// 0 to `limit` - 1.
  std::size_t below(std::size_t limit) { return m_engine() % limit; }

  /// Up to `longest` characters of an alphabet.
  std::string of(const std::string& alphabet, std::size_t shortest, std::size_t longest) {
    std::string result(shortest + below(longest - shortest + 1), ' ');
    for (char& c : result) c = alphabet[below(alphabet.size())];
    return result;
  }

  /// A value with characters that mean something in names, and no white space except blanks.
  std::string value() { return of("aBc1 2,+\"\\;<=>#/.F0\xC3\xA9", 1, 8); }

  /// A name of well-formed segments with escaped values.
  std::string wellFormed(std::size_t segments) {
    static const char* const keys[] = {"CN", "OU", "DC", "cn", "x"};
    std::string result;
    for (std::size_t i = 0; i < segments; i++) {
      if (i > 0) result += ',';
      result += keys[below(5)];
      result += '=';
      result += DistName::escape(value());
    }
    return result;
  }

  /// Any text, mostly of characters that mean something.
  std::string junk() { return of("aB=,\\ \t/#0C", 0, 14); }

 private:
  std::mt19937 m_engine;
};

constexpr int ROUNDS = 3000;

std::string upper(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

TEST(DistNameProperties, UnescapeReversesEscapeForTextsWithoutNul) {
  texts source(1);
  std::string anyByte;
  for (int byte = 1; byte < 256; byte++) anyByte += static_cast<char>(byte);
  for (int i = 0; i < ROUNDS; i++) {
    const std::string text = i % 2 == 0 ? source.value() : source.of(anyByte, 0, 20);
    ASSERT_EQ(DistName::unescape(DistName::escape(text)), text) << quote(text);
  }
}

TEST(DistNameProperties, AnEscapedValueIsOneSegmentAndReadsBack) {
  texts source(2);
  for (int i = 0; i < ROUNDS; i++) {
    const std::string value = source.value();
    const std::string escaped = DistName::escape(value);
    ASSERT_EQ(DistName::segments(escaped), 1U) << quote(escaped);
    ASSERT_EQ(DistName::shortName("CN=" + escaped), value) << quote(escaped);
    // A blank after a backslash counts as escaped, even after an escaped one.
    const std::string end = value.back() == '\\' ? ",DC=c" : " ,DC=c";
    ASSERT_EQ(DistName::shortName("CN= " + escaped + end), value) << quote(escaped);
    ASSERT_EQ(DistName::extractId("CN=" + escaped + ",DC=c", "CN", DistName::SINGLE, '/'), escaped);
    ASSERT_EQ(DistName::parent("CN=" + escaped + ", DC=c"), "DC=c") << quote(escaped);
  }
}

TEST(DistNameProperties, EscapeNeverShortensAndUnescapeNeverLengthens) {
  texts source(3);
  for (int i = 0; i < ROUNDS; i++) {
    const std::string text = source.junk();
    ASSERT_GE(DistName::escape(text).size(), text.size()) << quote(text);
    ASSERT_LE(DistName::escape(text).size(), 2 * text.size()) << quote(text);
    ASSERT_LE(DistName::unescape(text).size(), text.size()) << quote(text);
  }
}

TEST(DistNameProperties, ParentNeverLengthens) {
  texts source(4);
  for (int i = 0; i < ROUNDS; i++) {
    const std::string start = source.junk();
    DistName dn = name(start);
    while (!dn.empty()) {
      const DistName parent = dn.parent();
      ASSERT_LT(parent.size(), dn.size()) << quote(dn) << " from " << quote(start);
      ASSERT_LT(parent.segments(), dn.segments() + 1) << quote(dn) << " from " << quote(start);
      const std::string tail = dn.substr(dn.size() - parent.size());
      ASSERT_EQ(parent.str(), tail) << quote(dn) << " does not end with its parent";
      dn = parent;
    }
    ASSERT_EQ(dn.parent().str(), "");
  }
}

TEST(DistNameProperties, ParentTakesOneSegmentAway) {
  texts source(5);
  for (int i = 0; i < ROUNDS; i++) {
    const std::size_t segments = 1 + source.below(5);
    const DistName dn = name(source.wellFormed(segments));
    ASSERT_EQ(dn.segments(), segments) << quote(dn);
    ASSERT_EQ(dn.parent().segments(), segments - 1) << quote(dn);
  }
}

TEST(DistNameProperties, RenameChangesTheFirstValueOnly) {
  texts source(6);
  for (int i = 0; i < ROUNDS; i++) {
    const DistName dn = name(source.wellFormed(1 + source.below(4)));
    const std::string value = source.value();
    const DistName renamed = dn.rename(DistName::escape(value));
    ASSERT_EQ(renamed.shortName(), value) << quote(dn);
    ASSERT_EQ(renamed.firstKey(), dn.firstKey()) << quote(dn);
    ASSERT_EQ(renamed.parent().str(), dn.parent().str()) << quote(dn);
    ASSERT_EQ(renamed.rename(DistName::escape(dn.shortName())).str(), dn.str()) << quote(dn);
  }
}

TEST(DistNameProperties, TheSortableFormHasATabForEveryComma) {
  texts source(7);
  for (int i = 0; i < ROUNDS; i++) {
    const DistName dn = name(source.wellFormed(1 + source.below(5)));
    const std::string form = dn.sortable();
    // Such a name loses nothing by trimming: blanks at the ends of values are escaped.
    ASSERT_EQ(form.size(), dn.size()) << quote(dn);
    ASSERT_EQ(static_cast<std::size_t>(std::count(form.begin(), form.end(), '\t')) + 1,
              dn.segments())
        << quote(dn);
    ASSERT_EQ(form, DistName(dn).sortable());
  }
}

TEST(DistNameProperties, TheSortableFormIsNeverLongerThanTheName) {
  texts source(8);
  for (int i = 0; i < ROUNDS; i++) {
    const DistName dn = name(source.junk());
    ASSERT_LE(std::strlen(dn.sortable()), dn.size()) << quote(dn);
    for (const char* p = dn.sortable(); *p != '\0'; p++) {
      ASSERT_FALSE(*p >= 'A' && *p <= 'Z') << quote(dn) << " sorts as " << quote(dn.sortable());
    }
  }
}

TEST(DistNameProperties, CompareIgnoresCaseAndBlanksBetweenSegments) {
  texts source(9);
  for (int i = 0; i < ROUNDS; i++) {
    std::string tight;
    std::string loose;
    const std::size_t segments = 1 + source.below(4);
    for (std::size_t segment = 0; segment < segments; segment++) {
      const std::string text = source.wellFormed(1);
      tight += (segment > 0 ? "," : "") + text;
      loose += (segment > 0 ? ", " : " ") + upper(text);
      // A blank after a backslash would count as escaped.
      if (text.back() != '\\') loose += source.of(" \t", 0, 2);
    }
    ASSERT_EQ(name(tight).compare(name(loose)), 0) << quote(tight) << " and " << quote(loose);
    ASSERT_TRUE(name(loose) == name(tight)) << quote(tight) << " and " << quote(loose);
  }
}

TEST(DistNameProperties, AChildSortsBehindItsParentWithOnlyRelativesBetween) {
  texts source(10);
  int between = 0;
  for (int i = 0; i < ROUNDS; i++) {
    const std::string parentText = "DC=" + source.of("ab", 1, 2);
    const DistName parent = name(parentText);
    const DistName child = name("CN=" + source.of("ab", 1, 2) + "," + parentText);
    const DistName other = name(source.of("ab", 1, 2) + "=" + source.of("ab", 1, 1) +
                                ",DC=" + source.of("ab!-", 1, 2));
    ASSERT_LT(parent.compare(child), 0) << quote(child);
    ASSERT_GT(child.compare(parent), 0) << quote(child);
    if (parent < other && other < child) {
      ASSERT_EQ(other.parent().str(), parentText) << quote(other) << " before " << quote(child);
      between++;
    }
  }
  EXPECT_GT(between, 0) << "the case never came up";
}

/// Checks that `compare` is a strict weak order on `pool`, and that both equal
/// and different ones are in the pool.
template <class Value, class Compare>
void expectStrictWeakOrder(const std::vector<Value>& pool, Compare compare) {
  int equal = 0;
  int different = 0;
  for (std::size_t i = 0; i < pool.size(); i++) {
    ASSERT_EQ(compare(pool[i], pool[i]), 0) << quote(pool[i]);
    for (std::size_t j = 0; j < pool.size(); j++) {
      const int ij = compare(pool[i], pool[j]);
      ASSERT_EQ(sign(ij), -sign(compare(pool[j], pool[i])))
          << quote(pool[i]) << " and " << quote(pool[j]);
      if (i != j) (ij == 0 ? equal : different)++;
      for (std::size_t k = 0; k < pool.size(); k++) {
        const int jk = compare(pool[j], pool[k]);
        const int ik = compare(pool[i], pool[k]);
        if (ij <= 0 && jk <= 0) {
          ASSERT_LE(ik, 0) << quote(pool[i]) << ", " << quote(pool[j]) << ", " << quote(pool[k]);
        }
        if (ij == 0 && jk == 0) {
          ASSERT_EQ(ik, 0) << quote(pool[i]) << ", " << quote(pool[j]) << ", " << quote(pool[k]);
        }
      }
    }
  }
  EXPECT_GT(equal, 0) << "no two were equal";
  EXPECT_GT(different, 0) << "no two were different";
}

TEST(DistNameProperties, CompareIsAStrictWeakOrder) {
  texts source(11);
  for (int round = 0; round < 10; round++) {
    std::vector<DistName> pool;
    for (int i = 0; i < 24; i++) pool.push_back(name(source.of("aA,, \\=", 0, 5)));
    for (int i = 0; i < 8; i++) pool.push_back(name(source.wellFormed(1 + source.below(3))));
    pool.push_back(name("CN=X,DC=C"));
    pool.push_back(name("cn=x, dc=c"));
    expectStrictWeakOrder(
        pool, [](const DistName& left, const DistName& right) { return left.compare(right); });
    if (HasFatalFailure()) return;
  }
}

TEST(DistNameProperties, LessAndEqualFollowCompare) {
  texts source(12);
  for (int i = 0; i < ROUNDS; i++) {
    const DistName left = name(source.of("aA, =", 0, 4));
    const DistName right = name(source.of("aA, =", 0, 4));
    const int order = left.compare(right);
    ASSERT_EQ(left < right, order < 0) << quote(left) << " and " << quote(right);
    ASSERT_EQ(left == right, order == 0) << quote(left) << " and " << quote(right);
    ASSERT_EQ(left.same(right), order == 0) << quote(left) << " and " << quote(right);
    ASSERT_EQ(sign(order), sign(std::strcmp(left.sortable(), right.sortable())))
        << quote(left) << " and " << quote(right);
  }
}

TEST(DistNameProperties, DisplayOrderIsAStrictWeakOrder) {
  texts source(13);
  for (int round = 0; round < 10; round++) {
    std::vector<std::string> pool;
    for (int i = 0; i < 30; i++) {
      pool.push_back(source.of("xX", 0, 1) + source.of("=", 0, 1) + source.of("aAb,\xE9", 0, 3));
    }
    pool.push_back("CN=X,DC=C");
    pool.push_back("cn=x,dc=c");
    expectStrictWeakOrder(pool, [](const std::string& left, const std::string& right) {
      return displayOrder::instance.compare(left, right);
    });
    if (HasFatalFailure()) return;
  }
}

TEST(DistNameProperties, NumericOrderIsAStrictWeakOrder) {
  texts source(14);
  for (int round = 0; round < 10; round++) {
    std::vector<std::string> pool;
    for (int i = 0; i < 30; i++) pool.push_back("CN=" + source.of("0129a,", 0, 3));
    pool.push_back("CN=7");
    pool.push_back("OU=07,DC=c");
    expectStrictWeakOrder(pool, [](const std::string& left, const std::string& right) {
      return numericOrder::instance.compare(left, right);
    });
    if (HasFatalFailure()) return;
  }
}

TEST(DistNameProperties, AnyBytesAreTakenWithoutHarm) {
  texts source(15);
  std::string bytes = "\\\\\\,,,=== \t/#";
  for (int byte = 1; byte < 256; byte++) bytes += static_cast<char>(byte);
  static const DistName::extractMode modes[] = {DistName::SINGLE, DistName::FORWARD,
                                                DistName::REVERSE, DistName::PATH_UNTIL,
                                                DistName::ALL_UNTIL};
  for (int i = 0; i < ROUNDS; i++) {
    const std::string text = i % 2 == 0 ? source.junk() : source.of(bytes, 0, 24);
    SCOPED_TRACE(quote(text));
    const DistName dn = name(text);
    ASSERT_EQ(dn.str(), text);
    ASSERT_LE(dn.shortName().size(), text.size());
    ASSERT_LE(dn.firstKey().size(), text.size());
    ASSERT_LE(dn.canonicalName().size(), 2 * text.size() + 1);
    ASSERT_LE(dn.segments(), text.size() + 1);
    for (const DistName::extractMode mode : modes) {
      ASSERT_LE(dn.extractId("a", mode, '/').size(), text.size()) << "mode " << mode;
    }
    ASSERT_LE(dn.rename("").size(), 2 * text.size());
    ASSERT_EQ(displayOrder::instance.compare(text, text), 0);
    ASSERT_EQ(numericOrder::instance.compare(text, text), 0);
  }
}

}  // namespace

}  // namespace DistName_property_test
