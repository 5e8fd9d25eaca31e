// SPDX-License-Identifier: MIT
// Reading mangled names.  For every text:
//
// - The reading has its arguments in parentheses, is at most twenty times as long as the
//   name, and nothing after the name's end is looked at.
// - A line of a trace keeps what is before "(_Z" and from the next "+" on, with the
//   reading between; a line without both is left as it is.
//
// For every two identifiers and a built-in type: a plain function and a nested one with
// an argument, a constant reference and a pointer are read as they were declared.

#include "fuzz.h"
#include "stack.h"

namespace {

std::string mangled(const std::string& identifier) {
  return std::to_string(identifier.size()) + identifier;
}

// Digits at the front would belong to the length.
bool isIdentifier(const std::string& text) {
  return !text.empty() && !only(text.substr(0, 1), DIGITS);
}

void checkDeclarations(const std::string& outer, const std::string& inner) {
  static const struct {
    char code;
    const char* name;
  } types[] = {{'a', "signed char"}, {'b', "bool"},         {'c', "char"}, {'d', "double"},
               {'i', "int"},         {'j', "unsigned int"}, {'l', "long"}, {'m', "unsigned long"},
               {'v', "void"},        {'x', "long long"},    {'z', "..."}};
  for (const auto& [code, name] : types) {
    checkSame(demangle(mangled(outer) + code), outer + "(" + name + ")", "a plain function");
    checkSame(demangle("N" + mangled(outer) + mangled(inner) + "E" + code + "RK" + mangled(outer) +
                       "P" + code),
              outer + "::" + inner + "(" + name + ", const " + outer + "&, " + name + "*)",
              "a nested function");
  }
}

void checkLine(const std::string& line) {
  const std::string converted = convertSymbol(line);
  const std::size_t open = line.find("(_Z");
  const std::size_t plus = open == line.npos ? line.npos : line.find('+', open);
  if (plus == line.npos) {
    checkSame(converted, line, "a line without a mangled name is left as it is");
    return;
  }
  checkSame(converted,
            line.substr(0, open + 1) + demangle(line.substr(open + 3, plus - open - 3)) +
                line.substr(plus),
            "the reading replaces the mangled name", line);
}

}  // namespace

void fuzz(std::string_view input) {
  const std::string name = demangle(input);
  check(name.find('(') != name.npos && name.back() == ')', "arguments are in parentheses", input,
        name);
  check(name.size() <= 20 * (input.size() + 1), "a reading is not much longer than the name", input,
        name);
  checkLine(std::string(input));
  checkLine("./program(_Z" + std::string(input) + "+0x10) [0x1234]");
  const auto [outer, inner] = parts<2>(input);
  if (isIdentifier(outer) && isIdentifier(inner)) {
    checkDeclarations(outer, inner);
  }
}
