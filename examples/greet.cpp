// SPDX-License-Identifier: MIT
// A command-line tool whose options override its configuration items and switch trace
// flags on, as the launcher's do.
//
//     greet [-KEY=VALUE | -KEY VALUE]... NAME...
//
// A key that names an item (in any letter case) sets it for this run; one that names a
// trace flag (letter case counts) switches the flag on; any other is refused.

#include <hoplaunch/assoclist.h>
#include <hoplaunch/configRef.h>
#include <hoplaunch/processes.h>
#include <hoplaunch/threading.h>
#include <hoplaunch/trace.h>

#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

// Static objects register before `main`.
configString GREETING("GREETING", "Hello");
configInt TIMES("TIMES", 1);
const char* const defaultTitles[] = {"Ada=Countess", "Grace=Admiral", nullptr};
configArray TITLES("TITLES", defaultTitles);
traceFlag TRACE("greet", 0);

struct commandLine {
  std::vector<std::string> names;
  assocList options;
  bool okay = true;

  commandLine(int count, char** args) {
    for (int i = 1; i < count; i++) {
      const char* const arg = args[i];
      const char* const equals = std::strchr(arg, '=');
      if (*arg != '-') {
        names.emplace_back(arg);
      } else if (equals != nullptr) {
        options[std::string(arg + 1, equals)] = equals + 1;
      } else if (++i < count) {
        options[arg + 1] = args[i];
      } else {
        okay = false;
      }
    }
  }
};

// The item is looked up before it is set: setting a name that does not exist makes an
// item of it.
bool apply(const assocList& options) {
  editableConfigDB database;  // a private copy, published at the end of the scope
  bool allKnown = true;
  for (const auto& [key, value] : options) {
    if (&database.find(key) != &configDB::dummy()) {
      database.set(key, value, DistName(), false);
    } else if (!traceFlag::set(key, 1)) {
      std::cerr << "unknown option " << key << '\n';
      allKnown = false;
    }
  }
  return allKnown;
}

void greet(const std::string& name) {
  const assocList titles = TITLES.list();
  const std::string& title = titles[name];
  if (TRACE) {
    const criticalSection section(CS_LOGOUT, false);
    traceFlag::out() << Thread::threadId() << " greet: title \"" << title << '"' << std::endl;
  }
  for (int i = TIMES; i > 0; i--) {
    std::cout << GREETING.value(true) << ' ' << title << (title.empty() ? "" : " ") << name << '\n';
  }
}

}  // namespace

int main(int count, char** args) {
  const commandLine line(count, args);
  if (!line.okay || line.names.empty()) {
    std::cerr << "Usage: greet [-KEY=VALUE | -KEY VALUE]... NAME...\n";
    return 2;
  }
  semaphoreSet(false);          // sections that are drawn first outlive the thread data
  ThreadData::instance(false);  // nothing is published before there is thread data
  GREETING.value(true);         // the first read publishes the defaults as version 0
  if (!apply(line.options)) {
    return 2;
  }
  threadedConfigDB::refresh();  // moves this thread on from version 0 to what was set
  for (const std::string& name : line.names) {
    greet(name);
  }
  return 0;
}
