// SPDX-License-Identifier: MIT
// UTF-8 and character sets.  For all bytes:
//
// - Strict decoding accepts exactly what encoding writes, and U+10FFFF, which encoding
//   refuses; it moves by the length less one, and does not move when it fails.
// - Tolerant decoding agrees with it where it succeeds, and else gives the byte itself.
// - Encoding refuses exactly the surrogates and what is not below U+10FFFF.
// - `validUTF8` accepts a text when strict decoding succeeds to its end and no NUL byte
//   comes before; when asked to, it also refuses characters below 32 and "~".
// - A well-formed text has as many characters as bytes that continue nothing.
// - Each character set holds the next smaller one; `CS_INVALID` has no character.
// - What is converted to UTF-8 is well-formed; what is converted to ASCII is ASCII, to
//   printable ASCII is printable, and has as many bytes as the text has characters.
// - A well-formed text that is valid in code page 437 survives the way there and back.

#include <algorithm>
#include <cstdint>

#include "conversion.h"
#include "fuzz.h"

namespace {

const unsigned char* bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

std::string encoded(std::uint32_t character) {
  unsigned char buffer[5] = {0, 0, 0, 0, '#'};
  const int size = putUTF8(character, buffer);
  check(size >= 0 && size <= 4 && buffer[4] == '#', "a character has at most four bytes");
  return std::string(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(size));
}

void checkEncoding(std::uint32_t character) {
  const std::string text = encoded(character);
  const bool refused = (character >= 0xD800 && character <= 0xDFFF) || character >= 0x10FFFF;
  check(text.empty() == refused, "surrogates and what is not below U+10FFFF are refused", text);
  if (!refused) {
    const unsigned char* p = bytes(text);
    const std::int32_t decoded = getUTF8(p, static_cast<unsigned int>(text.size()), true);
    check(decoded == static_cast<std::int32_t>(character) && p + 1 == bytes(text) + text.size(),
          "what is encoded decodes", text);
  }
}

// The length of the strictly well-formed character at the beginning of `rest`, 0 for
// none.
std::size_t strictLength(std::string_view rest) {
  const unsigned char* p = bytes(rest);
  const auto remaining = static_cast<unsigned int>(rest.size());
  const std::int32_t strict = getUTF8(p, remaining, true);
  const unsigned char* q = bytes(rest);
  const std::int32_t tolerant = getUTF8(q, remaining, false);
  if (strict < 0) {
    check(strict == -1 && p == bytes(rest) && q == bytes(rest) && tolerant == *q && *q >= 128,
          "what fails does not move, and stands for its byte if tolerated", rest);
    return 0;
  }
  check(tolerant == strict && q == p, "tolerant decoding agrees with strict decoding", rest);
  const auto length = static_cast<std::size_t>(p - bytes(rest)) + 1;
  const std::string expected =
      strict == 0x10FFFF ? "\xF4\x8F\xBF\xBF" : encoded(static_cast<std::uint32_t>(strict));
  checkSame(rest.substr(0, length), expected, "strict decoding accepts what encoding writes");
  return length;
}

bool wellFormed(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = strictLength(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

void checkValid(const std::string& text) {
  const int size = static_cast<int>(text.size());
  const std::string untilNul = text.substr(0, text.find('\0'));
  const bool okay = wellFormed(text) && untilNul.size() == text.size();
  check(validUTF8(text.data(), size, false) == okay, "texts that decode without NUL are valid",
        text);
  check(validUTF8(text.c_str(), -1, false) == wellFormed(untilNul),
        "a text without a length ends at its NUL", text);
  const bool clean = std::none_of(untilNul.begin(), untilNul.end(),
                                  [](unsigned char c) { return c == '~' || c < ' '; });
  check(validUTF8(text.data(), size, true) == (okay && clean), "controls and ~ can be refused",
        text);
  check(validUTF8(text.c_str(), -1, true) == (wellFormed(untilNul) && clean),
        "controls and ~ can be refused", text);
}

void checkSets(const std::string& text) {
  check(CSvalid(text, CS_UTF8), "every text is UTF-8 for display", text);
  check(CSvalid(text, CS_CP437) == CSvalid(text, CS_CP437UTF), "both forms have one set", text);
  check(!CSvalid(text, CS_ASCII) || CSvalid(text, CS_CP437), "ASCII is in code page 437", text);
  check(!CSvalid(text, CS_PRINT_ASCII) || CSvalid(text, CS_ASCII), "printable ASCII is ASCII",
        text);
  check(CSvalid(text, CS_PRINT_ASCII) == printable(text), "printable ASCII is 32 to 126", text);
  check(CSvalid(text, CS_INVALID) == text.empty(), "no character is in the invalid set", text);
}

bool ascii(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](unsigned char c) { return c >= 128; });
}

void checkConverting(const std::string& text) {
  const unsigned int characters = UTF8size(text);
  for (const characterSet set : {CS_ASCII, CS_PRINT_ASCII, CS_CP437, CS_INVALID}) {
    check(convertUTF8toCS(text, set).size() == characters, "a character becomes a byte", text);
  }
  check(ascii(convertUTF8toCS(text, CS_ASCII)), "ASCII is ASCII", text);
  check(printable(convertUTF8toCS(text, CS_PRINT_ASCII)), "printable ASCII is printable", text);
  check(ascii(convertUTF8toCS(text, CS_UTF8)), "characters beyond ASCII are dropped", text);
  for (const characterSet set :
       {CS_ASCII, CS_PRINT_ASCII, CS_CP437, CS_CP437UTF, CS_UTF8, CS_INVALID}) {
    check(wellFormed(convertCStoUTF8(text, set)), "a text converted to UTF-8 is well-formed", text);
  }
  check(UTF8size(convertCStoUTF8(text, CS_ASCII)) == text.size(), "a byte becomes a character",
        text);
  for (const characterSet set : {CS_CP437, CS_CP437UTF}) {
    if (wellFormed(text) && CSvalid(text, set)) {
      checkSame(convertCStoUTF8(convertUTF8toCS(text, set), set), text,
                "what a code page can show survives the way there and back");
    }
  }
}

void checkSize(const std::string& text) {
  const unsigned int size = UTF8size(text);
  check(size <= text.size(), "a character has at least a byte", text);
  if (wellFormed(text)) {
    const auto leads =
        std::count_if(text.begin(), text.end(), [](unsigned char c) { return c < 128 || c > 191; });
    check(leads == static_cast<std::ptrdiff_t>(size), "what does not continue is a character",
          text);
  }
}

}  // namespace

void fuzz(std::string_view input) {
  std::uint32_t character = 0;
  for (std::size_t i = 0; i < input.size(); i++) {
    strictLength(input.substr(i));
    character = character << 8 | static_cast<unsigned char>(input[i]);
    checkEncoding(character);
    checkEncoding(character & 0x1FFFFF);
  }
  const std::string text(input);
  checkValid(text);
  checkSets(text);
  checkConverting(text);
  checkSize(text);
}
