// SPDX-License-Identifier: MIT
// Files as hopopen reads them: definitions and settings.

#include "file.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <string>

#include "system_calls.h"
#include "texts.h"

namespace file_test {

namespace {

using hopopen::fileText;
using hopopen::readFile;

// The results of the calls on the next file.
int statError = 0;
int readError = 0;
int interruptions = 0;

std::string pathOf(const std::string& name) {
  return testing::TempDir() + "file_test_" + std::to_string(getpid()) + "_" + name;
}

// A file that is removed at the end of the test.
class File : public testing::Test {
 protected:
  File() : path(pathOf("file")) {}
  ~File() override { std::remove(path.c_str()); }
  void write(const std::string& text) { writeFile(path, text); }
  const std::string path;
};

int lookAt(int descriptor, struct stat* details) {
  if (statError != 0) {
    errno = statError;
    return -1;
  }
  return systemCalls::fstat.real(descriptor, details);
}

ssize_t readOrNot(int descriptor, void* data, std::size_t size) {
  if (interruptions > 0) {
    interruptions--;
    errno = EINTR;
    return -1;
  }
  if (readError != 0) {
    errno = readError;
    return -1;
  }
  return systemCalls::read.real(descriptor, data, size);
}

const replacedCalls here(__FILE__, [] {
  systemCalls::fstat.replace(lookAt);
  systemCalls::read.replace(readOrNot);
});

}  // namespace

TEST_F(File, IsReadAsItIs) {
  write(std::string("a\r\n\0\xFF\n", 6));
  const fileText result = readFile(path);
  EXPECT_TRUE(result.found);
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.text, std::string("a\r\n\0\xFF\n", 6));
}

TEST_F(File, MayBeEmpty) {
  write("");
  const fileText result = readFile(path);
  EXPECT_TRUE(result.found);
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.text, "");
}

TEST_F(File, MayHaveOneMebibyteAndNotMore) {
  write(std::string(1048576, 'x'));
  EXPECT_EQ(readFile(path).error, "");
  EXPECT_EQ(readFile(path).text, std::string(1048576, 'x'));
  write(std::string(1048577, 'x'));
  EXPECT_EQ(readFile(path).error, "is larger than 1 MiB");
  EXPECT_EQ(readFile(path).text, "");
  EXPECT_TRUE(readFile(path).found);
}

TEST_F(File, IsNoFaultWhenItIsNotThere) {
  const fileText result = readFile(path);
  EXPECT_FALSE(result.found);
  EXPECT_EQ(result.error, "");
}

TEST_F(File, IsNotThereBelowWhatIsNoFolder) {
  write("x");
  EXPECT_FALSE(readFile(path + "/below").found);
  EXPECT_EQ(readFile(path + "/below").error, "");
}

TEST_F(File, IsFollowedThroughALink) {
  ASSERT_EQ(symlink("/etc/hostname", path.c_str()), 0);
  EXPECT_TRUE(readFile(path).found);
  EXPECT_EQ(readFile(path).error, "");
}

TEST_F(File, IsRefusedWhenItsLinkLeadsToItself) {
  ASSERT_EQ(symlink(path.c_str(), path.c_str()), 0);
  EXPECT_TRUE(readFile(path).found);
  EXPECT_EQ(readFile(path).error, "cannot be read: Too many levels of symbolic links");
}

TEST_F(File, IsRefusedWhenItIsAFolder) {
  const fileText result = readFile("/");
  EXPECT_TRUE(result.found);
  EXPECT_EQ(result.error, "is not a file of text");
}

TEST_F(File, IsRefusedWhenItIsAPipeAndNobodyWaits) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  alarm(5);
  EXPECT_EQ(readFile(path).error, "is not a file of text");
  alarm(0);
}

TEST_F(File, IsRefusedWhenItIsADevice) {
  EXPECT_EQ(readFile("/dev/zero").error, "is not a file of text");
}

TEST_F(File, IsRefusedWhenItIsASocket) {
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof address.sun_path);
  std::memcpy(address.sun_path, path.c_str(), path.size());
  ASSERT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  EXPECT_TRUE(readFile(path).found);
  EXPECT_EQ(readFile(path).error, "cannot be read: No such device or address");
  close(descriptor);
}

TEST_F(File, IsReadAllTheSameWhenSignalsInterrupt) {
  write("text");
  interruptions = 3;
  EXPECT_EQ(readFile(path).text, "text");
  EXPECT_EQ(interruptions, 0);
}

TEST_F(File, IsRefusedWhenReadingFails) {
  write("text");
  readError = EIO;
  EXPECT_EQ(readFile(path).error, "cannot be read: Input/output error");
  EXPECT_EQ(readFile(path).text, "");
  readError = 0;
  statError = ENOMEM;
  EXPECT_EQ(readFile(path).error, "cannot be read: Cannot allocate memory");
  statError = 0;
}

TEST_F(File, LeavesNoDescriptorOpen) {
  write("text");
  const int before = dup(0);
  close(before);
  readFile(path);
  readFile("/");
  readError = EIO;
  readFile(path);
  readError = 0;
  const int after = dup(0);
  close(after);
  EXPECT_EQ(after, before);
}

}  // namespace file_test
