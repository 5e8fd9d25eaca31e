// SPDX-License-Identifier: MIT
#include "find_program.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>

#include "explain_kernel.h"

namespace {

constexpr const char* shell = "/bin/sh";

// One attempt: what the kernel refuses as no program is given to the shell.
foundProgram attempt(const std::string& path, const std::vector<std::string>& arguments) {
  const int error = executionError(path, arguments);
  if (error == 0) {
    return {.path = path};
  }
  if (error != ENOEXEC) {
    return {.path = "", .error = error};
  }
  std::vector<std::string> forShell = {shell, path};
  forShell.insert(forShell.end(), arguments.begin() + 1, arguments.end());
  const int errorOfShell = executionError(shell, forShell);
  if (errorOfShell == 0) {
    return {.path = path, .shell = shell};
  }
  return {.path = "", .error = errorOfShell};
}

// Whether `execvp` tries the next folder: the last three are those of remote folders.
bool searchGoesOn(int error) {
  return error == EACCES || error == ENOENT || error == ENOTDIR || error == ESTALE ||
         error == ENODEV || error == ETIMEDOUT;
}

// Whether `execvp` refuses a name that no file can have.  glibc before 2.43 looks for its
// beginning in each folder instead, and answers what the last folder says.
#if __GLIBC_PREREQ(2, 43)
constexpr bool REFUSES_LONG_NAMES = true;
#else
constexpr bool REFUSES_LONG_NAMES = false;
#endif

// A folder of PATH whose name glibc ignores.
bool isTooLong(const std::string& folder) {
  return folder.size() >= PATH_MAX;
}

}  // namespace

foundProgram findProgram(const std::string& program, const char* searchPath,
                         const std::vector<std::string>& arguments) {
  if (program.empty()) {
    return {.path = "", .error = ENOENT};
  }
  if (program.find('/') != std::string::npos) {
    return attempt(program, arguments);
  }
  if (REFUSES_LONG_NAMES && program.size() > NAME_MAX) {
    return {.path = "", .error = ENAMETOOLONG};
  }
  // An empty folder is the current one.  Where access is denied the search goes on, but
  // in the end that is what it reports; else it reports the last folder's error.
  const std::string folders = searchPath != nullptr ? searchPath : "/bin:/usr/bin";
  const std::string name = program.substr(0, NAME_MAX + 1);  // glibc looks at no more
  foundProgram result = {.path = "", .error = ENOENT};
  for (std::size_t begin = 0; begin <= folders.size();) {
    const std::size_t end = std::min(folders.find(':', begin), folders.size());
    std::string path = folders.substr(begin, end - begin);
    begin = end + 1;
    if (isTooLong(path)) {
      result.skipsFolder = true;
      if (end == folders.size()) {
        break;
      }
      // glibc goes on with what is between the name and the colon after it: nothing.
      result.searchesHere = true;
      path.clear();
    }
    path += path.empty() ? "" : "/";
    foundProgram found = attempt(path + name, arguments);
    found.skipsFolder = result.skipsFolder;
    found.searchesHere = result.searchesHere;
    if (found.error == 0 || !searchGoesOn(found.error)) {
      return found;
    }
    found.error = result.error == EACCES ? EACCES : found.error;
    result = found;
  }
  return result;
}
