// SPDX-License-Identifier: MIT
// Byte arrays.  For all bytes:
//
// - Hexadecimal text has two lower-case digits for each byte; base64 has four characters
//   of its alphabet for each three bytes, "=" only as padding at the end.
// - Both read back, also with the radix detected, unless all of a base64 text could be
//   hexadecimal digits.
// - `OMBRformat` writes the size in the given width, then the bytes in hexadecimal; it is
//   empty for no width and when the size does not fit; above a width of 4 the digits of
//   the size repeat.
// - Equality and order are those of the bytes as unsigned numbers, and consistent.
// - A copy is equal; beyond the end a byte reads 0, and what is written there is lost.
//
// For every text:
//
// - Radix 16 reads the leading hexadecimal digits, and formats to them in lower case.
// - Radix 64 reads a leading run of the right length only, and what it read formats to a
//   text that reads the same.
// - Radix 0 reads what one of the others reads.  Any other radix fails.

#include <algorithm>

#include "bytearray.h"
#include "conversion.h"
#include "fuzz.h"

namespace {

constexpr std::string_view BASE64 =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view HEX = "0123456789abcdefABCDEF";

ByteArray array(std::string_view bytes) {
  return ByteArray(static_cast<unsigned int>(bytes.size()), bytes.data());
}

void checkReadsBack(const ByteArray& bytes, const std::string& text, unsigned int radix) {
  ByteArray copy;
  check(copy.set(text.c_str(), radix) && copy == bytes, "what format writes reads back", text,
        bytes.text(), copy.text());
}

void checkFormats(const ByteArray& bytes) {
  const std::string hex = bytes.format(16);
  check(hex.size() == 2 * bytes.size() && only(hex, LOWER_HEX), "hexadecimal has two digits a byte",
        hex);
  checkReadsBack(bytes, hex, 16);
  checkReadsBack(bytes, hex, 0);

  const std::string base64 = bytes.format(64);
  const std::size_t padding = (3 - bytes.size() % 3) % 3;
  check(base64.size() == (bytes.size() + 2) / 3 * 4, "base64 has four characters for three bytes",
        base64);
  check(only(base64.substr(0, base64.size() - padding), BASE64) &&
            base64.substr(base64.size() - padding) == std::string(padding, '='),
        "base64 keeps to its alphabet and pads at the end", base64);
  checkReadsBack(bytes, base64, 64);
  if (!only(base64, HEX)) {
    checkReadsBack(bytes, base64, 0);
  }
  for (const unsigned int radix : {0U, 8U, 17U, 65U}) {
    check(bytes.format(radix).empty(), "there is no other radix to write");
  }
}

void checkPrefixed(const ByteArray& bytes) {
  check(bytes.OMBRformat(0).empty() && bytes.OMBRformat(-1).empty(), "no width, no text");
  const std::string hex = bytes.format(16);
  const std::string size = int2hex(static_cast<int>(bytes.size()), 8);
  for (int width = 1; width <= 9; width++) {
    const std::string text = bytes.OMBRformat(width);
    if (width == 1 && bytes.size() > 255) {
      check(text.empty(), "a size that does not fit has no text", text);
      continue;
    }
    std::string prefix = size + size + size;
    std::transform(prefix.begin(), prefix.end(), prefix.begin(),
                   [](char c) { return c >= 'A' ? static_cast<char>(c - 'A' + 'a') : c; });
    prefix = prefix.substr(prefix.size() - 2 * static_cast<std::size_t>(width));
    checkSame(text, prefix + hex, "the size is before the bytes");
  }
}

void checkBytes(const std::string& text) {
  ByteArray bytes = array(text);
  checkFormats(bytes);
  checkPrefixed(bytes);
  checkSame(bytes.text(), text, "an array has the bytes that it was made of");
  check(bytes.size() == text.size() && bytes.empty() == text.empty(), "and their number");
  const ByteArray copy = bytes;
  bytes[bytes.size()] = 'x';
  check(copy == bytes && bytes[bytes.size()] == 0, "what is written beyond the end is lost", text);
}

void checkComparing(const std::string& a, const std::string& b, const std::string& c) {
  const auto compare = [](const ByteArray& x, const ByteArray& y) {
    check((x < y) + (y < x) + (x == y) == 1, "one is less, or both are equal", x.text(), y.text());
    return x < y ? -1 : y < x ? 1 : 0;
  };
  checkOrder(array(a), array(b), array(c), compare);
  // Strings compare their bytes as unsigned numbers.
  check(sign(a.compare(b)) == compare(array(a), array(b)), "the order is that of the bytes", a, b);
}

void checkHex(const std::string& text) {
  ByteArray bytes;
  std::string digits = text.substr(0, std::min(text.find_first_not_of(HEX), text.size()));
  check(bytes.set(text.c_str(), 16), "radix 16 reads any text", text);
  std::transform(digits.begin(), digits.end(), digits.begin(),
                 [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c; });
  checkSame(bytes.format(16), (digits.size() % 2 == 0 ? "" : "0") + digits,
            "radix 16 reads the leading digits", text);
}

// Whether the leading run and its padding are as long as whole groups.
bool readable64(const std::string& text) {
  const std::size_t run = std::min(text.find_first_not_of(BASE64), text.size());
  const std::size_t padding = std::min(text.find_first_not_of('=', run), text.size()) - run;
  return (run + padding) % 4 == 0 && padding < 3;
}

void checkBase64(const std::string& text) {
  ByteArray bytes;
  const bool read = bytes.set(text.c_str(), 64);
  check(read == readable64(text), "radix 64 reads runs of the right length", text);
  if (read) {
    checkReadsBack(bytes, bytes.format(64), 64);
  }
  const ByteArray constructed(text.c_str(), 64);
  check(read ? constructed == bytes : constructed.empty(), "what does not decode is empty", text);
}

void checkDetected(const std::string& text) {
  ByteArray detected;
  const bool read = detected.set(text.c_str(), 0);
  const bool encoded = text.size() % 2 == 0 && only(text, std::string(BASE64) + '=');
  const unsigned int radix = only(text, HEX) ? 16 : 64;
  ByteArray bytes;
  check(read == (encoded && bytes.set(text.c_str(), radix)) && (!read || detected == bytes),
        "a detected radix reads as if it had been given", text);
  for (const unsigned int other : {1U, 8U, 10U, 17U, 65U}) {
    check(!detected.set(text.c_str(), other), "there is no other radix to read", text);
  }
}

}  // namespace

void fuzz(std::string_view input) {
  const auto [a, b, c] = parts<3>(input);
  checkBytes(std::string(input));
  checkComparing(a, b, c);
  const std::string text = a.substr(0, a.find('\0'));
  checkHex(text);
  checkBase64(text);
  checkDetected(text);
}
