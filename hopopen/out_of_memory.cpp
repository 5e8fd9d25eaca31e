// SPDX-License-Identifier: MIT
#include "out_of_memory.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "launch_log.h"
#include "notify.h"
#include "programs.h"
#include "refusal.h"

namespace hopopen {

namespace {

constexpr std::string_view NO_MEMORY =
    "hopopen: There is not enough memory. Close some programs, and try again. (start)\n";

constinit const options* request = nullptr;
constinit std::terminate_handler previousEnd = nullptr;

void sayNoMemory(const options& asked) {
  if (asked.what == wish::OPEN && !asked.dryRun) {
    launchLog(asked.log).fixedLine(NO_MEMORY);
  }
  if (!asked.quiet) {
    [[maybe_unused]] const ssize_t written =
        write(STDERR_FILENO, NO_MEMORY.data(), NO_MEMORY.size());
  }
}

// Where the exception could not be thrown: not even for that was there memory, or a function
// that throws nothing was on its way.
[[noreturn]] void endByException() {
  try {
    if (const std::exception_ptr left = std::current_exception()) {
      std::rethrow_exception(left);
    }
  } catch (const std::bad_alloc&) {
    sayNoMemory(*request);
    _exit(exitStatus(code::START));
  } catch (...) {
    previousEnd();
  }
  previousEnd();
  std::abort();
}

}  // namespace

void guardMemory(const options& asked) {
  request = &asked;
  previousEnd = std::set_terminate(endByException);
}

int refuseWithoutMemory(const options& asked) {
  sayNoMemory(asked);
  try {
    if (!asked.quiet && isOnDesktop()) {
      notify(std::string(NO_MEMORY.substr(0, NO_MEMORY.size() - 1)),
             programFinder(std::getenv("PATH")));
    }
  } catch (const std::bad_alloc&) {
    // Then only the line says it.
  }
  return exitStatus(code::START);
}

}  // namespace hopopen
