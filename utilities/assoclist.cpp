#include "assoclist.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <ostream>

#include "ascii.h"
#include "conversion.h"
#include "lasting.h"

namespace {

const std::string& emptyString() {
  static const internal::lasting<std::string> empty;  // may be asked for at exit
  return *empty;
}

// The number of bytes that two texts begin with alike, by the word as far as there are whole
// ones.  Names that are looked up and found are the same as a rule, and compared twice.
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

// --- caseInsensitive -------------------------------------------------------

constexpr caseInsensitive caseInsensitive::instance;

bool caseInsensitive::operator()(const std::string& a, const std::string& b) const {
  const std::size_t n = std::min(a.size(), b.size());
  const char* const left = a.data();
  const char* const right = b.data();
  for (std::size_t i = equalBytes(left, right, n); i < n; i++) {
    if (left[i] != right[i] && lower(left[i]) != lower(right[i])) {
      return static_cast<signed char>(lower(left[i])) < static_cast<signed char>(lower(right[i]));
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
    const auto left = static_cast<signed char>(lower(*a));
    const auto right = static_cast<signed char>(lower(*b));
    if (left != right) {
      return left < right;
    }
  }
  return false;
}

bool caseInsensitive::same(const std::string& a, const std::string& b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(),
                    [](char left, char right) { return lower(left) == lower(right); });
}

bool caseInsensitive::prefix(const std::string& s, const char* p) {
  const std::size_t n = std::strlen(p);
  return s.size() >= n && std::equal(p, p + n, s.begin(), [](char left, char right) {
           return lower(left) == lower(right);
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

// --- assocList -------------------------------------------------------------

assocList::assocList(const assocPair* table) {
  for (; table != nullptr && table->key != nullptr; table++) {
    addValue(table->key, table->value, false);
  }
}

assocList::assocList(const std::vector<std::string>& entries) {
  int unnamed = 0;
  for (const std::string& entry : entries) {
    const std::size_t equals = entry.find('=');
    if (equals == std::string::npos) {
      (*this)[int2decimal(unnamed++)] = entry;
    } else {
      (*this)[entry.substr(0, equals)] = entry.substr(equals + 1);
    }
  }
}

std::string& assocList::operator[](const std::string& key) {
  return map::operator[](key);
}

const std::string& assocList::operator[](const std::string& key) const {
  const auto found = find(key);
  return found != end() ? found->second : emptyString();
}

bool assocList::addValue(const std::string& name, const std::string& value, bool force) {
  if (value.empty() && !force) {
    return false;
  }
  (*this)[name] = value;
  return true;
}

bool assocList::addValue(const char* name, const char* value, bool force) {
  if (name == nullptr || (value == nullptr && !force)) {
    return false;
  }
  (*this)[name] = value != nullptr ? value : "";
  return true;
}

assocList& assocList::operator+=(const assocList& other) {
  for (const auto& [key, value] : other) {
    (*this)[key] = value;
  }
  return *this;
}

assocList assocList::operator+(const assocList& other) const {
  assocList result(*this);
  result += other;
  return result;
}

int assocList::getInt(const std::string& name, int defaultVal) const {
  const int number = decimal2Int((*this)[name]);
  return number < 1 ? defaultVal : number;
}

assocList assocList::filter(const char* const* prefixList, bool exclude) const {
  assocList result;
  for (const auto& [key, value] : *this) {
    if (caseInsensitive::starts(key, prefixList) != exclude) {
      result[key] = value;
    }
  }
  return result;
}

assocList assocList::reverse() const {
  assocList result;
  for (const auto& [key, value] : *this) {
    if (!value.empty()) {
      result[value] = key;
    }
  }
  return result;
}

assocList& assocList::convert(const assocList& mapping) {
  if (&mapping == this) {
    return convert(assocList(mapping));  // the walk must not see its own changes
  }
  for (const auto& [from, to] : mapping) {
    const auto found = find(from);
    if (found == end()) {
      continue;
    }
    const std::string value = std::move(found->second);
    erase(found);
    if (!to.empty()) {
      (*this)[to] = value;
    }
  }
  return *this;
}

std::ostream& assocList::write(std::ostream& out) const {
  out << "{ ";
  for (const auto& [key, value] : *this) {
    out << key << '=' << value << ' ';
  }
  return out << '}';
}

std::ostream& operator<<(std::ostream& out, const assocList& list) {
  return list.write(out);
}
