// SPDX-License-Identifier: MIT
// The orderings of distinguished names.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "../utilities/ascii.h"
#include "DistName.h"
#include "assertion.h"
#include "conversion.h"
#include "segments.h"
#include "stringcomp.h"

namespace {

// Negative, zero or positive.  The first pair of lowered characters that differs
// decides; if there is none, the length does.
int compareText(const std::string& a, const std::string& b) {
  const std::size_t n = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < n; i++) {
    const auto left = static_cast<signed char>(internal::lower(a[i]));
    const auto right = static_cast<signed char>(internal::lower(b[i]));
    if (left != right) {
      return left < right ? -1 : 1;
    }
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

}  // namespace

// --- Hierarchical order ----------------------------------------------------

const char* DistName::sortable() const {
  if (m_sortable == nullptr) {
    makeSortable();
  }
  return m_sortable.get();
}

void DistName::makeSortable() const {
  // The position is a stable diagnostic id that support relies on.
  ASSERT_AT(m_sortable == NULL, "../directory/DNorder", 342);
  m_sortable.reset(new char[m_string.size() + 1]);
  char* out = m_sortable.get();
  const std::string_view name = m_string;
  for (std::size_t end = name.size(); !name.empty();) {
    const std::size_t start = internal::segmentStart(name, end);
    const std::string_view current = internal::trim(name.substr(start, end - start));
    out = std::transform(current.begin(), current.end(), out, internal::lower);
    if (start == 0) {
      break;
    }
    *out++ = '\t';
    end = start - 1;
  }
  *out = '\0';
}

int DistName::compare(const DistName& other) const {
  return std::strcmp(sortable(), other.sortable());
}

// --- Orders by the first value ---------------------------------------------

constexpr displayOrder displayOrder::instance;

bool displayOrder::operator()(const std::string& left, const std::string& right) const {
  return compare(left, right) < 0;
}

int displayOrder::compare(const std::string& left, const std::string& right) const {
  const int names = compareText(DistName::shortName(left), DistName::shortName(right));
  return names != 0 ? names : compareText(left, right);
}

bool displayOrder::same(const std::string& left, const std::string& right) {
  return caseInsensitive::same(DistName::shortName(left), DistName::shortName(right)) &&
         caseInsensitive::same(left, right);
}

constexpr numericOrder numericOrder::instance;

bool numericOrder::operator()(const std::string& left, const std::string& right) const {
  return compare(left, right) < 0;
}

int numericOrder::compare(const std::string& left, const std::string& right) const {
  const std::int64_t difference = std::int64_t{decimal2Int(DistName::shortName(left))} -
                                  decimal2Int(DistName::shortName(right));
  // 2147483647 minus -1 does not fit, but an ordering only needs the sign.
  return static_cast<int>(std::min<std::int64_t>(difference, INT32_MAX));
}

bool numericOrder::same(const std::string& left, const std::string& right) {
  return decimal2Int(DistName::shortName(left)) == decimal2Int(DistName::shortName(right));
}
