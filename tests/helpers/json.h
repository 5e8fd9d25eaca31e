// SPDX-License-Identifier: MIT
// JSON that a program printed.  The library that reads it compiles slowly, so only
// json.cpp includes it.
#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace door {

/// A value.  It never changes, and a copy is the same value.
class Json {
 public:
  /// Reads a text.  Members keep their order.  Throws if the text is not JSON.
  static Json parse(const std::string& text);
  /// An object without members.
  static Json object();

  /// A member of an object, or an element of an array.  Throws if there is none.
  Json operator[](const std::string& name) const;
  Json operator[](std::size_t index) const;

  bool is_null() const;
  bool is_string() const;
  std::size_t size() const;

  /// The value as a bool, a std::string, a list of strings, or a map from string to string.
  template <class T>
  T get() const;
  operator std::string() const { return get<std::string>(); }  // NOLINT: so that it reads well

  /// The value as JSON; as pure ASCII if asked for.
  std::string dump(bool ascii = false) const;

  /// The members of an object.
  std::vector<std::pair<std::string, Json>> items() const;

  /// Iterates over the elements of an array; null has none.
  class Iterator {
   public:
    Iterator(const Json& array, std::size_t index) : m_array(&array), m_index(index) {}
    Json operator*() const { return (*m_array)[m_index]; }
    Iterator& operator++() {
      ++m_index;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return m_index != other.m_index; }

   private:
    const Json* m_array;
    std::size_t m_index;
  };
  Iterator begin() const { return {*this, 0}; }
  Iterator end() const { return {*this, size()}; }

  friend bool operator==(const Json& left, const Json& right);
  friend bool operator==(const Json& left, std::string_view right);
  friend bool operator==(const Json& left, std::same_as<bool> auto right) {
    return left.isBool(right);
  }
  friend bool operator==(const Json& left, std::same_as<int> auto right) {
    return left.isNumber(right);
  }
  friend std::ostream& operator<<(std::ostream& out, const Json& value);

 private:
  using Value = std::shared_ptr<const nlohmann::ordered_json>;
  explicit Json(Value value) : m_value(std::move(value)) {}
  bool isBool(bool value) const;
  bool isNumber(int value) const;

  Value m_value;  // shares what was read
};

}  // namespace door
