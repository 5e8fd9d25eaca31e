#include "explain.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "configDB.h"
#include "stringcomp.h"

namespace {

// 0 when this process may execute the file, else the error number.
int executable(const std::string& path) {
  struct stat64 status = {};  // a 32-bit program finds large files, too
  if (stat64(path.c_str(), &status) != 0 ||
      faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) != 0) {
    return errno;
  }
  return S_ISREG(status.st_mode) ? 0 : EACCES;
}

// Whether `execvp` tries the next folder: the last three are those of remote folders.
bool searchGoesOn(int error) {
  return error == EACCES || error == ENOENT || error == ENOTDIR || error == ESTALE ||
         error == ENODEV || error == ETIMEDOUT;
}

}  // namespace

foundProgram findProgram(const std::string& program, const char* searchPath) {
  if (program.empty()) {
    return {"", ENOENT};
  }
  if (program.find('/') != std::string::npos) {
    const int error = executable(program);
    return {error == 0 ? program : "", error};
  }
  // An empty folder is the current one.  Where access is denied the search goes on, but
  // in the end that is what it reports; else it reports the last folder's error.
  const std::string folders = searchPath != nullptr ? searchPath : "/bin:/usr/bin";
  int result = ENOENT;
  for (std::size_t begin = 0; begin <= folders.size();) {
    const std::size_t end = std::min(folders.find(':', begin), folders.size());
    std::string path = folders.substr(begin, end - begin);
    path += path.empty() ? "" : "/";
    path += program;
    const int error = executable(path);
    if (error == 0) {
      return {path, 0};
    }
    if (!searchGoesOn(error)) {
      return {"", error};
    }
    result = result == EACCES ? result : error;
    begin = end + 1;
  }
  return {"", result};
}

explanation::explanation(const std::string& uri, const assocList& options_, const assocList& rest_,
                         const std::string& noSet_)
    : given(uri),
      options(options_),
      rest(rest_),
      plan(uri, rest_),
      found(findProgram(plan.program, std::getenv("PATH"))),
      noSet(noSet_) {}

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
