// SPDX-License-Identifier: MIT
// Distinguished names.  For every value without NUL bytes:
//
// - It is read back from its escaped form, which leaves nothing that has a meaning.
// - As the first value of a name it is one segment, which has the rest as its parent; it
//   comes back as the short name and from `extractId`, and renaming changes nothing else.
//   (Names begin and end their values with no white space but escaped blanks.)
// - A name orders after its parent.
//
// For every text taken as a name:
//
// - Each parent is the end of its child and has fewer segments.
// - The canonical name is empty for an empty name and one that ends in a backslash.
// - Unescaping never lengthens; a name without "=" has no key, no short name, and is
//   renamed to itself.
// - `SINGLE` is where `FORWARD` begins and `REVERSE` ends.
// - Letter case does not count in the order of names, nor in the display order.
// - Name generation tries no more numbers than it is allowed, and answers with a name
//   that is acceptable, or none.
// - A domain name becomes one segment for each label, and its canonical name is the
//   domain again.
//
// For every three texts: each of the three orders is consistent, and agrees with the
// test for sameness that belongs to it.

#include <algorithm>
#include <cstring>

#include "DistName.h"
#include "conversion.h"
#include "fuzz.h"

namespace {

DistName name(const std::string& text) {
  return DistName(text, DistName::SIMPLE);
}

void checkEscaped(const std::string& value) {
  const std::string escaped = DistName::escape(value);
  checkSame(DistName::unescape(escaped), value, "an escaped value reads back", escaped);
  check(DistName::segments(escaped) == (value.empty() ? 0 : 1), "an escaped value is one segment",
        escaped);
  for (std::size_t i = 0; i < escaped.size(); i++) {
    check(!only({&escaped[i], 1}, ",+\";<=>") || (i > 0 && escaped[i - 1] == '\\'),
          "what has a meaning is escaped", escaped);
  }
}

// A name drops white space around its values.
bool trimmed(const std::string& value) {
  constexpr const char* space = "\t\n\v\f\r";
  return !value.empty() && std::strchr(space, value.front()) == nullptr &&
         std::strchr(space, value.back()) == nullptr;
}

void checkWellFormed(const std::string& value, const std::string& second) {
  const std::string first = DistName::escape(value);
  const std::string parent = "OU=" + DistName::escape(second) + ",DC=d";
  const DistName child = name("OU=" + first + "," + parent);
  check(child.segments() == 3, "a name of three segments", child.str());
  checkSame(child.firstKey(), "OU", "the first key", child.str());
  checkSame(child.shortName(), value, "the short name is the first value", child.str());
  checkSame(child.parent().str(), parent, "the parent is the rest", child.str());
  check(name(parent) < child, "a name orders after its parent", child.str());

  const auto extract = [&child](const char* key, DistName::extractMode mode) {
    return child.extractId(key, mode, '/');
  };
  const std::string values = first + '/' + DistName::escape(second);
  checkSame(extract("OU", DistName::SINGLE), first, "SINGLE is the first value");
  checkSame(extract("ou", DistName::FORWARD), values, "FORWARD is leaf to root");
  checkSame(extract("Ou", DistName::REVERSE), DistName::escape(second) + '/' + first,
            "REVERSE is root to leaf");
  checkSame(extract("DC", DistName::ALL_UNTIL), values, "ALL_UNTIL is the values before");
  checkSame(extract("DC", DistName::PATH_UNTIL), DistName::escape(second),
            "PATH_UNTIL leaves the leaf out");

  const DistName renamed = child.rename("new");
  checkSame(renamed.str(), "OU=new," + parent, "renaming changes the first value", child.str());
}

void checkParents(const std::string& text) {
  for (std::string child = text; !child.empty();) {
    const std::string parent = DistName::parent(child);
    check(parent.size() < child.size() &&
              child.compare(child.size() - parent.size(), parent.size(), parent) == 0,
          "a name ends with its parent", child, parent);
    check(DistName::segments(parent) < DistName::segments(child), "a parent has fewer segments",
          child, parent);
    child = parent;
  }
}

void checkText(const std::string& text, const std::string& other) {
  const DistName dn = name(text);
  check(DistName::unescape(text).size() <= text.size(), "unescaping never lengthens", text);
  check(!(text.empty() || text.back() == '\\') || dn.canonicalName().empty(),
        "no path for an empty name and one that ends in a backslash", text);
  if (text.find('=') == text.npos) {
    check(dn.firstKey().empty() && dn.shortName().empty() && dn.rename(other).str() == text,
          "without = there is no key and no value", text);
  }
  const std::string key = dn.firstKey();
  const std::string single = dn.extractId(key, DistName::SINGLE, '/');
  const std::string forward = dn.extractId(key, DistName::FORWARD, '/');
  const std::string reverse = dn.extractId(key, DistName::REVERSE, '/');
  check(forward.size() == reverse.size() && forward.compare(0, single.size(), single) == 0 &&
            reverse.compare(reverse.size() - single.size(), single.size(), single) == 0,
        "SINGLE begins FORWARD and ends REVERSE", text, forward, reverse);
  dn.extractId(other, DistName::PATH_UNTIL, '/');
  dn.extractId(other, DistName::ALL_UNTIL, '/');
  check(DistName::nameOkay(text) == validUTF8(text.data(), static_cast<int>(text.size()), true),
        "a name is okay when it is valid UTF-8", text);
}

void checkCase(const std::string& text) {
  std::string upper = text;
  setCase(upper.data(), static_cast<int>(upper.size()), true);
  check(name(text) == name(upper), "letter case does not count in the order", text);
  // Its short name is unescaped, and there the digits of an escape may be letters.
  if (text.find('\\') == text.npos) {
    check(displayOrder::instance.compare(text, upper) == 0, "nor in the display order", text);
  }
}

void checkOrders(const std::string& a, const std::string& b, const std::string& c) {
  checkOrder(name(a), name(b), name(c),
             [](const DistName& x, const DistName& y) { return x.compare(y); });
  checkOrder(a, b, c, [](const std::string& x, const std::string& y) {
    const int result = displayOrder::instance.compare(x, y);
    check((result == 0) == displayOrder::same(x, y), "only equal names compare as equal", x, y);
    check((result < 0) == displayOrder::instance(x, y), "only lesser names compare as less", x, y);
    return result;
  });
  checkOrder(a, b, c, [](const std::string& x, const std::string& y) {
    const int result = numericOrder::instance.compare(x, y);
    check((result == 0) == numericOrder::same(x, y), "only equal names compare as equal", x, y);
    check((result < 0) == numericOrder::instance(x, y), "only lesser names compare as less", x, y);
    return result;
  });
}

// Refuses so many names, and accepts the next.
class patient : public DistName::criterion {
 public:
  explicit patient(int refusals) : m_refusals(refusals) {}
  bool operator()(const DistName&) const override { return asked++ == m_refusals; }
  mutable int asked = 0;

 private:
  int m_refusals;
};

void checkNewName(const std::string& text) {
  constexpr int limit = 3;
  constexpr unsigned int longest = 12;
  const int refusals = static_cast<int>(text.size() % (limit + 2));
  const patient acceptable(refusals);
  const DistName found = name(text).newName(acceptable, limit, longest);
  const bool none = refusals > limit;
  check(acceptable.asked == (none ? limit + 1 : refusals + 1),
        "no more numbers are tried than allowed", text);
  if (none || refusals == 0) {
    checkSame(found.str(), none ? "" : text, "the name itself, or none", text);
    return;
  }
  const std::string key = name(text).firstKey() + '=';
  const std::string above = ',' + name(text).parent().str();
  const std::size_t size = found.size() - key.size() - above.size();
  check(found.substr(0, key.size()) == key && found.substr(key.size() + size) == above &&
            size <= longest,
        "a candidate keeps key, parent and length", text, found.str());
}

void checkDomain(const std::string& text) {
  if (text.find_first_of(",\\") != text.npos) {
    return;
  }
  const DistName domain(text, DistName::DOMAIN);
  const auto labels = std::count(text.begin(), text.end(), '.') + 1;
  check(domain.segments() == static_cast<std::size_t>(labels), "a label becomes a segment",
        domain.str());
  checkSame(domain.canonicalName(), text, "the domain comes back as the canonical name",
            domain.str());
}

}  // namespace

void fuzz(std::string_view input) {
  const auto [a, b, c] = parts<3>(input);
  for (const std::string& text : {a, b, c}) {
    if (text.find('\0') == text.npos) {
      checkEscaped(text);
    }
    checkParents(text);
    checkText(text, b);
    checkCase(text);
    checkNewName(text);
    checkDomain(text);
  }
  if (trimmed(a) && trimmed(b) && (a + b).find('\0') == std::string::npos) {
    checkWellFormed(a, b);
  }
  checkOrders(a, b, c);
  static constexpr auto UNKNOWN = static_cast<DistName::DNconStyle>(2);
  checkSame(DistName(a, UNKNOWN).str(), a, "an unknown style keeps the text");
}
