// SPDX-License-Identifier: MIT
// The association list: builds it from pairs, and looks up every key.

#include <absl/container/btree_map.h>
#include <strings.h>

#include <map>

#include "assoclist.h"
#include "library.h"

namespace {

struct before {
  bool operator()(const std::string& a, const std::string& b) const {
    return strcasecmp(a.c_str(), b.c_str()) < 0;
  }
};

// Keys that are not in their order.
std::vector<std::string> keys(std::size_t count) {
  std::vector<std::string> result;
  for (std::size_t i = 0; i < count; i++) {
    result.push_back("Key" + std::to_string(i * 7919 % count));
  }
  return result;
}

template <class List>
List built(const std::vector<std::string>& names) {
  List result;
  for (const std::string& name : names) {
    result[name] = "value";
  }
  return result;
}

template <class List>
void addList(const char* library) {
  const std::vector<std::size_t> sizes = {10, 1000};
  add("association list, build", library, sizes,
      [](std::size_t count) { return [names = keys(count)] { return built<List>(names); }; });
  add("association list, look up", library, sizes, [](std::size_t count) {
    return [names = keys(count), list = built<List>(keys(count))] {
      std::size_t found = 0;
      for (const std::string& name : names) {
        found += list.find(name)->second.size();
      }
      return found;
    };
  });
}

}  // namespace

void addListBenchmarks() {
  addList<assocList>("hoplaunch");
  addList<std::map<std::string, std::string, before>>("std::map, strcasecmp");
  addList<absl::btree_map<std::string, std::string, before>>("Abseil btree_map");
}
