// SPDX-License-Identifier: MIT
// A library that a program loads and unloads.  Its declarations are in the tables of the
// one library that both use.
#include "language.h"
#include "threading.h"

namespace {

int* counter = nullptr;

const languageString greeting("greeting", "a greeting that is on the heap", "plugin");
const languageString sameKeyword("GREETING", "another greeting", "Plugin");
const languageString farewell("farewell", "goodbye", "plugin");

class pluginLanguage : public language {
 public:
  pluginLanguage() : language("Esperanto") { phrases()["plugin"] = {"saluton", "adiau"}; }
};
const pluginLanguage esperanto;

struct pluginObject : ThreadedDataObject {
  pluginObject() = default;
  pluginObject(const pluginObject&) = delete;
  pluginObject& operator=(const pluginObject&) = delete;
  ~pluginObject() override { ++*counter; }
};

class pluginData : public ThreadedDatatype {
 public:
  ThreadedDataObject* create() const override {
    ++*counter;
    return new pluginObject;
  }
  const char* name() const override { return "pluginData"; }
};
const pluginData slot;

}  // namespace

// Counts the objects that are made, and those that go.
extern "C" void countIn(int* place) {
  counter = place;
}

extern "C" const char* textOfPlugin() {
  return greeting(esperanto).c_str();
}
