// SPDX-License-Identifier: MIT
// hoplaunch: hands a remote-access URI to the viewer registered for its scheme.

#include <cstddef>
#include <string>
#include <vector>

#include "assoclist.h"
#include "commandline.h"
#include "launch_end.h"
#include "main2.h"
#include "output_signals.h"

namespace {

// First of all: static objects take memory, too, and 101 is the earliest that there is.
[[gnu::constructor(101)]] void guardFromTheStart() {
  guardProcess();
}

}  // namespace

int main(int count, char** args) {
  ignoreOutputSignals();
  const char* const command = count > 0 ? args[0] : "";
  if (minimumArguments() >= count) {
    help(command);
    return 0;
  }
  std::vector<std::string> arguments;
  assocList parameters;
  if (!split(count, args, arguments, parameters)) {
    return -1;
  }
  if (arguments.size() < static_cast<std::size_t>(minimumArguments())) {
    help(command);
  } else {
    process(arguments, parameters);  // which has logged what there is to say of a failure
  }
  return 0;
}
