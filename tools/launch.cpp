// SPDX-License-Identifier: MIT
#include "launch.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "conversion.h"
#include "datetime.h"
#include "launch_log.h"
#include "output_signals.h"
#include "plan.h"
#include "threading.h"
#include "uri.h"

namespace {

// Becomes the program, or returns the error number.
int become(const char* program, char** arguments) {
  semaphoreRelease();  // nothing that runs at exit survives the exec
  restoreOutputSignals();
  execvp(program, arguments);
  const int error = errno;
  ignoreOutputSignals();
  return error;
}

}  // namespace

int processAug(const std::vector<std::string>& args, const assocList& params) {
  const std::string& given = args.front();
  const launchPlan plan(given, params);
  const launchLog log(params["log"]);
  if (!plan.uri.okay()) {
    log.line({"Bad URI \"", given, "\""});
    return -1;
  }
  if (log.isOpen()) {
    log.line({DateTime::now(0).format(DS_ISO8601), ": URI = ", given});
  }
  if (plan.program.empty()) {
    log.line({"no executable for scheme ", plan.uri.scheme()});
    return -1;
  }
  log.line({"executable: ", plan.program});
  for (char** argument = plan.arguments; log.isOpen() && *argument != nullptr; argument++) {
    log.line({"\t", quote(*argument)});
  }
  const int error = become(plan.program.c_str(), plan.arguments);
  log.line({"_execv() failed; path = ", plan.program, " errno = ", int2decimal(error), " ",
            std::strerror(error)});
  (DateTime::now(0) + 5.0).wait();
  return -1;
}
