// SPDX-License-Identifier: MIT
// A single owner of a heap object.
//
// May be used before `main`, in a forked child and at exit.
#pragma once

#include <cstddef>

#include "assertion.h"

#pragma GCC visibility push(default)

/// Owns one object, or one array, and deletes it with itself.  Neither copied nor
/// created on the heap.
template <class T>
class TautoPtr {
 public:
  /// Takes ownership of `p`, which may be null; `array` says that it came from
  /// `new[]`.
  TautoPtr(T* p, bool array) : contents(p), isArray(array) {}
  TautoPtr(const TautoPtr&) = delete;
  TautoPtr& operator=(const TautoPtr&) = delete;
  static void* operator new(std::size_t) = delete;
  static void* operator new[](std::size_t) = delete;

  ~TautoPtr() {
    if (isArray) {
      delete[] contents;
    } else {
      delete contents;
    }
  }

  /// True when there is an object.
  operator bool() const { return contents != nullptr; }
  bool okay() const { return contents != nullptr; }

  /// The object or null; it stays owned.
  T* pointer() { return contents; }
  const T* pointer() const { return contents; }

  /// The object.  Without one, an assertion fails.
  T* operator->() {
    check175();
    return contents;
  }
  const T* operator->() const {
    check175();
    return contents;
  }
  T& operator*() {
    check193();
    return *contents;
  }
  const T& operator*() const {
    check193();
    return *contents;
  }
  operator T&() { return **this; }

  /// The element at `index` of an array.  REQUIRES: the element exists.
  T& operator[](int index) { return contents[index]; }
  const T& operator[](int index) const { return contents[index]; }

  /// Gives the object away: the caller owns it, this holds null.
  T* extract() {
    T* result = contents;
    contents = nullptr;
    return result;
  }

 private:
  void check175() const { ASSERT_AT(contents != NULL, "../include/pointers", 175); }
  void check193() const { ASSERT_AT(contents != NULL, "../include/pointers", 193); }

  T* contents;
  bool isArray;
};

#pragma GCC visibility pop
