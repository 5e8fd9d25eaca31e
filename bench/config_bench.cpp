// SPDX-License-Identifier: MIT
// The configuration: reading an item with a type, and publishing an edit.

#include <glib.h>

#include <map>
#include <memory>

#include "configRef.h"
#include "library.h"

namespace {

configString TEXT("benchText", "some text");
configInt NUMBER("benchNumber", 4711);

std::string itemName(std::size_t number) {
  return "item" + std::to_string(number);
}

// Makes the database one of `size` items.
void fillDatabase(std::size_t size) {
  ThreadData::instance(false);
  TEXT.value(false);  // publishes version 0
  {
    editableConfigDB database;
    for (std::size_t number = 0; database.remove(itemName(number)); number++) {
    }
    for (std::size_t number = 0; database.size() < size; number++) {
      database.set(itemName(number), "value", DistName(), false);
    }
  }
  threadedConfigDB::refresh();
}

using bareMap = std::map<std::string, std::string>;

// As many items as the database holds, including the two that are read.
bareMap mapOf(std::size_t size) {
  bareMap result = {{TEXT.name(), "some text"}, {NUMBER.name(), "4711"}};
  for (std::size_t number = 0; result.size() < size; number++) {
    result[itemName(number)] = "value";
  }
  return result;
}

std::shared_ptr<GKeyFile> keyFileOf(std::size_t size) {
  const std::shared_ptr<GKeyFile> result(g_key_file_new(), &g_key_file_free);
  for (const auto& [name, value] : mapOf(size)) {
    g_key_file_set_string(result.get(), "items", name.c_str(), value.c_str());
  }
  return result;
}

}  // namespace

void addConfigBenchmarks() {
  const std::vector<std::size_t> readSizes = {16, 1000};
  const char* task = "configuration, read a text";
  add(task, "hoplaunch", readSizes, [](std::size_t size) {
    fillDatabase(size);
    return [] { return TEXT.value(false).data(); };
  });
  add(task, "std::map, bare", readSizes, [](std::size_t size) {
    return [map = mapOf(size)] { return map.find(TEXT.name())->second.data(); };
  });
  add(task, "GKeyFile", readSizes, [](std::size_t size) {
    return [file = keyFileOf(size)] {
      return std::unique_ptr<char, decltype(&g_free)>(
          g_key_file_get_string(file.get(), "items", TEXT.name().c_str(), nullptr), &g_free);
    };
  });

  task = "configuration, read a number";
  add(task, "hoplaunch", readSizes, [](std::size_t size) {
    fillDatabase(size);
    return [] { return NUMBER.value(false); };
  });
  add(task, "std::map, bare", readSizes, [](std::size_t size) {
    return [map = mapOf(size)] { return map.find(NUMBER.name())->second.data(); };
  });
  add(task, "GKeyFile", readSizes, [](std::size_t size) {
    return [file = keyFileOf(size)] {
      return g_key_file_get_integer(file.get(), "items", NUMBER.name().c_str(), nullptr);
    };
  });

  // The scaling of an edit: the whole map is copied.
  task = "configuration, publish an edit";
  const std::vector<std::size_t> editSizes = {16, 100, 1000, 10000, 100000};
  add(task, "hoplaunch", editSizes, [](std::size_t size) {
    fillDatabase(size);
    return [] {
      { editableConfigDB().set(TEXT.name(), "some text", DistName(), false); }
      threadedConfigDB::refresh();
      return threadedConfigDB::local().version();
    };
  });
  add(task, "std::map, copied", editSizes, [](std::size_t size) {
    return [map = mapOf(size)]() mutable {
      bareMap copy = map;
      copy[TEXT.name()] = "some text";
      map = std::move(copy);
      return map.size();
    };
  });
}
