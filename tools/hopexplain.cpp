// hopexplain: tells what hoplaunch would do with the same command line.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "assoclist.h"
#include "commandline.h"
#include "explain.h"
#include "explain_options.h"
#include "explain_output.h"
#include "launch.h"

int main(int count, char** args) {
  const std::string_view only = count == 2 ? args[1] : "";
  if (only == "--help" || only == "--version") {
    return printed(only == "--help" ? helpText() : versionText(), 0);
  }
  std::vector<std::string> arguments;
  assocList options;
  if (!split(count, args, arguments, options)) {
    return WRONG_COMMAND_LINE;
  }
  const explainForm form = takeForm(options);
  if (form == EF_UNKNOWN) {
    return WRONG_COMMAND_LINE;
  }
  if (arguments.size() < static_cast<std::size_t>(minimumArguments())) {
    help(count > 0 ? args[0] : "");
    return LAUNCHES_NOT;
  }
  return process(options, [&](const assocList& rest) {
    const explanation launch(arguments.front(), options, rest);
    return printed(form == EF_JSON ? asJSON(launch) : asText(launch),
                   launch.launches() ? LAUNCHES : LAUNCHES_NOT);
  });
}
