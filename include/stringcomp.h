// SPDX-License-Identifier: MIT
// String orderings.
//
// The library keys most of its maps by names that people type, so it compares
// them without regard to letter case.  `stringComparator` is the interface of
// an ordering, `caseInsensitive` the ordering used nearly everywhere, and
// `strCompRef` a copyable handle that lets a standard container use any
// ordering chosen at run time.
//
// Only the letters A to Z have case: no locale is ever set, so bytes of 128 and
// above are compared as they are.  Comparators have no state.  Everything here
// may be used before `main`, in a forked child and at exit.
#pragma once

#include <string>
#include <vector>

#pragma GCC visibility push(default)

/// A strict weak ordering of strings, chosen at run time.
class stringComparator {
 public:
  constexpr stringComparator() = default;
  constexpr stringComparator(const stringComparator&) = default;
  constexpr stringComparator& operator=(const stringComparator&) = default;
  constexpr virtual ~stringComparator() = default;

  /// True when `a` orders before `b`.
  virtual bool operator()(const std::string& a, const std::string& b) const = 0;
};

/// The ordering of strings without regard to ASCII letter case.
///
/// - Two strings are compared byte by byte after lower-casing both.
/// - The lowered bytes are compared as signed 8-bit values, so bytes of 128 and
///   above order before all of ASCII.
/// - A string orders before every longer string that starts with it.
///
///     caseInsensitive()("a", "ab")   // true
///     caseInsensitive()("a", "A")    // false, and so is the reverse
///     caseInsensitive()("B", "a")    // false
class caseInsensitive : public stringComparator {
 public:
  constexpr ~caseInsensitive() override {}  // written out for gcc 12, which cannot default it

  /// True when `a` orders before `b`.  The strings may hold NUL bytes.
  bool operator()(const std::string& a, const std::string& b) const override;

  /// The same for C strings.  A null `b` gives false, otherwise a null `a` gives
  /// true: null orders before every string.
  virtual bool operator()(const char* a, const char* b) const;

  /// True when both strings have the same length and the same letters.
  static bool same(const std::string& a, const std::string& b);

  /// True when `s` starts with `p`.  An empty `p` gives true.
  /// REQUIRES: `p` is not null.
  static bool prefix(const std::string& s, const char* p);

  /// True when `s` starts with any string of the null-terminated array `list`.
  /// A null `list` holds no string.
  static bool starts(const std::string& s, const char* const* list);

  /// True when `s` is the same as any element of `list`.
  static bool contains(const std::string& s, const std::vector<std::string>& list);

  /// The same for a null-terminated array.  A null `list` holds no string.
  static bool contains(const std::string& s, const char* const* list);

  /// The one shared comparator, constant-initialised.
  static const caseInsensitive instance;
};

/// A copyable reference to an ordering, usable as the comparator of a standard
/// container.  It does not own the ordering, which must outlive it.
class strCompRef {
 public:
  /// Refers to `comparator`, by default the case-insensitive ordering.
  explicit strCompRef(const stringComparator& comparator = caseInsensitive::instance)
      : m_comparator(&comparator) {}

  /// True when `a` orders before `b` in the ordering referred to.
  bool operator()(const std::string& a, const std::string& b) const {
    return (*m_comparator)(a, b);
  }

 private:
  const stringComparator* m_comparator;
};

#pragma GCC visibility pop
