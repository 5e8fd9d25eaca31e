// SPDX-License-Identifier: MIT
#include "json.h"

#include <map>
#include <nlohmann/json.hpp>

namespace door {

using nlohmann::ordered_json;

Json Json::parse(const std::string& text) {
  return Json(std::make_shared<const ordered_json>(ordered_json::parse(text)));
}

Json Json::object() {
  return Json(std::make_shared<const ordered_json>(ordered_json::object()));
}

Json Json::operator[](const std::string& name) const {
  return Json({m_value, &m_value->at(name)});
}

Json Json::operator[](std::size_t index) const {
  return Json({m_value, &m_value->at(index)});
}

bool Json::is_null() const {
  return m_value->is_null();
}

bool Json::is_string() const {
  return m_value->is_string();
}

std::size_t Json::size() const {
  return m_value->size();
}

template <class T>
T Json::get() const {
  return m_value->get<T>();
}
template bool Json::get() const;
template std::string Json::get() const;
template std::vector<std::string> Json::get() const;
template std::map<std::string, std::string> Json::get() const;

std::string Json::dump(bool ascii) const {
  return m_value->dump(-1, ' ', ascii);
}

std::vector<std::pair<std::string, Json>> Json::items() const {
  std::vector<std::pair<std::string, Json>> result;
  for (const auto& [name, value] : m_value->items()) {
    result.emplace_back(name, Json({m_value, &value}));
  }
  return result;
}

bool operator==(const Json& left, const Json& right) {
  return *left.m_value == *right.m_value;
}

bool operator==(const Json& left, std::string_view right) {
  return left.is_string() && left.get<std::string>() == right;
}

bool Json::isBool(bool value) const {
  return *m_value == value;
}

bool Json::isNumber(int value) const {
  return *m_value == value;
}

std::ostream& operator<<(std::ostream& out, const Json& value) {
  return out << value.dump();
}

}  // namespace door
