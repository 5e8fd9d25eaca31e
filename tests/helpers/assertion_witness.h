// A handler that shows failed assertions, for tests of what aborts.
#pragma once

#include <sys/resource.h>

#include <iostream>

#include "events.h"
#include "threading.h"

/// Lets an expected abort of this process leave no core file.
inline void leaveNoCoreFile() {
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
}

/// Writes a line of what every report carries to standard error.  It stands
/// before the storing handler, which would claim the report.
class assertionWitness : public eventHandler {
 public:
  assertionWitness() : eventHandler(1) { leaveNoCoreFile(); }

  bool handle(eventReport& event) override {
    std::cerr << "severity=" << text(event.severity()) << " domain=" << event.domain()
              << " code=" << event.codeText() << " expression=<" << event.qualifier() << "> at <"
              << event.operation() << ">" << std::endl;
    return true;
  }

  const char* name() const override { return "assertionWitness"; }
};

/// Creates the semaphore set in this process, which removes it at exit.  A child
/// that a signal ends would leave a set of its own behind.
inline void ownTheSemaphores() {
  semaphoreSet(false);
}
