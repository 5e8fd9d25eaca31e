// SPDX-License-Identifier: MIT
// hopopen: opens a link in the right viewer, or says why not.

#include <cstdlib>
#include <iostream>
#include <new>
#include <optional>
#include <string>

#include "catalog_file.h"
#include "check.h"
#include "definitions.h"
#include "fault.h"
#include "finding.h"
#include "folders.h"
#include "launch_log.h"
#include "list.h"
#include "open_link.h"
#include "options.h"
#include "out_of_memory.h"
#include "output_signals.h"
#include "preferences.h"
#include "refusal.h"
#include "say.h"
#include "surroundings.h"
#include "wishes.h"

namespace hopopen {

namespace {

constexpr int FAULTS_FOUND = 4;

int list(const options& asked, const folders& where, const surroundings& around) {
  if (!around.wishes.found.empty()) {
    const refusal why =
        faultOutside(code::SETTINGS, around.wishes.found.front().lineOfText() + '.');
    return refuse(why, asked, around.programs, launchLog(""));
  }
  keepCatalog(where.catalogFile, around.known);
  return say(asked.json ? listAsJSON(around.all()) : listAsText(around.all()), 0);
}

int check(const options& asked, const folders& where) {
  const checkResult told = checkAll(where, std::getenv);
  return say(asked.json ? checksAsJSON(told) : findingsAsText(told.checks),
             hasFault(told.checks) ? FAULTS_FOUND : 0);
}

int change(const options& asked, const folders& where, const surroundings& around) {
  std::string output;
  if (const auto why = changeWishes(asked, where, around.known, output)) {
    return refuse(*why, asked, around.programs, launchLog(""));
  }
  return say(output, 0);
}

int run(const options& asked) {
  const folders where(std::getenv);
  if (asked.what == wish::CHECK) {
    return check(asked, where);
  }
  if (asked.what == wish::OPEN) {
    return openLink(asked, where);
  }
  const surroundings around(where);
  tellFaults(around.known.found, asked.quiet);
  return asked.what == wish::LIST ? list(asked, where, around) : change(asked, where, around);
}

// Does what the command line asks for, and returns the exit status.
int obey(int count, const char* const* arguments, options& asked) {
  if (const auto instead = readOptions(count, arguments, asked)) {
    std::cerr << instead->error;
    return instead->output.empty() ? instead->status : say(instead->output, instead->status);
  }
  return run(asked);
}

}  // namespace

}  // namespace hopopen

int main(int count, char** arguments) {
  static hopopen::options asked;  // also looked at when memory runs out
  ignoreOutputSignals();
  hopopen::guardMemory(asked);
  try {
    return hopopen::obey(count, arguments, asked);
  } catch (const std::bad_alloc&) {
    return hopopen::refuseWithoutMemory(asked);
  }
}
