// SPDX-License-Identifier: MIT
// Reports of the operating system's errors, and to its log.

#include "events.h"

#include <syslog.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <locale>
#include <sstream>
#include <string>

#include "../c_locale.h"

// --- OSevent ---------------------------------------------------------------

OSevent::OSevent(eventSeverity severity, eventAudience audience, int code,
                 const std::string& description, const std::string& operation)
    : eventReport(severity, audience, code, description, operation) {}

OSevent::OSevent(eventSeverity severity, eventAudience audience, const std::string& description,
                 const std::string& operation)
    : OSevent(severity, audience, errno, description, operation) {}

OSevent::~OSevent() {
  report();
}

const char* OSevent::domain() const {
  return "O/S";
}

std::string OSevent::codeToText(int code) const {
  const internal::inCLocale locale;
  char buffer[256] = "";
  const char* message = strerror_r(code, buffer, sizeof buffer);
  if (message == nullptr) {
    message = buffer;
  } else if (reinterpret_cast<std::uintptr_t>(message) == UINTPTR_MAX ||
             std::strcmp(message, "Unknown error") == 0) {
    return eventReport::codeToText(code);
  }
  return message;
}

// --- systemLogHandler ------------------------------------------------------

int priority(eventSeverity severity) {
  switch (severity) {
    case SUCCESS:
      return LOG_INFO;
    case WARNING:
      return LOG_WARNING;
    case FAILURE:
      return LOG_ERR;
    case SEVERE:
      return LOG_CRIT;
    case FATAL:
      return LOG_ALERT;
  }
  return LOG_DEBUG;
}

systemLogHandler::systemLogHandler(int priority, eventAudience audience)
    : eventHandler(priority), m_audience(audience) {}

bool systemLogHandler::handle(eventReport& event) {
  if ((m_audience & event.audience()) != AUD_NULL) {
    clearAudience(event, m_audience);
    std::ostringstream message;
    message.imbue(std::locale::classic());
    message << event;
    const std::string text = message.str();
    // The text is the format itself: readers of these records rely on it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
    syslog(::priority(event.severity()), text.c_str());
#pragma GCC diagnostic pop
  }
  return event.audience() == AUD_NULL;
}

const char* systemLogHandler::name() const {
  return "systemLogHandler";
}
