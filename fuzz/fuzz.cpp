// SPDX-License-Identifier: MIT
#include "fuzz.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "events.h"
#include "threading.h"

namespace {

// This is not `quote`, because `quote` is under test.
void show(std::string_view value) {
  std::fputs("  \"", stderr);
  for (const char c : value) {
    if (c == '"' || c == '\\') {
      std::fprintf(stderr, "\\%c", c);
    } else if (c >= ' ' && c <= '~') {
      std::fputc(c, stderr);
    } else {
      std::fprintf(stderr, "\\x%02X", static_cast<unsigned int>(static_cast<unsigned char>(c)));
    }
  }
  std::fputs("\"\n", stderr);
}

// Comes before the library's own storing handler, which would keep the text of every
// report for as long as the process lives.  Shows what ends the process.
class claimingHandler : public eventHandler {
 public:
  claimingHandler() : eventHandler(0) {}
  bool handle(eventReport& event) override {
    if (event.severity() == FATAL) {
      event.write(std::cerr);
    }
    return true;
  }
  const char* name() const override { return "claimingHandler"; }
};

void claimReports() {
  ThreadData::instance(false);
  static const claimingHandler handler;
}

}  // namespace

void fail(const char* property, std::string_view a, std::string_view b, std::string_view c) {
  std::fprintf(stderr, "does not hold: %s\n", property);
  show(a);
  show(b);
  show(c);
  std::abort();
}

// The entry that libFuzzer calls, and the corpus test.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  claimReports();
  fuzz({reinterpret_cast<const char*>(data), size});
  return 0;
}
