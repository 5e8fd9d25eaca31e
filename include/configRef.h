// SPDX-License-Identifier: MIT
// Typed references to configuration items.
//
// A reference is a small object, usually a static one, that names an item and
// reads it with a type.  Constructing it registers the item with its default,
// which works until the first read publishes the database; a later registration
// is reported and ignored, and the reference still reads.  (Before there is thread
// data, a read gives the default and publishes nothing.)  Every read looks the
// item up again in the calling thread's version of the database (configDB.h), so
// `threadedConfigDB::refresh()` changes what all references return.  A reference
// holds nothing but the name.  Like the database, references are for one thread of a process
// only.
//
// Strings and vectors that are returned by reference live until the thread moves
// on to another version; copy what is to be kept.
//
// References may be constructed and read before `main`, and read in a forked
// child.  At exit, once the thread data or the registration database is gone, every
// item reads as missing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "DistName.h"
#include "assoclist.h"
#include "configDB.h"

#pragma GCC visibility push(default)

/// Base of the typed references.
class configRef {
 public:
  /// Refers to the item `name` without registering anything.
  explicit configRef(const std::string& name) : m_name(name) {}
  configRef(const configRef&) = delete;
  configRef& operator=(const configRef&) = delete;
  ~configRef() = default;

  /// The name of the item as it was given.
  const std::string& name() const { return m_name; }

  /// The root of the directory: `InterfaceFinder::FQDN()` as a distinguished
  /// name, taken on first use.
  static const DistName& RootDN();

 protected:
  /// The item, or the database's shared empty one.
  const configItem& item() const;

  /// The registration database while items can still be registered; otherwise
  /// reports that and returns null.
  writeableConfigDB* registration() const;

 private:
  std::string m_name;
};

/// A reference to an item of one string.
class configString : public configRef {
 public:
  /// Registers the item; an empty default registers it without a value.
  configString(const std::string& name, const std::string& defaultValue);

  /// As `value(true)`.
  operator const std::string&() const { return value(true); }
  /// The value, or an empty string without one, which is reported if `raiseError`.
  const std::string& value(bool raiseError) const;
  /// True when the item has no value.
  bool empty() const { return item().empty(); }
  /// The value as a decimal number, -1 when it is none.  A missing value is
  /// reported.
  int getInt() const;
  /// The value as a distinguished name.
  DistName asDN() const { return DistName(value(true), DistName::SIMPLE); }
};

/// A reference to an item of one positive number.
class configInt : public configRef {
 public:
  /// Registers the item; a negative default registers it without a value.
  configInt(const std::string& name, int defaultValue);

  /// As `value(true)`.
  operator int() const { return value(true); }
  /// The number, or the default when it is missing, zero, negative or no number.
  /// A missing value is reported if `raiseError`.
  int value(bool raiseError) const;

 private:
  std::int32_t m_default_value;
};

/// A reference to an item of any number of strings.
class configArray : public configRef {
 public:
  /// Registers the item with the strings of a null-terminated array.  A null
  /// array registers it without a value, an empty array not at all.  The strings
  /// do not become defaults in the sense of `configItem::set`.
  configArray(const std::string& name, const char* const* defaults);

  /// As `values()`.
  operator const std::vector<std::string>&() const { return values(); }
  /// The value at `offset`, or an empty string, with a report, where there is
  /// none.
  const std::string& operator[](std::size_t offset) const;
  /// All values in their order; none when the item is missing.
  const std::vector<std::string>& values() const { return item().all(); }
  /// The number of values.
  std::size_t size() const { return item().size(); }
  /// The values as an association list, each split at its first "=".
  assocList list() const { return assocList(values()); }
};

#pragma GCC visibility pop
