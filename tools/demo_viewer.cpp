// SPDX-License-Identifier: MIT
// A viewer that shows what it was asked to show: the argument vector that it was
// given, one quoted element a line.

#include <iostream>

#include "conversion.h"

int main(int count, char** args) {
  for (int i = 0; i < count; i++) {
    std::cout << quote(args[i]) << '\n';
  }
  return 0;
}
