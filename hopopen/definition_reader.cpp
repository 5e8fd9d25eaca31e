// SPDX-License-Identifier: MIT
#include "definition_reader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "characters.h"
#include "regexpr.h"
#include "scheme.h"
#include "shown.h"
#include "template.h"
#include "toml.h"
#include "toml_read.h"

namespace hopopen {

namespace {

using allowed = bool (*)(std::string_view text);

bool isText(std::string_view text) {
  return !text.empty() && std::none_of(text.begin(), text.end(), isControl);
}

bool isProgram(std::string_view text) {
  return isText(text) && text.find('/') == std::string_view::npos && text != "." && text != "..";
}

bool isVariable(std::string_view text) {
  return !text.empty() && !isDigit(text[0]) && std::all_of(text.begin(), text.end(), isWord);
}

// What leads to the host itself would lead past the tunnel.
constexpr std::initializer_list<placeholder> NOT_IN_TUNNELS = {
    placeholder::PASSWORD, placeholder::VALUE,   placeholder::HOST, placeholder::BRACKETED,
    placeholder::PORT,     placeholder::DISPLAY, placeholder::LINK};

// Why a placeholder is a fault where it is.
const char* whyNot(placeholder what) {
  switch (what) {
    case placeholder::PASSWORD:
      return "a password may be in the environment only, not in an argument and not in a terminal";
    case placeholder::VALUE:
      return "{value} may be in the arguments of a parameter only";
    case placeholder::SOCKET:
      return "{socket} may be in \"tunnelled\" only";
    default:
      return "what names the host leads past the tunnel: \"tunnelled\" has {socket} instead";
  }
}

// Reads one file.  Every fault is noted, and reading goes on.
class definitionReader {
 public:
  definitionReader(const std::string& file, faults& found) : m_file(file), m_found(found) {}

  void read(const toml::table& file, definition& into);
  void complain(const toml::source_position& where, const std::string& message) {
    m_found.push_back({m_file, where.line, where.column, printable(message)});
  }

 private:
  using handler = void (definitionReader::*)(const toml::node& value, definition& into);
  struct entry {
    std::string_view key;
    handler read;
    bool required;
  };
  static const std::array<entry, 15> ENTRIES;

  void complain(const toml::node& where, const std::string& message) {
    complain(where.source().begin, message);
  }
  const toml::table* table(const toml::node& value);
  std::string string(const toml::node& value, allowed isAllowed, const char* what);
  std::vector<std::string> strings(const toml::node& value, allowed isAllowed, const char* what);
  textTemplate text(const toml::node& value, std::initializer_list<placeholder> forbidden);
  element words(const toml::node& value, std::initializer_list<placeholder> forbidden);
  std::vector<element> elements(const toml::node& value,
                                std::initializer_list<placeholder> forbidden);
  std::vector<element> plainElements(const toml::node& value) {
    return elements(value, {placeholder::PASSWORD, placeholder::VALUE, placeholder::SOCKET});
  }

  void readName(const toml::node& value, definition& into) {
    into.title = string(value, isText, "a text without control characters");
  }
  void readSchemes(const toml::node& value, definition& into) {
    into.schemes = strings(value, isScheme, "a scheme in lower case");
    requireOne(value);
  }
  void readPrograms(const toml::node& value, definition& into) {
    into.programs = strings(value, isProgram, "the name of a program, without \"/\"");
    requireOne(value);
  }
  void readPackages(const toml::node& value, definition& into) {
    into.packages = strings(value, isText, "the name of a package");
  }
  void readUnguarded(const toml::node& value, definition& into) {
    into.unguarded = strings(value, isText, "a text without control characters");
  }
  void readUnset(const toml::node& value, definition& into) {
    into.unset = strings(value, isVariable, "the name of an environment variable");
  }
  void readArguments(const toml::node& value, definition& into) {
    into.arguments = plainElements(value);
  }
  void readTunnelled(const toml::node& value, definition& into) {
    into.tunnelled = elements(value, NOT_IN_TUNNELS);
  }
  void readStranger(const toml::node& value, definition& into) {
    into.stranger = plainElements(value);
  }
  void readTrusted(const toml::node& value, definition& into) {
    into.trusted = plainElements(value);
  }
  void requireOne(const toml::node& list);
  void readRank(const toml::node& value, definition& into);
  void readTerminal(const toml::node& value, definition& into);
  void readDefault(const toml::node& value, definition& into);
  void readEnvironment(const toml::node& value, definition& into);
  void readParameters(const toml::node& value, definition& into);
  void readParameter(const toml::key& key, const toml::node& value, definition& into);
  void readAllow(const toml::node& value, parameterRule& into);

  const std::string& m_file;
  faults& m_found;
  bool m_inTerminal = false;
};

constexpr std::array<definitionReader::entry, 15> definitionReader::ENTRIES = {{
    {"name", &definitionReader::readName, true},
    {"schemes", &definitionReader::readSchemes, true},
    {"programs", &definitionReader::readPrograms, true},
    {"arguments", &definitionReader::readArguments, true},
    {"tunnelled", &definitionReader::readTunnelled, false},
    {"rank", &definitionReader::readRank, false},
    {"packages", &definitionReader::readPackages, false},
    {"stranger", &definitionReader::readStranger, false},
    {"trusted", &definitionReader::readTrusted, false},
    {"unguarded", &definitionReader::readUnguarded, false},
    {"unset", &definitionReader::readUnset, false},
    {"terminal", &definitionReader::readTerminal, false},
    {"default", &definitionReader::readDefault, false},
    {"environment", &definitionReader::readEnvironment, false},
    {"parameters", &definitionReader::readParameters, false},
}};

std::string unknownKey(const toml::key& key) {
  return shownWord(key.str()) + " is not a key that is known here";
}

void definitionReader::read(const toml::table& file, definition& into) {
  const auto terminal = file.find("terminal");
  m_inTerminal = terminal != file.end() && terminal->second.value_or(false);
  for (const auto& [key, value] : file) {
    const std::string_view name = key.str();
    const auto known =
        std::find_if(ENTRIES.begin(), ENTRIES.end(), [&](const entry& e) { return e.key == name; });
    if (known == ENTRIES.end()) {
      complain(key.source().begin, unknownKey(key));
    } else {
      (this->*known->read)(value, into);
    }
  }
  for (const entry& e : ENTRIES) {
    if (e.required && !file.contains(e.key)) {
      complain({1, 1}, "the key \"" + std::string(e.key) + "\" is missing");
    }
  }
}

const toml::table* definitionReader::table(const toml::node& value) {
  if (!value.is_table()) {
    complain(value, "this must be a table");
  }
  return value.as_table();
}

std::string definitionReader::string(const toml::node& value, allowed isAllowed, const char* what) {
  const auto text = value.value_exact<std::string>();
  if (!text || !isAllowed(*text)) {
    complain(value, std::string("this must be ") + what);
  }
  return text.value_or("");
}

std::vector<std::string> definitionReader::strings(const toml::node& value, allowed isAllowed,
                                                   const char* what) {
  std::vector<std::string> result;
  const toml::array* const list = value.as_array();
  if (list == nullptr) {
    complain(value, "this must be a list of texts");
    return result;
  }
  for (const toml::node& item : *list) {
    result.push_back(string(item, isAllowed, what));
  }
  return result;
}

void definitionReader::requireOne(const toml::node& list) {
  if (list.is_array() && list.as_array()->empty()) {
    complain(list, "this list must not be empty");
  }
}

textTemplate definitionReader::text(const toml::node& value,
                                    std::initializer_list<placeholder> forbidden) {
  const auto source = value.value_exact<std::string>();
  if (!source || source->find('\0') != std::string::npos) {
    complain(value, "this must be a text without a zero byte");
    return {};
  }
  const auto result = readTemplate(*source);
  if (!result) {
    complain(value, "a brace is alone, or is around a name that is not known here");
    return {};
  }
  const char* last = nullptr;
  for (const placeholder one : forbidden) {
    const char* const why = uses(*result, one) ? whyNot(one) : last;
    if (why != last) {
      complain(value, why);
      last = why;
    }
  }
  return *result;
}

element definitionReader::words(const toml::node& value,
                                std::initializer_list<placeholder> forbidden) {
  const toml::array* const list = value.as_array();
  if (list == nullptr) {
    return {text(value, forbidden)};
  }
  element result;
  requireOne(value);
  for (const toml::node& item : *list) {
    result.push_back(text(item, forbidden));
  }
  return result;
}

std::vector<element> definitionReader::elements(const toml::node& value,
                                                std::initializer_list<placeholder> forbidden) {
  std::vector<element> result;
  const toml::array* const list = value.as_array();
  if (list == nullptr) {
    complain(value, "this must be a list of texts, or of lists of texts");
    return result;
  }
  for (const toml::node& item : *list) {
    result.push_back(words(item, forbidden));
  }
  return result;
}

void definitionReader::readRank(const toml::node& value, definition& into) {
  const auto rank = value.value_exact<std::int64_t>();
  if (!rank) {
    complain(value, "this must be a whole number");
  }
  into.rank = rank.value_or(into.rank);
}

void definitionReader::readTerminal(const toml::node& value, definition& into) {
  const auto terminal = value.value_exact<bool>();
  if (!terminal) {
    complain(value, "this must be true or false");
  }
  into.terminal = terminal.value_or(false);
}

void definitionReader::readDefault(const toml::node& value, definition& into) {
  const toml::table* const values = table(value);
  if (values == nullptr) {
    return;
  }
  for (const auto& [key, item] : *values) {
    const std::int64_t port = item.value_exact<std::int64_t>().value_or(0);
    if (key.str() != "port") {
      complain(key.source().begin, unknownKey(key));
    } else if (port < 1 || port > 65535) {
      complain(item, "this must be a port, a number from 1 to 65535");
    } else {
      into.port = static_cast<std::uint16_t>(port);
    }
  }
}

void definitionReader::readEnvironment(const toml::node& value, definition& into) {
  const toml::table* const values = table(value);
  if (values == nullptr) {
    return;
  }
  for (const auto& [key, item] : *values) {
    if (!isVariable(key.str())) {
      complain(key.source().begin, "this is not the name of an environment variable");
    }
    into.environment.emplace_back(
        key.str(),
        m_inTerminal ? text(item, {placeholder::VALUE, placeholder::SOCKET, placeholder::PASSWORD})
                     : text(item, {placeholder::VALUE, placeholder::SOCKET}));
  }
}

void definitionReader::readAllow(const toml::node& value, parameterRule& into) {
  into.limited = true;
  into.allow = string(value, isText, "a regular expression");
  if (RegExpr(into.allow, true).CompileError() != REGEXPR_OKAY) {
    complain(value, "this is not a regular expression");
  }
}

void definitionReader::readParameter(const toml::key& key, const toml::node& value,
                                     definition& into) {
  parameterRule rule;
  rule.name = key.str();
  if (!isConfigurable(rule.name)) {
    complain(key.source().begin, shownWord(rule.name) + " is not a parameter that is known");
  } else if (into.rule(rule.name) != nullptr) {
    complain(key.source().begin, "this parameter is there already, in other letters");
  }
  const toml::table* const values = table(value);
  if (values == nullptr) {
    return;
  }
  for (const auto& [name, item] : *values) {
    if (name.str() == "arguments") {
      rule.arguments = elements(item, {placeholder::PASSWORD, placeholder::SOCKET});
    } else if (name.str() == "allow") {
      readAllow(item, rule);
    } else {
      complain(name.source().begin, unknownKey(name));
    }
  }
  if (!values->contains("arguments")) {
    complain(key.source().begin, "the key \"arguments\" is missing");
  }
  const bool usesValue =
      std::any_of(rule.arguments.begin(), rule.arguments.end(), [](const element& one) {
        return std::any_of(one.begin(), one.end(),
                           [](const textTemplate& word) { return uses(word, placeholder::VALUE); });
      });
  if (usesValue && !rule.limited) {
    complain(key.source().begin, "with {value}, the key \"allow\" must say which values are taken");
  }
  into.parameters.push_back(rule);
}

void definitionReader::readParameters(const toml::node& value, definition& into) {
  if (const toml::table* const values = table(value)) {
    for (const auto& [key, item] : *values) {
      readParameter(key, item, into);
    }
  }
}

}  // namespace

std::optional<definition> readDefinition(const std::string& name, const std::string& text,
                                         const std::string& file, faults& found) {
  const std::size_t before = found.size();
  definition result;
  result.file = file;
  result.name = name;
  definitionReader toFaults(file, found);
  const toml::parse_result parsed = readToml(text);
  if (parsed) {
    toFaults.read(parsed.table(), result);
    result.inVariables = !result.unset.empty() || !result.environment.empty();
  } else {
    toFaults.complain(parsed.error().source().begin, std::string(parsed.error().description()));
  }
  inOrder(found, before);
  return found.size() == before ? std::optional(result) : std::nullopt;
}

}  // namespace hopopen
