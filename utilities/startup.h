// The order in which the library's static objects come to life before `main`.
//
// Objects that register themselves (items, flags, slots) are given one of these
// priorities, lower first, so that they exist before any static object of a
// program, in whatever order the program was linked.  Everything else is
// constant-initialised or local to a function.
#pragma once

constexpr int START_FLAGS = 150;  // trace flags: everything below may test them
constexpr int START_ITEMS = 200;  // configuration items, slots, the storing handler
