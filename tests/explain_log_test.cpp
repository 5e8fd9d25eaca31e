// SPDX-License-Identifier: MIT
// What hopexplain says about a log, compared with the result of opening it.

#include "explain_log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "children.h"
#include "texts.h"
#include "working_folder.h"

namespace explain_log_test {

namespace {

constexpr uid_t nobody = 65534;
constexpr uid_t somebody = 12345;

// A working folder of user `nobody`, if root may give it away.
class Folder : public workingFolder {
 public:
  Folder() : workingFolder(0777) {}
};

void makeFile(const std::string& name, mode_t mode) {
  writeFile(name, "kept");
  ASSERT_EQ(0, chmod(name.c_str(), mode)) << name;
}

void makeFolder(const std::string& name, mode_t mode) {
  ASSERT_TRUE(std::filesystem::create_directory(name));
  ASSERT_EQ(0, chmod(name.c_str(), mode)) << name;
}

void makeSocket(const char* name) {
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, name);
  ASSERT_EQ(0, bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address));
  close(descriptor);
  ASSERT_EQ(0, chmod(name, 0777));
}

void makeFiles() {
  makeFile("file", 0666);
  makeFile("readable", 0444);
  makeFolder("folder", 0777);
  makeFolder("fixed", 0555);
  makeFile("fixed/file", 0666);
  makeFolder("locked", 0600);
  makeFile("locked/file", 0666);
  makeSocket("socket");
  std::filesystem::create_symlink("file", "link");
  std::filesystem::create_symlink("folder/new", "making");
  std::filesystem::create_symlink("fixed/new", "failing");
  std::filesystem::create_symlink("nowhere/new", "dangling");
  std::filesystem::create_symlink("making", "second");
  std::filesystem::create_symlink("loop", "loop");
}

// The output of `body`, run as a user without privileges.
template <class Body>
std::string asNobody(Body body) {
  return runChild([&] {
           if (geteuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0)) {
             return 99;
           }
           std::printf("%s", body().c_str());
           return 0;
         })
      .output;
}

// The error of opening it as the launcher does.  Removes the file if that created it.
std::string opened(const std::string& path) {
  struct stat status = {};
  const bool there = stat(path.c_str(), &status) == 0;
  const int descriptor =
      open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
  if (descriptor < 0) {
    return std::string("cannot be opened: ") + std::strerror(errno);
  }
  close(descriptor);
  if (!there) {
    unlink(std::filesystem::canonical(path).c_str());
  }
  return "";
}

const struct {
  std::string path;
  std::string error;
} cases[] = {
    {"file", ""},
    {"new", ""},
    {"./new", ""},
    {"folder/new", ""},
    {"link", ""},
    {"making", ""},
    {"second", ""},
    {"fixed/file", ""},
    {"/dev/null", ""},
    {"/dev/full", ""},
    {"readable", "Permission denied"},
    {"fixed/new", "Permission denied"},
    {"failing", "Permission denied"},
    {"locked/file", "Permission denied"},
    {"locked/new", "Permission denied"},
    {"folder", "Is a directory"},
    {"folder/", "Is a directory"},
    {"folder/new/", "Is a directory"},
    {".", "Is a directory"},
    {"/", "Is a directory"},
    {"nowhere/new", "No such file or directory"},
    {"nowhere/new/", "No such file or directory"},
    {"dangling", "No such file or directory"},
    {"/dev/fd/77", "No such file or directory"},
    {"/proc/self/fd/77", "No such file or directory"},
    {"file/new", "Not a directory"},
    {"file/", "Is a directory"},
    {"loop", "Too many levels of symbolic links"},
    {"loop/new", "Too many levels of symbolic links"},
    {"socket", "No such device or address"},
    {std::string(256, 'x'), "File name too long"},
    {"folder/" + std::string(256, 'x'), "File name too long"},
    {std::string(4096, '/'), "File name too long"},
};

TEST(LogFault, IsWhyTheLogCannotBeOpened) {
  const Folder folder;
  makeFiles();
  for (const auto& one : cases) {
    SCOPED_TRACE(one.path.substr(0, 40));
    const std::string expected = one.error.empty() ? "" : "cannot be opened: " + one.error;
    EXPECT_EQ(asNobody([&] { return logFault(one.path); }), expected);
    EXPECT_EQ(asNobody([&] { return opened(one.path); }), expected);
  }
  EXPECT_EQ(logFault(""), "");
}

TEST(LogFault, MakesNothingAndLeavesFilesAlone) {
  const Folder folder;
  makeFiles();
  const auto all = [] {
    std::string result;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(".")) {
      result += entry.path().string() + "\n";
    }
    return result;
  };
  const std::string before = all();
  for (const auto& one : cases) {
    logFault(one.path);
  }
  EXPECT_EQ(all(), before);
  EXPECT_EQ(std::filesystem::file_size("file"), 4U);
}

TEST(LogFault, IsThatOfAPipe) {
  const Folder folder;
  ASSERT_EQ(0, mkfifo("fifo", 0666));
  ASSERT_EQ(0, chmod("fifo", 0666));
  const std::string lines = "is a pipe: lines are lost while nobody reads it or it is full";
  EXPECT_EQ(logFault("fifo"), lines);
  const int reader = open("fifo", O_RDONLY | O_NONBLOCK);
  EXPECT_EQ(logFault("fifo"), lines);
  close(reader);
  int ends[2];
  ASSERT_EQ(0, pipe(ends));
  EXPECT_EQ(logFault("/dev/fd/" + std::to_string(ends[1])), lines);
  ASSERT_EQ(0, chmod("fifo", 0444));
  EXPECT_EQ(asNobody([] { return logFault("fifo"); }), "cannot be opened: Permission denied");
}

TEST(LogFault, IsThatOfASocketBehindADescriptor) {
  int ends[2];
  ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, ends));
  const std::string path = "/dev/fd/" + std::to_string(ends[0]);
  EXPECT_EQ(logFault(path), "cannot be opened: No such device or address");
  EXPECT_EQ(opened(path), "cannot be opened: No such device or address");
}

TEST(LogFault, IsThatOfAnotherUsersFileInASharedFolder) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root may give files away";
  }
  int level = 0;
  std::ifstream("/proc/sys/fs/protected_regular") >> level;
  if (level == 0) {
    GTEST_SKIP() << "Linux does not protect such files here";
  }
  const Folder folder;
  makeFolder("shared", 01777);
  makeFile("shared/file", 0666);
  ASSERT_EQ(0, chown("shared/file", somebody, somebody));
  EXPECT_EQ(logFault("shared/file"), "cannot be opened: Permission denied");
  EXPECT_EQ(opened("shared/file"), "cannot be opened: Permission denied");
  // The folder without the bit that makes it shared, and a file of the folder's own user.
  ASSERT_EQ(0, chmod("shared", 0777));
  EXPECT_EQ(logFault("shared/file"), "");
  EXPECT_EQ(opened("shared/file"), "");
  ASSERT_EQ(0, chmod("shared", 01777));
  ASSERT_EQ(0, chown("shared", somebody, somebody));
  EXPECT_EQ(logFault("shared/file"), "");
  EXPECT_EQ(opened("shared/file"), "");
  ASSERT_EQ(0, chown("shared/file", 0, 0));
  EXPECT_EQ(logFault("shared/file"), "");
  EXPECT_EQ(opened("shared/file"), "");
}

// The kernel's setting decides.  Here a file replaces it.
TEST(LogFault, DependsOnWhichFilesOfOthersLinuxProtects) {
  const Folder folder;
  makeFolder("shared", 01777);
  makeFolder("group", 01770);
  for (const char* const name : {"shared/file", "group/file"}) {
    makeFile(name, 0666);
    if (chown(name, somebody, somebody) != 0) {
      GTEST_SKIP() << "only root may give files away";
    }
  }
  const auto faults = [](const char* level) {
    return runChild([level] {
      std::ofstream("level") << level << std::endl;
      if (unshare(CLONE_NEWNS) != 0 ||
          mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
          mount("level", "/proc/sys/fs/protected_regular", nullptr, MS_BIND, nullptr) != 0) {
        return 77;
      }
      std::printf("%s|%s", logFault("shared/file").c_str(), logFault("group/file").c_str());
      return 0;
    });
  };
  if (faults("0").ending == "exit 77") {
    GTEST_SKIP() << "nothing can be mounted here";
  }
  const std::string denied = "cannot be opened: Permission denied";
  EXPECT_EQ("|", faults("0").output);
  EXPECT_EQ("|", faults("").output) << "no number is none";
  EXPECT_EQ(denied + "|", faults("1").output);
  EXPECT_EQ(denied + "|" + denied, faults("2").output);
}

}  // namespace

}  // namespace explain_log_test
