// SPDX-License-Identifier: MIT
#include "assoclist.h"

#include <cstddef>
#include <ostream>
#include <utility>

#include "conversion.h"
#include "empty_string.h"

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
  return found != end() ? found->second : internal::emptyString();
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
