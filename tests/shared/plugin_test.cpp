// SPDX-License-Identifier: MIT
// A library that was loaded and unloaded leaves nothing behind that is read later.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "configRef.h"
#include "language.h"
#include "threading.h"

namespace {

configString someItem("someItem", "a value");

class plugin {
 public:
  plugin() : m_handle(dlopen(PLUGIN, RTLD_NOW | RTLD_LOCAL)) {
    EXPECT_NE(m_handle, nullptr) << dlerror();
    function<void (*)(int*)>("countIn")(&counter);
  }
  plugin(const plugin&) = delete;
  plugin& operator=(const plugin&) = delete;
  ~plugin() { unload(); }

  void unload() {
    if (m_handle != nullptr) {
      EXPECT_EQ(dlclose(m_handle), 0);
      m_handle = nullptr;
      EXPECT_EQ(dlopen(PLUGIN, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it is still there";
    }
  }

  std::string text() { return function<const char* (*)()>("textOfPlugin")(); }

  int counter = 0;

 private:
  template <class Function>
  Function function(const char* name) {
    return reinterpret_cast<Function>(dlsym(m_handle, name));
  }

  void* m_handle;
};

std::string languages() {
  std::string result;
  for (const auto& [name, entry] : language::list()) {
    result += name + ' ';
  }
  return result;
}

// Reads the configuration, which builds the thread data and the vectors of texts.
void expectTheItem() {
  ThreadData::instance(false);
  EXPECT_EQ(someItem.value(true), "a value");
}

TEST(Plugin, UnloadedBeforeAnythingIsReadLeavesNothing) {
  plugin loaded;
  loaded.unload();
  expectTheItem();
  EXPECT_EQ(loaded.counter, 0);
  EXPECT_EQ(languages(), "");
  EXPECT_EQ(language::Default().phrase("plugin", 0), "<string vector not found>");
  EXPECT_EQ(language::find("Esperanto").name(), "BAD");
}

TEST(Plugin, UnloadedAfterItWasUsedLeavesItsTextsOnly) {
  plugin loaded;
  expectTheItem();
  EXPECT_EQ(loaded.counter, 1);
  EXPECT_EQ(loaded.text(), "adiau") << "the second of its vector, as \"farewell\" comes first";
  EXPECT_EQ(languages(), "Esperanto ");
  loaded.unload();
  EXPECT_EQ(loaded.counter, 2);
  EXPECT_EQ(languages(), "");
  EXPECT_EQ(language::find("Esperanto").name(), "BAD");
  EXPECT_EQ(language::Default().phrase("plugin", 1), "a greeting that is on the heap");
  languageString::finalise();
  EXPECT_EQ(language::Default().phrase("plugin", 0), "goodbye");
  expectTheItem();
}

TEST(Plugin, MayBeLoadedTwiceBeforeAnythingIsRead) {
  plugin first;
  first.unload();
  plugin second;
  expectTheItem();
  EXPECT_EQ(second.counter, 1);
  EXPECT_EQ(second.text(), "adiau");
  second.unload();
  EXPECT_EQ(second.counter, 2);
  EXPECT_EQ(first.counter, 0);
}

}  // namespace
