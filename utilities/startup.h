// SPDX-License-Identifier: MIT
// The order in which the library's static objects are constructed before `main`.
//
// Objects that register themselves (flags, items, slots) have one of these
// priorities, lower first.  So they exist before any static object of a program,
// in whatever order the program was linked.  Everything else is
// constant-initialised or local to a function.
//
// Code that runs at the very end may use only objects that are `lasting` (lasting.h).
#pragma once

namespace internal {

constexpr int START_FLAGS = 101;  // trace flags: everything below may test them
constexpr int START_ITEMS = 102;  // configuration items, slots, the storing handler

}  // namespace internal
