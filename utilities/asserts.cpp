// SPDX-License-Identifier: MIT
#include "asserts.h"

#include <cstdlib>
#include <ostream>

#include "conversion.h"
#include "threading.h"

assertEvent::assertEvent(const std::string& description, const char* filename, int line)
    : eventReport(FATAL, AUD_ALL, 0, description,
                  std::string(filename) + " @ " + int2decimal(line)) {}

assertEvent::~assertEvent() {
  report();
}

const char* assertEvent::domain() const {
  return "assert";
}

std::string assertEvent::codeToText(int) const {
  return "assert failure";
}

std::ostream& assertEvent::write(std::ostream& out) const {
  eventReport::write(out);
  return out << std::endl << m_stack << std::endl;
}

void assertionFailed(const char* expression, const char* filename, int line) {
  std::string source(filename);
  const std::size_t dot = source.rfind('.');
  if (dot != std::string::npos && source.find('/', dot) == std::string::npos) {
    source.resize(dot);
  }
  { assertEvent(expression, source.c_str(), line); }
  semaphoreClose();  // an abort does not do this
  std::abort();
}
