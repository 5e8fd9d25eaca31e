// SPDX-License-Identifier: MIT
// The names of the frames of a stack, found without allocating memory.
#pragma once

#include <iosfwd>

namespace internal {

/// The function that an address is in, as the linker knows it.
struct frameName {
  const char* symbol = nullptr;  ///< null for none
  unsigned long distance = 0;    ///< of the address from the beginning of the function
};

/// The function of the program that `frame` is in, from the symbols that the program itself
/// exports.  In a static program the loader knows no names.
frameName exportedName(const void* frame);

/// Writes the lines that `stack::write` writes for these frames.  It does not allocate: the
/// allocator itself may be broken.
void writeFrames(std::ostream& out, void* const* frames, int count);

}  // namespace internal
