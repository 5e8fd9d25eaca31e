// hopexplain: tells what hoplaunch would do with the same command line.

#include <cstddef>
#include <iostream>
#include <string>
#include <vector>

#include "assoclist.h"
#include "commandline.h"
#include "explain.h"
#include "launch.h"
#include "stringcomp.h"

namespace {

enum exitStatus : int { LAUNCHES = 0, LAUNCHES_NOT = 1 };

}  // namespace

int main(int count, char** args) {
  std::vector<std::string> arguments;
  assocList options;
  if (!split(count, args, arguments, options)) {
    return -1;
  }
  if (arguments.size() < static_cast<std::size_t>(minimumArguments())) {
    help(count > 0 ? args[0] : "");
    return LAUNCHES_NOT;
  }
  const bool asksForJSON = caseInsensitive::same(options["format"], "json");
  options.erase("format");  // the one option that is not the launcher's
  return process(options, [&](const assocList& rest) {
    const explanation launch(arguments.front(), options, rest);
    std::cout << (asksForJSON ? asJSON(launch) : asText(launch)) << std::flush;
    return launch.launches() ? LAUNCHES : LAUNCHES_NOT;
  });
}
