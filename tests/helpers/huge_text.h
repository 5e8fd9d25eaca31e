// SPDX-License-Identifier: MIT
// Texts of several gigabytes, made of one small file that is mapped many times.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>

/// A C string of `size` times `fill`, followed by `tail`.
class hugeText {
 public:
  hugeText(std::uint64_t size, char fill, const std::string& tail = "") {
    m_room = (size + tail.size() + 1 + PIECE - 1) / PIECE * PIECE;
    void* const room =
        mmap(nullptr, m_room, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    const int file = memfd_create("piece", MFD_CLOEXEC);
    if (room == MAP_FAILED || file < 0 || ftruncate(file, PIECE) != 0) {
      return;
    }
    m_text = static_cast<char*>(room);
    // The tail is written into the last piece, and into the one before it if it reaches there.
    for (std::uint64_t offset = 0; offset < m_room; offset += PIECE) {
      const bool end = offset + 2 * PIECE > size;
      const int flags = end ? MAP_PRIVATE : MAP_SHARED;
      if (mmap(m_text + offset, PIECE, PROT_READ | PROT_WRITE, flags | MAP_FIXED, file, 0) ==
          MAP_FAILED) {
        m_text = nullptr;
        break;
      }
      if (offset == 0) {
        std::memset(m_text, fill, PIECE);
      }
    }
    close(file);
    if (m_text != nullptr) {
      std::memcpy(m_text + size, tail.c_str(), tail.size() + 1);
    }
  }
  hugeText(const hugeText&) = delete;
  hugeText& operator=(const hugeText&) = delete;
  ~hugeText() {
    if (m_text != nullptr) {
      munmap(m_text, m_room);
    }
  }

  /// Null if the machine could not map the text.
  char* text() { return m_text; }

 private:
  static constexpr std::uint64_t PIECE = std::uint64_t{16} << 20;

  std::uint64_t m_room;
  char* m_text = nullptr;
};

/// The memory that is free, in gigabytes.
inline std::uint64_t freeGigabytes() {
  std::ifstream file("/proc/meminfo");
  for (std::string name; file >> name;) {
    std::uint64_t kilobytes = 0;
    if (name == "MemAvailable:" && file >> kilobytes) {
      return kilobytes >> 20;
    }
  }
  return 0;
}

/// Skips the test on a machine without that much memory.
#define NEEDS_GIGABYTES(number)                                    \
  if (freeGigabytes() < (number)) {                                \
    GTEST_SKIP() << "this needs " << (number) << " GiB of memory"; \
  } else                                                           \
    static_cast<void>(0)
