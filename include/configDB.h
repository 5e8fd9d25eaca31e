// SPDX-License-Identifier: MIT
// The configuration database: a versioned map from item names, compared without
// regard to case, to configuration items.
//
// One version at a time is canonical (refcount.h).  Four handles use it:
//
// - `threadedConfigDB::local()`: the calling thread's own, for reading.  It keeps
//   one consistent version until `refresh()`.
// - `editableConfigDB`: a private copy for its scope.  Its destructor publishes
//   the copy, unless someone else published meanwhile; then the edit is lost and
//   reported.  It belongs to the thread that made it.
// - `writeableConfigDB`: the registration database, in which static items put
//   their defaults before `main`; the first read publishes it as version 0.
// - `configDB`: the plain handle beneath them.
//
// Failures are reported as events, and the operation carries on.
//
// Before `main` there is the registration database only: an editor made then finds
// nothing to edit and reports `EC_BAD_SEQUENCE`.  The first read of an item after
// `ThreadData::instance(false)` publishes; so a `main` that edits begins with these
// two.  A forked child has a database of its own from then on.  At exit, databases
// are not to be edited any more.
//
// What is kept here is for one thread of a process only.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "DistName.h"
#include "countedMap.h"
#include "refcount.h"
#include "stringcomp.h"
#include "threading.h"

#pragma GCC visibility push(default)

/// A name set aside for items that are created without being registered; the library
/// itself does not use it.
inline constexpr std::string_view AUTO_CREATED = "__AutoCreated__";

/// One configuration item: its values, its defaults, and where they came from.
class configItem {
 public:
  /// One value, or none when `value` is empty.  `source` is the distinguished
  /// name of where it came from, `DNvalues` says that values are such names, and
  /// `setAsDefault` makes the value the default.
  configItem(const std::string& value, const std::string& source, bool DNvalues, bool setAsDefault);
  /// The same with any number of values.
  configItem(const std::vector<std::string>& allValues, const std::string& source, bool DNvalues,
             bool setAsDefault);

  /// "configItem".
  static const char* className() { return "configItem"; }

  /// The value at `index`, or a shared empty string where there is none.
  const std::string& operator[](int index) const;
  /// The values in their order.
  const std::vector<std::string>& all() const { return values; }
  /// The number of values.
  std::size_t size() const { return values.size(); }
  /// True when there is no value.
  bool empty() const { return values.empty(); }
  /// The first default, or an empty string.
  const std::string& getDefault() const;
  /// The defaults in their order.
  const std::vector<std::string>& getDefaults() const { return defaults; }

  /// Makes `value`, even an empty one, the only value.
  void set(const std::string& value);
  /// Replaces the values; an empty vector brings back the defaults, which is how
  /// an item is reset.
  void set(const std::vector<std::string>& vals);

  /// Records where the value came from; an empty name changes nothing.
  void setDN(const DistName& DN);
  /// Forgets where the value came from.
  void clearDN() { sourceDN = DistName(); }
  /// Where the value came from, empty when that is unknown.
  const DistName& getDN() const { return sourceDN; }
  /// True when the values are distinguished names.
  bool isDN() const { return m_isDN; }

 private:
  std::vector<std::string> values;
  std::vector<std::string> defaults;
  DistName sourceDN;
  bool m_isDN;
};

/// A handle to a version of the configuration database.
class configDB : public countedMapRef<std::string, configItem, caseInsensitive> {
 public:
  /// Holds what `type` says.
  explicit configDB(refType type);
  configDB(const configDB&) = default;
  configDB& operator=(const configDB&) = default;
  /// Holds what `type` says from now on.
  configDB& operator=(refType type);
  ~configDB() override;

 protected:
  /// Sets an item to one value.  An item that has none yet, or does not exist, is
  /// made anew, with `value` as its default when `setAsDefault`.  An item with a
  /// value keeps its defaults; one whose `isDN` differs is left as it is, with a
  /// report.  REQUIRES: the database is writable (otherwise the dummy is set).
  void set(const std::string& key, const std::string& value, const DistName& DN, bool isDN,
           bool setAsDefault);
  /// The same with several values; without any, nothing happens.
  void set(const std::string& key, const std::vector<std::string>& values, const DistName& DN,
           bool isDN, bool setAsDefault);
  /// The same with a null-terminated array, which is never a default, whatever
  /// `setAsDefault` says: items that are registered from arrays rely on that.
  /// A null array does nothing.
  void set(const std::string& key, const char* const* values, const DistName& DN, bool isDN,
           bool setAsDefault);

 private:
  template <class Value>
  void setItem(const std::string& key, const Value& value, const DistName& DN, bool isDN,
               bool setAsDefault, const char* operation);
};

/// A private copy of the canonical database, published when it is destroyed.
class editableConfigDB : public configDB {
 public:
  editableConfigDB() : configDB(RT_UPDATE) {}
  editableConfigDB(const editableConfigDB&) = delete;
  editableConfigDB& operator=(const editableConfigDB&) = delete;
  /// Publishes the copy.  Reports `EC_BAD_SEQUENCE` when there is none, and
  /// `EC_FUNC_FAILED` when another editor was first: the edit is then lost.
  ~editableConfigDB() override;

  /// As `configDB::set`, never as a default.
  void set(const std::string& key, const std::string& value, const DistName& DN, bool isDN) {
    configDB::set(key, value, DN, isDN, false);
  }
  void set(const std::string& key, const std::vector<std::string>& values, const DistName& DN,
           bool isDN) {
    configDB::set(key, values, DN, isDN, false);
  }
  void set(const std::string& key, const char* const* values, const DistName& DN, bool isDN) {
    configDB::set(key, values, DN, isDN, false);
  }
};

/// The database in which items register.
class writeableConfigDB : public configDB {
 public:
  /// Holds what `type` says.
  explicit writeableConfigDB(refType type) : configDB(type) {}
  ~writeableConfigDB() override = default;

  using configDB::operator=;
  using configDB::set;

  /// Builds the thread data, gives the localised strings their places, publishes
  /// this database if none is canonical yet, and lets go of it.  Returns whether
  /// it was published.
  bool finalise();
};

/// Each thread's handle for reading.
class threadedConfigDB : private ThreadedDatatype {
 public:
  /// This thread's handle.  Throws `std::bad_cast` when the slot holds something
  /// else.  After the thread data is gone at exit: a null handle.
  static configDB& local();

  /// Moves this thread on to the database that is canonical now.
  static void refresh();

  /// The one slot object, created on first use and never destroyed.
  static threadedConfigDB& theInstance();

  ThreadedDataObject* create() const override;
  const char* name() const override;

 private:
  threadedConfigDB() = default;

  static threadedConfigDB& theReference;
};

#pragma GCC visibility pop
