// What the frames of a stack are called, found without allocating memory.
#pragma once

#include <iosfwd>

namespace internal {

/// The function that an address is in, as the linker knows it.
struct frameName {
  const char* symbol = nullptr;  ///< null for none
  unsigned long distance = 0;    ///< of the address from the beginning of the function
};

/// The function of the program that `frame` is in, by the symbols that the program itself
/// exports.  The loader knows no names in a static program.
frameName exportedName(const void* frame);

/// Writes the lines that `stack::write` writes for these frames, without allocating: what
/// broke may have been the allocator.
void writeFrames(std::ostream& out, void* const* frames, int count);

}  // namespace internal
