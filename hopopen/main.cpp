// hopopen: opens a link in the right viewer, or says why not.

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <string_view>

#include "catalog_file.h"
#include "check.h"
#include "conversion.h"
#include "datetime.h"
#include "decide.h"
#include "definitions.h"
#include "folders.h"
#include "launch_log.h"
#include "list.h"
#include "notify.h"
#include "options.h"
#include "output_signals.h"
#include "preferences.h"
#include "programs.h"
#include "shown.h"
#include "start.h"
#include "tell.h"
#include "wishes.h"

namespace hopopen {

namespace {

constexpr int OUTPUT_LOST = 2;
constexpr int FAULTS_FOUND = 4;

constexpr std::string_view NO_MEMORY =
    "hopopen: There is not enough memory. Close some programs, and try again. (start)\n";

// What every wish needs: the files, and where programs are.
struct surroundings {
  explicit surroundings(const folders& where, const catalog& outlines = {})
      : known(readDefinitions(where.viewers, outlines)),
        wishes(readPreferences(where)),
        programs(std::getenv("PATH")) {}

  candidates all() const {
    return {known, wishes, [this](const definition& viewer) { return programs.find(viewer); }};
  }

  definitions known;
  preferences wishes;
  programFinder programs;
};

// Writes what was asked for, and returns the exit status: `status`, unless it got lost.
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

// Tells of a refusal wherever somebody may read it.
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

void logStart(const opening& decided, const launchLog& log) {
  if (!log.isOpen()) {
    return;
  }
  const std::string shown = masked(decided.what.text);
  log.line({DateTime::now(0).format(DS_ISO8601), ": URI = ", quoted(shown, shown.size())});
  if (decided.why) {
    return;
  }
  log.line({"executable: ", printable(decided.chosen.program.viewer.path)});
  for (const std::string& argument : decided.filled->arguments) {
    log.line({"\t", quote(argument)});
  }
}

// Decides, and reads as many definitions as that takes.
opening decideOn(const options& asked, surroundings& around) {
  opening result = decide(asked.link, asked.viewer, around.all());
  while (!result.unread.empty()) {
    readWhole(around.known, result.unread);
    result = decide(asked.link, asked.viewer, around.all());
  }
  return result;
}

int openLink(const options& asked, const folders& where) {
  surroundings around(where, readCatalog(where.catalogFile));
  const opening decided = decideOn(asked, around);
  tellFaults(around.known.found, asked.quiet);
  if (asked.dryRun) {
    return say(asked.json ? asJSON(decided) : asText(decided),
               decided.why ? exitStatus(decided.why->why) : 0);
  }
  const launchLog log(asked.log);
  logStart(decided, log);
  if (decided.why) {
    return refuse(*decided.why, asked, around.programs, log);
  }
  const int error = become(decided);
  return refuse(startFailed(decided, error), asked, around.programs, log);
}

int list(const options& asked, const folders& where, const surroundings& around) {
  if (!around.wishes.found.empty()) {
    const refusal why{code::SETTINGS, around.wishes.found.front().lineOfText() + '.', {}};
    return refuse(why, asked, around.programs, launchLog(""));
  }
  keepCatalog(where.catalogFile, around.known);
  return say(asked.json ? listAsJSON(around.all()) : listAsText(around.all()), 0);
}

int check(const options& asked, const folders& where) {
  const findings told = checkFiles(where);
  return say(asked.json ? findingsAsJSON(told) : findingsAsText(told),
             told.found.empty() ? 0 : FAULTS_FOUND);
}

int change(const options& asked, const folders& where, const surroundings& around) {
  std::string output;
  if (const auto why = changeWishes(asked, where, around.known, around.wishes, output)) {
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

void sayNoMemory(const options& asked) {
  if (asked.what == wish::OPEN && !asked.dryRun) {
    launchLog(asked.log).fixedLine(NO_MEMORY);
  }
  if (!asked.quiet) {
    [[maybe_unused]] const ssize_t written =
        write(STDERR_FILENO, NO_MEMORY.data(), NO_MEMORY.size());
  }
}

// Says so without taking memory, and on the desktop if there is enough for that again.
int refuseWithoutMemory(const options& asked) {
  sayNoMemory(asked);
  try {
    if (!asked.quiet && isOnDesktop()) {
      notify(std::string(NO_MEMORY.substr(0, NO_MEMORY.size() - 1)),
             programFinder(std::getenv("PATH")));
    }
  } catch (const std::bad_alloc&) {
    // Then only the line tells of it.
  }
  return exitStatus(code::START);
}

options& request() {
  static options asked;
  return asked;
}

constinit std::terminate_handler previousEnd = nullptr;

// Where the exception could not be thrown: not even for that was there memory, or a function
// that throws nothing was on its way.
[[noreturn]] void endByException() {
  try {
    if (const std::exception_ptr left = std::current_exception()) {
      std::rethrow_exception(left);
    }
  } catch (const std::bad_alloc&) {
    sayNoMemory(request());
    _exit(exitStatus(code::START));
  } catch (...) {
    previousEnd();
  }
  previousEnd();
  std::abort();
}

}  // namespace

}  // namespace hopopen

int main(int count, char** arguments) {
  ignoreOutputSignals();
  hopopen::previousEnd = std::set_terminate(hopopen::endByException);
  try {
    return hopopen::obey(count, arguments, hopopen::request());
  } catch (const std::bad_alloc&) {
    return hopopen::refuseWithoutMemory(hopopen::request());
  }
}
