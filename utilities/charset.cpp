// SPDX-License-Identifier: MIT
// The character sets that a text may be restricted to.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "conversion.h"
#include "utf8.h"

namespace {

constexpr unsigned int NO_CHARACTER = 255;  // in charactersCP437

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

// The code page 437 byte of a code point beyond ASCII.  Code points beyond Latin-1
// get the last character of the table.
std::int32_t toCP437(std::int32_t character) {
  const std::int32_t index = std::min(character - 128, 127);
  return static_cast<std::int32_t>(charactersCP437[static_cast<std::size_t>(index)]);
}

}  // namespace

// The published table of printable characters.  It does not have the pictures that
// some displays show for control codes.
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
  return internal::eachCharacter(text,
                                 [set](std::int32_t character) { return inSet(character, set); });
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
    internal::eachCharacter(text, convert);
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
  internal::eachCharacter(text, [&result, set](std::int32_t character) {
    if (character < 128) {
      const bool shown = set != CS_PRINT_ASCII || (character >= 32 && character != 127);
      result += shown ? static_cast<char>(character) : '.';
    } else if (set == CS_CP437) {
      result += static_cast<char>(toCP437(character));
    } else if (set == CS_CP437UTF) {
      appendUTF8(result, toCP437(character));
    } else if (set != CS_UTF8) {  // CS_UTF8 drops it: callers rely on ASCII
      result += '.';
    }
    return true;
  });
  return result;
}
