// SPDX-License-Identifier: MIT
#include "session.h"

#include <string>

#include "DistName.h"
#include "configDB.h"
#include "configRef.h"
#include "countedMap.h"
#include "stringcomp.h"
#include "threading.h"
#include "trace.h"

namespace {

configString DUMMY("dummy", "dummy");
traceFlag TRACE("hoplaunch", 0);

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

session::runTime::runTime() {
  { const criticalSection section(CS_STDOUT, false); }
  ThreadData::instance(false);
  DUMMY.value(true);
}

session::session(const assocList& options) : m_handler(100, AUD_ALL), m_rest(options) {
  applyOptions(m_rest);
  threadedConfigDB::refresh();
}
