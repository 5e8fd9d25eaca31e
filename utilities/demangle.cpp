// SPDX-License-Identifier: MIT
#include <cstddef>
#include <string>
#include <string_view>

#include "demangler.h"
#include "stack.h"

std::string convertSymbol(std::string_view line) {
  const std::size_t open = line.find("(_Z");
  const std::size_t plus = open != std::string_view::npos ? line.find('+', open) : open;
  if (plus == std::string_view::npos) {
    return std::string(line);
  }
  const std::size_t name = open + 3;
  return std::string(line.substr(0, open + 1)) + demangle(line.substr(name, plus - name)) +
         std::string(line.substr(plus));
}

std::string demangle(std::string_view mangled) {
  return internal::demangler<std::string>(mangled).function();
}
