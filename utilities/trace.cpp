// SPDX-License-Identifier: MIT
#include "trace.h"

#include <map>

#include "conversion.h"
#include "lasting.h"
#include "standard_error.h"
#include "startup.h"
#include "trace_flags.h"  // IWYU pragma: keep

namespace {

// Never destroyed: flags are tested until the process ends.
std::map<std::string, traceFlag*>& registry() {
  static internal::lasting<std::map<std::string, traceFlag*>> flags;
  return *flags;
}

traceFlag* flagNamed(const std::string& name) {
  const auto found = registry().find(name);
  return found != registry().end() ? found->second : nullptr;
}

}  // namespace

namespace internal {

[[gnu::init_priority(START_FLAGS)]] lasting<traceFlag> configDBflag("configDB", 0);
[[gnu::init_priority(START_FLAGS)]] lasting<traceFlag> refcountFlag("refcount", 0);
[[gnu::init_priority(START_FLAGS)]] lasting<traceFlag> reportStackFlag("reportStack", 0);
[[gnu::init_priority(START_FLAGS)]] lasting<traceFlag> reportThreadFlag("reportThread", 0);

}  // namespace internal

std::ostream* traceFlag::c_output = nullptr;

traceFlag::traceFlag(const std::string& name, int level)
    : m_name(registerName(name)), m_level(static_cast<std::uint32_t>(level)) {}

std::string traceFlag::registerName(const std::string& name) {
  if (name.empty()) {
    return name;
  }
  std::string unique = name;
  for (int n = 1; !registry().try_emplace(unique, this).second; n++) {
    unique = name + "-" + int2decimal(n);
  }
  return unique;
}

bool traceFlag::set(const std::string& name, unsigned int value) {
  traceFlag* flag = flagNamed(name);
  if (flag == nullptr) {
    return false;
  }
  flag->m_level = value;
  return true;
}

int traceFlag::level(const std::string& name) {
  const traceFlag* flag = flagNamed(name);
  return flag != nullptr ? static_cast<int>(flag->m_level) : -1;
}

bool traceFlag::active(const std::string& name) {
  const traceFlag* flag = flagNamed(name);
  return flag != nullptr && flag->active();
}

std::vector<std::pair<std::string, traceFlag*>> traceFlag::allFlags() {
  return {registry().begin(), registry().end()};
}

std::ostream& traceFlag::out() {
  if (c_output == nullptr) {
    c_output = &internal::standardError();
  }
  return *c_output;
}
