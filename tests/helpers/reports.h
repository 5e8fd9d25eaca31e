// SPDX-License-Identifier: MIT
// Handlers that catch reports, and reports that tests hand to handlers.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "events.h"

/// The report on one line: severity/audience domain/code: qualifier | operation.
inline std::string reportLine(const eventReport& event) {
  return std::to_string(static_cast<int>(event.severity())) + "/" +
         std::to_string(static_cast<int>(event.audience())) + " " + event.domain() + "/" +
         std::to_string(event.code()) + ": " + event.qualifier() + " | " + event.operation();
}

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
  std::string line;
};

inline seenReport look(const eventReport& event) {
  std::ostringstream written;
  written << event;
  return {written.str(),     event.domain(),    event.severity(),   event.audience(), event.code(),
          event.qualifier(), event.operation(), event.parameters(), reportLine(event)};
}

/// Keeps what it gets, and claims all reports or none.
class reportCatcher : public eventHandler {
 public:
  explicit reportCatcher(int priority = 1, bool claims = true)
      : eventHandler(priority), m_claims(claims) {}
  bool handle(eventReport& event) override {
    seen.push_back(look(event));
    return m_claims;
  }
  const char* name() const override { return "reportCatcher"; }

  using eventHandler::buildMessage;
  using eventHandler::changeSeverity;
  using eventHandler::clearAudience;

  /// The lines of what came since the last call, which is no longer kept.
  std::vector<std::string> take() {
    std::vector<std::string> result;
    for (const seenReport& each : seen) {
      result.push_back(each.line);
    }
    seen.clear();
    return result;
  }

  std::vector<seenReport> seen;

 private:
  bool m_claims;
};

/// How `reportTeller` writes a report.
using reportForm = std::string (*)(const eventReport&);

/// "commonEvent 6, severity 2, audience 31: light-weight threads | Thread::createT()"
inline std::string inNumbers(const eventReport& event) {
  return std::string(event.domain()) + " " + std::to_string(event.code()) + ", severity " +
         std::to_string(static_cast<int>(event.severity())) + ", audience " +
         std::to_string(static_cast<int>(event.audience())) + ": " + event.qualifier() + " | " +
         event.operation();
}

/// "<4/31 assert/0: false | ../utilities/uri @ 7>"
inline std::string inAngles(const eventReport& event) {
  return "<" + reportLine(event) + ">";
}

/// "severity=Fatal domain=assert code=assert failure expression=<false> at <uri @ 7>"
inline std::string inWords(const eventReport& event) {
  return std::string("severity=") + text(event.severity()) + " domain=" + event.domain() +
         " code=" + event.codeText() + " expression=<" + event.qualifier() + "> at <" +
         event.operation() + ">";
}

/// Writes a line of each report to a descriptor, and claims all or none: for processes that
/// tests start.  It comes before the library's own handlers.
class reportTeller : public eventHandler {
 public:
  explicit reportTeller(int descriptor = STDOUT_FILENO, reportForm form = inNumbers,
                        bool claims = true)
      : eventHandler(1), m_descriptor(descriptor), m_form(form), m_claims(claims) {}
  bool handle(eventReport& event) override {
    dprintf(m_descriptor, "%s\n", m_form(event).c_str());
    return m_claims;
  }
  const char* name() const override { return "reportTeller"; }

 private:
  int m_descriptor;
  reportForm m_form;
  bool m_claims;
};

/// A report with only the members of the base class.  Its destructor does not report
/// it, so it can be handed to one handler only.
class bareEvent : public eventReport {
 public:
  bareEvent(eventSeverity severity, eventAudience audience, int code = 0,
            const std::string& qualifier = "what", const std::string& operation = "")
      : eventReport(severity, audience, code, qualifier, operation) {}
  const char* domain() const override { return "bare"; }
};
