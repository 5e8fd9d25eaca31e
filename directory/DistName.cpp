// SPDX-License-Identifier: MIT
// Distinguished names: their parts, their text, and names made from others.

#include "DistName.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "../utilities/ascii.h"
#include "assertion.h"
#include "conversion.h"
#include "events.h"
#include "segments.h"

namespace {

constexpr std::size_t npos = std::string_view::npos;

std::string joined(const std::vector<std::string_view>& pieces, char separator) {
  std::string result;
  for (const std::string_view& piece : pieces) {
    if (&piece != &pieces.front()) {
      result += separator;
    }
    result += piece;
  }
  return result;
}

bool sameText(std::string_view a, std::string_view b) {
  return caseInsensitive::same(std::string(a), std::string(b));
}

}  // namespace

// --- Construction ----------------------------------------------------------

DistName::DistName(const char* dn) : m_string(dn != nullptr ? dn : "") {}

DistName::DistName(const char* dn, int length)
    : m_string(dn != nullptr ? dn : "",
               dn != nullptr ? static_cast<std::size_t>(std::max(length, 0)) : 0) {}

DistName::DistName(const std::string& text, DNconStyle style) {
  if (style != DOMAIN) {
    m_string = text;
    if (style != SIMPLE) {
      commonEvent(SEVERE, AUD_DEVEL | AUD_AUDIT, EC_UNKNOWN_VALUE,
                  "DNconStyle: " + int2decimal(style), "DistName::DistName");
    }
    return;
  }
  m_string = "DC=";
  for (const char c : text) {
    if (c == '.') {
      m_string += ",DC=";
    } else {
      m_string += c;
    }
  }
}

DistName::DistName(const DistName& other) : m_string(other.m_string) {
  if (other.m_sortable != nullptr) {
    m_sortable.reset(copyString(other.m_sortable.get()));
  }
}

DistName& DistName::operator=(const DistName& other) {
  m_string = other.m_string;
  m_sortable.reset();
  return *this;
}

DistName::~DistName() = default;

DistName DistName::operator+(const DistName& other) const {
  return *this + other.m_string;
}

DistName DistName::operator+(const std::string& other) const {
  return DistName(m_string + other, SIMPLE);
}

DistName DistName::operator+(const char* other) const {
  return DistName(m_string + (other != nullptr ? other : ""), SIMPLE);
}

DistName DistName::operator+(char other) const {
  return DistName(m_string + other, SIMPLE);
}

void DistName::resize(std::size_t size) {
  m_string.resize(size);
  m_sortable.reset();
}

void DistName::clear() {
  m_string.clear();
  m_sortable.reset();
}

// --- Segments and parts ----------------------------------------------------

unsigned int DistName::segments(const std::string& dn) {
  if (dn.empty()) {
    return 0;
  }
  unsigned int count = 1;
  for (std::size_t comma = internal::nextComma(dn, 0); comma < dn.size();
       comma = internal::nextComma(dn, comma)) {
    count++;
  }
  return count;
}

std::string DistName::parent(const std::string& dn) {
  const std::size_t comma = internal::nextComma(dn, 0);
  return comma < dn.size()
             ? std::string(internal::trimFront(std::string_view(dn).substr(comma + 1)))
             : std::string();
}

std::string DistName::firstKey(const std::string& dn) {
  const std::size_t equals = dn.find('=');
  return equals != npos ? dn.substr(0, equals) : std::string();
}

std::string DistName::shortName(const std::string& dn) {
  const std::size_t equals = dn.find('=');
  if (equals == npos) {
    return std::string();
  }
  const std::string_view rest = internal::trimFront(std::string_view(dn).substr(equals + 1));
  return unescape(std::string(internal::trimBack(rest.substr(0, internal::nextComma(rest, 0)))));
}

std::string DistName::extractId(const std::string& dn, const std::string& keyword, extractMode mode,
                                char separator) {
  std::vector<std::string_view> found;
  std::string_view rest = dn;
  for (bool first = true; !rest.empty(); first = false) {
    const internal::segment current = internal::nextSegment(rest);
    if (!current.okay) {
      break;
    }
    if (!sameText(current.key, keyword)) {
      if (mode == ALL_UNTIL || (mode == PATH_UNTIL && !first)) {
        found.push_back(current.value);
      }
      continue;
    }
    switch (mode) {
      case SINGLE:
        return std::string(current.value);
      case FORWARD:
      case REVERSE:
        found.push_back(current.value);
        break;
      case PATH_UNTIL:
      case ALL_UNTIL:
        return joined(found, separator);
      default:
        // The position is a stable diagnostic id that support relies on.
        ASSERT_AT(false, "../directory/DNorder", 426);
    }
  }
  if (mode == REVERSE) {
    std::reverse(found.begin(), found.end());
  }
  return joined(found, separator);
}

namespace {

// A segment's value as a part of a path.  A "/" is escaped.  Only the escapes of "/"
// and of the backslash stay.
std::string pathValue(std::string_view value) {
  std::string result;
  for (std::size_t i = 0; i < value.size(); i++) {
    const char c = value[i];
    if (c == '/') {
      result += "\\/";
    } else if (c != '\\') {
      result += c;
    } else if (++i < value.size()) {
      if (value[i] == '/' || value[i] == '\\') {
        result += '\\';
      }
      result += value[i];
    }
  }
  return result;
}

bool domainComponent(std::string_view key) {
  return key.size() == 2 && internal::lower(key[0]) == 'd' && internal::lower(key[1]) == 'c';
}

}  // namespace

std::string DistName::canonicalName() const {
  if (m_string.empty() || m_string.back() == '\\') {
    return std::string();
  }
  const std::string_view name = m_string;
  std::vector<std::string_view> domain;
  std::string path;
  bool inDomain = true;
  std::size_t end = name.size();
  for (;;) {
    const std::size_t start = internal::segmentStart(name, end);
    const std::string_view current = name.substr(start, end - start);
    const std::size_t equals = current.find('=');
    if (equals != npos) {
      const std::string_view value = current.substr(equals + 1);
      inDomain = inDomain && domainComponent(current.substr(0, equals));
      if (inDomain) {
        domain.push_back(value);
      } else {
        path += '/';
        path += pathValue(value);
      }
    }
    if (start == 0) {
      break;
    }
    end = start - 1;
  }
  std::reverse(domain.begin(), domain.end());
  return joined(domain, '.') + path;
}

DistName DistName::rename(const std::string& newValue) const {
  const std::size_t equals = m_string.find('=');
  if (equals == npos) {
    return *this;
  }
  return DistName(
      m_string.substr(0, equals + 1) + newValue + m_string.substr(internal::nextComma(m_string, 0)),
      SIMPLE);
}

DistName DistName::newName(const criterion& acceptable, int limit, unsigned int maxLen) const {
  if (acceptable(*this)) {
    return *this;
  }
  int suffix = 0;
  const std::string keyAndEquals = firstKey() + "=";
  const std::string base = trimSuffix(shortName(), &suffix);
  const std::string above = parent(m_string);
  const std::int64_t last = limit > 0 ? std::int64_t{suffix} + limit : 2000000000;
  for (std::int64_t number = std::int64_t{suffix} + 1; number <= last; number++) {
    std::string text = keyAndEquals;
    text += addSuffix(base, static_cast<unsigned int>(number), maxLen);
    text += ',';
    text += above;
    const DistName candidate(text, SIMPLE);
    if (acceptable(candidate)) {
      return candidate;
    }
  }
  return DistName();
}

bool DistName::nameOkay(const std::string& text) {
  return validUTF8(text, true);
}

// --- Escaping --------------------------------------------------------------

std::string DistName::escape(const std::string& text) {
  std::string result;
  result.reserve(text.size() + 5);
  for (std::size_t i = 0; i < text.size(); i++) {
    const char c = text[i];
    if (c == '\0') {
      result += "\\00";
      continue;
    }
    if (std::strchr(",+\"\\;<=>", c) != nullptr || (c == '#' && i == 0) ||
        (c == ' ' && (i == 0 || i + 1 == text.size()))) {
      result += '\\';
    }
    result += c;
  }
  return result;
}

std::string DistName::unescape(const std::string& text) {
  std::string result;
  result.reserve(text.size());
  const auto digit = [&text](std::size_t i) {
    return i < text.size() ? internal::hexValue(text[i]) : -1;
  };
  for (std::size_t i = 0; i < text.size(); i++) {
    if (text[i] != '\\') {
      result += text[i];
      continue;
    }
    if (++i == text.size()) {
      break;
    }
    // A digit 0 does not make a pair: stored names rely on "\20" reading as "20".
    if (digit(i) > 0 && digit(i + 1) > 0) {
      result += static_cast<char>(16 * digit(i) + digit(i + 1));
      i++;
    } else {
      result += text[i];
    }
  }
  return result;
}
