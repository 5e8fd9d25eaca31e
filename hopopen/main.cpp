// hopopen: opens a link in the right viewer, or says why not.

#include <cstdlib>
#include <iostream>
#include <string>

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
#include "preferences.h"
#include "programs.h"
#include "shown.h"
#include "start.h"
#include "tell.h"
#include "wishes.h"

namespace hopopen {

namespace {

constexpr int FAULTS_FOUND = 4;

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

void say(const std::string& text) {
  std::cout << text << std::flush;
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
    say(asked.json ? asJSON(decided) : asText(decided));
    return decided.why ? exitStatus(decided.why->why) : 0;
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
  say(asked.json ? listAsJSON(around.all()) : listAsText(around.all()));
  return 0;
}

int check(const options& asked, const folders& where) {
  const findings told = checkFiles(where);
  say(asked.json ? findingsAsJSON(told) : findingsAsText(told));
  return told.found.empty() ? 0 : FAULTS_FOUND;
}

int change(const options& asked, const folders& where, const surroundings& around) {
  std::string output;
  if (const auto why = changeWishes(asked, where, around.known, around.wishes, output)) {
    return refuse(*why, asked, around.programs, launchLog(""));
  }
  say(output);
  return 0;
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
int obey(int count, const char* const* arguments) {
  options asked;
  if (const auto instead = readOptions(count, arguments, asked)) {
    say(instead->output);
    std::cerr << instead->error;
    return instead->status;
  }
  return run(asked);
}

}  // namespace

}  // namespace hopopen

int main(int count, char** arguments) {
  return hopopen::obey(count, arguments);
}
