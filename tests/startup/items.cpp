// A program that uses items and nothing else of the library: prints those of the library
// that are there when its own static objects come to life, and once more in `main`.

#include <cstdio>

#include "configRef.h"

namespace {

constexpr const char* NAMES[] = {"defaultLanguage", "LogDateFormat", "LogTimeZone", "MaxShortName",
                                 "PROGRAMS",        "URI_SCHEME",    "VNC_OPTIONS"};

// A second reference of the same name leaves the value alone.
struct early {
  early() {
    for (const char* const name : NAMES) {
      std::printf("%s %s\n", name, configString(name, "").value(false).c_str());
    }
  }
};
const early printed;

const configString items[] = {{NAMES[0], ""}, {NAMES[1], ""}, {NAMES[2], ""}, {NAMES[3], ""},
                              {NAMES[4], ""}, {NAMES[5], ""}, {NAMES[6], ""}};

}  // namespace

int main() {
  int present = 0;
  for (const configString& item : items) {
    present += item.value(false).empty() ? 0 : 1;
  }
  std::printf("in main: %d\n", present);
}
