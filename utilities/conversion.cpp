#include "conversion.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstring>
#include <ostream>

#include "ascii.h"

namespace {

constexpr unsigned int NO_CHARACTER = 255;  // in charactersCP437

// The digits of the magnitude, so that the smallest int works as well.
std::string digits(int value, unsigned int base) {
  auto rest = static_cast<std::uint32_t>(value);
  if (value < 0) {
    rest = 0 - rest;
  }
  std::string result;
  do {
    result += "0123456789ABCDEF"[rest % base];
    rest /= base;
  } while (rest != 0);
  std::reverse(result.begin(), result.end());
  return result;
}

// The sign counts as one of the `width` characters.
std::string padded(int value, unsigned int base, int width) {
  std::string result = digits(value, base);
  const std::size_t sign = value < 0 ? std::size_t{1} : 0;
  const std::size_t wanted = width > 0 ? static_cast<std::size_t>(width) : 0;
  if (wanted > result.size() + sign) {
    result.insert(0, wanted - result.size() - sign, '0');
  }
  if (value < 0) {
    result.insert(0, 1, '-');
  }
  return result;
}

}  // namespace

// --- Numbers ---------------------------------------------------------------

int decimal2Int(const char*& text) {
  if (text == nullptr || !isDigit(*text)) {
    return -1;
  }
  std::int64_t result = 0;
  const char* p = text;
  for (; isDigit(*p); p++) {
    result = 10 * result + (*p - '0');
    if (result > INT32_MAX) {
      return -1;
    }
  }
  text = p;
  return static_cast<int>(result);
}

int decimal2Int(const char* const& text) {
  const char* p = text;
  return decimal2Int(p);
}

int decimal2Int(const std::string& text) {
  const char* p = text.c_str();
  return decimal2Int(p);
}

void int2decimal(std::string& out, int value) {
  out += padded(value, 10, 1);
}

std::string int2decimal(int value) {
  return padded(value, 10, 1);
}

std::string int2decimal(int value, int width) {
  return padded(value, 10, width);
}

void int2hex(std::string& out, int value) {
  out += padded(value, 16, 1);
}

std::string int2hex(int value, int digits) {
  return padded(value, 16, digits);
}

int hexDigit(signed char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  if (c >= 'A' && c <= 'F') {
    return c - 'A' + 10;
  }
  if (c >= 'a' && c <= 'f') {
    return c - 'a' + 10;
  }
  return -1;
}

bool allNumeric(const char* text) {
  if (text == nullptr || !isDigit(*text)) {
    return false;
  }
  while (isDigit(*text)) {
    text++;
  }
  return *text == '\0';
}

// --- Byte buffers ----------------------------------------------------------

std::uint32_t getU32(const unsigned char* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
         static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
}

void setU32(unsigned int value, unsigned char* bytes) {
  bytes[0] = static_cast<unsigned char>(value >> 24);
  bytes[1] = static_cast<unsigned char>(value >> 16);
  bytes[2] = static_cast<unsigned char>(value >> 8);
  bytes[3] = static_cast<unsigned char>(value);
}

std::uint16_t getU16(const unsigned char* bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

std::uint16_t getU16(const char* bytes) {
  const unsigned char copy[2] = {static_cast<unsigned char>(bytes[0]),
                                 static_cast<unsigned char>(bytes[1])};
  return getU16(copy);
}

void setU16(unsigned short value, unsigned char* bytes) {
  bytes[0] = static_cast<unsigned char>(value >> 8);
  bytes[1] = static_cast<unsigned char>(value);
}

// --- UTF-8 and character sets ----------------------------------------------

namespace {

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

// Calls `use` with each code point of a text, malformed bytes standing for
// themselves, until it returns false.
template <class Use>
bool eachCharacter(const std::string& text, const Use& use) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* const end = p + text.size();
  for (; p < end; p++) {
    if (!use(getUTF8(p, static_cast<unsigned int>(end - p), false))) {
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

bool validUTF8(const char* text, int length, bool rejectNonPrintingASCII) {
  const bool terminated = length < 0;
  const std::size_t size = terminated ? strnlen(text, 999999) : static_cast<std::size_t>(length);
  const auto* p = reinterpret_cast<const unsigned char*>(text);
  for (const unsigned char* const end = p + size; p < end; p++) {
    if (!rejectNonPrintingASCII) {
      p += plainBytes(p, static_cast<std::size_t>(end - p));
      if (p == end) {
        break;
      }
    }
    if (*p == 0) {
      return terminated;
    }
    const std::int32_t character = getUTF8(p, static_cast<unsigned int>(end - p), true);
    if (character < 0) {
      return false;
    }
    // 126, not 127: stored names rely on "~" being refused and DEL accepted.
    if (rejectNonPrintingASCII && (character < 32 || character == 126)) {
      return false;
    }
  }
  return true;
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

// --- Text ------------------------------------------------------------------

std::string quote(const std::string& text) {
  std::string result;
  result.reserve(text.size() + 2);
  result += '"';
  for (const char c : text) {
    const auto byte = static_cast<signed char>(c);  // bytes from 128 up are below 32
    if (byte >= 32 && byte != 127) {
      if (c == '"' || c == '\\') {
        result += '\\';
      }
      result += c;
      continue;
    }
    result += '\\';
    if (c == '\n') {
      result += 'n';
    } else if (c == '\r') {
      result += 'r';
    } else if (c == '\t') {
      result += 't';
    } else {
      const auto octal = static_cast<unsigned char>(c);
      result += static_cast<char>('0' + (octal >> 6));
      result += static_cast<char>('0' + (octal >> 3 & 7));
      result += static_cast<char>('0' + (octal & 7));
    }
  }
  result += '"';
  return result;
}

std::string CSVescape(const std::string& text) {
  if (text.find_first_of("\"\r\n,") == std::string::npos) {
    return text;
  }
  std::string result;
  result.reserve(text.size() + 2);
  result += '"';
  for (const char c : text) {
    if (c == '"') {
      result += '"';
    }
    result += c;
  }
  result += '"';
  return result;
}

namespace {

// Reads a field behind its opening quote.
std::string quotedField(const char*& ptr) {
  std::string result;
  for (; *ptr != '\0'; ptr++) {
    if (*ptr != '"') {
      result += *ptr;
      continue;
    }
    ptr++;
    if (*ptr == '"') {
      result += '"';
      continue;
    }
    if (*ptr != '\0' && *ptr != ',') {
      ptr++;
    }
    if (*ptr == ',') {
      ptr++;
    }
    return result;
  }
  return result;
}

}  // namespace

std::string CSVunescape(const char*& ptr) {
  if (ptr == nullptr) {
    return std::string();
  }
  if (*ptr == '"') {
    ptr++;
    return quotedField(ptr);
  }
  const char* const start = ptr;
  ptr += std::strcspn(ptr, ",");
  std::string result(start, ptr);
  if (*ptr == ',') {
    ptr++;
  }
  return result;
}

std::string trimSuffix(const std::string& Name, int* N) {
  std::size_t start = Name.size();
  while (start > 0 && isDigit(Name[start - 1])) {
    start--;
  }
  const bool suffix = start < Name.size() && start > 0 && Name[start - 1] == '-';
  if (N != nullptr) {
    *N = suffix ? decimal2Int(Name.c_str() + start) : 0;
  }
  return suffix ? Name.substr(0, start - 1) : Name;
}

std::string addSuffix(const std::string& prefix, unsigned int N, unsigned int maxSize) {
  const std::string number = std::to_string(N);
  const std::size_t suffixSize = number.size() + 1;
  std::string result(prefix, 0, maxSize > suffixSize ? maxSize - suffixSize : 0);
  result += '-';
  result += number;
  return result;
}

void setCase(char* text, int length, bool up) {
  const std::size_t n = length < 0 ? std::strlen(text) : static_cast<std::size_t>(length);
  for (std::size_t i = 0; i < n; i++) {
    const auto c = static_cast<unsigned char>(text[i]);
    text[i] = static_cast<char>(up ? std::toupper(c) : std::tolower(c));
  }
}

namespace {

template <class Add>
void split(const std::string& text, char separator, const Add& add) {
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = text.find(separator, start);
    if (end == std::string::npos) {
      add(text.substr(start));
      return;
    }
    add(text.substr(start, end - start));
    start = end + 1;
  }
}

}  // namespace

std::vector<std::string> stringToVector(const std::string& text, char separator) {
  std::vector<std::string> result;
  split(text, separator, [&result](std::string piece) { result.push_back(std::move(piece)); });
  return result;
}

std::list<std::string> stringToList(const std::string& text, char separator) {
  std::list<std::string> result;
  split(text, separator, [&result](std::string piece) { result.push_back(std::move(piece)); });
  return result;
}

std::set<std::string> stringToSet(const std::string& text, char separator) {
  std::set<std::string> result;
  split(text, separator, [&result](std::string piece) { result.insert(std::move(piece)); });
  return result;
}

std::vector<std::string> vectorOfStrings(const char* const* array) {
  std::vector<std::string> result;
  for (; array != nullptr && *array != nullptr; array++) {
    result.emplace_back(*array);
  }
  return result;
}

char* copyString(const char* text) {
  if (text == nullptr) {
    return nullptr;
  }
  const std::size_t size = std::strlen(text) + 1;
  return static_cast<char*>(std::memcpy(new char[size], text, size));
}

char* copyString(const std::string& text) {
  const std::size_t size = text.size() + 1;
  return static_cast<char*>(std::memcpy(new char[size], text.c_str(), size));
}

std::ostream& operator<<(std::ostream& out, const std::vector<std::string>& strings) {
  out << "{ ";
  for (const std::string& text : strings) {
    out << quote(text) << ' ';
  }
  return out << '}';
}
