// The order in which the library's static objects come to life before `main`.
//
// Objects that register themselves (items, flags, slots) are given one of these
// priorities, lower first, so that they exist before any static object of a
// program, in whatever order the program was linked.  Everything else is
// constant-initialised or local to a function.
//
// What code that runs at the very end may still use is `lasting`.
#pragma once

#include <iosfwd>
#include <utility>

constexpr int START_FLAGS = 101;  // trace flags: everything below may test them
constexpr int START_ITEMS = 102;  // configuration items, slots, the storing handler

/// One address in each source that holds such an object.  The sources through which
/// a program can see flags and items refer to it, so that no linker leaves one out.
extern const void* const startUpObjects[];

/// Standard error, set up even before the static initialisers that would do so.
std::ostream& standardError();

/// Holds a static object that is never destroyed.
template <class T>
union lasting {
  template <class... Arguments>
  explicit lasting(Arguments&&... arguments) : object(std::forward<Arguments>(arguments)...) {}
  ~lasting() {}

  T& operator*() { return object; }

  T object;
};
