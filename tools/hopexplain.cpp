// SPDX-License-Identifier: MIT
// hopexplain: says what hoplaunch would do with the same command line.

#include <unistd.h>

#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "assoclist.h"
#include "commandline.h"
#include "explain.h"
#include "explain_json.h"
#include "explain_options.h"
#include "explain_output.h"
#include "explain_text.h"
#include "output_signals.h"
#include "session.h"
#include "threading.h"

namespace {

// Nothing could be done about an exception: even to unwind may take memory.
[[noreturn]] void endWithoutMemory() {
  constexpr std::string_view text = "hopexplain: There is not enough memory.\n";
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
  _exit(LAUNCHES_NOT);
}

// First of all: static objects take memory, too, and 101 is the earliest that there is.
[[gnu::constructor(101)]] void guardFromTheStart() {
  std::set_new_handler(endWithoutMemory);
}

// Why a launch would get no semaphore set; empty when it would.  This process needs none.
std::string semaphoreError() {
  int error = 0;
  const bool hasSet = semaphoreTry(error);
  semaphoreForgo();
  return hasSet ? "" : std::strerror(error);
}

}  // namespace

int main(int count, char** args) {
  ignoreOutputSignals();
  const std::string_view only = count == 2 ? args[1] : "";
  if (only == "--help" || only == "--version") {
    return printed(only == "--help" ? helpText() : versionText(), 0);
  }
  std::vector<std::string> arguments;
  assocList options;
  if (!split(count, args, arguments, options)) {
    return WRONG_COMMAND_LINE;
  }
  const explainForm form = takeForm(options);
  if (form == EF_UNKNOWN) {
    return WRONG_COMMAND_LINE;
  }
  if (arguments.size() < static_cast<std::size_t>(minimumArguments())) {
    help(count > 0 ? args[0] : "");
    return LAUNCHES_NOT;
  }
  const std::string noSet = semaphoreError();
  const session applied(options);
  const explanation launch(arguments.front(), options, applied.rest(), noSet);
  return printed(form == EF_JSON ? asJSON(launch) : asText(launch),
                 launch.launches() ? LAUNCHES : LAUNCHES_NOT);
}
