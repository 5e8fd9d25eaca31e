// A folder for settings files, and what becomes of the system calls on them: each can be
// made to fail, and each can be the last one before the process is killed.  An executable
// that includes this wraps these calls.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "settings_file.h"

namespace {

using hopopen::change;
using hopopen::changeSettings;

// What becomes of the system calls.
struct Plan {
  bool active = false;
  std::string calls = {};   // the names of those that were made
  int count = 0;            // how many
  int killBefore = 0;       // the number of the call that is not reached
  int killAfter = 0;        // the number of the last call
  int failing = 0;          // the number of the call that fails
  std::string failed = {};  // or its name
  int skipped = 0;          // so many calls of that name are made first
  int error = 0;
  int interruptions = 0;       // so many calls of `flock` and of `write` are interrupted
  std::size_t portion = 4096;  // no `write` takes more
};

Plan plan;

// True when the call is to fail.
inline bool fails(const std::string& name) {
  if (!plan.active) {
    return false;
  }
  plan.calls += name + " ";
  plan.count++;
  if (plan.count == plan.killBefore) {
    kill(getpid(), SIGKILL);
  }
  const bool named = name == plan.failed && plan.skipped-- == 0;
  if (named || plan.count == plan.failing) {
    errno = plan.error;
    return true;
  }
  if (plan.interruptions > 0 && (name == "flock" || name == "write")) {
    plan.interruptions--;
    errno = EINTR;
    return true;
  }
  return false;
}

template <class Result>
Result done(Result result) {
  if (plan.active && plan.count == plan.killAfter) {
    kill(getpid(), SIGKILL);
  }
  return result;
}

}  // namespace

// A call that is counted, and may fail with -1.
#define WRAP(result, name, parameters, arguments)             \
  extern "C" result __real_##name parameters;                 \
  extern "C" result __wrap_##name parameters;                 \
  extern "C" result __wrap_##name parameters {                \
    return done(fails(#name) ? -1 : __real_##name arguments); \
  }

WRAP(int, mkdir, (const char* path, mode_t mode), (path, mode))
WRAP(int, flock, (int descriptor, int what), (descriptor, what))
WRAP(ssize_t, read, (int descriptor, void* data, std::size_t size), (descriptor, data, size))
WRAP(int, fsync, (int descriptor), (descriptor))
WRAP(int, fchmod, (int descriptor, mode_t mode), (descriptor, mode))
WRAP(int, rename, (const char* from, const char* to), (from, to))
WRAP(int, unlink, (const char* path), (path))
WRAP(int, stat, (const char* path, struct stat* details), (path, details))
WRAP(int, lstat, (const char* path, struct stat* details), (path, details))
WRAP(int, fstat, (int descriptor, struct stat* details), (descriptor, details))
WRAP(ssize_t, readlink, (const char* path, char* into, std::size_t size), (path, into, size))

extern "C" {

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...);
int __real_close(int descriptor);
int __wrap_close(int descriptor);
ssize_t __real_write(int descriptor, const void* data, std::size_t size);
ssize_t __wrap_write(int descriptor, const void* data, std::size_t size);

int __wrap_open(const char* path, int flags, ...) {
  mode_t mode = 0;
  if ((flags & O_CREAT) != 0) {
    std::va_list more;
    va_start(more, flags);
    mode = va_arg(more, mode_t);
    va_end(more);
  }
  return done(fails("open") ? -1 : __real_open(path, flags, mode));
}

// A descriptor is closed also when that fails.
int __wrap_close(int descriptor) {
  const bool failing = fails("close");
  const int error = errno;
  const int result = __real_close(descriptor);
  if (failing) {
    errno = error;
  }
  return done(failing ? -1 : result);
}

ssize_t __wrap_write(int descriptor, const void* data, std::size_t size) {
  if (fails("write")) {
    return done<ssize_t>(-1);
  }
  return done(__real_write(descriptor, data, plan.active ? std::min(size, plan.portion) : size));
}
}

namespace {

using texts = std::set<std::string>;

// A folder of its own for each test, with a mask that takes nothing away.
class SettingsFile : public testing::Test {
 protected:
  SettingsFile()
      : folder(testing::TempDir() + "settings_file_test_" + std::to_string(getpid())),
        file(folder + "/hopopen.toml"),
        mask(umask(0)) {
    std::filesystem::create_directory(folder);
  }
  ~SettingsFile() override {
    plan = Plan();
    umask(mask);
    std::filesystem::remove_all(folder);
  }

  static void write(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
  }
  static std::string textOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }
  texts names() const {
    texts result;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      result.insert(entry.path().lexically_relative(folder).string());
    }
    return result;
  }
  static unsigned modeOf(const std::string& path) {
    struct stat details = {};
    EXPECT_EQ(__real_lstat(path.c_str(), &details), 0) << path;
    return details.st_mode & 07777U;
  }
  // Changes the file with the plan as it is.
  std::string changed(const change& what) {
    plan.active = true;
    std::string result = changeSettings(file, what);
    plan.active = false;
    return result;
  }

  const std::string folder;
  const std::string file;

 private:
  const mode_t mask;
};

inline change use(const std::string& scheme, const std::string& viewer) {
  change result;
  result.use[scheme] = viewer;
  return result;
}

inline change trust(const std::string& host) {
  change result;
  result.trust.push_back(hopopen::readTrusted(host).value());
  return result;
}

// Runs `body` in a child; how that ended, as `waitpid` says it.
template <class Body>
int inChild(Body body) {
  const pid_t child = fork();
  if (child == 0) {
    body();
    _exit(0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

constexpr const char* OLD = "# mine\n[use]\nvnc = \"a\"\n";
constexpr const char* NEW = "# mine\n[use]\nvnc = \"b\"\n";

}  // namespace
