// SPDX-License-Identifier: MIT
#include "stringcomp.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "ascii.h"

namespace {

// The number of equal bytes at the beginning of two texts.  Whole words are compared at once:
// a lookup that succeeds mostly compares equal names, and does so twice.
std::size_t equalBytes(const char* a, const char* b, std::size_t size) {
  std::size_t result = 0;
  for (std::uint64_t left, right; size - result >= sizeof left; result += sizeof left) {
    std::memcpy(&left, a + result, sizeof left);
    std::memcpy(&right, b + result, sizeof right);
    if (left != right) {
      if constexpr (std::endian::native == std::endian::little) {
        return result + static_cast<std::size_t>(std::countr_zero(left ^ right)) / 8;
      }
      break;
    }
  }
  while (result < size && a[result] == b[result]) {
    result++;
  }
  return result;
}

}  // namespace

constexpr caseInsensitive caseInsensitive::instance;

bool caseInsensitive::operator()(const std::string& a, const std::string& b) const {
  const std::size_t n = std::min(a.size(), b.size());
  const char* const left = a.data();
  const char* const right = b.data();
  for (std::size_t i = equalBytes(left, right, n); i < n; i++) {
    if (left[i] != right[i] && internal::lower(left[i]) != internal::lower(right[i])) {
      return static_cast<signed char>(internal::lower(left[i])) <
             static_cast<signed char>(internal::lower(right[i]));
    }
  }
  return a.size() < b.size();
}

bool caseInsensitive::operator()(const char* a, const char* b) const {
  if (b == nullptr) {
    return false;
  }
  if (a == nullptr) {
    return true;
  }
  for (; *b != '\0'; a++, b++) {
    if (*a == '\0') {
      return true;
    }
    const auto left = static_cast<signed char>(internal::lower(*a));
    const auto right = static_cast<signed char>(internal::lower(*b));
    if (left != right) {
      return left < right;
    }
  }
  return false;
}

bool caseInsensitive::same(const std::string& a, const std::string& b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](char left, char right) {
           return internal::lower(left) == internal::lower(right);
         });
}

bool caseInsensitive::prefix(const std::string& s, const char* p) {
  const std::size_t n = std::strlen(p);
  return s.size() >= n && std::equal(p, p + n, s.begin(), [](char left, char right) {
           return internal::lower(left) == internal::lower(right);
         });
}

bool caseInsensitive::starts(const std::string& s, const char* const* list) {
  for (; list != nullptr && *list != nullptr; list++) {
    if (prefix(s, *list)) {
      return true;
    }
  }
  return false;
}

bool caseInsensitive::contains(const std::string& s, const std::vector<std::string>& list) {
  return std::any_of(list.begin(), list.end(), [&s](const std::string& x) { return same(s, x); });
}

bool caseInsensitive::contains(const std::string& s, const char* const* list) {
  for (; list != nullptr && *list != nullptr; list++) {
    if (same(s, *list)) {
      return true;
    }
  }
  return false;
}
