// Handlers and reports that tests look into.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "events.h"

/// What a handler saw of a report.
struct seenReport {
  std::string written;
  std::string domain;
  eventSeverity severity;
  eventAudience audience;
  int code;
  std::string qualifier;
  std::string operation;
  std::vector<std::string> parameters;
};

inline seenReport look(const eventReport& event) {
  std::ostringstream written;
  written << event;
  return {written.str(), event.domain(),    event.severity(),  event.audience(),
          event.code(),  event.qualifier(), event.operation(), event.parameters()};
}

/// Keeps what it sees, and claims all reports or none.
class eventProbe : public eventHandler {
 public:
  explicit eventProbe(int priority, bool claims = true)
      : eventHandler(priority), m_claims(claims) {}
  bool handle(eventReport& event) override {
    seen.push_back(look(event));
    return m_claims;
  }
  const char* name() const override { return "eventProbe"; }

  using eventHandler::buildMessage;
  using eventHandler::changeSeverity;
  using eventHandler::clearAudience;

  std::vector<seenReport> seen;

 private:
  bool m_claims;
};

/// A report with nothing but what the base gives.  It is not reported by its
/// destructor, so it can be handed to one handler only.
class bareEvent : public eventReport {
 public:
  bareEvent(eventSeverity severity, eventAudience audience, int code = 0,
            const std::string& qualifier = "what", const std::string& operation = "")
      : eventReport(severity, audience, code, qualifier, operation) {}
  const char* domain() const override { return "bare"; }
};
