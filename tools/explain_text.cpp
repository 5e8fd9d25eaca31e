// SPDX-License-Identifier: MIT
#include "explain_text.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "assoclist.h"
#include "bytearray.h"
#include "conversion.h"
#include "find_program.h"
#include "plan.h"
#include "shell_word.h"
#include "uri.h"

namespace {

constexpr std::size_t labelWidth = 12;

void line(std::string& out, std::string label, std::string_view text) {
  label.resize(labelWidth, ' ');
  out += label;
  out += text;
  out += '\n';
}

// A text that does not parse, and below it a caret under the byte where that shows.  Only
// the neighbourhood of that byte is shown of a long text.
void lineWithCaret(std::string& out, const std::string& label, const std::string& text,
                   uriParse parse) {
  constexpr std::size_t before = 48;
  constexpr std::size_t after = 24;
  const std::size_t begin = parse.offset > before ? parse.offset - before : 0;
  const std::size_t end = std::min(text.size(), parse.offset + after);
  std::string front = quote(text.substr(begin, parse.offset - begin));
  front.pop_back();
  front.insert(0, begin > 0 ? "..." : "");
  line(out, label,
       front + quote(text.substr(parse.offset, end - parse.offset)).substr(1) +
           (end < text.size() ? "..." : ""));
  line(out, "", std::string(front.size(), ' ') + "^ expected " + ::text(parse.stop));
}

void describe(std::string& out, const URI& uri) {
  line(out, "scheme", shellWord(uri.scheme()));
  for (const std::string& address : uri.addresses) {
    line(out, "address",
         shellWord(address) + (&address == &uri.addresses.front() ? "" : " (not passed on)"));
  }
  if (uri.keyId >= 0) {
    line(out, "key id", int2decimal(uri.keyId) + " (not passed on)");
  }
  if (!uri.ticket.empty()) {
    line(out, "ticket", uri.hexString());
  }
  for (const auto& [name, value] : uri.parameters) {
    line(out, "parameter", shellWord(name) + " = " + shellWord(value));
  }
}

const char* effect(optionUse use) {
  switch (use) {
    case OU_ITEM:
      return "sets the configuration item";
    case OU_FLAG:
      return "switches the trace flag on";
    case OU_LAUNCH:
      return "steers the launch";
    case OU_NONE:
      break;
  }
  return "is ignored: not a known option";
}

std::string words(char** arguments) {
  std::string result;
  for (char** argument = arguments; *argument != nullptr; argument++) {
    result += argument == arguments ? "" : " ";
    result += shellWord(*argument);
  }
  return result;
}

}  // namespace

std::string asText(const explanation& launch) {
  std::string out;
  const launchPlan& plan = launch.plan;
  const bool decoded = plan.text != launch.given;
  const std::string label = decoded ? "decoded" : "URI";
  if (decoded) {
    line(out, "URI", quote(launch.given));
  }
  if (plan.uri.okay()) {
    line(out, label, quote(plan.text));
    describe(out, plan.uri);
  } else {
    lineWithCaret(out, label, plan.text, launch.stop());
  }
  for (const auto& [key, value] : launch.options) {
    std::string option = "-";
    option += key;
    option += '=';
    option += value;
    line(out, "option", shellWord(option) + " " + effect(launch.use(key)));
  }
  if (!plan.program.empty()) {
    line(out, "program",
         shellWord(plan.program) + (launch.rest["program"].empty()
                                        ? ", registered for the scheme in PROGRAMS"
                                        : ", named by the option program"));
    if (launch.found.skipsFolder) {
      line(out, "PATH",
           std::string("has a folder of 4096 bytes or more, which is skipped") +
               (launch.found.searchesHere ? "; the current folder is searched in its place" : ""));
    }
    line(out, "file", launch.found.path.empty() ? "none" : shellWord(launch.found.path));
    if (!launch.found.shell.empty()) {
      line(out, "shell", launch.found.shell + ", as the file is not a program that Linux knows");
    }
    line(out, "style", text(plan.style));
    line(out, "arguments", words(plan.arguments));
  }
  if (!launch.logError.empty()) {
    line(out, "log", shellWord(launch.rest["log"]) + " " + launch.logError);
  }
  line(out, "launch", launch.launches() ? "yes" : "no: " + launch.obstacle());
  return out;
}
