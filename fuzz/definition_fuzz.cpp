// SPDX-License-Identifier: MIT
// Definitions of viewers, as users and administrators write them.  For every text:
//
// - There is a definition exactly when there is no fault.  Every fault has the file, a line
//   and a column of the text, and a message of printable ASCII.
// - Reading it again gives the same.
// - A definition has a title, schemes in lower case, programs without a folder and a port
//   that is one.  No password is in an argument, nor anywhere in a terminal.  A value is
//   only in the arguments of a parameter that limits it.  Only parameters that links
//   have are there, each once, and only variables that can be.
// - A definition that is written anew reads the same.
//
// Texts whose expressions could ask for much are left out: users write them, not strangers.

#include "definition_reader.h"

#include <algorithm>
#include <array>

#include "fuzz.h"
#include "link_rules.h"

namespace {

using hopopen::definition;
using hopopen::placeholder;

// --- Writing ---------------------------------------------------------------

// In the order of hopopen::placeholder.
constexpr std::array<std::string_view, 10> PLACEHOLDERS = {
    "user",    "password", "host", "bracketed", "port",
    "tlsport", "display",  "link", "value",     "socket"};

// A string of TOML.
std::string literal(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\' || byte < 0x20 || byte == 0x7F) {
      result += {'\\', 'u', '0', '0', UPPER_HEX[byte / 16], UPPER_HEX[byte % 16]};
    } else {
      result += c;
    }
  }
  return result + '"';
}

std::string source(const hopopen::textTemplate& text) {
  std::string result;
  for (const auto& part : text) {
    if (const auto* what = std::get_if<placeholder>(&part)) {
      result += '{' + std::string(PLACEHOLDERS[static_cast<std::size_t>(*what)]) + '}';
      continue;
    }
    for (const char c : std::get<std::string>(part)) {
      result += c == '{' || c == '}' ? std::string(2, c) : std::string(1, c);
    }
  }
  return literal(result);
}

std::string source(const std::string& text) {
  return literal(text);
}

template <class Item>
std::string source(const std::vector<Item>& items) {
  std::string result = "[";
  for (const Item& item : items) {
    result += source(item) + ", ";
  }
  return result + ']';
}

// A file that says the same as a definition.
std::string written(const definition& what) {
  std::string result =
      "name = " + literal(what.title) + "\nschemes = " + source(what.schemes) +
      "\nprograms = " + source(what.programs) + "\npackages = " + source(what.packages) +
      "\nrank = " + std::to_string(what.rank) + "\nstranger = " + source(what.stranger) +
      "\ntrusted = " + source(what.trusted) +
      (what.tunnelled ? "\ntunnelled = " + source(*what.tunnelled) : "") +
      "\narguments = " + source(what.arguments) + "\nunguarded = " + source(what.unguarded) +
      "\nunset = " + source(what.unset) + "\nterminal = " + (what.terminal ? "true" : "false") +
      '\n';
  if (what.port) {
    result += "default.port = " + std::to_string(*what.port) + '\n';
  }
  result += "[environment]\n";
  for (const auto& [name, value] : what.environment) {
    result += name + " = " + source(value) + '\n';
  }
  for (const auto& rule : what.parameters) {
    result +=
        "[parameters." + literal(rule.name) + "]\narguments = " + source(rule.arguments) + '\n';
    if (rule.limited) {
      result += "allow = " + literal(rule.allow) + '\n';
    }
  }
  return result;
}

// --- Faults ----------------------------------------------------------------

// How many characters a line has.  A byte that continues one does not count.
std::size_t lengthOf(std::string_view line) {
  return static_cast<std::size_t>(std::count_if(line.begin(), line.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

void checkFault(const hopopen::fault& one, std::string_view text) {
  checkSame(one.file, "/a/b.toml", "a fault names its file");
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  check(one.line >= 1 && one.line <= lines, "a fault is on a line of the text", text,
        one.lineOfText());
  for (std::uint32_t line = 1; line < one.line; line++) {
    text.remove_prefix(text.find('\n') + 1);
  }
  // What is missing at the end of a line, and the line's end itself, is after its last character.
  check(one.column >= 1 && one.column <= lengthOf(text.substr(0, text.find('\n'))) + 2,
        "a fault is at a column of the line", text, one.lineOfText());
  check(!one.message.empty() && printable(one.message) && printable(one.lineOfText()),
        "a fault is told in printable ASCII", one.message);
  check(one.message.back() != '.', "a fault ends without a full stop", one.message);
}

// --- Definitions -----------------------------------------------------------

bool has(const hopopen::element& words, placeholder what) {
  return std::any_of(words.begin(), words.end(), [what](const hopopen::textTemplate& word) {
    return std::any_of(word.begin(), word.end(), [what](const auto& part) {
      const auto* placed = std::get_if<placeholder>(&part);
      return placed != nullptr && *placed == what;
    });
  });
}

bool has(const std::vector<hopopen::element>& elements, placeholder what) {
  return std::any_of(elements.begin(), elements.end(),
                     [what](const hopopen::element& one) { return has(one, what); });
}

constexpr std::array<std::string_view, 19> PARAMETERS = {
    "ViewOnly",     "SecurityType",  "ChannelType",     "SshHost",       "SshPort",
    "SshUsername",  "IdHash",        "IdHashAlgorithm", "fingerprint",   "Shared",
    "ColorLevel",   "QualityLevel",  "CompressLevel",   "AutoSelect",    "ConnectionName",
    "desktopwidth", "desktopheight", "audiomode",       "screen mode id"};

void checkRules(const definition& what, std::string_view text) {
  for (std::size_t i = 0; i < what.parameters.size(); i++) {
    const hopopen::parameterRule& rule = what.parameters[i];
    check(std::any_of(PARAMETERS.begin(), PARAMETERS.end(),
                      [&](std::string_view known) { return sameName(rule.name, known); }),
          "a parameter is one of those that links have", text, rule.name);
    for (std::size_t j = 0; j < i; j++) {
      check(!sameName(rule.name, what.parameters[j].name), "a parameter is there once", text);
    }
    check(!has(rule.arguments, placeholder::PASSWORD), "no password is in an argument", text);
    check(!has(rule.arguments, placeholder::SOCKET), "a socket is for tunnels only", text);
    check(rule.limited || !has(rule.arguments, placeholder::VALUE), "a value is limited", text);
    check(what.rule(rule.name) == &rule, "a rule is found by its name", text);
  }
}

void checkDefinition(const definition& what, std::string_view text) {
  check(!what.title.empty(), "there is a title", text);
  check(!what.schemes.empty() && !what.programs.empty(), "there are schemes and programs", text);
  for (const std::string& scheme : what.schemes) {
    check(!scheme.empty() && only(scheme, std::string(LETTERS.substr(26)) + "0123456789+-.") &&
              scheme[0] >= 'a' && what.opens(scheme),
          "schemes are in lower case", text, scheme);
  }
  for (const std::string& program : what.programs) {
    check(
        !program.empty() && program.find_first_of(std::string_view("/\0", 2)) == std::string::npos,
        "programs are names", text, program);
  }
  check(!what.port || *what.port > 0, "a port is none or 1 to 65535", text);
  for (const auto* elements : {&what.arguments, &what.stranger, &what.trusted}) {
    check(!has(*elements, placeholder::PASSWORD), "no password is in an argument", text);
    check(!has(*elements, placeholder::VALUE), "no value is outside of parameters", text);
    check(!has(*elements, placeholder::SOCKET), "a socket is for tunnels only", text);
  }
  if (what.tunnelled) {
    for (const placeholder one :
         {placeholder::HOST, placeholder::BRACKETED, placeholder::PORT, placeholder::DISPLAY,
          placeholder::LINK, placeholder::PASSWORD, placeholder::VALUE}) {
      check(!has(*what.tunnelled, one), "nothing leads past a tunnel", text);
    }
  }
  for (const auto& [name, value] : what.environment) {
    check(!name.empty() && name.find_first_of(std::string_view("=\0", 2)) == std::string::npos,
          "variables have names", text, name);
    check(!has(hopopen::element{value}, placeholder::VALUE) &&
              (!what.terminal || !has(hopopen::element{value}, placeholder::PASSWORD)),
          "no value is in the environment, and no password in that of a terminal", text);
  }
  checkRules(what, text);
}

}  // namespace

void fuzz(std::string_view input) {
  if (!cheapExpressions(input)) {
    return;
  }
  const std::string text(input);
  hopopen::faults found;
  const auto what = hopopen::readDefinition("b", text, "/a/b.toml", found);
  check(what.has_value() == found.empty(), "there is a definition or a fault", text);
  hopopen::faults again;
  const auto copy = hopopen::readDefinition("b", text, "/a/b.toml", again);
  check(copy.has_value() == what.has_value() && again.size() == found.size(),
        "reading again gives the same", text);
  for (std::size_t i = 0; i < found.size(); i++) {
    checkFault(found[i], text);
    checkSame(again[i].lineOfText(), found[i].lineOfText(), "faults are the same again", text);
  }
  if (what) {
    checkDefinition(*what, text);
    const std::string file = written(*what);
    checkSame(written(*copy), file, "reading again gives the same", text);
    const auto anew = hopopen::readDefinition("b", file, "/a/b.toml", again);
    check(anew.has_value(), "the text written anew reads", file,
          again.empty() ? "" : again.front().lineOfText());
    checkSame(written(*anew), file, "the text written anew reads the same", text);
  }
}
