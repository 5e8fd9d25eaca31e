// SPDX-License-Identifier: MIT
#include "explain_log.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>
#include <climits>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace {

using fileStatus = struct stat64;

int denied(const std::string& path, int access) {
  return faccessat(AT_FDCWD, path.c_str(), access, AT_EACCESS) == 0 ? 0 : errno;
}

// The folder that the last component of the path is in.
std::string folderOf(const std::string& path) {
  const std::size_t end = path.find_last_not_of('/');
  if (end == path.npos) {
    return "/";
  }
  const std::size_t slash = path.rfind('/', end);
  return slash == path.npos ? "." : path.substr(0, slash + 1);
}

// A setting of the kernel; 0 without it.
int setting(const char* name) {
  int value = 0;
  std::ifstream("/proc/sys/fs/" + std::string(name)) >> value;
  return value;
}

// Whether Linux protects the user from a file that somebody else put into a shared folder:
// to open it for making it is refused there, even for root.
bool isForeign(const std::string& path, const fileStatus& file) {
  fileStatus folder = {};
  if (stat64(folderOf(path).c_str(), &folder) != 0 || (folder.st_mode & S_ISVTX) == 0 ||
      file.st_uid == folder.st_uid || file.st_uid == geteuid()) {
    return false;
  }
  const int level = setting(S_ISFIFO(file.st_mode) ? "protected_fifos" : "protected_regular");
  return (level >= 1 && (folder.st_mode & S_IWOTH) != 0) ||
         (level >= 2 && (folder.st_mode & S_IWGRP) != 0);
}

// The file that a link leads to in the end, though it is not there.
std::string endOfLinks(std::string path) {
  constexpr int mostLinks = 40;
  for (int i = 0; i < mostLinks; i++) {
    std::array<char, PATH_MAX> target = {};
    const ssize_t length = readlink(path.c_str(), target.data(), target.size());
    if (length < 0) {
      return path;
    }
    const std::string name(target.data(), static_cast<std::size_t>(length));
    path = name.front() == '/' ? name : folderOf(path).append("/").append(name);
  }
  return path;
}

// Why a file that is not there cannot be made; 0 when it can.
int makingError(const std::string& given) {
  const std::string path = endOfLinks(given);
  const std::string folder = folderOf(path);
  const int error = denied(folder, X_OK);
  if (error != 0) {
    return error;
  }
  if (path.back() == '/') {
    return EISDIR;
  }
  struct statfs64 system = {};
  if (statfs64(folder.c_str(), &system) == 0 && system.f_type == PROC_SUPER_MAGIC) {
    return ENOENT;  // nobody makes files there
  }
  return denied(folder, W_OK);
}

std::string cannotBeOpened(int error) {
  return error == 0 ? std::string() : std::string("cannot be opened: ") + std::strerror(error);
}

}  // namespace

std::string logFault(const std::string& path) {
  if (path.empty()) {
    return "";
  }
  fileStatus status = {};
  const int missing = stat64(path.c_str(), &status) == 0 ? 0 : errno;
  // What ends in a slash is taken for a folder, whatever it is.
  if (missing == ENOENT || (path.back() == '/' && missing != ENAMETOOLONG)) {
    return cannotBeOpened(makingError(path));
  }
  if (missing != 0) {
    return cannotBeOpened(missing);
  }
  if (S_ISDIR(status.st_mode)) {
    return cannotBeOpened(EISDIR);
  }
  if (S_ISSOCK(status.st_mode)) {
    return cannotBeOpened(ENXIO);
  }
  const bool isPipe = S_ISFIFO(status.st_mode);
  if ((isPipe || S_ISREG(status.st_mode)) && isForeign(path, status)) {
    return cannotBeOpened(EACCES);
  }
  const int error = denied(path, W_OK);
  if (error == 0 && isPipe) {
    return "is a pipe: lines are lost while nobody reads it or it is full";
  }
  return cannotBeOpened(error);
}
