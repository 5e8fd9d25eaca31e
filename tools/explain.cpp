// SPDX-License-Identifier: MIT
#include "explain.h"

#include <cstdlib>
#include <cstring>

#include "configDB.h"
#include "conversion.h"
#include "explain_log.h"
#include "refcount.h"
#include "shell_word.h"
#include "stringcomp.h"

explanation::explanation(const std::string& uri, const assocList& options_, const assocList& rest_,
                         const std::string& noSet_)
    : given(uri),
      options(options_),
      rest(rest_),
      plan(uri, rest_),
      found(findProgram(plan.program, std::getenv("PATH"), vectorOfStrings(plan.arguments))),
      noSet(noSet_),
      logError(logFault(rest["log"])) {}

std::string explanation::obstacle() const {
  if (launches()) {
    return std::string();
  }
  if (!noSet.empty()) {
    return "no semaphore set: " + noSet;
  }
  if (!plan.uri.okay()) {
    return "the URI does not parse";
  }
  if (plan.program.empty()) {
    return "no program is registered for the scheme " + plan.uri.scheme();
  }
  return shellWord(plan.program) + " cannot be executed: " + std::strerror(found.error);
}

optionUse explanation::use(const std::string& key) const {
  if (rest.find(key) == rest.end()) {
    const configDB items(RT_READ);
    return &items.find(key) != &configDB::dummy() ? OU_ITEM : OU_FLAG;
  }
  for (const char* const known : {"log", "program", "style", "portArg"}) {
    if (caseInsensitive::same(key, known)) {
      return OU_LAUNCH;
    }
  }
  return OU_NONE;
}
