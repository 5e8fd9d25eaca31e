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
