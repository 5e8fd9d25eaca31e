// SPDX-License-Identifier: MIT
// Distinguished names (RFC 4514 in spirit, X.501 in origin).
//
// A name is a text of segments, leaf first and root last, separated by commas:
// "CN=John,OU=Users,DC=example,DC=com".  A segment is a key, "=" and a value.  A
// backslash escapes the character after it.  Malformed names are never an error;
// a missing "=" or comma simply ends a scan.
//
// A `DistName` is a value.  It caches the form that it is compared by, filled on
// first use even through a constant object, so a name is for one thread of a process only.
// Names may be used before `main`, in a forked child and at exit.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "stringcomp.h"

#pragma GCC visibility push(default)

/// A distinguished name.
class DistName {
 public:
  /// How a constructor reads its text.
  enum DNconStyle : int {
    SIMPLE = 0,  ///< as a distinguished name
    DOMAIN = 1   ///< as a dotted domain name: a.b becomes DC=a,DC=b
  };

  /// What `extractId` collects.
  enum extractMode : int {
    SINGLE = 0,      ///< the value of the first segment with the keyword
    FORWARD = 1,     ///< the values of all segments with it, leaf to root
    REVERSE = 2,     ///< the same, root to leaf
    PATH_UNTIL = 3,  ///< the values before the first segment with it, without the leaf's
    ALL_UNTIL = 4    ///< the same with the leaf's
  };

  /// A test of names, defined by those who look for a name.
  class criterion {
   public:
    virtual ~criterion() = default;
    /// True when `name` is acceptable.
    virtual bool operator()(const DistName& name) const = 0;
  };

  /// An empty name.
  DistName() = default;
  /// The name `dn`; null means an empty one.
  explicit DistName(const char* dn);
  /// The first `length` bytes of `dn`, none when it is negative or `dn` is null.
  DistName(const char* dn, int length);
  /// The name that `text` means in a style.  An unknown style reports
  /// `EC_UNKNOWN_VALUE` and keeps the text.
  ///
  ///     DistName("a.b", DistName::DOMAIN)   // DC=a,DC=b
  DistName(const std::string& text, DNconStyle style);
  DistName(const char* text, DNconStyle style)
      : DistName(std::string(text != nullptr ? text : ""), style) {}
  /// A copy.
  DistName(const DistName& other);
  DistName& operator=(const DistName& other);
  virtual ~DistName();

  /// Names of the concatenated texts; no comma is inserted.  Null adds nothing.
  DistName operator+(const DistName& other) const;
  DistName operator+(const std::string& other) const;
  DistName operator+(const char* other) const;
  DistName operator+(char other) const;

  /// The text.
  operator std::string() const { return m_string; }
  const std::string& str() const { return m_string; }
  /// True for the empty text.
  bool empty() const { return m_string.empty(); }

  /// The operations of `std::string`, on the text.
  std::size_t size() const { return m_string.size(); }
  std::size_t length() const { return m_string.length(); }
  const char* data() const { return m_string.data(); }
  const char* c_str() const { return m_string.c_str(); }
  void resize(std::size_t size);
  void clear();
  std::size_t find(char c, std::size_t start = 0) const { return m_string.find(c, start); }
  std::size_t find(const std::string& what, std::size_t start = 0) const {
    return m_string.find(what, start);
  }
  /// Empty for a `start` beyond the end.
  std::string substr(std::size_t start, std::size_t count = std::string::npos) const {
    return start < size() ? m_string.substr(start, count) : std::string();
  }

  /// The number of segments: 0 for an empty text, else one more than there are
  /// unescaped commas.  (As everywhere, a comma that is the first character of
  /// the text does not count.)
  static unsigned int segments(const std::string& dn);
  unsigned int segments() const { return segments(m_string); }

  /// The name without its first segment; empty when it has only one.
  static std::string parent(const std::string& dn);
  DistName parent() const { return DistName(parent(m_string), SIMPLE); }

  /// The text before the first "=", as it is; empty without one.
  static std::string firstKey(const std::string& dn);
  std::string firstKey() const { return firstKey(m_string); }

  /// The value of the first segment, trimmed and unescaped; empty without "=".
  ///
  ///     shortName("CN = a\\,b ,DC=c")   // a,b
  static std::string shortName(const std::string& dn);
  std::string shortName() const { return shortName(m_string); }

  /// The values that `mode` asks for, joined by `separator`.  They are trimmed
  /// but not unescaped.  A segment without "=" ends the search.
  ///
  ///     extractId("OU", FORWARD, '/')   // of CN=x,OU=a,OU=b: a/b
  static std::string extractId(const std::string& dn, const std::string& keyword, extractMode mode,
                               char separator);
  std::string extractId(const std::string& keyword, extractMode mode, char separator) const {
    return extractId(m_string, keyword, mode, separator);
  }

  /// The name as a path, domain first: example.com/Users/John for
  /// CN=John,OU=Users,DC=example,DC=com.  Empty for an empty name and for one
  /// that ends in a backslash.
  std::string canonicalName() const;

  /// The name with another value, taken as it is, in its first segment.
  DistName rename(const std::string& newValue) const;

  /// The first acceptable name: this one, or one whose short name has a numbered
  /// suffix, counting from the suffix that it has.  At most `limit` numbers are
  /// tried (to 2000000000 when `limit` is not positive); then the result is
  /// empty.  The short name is cut to keep it to `maxLen` characters.
  DistName newName(const criterion& acceptable, int limit, unsigned int maxLen) const;

  /// True when `text` is well-formed UTF-8 without control codes and "~".
  static bool nameOkay(const std::string& text);

  /// A value with a backslash before what has a meaning in names; NUL becomes a
  /// backslash and "00".
  ///
  ///     escape("#a")   // \#a
  static std::string escape(const std::string& text);
  /// The reverse.  A backslash and two hexadecimal digits, neither of them 0,
  /// become a byte; any other backslash is dropped.  (So "\20" reads as "20":
  /// stored names rely on it.)
  static std::string unescape(const std::string& text);

  /// The form that names are compared by: lower case, root first, segments
  /// separated by TAB.  Owned by this name, valid until it changes.
  const char* sortable() const;
  /// Byte order of the sortable forms: parents right before their children.
  int compare(const DistName& other) const;
  bool same(const DistName& other) const { return compare(other) == 0; }
  bool operator<(const DistName& other) const { return compare(other) < 0; }
  bool operator==(const DistName& other) const { return compare(other) == 0; }

 private:
  void makeSortable() const;

  std::string m_string;
  mutable std::unique_ptr<char[]> m_sortable;  // null until asked for
};

/// Orders texts of names by their short names, then whole, ignoring case.
class displayOrder : public stringComparator {
 public:
  constexpr ~displayOrder() override {}

  bool operator()(const std::string& left, const std::string& right) const override;
  /// Negative, zero or positive.
  int compare(const std::string& left, const std::string& right) const;
  /// True when both short names and both texts are equal ignoring case.
  static bool same(const std::string& left, const std::string& right);
  /// A handle for standard containers.
  strCompRef ref() const { return strCompRef(*this); }

  /// The one shared comparator, constant-initialised.
  static const displayOrder instance;
};

/// Orders texts of names by their short names read as decimal numbers (-1 when
/// they are none).
class numericOrder : public stringComparator {
 public:
  constexpr ~numericOrder() override {}

  bool operator()(const std::string& left, const std::string& right) const override;
  /// Left number minus right number.
  int compare(const std::string& left, const std::string& right) const;
  /// True when the numbers are equal.
  static bool same(const std::string& left, const std::string& right);
  /// A handle for standard containers.
  strCompRef ref() const { return strCompRef(*this); }

  /// The one shared comparator, constant-initialised.
  static const numericOrder instance;
};

#pragma GCC visibility pop
