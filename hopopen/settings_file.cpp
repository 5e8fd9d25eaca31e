#include "settings_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

#include "file.h"
#include "settings.h"
#include "shown.h"

namespace hopopen {

namespace {

constexpr int MOST_LINKS = 40;  // as many as the kernel follows
constexpr mode_t OWNER_ALONE = 0600;
constexpr mode_t FOLDER_OF_OWNER = 0700;

// A descriptor that is closed at the end of its scope.
class descriptor {
 public:
  explicit descriptor(int number) : m_number(number) {}
  ~descriptor() {
    const int error = errno;  // of the call that failed, for the message
    if (m_number >= 0) {
      close(m_number);
    }
    errno = error;
  }
  descriptor(const descriptor&) = delete;
  descriptor& operator=(const descriptor&) = delete;

  bool isOpen() const { return m_number >= 0; }
  int number() const { return m_number; }
  // False when the system reports an error.  The descriptor is closed all the same.
  bool closed() {
    const int number = m_number;
    m_number = -1;
    return close(number) == 0 || errno == EINTR;
  }

 private:
  int m_number;
};

std::string advice(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return "Make room there, and try again.";
    case EACCES:
    case EPERM:
      return "Check who may write there.";
    case EROFS:
      return "Nobody can write there. Make it writable, or choose another folder by "
             "XDG_CONFIG_HOME.";
    default:
      return "Check what is there, and try again.";
  }
}

// REQUIRES: a call has just failed.
std::string failure(const std::string& path) {
  const int error = errno;
  return "Cannot write " + printable(path) + ": " + std::strerror(error) +
         ". Nothing was changed. " + advice(error);
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) {
    return ".";
  }
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool isFolder(const std::string& path) {
  struct stat details;
  return stat(path.c_str(), &details) == 0 && S_ISDIR(details.st_mode);
}

// Makes the folders on the way to the file.
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

// What the path leads to through symbolic links, also when it is not there yet.  Nothing,
// with `errno`, when that cannot be found out.
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

// Replaces the file by one with that text.  The error, or nothing.
std::string replace(const std::string& path, const std::string& text) {
  // Nobody else has a file of that name, and only who has the lock uses it.
  const std::string made = path + ".unfinished";
  const descriptor folder(open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) {
    return failure(path);
  }
  if (!isMade(made, text) || rename(made.c_str(), path.c_str()) != 0) {
    std::string result = failure(path);
    unlink(made.c_str());
    return result;
  }
  // Some file systems cannot sync folders, and need not.
  if (fsync(folder.number()) != 0 && errno != EINVAL && errno != EROFS) {
    return "The settings in " + printable(path) + " are changed, but may be the old ones after " +
           "a power failure: " + std::strerror(errno) + ". Check the disk.";
  }
  return {};
}

// What is to be done about a file.
struct plan {
  std::string error = {};                // what hinders it
  std::optional<std::string> text = {};  // what is to be written, if anything is
};

// `path` is what the file is called where it is told.
plan planned(const std::string& path, const std::string& target, const change& what) {
  const fileText old = readFile(target);
  faults found;
  if (old.error.empty()) {
    readSettings(old.text, path, found);
  } else {
    found.push_back({path, 1, 1, old.error});
  }
  if (!found.empty()) {
    return {found.front().lineOfText() + ". Nothing was changed. Fix the file first.", {}};
  }
  const auto text = edited(old.text, what);
  if (!text) {
    return {"Cannot change " + printable(path) +
                " without losing something in it. Nothing was changed. Change it by hand.",
            {}};
  }
  if (text->size() > LONGEST_FILE) {
    return {"Cannot write " + printable(path) +
                ": it would be larger than 1 MiB. Nothing was changed. Remove something from it, "
                "and try again.",
            {}};
  }
  return {{}, *text == old.text ? std::nullopt : text};
}

}  // namespace

std::string changeSettings(const std::string& path, const change& what) {
  const plan first = planned(path, path, what);
  if (!first.text) {
    return first.error;
  }
  const auto target = makeFolders(path) ? followed(path) : std::nullopt;
  if (!target || !makeFolders(*target)) {
    return failure(path);
  }
  // The lock is given up when its descriptor is closed, by whatever ends the process.
  const std::string locked = *target + ".lock";
  const descriptor lock(
      open(locked.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, OWNER_ALONE));
  if (!lock.isOpen() || !isLocked(lock)) {
    return failure(locked);
  }
  // Others may have changed the file meanwhile.
  const plan last = planned(path, *target, what);
  return last.text ? replace(*target, *last.text) : last.error;
}

}  // namespace hopopen
