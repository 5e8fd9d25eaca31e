// A program that uses flags and nothing else of the library: prints those that are there
// when its own static objects come to life.

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
