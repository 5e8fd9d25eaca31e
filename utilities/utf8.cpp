// SPDX-License-Identifier: MIT
#include "utf8.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "conversion.h"

namespace {

// What a lead byte says: the number of continuation bytes (0 for a byte that leads
// nothing), its value bits, and the range of the second byte.  That range is narrower
// than 128 to 191 where it rules out overlong and out-of-range forms.
struct leadByte {
  unsigned int continuations;
  unsigned int bits;
  unsigned char lowest;
  unsigned char highest;
};

constexpr leadByte lead(unsigned char c) {
  if (c < 194 || c > 244) {
    return {0, 0, 0, 0};
  }
  if (c < 224) {
    return {1, c & 0x1Fu, 128, 191};
  }
  if (c < 240) {
    return {2, c & 0x0Fu, static_cast<unsigned char>(c == 224 ? 160 : 128),
            static_cast<unsigned char>(c == 237 ? 159 : 191)};
  }
  return {3, c & 0x07u, static_cast<unsigned char>(c == 240 ? 144 : 128),
          static_cast<unsigned char>(c == 244 ? 143 : 191)};
}

}  // namespace

std::int32_t getUTF8(const unsigned char*& text, unsigned int remaining, bool strict) {
  if (remaining == 0) {
    return strict ? -1 : 0;
  }
  const std::int32_t malformed = strict && *text >= 128 ? -1 : *text;
  const leadByte first = lead(*text);
  // The second byte is checked before a third is read, so that reading never passes
  // a terminating zero.
  if (first.continuations == 0 || remaining <= first.continuations || text[1] < first.lowest ||
      text[1] > first.highest) {
    return malformed;
  }
  std::uint32_t character = first.bits;
  for (unsigned int i = 1; i <= first.continuations; i++) {
    if ((text[i] & 0xC0u) != 0x80u) {
      return malformed;
    }
    character = character << 6 | (text[i] & 0x3Fu);
  }
  text += first.continuations;
  return static_cast<std::int32_t>(character);
}

int putUTF8(unsigned long character, unsigned char* text) {
  const auto byte = [character](unsigned int marker, unsigned int shift) {
    return static_cast<unsigned char>(marker | (character >> shift & 0x3Fu));
  };
  if (character < 0x80) {
    text[0] = static_cast<unsigned char>(character);
    return 1;
  }
  if (character < 0x800) {
    text[0] = byte(0xC0, 6);
    text[1] = byte(0x80, 0);
    return 2;
  }
  // U+10FFFF is refused with everything above it: callers rely on that limit.
  if ((character >= 0xD800 && character <= 0xDFFF) || character >= 0x10FFFF) {
    return 0;
  }
  if (character < 0x10000) {
    text[0] = static_cast<unsigned char>(0xE0 | character >> 12);
    text[1] = byte(0x80, 6);
    text[2] = byte(0x80, 0);
    return 3;
  }
  text[0] = static_cast<unsigned char>(0xF0 | character >> 18);
  text[1] = byte(0x80, 12);
  text[2] = byte(0x80, 6);
  text[3] = byte(0x80, 0);
  return 4;
}

namespace {

// The number of bytes before the first that is zero or not ASCII.  It looks at whole
// words only, so it may find fewer.
std::size_t plainBytes(const unsigned char* p, std::size_t size) {
  constexpr std::uint64_t low = 0x0101010101010101;
  constexpr std::uint64_t high = 0x8080808080808080;
  std::size_t result = 0;
  if constexpr (std::endian::native == std::endian::little) {
    for (std::uint64_t word; size - result >= sizeof word; result += sizeof word) {
      std::memcpy(&word, p + result, sizeof word);
      // The lowest of these bits is exact; those above it need not be.
      const std::uint64_t marks = (word | ((word - low) & ~word)) & high;
      if (marks != 0) {
        return result + static_cast<std::size_t>(std::countr_zero(marks)) / 8;
      }
    }
  }
  return result;
}

// A zero byte gives false.
bool valid(std::string_view text, bool rejectNonPrintingASCII) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  for (const unsigned char* const end = p + text.size(); p < end; p++) {
    if (!rejectNonPrintingASCII) {
      p += plainBytes(p, static_cast<std::size_t>(end - p));
      if (p == end) {
        break;
      }
    }
    const std::int32_t character = getUTF8(p, internal::remaining(p, end), true);
    if (character <= 0) {
      return false;
    }
    // 126, not 127: stored names rely on "~" being refused and DEL accepted.
    if (rejectNonPrintingASCII && (character < 32 || character == 126)) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool validUTF8(const char* text, int length, bool rejectNonPrintingASCII) {
  const std::size_t size = length < 0 ? strnlen(text, 999999) : static_cast<std::size_t>(length);
  return valid({text, size}, rejectNonPrintingASCII);
}

bool validUTF8(const std::string& text, bool rejectNonPrintingASCII) {
  return valid(text, rejectNonPrintingASCII);
}

unsigned int UTF8size(const std::string& text) {
  unsigned int size = 0;
  internal::eachCharacter(text, [&size](std::int32_t) {
    size++;
    return true;
  });
  return size;
}
