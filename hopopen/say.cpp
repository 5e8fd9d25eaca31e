// SPDX-License-Identifier: MIT
#include "say.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <vector>

#include "notify.h"

namespace hopopen {

namespace {

constexpr int OUTPUT_LOST = 2;

}  // namespace

int say(const std::string& text, int status) {
  std::cout << text << std::flush;
  if (std::cout) {
    return status;
  }
  const int error = errno;
  std::cerr << "hopopen: The output could not be written: " << std::strerror(error) << ".\n";
  return OUTPUT_LOST;
}

void tellFaults(const faults& found, bool quiet) {
  std::string last;
  for (const fault& one : found) {
    if (!quiet && one.file != last) {  // the first fault of each file
      std::cerr << one.lineOfText() << '\n';
    }
    last = one.file;
  }
}

int refuse(const refusal& why, const options& asked, const programFinder& programs,
           const launchLog& log) {
  const std::string line = refusalLine(why);
  log.line({line});
  if (!asked.quiet) {
    std::cerr << line << '\n';
    if (isOnDesktop()) {
      notify(line, programs);
    }
  }
  return exitStatus(why.why);
}

}  // namespace hopopen
