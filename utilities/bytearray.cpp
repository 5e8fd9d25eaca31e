// SPDX-License-Identifier: MIT
#include "bytearray.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>

#include "ascii.h"
#include "assertion.h"

namespace {

// The value of each byte as a digit of radix 64, already at its place as the first to
// fourth digit of a group; NO_DIGIT outside the alphabet.  So four look-ups decode a group.
constexpr std::uint32_t NO_DIGIT = 1u << 24;
constexpr std::array<std::array<std::uint32_t, 256>, 4> radix64Values = []() {
  std::array<std::array<std::uint32_t, 256>, 4> tables{};
  for (std::size_t place = 0; place < 4; place++) {
    tables[place].fill(NO_DIGIT);
    for (std::size_t i = 0; i < internal::BASE64_DIGITS.size(); i++) {
      tables[place][static_cast<unsigned char>(internal::BASE64_DIGITS[i])] =
          static_cast<std::uint32_t>(i) << (18 - 6 * place);
    }
  }
  return tables;
}();

constexpr std::uint32_t radix64Value(char c, std::size_t place) {
  return radix64Values[place][static_cast<unsigned char>(c)];
}

constexpr bool isRadix64Digit(char c) {
  return radix64Value(c, 0) != NO_DIGIT;
}

// The two digits of every 12 bits.
constexpr std::array<std::array<char, 2>, 4096> radix64Pairs = []() {
  std::array<std::array<char, 2>, 4096> table{};
  for (std::size_t i = 0; i < table.size(); i++) {
    table[i] = {internal::BASE64_DIGITS[i >> 6], internal::BASE64_DIGITS[i & 63]};
  }
  return table;
}();

char* putPair(char* out, std::uint32_t bits) {
  std::memcpy(out, radix64Pairs[bits & 4095].data(), 2);
  return out + 2;
}

// Decodes pairs of digits, and returns the place of the first pair that is not one.  The loops
// over a block have neither branches nor tables, so that a compiler can turn them into
// operations on many bytes at once.
const char* decodePairs(const char* text, const char* end, unsigned char*& out) {
  constexpr int BLOCK = 64;
  for (; end - text >= BLOCK; text += BLOCK, out += BLOCK / 2) {
    unsigned char digits[BLOCK];
    unsigned char bad = 0;
    for (std::size_t i = 0; i < BLOCK; i++) {
      const auto c = static_cast<unsigned char>(text[i]);
      const bool isDigit = static_cast<unsigned char>(c - '0') < 10;
      const bool isLetter = static_cast<unsigned char>((c | 32) - 'a') < 6;
      bad |= static_cast<unsigned char>(!(isDigit | isLetter));
      digits[i] = static_cast<unsigned char>((c & 15) + (isLetter ? 9 : 0));
    }
    if (bad != 0) {
      break;
    }
    unsigned char* const bytes = out;
    for (std::size_t i = 0; i < BLOCK / 2; i++) {
      bytes[i] = static_cast<unsigned char>(digits[2 * i] << 4 | digits[2 * i + 1]);
    }
  }
  for (; end - text >= 2; text += 2) {
    const int high = internal::hexValue(text[0]);
    const int low = internal::hexValue(text[1]);
    if ((high | low) < 0) {
      break;
    }
    *out++ = static_cast<unsigned char>(high << 4 | low);
  }
  return text;
}

// The radix that a text is written in, 0 when it is neither of the two.
unsigned int detectRadix(std::string_view text) {
  if (text.size() % 2 != 0) {
    return 0;
  }
  bool isHex = true;
  for (const char c : text) {
    if (!isRadix64Digit(c) && c != '=') {
      return 0;
    }
    isHex = isHex && internal::isHexDigit(c);
  }
  return isHex ? 16 : 64;
}

// Texts up to this length get room as if they were a run of digits to their end.  That
// saves the search for the end of the run.
constexpr std::size_t ROOM_FOR_ALL = std::size_t{1} << 22;

// The end of the text, or of the run of digits at its beginning when the text is long.
const char* runEnd(const char* text, bool (&isOfTheRun)(char)) {
  if (!isOfTheRun(*text)) {
    return text;
  }
  const char* end = text + std::strlen(text);
  if (static_cast<std::size_t>(end - text) > ROOM_FOR_ALL) {
    for (end = text; isOfTheRun(*end); end++) {
    }
  }
  return end;
}

// A number of bytes that an array can hold.
bool holdable(std::size_t bytes) {
  return bytes <= std::numeric_limits<unsigned int>::max();
}

}  // namespace

ByteArray::ByteArray(unsigned int size, const char* bytes)
    : ByteArray(size, reinterpret_cast<const unsigned char*>(bytes)) {}

ByteArray::ByteArray(unsigned int size, const unsigned char* bytes) {
  if (reserve(size) && bytes != nullptr) {
    std::copy_n(bytes, size, content);
  }
}

ByteArray::ByteArray(const char* text, unsigned int radix) {
  if (!set(text, radix)) {
    length = 0;
  }
}

ByteArray::ByteArray(const ByteArray& other) : ByteArray(other.length, other.content) {}

ByteArray& ByteArray::operator=(const ByteArray& other) {
  if (this != &other && reserve(other.length)) {
    std::copy_n(other.content, length, content);
  }
  return *this;
}

ByteArray::~ByteArray() {
  delete[] content;
}

bool ByteArray::reserve(unsigned int size) {
  if (allocated < size) {
    delete[] content;
    content = new (std::nothrow) unsigned char[size];
    allocated = content != nullptr ? size : 0;
  }
  length = std::min(size, allocated);
  return length == size;
}

bool ByteArray::set(const char* text, unsigned int radix) {
  if (text == nullptr) {
    return false;
  }
  if (radix == 0) {
    radix = detectRadix(text);
  }
  switch (radix) {
    case 16:
      return setHex(text);
    case 64:
      return setRadix64(text);
    default:
      return false;
  }
}

bool ByteArray::setHex(const char* text) {
  const char* const end = runEnd(text, internal::isHexDigit);
  const auto digits = static_cast<std::size_t>(end - text);
  const std::size_t room = digits / 2 + digits % 2;
  if (!holdable(room)) {
    length = 0;
    return false;
  }
  if (!reserve(static_cast<unsigned int>(room))) {
    return false;
  }
  unsigned char* out = content;
  const char* rest = decodePairs(text, end, out);
  if (internal::isHexDigit(*rest)) {  // an odd number of digits: the first one is a byte alone
    out = content;
    *out++ = static_cast<unsigned char>(internal::hexValue(*text));
    decodePairs(text + 1, end, out);
  }
  return reserve(static_cast<unsigned int>(out - content));
}

bool ByteArray::setRadix64(const char* text) {
  const char* const end = runEnd(text, isRadix64Digit);
  const auto most = static_cast<std::size_t>(end - text);
  const std::size_t room = most / 4 * 3 + most % 4 * 3 / 4;
  if (!holdable(room)) {
    length = 0;
    return false;
  }
  if (!reserve(static_cast<unsigned int>(room))) {
    return false;
  }
  unsigned char* out = content;
  for (; end - text >= 4; text += 4) {
    const std::uint32_t bits = radix64Value(text[0], 0) | radix64Value(text[1], 1) |
                               radix64Value(text[2], 2) | radix64Value(text[3], 3);
    if (bits >= NO_DIGIT) {
      break;
    }
    *out++ = static_cast<unsigned char>(bits >> 16);
    *out++ = static_cast<unsigned char>(bits >> 8);
    *out++ = static_cast<unsigned char>(bits);
  }
  std::uint32_t bits = 0;
  std::size_t digits = 0;  // of the last group, at most three
  for (; isRadix64Digit(text[digits]); digits++) {
    bits |= radix64Value(text[digits], digits);
  }
  const std::size_t padding = std::strspn(text + digits, "=");
  if (padding > 2 || (digits + padding) % 4 != 0) {
    length = 0;  // nobody uses what was decoded so far
    return false;
  }
  if (digits >= 2) {
    *out++ = static_cast<unsigned char>(bits >> 16);
  }
  if (digits == 3) {
    *out++ = static_cast<unsigned char>(bits >> 8);
  }
  return reserve(static_cast<unsigned int>(out - content));
}

std::string ByteArray::format(unsigned int radix) const {
  switch (radix) {
    case 16:
      return formatHex();
    case 64:
      return formatRadix64();
    default:
      return std::string();
  }
}

std::string ByteArray::formatHex() const {
  std::string result(std::size_t{2} * length, '\0');
  char* const out = result.data();
  const unsigned char* const bytes = content;
  const std::size_t size = length;
  for (std::size_t i = 0; i < size; i++) {
    out[2 * i] = internal::lowerHexDigit(bytes[i] >> 4);
    out[2 * i + 1] = internal::lowerHexDigit(bytes[i] & 15u);
  }
  return result;
}

std::string ByteArray::formatRadix64() const {
  std::string result((std::size_t{length} + 2) / 3 * 4, '=');
  char* out = result.data();
  const unsigned char* p = content;
  const unsigned char* const end = content + length;
  for (; end - p >= 3; p += 3) {
    out = putPair(out, static_cast<std::uint32_t>(p[0]) << 4 | p[1] >> 4);
    out = putPair(out, static_cast<std::uint32_t>(p[1]) << 8 | p[2]);
  }
  if (end - p == 1) {
    putPair(out, static_cast<std::uint32_t>(p[0]) << 4);
  } else if (end - p == 2) {
    out = putPair(out, static_cast<std::uint32_t>(p[0]) << 4 | p[1] >> 4);
    *out = internal::BASE64_DIGITS[(p[1] & 15u) << 2];
  }
  return result;
}

std::string ByteArray::OMBRformat(int prefixBytes) const {
  if (prefixBytes < 1 || (prefixBytes < 4 && length >> (8 * prefixBytes) != 0)) {
    return std::string();
  }
  const std::size_t resultSize = (std::size_t{length} + static_cast<std::size_t>(prefixBytes)) * 2;
  std::string result;
  result.reserve(resultSize);
  // From the ninth digit on, the shift count is taken modulo 32, so that the low
  // digits repeat: readers rely on it.
  for (unsigned int digit = 2 * static_cast<unsigned int>(prefixBytes); digit-- > 0;) {
    result += internal::LOWER_HEX_DIGITS[length >> (4 * digit % 32) & 15];
  }
  result += formatHex();
  ASSERT(resultSize == result.size());
  return result;
}

std::string ByteArray::text() const {
  return length != 0 ? std::string(reinterpret_cast<const char*>(content), length) : std::string();
}

namespace {

// The byte that an index beyond the end refers to.
unsigned char& spareByte() {
  static unsigned char spare;
  spare = 0;
  return spare;
}

}  // namespace

unsigned char& ByteArray::operator[](unsigned int index) {
  return index < length ? content[index] : spareByte();
}

const unsigned char& ByteArray::operator[](unsigned int index) const {
  return index < length ? content[index] : spareByte();
}

bool ByteArray::operator==(const ByteArray& other) const {
  return std::equal(content, content + length, other.content, other.content + other.length);
}

bool ByteArray::operator<(const ByteArray& other) const {
  return std::lexicographical_compare(content, content + length, other.content,
                                      other.content + other.length);
}
