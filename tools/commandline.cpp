// SPDX-License-Identifier: MIT
#include "commandline.h"

#include <cstdio>
#include <cstring>

int minimumArguments() {
  return 1;
}

void help(const char* command) {
  std::fprintf(stderr, "Usage: %s <uri> \n", command);
}

bool split(int count, char** args, std::vector<std::string>& arguments, assocList& parameters) {
  for (int i = 1; i < count; i++) {
    const char* const arg = args[i];
    const char* const equals = std::strchr(arg, '=');
    if (*arg != '-') {
      arguments.emplace_back(arg);
    } else if (equals != nullptr) {
      parameters[std::string(arg + 1, equals)] = equals + 1;
    } else if (++i < count) {
      parameters[arg + 1] = args[i];
    } else {
      std::fprintf(stderr, "Keyword %s has no value\n", arg);
      return false;
    }
  }
  return true;
}
