// SPDX-License-Identifier: MIT
// Event reports and their handlers, in three parts.
//
// *1. Severities, audiences and codes* say how bad an event is, who should see it, and what
// happened, as far as the library has words for it.
//
// *2. Reports.*  Code that meets a failure constructs a report, usually as a temporary; it
// may add parameters; the report is offered once to the handlers, at the latest by its own
// destructor (that of its class: a new class of reports calls `report` in it); then it is
// gone.  So a caller that only constructs a report has reported it.  Reports live on the
// stack of the thread that raised them and are not copied.
//
// The operation is written as it is, line feeds and control bytes included, so one that has
// text from strangers can make lines that look like other reports.
//
// *3. Handlers* decide what happens with reports.  Each thread has a map of handlers by
// priority (threads that have none share the start-up map).  A report is offered in
// ascending priority; a handler that serves some of the report's audiences clears them, and
// the first that answers true ends the walk.  A handler enters the map of the thread that
// constructs it and leaves it when it is destroyed; the map does not own it.
//
// One handler is always there: the storing handler at priority 10, for all audiences.  It
// claims every report before any handler with a larger number; a handler that is to see
// reports needs a priority below 10.
//
// A report never ends the program, nor does it hang: this goes beyond what was promised at
// first.
//
// - What `handle` throws counts as not claimed, and the walk goes on.
// - A report raised inside `handle` skips the handlers that are handling one already, as
//   they would enter themselves again, and no other.
// - A handler may destroy itself or others inside `handle`, and register new ones.  One
//   that is destroyed is not called any more; a new one sees the next report, not the
//   one that is under way.
//
// Reports and handlers may be used before `main`, in a forked child and at exit.
// Once the thread's own map is gone at exit, reports go to the start-up map.  The caller
// ensures two things: a `stderrHandler` or `loggingHandler` that
// serves a report after the sections are gone at exit aborts, and one that serves a
// report raised inside the section it writes under, but not by itself, waits forever.
//
// What is kept here is for one thread of a process only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "threading.h"
#include "trace.h"

#pragma GCC visibility push(default)

class language;

// --- 1. Severities, audiences and codes ------------------------------------

/// How bad an event is; handlers compare severities as numbers.
enum eventSeverity : int { SUCCESS = 0, WARNING = 1, FAILURE = 2, SEVERE = 3, FATAL = 4 };

/// Who should see an event: a set of bits.
enum eventAudience : int {
  AUD_NULL = 0,    ///< nobody
  AUD_OUSER = 1,   ///< ordinary users
  AUD_EXPERT = 2,  ///< users who want to know more
  AUD_ADMIN = 4,   ///< who runs the system
  AUD_AUDIT = 8,   ///< who checks how it is used
  AUD_DEVEL = 16,  ///< who develops it
  AUD_ALL = 31     ///< everybody
};

/// Union, intersection and complement.
constexpr eventAudience operator|(eventAudience a, eventAudience b) {
  return static_cast<eventAudience>(static_cast<int>(a) | static_cast<int>(b));
}
constexpr eventAudience operator&(eventAudience a, eventAudience b) {
  return static_cast<eventAudience>(static_cast<int>(a) & static_cast<int>(b));
}
constexpr eventAudience operator~(eventAudience a) {
  return static_cast<eventAudience>(~static_cast<int>(a));
}

constexpr eventAudience AUD_USER = AUD_OUSER | AUD_EXPERT;  ///< everybody who uses the program
constexpr eventAudience AUD_SYSM = AUD_ADMIN | AUD_AUDIT;   ///< everybody who runs the system

/// The codes of a `commonEvent`.
enum eventCommon : int {
  EC_DUPL_VALUE = 0,
  EC_UNKNOWN_VALUE = 1,
  EC_OUT_OF_RANGE = 2,
  EC_BAD_RETURN_VAL = 3,
  EC_FUNC_FAILED = 4,
  EC_UNEXPECT_RET = 5,
  EC_NOT_IMPL = 6,
  EC_LOOPING = 7,
  EC_RECURSION = 8,
  EC_BAD_FORMAT = 9,
  EC_DATA_MISSING = 10,
  EC_EXCEPT_CAUGHT = 11,
  EC_NO_MEMORY = 12,
  EC_COMMENT = 13,
  EC_DATA_MISMATCH = 14,
  EC_TIMEOUT_EXPIRED = 15,
  EC_ACCESS_REFUSED = 16,
  EC_OVERFLOW = 17,
  EC_BAD_SEQUENCE = 18
};

/// "Success" to "Fatal", "<unknown eventSeverity>" for any other value.
const char* text(eventSeverity severity);
/// The names of the bits of the set joined by "/", for example User/Admin.  Bits
/// above 16 have no name; the empty set gives an empty string.
std::string text(eventAudience audience);
/// The text of a code, "<unknown eventCommon>" for any other value.
const char* text(eventCommon code);

// --- 2. Reports ------------------------------------------------------------

/// A report of one event.
class eventReport {
 public:
  eventReport(const eventReport&) = delete;
  eventReport& operator=(const eventReport&) = delete;
  static void* operator new(std::size_t) = delete;
  static void* operator new[](std::size_t) = delete;

 protected:
  /// `code` belongs to the code space of the class; `qualifier` is free text on
  /// this occurrence; `operation` says what was being done and may be empty.
  eventReport(eventSeverity severity, eventAudience audience, int code,
              const std::string& qualifier, const std::string& operation);

  /// Writes what a class has to add between the parameters and the operation.
  virtual void writeExtras(std::ostream& out) const;

 public:
  /// Does not report.  The destructor of a derived class does, by `report`, while its
  /// domain and its codes are still there.
  virtual ~eventReport();

  /// The name of the code space.
  virtual const char* domain() const = 0;
  /// The text of a code; in the base, its decimal number.
  virtual std::string codeToText(int code) const;
  /// The text of a code in a language; in the base, that of `codeToText(code)`.
  virtual std::string codeToText(int code, const language& lang) const;
  /// Domain, "/" and the code's text, then " -- " and the qualifier if any.
  virtual std::string description(const language& lang) const;
  /// Domain, "/" and the code's text.
  virtual std::string userMessage(const language& lang) const;

  /// Writes the report on one line, without its end.
  ///
  ///     Failure: commonEvent/unknown value "ftp" { "a" "b" } | open
  virtual std::ostream& write(std::ostream& out) const;

  /// How bad it is.
  eventSeverity severity() const { return m_severity; }
  /// The audiences not served yet.
  eventAudience audience() const { return m_audience; }
  /// What happened, in the code space `domain()`.
  int code() const { return m_code; }
  /// The free text on this occurrence.
  const std::string& qualifier() const { return m_qualifier; }
  /// What was being done; may be empty.
  const std::string& operation() const { return m_operation; }
  /// The values added, in that order.
  const std::vector<std::string>& parameters() const { return m_parameters; }

  /// Adds a value to the report.
  void addParameter(const std::string& parameter);
  /// The text of this report's code.
  std::string codeText() const { return codeToText(code()); }

  /// Offers the report to the calling thread's handlers, the first time only.  Throws
  /// nothing that a handler throws.
  void report();

 private:
  friend class eventHandler;

  eventSeverity m_severity;
  eventAudience m_audience;
  const std::int32_t m_code;
  const std::string m_qualifier;
  const std::string m_operation;
  std::vector<std::string> m_parameters;
  bool m_reported = false;
};

/// Calls `write`.
std::ostream& operator<<(std::ostream& out, const eventReport& event);

/// A report with one of the common codes; its domain is "commonEvent".
class commonEvent : public eventReport {
 public:
  /// As `eventReport`; `description` is the qualifier.
  commonEvent(eventSeverity severity, eventAudience audience, eventCommon code,
              const std::string& description, const std::string& operation);
  ~commonEvent() override;
  using eventReport::codeToText;
  const char* domain() const override;
  std::string codeToText(int code) const override;
};

/// A report of a failed system call; codes are values of `errno`, the domain is
/// "O/S".
class OSevent : public eventReport {
 public:
  /// As `eventReport`, with the error number `code`; `description` is the qualifier.
  OSevent(eventSeverity severity, eventAudience audience, int code, const std::string& description,
          const std::string& operation);
  /// The same with the current `errno` as the code.
  OSevent(eventSeverity severity, eventAudience audience, const std::string& description,
          const std::string& operation);
  ~OSevent() override;
  using eventReport::codeToText;
  const char* domain() const override;
  /// The C library's message for an error number, or the number in decimal when
  /// it has none.
  std::string codeToText(int code) const override;
};

// --- 3. Handlers -----------------------------------------------------------

class eventHandler;

/// Handlers in ascending priority; those of equal priority in the order in which
/// they were registered.  Does not own the handlers.
using handlerMap = std::multimap<int, eventHandler*>;

/// One thread's handlers.
class EventHandlerMap : public ThreadedDataObject {
 public:
  handlerMap theMap;  ///< those registered by the thread
};

/// The per-thread slot of the handler maps.
class ThreadedEventHandlerList : private ThreadedDatatype {
 public:
  /// The one slot object, created on first use and never destroyed.
  static ThreadedEventHandlerList& theInstance();

  /// The calling thread's map if it has one, otherwise the start-up map.
  static EventHandlerMap& local();

  ThreadedDataObject* create() const override;
  const char* name() const override;

 private:
  friend class eventHandler;

  ThreadedEventHandlerList() = default;
  static EventHandlerMap& startUpMap();
};

/// Decides what happens with reports.
///
/// Constructing a handler registers it.  A derived class must be able to handle
/// reports from then on, so it works out whatever might itself raise a report
/// before it constructs this base.
class eventHandler {
 public:
  eventHandler(const eventHandler&) = delete;
  eventHandler& operator=(const eventHandler&) = delete;

  /// Takes the handler out of the map: of its registrations in the calling
  /// thread's map the first, or else the first in the start-up map.
  virtual ~eventHandler();

  /// Handles a report.  True claims it and ends the walk; an exception counts as false.
  /// May destroy and register handlers, this one included.
  virtual bool handle(eventReport& event) = 0;
  /// The class's name.
  virtual const char* name() const = 0;

  /// Trace flag "reportThread": puts the thread's id before each message.
  static traceFlag& reportThread;
  /// Trace flag "reportStack": adds a stack trace to each message whose severity
  /// plus 2 is greater than the flag's level.
  static traceFlag& reportStack;

 protected:
  /// Registers the handler in the calling thread's map.
  explicit eventHandler(int priority);

  /// Makes the report one of another severity, for the handlers that come later.
  static void changeSeverity(eventReport& event, eventSeverity severity);
  /// Removes the given bits from the report's audience.
  static void clearAudience(eventReport& event, eventAudience served);
  /// The message that handlers print: date, ": ", the report and a line end, with
  /// what the two trace flags add.
  static std::string buildMessage(const eventReport& event, const std::string& date);
};

/// Writes reports to standard error, with the UTC time to the microsecond, inside
/// `CS_STDOUT`.
class stderrHandler : public eventHandler {
 public:
  /// Serves all reports for `audience`.
  stderrHandler(int priority, eventAudience audience);
  bool handle(eventReport& event) override;
  const char* name() const override;

 private:
  eventAudience m_audience;
};

/// Writes reports to any stream, with a date of a chosen pattern, inside `CS_LOGOUT`.
class loggingHandler : public eventHandler {
 public:
  /// `out` is not owned and must outlive the handler.  `dateFormat` is a pattern
  /// of `gregorianDate::format`, `timeZone` a zone of `DateTime::now`; an empty
  /// pattern and `BAD_TIMEZONE` stand for the configuration items `LogDateFormat`
  /// and `LogTimeZone`, read now.
  loggingHandler(std::ostream& out, int priority, eventAudience audience,
                 const std::string& dateFormat, int timeZone);
  bool handle(eventReport& event) override;
  const char* name() const override;

 private:
  struct stamp;
  loggingHandler(std::ostream& out, int priority, eventAudience audience, stamp&& date);

  std::ostream& m_output;
  eventAudience m_audience;
  std::string m_dateformat;
  int m_timezone;
};

/// Keeps the text of reports in memory: every one, so the text grows for as long as the
/// handler lives.
class storingHandler : public eventHandler {
 public:
  /// Serves all reports for `audience`, and keeps those from `severity` up.
  storingHandler(int priority, eventAudience audience, eventSeverity severity);
  bool handle(eventReport& event) override;
  const char* name() const override;

  /// The text collected so far.
  std::string str() const;

  /// The process's own storing handler: priority 10, all audiences, from
  /// `WARNING` up; never destroyed.  Asking for it ensures that it is in the calling
  /// thread's current map, once.
  static storingHandler& theInstance();

 private:
  std::string m_output;
  eventAudience m_audience;
  eventSeverity m_minSeverity;
};

/// Swallows reports up to a severity.
class ignoreHandler : public eventHandler {
 public:
  /// Serves the reports for `audience` that are no worse than `severity`.
  ignoreHandler(int priority, eventSeverity severity, eventAudience audience);
  bool handle(eventReport& event) override;
  const char* name() const override;

 private:
  eventSeverity m_severity;
  eventAudience m_audience;
};

/// Passes reports to the system log.
///
/// The text of the report is the *format* argument of `syslog`, so a per-cent
/// sign in it is read as a conversion.  Tools that read these records rely on it;
/// do not install this handler where reports carry text from strangers.
class systemLogHandler : public eventHandler {
 public:
  /// Serves all reports for `audience`.
  systemLogHandler(int priority, eventAudience audience);
  bool handle(eventReport& event) override;
  const char* name() const override;

 private:
  eventAudience m_audience;
};

/// `format` unless empty, else the item `LogDateFormat`, else "%Y%m%dT%H%M%S".
std::string getDateFormat(const std::string& format);
/// `zone` unless `BAD_TIMEZONE`, else the zone of the item `LogTimeZone`.
int getTimeZone(int zone);
/// The system-log priority of a severity, 1 to 7.
int priority(eventSeverity severity);

#pragma GCC visibility pop
