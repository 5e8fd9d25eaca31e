// SPDX-License-Identifier: MIT
#include "explain_room.h"

#include <sys/resource.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::uint64_t leastRoom = std::uint64_t{128} << 10;
constexpr std::uint64_t mostRoom = std::uint64_t{6} << 20;
constexpr std::uint64_t pagesOfAString = 32;

std::uint64_t pageSize() {
  return static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

// The size of the kernel's pointers, whatever that of this program's.
std::uint64_t pointerSize() {
  utsname system = {};
  if (uname(&system) == 0 && std::strstr(system.machine, "64") != nullptr) {
    return 8;
  }
  return sizeof(void*);
}

// The strings are at the end of the new stack, in front of one pointer.
std::uint64_t roomOf(rlim_t stack, std::uint64_t pointers) {
  const std::uint64_t quarter = std::clamp<std::uint64_t>(stack / 4, leastRoom, mostRoom);
  const std::uint64_t left = quarter - std::min(quarter, pointers * pointerSize());
  const std::uint64_t pages = std::max<std::uint64_t>(stack / pageSize(), 1);
  return std::min(left, pages * pageSize() - pointerSize());
}

}  // namespace

argumentRoom::argumentRoom(const std::string& path, const std::vector<std::string>& arguments)
    : m_first(arguments.front().size() + 1) {
  std::uint64_t variables = 0;
  while (environ[variables] != nullptr) {
    variables++;
  }
  rlimit stack = {};
  getrlimit(RLIMIT_STACK, &stack);
  m_limit = roomOf(stack.rlim_cur, arguments.size() + variables);
  m_okay = m_limit > 0;
  add(path.size());
  for (std::uint64_t i = 0; i < variables; i++) {
    add(std::strlen(environ[i]));
  }
  for (const std::string& argument : arguments) {
    add(argument.size());
  }
}

void argumentRoom::interpret(const std::string& script, const std::string* argument,
                             const std::string& interpreter) {
  m_taken -= m_first;
  add(script.size());
  if (argument != nullptr) {
    add(argument->size());
  }
  add(interpreter.size());
  m_first = interpreter.size() + 1;
}

void argumentRoom::add(std::size_t length) {
  m_taken += length + 1;
  m_okay = m_okay && length < pagesOfAString * pageSize() && m_taken <= m_limit;
}
