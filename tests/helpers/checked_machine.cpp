// SPDX-License-Identifier: MIT
#include "checked_machine.h"

#include <sstream>

#include "own_root.h"

namespace door {

namespace {

// Each line that does not begin with a blank, with those after it that do.
Strings paragraphs(const std::string& text) {
  Strings result;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("  ") && !result.empty()) {
      result.back() += line + '\n';
    } else {
      result.push_back(line + '\n');
    }
  }
  return result;
}

// "handler vnc" of "ok handler vnc: ...".
std::string nameOf(const std::string& paragraph) {
  const std::size_t start = paragraph.find(' ') + 1;
  return paragraph.substr(start, paragraph.find(':') - start);
}

bool isAmong(const Strings& all, const std::string& one) {
  return std::find(all.begin(), all.end(), one) != all.end();
}

}  // namespace

CheckedMachine::CheckedMachine() {
  plain();
  registered();
  for (const char* const name : {"xdg-open", "notify-send", "x-terminal-emulator"}) {
    program(name);
  }
  fs::create_directories(path("root"));
  m_good = check().out;
}

Outcome CheckedMachine::check(const Strings& options, const Variables& changed,
                              const std::function<void()>& prepare) const {
  Call call;
  call.arguments = {"--check"};
  call.arguments.insert(call.arguments.end(), options.begin(), options.end());
  call.variables = changed;
  call.variables.try_emplace("DISPLAY", ":7");
  call.prepare = [&] {
    enterRoot(path("root"), {HOPOPEN, path("work")});
    prepare();
  };
  Outcome result = Machine::call(call);
  const std::string top = path("work").substr(0, path("work").size() - 5);
  for (std::size_t at = result.out.find(top); at != std::string::npos; at = result.out.find(top)) {
    result.out.replace(at, top.size(), "@");
  }
  return result;
}

std::string CheckedMachine::told(const Variables& changed,
                                 const std::function<void()>& prepare) const {
  const Outcome now = check({}, changed, prepare);
  const Strings before = paragraphs(m_good);
  const Strings after = paragraphs(now.out);
  std::string result;
  Strings names;
  for (const std::string& one : after) {
    result += isAmong(before, one) ? "" : one;
    names.push_back(nameOf(one));
  }
  for (const std::string& one : before) {
    result += isAmong(names, nameOf(one)) ? "" : "gone " + nameOf(one) + '\n';
  }
  return result;
}

}  // namespace door
