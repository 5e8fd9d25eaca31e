// SPDX-License-Identifier: MIT
// The seam of tests for failing system calls: a replacement is reached under each name that
// the function has in the C library.  Which name is called depends on the compiler and on the
// version of the library, where calls are checked (_FORTIFY_SOURCE).

#include "system_calls.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <string>
#include <vector>

// The names for calls that are checked.
extern "C" {
int __open_2(const char* path, int flags);
ssize_t __read_chk(int descriptor, void* data, std::size_t size, std::size_t room);
ssize_t __readlink_chk(const char* path, char* into, std::size_t size, std::size_t room) noexcept;
void __syslog_chk(int priority, int flag, const char* format, ...);
void __vsyslog_chk(int priority, int flag, const char* format, std::va_list arguments);
}

namespace system_calls_test {

namespace {

TEST(SystemCalls, OpenIsReplacedUnderBothNames) {
  systemCalls::open.replace([](const char*, int, mode_t) {
    errno = ENFILE;
    return -1;
  });
  EXPECT_EQ(-1, open("/dev/null", O_RDONLY));
  EXPECT_EQ(ENFILE, errno);
  errno = 0;
  EXPECT_EQ(-1, __open_2("/dev/null", O_RDONLY));
  EXPECT_EQ(ENFILE, errno);
}

TEST(SystemCalls, ReadIsReplacedUnderBothNames) {
  systemCalls::read.replace(
      [](int, void*, std::size_t size) { return static_cast<ssize_t>(size) + 1000; });
  char data[2] = {};
  EXPECT_EQ(1002, read(-1, data, 2));
  EXPECT_EQ(1001, __read_chk(-1, data, 1, sizeof data));
}

TEST(SystemCalls, ReadlinkIsReplacedUnderBothNames) {
  systemCalls::readlink.replace(
      [](const char*, char*, std::size_t size) { return static_cast<ssize_t>(size) + 1000; });
  char data[2] = {};
  EXPECT_EQ(1002, readlink("nowhere", data, 2));
  EXPECT_EQ(1001, __readlink_chk("nowhere", data, 1, sizeof data));
}

std::vector<std::string> formats;

void logAsList(int priority, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  vsyslog(priority, format, arguments);
  va_end(arguments);
}

void logAsCheckedList(int priority, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  __vsyslog_chk(priority, 1, format, arguments);
  va_end(arguments);
}

TEST(SystemCalls, SyslogIsReplacedUnderItsFourNames) {
  systemCalls::syslog.replace([](int priority, const char* format, std::va_list) {
    formats.push_back(std::to_string(priority) + format);
  });
  syslog(1, "%s", "plain");
  __syslog_chk(2, 1, "%d", 2);
  logAsList(3, "%c", 'l');
  logAsCheckedList(4, "%x", 4U);
  EXPECT_EQ((std::vector<std::string>{"1%s", "2%d", "3%c", "4%x"}), formats);
}

}  // namespace

}  // namespace system_calls_test
