// SPDX-License-Identifier: MIT
#include "open_link.h"

#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "catalog_file.h"
#include "choose.h"
#include "conversion.h"
#include "datetime.h"
#include "decide.h"
#include "definitions.h"
#include "fill.h"
#include "launch_log.h"
#include "link.h"
#include "programs.h"
#include "refusal.h"
#include "route.h"
#include "say.h"
#include "shown.h"
#include "start.h"
#include "surroundings.h"
#include "tell.h"
#include "tell_json.h"
#include "tunnel.h"
#include "tunnel_folder.h"

namespace hopopen {

namespace {

void logLink(const opening& decided, const launchLog& log) {
  if (log.isOpen()) {
    const std::string shown = masked(decided.what.text);
    log.line({DateTime::now(0).format(DS_ISO8601), ": URI = ", quoted(shown, shown.size())});
  }
}

void logStart(const opening& decided, const launchLog& log) {
  if (!log.isOpen()) {
    return;
  }
  log.line({"executable: ", printable(decided.chosen.program.viewer.path)});
  for (const std::string& argument : decided.filled->arguments) {
    log.line({"\t", quote(argument)});
  }
}

// Decides, and reads as many definitions as that needs.
opening decideOn(const options& asked, surroundings& around) {
  opening result = decide(asked.link, asked.viewer, around.all());
  while (!result.unread.empty()) {
    readWhole(around.known, result.unread);
    result = decide(asked.link, asked.viewer, around.all());
  }
  return result;
}

// Makes the tunnel that the opening needs, if it needs one, and completes the opening.
verdict goThrough(opening& decided, const options& asked, const programFinder& programs,
                  std::optional<tunnelFolder>& folder) {
  const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
  removeOldTunnels(runtime);
  if (!decided.way->through) {
    return {};
  }
  folder.emplace(runtime);
  if (!folder->fault().empty()) {
    return about(decided.what, {code::TUNNEL, folder->fault(), {}});
  }
  const bool aloud = !asked.quiet && isatty(STDERR_FILENO) == 1;
  if (const auto fault = makeTunnel(decided, programs, *folder, aloud)) {
    return about(decided.what, *fault);
  }
  fillSocket(decided, folder->socket());
  return {};
}

}  // namespace

int openLink(const options& asked, const folders& where) {
  surroundings around(where, readCatalog(where.catalogFile));
  opening decided = decideOn(asked, around);
  tellFaults(around.known.found, asked.quiet);
  if (asked.dryRun) {
    return say(asked.json ? asJSON(decided) : asText(decided),
               decided.why ? exitStatus(decided.why->why) : 0);
  }
  const launchLog log(asked.log);
  logLink(decided, log);
  std::optional<tunnelFolder> folder;
  if (!decided.why) {
    decided.why = goThrough(decided, asked, around.programs, folder);
  }
  if (decided.why) {
    folder.reset();
    return refuse(*decided.why, asked, around.programs, log);
  }
  logStart(decided, log);
  const int error = become(decided);
  return refuse(startFailed(decided, error), asked, around.programs, log);
}

}  // namespace hopopen
