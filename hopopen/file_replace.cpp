// SPDX-License-Identifier: MIT
#include "file_replace.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "paths.h"

namespace hopopen {

namespace {

constexpr int MOST_LINKS = 40;  // as many as the kernel follows
constexpr mode_t OWNER_ALONE = 0600;
constexpr mode_t FOLDER_OF_OWNER = 0700;

bool isFolder(const std::string& path) {
  struct stat details;
  return stat(path.c_str(), &details) == 0 && S_ISDIR(details.st_mode);
}

bool isLocked(const descriptor& lock) {
  int result;
  do {
    result = flock(lock.number(), LOCK_EX);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

bool isWritten(const descriptor& file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(file.number(), text.data(), text.size());
    if (count > 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
      errno = count == 0 ? ENOSPC : errno;
      return false;
    }
  }
  return true;
}

// Makes a file with that text, on disk before this returns.
bool isMade(const std::string& path, const std::string& text) {
  // What a process left that was killed here.
  if (unlink(path.c_str()) != 0 && errno != ENOENT) {
    return false;
  }
  descriptor file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, OWNER_ALONE));
  // The mode that `open` gives may be less, by the mask.
  return file.isOpen() && fchmod(file.number(), OWNER_ALONE) == 0 && isWritten(file, text) &&
         fsync(file.number()) == 0 && file.closed();
}

}  // namespace

bool makeFolders(const std::string& path) {
  for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    const std::string folder = path.substr(0, slash);
    // Another process may make it meanwhile.
    if (!isFolder(folder) && mkdir(folder.c_str(), FOLDER_OF_OWNER) != 0 && errno != EEXIST) {
      return false;
    }
  }
  return true;
}

std::optional<std::string> followed(std::string path) {
  for (int i = 0; i <= MOST_LINKS; i++) {
    struct stat details;
    if (lstat(path.c_str(), &details) != 0) {
      return errno == ENOENT ? std::optional(path) : std::nullopt;
    }
    if (!S_ISLNK(details.st_mode)) {
      return path;
    }
    char buffer[PATH_MAX];
    const ssize_t size = readlink(path.c_str(), buffer, sizeof buffer);
    if (size < 0) {
      return {};
    }
    const std::string leads(buffer, static_cast<std::size_t>(size));
    std::string start;  // of a link that is relative
    if (!leads.starts_with('/')) {
      start = folderOf(path) + '/';
    }
    path = start + leads;
  }
  errno = ELOOP;
  return {};
}

fileLock::fileLock(const std::string& path)
    : m_file(open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, OWNER_ALONE)),
      m_held(m_file.isOpen() && isLocked(m_file)) {}

replacement replaceFile(const std::string& path, const std::string& text) {
  // Nobody else has a file of that name, and only who has the lock uses it.
  const std::string made = path + ".unfinished";
  const descriptor folder(open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) {
    return replacement::FAILED;
  }
  if (!isMade(made, text) || rename(made.c_str(), path.c_str()) != 0) {
    const int error = errno;
    unlink(made.c_str());
    errno = error;
    return replacement::FAILED;
  }
  // Some file systems cannot sync folders, and need not.
  const bool synced = fsync(folder.number()) == 0 || errno == EINVAL || errno == EROFS;
  return synced ? replacement::DONE : replacement::UNSYNCED;
}

}  // namespace hopopen
