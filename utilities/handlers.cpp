// SPDX-License-Identifier: MIT
// The handlers of reports and the maps that they are in.

#include <algorithm>
#include <cstdint>
#include <locale>
#include <sstream>
#include <string>

#include "datetime.h"
#include "events.h"
#include "handler_walk.h"
#include "lasting.h"
#include "processes.h"
#include "stack.h"
#include "standard_error.h"
#include "startup.h"
#include "threading.h"
#include "trace.h"
#include "trace_flags.h"

// --- Handler maps ----------------------------------------------------------

ThreadedEventHandlerList& ThreadedEventHandlerList::theInstance() {
  static internal::lasting<ThreadedEventHandlerList> instance(
      [] { return ThreadedEventHandlerList(); });
  return *instance;
}

EventHandlerMap& ThreadedEventHandlerList::startUpMap() {
  static internal::lasting<EventHandlerMap> map;
  return *map;
}

EventHandlerMap& ThreadedEventHandlerList::local() {
  ThreadedDataObject* const object = theInstance().data(false);
  return object != nullptr ? static_cast<EventHandlerMap&>(*object) : startUpMap();
}

ThreadedDataObject* ThreadedEventHandlerList::create() const {
  return new EventHandlerMap;
}

const char* ThreadedEventHandlerList::name() const {
  return "ThreadedEventHandlerList";
}

// --- eventHandler ----------------------------------------------------------

// These are casts of addresses, so they are set before any code runs.
traceFlag& eventHandler::reportThread = reinterpret_cast<traceFlag&>(internal::reportThreadFlag);
traceFlag& eventHandler::reportStack = reinterpret_cast<traceFlag&>(internal::reportStackFlag);

namespace {

// Reports may be raised from here on, and the slot exists before any thread data.
struct starter {
  starter() { storingHandler::theInstance(); }
};
[[gnu::init_priority(internal::START_ITEMS), gnu::used]] const starter standardHandler;

bool erase(handlerMap& map, const eventHandler* handler) {
  const auto found = std::find_if(map.begin(), map.end(),
                                  [handler](const auto& entry) { return entry.second == handler; });
  if (found == map.end()) {
    return false;
  }
  map.erase(found);
  return true;
}

}  // namespace

eventHandler::eventHandler(int priority) {
  ThreadedEventHandlerList::local().theMap.insert({priority, this});
}

eventHandler::~eventHandler() {
  internal::handlerWalk::forget(this);
  // A handler of the start-up map may be destroyed while a thread's map is the current
  // one.  The reports at exit must not find it.
  if (!erase(ThreadedEventHandlerList::local().theMap, this)) {
    erase(ThreadedEventHandlerList::startUpMap().theMap, this);
  }
}

void eventHandler::changeSeverity(eventReport& event, eventSeverity severity) {
  event.m_severity = severity;
}

void eventHandler::clearAudience(eventReport& event, eventAudience served) {
  event.m_audience = event.m_audience & ~served;
}

std::string eventHandler::buildMessage(const eventReport& event, const std::string& date) {
  std::ostringstream message;
  message.imbue(std::locale::classic());
  if (reportThread) {
    message << thisThreadId() << '-';
  }
  message << date << ": " << event << '\n';
  if (reportStack && static_cast<std::uint32_t>(event.severity()) + 2 > reportStack.level()) {
    message << stack();
  }
  return message.str();
}

// --- stderrHandler ---------------------------------------------------------

stderrHandler::stderrHandler(int priority, eventAudience audience)
    : eventHandler(priority), m_audience(audience) {}

bool stderrHandler::handle(eventReport& event) {
  if ((m_audience & event.audience()) != AUD_NULL) {
    clearAudience(event, m_audience);
    const std::string message =
        buildMessage(event, DateTime::now(PRECISE_TIME).format(DS_ISO8601P));
    const criticalSection section(CS_STDOUT, false);
    internal::standardError() << message << std::flush;
  }
  return event.audience() == AUD_NULL;
}

const char* stderrHandler::name() const {
  return "stderrHandler";
}

// --- storingHandler --------------------------------------------------------

storingHandler::storingHandler(int priority, eventAudience audience, eventSeverity severity)
    : eventHandler(priority), m_audience(audience), m_minSeverity(severity) {}

bool storingHandler::handle(eventReport& event) {
  if ((m_audience & event.audience()) != AUD_NULL) {
    clearAudience(event, m_audience);
    // The handler claims milder reports, too, but does not keep them.
    if (event.severity() >= m_minSeverity) {
      m_output += buildMessage(event, DateTime::now(0).format(DS_ISO8601));
    }
  }
  return event.audience() == AUD_NULL;
}

const char* storingHandler::name() const {
  return "storingHandler";
}

std::string storingHandler::str() const {
  return m_output;
}

storingHandler& storingHandler::theInstance() {
  static constexpr int PRIORITY = 10;
  static internal::lasting<storingHandler> instance(PRIORITY, AUD_ALL, WARNING);
  handlerMap& map = ThreadedEventHandlerList::local().theMap;
  const auto [first, last] = map.equal_range(PRIORITY);
  if (std::none_of(first, last, [](const auto& entry) { return entry.second == &*instance; })) {
    map.insert({PRIORITY, &*instance});
  }
  return *instance;
}

// --- ignoreHandler ---------------------------------------------------------

ignoreHandler::ignoreHandler(int priority, eventSeverity severity, eventAudience audience)
    : eventHandler(priority), m_severity(severity), m_audience(audience) {}

bool ignoreHandler::handle(eventReport& event) {
  if (event.severity() <= m_severity) {
    clearAudience(event, m_audience);
  }
  return event.audience() == AUD_NULL;
}

const char* ignoreHandler::name() const {
  return "ignoreHandler";
}
