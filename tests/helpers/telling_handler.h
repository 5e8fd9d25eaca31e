// A handler that tells on standard output what reports it sees.
#pragma once

#include <unistd.h>

#include <cstdio>

#include "events.h"

/// Stands before the library's own storing handler and claims every report.
///
///     commonEvent 6, severity 2, audience 31: light-weight threads | Thread::createT()
class tellingHandler : public eventHandler {
 public:
  tellingHandler() : eventHandler(5) {}
  bool handle(eventReport& event) override {
    dprintf(STDOUT_FILENO, "%s %d, severity %d, audience %d: %s | %s\n", event.domain(),
            event.code(), static_cast<int>(event.severity()), static_cast<int>(event.audience()),
            event.qualifier().c_str(), event.operation().c_str());
    return true;
  }
  const char* name() const override { return "tellingHandler"; }
};
