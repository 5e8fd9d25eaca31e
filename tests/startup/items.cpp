// SPDX-License-Identifier: MIT
// A program that uses only items of the library.  It prints the library's items that exist
// when its own static objects are created, and once more in `main`.

#include <cstdio>
#include <deque>

#include "configRef.h"
#include "registered.h"

namespace {

// A second reference of the same name leaves the value alone.
struct early {
  early() {
    for (const registered::item& each : registered::items()) {
      std::printf("%s %s\n", each.name, configString(each.name, "").value(false).c_str());
    }
  }
};
const early printed;

// configString cannot be moved.
struct references {
  std::deque<configString> items;
  references() {
    for (const registered::item& each : registered::items()) items.emplace_back(each.name, "");
  }
};
const references all;

}  // namespace

int main() {
  int present = 0;
  for (const configString& item : all.items) {
    present += item.value(false).empty() ? 0 : 1;
  }
  std::printf("in main: %d\n", present);
}
