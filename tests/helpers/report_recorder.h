// Handlers that see every report before the standard ones do.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "events.h"

/// The report on one line: severity/audience domain/code: qualifier | operation.
inline std::string reportLine(const eventReport& event) {
  return std::to_string(static_cast<int>(event.severity())) + "/" +
         std::to_string(static_cast<int>(event.audience())) + " " + event.domain() + "/" +
         std::to_string(event.code()) + ": " + event.qualifier() + " | " + event.operation();
}

/// Keeps the lines of all reports and claims them.
class reportRecorder : public eventHandler {
 public:
  reportRecorder() : eventHandler(1) {}
  bool handle(eventReport& event) override {
    m_lines.push_back(reportLine(event));
    return true;
  }
  const char* name() const override { return "reportRecorder"; }

  /// The lines since the last call.
  std::vector<std::string> take() {
    std::vector<std::string> result;
    result.swap(m_lines);
    return result;
  }

 private:
  std::vector<std::string> m_lines;
};

/// Writes the line of each report to standard error in angle brackets and claims
/// it: for processes that end by an abort.
class reportPrinter : public eventHandler {
 public:
  reportPrinter() : eventHandler(1) {}
  bool handle(eventReport& event) override {
    std::fprintf(stderr, "<%s>\n", reportLine(event).c_str());
    return true;
  }
  const char* name() const override { return "reportPrinter"; }
};
