#include "open_link.h"

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
#include "say.h"
#include "shown.h"
#include "start.h"
#include "surroundings.h"
#include "tell.h"
#include "tell_json.h"

namespace hopopen {

namespace {

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

// Decides, and reads as many definitions as that needs.
opening decideOn(const options& asked, surroundings& around) {
  opening result = decide(asked.link, asked.viewer, around.all());
  while (!result.unread.empty()) {
    readWhole(around.known, result.unread);
    result = decide(asked.link, asked.viewer, around.all());
  }
  return result;
}

}  // namespace

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

}  // namespace hopopen
