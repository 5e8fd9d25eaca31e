// SPDX-License-Identifier: MIT
// A program outside the project: shows that the start-up of the library, its templates
// and what a program overrides work however the library was found and linked.

#include <hoplaunch/configDB.h>
#include <hoplaunch/configRef.h>
#include <hoplaunch/events.h>
#include <hoplaunch/threading.h>
#include <hoplaunch/trace.h>
#include <hoplaunch/uri.h>

#include <iostream>

namespace {

configString greeting("greeting", "hello");
traceFlag flag("outside", 0);

// What a static initialiser of the program finds.
const bool flagsBeforeMain = traceFlag::level("refcount") == 0 && traceFlag::level("configDB") == 0;
const std::string itemBeforeMain = URI_SCHEME.value(false);

// Shows the reports that pass by.
class showingHandler : public eventHandler {
 public:
  showingHandler() : eventHandler(1) {}
  bool handle(eventReport& report) override {
    std::cout << "report: " << report << '\n';
    return false;
  }
  const char* name() const override { return "showingHandler"; }
};

void showStartUp() {
  std::cout << "before main: " << (flagsBeforeMain ? "flags" : "no flags") << ", " << itemBeforeMain
            << '\n';
  std::cout << "flags:";
  for (const auto& [name, entry] : traceFlag::allFlags()) {
    std::cout << ' ' << name;
  }
  std::cout << '\n';
}

void showDatabase() {
  ThreadData::instance(false);
  std::cout << "greeting: " << greeting.value(true) << '\n';
  {
    editableConfigDB editor;
    editor.set("Greeting", "good day", DistName(), false);
  }
  threadedConfigDB::refresh();
  std::cout << "overridden: " << greeting.value(true) << '\n';
  const configDB database(RT_READ);
  std::cout << "items:";
  for (const auto& [name, item] : database.pointer()->map()) {
    std::cout << ' ' << name;
  }
  std::cout << '\n';
  std::cout << "one canonical version: " << (database.ptr() == threadedConfigDB::local().ptr())
            << '\n';
  std::cout << "canonical: " << (configDB::getCanonical().ptr() == database.ptr()) << '\n';
  std::cout << "one empty item: " << (&database.find("none") == &configDB::dummy()) << '\n';
}

void showLink() {
  URI link("vnc://localhost:5900/?shared=1");
  std::cout << "viewer:";
  for (char** argument = link.args("viewer", 1, AS_EQUALS, nullptr); *argument != nullptr;
       argument++) {
    std::cout << ' ' << *argument;
  }
  std::cout << '\n';
}

void showReport() {
  const showingHandler handler;
  commonEvent(WARNING, AUD_DEVEL, EC_COMMENT, "the program's own words", "main").report();
}

}  // namespace

int main() {
  showStartUp();
  showDatabase();
  showLink();
  showReport();
  std::cout << "root: " << configRef::RootDN().str() << '\n';
  return 0;
}
