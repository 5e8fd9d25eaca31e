// SPDX-License-Identifier: MIT
#include "file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>

namespace hopopen {

namespace {

constexpr const char* TOO_LARGE = "is larger than 1 MiB";

std::string failure(int error) {
  return std::string("cannot be read: ") + std::strerror(error);
}

std::int64_t nanoseconds(const timespec& time) {
  return std::int64_t{1'000'000'000} * time.tv_sec + time.tv_nsec;
}

stamp stampFrom(const struct stat& details) {
  return {details.st_dev, details.st_ino, static_cast<std::uint64_t>(details.st_size),
          nanoseconds(details.st_mtim), nanoseconds(details.st_ctim)};
}

// Reads what the descriptor has; the error, or nothing.
std::string readAll(int descriptor, std::string& into, stamp& identity) {
  struct stat details;
  if (fstat(descriptor, &details) != 0) {
    return failure(errno);
  }
  if (!S_ISREG(details.st_mode)) {
    return "is not a file of text";
  }
  identity = stampFrom(details);
  if (identity.size > LONGEST_FILE) {
    return TOO_LARGE;
  }
  char buffer[16384];
  while (into.size() <= LONGEST_FILE) {
    const ssize_t count = read(descriptor, buffer, sizeof buffer);
    if (count > 0) {
      into.append(buffer, static_cast<std::size_t>(count));
      if (into.size() == identity.size) {  // what is added from now on is of another state of it
        return {};
      }
    } else if (count == 0) {
      return {};
    } else if (errno != EINTR) {
      return failure(errno);
    }
  }
  return TOO_LARGE;
}

}  // namespace

fileText readFile(const std::string& path) {
  fileText result;
  // Without O_NONBLOCK a pipe would wait for somebody to write.
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0) {
    result.found = errno != ENOENT && errno != ENOTDIR;
    if (result.found) {
      result.error = failure(errno);
    }
    return result;
  }
  result.found = true;
  result.error = readAll(descriptor, result.text, result.identity);
  close(descriptor);
  if (!result.error.empty()) {
    result.text.clear();
  }
  return result;
}

std::vector<std::string> namesIn(const std::string& folder, std::string& error) {
  std::vector<std::string> result;
  const std::unique_ptr<DIR, int (*)(DIR*)> opened(opendir(folder.c_str()), closedir);
  if (opened == nullptr) {
    if (errno != ENOENT && errno != ENOTDIR) {
      error = failure(errno);
    }
    return result;
  }
  errno = 0;
  while (const dirent* const entry = readdir(opened.get())) {
    result.emplace_back(entry->d_name);
  }
  if (errno != 0) {
    error = failure(errno);
  }
  std::erase_if(result, [](const std::string& name) { return name == "." || name == ".."; });
  std::sort(result.begin(), result.end());
  return result;
}

std::optional<stamp> stampOf(const std::string& path) {
  struct stat details;
  return stat(path.c_str(), &details) == 0 ? std::optional(stampFrom(details)) : std::nullopt;
}

}  // namespace hopopen
