// SPDX-License-Identifier: MIT
#include "explain_options.h"

#include <cstdio>

#include "conversion.h"
#include "stringcomp.h"

explainForm takeForm(assocList& options) {
  const std::string form = options["format"];
  options.erase("format");
  if (form.empty() || caseInsensitive::same(form, "text")) {
    return EF_TEXT;
  }
  if (caseInsensitive::same(form, "json")) {
    return EF_JSON;
  }
  std::fprintf(stderr, "hopexplain: There is no format %s. Give text or json.\n",
               quote(form).c_str());
  return EF_UNKNOWN;
}

std::string helpText() {
  return "Usage: hopexplain [-format=text|json] [-KEY=VALUE | -KEY VALUE]... URI\n"
         "Says what hoplaunch would do with the same command line, and starts nothing.\n"
         "\n"
         "  -format=text  print lines for people, as without this option\n"
         "  -format=json  print one JSON object for programs\n"
         "  --help        print this, as the only argument\n"
         "  --version     print the version, as the only argument\n"
         "\n"
         "All other options are those of hoplaunch.  See the manual page hopexplain(1).\n";
}

std::string versionText() {
  return std::string("hopexplain ") + HOPLAUNCH_VERSION + "\n";
}
