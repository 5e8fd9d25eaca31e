// Catches what is written to standard error, in this process or in a child.
#pragma once

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "threading.h"

/// How a child process ended, and all that it wrote to standard error.
struct childEnd {
  int status;
  std::string errors;

  /// "exit 0", "signal 6" and the like.
  std::string ending() const {
    if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
    return "exit " + std::to_string(WEXITSTATUS(status));
  }
};

/// Runs `body` in a child, which ends with status 0 when `body` returns.
template <class Body>
childEnd runInChild(Body body) {
  semaphoreSet(false);  // so that the set is this process's to remove
  std::fflush(nullptr);
  int ends[2];
  if (pipe(ends) != 0) return {-1, "pipe() failed"};
  const pid_t child = fork();
  if (child < 0) {
    close(ends[0]);
    close(ends[1]);
    return {-1, "fork() failed"};
  }
  if (child == 0) {
    const rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    close(ends[1]);
    body();
    std::_Exit(0);
  }
  close(ends[1]);
  childEnd result = {-1, ""};
  char buffer[4096];
  for (;;) {
    const ssize_t count = read(ends[0], buffer, sizeof buffer);
    if (count <= 0) break;
    result.errors.append(buffer, static_cast<std::size_t>(count));
  }
  close(ends[0]);
  waitpid(child, &result.status, 0);
  return result;
}

/// Catches standard error from its construction to its destruction.
class capturedErrors {
 public:
  capturedErrors() : m_file(std::tmpfile()), m_saved(dup(STDERR_FILENO)) {
    std::fflush(stderr);
    dup2(fileno(m_file), STDERR_FILENO);
  }
  ~capturedErrors() {
    dup2(m_saved, STDERR_FILENO);
    close(m_saved);
    std::fclose(m_file);
  }
  capturedErrors(const capturedErrors&) = delete;
  capturedErrors& operator=(const capturedErrors&) = delete;

  /// All that was written so far.
  std::string str() const {
    std::string result(size(), '\0');
    const ssize_t count = pread(fileno(m_file), result.data(), result.size(), 0);
    result.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return result;
  }

  /// How many bytes were written so far.
  std::size_t size() const {
    struct stat details;
    if (fstat(fileno(m_file), &details) != 0) return 0;
    return static_cast<std::size_t>(details.st_size);
  }

 private:
  std::FILE* m_file;
  int m_saved;
};
