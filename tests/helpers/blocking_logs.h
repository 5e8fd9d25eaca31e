// SPDX-License-Identifier: MIT
// Logs that would make a writer wait, in a folder or passed as a descriptor.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string>

/// Ends a child that waits for a log by SIGALRM, which is status 1014 of an outcome.
inline void limitTheWait() {
  alarm(30);
}

/// A pipe whose reading end the test keeps.
class watchedPipe {
 public:
  /// A pipe with room for `room` bytes and no more.
  explicit watchedPipe(std::size_t room) {
    if (pipe2(m_ends.data(), O_CLOEXEC) != 0) {
      ADD_FAILURE() << "no pipe";
      return;
    }
    const int size = fcntl(m_ends[1], F_SETPIPE_SZ, 4096);
    EXPECT_EQ(4096, size);
    m_filling.assign(static_cast<std::size_t>(size) - room, '.');
    EXPECT_EQ(static_cast<ssize_t>(m_filling.size()),
              write(m_ends[1], m_filling.data(), m_filling.size()));
  }
  watchedPipe(const watchedPipe&) = delete;
  watchedPipe& operator=(const watchedPipe&) = delete;
  ~watchedPipe() {
    close(m_ends[0]);
    close(m_ends[1]);
  }

  /// In a child: passes the writing end to the next program as descriptor `number`.
  void pass(int number) const {
    if (dup2(m_ends[1], number) != number) {
      _exit(124);
    }
  }

  /// The text that was written after the filling.
  std::string written() const {
    std::string result(8192, '\0');
    fcntl(m_ends[0], F_SETFL, O_NONBLOCK);
    const ssize_t got = read(m_ends[0], result.data(), result.size());
    result.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    EXPECT_EQ(m_filling, result.substr(0, m_filling.size()));
    return result.substr(std::min(m_filling.size(), result.size()));
  }

  /// Whether other holders of the writing end still wait, as before.
  bool stillBlocks() const { return (fcntl(m_ends[1], F_GETFL) & O_NONBLOCK) == 0; }

 private:
  std::array<int, 2> m_ends{-1, -1};
  std::string m_filling;
};

/// A named pipe that somebody reads.
class readPipe {
 public:
  explicit readPipe(const std::filesystem::path& name) {
    EXPECT_EQ(0, mkfifo(name.c_str(), 0600));
    m_end = open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_GE(m_end, 0);
  }
  readPipe(const readPipe&) = delete;
  readPipe& operator=(const readPipe&) = delete;
  ~readPipe() { close(m_end); }

  std::string written() const {
    std::string result(8192, '\0');
    const ssize_t got = read(m_end, result.data(), result.size());
    result.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return result;
  }

 private:
  int m_end = -1;
};

/// A terminal whose output is stopped.
class stoppedTerminal {
 public:
  stoppedTerminal() {
    std::array<char, 100> name{};
    if (openpty(&m_screen, &m_terminal, name.data(), nullptr, nullptr) != 0) {
      ADD_FAILURE() << "no terminal";
      return;
    }
    m_name = name.data();
    EXPECT_EQ(0, tcflow(m_terminal, TCOOFF));
  }
  stoppedTerminal(const stoppedTerminal&) = delete;
  stoppedTerminal& operator=(const stoppedTerminal&) = delete;
  ~stoppedTerminal() {
    close(m_terminal);
    close(m_screen);
  }

  const std::string& name() const { return m_name; }

 private:
  int m_screen = -1;
  int m_terminal = -1;
  std::string m_name;
};
