// SPDX-License-Identifier: MIT
// Reports of failed system calls.

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

#include "events.h"
#include "reports.h"
#include "system_calls.h"

namespace OSevent_test {

namespace {

// The answer that a test gives to the C library's reentrant error-message routine.
enum class answer { real, null, allOnes, text };
answer theAnswer = answer::real;
const char* theText = "";
std::size_t theSize = 0;

char* answered(int code, char* buffer, std::size_t size) {
  theSize = size;
  switch (theAnswer) {
    case answer::null:
      std::strncpy(buffer, theText, size - 1);
      buffer[size - 1] = '\0';
      return nullptr;
    case answer::allOnes:
      return reinterpret_cast<char*>(~std::uintptr_t{0});
    case answer::text:
      return const_cast<char*>(theText);
    case answer::real:
      break;
  }
  return systemCalls::strerror_r.real(code, buffer, size);
}

const replacedCalls here(__FILE__, [] { systemCalls::strerror_r.replace(answered); });

std::string textOf(int code) {
  return OSevent(SUCCESS, AUD_NULL, 0, "", "").codeToText(code);
}

TEST(OSevent, ShowsTheTextOfTheErrorNumber) {
  const struct {
    int code;
    const char* expected;
  } cases[] = {
      {0, "Success"},
      {EPERM, "Operation not permitted"},
      {ENOENT, "No such file or directory"},
      {EINTR, "Interrupted system call"},
      {E2BIG, "Argument list too long"},
      {ENOEXEC, "Exec format error"},
      {ECHILD, "No child processes"},
      {ENOMEM, "Cannot allocate memory"},
      {EACCES, "Permission denied"},
      {EISDIR, "Is a directory"},
      {ENOSPC, "No space left on device"},
  };
  for (const auto& c : cases) EXPECT_EQ(textOf(c.code), c.expected) << "error " << c.code;
}

TEST(OSevent, SaysOfEveryErrorNumberWhatTheCLibrarySays) {
  for (int code = 0; code <= 140; code++)
    EXPECT_EQ(textOf(code), std::string(std::strerror(code))) << "error " << code;
  for (const int code : {12345, 41, 58, -1, INT_MAX, INT_MIN})
    EXPECT_EQ(textOf(code), std::string(std::strerror(code))) << "error " << code;
}

TEST(OSevent, KeepsAnUnknownErrorThatCarriesItsNumber) {
  EXPECT_EQ(textOf(12345), "Unknown error 12345");
  EXPECT_EQ(textOf(41), "Unknown error 41");
}

TEST(OSevent, OffersABufferOf256Bytes) {
  textOf(ENOENT);
  EXPECT_EQ(theSize, 256u);
}

TEST(OSevent, TakesTheTextFromTheBufferWhenNoneIsReturned) {
  theAnswer = answer::null;
  theText = "left in the buffer";
  EXPECT_EQ(textOf(5), "left in the buffer");
  theText = "";
  EXPECT_EQ(textOf(5), "");
  theAnswer = answer::real;
}

TEST(OSevent, ShowsTheNumberWhenTheRoutineFails) {
  theAnswer = answer::allOnes;
  EXPECT_EQ(textOf(5), "5");
  EXPECT_EQ(textOf(-7), "-7");
  EXPECT_EQ(textOf(INT_MIN), "-2147483648");
  theAnswer = answer::real;
}

TEST(OSevent, ShowsTheNumberInsteadOfUnknownError) {
  const struct {
    const char* answered;
    const char* expected;
  } cases[] = {
      {"Unknown error", "4711"},
      {"Unknown error 4711", "Unknown error 4711"},
      {"Unknown error ", "Unknown error "},
      {"Unknown errors", "Unknown errors"},
      {"Unknown erro", "Unknown erro"},
      {"unknown error", "unknown error"},
      {" Unknown error", " Unknown error"},
      {"Out of luck", "Out of luck"},
      {"", ""},
  };
  theAnswer = answer::text;
  for (const auto& c : cases) {
    theText = c.answered;
    EXPECT_EQ(textOf(4711), c.expected) << "for the answer \"" << c.answered << "\"";
  }
  theAnswer = answer::real;
}

TEST(OSevent, TakesTheTextFromTheBufferAsItIs) {
  theAnswer = answer::null;
  theText = "Unknown error";
  EXPECT_EQ(textOf(4711), "Unknown error");
  theAnswer = answer::real;
}

TEST(OSevent, IsReportedWithItsFields) {
  reportCatcher probe(5);
  OSevent(WARNING, AUD_SYSM, ENOENT, "open()", "file::open");
  ASSERT_EQ(probe.seen.size(), 1u);
  EXPECT_EQ(probe.seen[0].written,
            "Warning: O/S/No such file or directory \"open()\" | file::open");
  EXPECT_EQ(probe.seen[0].domain, "O/S");
  EXPECT_EQ(probe.seen[0].severity, WARNING);
  EXPECT_EQ(probe.seen[0].audience, AUD_SYSM);
  EXPECT_EQ(probe.seen[0].code, ENOENT);
  EXPECT_EQ(probe.seen[0].qualifier, "open()");
  EXPECT_EQ(probe.seen[0].operation, "file::open");
}

TEST(OSevent, TakesTheCurrentErrorNumberAsItsCode) {
  reportCatcher probe(5);
  const struct {
    int code;
    const char* expected;
  } cases[] = {
      {EACCES, "Failure: O/S/Permission denied \"fork()\" | Thread::newProcess()"},
      {ENOSPC, "Failure: O/S/No space left on device \"fork()\" | Thread::newProcess()"},
      {0, "Failure: O/S/Success \"fork()\" | Thread::newProcess()"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    probe.seen.clear();
    errno = c.code;
    OSevent(FAILURE, AUD_ALL, "fork()", "Thread::newProcess()");
    ASSERT_EQ(probe.seen.size(), 1u);
    EXPECT_EQ(probe.seen[0].code, c.code);
    EXPECT_EQ(probe.seen[0].written, c.expected);
  }
}

TEST(OSevent, TakesTheErrorNumberEvenAsTheFirstReportOfTheProcess) {
  // The constructor asks for the storing handler; that must not spoil `errno`.
  errno = EXDEV;
  OSevent event(FAILURE, AUD_NULL, "rename()", "move");
  EXPECT_EQ(event.code(), EXDEV);
  errno = EPIPE;
  EXPECT_EQ(OSevent(FAILURE, AUD_NULL, "", "").code(), EPIPE) << "whatever it says otherwise";
}

}  // namespace

}  // namespace OSevent_test
