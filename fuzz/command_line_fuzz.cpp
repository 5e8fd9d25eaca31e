// SPDX-License-Identifier: MIT
// The command line down to the planned launch; an input has an argument on each line.
// For every command line:
//
// - Splitting fails only at a last argument that is an option without a value, which the
//   message names; otherwise nothing is written.
// - Positional arguments are those of the command line in its order, without a dash.
// - Written as -key=value, and the positional arguments last, it splits the same.
// - Routing keeps the options of the launch, and values as they are.  An option that it
//   uses up has set its configuration item to the one value, or switched its flag on.
// - The plan is made of the decoded URI.  There are arguments exactly when the URI parses
//   and there is a program: the one that is asked for, or else one that is registered.
// - The first argument is the program's last path component, without a slash or
//   backslash; the first address is the last, except for a port that is passed apart; then
//   comes null.
// - Planning again plans the same.
// - What hopexplain says of it is lines of printable ASCII for people, and for programs
//   JSON in ASCII that holds the URI and the arguments to the byte.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "commandline.h"
#include "configDB.h"
#include "conversion.h"
#include "explain.h"
#include "explain_json.h"
#include "explain_text.h"
#include "fuzz.h"
#include "html_escape.h"
#include "json_reader.h"
#include "plan.h"
#include "session.h"
#include "trace.h"

namespace {

// The configuration before any command line, to go back to after each.
class configuration {
 public:
  configuration() {
    const session begun{assocList()};  // so that there is a database
    const configDB& all = threadedConfigDB::local();
    for (const auto& [name, item] : all.pointer()->map()) {
      m_items.emplace_back(name, all.find(name).all());
    }
  }

  void restore() const {
    {
      editableConfigDB editor;
      for (const auto& [name, values] : m_items) {
        editor.set(name, values, DistName(), false);
      }
    }
    threadedConfigDB::refresh();
    for (const auto& [name, flag] : traceFlag::allFlags()) {
      traceFlag::set(name, 0);
    }
  }

  bool has(const std::string& key) const {
    return std::any_of(m_items.begin(), m_items.end(),
                       [&key](const auto& item) { return caseInsensitive::same(item.first, key); });
  }

 private:
  std::vector<std::pair<std::string, std::vector<std::string>>> m_items;
};

// The output on standard error while it lives.  (The C library lets programs
// exchange the stream.)
class messages {
 public:
  messages() : m_former(stderr) { stderr = open_memstream(&m_text, &m_size); }
  messages(const messages&) = delete;
  messages& operator=(const messages&) = delete;
  ~messages() {
    std::fclose(stderr);
    stderr = m_former;
    std::free(m_text);
  }
  std::string text() const {
    std::fflush(stderr);
    return {m_text, m_size};
  }

 private:
  std::FILE* m_former;
  char* m_text = nullptr;
  std::size_t m_size = 0;
};

struct commandLine {
  bool okay;
  std::string message;
  std::vector<std::string> arguments;
  assocList parameters;
};

commandLine splitLine(std::vector<std::string> line) {
  std::vector<char*> args = {nullptr};  // the command is not looked at
  for (std::string& argument : line) {
    args.push_back(argument.data());
  }
  commandLine result;
  const messages written;
  result.okay =
      split(static_cast<int>(args.size()), args.data(), result.arguments, result.parameters);
  result.message = written.text();
  return result;
}

commandLine checkedSplit(const std::vector<std::string>& line, const std::string& text) {
  commandLine result = splitLine(line);
  if (!result.okay) {
    check(line.back().front() == '-' && line.back().find('=') == std::string::npos,
          "splitting fails at a last option without a value", text);
    checkSame(result.message, "Keyword " + line.back() + " has no value\n", "the message names it");
    return result;
  }
  check(result.message.empty(), "nothing is written", result.message);
  auto next = line.begin();
  for (const std::string& argument : result.arguments) {
    next = std::find(next, line.end(), argument);
    check(next != line.end() && argument.substr(0, 1) != "-",
          "positional arguments are those without a dash, in order", text, argument);
    next++;
  }
  std::vector<std::string> rewritten;
  for (const auto& [key, value] : result.parameters) {
    check(key.find('=') == key.npos, "a key ends at the first =", text, key);
    rewritten.push_back("-" + key + "=" + value);
  }
  rewritten.insert(rewritten.end(), result.arguments.begin(), result.arguments.end());
  const commandLine again = splitLine(rewritten);
  check(again.okay && again.arguments == result.arguments && again.parameters == result.parameters,
        "a rewritten command line splits the same", text);
  return result;
}

void checkRouting(const configuration& items, const assocList& given, const assocList& rest) {
  for (const auto& [key, value] : given) {
    const auto kept = rest.find(key);
    if (kept != rest.end()) {
      checkSame(kept->second, value, "a value is kept as it is", key);
      check(!items.has(key), "an item is used up", key);
    } else if (items.has(key)) {
      const std::vector<std::string>& values = threadedConfigDB::local().find(key).all();
      check(values.size() == 1 && values.front() == value, "an item has the one value", key, value);
    } else {
      check(traceFlag::active(key), "a flag is switched on", key);
    }
  }
  check(rest.size() <= given.size(), "routing adds nothing");
  for (const char* option : {"log", "program", "style", "portArg"}) {
    check(given.count(option) == rest.count(option), "the options of the launch are kept", option);
  }
}

bool registered(const std::string& program) {
  const assocList programs = PROGRAMS.list();
  return std::any_of(programs.begin(), programs.end(),
                     [&program](const auto& entry) { return entry.second == program; });
}

void checkPlan(const std::string& given, const assocList& options) {
  const launchPlan plan(given, options);
  checkSame(plan.text, URIunEscape(given), "the plan is made of the decoded URI");
  check((plan.arguments != nullptr) == (plan.uri.okay() && !plan.program.empty()),
        "there are arguments for a URI and a program", given);
  check((plan.style == AS_SEPARATE) == caseInsensitive::same(options["style"], "separate"),
        "the style is the one asked for", given);
  if (plan.arguments == nullptr) {
    return;
  }
  check(options["program"].empty() ? registered(plan.program) : plan.program == options["program"],
        "the program is asked for or registered", given, plan.program);
  const std::vector<std::string> arguments = vectorOfStrings(plan.arguments);
  const std::string& first = arguments.front();
  check(first.find_first_of("/\\") == first.npos && first.size() <= plan.program.size() &&
            plan.program.compare(plan.program.size() - first.size(), first.size(), first) == 0,
        "the first argument is the end of the program", first, plan.program);
  const std::string& address = plan.uri.addresses.front();
  checkSame(arguments.back(),
            options["portArg"].empty() ? address : address.substr(0, address.rfind(':')),
            "the address is the last argument", given);
  const launchPlan again(given, options);
  check(again.program == plan.program && vectorOfStrings(again.arguments) == arguments,
        "planning again plans the same", given);
}

void checkExplained(const std::string& given, const assocList& options, const assocList& rest) {
  const explanation launch(given, options, rest);
  for (const std::string& line : stringToVector(asText(launch), '\n')) {
    check(printable(line), "people get printable ASCII", line);
  }
  const std::string json = asJSON(launch);
  const Json told = JsonReader::read(json);  // throws unless it is JSON
  checkSame(told["uriBytes"].binary(), given, "JSON has the URI as given", json);
  if (launch.plan.arguments != nullptr) {
    check(told["argumentsBytes"].bytes() == vectorOfStrings(launch.plan.arguments),
          "JSON has the arguments", json);
  }
}

}  // namespace

void fuzz(std::string_view input) {
  static const configuration items;
  const std::string text(input.substr(0, input.find('\0')));
  const commandLine line = checkedSplit(stringToVector(text, '\n'), text);
  // Each trace of this flag stays in memory until the end.
  if (!line.okay || line.arguments.empty() || line.parameters.count("refcount") != 0) {
    return;
  }
  {
    const session applied(line.parameters);
    checkRouting(items, line.parameters, applied.rest());
    checkPlan(line.arguments.front(), applied.rest());
    checkExplained(line.arguments.front(), line.parameters, applied.rest());
  }
  items.restore();
}
