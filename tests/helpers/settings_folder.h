// SPDX-License-Identifier: MIT
// A folder for settings files, and a plan for the system calls on them.  A test can make
// each call fail, and each can be the last one before the process is killed.  For
// programs that say WRAPS.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "children.h"
#include "settings_file.h"
#include "system_calls.h"
#include "texts.h"

namespace settingsFolder {

using hopopen::change;
using hopopen::changeSettings;

// What happens to the system calls.
struct Plan {
  bool active = false;
  std::string calls = {};   // the names of the calls so far
  int count = 0;            // how many
  int killBefore = 0;       // the number of the call that is not reached
  int killAfter = 0;        // the number of the last call
  int failing = 0;          // the number of the call that fails
  std::string failed = {};  // or its name
  int skipped = 0;          // this many calls of that name work first
  int error = 0;
  int interruptions = 0;       // how many calls of `flock` and `write` are interrupted
  std::size_t portion = 4096;  // the most that one `write` writes
};

inline Plan plan;

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

// Counts the calls, which may fail with -1.
template <auto& CALL, class Result, class... Arguments>
void count(const systemCall<Result(Arguments...)>&) {
  CALL.replace([](Arguments... arguments) -> Result {
    return done<Result>(fails(CALL.name) ? -1 : CALL.real(arguments...));
  });
}

template <auto&... CALLS>
void countAll() {
  (count<CALLS>(CALLS), ...);
}

// A descriptor is closed also when that fails.
inline int closeOrNot(int descriptor) {
  const bool failing = fails("close");
  const int error = errno;
  const int result = systemCalls::close.real(descriptor);
  if (failing) {
    errno = error;
  }
  return done(failing ? -1 : result);
}

inline ssize_t writeOrNot(int descriptor, const void* data, std::size_t size) {
  if (fails("write")) {
    return done<ssize_t>(-1);
  }
  return done(
      systemCalls::write.real(descriptor, data, plan.active ? std::min(size, plan.portion) : size));
}

inline void countCalls() {
  countAll<systemCalls::mkdir, systemCalls::open, systemCalls::flock, systemCalls::read,
           systemCalls::fsync, systemCalls::fchmod, systemCalls::rename, systemCalls::unlink,
           systemCalls::stat, systemCalls::lstat, systemCalls::fstat, systemCalls::readlink>();
  systemCalls::close.replace(closeOrNot);
  systemCalls::write.replace(writeOrNot);
}

using texts = std::set<std::string>;

// Each test has its own folder, and a mask that removes no permissions.
class SettingsFile : public testing::Test {
 protected:
  SettingsFile()
      : folder(testing::TempDir() + "settings_file_test_" + std::to_string(getpid())),
        file(folder + "/hopopen.toml"),
        mask(umask(0)) {
    std::filesystem::create_directory(folder);
    countCalls();
  }
  ~SettingsFile() override {
    plan = Plan();
    umask(mask);
    std::filesystem::remove_all(folder);
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
    EXPECT_EQ(systemCalls::lstat.real(path.c_str(), &details), 0) << path;
    return details.st_mode & 07777U;
  }
  // Changes the file according to the plan.
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

inline constexpr const char* OLD = "# mine\n[use]\nvnc = \"a\"\n";
inline constexpr const char* NEW = "# mine\n[use]\nvnc = \"b\"\n";

}  // namespace settingsFolder
