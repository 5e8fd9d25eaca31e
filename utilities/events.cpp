// SPDX-License-Identifier: MIT
#include "events.h"

#include <array>
#include <ostream>

#include "conversion.h"
#include "handler_walk.h"

// --- Texts -----------------------------------------------------------------

const char* text(eventSeverity severity) {
  static constexpr std::array<const char*, 5> texts = {"Success", "Warning", "Failure", "Severe",
                                                       "Fatal"};
  const auto index = static_cast<std::size_t>(severity);
  return index < texts.size() ? texts[index] : "<unknown eventSeverity>";
}

std::string text(eventAudience audience) {
  static constexpr std::array<const char*, 6> names = {"User",  "Expert", "Admin",
                                                       "Audit", "Devel",  nullptr};
  std::string result;
  unsigned int bit = 1;
  for (const char* const* name = names.data(); *name != nullptr; name++, bit <<= 1) {
    if ((static_cast<unsigned int>(audience) & bit) == 0) {
      continue;
    }
    if (!result.empty()) {
      result += '/';
    }
    result += *name;
  }
  return result;
}

const char* text(eventCommon code) {
  static constexpr std::array<const char*, 19> texts = {
      "duplicate value",
      "unknown value",
      "value out of range",
      "invalid return value",
      "function reports failure",
      "function unexpectedly returned",
      "function not implemented",
      "?infinite? loop",
      "recursion not valid",
      "bad format",
      "Expected data is not available",
      "Exception caught",
      "Memory allocation failure",
      "comment",
      "Data mis-match",
      "Time-out expired",
      "Access refused",
      "Insufficient space",
      "Bad sequence of operations",
  };
  const auto index = static_cast<std::size_t>(code);
  return index < texts.size() ? texts[index] : "<unknown eventCommon>";
}

// --- eventReport -----------------------------------------------------------

eventReport::eventReport(eventSeverity severity, eventAudience audience, int code,
                         const std::string& qualifier, const std::string& operation)
    : m_severity(severity),
      m_audience(audience),
      m_code(code),
      m_qualifier(qualifier),
      m_operation(operation) {
  storingHandler::theInstance();  // a handler is ready before the first report
}

eventReport::~eventReport() = default;

void eventReport::writeExtras(std::ostream&) const {}

std::string eventReport::codeToText(int code) const {
  return int2decimal(code);
}

std::string eventReport::codeToText(int code, const language&) const {
  return codeToText(code);
}

std::string eventReport::description(const language& lang) const {
  std::string result = std::string(domain()) + "/" + codeToText(m_code, lang);
  if (!m_qualifier.empty()) {
    result += " -- " + m_qualifier;
  }
  return result;
}

std::string eventReport::userMessage(const language& lang) const {
  return std::string(domain()) + "/" + codeToText(m_code, lang);
}

std::ostream& eventReport::write(std::ostream& out) const {
  out << text(m_severity) << ": " << domain() << '/' << codeText() << ' ' << quote(m_qualifier);
  if (!m_parameters.empty()) {
    out << ' ' << m_parameters;
  }
  writeExtras(out);
  if (!m_operation.empty()) {
    out << " | " << m_operation;
  }
  return out;
}

void eventReport::addParameter(const std::string& parameter) {
  m_parameters.push_back(parameter);
}

void eventReport::report() {
  if (m_reported) {
    return;
  }
  m_reported = true;
  storingHandler::theInstance();  // the thread may have its own map by now
  internal::handlerWalk(ThreadedEventHandlerList::local().theMap).offer(*this);
}

std::ostream& operator<<(std::ostream& out, const eventReport& event) {
  return event.write(out);
}

// --- commonEvent -----------------------------------------------------------

commonEvent::commonEvent(eventSeverity severity, eventAudience audience, eventCommon code,
                         const std::string& description, const std::string& operation)
    : eventReport(severity, audience, code, description, operation) {}

commonEvent::~commonEvent() {
  report();
}

const char* commonEvent::domain() const {
  return "commonEvent";
}

std::string commonEvent::codeToText(int code) const {
  return text(static_cast<eventCommon>(code));
}
