// SPDX-License-Identifier: MIT
// A program that uses only flags of the library.  It prints those that exist when its own
// static objects are created.

#include <cstdio>

#include "trace.h"

namespace {

struct early {
  early() {
    for (const auto& [name, flag] : traceFlag::allFlags()) {
      std::printf("%s %d\n", name.c_str(), static_cast<int>(flag->level()));
    }
  }
};
const early printed;

}  // namespace

int main() {
  std::printf("in main: %zu\n", traceFlag::allFlags().size());
}
