// SPDX-License-Identifier: MIT
// The association list: an ordered map from string to string whose keys are
// compared without regard to letter case.
//
// It carries the keyword options of a command line, the parameters of a URI and
// the "key=value" readings of configuration arrays.  It is the standard ordered
// map with a few operations of its own, a plain value that is copied and
// destroyed like one.  Iteration follows the case-insensitive order of the keys;
// a key keeps the letter case in which it was first inserted.
//
// May be used before `main`, in a forked child and at exit.
#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "stringcomp.h"

#pragma GCC visibility push(default)

/// One record of a static table of pairs.  A table is an array of records that
/// ends with a record whose `key` is null.  The texts are not owned.
struct assocPair {
  const char* key;    ///< null ends the table
  const char* value;  ///< null leaves the record out
};

/// An ordered map from string to string with case-insensitive keys.
class assocList : public std::map<std::string, std::string, caseInsensitive> {
 public:
  /// An empty list.
  assocList() = default;

  /// The pairs of a table, in its order, up to the first record with a null key.
  /// Records with a null value are left out; an empty value is kept.  A null
  /// table holds no pair.
  explicit assocList(const assocPair* table);

  /// The readings of `entries`.
  ///
  /// - An entry with an "=" is split at the first one: the key before it, the
  ///   value after it, which may be empty.
  /// - An entry without an "=" is a value; its key is the decimal text of a
  ///   counter of such entries, which starts at 0.
  /// - A later entry replaces the value of an earlier one with the same key.
  ///
  ///     assocList({"x", "k=v", "y", "k=w"})   // { 0=x 1=y k=w }
  explicit assocList(const std::vector<std::string>& entries);

  /// The value under `key`, inserted as an empty string when missing.
  std::string& operator[](const std::string& key);

  /// The value under `key`, or one shared empty string when missing.  The list
  /// is not changed.
  const std::string& operator[](const std::string& key) const;

  /// Stores `value` under `name` when it is not empty or `force` is true.
  /// Returns whether it did.
  bool addValue(const std::string& name, const std::string& value, bool force);

  /// The same for C strings: a null `name` stores nothing; a null `value` stores
  /// an empty string when `force` is true and otherwise nothing; any other value
  /// is stored, empty or not.  Returns whether something was stored.
  bool addValue(const char* name, const char* value, bool force);

  /// Stores every entry of `other`, replacing values under equal keys.
  assocList& operator+=(const assocList& other);

  /// A copy of this list with `other` added.
  assocList operator+(const assocList& other) const;

  /// The value under `name` read as a decimal number of at least 1; `defaultVal`
  /// when it is missing, not a number, too large, or less than 1.
  int getInt(const std::string& name, int defaultVal) const;

  /// The entries whose key starts with none of the prefixes (`exclude` true) or
  /// with at least one (`exclude` false).  `prefixList` is a null-terminated
  /// array; null means an empty one.
  assocList filter(const char* const* prefixList, bool exclude) const;

  /// Maps each value that is not empty back to its key.  Where keys share a
  /// value, the last in key order wins.
  assocList reverse() const;

  /// Renames keys in place, for each entry of `mapping` in its order: a key that
  /// this list holds is removed, and its value is stored under the mapping's
  /// value unless that is empty.  A rename sees the result of those before it.
  assocList& convert(const assocList& mapping);

  /// Writes "{ ", then key, "=", value and a blank for each entry, then "}".
  std::ostream& write(std::ostream& out) const;
};

/// Calls `write`.
std::ostream& operator<<(std::ostream& out, const assocList& list);

#pragma GCC visibility pop
