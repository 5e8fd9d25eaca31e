// SPDX-License-Identifier: MIT
// The program of docs/tutorial.md: registers an item, overrides it from its command line,
// raises an event and catches it.
//
//     tutorial [-ITEM=VALUE]...

#include <hoplaunch/configRef.h>
#include <hoplaunch/events.h>
#include <hoplaunch/threading.h>

#include <cstddef>
#include <iostream>
#include <string>

namespace {

configString GREETING("GREETING", "Hello");

class catcher : public eventHandler {
 public:
  catcher() : eventHandler(5) {}

  bool handle(eventReport& event) override {
    std::cout << "caught: " << event << '\n';
    clearAudience(event, AUD_ALL);
    return true;
  }

  const char* name() const override { return "catcher"; }
};

void applyOptions(int count, char** args) {
  editableConfigDB database;
  for (int i = 1; i < count; i++) {
    const std::string option = args[i];
    const std::size_t equals = option.find('=');
    if (option[0] != '-' || equals == std::string::npos) {
      continue;
    }
    const std::string name = option.substr(1, equals - 1);
    if (&database.find(name) == &configDB::dummy()) {
      commonEvent(WARNING, AUD_USER, EC_UNKNOWN_VALUE, name, "applyOptions");
    } else {
      database.set(name, option.substr(equals + 1), DistName(), false);
    }
  }
}

}  // namespace

int main(int count, char** args) {
  ThreadData::instance(false);
  GREETING.value(true);

  const catcher handler;
  applyOptions(count, args);
  threadedConfigDB::refresh();

  std::cout << GREETING.value(true) << ", world!\n";
  return 0;
}
