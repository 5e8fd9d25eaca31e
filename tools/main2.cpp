// Routing of the keyword options: to configuration items, to trace flags, or on to
// the launch.

#include "configRef.h"
#include "events.h"
#include "launch.h"
#include "launch_end.h"
#include "system.h"
#include "threading.h"
#include "trace.h"

namespace {

configString DUMMY("dummy", "dummy");
[[gnu::used]] traceFlag TRACE("hoplaunch", 0);

// Uses up the options that name a configuration item or a trace flag.
void applyOptions(assocList& options) {
  editableConfigDB CDB;
  const configItem& absent = countedMapRef<std::string, configItem, caseInsensitive>::dummy();
  for (auto option = options.begin(); option != options.end();) {
    const auto current = option++;
    const auto& [key, value] = *current;
    if (&CDB.make(key, false) != &absent) {
      CDB.set(key, value, DistName(), false);
      options.erase(current);
    } else if (traceFlag::set(key, 1)) {
      options.erase(current);
    }
  }
}

}  // namespace

int process(const std::vector<std::string>& args, const assocList& params) {
  guardLaunch(params["log"]);
  return process(params, [&args](const assocList& rest) { return processAug(args, rest); });
}

int process(const assocList& params, const std::function<int(const assocList& rest)>& finish) {
  { const criticalSection section(CS_STDOUT, false); }
  ThreadData::instance(false);
  DUMMY.value(true);
  const stderrHandler handler(100, AUD_ALL);
  assocList options(params);
  applyOptions(options);
  threadedConfigDB::refresh();
  return finish(options);
}

std::string InterfaceFinder::FQDN() {
  return std::string();
}
