// hoplaunch: hands a remote-access URI to the viewer registered for its scheme.

#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "assoclist.h"
#include "launch.h"

namespace {

// The number of positional arguments that the tool needs.
int minimumArguments() {
  return 1;
}

void help(const char* command) {
  std::cerr << "Usage: " << command << " <uri> " << std::endl;
}

// Splits the command line into positional arguments and keyword options.  False,
// with a message, for a keyword without a value.
bool split(int count, char** args, std::vector<std::string>& arguments, assocList& parameters) {
  for (int i = 1; i < count; i++) {
    const char* const arg = args[i];
    const char* const equals = std::strchr(arg, '=');
    if (*arg != '-') {
      arguments.emplace_back(arg);
    } else if (equals != nullptr) {
      parameters[std::string(arg + 1, equals)] = equals + 1;
    } else if (++i < count) {
      parameters[arg + 1] = args[i];
    } else {
      std::cerr << "Keyword " << arg << " has no value" << std::endl;
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int count, char** args) {
  const char* const command = count > 0 ? args[0] : "";
  if (minimumArguments() >= count) {
    help(command);
    return 0;
  }
  std::vector<std::string> arguments;
  assocList parameters;
  if (!split(count, args, arguments, parameters)) {
    return -1;
  }
  if (arguments.size() < static_cast<std::size_t>(minimumArguments())) {
    help(command);
  } else {
    process(arguments, parameters);  // which has logged what there is to say of a failure
  }
  return 0;
}
