// SPDX-License-Identifier: MIT
#include "firefox_handler.h"

#include "json.h"

namespace hopopen {

namespace {

enum class action { SAVE, USE_PROGRAM, STAY_INSIDE, OTHER };

// A number in a profile, a word in a policy.
action actionOf(const jsonData& handler) {
  const jsonData* const value = memberOf(handler, {"action"});
  if (value == nullptr) {
    return action::OTHER;
  }
  if (*value == 0 || *value == "saveToDisk") {
    return action::SAVE;
  }
  if (*value == 2 || *value == "useHelperApp") {
    return action::USE_PROGRAM;
  }
  return *value == 3 ? action::STAY_INSIDE : action::OTHER;
}

std::string textOf(const jsonData& value, const char* name) {
  const jsonData* const member = memberOf(value, {name});
  return member != nullptr && member->is_string() ? member->get<std::string>() : "";
}

// The preferred program is the first of the list.
std::optional<std::string> otherProgram(const jsonData& handler) {
  const jsonData* const handlers = memberOf(handler, {"handlers"});
  if (handlers == nullptr || !handlers->is_array() || handlers->empty()) {
    return {};
  }
  const jsonData& first = handlers->front();
  const std::string path = textOf(first, "path");
  if (path.substr(path.rfind('/') + 1) == "hopopen") {
    return {};
  }
  const std::string other = path.empty() ? textOf(first, "uriTemplate") : path;
  return other.empty() ? std::nullopt : std::optional(other);
}

}  // namespace

std::optional<std::string> otherHandler(const jsonData& handler) {
  const jsonData* const ask = memberOf(handler, {"ask"});
  if (ask != nullptr && *ask == true) {
    return {};
  }
  switch (actionOf(handler)) {
    case action::SAVE:
      return "a file";
    case action::STAY_INSIDE:
      return "Firefox itself";
    case action::USE_PROGRAM:
      return otherProgram(handler);
    default:
      return {};
  }
}

}  // namespace hopopen
