// SPDX-License-Identifier: MIT
// An ordered map that is itself a reference-counted, versioned object, so that a
// whole map is published, shared and cloned at once.
//
// Lookups never fail: absence, an empty key, a null handle and a map that must
// not be changed all yield one shared empty value, the *dummy*, which a caller
// recognises by its address.  Nothing protects the dummy: do not store through a
// reference that is equal to it.
//
// `countedMap` is the object, `countedMapRef` the handle to it.  Who may read and
// write when: refcount.h says it.  A value type `V` has a constructor
// `(std::string value, std::string source, bool, bool)`, of which the dummy is
// built with two empty texts and false, and a static `className()`.
//
// Maps may be used before `main`, in a forked child and at exit; the dummy is made on
// first use and destroyed at exit.
//
// What is kept here is for one thread of a process only.
#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "assertion.h"
#include "lasting.h"
#include "refcount.h"

#pragma GCC visibility push(default)

/// A counted map from `K` to `V`, ordered by `Cmp`.
template <class K, class V, class Cmp>
class countedMap : public counted {
 public:
  /// The map inside.
  using mapType = std::map<K, V, Cmp>;

  /// An empty map.
  countedMap() = default;
  countedMap& operator=(const countedMap&) = delete;
  ~countedMap() override = default;

  /// The value under `key`, or the dummy.
  const V& find(const K& key) const {
    const auto found = contents.find(key);
    return found != contents.end() ? found->second : dummy();
  }

  /// The value under `key` for changing.  A missing one is inserted when `create`
  /// is true.  The dummy when there is none, when the key is empty, and when the
  /// map is not writable.
  V& make(const K& key, bool create) {
    if (!writable() || key.empty()) {
      return dummy();
    }
    if (create) {
      return contents.try_emplace(key, std::string(), std::string(), false, false).first->second;
    }
    const auto found = contents.find(key);
    return found != contents.end() ? found->second : dummy();
  }

  /// The shared empty value.
  static V& dummy() {
    static V value{std::string(), std::string(), false, false};
    return value;
  }

  /// Erases `key` and returns whether it was there.  A map that is not writable
  /// keeps it.
  bool remove(const K& key) { return writable() && contents.erase(key) != 0; }

  /// The contents for reading.
  const mapType& map() const { return contents; }

  /// The contents for writing.  For a map that is not writable: with `strict` an
  /// assertion fails; otherwise a spare map, empty at each call, takes what is
  /// stored.
  mapType& Wmap(bool strict) {
    if (writable()) {
      return contents;
    }
    ASSERT(!strict);
    static mapType spare;
    spare.clear();
    return spare;
  }

  counted* clone() const override { return new countedMap(*this); }

  /// "countedMap<", the value's class name, ">".
  const char* className() const override {
    static const internal::lasting<std::string> name(std::string("countedMap<") + V::className() +
                                                     ">");
    return (*name).c_str();
  }

 private:
  /// A fresh object with the same contents.
  countedMap(const countedMap& other) : counted(), contents(other.contents) {}

  mapType contents;
};

/// A handle to a counted map.
template <class K, class V, class Cmp>
class countedMapRef : public Treference<countedMap<K, V, Cmp>> {
 public:
  /// The object that this is a handle to.
  using mapType = countedMap<K, V, Cmp>;

  /// Holds what `type` says.
  explicit countedMapRef(refType type) : Treference<mapType>(type) {}
  countedMapRef(const countedMapRef&) = default;
  countedMapRef& operator=(const countedMapRef&) = default;
  using Treference<mapType>::operator=;
  ~countedMapRef() override = default;

  /// As `countedMap::find`; the dummy for a null handle.
  const V& find(const K& key) const {
    const mapType* map = this->pointer();
    return map != nullptr ? map->find(key) : dummy();
  }

  /// As `countedMap::make`; the dummy for a null handle.
  V& make(const K& key, bool create) {
    mapType* map = this->pointer();
    return map != nullptr ? map->make(key, create) : dummy();
  }

  /// The shared empty value.
  static V& dummy() { return mapType::dummy(); }

  /// As `countedMap::remove`; false for a null handle.
  bool remove(const K& key) {
    mapType* map = this->pointer();
    return map != nullptr && map->remove(key);
  }

  /// The number of entries, 0 for a null handle.
  std::size_t size() const {
    const mapType* map = this->pointer();
    return map != nullptr ? map->map().size() : 0;
  }
};

#pragma GCC visibility pop
