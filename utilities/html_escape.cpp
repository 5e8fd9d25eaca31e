// SPDX-License-Identifier: MIT
#include "html_escape.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ascii.h"
#include "conversion.h"

namespace {

// One flag for each byte value: true when an escape function does not copy it as it is.
using byteSet = std::array<bool, 256>;

constexpr std::size_t index(char c) {
  return static_cast<unsigned char>(c);
}

constexpr byteSet with(byteSet set, std::string_view characters) {
  for (const char c : characters) {
    set[index(c)] = true;
  }
  return set;
}

constexpr byteSet withAll(byteSet set, bool (*isMember)(char)) {
  for (std::size_t c = 0; c < set.size(); c++) {
    set[c] = set[c] || isMember(static_cast<char>(c));
  }
  return set;
}

// For functions that use signed bytes: those from 128 up are below 32 then, and count as
// control bytes.
constexpr byteSet signedControls = withAll({}, [](char c) { return !internal::isPrintable(c); });
constexpr byteSet asciiPunctuation = withAll({}, internal::isPunctuation);

constexpr byteSet URIspecial = with(signedControls, " \"#$%&'+,/:;<=>?@[\\]^{|}");
constexpr byteSet cookieSpecial = with(withAll(asciiPunctuation, internal::isControl), " ");
constexpr byteSet QMXspecial = with(asciiPunctuation, "\n");
constexpr byteSet LDAPmarked = with({}, "\"+,;<>\\");

// Writes "%" and at least `minimumDigits` upper-case digits.
char* putEscape(char* out, char c, int minimumDigits) {
  const char* const digits = internal::HEX_DIGITS.data();
  *out++ = '%';
  if (minimumDigits > 1 || index(c) > 15) {
    *out++ = digits[index(c) >> 4];
  }
  *out++ = digits[index(c) & 15];
  return out;
}

// Escapes the bytes of `special` as "%" and at least `minimumDigits` digits.
std::string percentEscape(std::string_view text, const byteSet& special, int minimumDigits) {
  std::string result;
  result.reserve(text.size() + text.size() / 2);
  std::array<char, 768> piece;  // a third as many bytes need no more
  while (!text.empty()) {
    char* out = piece.data();
    const std::string_view next = text.substr(0, piece.size() / 3);
    for (const char c : next) {
      if (special[index(c)]) {
        out = putEscape(out, c, minimumDigits);
      } else {
        *out++ = c;
      }
    }
    result.append(piece.data(), out);
    text.remove_prefix(next.size());
  }
  return result;
}

char hexByte(int high, int low) {
  return static_cast<char>(16 * high + low);
}

// Decodes the character that starts at `p` and moves `p` to its last byte.
std::int32_t characterAt(const char*& p, const char* end) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(p);
  const auto left = static_cast<unsigned int>(std::min<std::ptrdiff_t>(end - p, 4));
  const std::int32_t character = getUTF8(bytes, left, false);
  p = reinterpret_cast<const char*>(bytes);
  return character;
}

// Each function below has two forms.  One of these functions does the work of both.

std::string percentUnEscape(std::string_view text) {
  std::string result(text.size(), '\0');
  char* out = result.data();
  const char* const end = text.data() + text.size();
  for (const char* p = text.data(); p < end; p++) {
    if (*p != '%') {
      *out++ = *p;
      continue;
    }
    if (end - p == 1) {
      break;
    }
    const int high = internal::hexValue(p[1]);
    if (high < 0) {
      *out++ = '%';
      continue;
    }
    if (end - p == 2) {
      break;
    }
    const int low = internal::hexValue(p[2]);
    if (low < 0) {
      *out++ = '%';
      continue;
    }
    *out++ = hexByte(high, low);
    p += 2;
  }
  result.resize(static_cast<std::size_t>(out - result.data()));
  return result;
}

std::string nameEscape(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    if (signedControls[index(c)]) {
      result += '\\';
      result += int2hex(static_cast<unsigned char>(c), 2);
      continue;
    }
    if (LDAPmarked[index(c)]) {
      result += '\\';
    }
    result += c;
  }
  return result;
}

std::string nameUnEscape(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  const char* const end = text.data() + text.size();
  for (const char* p = text.data(); p < end; p++) {
    if (*p != '\\') {
      result += *p;
      continue;
    }
    if (++p == end) {
      break;
    }
    const int high = internal::hexValue(*p);
    if (high < 0) {
      result += *p;
      continue;
    }
    if (++p == end) {
      break;
    }
    const int low = internal::hexValue(*p);
    // A lone digit goes with its backslash: readers rely on it.
    result += low < 0 ? *p : hexByte(high, low);
  }
  return result;
}

std::string scriptEscape(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  const char* const end = text.data() + text.size();
  for (const char* p = text.data(); p < end; p++) {
    if (!internal::isPrintable(*p)) {
      const std::int32_t character = characterAt(p, end);
      // Not always four digits: readers rely on \u00A for a line feed.
      result += "\\u";
      if (character < 4096) {
        result += '0';
      }
      if (character < 256) {
        result += '0';
      }
      int2hex(result, character);
      continue;
    }
    if (*p == '\'') {
      result += '\\';
    }
    result += *p;
  }
  return result;
}

std::string markupEscape(std::string_view text, bool nbsp) {
  std::string result;
  result.reserve(text.size());
  const char* const end = text.data() + text.size();
  for (const char* p = text.data(); p < end; p++) {
    if (*p == '\n') {
      result += "<br>";
    } else if (!internal::isPrintable(*p)) {
      result += "&#";
      int2decimal(result, characterAt(p, end));
      result += ';';
    } else if (*p == '<') {
      result += "&lt;";
    } else if (*p == '>') {
      result += "&gt;";
    } else if (*p == '&') {
      result += "&amp;";
    } else if (*p == '"') {
      result += "&quot;";
    } else if (nbsp && *p == ' ' && end - p > 1 && p[1] == ' ') {
      result += " &nbsp;";
      p++;
    } else {
      result += *p;
    }
  }
  return result;
}

}  // namespace

std::string URIescape(const char* text, unsigned int length) {
  return percentEscape({text, length}, URIspecial, 2);
}

std::string URIescape(const std::string& text) {
  return percentEscape(text, URIspecial, 2);
}

std::string URIunEscape(const char* text, unsigned int length) {
  return percentUnEscape({text, length});
}

std::string URIunEscape(const std::string& text) {
  return percentUnEscape(text);
}

std::string cookieEscape(const char* text, unsigned int length) {
  return percentEscape({text, length}, cookieSpecial, 1);
}

std::string cookieEscape(const std::string& text) {
  return percentEscape(text, cookieSpecial, 1);
}

std::string cookieUnEscape(const char* text, unsigned int length) {
  return URIunEscape(text, length);
}

std::string cookieUnEscape(const std::string& text) {
  return URIunEscape(text);
}

std::string LDAPescape(const char* text, unsigned int length) {
  return nameEscape({text, length});
}

std::string LDAPescape(const std::string& text) {
  return nameEscape(text);
}

std::string LDAPunEscape(const char* text, unsigned int length) {
  return nameUnEscape({text, length});
}

std::string LDAPunEscape(const std::string& text) {
  return nameUnEscape(text);
}

std::string QMXescape(const char* text, unsigned int length) {
  return percentEscape({text, length}, QMXspecial, 2);
}

std::string QMXescape(const std::string& text) {
  return percentEscape(text, QMXspecial, 2);
}

std::string javaScriptEscape(const char* text, unsigned int length) {
  return scriptEscape({text, length});
}

std::string javaScriptEscape(const std::string& text) {
  return scriptEscape(text);
}

std::string HTMLescape(const char* text, unsigned int length, bool nbsp) {
  return markupEscape({text, length}, nbsp);
}

std::string HTMLescape(const std::string& text, bool nbsp) {
  return markupEscape(text, nbsp);
}
