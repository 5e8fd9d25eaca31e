// UTF-8 and the character sets that a text may be restricted to.

#include "conversion.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace {

constexpr unsigned int NO_CHARACTER = 255;  // in charactersCP437

// What a lead byte announces: the number of continuation bytes (0 for a byte that
// leads nothing), its value bits, and the range of the second byte, which is
// narrower than 128 to 191 where it rules out overlong and out-of-range forms.
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

// The number of bytes that a character at `p` can have.
unsigned int remaining(const unsigned char* p, const unsigned char* end) {
  return static_cast<unsigned int>(std::min<std::ptrdiff_t>(end - p, 4));
}

// Calls `use` with each code point of a text, malformed bytes standing for
// themselves, until it returns false.
template <class Use>
bool eachCharacter(const std::string& text, const Use& use) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* const end = p + text.size();
  for (; p < end; p++) {
    if (!use(getUTF8(p, remaining(p, end), false))) {
      return false;
    }
  }
  return true;
}

void appendUTF8(std::string& out, std::int32_t character) {
  unsigned char encoded[4];
  const int size = putUTF8(static_cast<unsigned long>(character), encoded);
  out.append(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(size));
}

bool inSet(std::int32_t character, characterSet set) {
  switch (set) {
    case CS_ASCII:
      return character < 128;
    case CS_PRINT_ASCII:
      return character >= 32 && character <= 126;
    case CS_CP437:
    case CS_CP437UTF:
      return character < 128 ||
             (character < 256 &&
              charactersCP437[static_cast<std::size_t>(character - 128)] != NO_CHARACTER);
    case CS_UTF8:
      return true;
    case CS_INVALID:
      break;
  }
  return false;
}

// The code page 437 byte of a code point beyond ASCII.  Whatever lies beyond
// Latin-1 is shown as the last character of the table.
std::int32_t toCP437(std::int32_t character) {
  const std::int32_t index = std::min(character - 128, 127);
  return static_cast<std::int32_t>(charactersCP437[static_cast<std::size_t>(index)]);
}

}  // namespace

std::int32_t getUTF8(const unsigned char*& text, unsigned int remaining, bool strict) {
  if (remaining == 0) {
    return strict ? -1 : 0;
  }
  const std::int32_t malformed = strict && *text >= 128 ? -1 : *text;
  const leadByte first = lead(*text);
  // The second byte is looked at before a third is known to be there, so that a
  // terminating zero is never passed.
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

// The number of bytes before the first that is zero or not ASCII; looks at whole words
// only, so it may find fewer.
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

}  // namespace

namespace {

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
    const std::int32_t character = getUTF8(p, remaining(p, end), true);
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
  eachCharacter(text, [&size](std::int32_t) {
    size++;
    return true;
  });
  return size;
}

// The published correspondence of printable characters: the pictures that some
// displays show for control codes are no part of it.
constexpr std::array<unsigned int, 128> charactersCP437 = {
    255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255,  // U+0080
    255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255,  // U+0090
    255, 173, 155, 156, 255, 157, 255, 255, 255, 255, 166, 174, 170, 255, 255, 255,  // U+00A0
    248, 241, 253, 255, 255, 230, 255, 250, 255, 255, 167, 175, 172, 171, 255, 168,  // U+00B0
    255, 255, 255, 255, 142, 143, 146, 128, 255, 144, 255, 255, 255, 255, 255, 255,  // U+00C0
    255, 165, 255, 255, 255, 255, 153, 255, 255, 255, 255, 255, 154, 255, 255, 225,  // U+00D0
    133, 160, 131, 255, 132, 134, 145, 135, 138, 130, 136, 137, 141, 161, 140, 139,  // U+00E0
    255, 164, 149, 162, 147, 255, 148, 246, 255, 151, 163, 150, 129, 255, 255, 152,  // U+00F0
};

bool CSvalid(const std::string& text, characterSet set) {
  return eachCharacter(text, [set](std::int32_t character) { return inSet(character, set); });
}

std::string convertCStoUTF8(const std::string& text, characterSet set) {
  std::string result;
  result.reserve(text.size());
  const auto convert = [&result, set](std::int32_t character) {
    if (set == CS_CP437 || set == CS_CP437UTF) {
      const auto found = std::find(charactersCP437.begin(), charactersCP437.end(),
                                   static_cast<unsigned int>(character));
      if (found != charactersCP437.end()) {
        character = static_cast<std::int32_t>(128 + (found - charactersCP437.begin()));
      }
    }
    appendUTF8(result, character);
    return true;
  };
  if (set == CS_CP437UTF || set == CS_UTF8) {
    eachCharacter(text, convert);
  } else {
    for (const char c : text) {
      convert(static_cast<unsigned char>(c));
    }
  }
  return result;
}

std::string convertUTF8toCS(const std::string& text, characterSet set) {
  std::string result;
  result.reserve(text.size());
  eachCharacter(text, [&result, set](std::int32_t character) {
    if (character < 128) {
      const bool shown = set != CS_PRINT_ASCII || (character >= 32 && character != 127);
      result += shown ? static_cast<char>(character) : '.';
    } else if (set == CS_CP437) {
      result += static_cast<char>(toCP437(character));
    } else if (set == CS_CP437UTF) {
      appendUTF8(result, toCP437(character));
    } else if (set != CS_UTF8) {  // which drops it: callers rely on ASCII coming out
      result += '.';
    }
    return true;
  });
  return result;
}
