#include "events.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <locale>
#include <ostream>

#include "asserts.h"
#include "configRef.h"
#include "conversion.h"
#include "datetime.h"
#include "handler_walk.h"
#include "lasting.h"
#include "processes.h"
#include "standard_error.h"
#include "startup.h"

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
  storingHandler::theInstance();  // some handler stands ready before the first report
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
  storingHandler::theInstance();  // the thread may have come by a map of its own since
  handlerWalk(ThreadedEventHandlerList::local().theMap).offer(*this);
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

// --- assertEvent -----------------------------------------------------------

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
  semaphoreClose();  // which an abort does not do
  std::abort();
}

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

namespace {

[[gnu::init_priority(START_FLAGS)]] internal::lasting<traceFlag> threadFlag("reportThread", 0);
[[gnu::init_priority(START_FLAGS)]] internal::lasting<traceFlag> stackFlag("reportStack", 0);

}  // namespace

// Casts of addresses, so that they are there before any code runs.
traceFlag& eventHandler::reportThread = reinterpret_cast<traceFlag&>(threadFlag);
traceFlag& eventHandler::reportStack = reinterpret_cast<traceFlag&>(stackFlag);

namespace {

[[gnu::init_priority(START_ITEMS)]] configString LogDateFormat("LogDateFormat",
                                                               "[%f %i %d %H:%M:%S %Y] ");
[[gnu::init_priority(START_ITEMS)]] configString LogTimeZone("LogTimeZone", "localtime");

// Reports may be raised from here on, and the slot exists before any thread data.
struct starter {
  starter() { storingHandler::theInstance(); }
};
[[gnu::init_priority(START_ITEMS), gnu::used]] const starter standardHandler;

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
  handlerWalk::forget(this);
  // A handler of the start-up map may go while a thread's map is the current one,
  // and must not be left behind for the reports at exit.
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
    standardError() << message << std::flush;
  }
  return event.audience() == AUD_NULL;
}

const char* stderrHandler::name() const {
  return "stderrHandler";
}

// --- loggingHandler --------------------------------------------------------

// The date's settings, read before the handler is registered: reading them may
// itself raise a report.
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
  const std::string& configured = LogDateFormat.value(false);
  return configured.empty() ? "%Y%m%dT%H%M%S" : configured;
}

int getTimeZone(int zone) {
  return zone != BAD_TIMEZONE ? zone : DateTime::timezone(LogTimeZone.value(false));
}

// --- storingHandler --------------------------------------------------------

storingHandler::storingHandler(int priority, eventAudience audience, eventSeverity severity)
    : eventHandler(priority), m_audience(audience), m_minSeverity(severity) {}

bool storingHandler::handle(eventReport& event) {
  if ((m_audience & event.audience()) != AUD_NULL) {
    clearAudience(event, m_audience);
    // What is too mild to be kept is claimed all the same.
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
