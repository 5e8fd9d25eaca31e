// SPDX-License-Identifier: MIT
// Form-encoded arguments, for every text up to its first NUL byte:
//
// - Reading pairs moves on within the text and comes to its end.
// - A text is malformed exactly when, between two "&", what is after the first "="
//   has another "=", or a "%" without two hexadecimal digits.
// - A pair that fails leaves name and value as they were.
// - A list has the pairs in front of the first malformed one, all of them when there is
//   none: each name with its first value, further ones joined to it by the byte 30.
// - A list that is encoded with `URIescape` parses to itself.
// - Adding a text to a list is the same as parsing it after the text that made the list.

#include "conversion.h"
#include "fuzz.h"
#include "html_escape.h"

namespace {

bool isHex(char c) {
  return hexDigit(static_cast<signed char>(c)) >= 0;
}

bool wellFormedPair(const std::string& pair) {
  const std::size_t equals = pair.find('=');
  if (equals == pair.npos) {
    return true;
  }
  const std::string value = pair.substr(equals + 1);
  for (std::size_t i = 0; i < value.size(); i++) {
    if (value[i] == '=' || (value[i] == '%' && (i + 2 >= value.size() || !isHex(value[i + 1]) ||
                                                !isHex(value[i + 2])))) {
      return false;
    }
  }
  return true;
}

bool wellFormed(const std::string& text) {
  for (const std::string& pair : stringToVector(text, '&')) {
    if (!wellFormedPair(pair)) {
      return false;
    }
  }
  return true;
}

// The list that the pairs of a text make.
assocList collected(const std::string& text) {
  assocList list;
  const char* cursor = text.c_str();
  const char* const end = cursor + text.size();
  while (cursor != nullptr) {
    const char* const start = cursor;
    std::string name = "former name";
    std::string value = "former value";
    if (!getEscapedPair(cursor, name, value)) {
      checkSame(name, "former name", "a failed pair leaves the name", text);
      checkSame(value, "former value", "a failed pair leaves the value", text);
      break;
    }
    check(cursor == nullptr || (cursor > start && cursor <= end), "reading a pair moves on", text);
    const auto found = list.find(name);
    if (found == list.end()) {
      list[name] = value;
    } else {
      found->second += '\x1E' + value;
    }
  }
  return list;
}

std::string encoded(const assocList& list) {
  std::string result;
  for (const auto& [name, value] : list) {
    result += result.empty() ? "" : "&";
    result += URIescape(name) + '=' + URIescape(value);
  }
  return result;
}

}  // namespace

void fuzz(std::string_view input) {
  const std::string text(input.substr(0, input.find('\0')));
  assocList list;
  const bool parsed = parseArguments(list, text.c_str());
  check(parsed == wellFormed(text), "exactly malformed texts fail", text);
  check(text.empty() ? list.empty() : list == collected(text), "a list has the pairs of the text",
        text, encoded(list));

  const std::string again = encoded(list);
  assocList copy;
  check(parseArguments(copy, again.c_str()) && copy == list, "an encoded list parses to itself",
        again);

  if (parsed && !list.empty()) {
    assocList twice = list;
    assocList joined;
    check(parseArguments(twice, text.c_str()) &&
              parseArguments(joined, (text + '&' + text).c_str()) && twice == joined,
          "a text is added after what is in the list", text);
  }
}
