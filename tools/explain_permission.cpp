// SPDX-License-Identifier: MIT
#include "explain_permission.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

int permissionError(const std::string& path) {
  struct stat64 status = {};  // a 32-bit program finds large files, too
  if (stat64(path.c_str(), &status) != 0 ||
      faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) != 0) {
    return errno;
  }
  return S_ISREG(status.st_mode) ? 0 : EACCES;
}
