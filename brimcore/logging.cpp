// SPDX-License-Identifier: MIT
// The handler that logs reports.  The configuration says how it writes dates.

#include <ostream>
#include <string>
#include <utility>

#include "configRef.h"
#include "datetime.h"
#include "events.h"
#include "items.h"
#include "threading.h"

// The settings of the date.  They are read before the handler is registered, because
// reading them may raise a report.
struct loggingHandler::stamp {
  std::string format;
  int zone;
};

loggingHandler::loggingHandler(std::ostream& out, int priority, eventAudience audience,
                               const std::string& dateFormat, int timeZone)
    : loggingHandler(out, priority, audience, {getDateFormat(dateFormat), getTimeZone(timeZone)}) {}

loggingHandler::loggingHandler(std::ostream& out, int priority, eventAudience audience,
                               stamp&& date)
    : eventHandler(priority),
      m_output(out),
      m_audience(audience),
      m_dateformat(std::move(date.format)),
      m_timezone(date.zone) {}

bool loggingHandler::handle(eventReport& event) {
  if ((m_audience & event.audience()) != AUD_NULL) {
    clearAudience(event, m_audience);
    const gregorianDate date(DateTime::now(m_timezone));
    const std::string message = buildMessage(event, date.format(m_dateformat));
    const criticalSection section(CS_LOGOUT, false);
    m_output << message << std::flush;
  }
  return event.audience() == AUD_NULL;
}

const char* loggingHandler::name() const {
  return "loggingHandler";
}

std::string getDateFormat(const std::string& format) {
  if (!format.empty()) {
    return format;
  }
  const std::string& configured = internal::LogDateFormat.value(false);
  return configured.empty() ? "%Y%m%dT%H%M%S" : configured;
}

int getTimeZone(int zone) {
  return zone != BAD_TIMEZONE ? zone : DateTime::timezone(internal::LogTimeZone.value(false));
}
