// SPDX-License-Identifier: MIT
#include "output_signals.h"

#include <array>
#include <csignal>

namespace {

struct given {
  int signal;
  void (*handler)(int);
};

constinit bool ignored = false;
constinit std::array<given, 2> signals = {{{SIGPIPE, SIG_DFL}, {SIGXFSZ, SIG_DFL}}};

}  // namespace

void ignoreOutputSignals() {
  if (!ignored) {
    for (given& one : signals) {
      one.handler = std::signal(one.signal, SIG_IGN);
    }
    ignored = true;
  }
}

void restoreOutputSignals() {
  if (ignored) {
    for (const given& one : signals) {
      std::signal(one.signal, one.handler);
    }
    ignored = false;
  }
}
