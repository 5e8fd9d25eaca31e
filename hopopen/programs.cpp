// SPDX-License-Identifier: MIT
#include "programs.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "paths.h"

namespace hopopen {

namespace {

std::string withoutLinks(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), free);
  return resolved == nullptr ? "" : resolved.get();
}

}  // namespace

bool isExecutable(const std::string& path) {
  struct stat status;
  return access(path.c_str(), X_OK) == 0 && stat(path.c_str(), &status) == 0 &&
         S_ISREG(status.st_mode);
}

programFinder::programFinder(const char* path)
    : m_folders(absolutePaths(path == nullptr ? "/usr/bin:/bin" : path)) {}

std::optional<program> programFinder::find(const std::string& name) const {
  for (const std::string& folder : m_folders) {
    const std::string path = within(folder, name);
    if (isExecutable(path)) {
      return program{name, path};
    }
  }
  return {};
}

std::optional<program> programFinder::findOther(const std::string& name) const {
  const auto first = find(name);
  for (const std::string& folder : m_folders) {
    const std::string path = within(folder, name);
    if (isExecutable(path) && withoutLinks(path) != withoutLinks(first->path)) {
      return program{name, path};
    }
  }
  return {};
}

std::optional<program> programFinder::findViewer(const std::vector<std::string>& names) const {
  for (const std::string& name : names) {
    for (const std::string& folder : m_folders) {
      const std::string path = within(folder, name);
      if (!isExecutable(path)) {
        continue;
      }
      const std::string resolved = withoutLinks(path);
      const std::string last = resolved.substr(resolved.rfind('/') + 1);
      if (std::find(names.begin(), names.end(), last) != names.end()) {
        return program{name, resolved};
      }
    }
  }
  return {};
}

std::optional<installed> programFinder::findTerminal() const {
  if (auto terminal = find("xdg-terminal-exec")) {
    return installed{{}, terminal, {}, {}};
  }
  if (auto terminal = find("x-terminal-emulator")) {
    return installed{{}, terminal, {"-e"}, {}};
  }
  return {};
}

std::optional<installed> programFinder::find(const definition& viewer) const {
  const auto found = findViewer(viewer.programs);
  if (!found || !viewer.terminal) {
    return found ? std::optional(installed{*found, {}, {}, {}}) : std::nullopt;
  }
  auto result = findTerminal();
  if (!result) {
    return {};
  }
  result->viewer = *found;
  if (viewer.inVariables) {
    const auto env = find("env");
    // env would take a path with "=" for a variable.
    if (!env || found->path.find('=') != std::string::npos) {
      return {};
    }
    result->env = env->path;
  }
  return result;
}

}  // namespace hopopen
