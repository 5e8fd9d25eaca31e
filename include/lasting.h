// SPDX-License-Identifier: MIT
// Objects that are never destroyed.
//
// Code that runs at the very end of a process may still use them: the destructors of
// static objects, functions registered with `atexit`, a handler of a fatal signal.  An
// object lives inside a static object of this class, which takes no memory from the heap
// and registers nothing for the end.
//
// Not for programs: the headers and the sources of the library share it.
#pragma once

#include <concepts>
#include <new>
#include <type_traits>
#include <utility>

#pragma GCC visibility push(default)

namespace internal {

/// Holds a static object that is never destroyed.
///
///     const std::string& missing() {
///       static const internal::lasting<std::string> text("<missing>");
///       return *text;
///     }
template <class T>
class lasting {
 public:
  /// Constructs the object from `arguments`.
  template <class... Arguments>
  explicit lasting(Arguments&&... arguments) {
    ::new (static_cast<void*>(m_object)) T(std::forward<Arguments>(arguments)...);
  }
  /// Holds what `make()` returns: for a class whose constructors are private.
  template <std::invocable Make>
  requires std::same_as<std::invoke_result_t<Make>, T>
  explicit lasting(Make make) { ::new (static_cast<void*>(m_object)) T(make()); }
  lasting(const lasting&) = delete;
  lasting& operator=(const lasting&) = delete;

  T& operator*() { return *std::launder(reinterpret_cast<T*>(m_object)); }
  const T& operator*() const { return *std::launder(reinterpret_cast<const T*>(m_object)); }

 private:
  alignas(T) unsigned char m_object[sizeof(T)];
};

}  // namespace internal

#pragma GCC visibility pop
