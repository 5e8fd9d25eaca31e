// SPDX-License-Identifier: MIT
// Reads the pairs of an encoded form, "name=value&name=value".

#include <string>
#include <utility>

#include "ascii.h"
#include "assoclist.h"
#include "html_escape.h"

namespace {

// Reads the two digits after a "%" at `p` and moves `p` to the last of them.
// When one is missing, moves `p` over the "%" and a first digit and returns false.
bool escapedByte(const char*& p, char& byte) {
  const int high = internal::hexValue(p[1]);
  if (high < 0) {
    return false;
  }
  p++;
  const int low = internal::hexValue(p[1]);
  if (low < 0) {
    return false;
  }
  p++;
  byte = static_cast<char>(16 * high + low);
  return true;
}

// Ends a pair at `p`, which points to "&" or to the end of the text.
void endPair(const char*& cursor, const char* p) {
  cursor = *p == '\0' ? nullptr : p + 1;
}

bool readValue(const char*& cursor, const char* p, std::string& value) {
  for (; *p != '&' && *p != '\0'; p++) {
    char c = *p;
    if (c == '=') {
      return false;
    }
    if (c == '+') {
      c = ' ';
    } else if (c == '%' && !escapedByte(p, c)) {
      cursor = nullptr;
      return false;
    }
    value += c;
  }
  endPair(cursor, p);
  return true;
}

}  // namespace

bool getEscapedPair(const char*& cursor, std::string& name, std::string& value) {
  if (cursor == nullptr) {
    return false;
  }
  std::string newName;
  std::string newValue;
  const char* p = cursor;
  for (; *p != '&' && *p != '\0' && *p != '='; p++) {
    char c = *p;
    if (c == '+') {
      c = ' ';
    } else if (c == '%' && !escapedByte(p, c)) {
      continue;
    }
    newName += c;
  }
  if (*p != '=') {
    endPair(cursor, p);
  } else if (!readValue(cursor, p + 1, newValue)) {
    return false;
  }
  name = std::move(newName);
  value = std::move(newValue);
  return true;
}

bool parseArguments(assocList& list, const char* text) {
  if (text == nullptr || *text == '\0') {
    return true;
  }
  const char* cursor = text;
  while (cursor != nullptr) {
    std::string name;
    std::string value;
    if (!getEscapedPair(cursor, name, value)) {
      return false;
    }
    const auto [entry, isNew] = list.try_emplace(name, value);
    if (!isNew) {
      entry->second += '\x1E';
      entry->second += value;
    }
  }
  return true;
}
