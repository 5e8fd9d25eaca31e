// SPDX-License-Identifier: MIT
#include "start.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>

#include "choose.h"
#include "definition.h"
#include "enumeration.h"
#include "fill.h"
#include "output_signals.h"
#include "programs.h"
#include "shown.h"

namespace hopopen {

namespace {

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> result;
  result.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    result.push_back(text.data());
  }
  result.push_back(nullptr);
  return result;
}

// In a terminal, variables are changed by what the terminal runs.
bool isReplaced(const opening& decided, std::string_view name) {
  if (decided.chosen.program.terminal) {
    return false;
  }
  const auto& unset = decided.chosen.viewer->unset;
  const auto& set = decided.filled->environment;
  return std::find(unset.begin(), unset.end(), name) != unset.end() ||
         std::any_of(set.begin(), set.end(), [&](const variable& one) { return one.name == name; });
}

}  // namespace

std::vector<std::string> environmentFor(const opening& decided, const char* const* current) {
  std::vector<std::string> result;
  for (; *current != nullptr; current++) {
    const std::string_view entry = *current;
    if (!isReplaced(decided, entry.substr(0, entry.find('=')))) {
      result.emplace_back(entry);
    }
  }
  if (!decided.chosen.program.terminal) {
    for (const variable& one : decided.filled->environment) {
      result.push_back(one.name + '=' + one.value);
    }
  }
  return result;
}

int become(const opening& decided) {
  const installed& program = decided.chosen.program;
  const std::string& path = program.terminal ? program.terminal->path : program.viewer.path;
  std::vector<std::string> arguments = decided.filled->arguments;
  std::vector<std::string> variables = environmentFor(decided, environ);
  const std::vector<char*> vector = pointersTo(arguments);
  const std::vector<char*> environment = pointersTo(variables);
  restoreOutputSignals();
  execve(path.c_str(), vector.data(), environment.data());
  const int error = errno;
  ignoreOutputSignals();
  return error;
}

refusal startFailed(const opening& decided, int error) {
  const definition& viewer = *decided.chosen.viewer;
  std::string remedy = "Install it again";
  if (!viewer.packages.empty()) {
    remedy += ": " + enumeration(viewer.packages);
  }
  return about(decided.what, {code::START,
                              printable(viewer.title) + " could not be started: " +
                                  std::strerror(error) + ". " + remedy + '.',
                              {}});
}

}  // namespace hopopen
