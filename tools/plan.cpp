// SPDX-License-Identifier: MIT
#include "plan.h"

#include "configRef.h"
#include "html_escape.h"
#include "stubname.h"

namespace {

// The viewer for a URI: the option if given, else the one registered for the
// scheme, else none.
std::string viewer(const URI& uri, const assocList& options) {
  const std::string& program = options["program"];
  if (!program.empty()) {
    return program;
  }
  const assocList programs = PROGRAMS.list();
  return programs[uri.scheme()];
}

}  // namespace

// The query values are decoded once more by the parser: links rely on it.
launchPlan::launchPlan(const std::string& given, const assocList& options)
    : text(URIunEscape(given)), uri(text), style(args_style(options["style"])) {
  if (!uri.okay()) {
    return;
  }
  program = viewer(uri, options);
  if (program.empty()) {
    return;
  }
  const std::string& portArg = options["portArg"];
  arguments =
      uri.args(stubName(program.c_str()), 1, style, portArg.empty() ? nullptr : portArg.c_str());
}
