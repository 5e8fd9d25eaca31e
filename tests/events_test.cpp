// SPDX-License-Identifier: MIT
// Reports: their texts, and how they reach the handlers.

#include "events.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "reports.h"
#include "test_language.h"

namespace events_test {

namespace {

template <class Report>
concept onTheHeap = requires {
  new Report(SUCCESS, AUD_ALL, EC_COMMENT, "", "");
};

template <class Report>
concept onTheStack = requires {
  Report(SUCCESS, AUD_ALL, EC_COMMENT, "", "");
};

static_assert(onTheStack<commonEvent> && onTheStack<OSevent>);
static_assert(!onTheHeap<commonEvent>);
static_assert(!onTheHeap<OSevent>);
static_assert(!std::is_copy_constructible_v<commonEvent>);
static_assert(!std::is_copy_assignable_v<commonEvent>);
static_assert(!std::is_copy_constructible_v<OSevent>);
static_assert(!std::is_copy_assignable_v<OSevent>);
static_assert(std::is_same_v<decltype(AUD_USER | AUD_DEVEL), eventAudience>);
static_assert(std::is_same_v<decltype(AUD_USER & AUD_DEVEL), eventAudience>);
static_assert(std::is_same_v<decltype(~AUD_USER), eventAudience>);

// A report that came before `main`, from any place in the start-up order.
const bool earlyReport = [] {
  commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "before main", "events_test");
  return true;
}();

class decorated : public bareEvent {
 public:
  using bareEvent::bareEvent;

 protected:
  void writeExtras(std::ostream& out) const override { out << " <extras>"; }
};

class rewritten : public bareEvent {
 public:
  using bareEvent::bareEvent;
  std::ostream& write(std::ostream& out) const override { return out << "as it likes"; }
};

class coded : public bareEvent {
 public:
  using bareEvent::bareEvent;
  using bareEvent::codeToText;
  std::string codeToText(int code) const override { return "code#" + std::to_string(code); }
};

class translated : public coded {
 public:
  using coded::coded;
  using coded::codeToText;
  std::string codeToText(int code, const language& lang) const override {
    return lang.name() + ":" + std::to_string(code);
  }
};

std::string writtenForm(const eventReport& event) {
  std::ostringstream out;
  out << event;
  return out.str();
}

// --- Texts -----------------------------------------------------------------

TEST(eventSeverity, HasItsValuesAndTexts) {
  const struct {
    eventSeverity severity;
    int value;
    const char* expected;
  } cases[] = {
      {SUCCESS, 0, "Success"},
      {WARNING, 1, "Warning"},
      {FAILURE, 2, "Failure"},
      {SEVERE, 3, "Severe"},
      {FATAL, 4, "Fatal"},
      {static_cast<eventSeverity>(5), 5, "<unknown eventSeverity>"},
      {static_cast<eventSeverity>(-1), -1, "<unknown eventSeverity>"},
      {static_cast<eventSeverity>(1000), 1000, "<unknown eventSeverity>"},
      {static_cast<eventSeverity>(INT_MAX), INT_MAX, "<unknown eventSeverity>"},
      {static_cast<eventSeverity>(INT_MIN), INT_MIN, "<unknown eventSeverity>"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    EXPECT_EQ(static_cast<int>(c.severity), c.value);
    EXPECT_EQ(std::string(text(c.severity)), c.expected);
  }
}

TEST(eventAudience, HasItsValues) {
  const struct {
    const char* name;
    eventAudience audience;
    int value;
  } cases[] = {
      {"AUD_NULL", AUD_NULL, 0},   {"AUD_OUSER", AUD_OUSER, 1}, {"AUD_EXPERT", AUD_EXPERT, 2},
      {"AUD_ADMIN", AUD_ADMIN, 4}, {"AUD_AUDIT", AUD_AUDIT, 8}, {"AUD_DEVEL", AUD_DEVEL, 16},
      {"AUD_ALL", AUD_ALL, 31},    {"AUD_USER", AUD_USER, 3},   {"AUD_SYSM", AUD_SYSM, 12},
  };
  for (const auto& c : cases) EXPECT_EQ(static_cast<int>(c.audience), c.value) << c.name;
}

TEST(eventAudience, IsCombinedAsPlainBits) {
  EXPECT_EQ(static_cast<int>(AUD_OUSER | AUD_ADMIN), 5);
  EXPECT_EQ(static_cast<int>(AUD_ALL & AUD_SYSM), 12);
  EXPECT_EQ(static_cast<int>(AUD_USER & AUD_SYSM), 0);
  EXPECT_EQ(static_cast<int>(~AUD_NULL), -1);
  EXPECT_EQ(static_cast<int>(~AUD_ALL), -32);
  EXPECT_EQ(static_cast<int>(AUD_ALL & ~AUD_USER), 28);
}

TEST(eventAudience, JoinsTheNamesOfItsBitsInAscendingOrder) {
  const struct {
    int bits;
    const char* expected;
  } cases[] = {
      {0, ""},
      {1, "User"},
      {2, "Expert"},
      {3, "User/Expert"},
      {4, "Admin"},
      {5, "User/Admin"},
      {6, "Expert/Admin"},
      {7, "User/Expert/Admin"},
      {8, "Audit"},
      {9, "User/Audit"},
      {10, "Expert/Audit"},
      {11, "User/Expert/Audit"},
      {12, "Admin/Audit"},
      {13, "User/Admin/Audit"},
      {14, "Expert/Admin/Audit"},
      {15, "User/Expert/Admin/Audit"},
      {16, "Devel"},
      {17, "User/Devel"},
      {18, "Expert/Devel"},
      {19, "User/Expert/Devel"},
      {20, "Admin/Devel"},
      {21, "User/Admin/Devel"},
      {22, "Expert/Admin/Devel"},
      {23, "User/Expert/Admin/Devel"},
      {24, "Audit/Devel"},
      {25, "User/Audit/Devel"},
      {26, "Expert/Audit/Devel"},
      {27, "User/Expert/Audit/Devel"},
      {28, "Admin/Audit/Devel"},
      {29, "User/Admin/Audit/Devel"},
      {30, "Expert/Admin/Audit/Devel"},
      {31, "User/Expert/Admin/Audit/Devel"},
      // Bits above have no name.
      {32, ""},
      {33, "User"},
      {64 + 16, "Devel"},
      {INT_MAX, "User/Expert/Admin/Audit/Devel"},
      {-1, "User/Expert/Admin/Audit/Devel"},
      {-32, ""},
      {INT_MIN, ""},
  };
  for (const auto& c : cases)
    EXPECT_EQ(text(static_cast<eventAudience>(c.bits)), c.expected) << "bits " << c.bits;
}

TEST(eventCommon, HasItsValuesAndTexts) {
  const struct {
    eventCommon code;
    int value;
    const char* expected;
  } cases[] = {
      {EC_DUPL_VALUE, 0, "duplicate value"},
      {EC_UNKNOWN_VALUE, 1, "unknown value"},
      {EC_OUT_OF_RANGE, 2, "value out of range"},
      {EC_BAD_RETURN_VAL, 3, "invalid return value"},
      {EC_FUNC_FAILED, 4, "function reports failure"},
      {EC_UNEXPECT_RET, 5, "function unexpectedly returned"},
      {EC_NOT_IMPL, 6, "function not implemented"},
      {EC_LOOPING, 7, "?infinite? loop"},
      {EC_RECURSION, 8, "recursion not valid"},
      {EC_BAD_FORMAT, 9, "bad format"},
      {EC_DATA_MISSING, 10, "Expected data is not available"},
      {EC_EXCEPT_CAUGHT, 11, "Exception caught"},
      {EC_NO_MEMORY, 12, "Memory allocation failure"},
      {EC_COMMENT, 13, "comment"},
      {EC_DATA_MISMATCH, 14, "Data mis-match"},
      {EC_TIMEOUT_EXPIRED, 15, "Time-out expired"},
      {EC_ACCESS_REFUSED, 16, "Access refused"},
      {EC_OVERFLOW, 17, "Insufficient space"},
      {EC_BAD_SEQUENCE, 18, "Bad sequence of operations"},
      {static_cast<eventCommon>(19), 19, "<unknown eventCommon>"},
      {static_cast<eventCommon>(-1), -1, "<unknown eventCommon>"},
      {static_cast<eventCommon>(1000), 1000, "<unknown eventCommon>"},
      {static_cast<eventCommon>(INT_MAX), INT_MAX, "<unknown eventCommon>"},
      {static_cast<eventCommon>(INT_MIN), INT_MIN, "<unknown eventCommon>"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    EXPECT_EQ(static_cast<int>(c.code), c.value);
    EXPECT_EQ(std::string(text(c.code)), c.expected);
    commonEvent event(SUCCESS, AUD_ALL, c.code, "", "");
    EXPECT_EQ(event.code(), c.value);
    EXPECT_EQ(event.codeText(), c.expected);
    EXPECT_EQ(event.codeToText(c.value), c.expected);
  }
}

// --- The fields ------------------------------------------------------------

TEST(eventReport, StoresItsFields) {
  bareEvent event(SEVERE, AUD_SYSM, -2147483647 - 1, "the qualifier", "the operation");
  EXPECT_EQ(event.severity(), SEVERE);
  EXPECT_EQ(event.audience(), AUD_SYSM);
  EXPECT_EQ(event.code(), INT_MIN);
  EXPECT_EQ(event.qualifier(), "the qualifier");
  EXPECT_EQ(event.operation(), "the operation");
  EXPECT_TRUE(event.parameters().empty());
}

TEST(eventReport, AppendsParameters) {
  bareEvent event(SUCCESS, AUD_ALL);
  event.addParameter("b");
  event.addParameter("");
  event.addParameter("a");
  event.addParameter("a");
  EXPECT_EQ(event.parameters(), (std::vector<std::string>{"b", "", "a", "a"}));
}

TEST(eventReport, ShowsACodeInDecimalUnlessItsClassKnowsBetter) {
  bareEvent event(SUCCESS, AUD_ALL, -42);
  EXPECT_EQ(event.codeToText(0), "0");
  EXPECT_EQ(event.codeToText(INT_MAX), "2147483647");
  EXPECT_EQ(event.codeToText(INT_MIN), "-2147483648");
  EXPECT_EQ(event.codeText(), "-42");
  EXPECT_EQ(coded(SUCCESS, AUD_ALL, 7).codeText(), "code#7");
}

TEST(eventReport, TakesTheTextOfALanguageFromTheOneOfTheCode) {
  const language& french = testLanguage::make("French");
  EXPECT_EQ(bareEvent(SUCCESS, AUD_ALL).codeToText(12, french), "12");
  EXPECT_EQ(coded(SUCCESS, AUD_ALL).codeToText(12, french), "code#12");
  EXPECT_EQ(translated(SUCCESS, AUD_ALL).codeToText(12, french), "French:12");
  commonEvent common(SUCCESS, AUD_ALL, EC_COMMENT, "", "");
  EXPECT_EQ(common.codeToText(0, french), "duplicate value");
}

TEST(EventReport, DescribesItselfWithoutItsUserMessage) {
  class ownMessage : public bareEvent {
   public:
    using bareEvent::bareEvent;
    std::string userMessage(const language&) const override { return "for users"; }
  };
  const language& french = testLanguage::make("French");
  const ownMessage event(FAILURE, AUD_ALL, 3, "detail", "");
  EXPECT_EQ(event.description(french), "bare/3 -- detail");
}

TEST(eventReport, DescribesItselfInALanguage) {
  const language& french = testLanguage::make("French");
  commonEvent full(FAILURE, AUD_ALL, EC_UNKNOWN_VALUE, "an \"ftp\"\n", "open");
  full.addParameter("not shown");
  EXPECT_EQ(full.description(french), "commonEvent/unknown value -- an \"ftp\"\n");
  EXPECT_EQ(full.userMessage(french), "commonEvent/unknown value");
  commonEvent bare(FAILURE, AUD_ALL, EC_OVERFLOW, "", "open");
  EXPECT_EQ(bare.description(french), "commonEvent/Insufficient space");
  EXPECT_EQ(bare.userMessage(french), "commonEvent/Insufficient space");
  translated own(FAILURE, AUD_ALL, 3, "q", "o");
  EXPECT_EQ(own.description(french), "bare/French:3 -- q");
  EXPECT_EQ(own.userMessage(french), "bare/French:3");
}

TEST(eventReport, NamesItsDomain) {
  EXPECT_STREQ(commonEvent(SUCCESS, AUD_ALL, EC_COMMENT, "", "").domain(), "commonEvent");
  EXPECT_STREQ(OSevent(SUCCESS, AUD_ALL, 0, "", "").domain(), "O/S");
}

// --- The written form ------------------------------------------------------

TEST(eventReport, WritesItsPiecesInOrder) {
  const struct {
    eventSeverity severity;
    eventCommon code;
    const char* description;
    std::vector<std::string> parameters;
    const char* operation;
    const char* expected;
  } cases[] = {
      {FAILURE,
       EC_UNKNOWN_VALUE,
       "ftp",
       {},
       "open",
       "Failure: commonEvent/unknown value \"ftp\" | open"},
      {FAILURE,
       EC_UNKNOWN_VALUE,
       "ftp",
       {"a", "b"},
       "open",
       "Failure: commonEvent/unknown value \"ftp\" { \"a\" \"b\" } | open"},
      {SUCCESS, EC_COMMENT, "", {}, "", "Success: commonEvent/comment \"\""},
      {SUCCESS, EC_COMMENT, "", {""}, "", "Success: commonEvent/comment \"\" { \"\" }"},
      {WARNING, EC_LOOPING, "", {}, "op", "Warning: commonEvent/?infinite? loop \"\" | op"},
      {SEVERE, EC_OVERFLOW, "x", {}, "", "Severe: commonEvent/Insufficient space \"x\""},
      {FATAL,
       EC_DATA_MISMATCH,
       "x",
       {"1"},
       "",
       "Fatal: commonEvent/Data mis-match \"x\" { \"1\" }"},
      // Qualifier and parameters are quoted, the operation is not.
      {FAILURE,
       EC_COMMENT,
       "a\n\t\r\x01\"\\\x7f\xe9",
       {"\n\"", "\xc3\xa9"},
       "o\"p\\",
       "Failure: commonEvent/comment \"a\\n\\t\\r\\001\\\"\\\\\\177\\351\" "
       "{ \"\\n\\\"\" \"\\303\\251\" } | o\"p\\"},
      {static_cast<eventSeverity>(9),
       static_cast<eventCommon>(99),
       "x",
       {},
       "y",
       "<unknown eventSeverity>: commonEvent/<unknown eventCommon> \"x\" | y"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    commonEvent event(c.severity, AUD_ALL, c.code, c.description, c.operation);
    for (const std::string& parameter : c.parameters) event.addParameter(parameter);
    std::ostringstream out;
    EXPECT_EQ(&event.write(out), &out);
    EXPECT_EQ(out.str(), c.expected);
    EXPECT_EQ(writtenForm(event), c.expected);
  }
}

TEST(eventReport, QuotesANulByteOfTheQualifier) {
  bareEvent event(SUCCESS, AUD_ALL, 3, std::string("a\0b", 3), "");
  EXPECT_EQ(writtenForm(event), "Success: bare/3 \"a\\000b\"");
}

TEST(eventReport, WritesExtrasBetweenParametersAndOperation) {
  decorated event(FAILURE, AUD_ALL, 3, "q", "op");
  EXPECT_EQ(writtenForm(event), "Failure: bare/3 \"q\" <extras> | op");
  event.addParameter("p");
  EXPECT_EQ(writtenForm(event), "Failure: bare/3 \"q\" { \"p\" } <extras> | op");
  EXPECT_EQ(writtenForm(decorated(FAILURE, AUD_ALL, 3, "q")), "Failure: bare/3 \"q\" <extras>");
}

TEST(eventReport, IsStreamedByItsOwnWrite) {
  EXPECT_EQ(writtenForm(rewritten(FAILURE, AUD_ALL)), "as it likes");
  EXPECT_EQ(writtenForm(coded(FAILURE, AUD_ALL, 5, "q")), "Failure: bare/code#5 \"q\"");
  std::ostringstream out;
  const bareEvent event(SUCCESS, AUD_ALL);
  EXPECT_EQ(&(out << event), &out);
}

// --- Reporting -------------------------------------------------------------

TEST(eventReport, IsReportedByItsDestructor) {
  reportCatcher probe(5);
  commonEvent(FAILURE, AUD_SYSM, EC_UNKNOWN_VALUE, "ftp", "open");
  ASSERT_EQ(probe.seen.size(), 1u);
  EXPECT_EQ(probe.seen[0].written, "Failure: commonEvent/unknown value \"ftp\" | open");
  EXPECT_EQ(probe.seen[0].domain, "commonEvent");
  EXPECT_EQ(probe.seen[0].severity, FAILURE);
  EXPECT_EQ(probe.seen[0].audience, AUD_SYSM);
  EXPECT_EQ(probe.seen[0].code, 1);
  EXPECT_EQ(probe.seen[0].qualifier, "ftp");
  EXPECT_EQ(probe.seen[0].operation, "open");
}

TEST(eventReport, IsNotReportedBeforeItsEnd) {
  reportCatcher probe(5);
  {
    commonEvent event(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
    event.addParameter("1");
    EXPECT_TRUE(probe.seen.empty());
    event.addParameter("2");
  }
  ASSERT_EQ(probe.seen.size(), 1u);
  EXPECT_EQ(probe.seen[0].parameters, (std::vector<std::string>{"1", "2"}));
}

TEST(eventReport, ReachesTheHandlersOnce) {
  reportCatcher probe(5);
  {
    commonEvent event(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
    event.report();
    EXPECT_EQ(probe.seen.size(), 1u) << "an explicit report";
    event.report();
    EXPECT_EQ(probe.seen.size(), 1u) << "a second one";
  }
  EXPECT_EQ(probe.seen.size(), 1u) << "the destructor after it";
  {
    OSevent event(FAILURE, AUD_ALL, ENOENT, "x", "y");
    event.report();
  }
  EXPECT_EQ(probe.seen.size(), 2u) << "an operating-system error";
}

TEST(eventReport, StaysReportedWhenNoHandlerServedIt) {
  reportCatcher first(5, false);
  ignoreHandler nobody(6, static_cast<eventSeverity>(-1), AUD_NULL);
  {
    commonEvent event(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
    event.report();
    event.report();
  }
  EXPECT_EQ(first.seen.size(), 1u);
}

TEST(eventReport, IsMarkedAsReportedBeforeTheHandlersSeeIt) {
  class again : public eventHandler {
   public:
    again() : eventHandler(5) {}
    bool handle(eventReport& event) override {
      calls++;
      if (calls < 10) event.report();
      return true;
    }
    const char* name() const override { return "again"; }
    int calls = 0;
  } handler;
  commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
  EXPECT_EQ(handler.calls, 1);
}

TEST(eventReport, IsNotReportedByTheBase) {
  reportCatcher probe(5);
  { bareEvent event(FAILURE, AUD_ALL); }
  EXPECT_TRUE(probe.seen.empty()) << probe.seen[0].written;
  bareEvent event(FAILURE, AUD_ALL, 3, "q");
  event.report();
  ASSERT_EQ(probe.seen.size(), 1u);
  EXPECT_EQ(probe.seen[0].written, "Failure: bare/3 \"q\"");
}

TEST(eventReport, IsOfferedToNobodyBeyondTheFirstThatClaimsIt) {
  reportCatcher passes(3, false), claims(4, true), later(5, true);
  commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
  EXPECT_EQ(passes.seen.size(), 1u);
  EXPECT_EQ(claims.seen.size(), 1u);
  EXPECT_EQ(later.seen.size(), 0u);
}

TEST(eventReport, ForNobodyIsStillOffered) {
  reportCatcher before(3, false);
  stderrHandler handler(4, AUD_ALL);
  reportCatcher after(5, false);
  commonEvent(FAILURE, AUD_NULL, EC_COMMENT, "for nobody", "y");
  ASSERT_EQ(before.seen.size(), 1u);
  EXPECT_EQ(before.seen[0].audience, AUD_NULL);
  EXPECT_EQ(after.seen.size(), 0u) << "a handler of audiences ends the walk";
}

TEST(eventReport, KeepsTheAudiencesThatNobodyServed) {
  class audit : public eventHandler {
   public:
    audit() : eventHandler(3) {}
    bool handle(eventReport& event) override {
      clearAudience(event, AUD_AUDIT | AUD_ADMIN);
      return false;
    }
    const char* name() const override { return "audit"; }
  } handler;
  reportCatcher next(4, true);
  commonEvent event(FAILURE, AUD_ALL, EC_COMMENT, "x", "y");
  event.report();
  ASSERT_EQ(next.seen.size(), 1u);
  EXPECT_EQ(static_cast<int>(next.seen[0].audience), 19);
  EXPECT_EQ(static_cast<int>(event.audience()), 19);
}

TEST(eventReport, KeepsTheSeverityThatAHandlerGaveIt) {
  class milder : public eventHandler {
   public:
    milder() : eventHandler(3) {}
    bool handle(eventReport& event) override {
      changeSeverity(event, WARNING);
      return false;
    }
    const char* name() const override { return "milder"; }
  } handler;
  reportCatcher next(4, true);
  commonEvent event(FATAL, AUD_ALL, EC_COMMENT, "x", "y");
  event.report();
  ASSERT_EQ(next.seen.size(), 1u);
  EXPECT_EQ(next.seen[0].written, "Warning: commonEvent/comment \"x\" | y");
  EXPECT_EQ(event.severity(), WARNING);
}

TEST(eventReport, MayBeRaisedInsideAHandler) {
  static std::string order;
  class nesting : public eventHandler {
   public:
    nesting() : eventHandler(5) {}
    bool handle(eventReport& event) override {
      order += event.qualifier() + " ";
      if (event.qualifier() == "outer") {
        commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "inner", "");
      }
      order += "/" + event.qualifier() + " ";
      return false;
    }
    const char* name() const override { return "nesting"; }
  };
  const nesting first;
  const nesting second;
  commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "outer", "");
  EXPECT_EQ(order, "outer inner /inner /outer outer inner /inner /outer ")
      << "each raises one that only the other sees";
}

TEST(eventReport, WorksBeforeMain) {
  ASSERT_TRUE(earlyReport);
  const std::string stored = storingHandler::theInstance().str();
  EXPECT_NE(stored.find(": Failure: commonEvent/comment \"before main\" | events_test\n"),
            std::string::npos)
      << stored;
}

}  // namespace

}  // namespace events_test
