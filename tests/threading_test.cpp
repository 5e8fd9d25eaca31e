// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>

#include "children.h"
#include "reports.h"
#include "threading.h"
#include "very_end.h"

namespace threading_test {

namespace {

// Reports its end.
class slip : public ThreadedDataObject {
 public:
  explicit slip(const char* owner) : m_owner(owner) {}
  ~slip() override { dprintf(STDOUT_FILENO, "destroy %s\n", m_owner); }
  const char* owner() const { return m_owner; }

 private:
  const char* m_owner;
};

// A kind of data that reports what it creates, if it is asked to.
class kind : public ThreadedDatatype {
 public:
  explicit kind(const char* name) : m_name(name) {}
  ThreadedDataObject* create() const override {
    if (telling) dprintf(STDOUT_FILENO, "create %s\n", m_name);
    if (whileCreating != nullptr) whileCreating();
    return telling ? new slip(m_name) : nullptr;
  }
  const char* name() const override { return m_name; }

  static bool telling;
  static void (*whileCreating)();

 private:
  const char* m_name;
};

bool kind::telling = false;
void (*kind::whileCreating)() = nullptr;

// A kind without data.
class emptyKind : public ThreadedDatatype {
 public:
  ThreadedDataObject* create() const override {
    if (kind::telling) dprintf(STDOUT_FILENO, "create nothing\n");
    return nullptr;
  }
  const char* name() const override { return "empty"; }
};

// Never destroyed, so that they can be asked at the very end.
kind& first = *new kind("first");
emptyKind& empty = *new emptyKind;
kind& second = *new kind("second");
kind& third = *new kind("third");

// A static initialiser asks for this.
const bool nothingBeforeMain = first.data(false) == nullptr && third.data(false) == nullptr &&
                               !ThreadData::initialised() && !ThreadData::ended();

const char* ownerOf(const ThreadedDataObject* object) {
  const auto* const found = dynamic_cast<const slip*>(object);
  return found != nullptr ? found->owner() : "nobody";
}

void tellOwners(bool force) {
  dprintf(STDOUT_FILENO, "%s, %s, %s, %s\n", ownerOf(first.data(force)), ownerOf(empty.data(force)),
          ownerOf(second.data(force)), ownerOf(third.data(force)));
}

// Runs `body` in a process that has no `ThreadData` yet, and in which the kinds report.
template <class Body>
processEnd runTelling(Body body) {
  return runFreshChild([&] {
    kind::telling = true;
    return body();
  });
}

constexpr const char* createAll =
    "create first\n"
    "create nothing\n"
    "create second\n"
    "create third\n";
constexpr const char* destroyAll =
    "destroy first\n"
    "destroy second\n"
    "destroy third\n";

// Whether `text` is the report of a registration that comes too late.
testing::AssertionResult isLateRegistration(const std::string& text) {
  constexpr std::string_view before =
      "assert 0, severity 4, audience 31: !\"ThreadData::registerClient\" | ../utilities/";
  std::string_view rest = text;
  if (rest.starts_with(before)) {
    rest.remove_prefix(before.size());
    if (rest.starts_with("dummy_")) rest.remove_prefix(6);
    if (rest.starts_with("threading @ ")) {
      rest.remove_prefix(12);
      const std::size_t digits = rest.find_first_not_of("0123456789");
      if (digits != 0 && rest.substr(digits) == "\n") return testing::AssertionSuccess();
    }
  }
  return testing::AssertionFailure() << "not that report: " << testing::PrintToString(text);
}

}  // namespace

TEST(ThreadedDatatype, HasNothingBeforeMain) {
  EXPECT_TRUE(nothingBeforeMain);
}

TEST(ThreadedDatatype, HasNothingWithoutForceWhileRegistrationIsOpen) {
  const processEnd end = runTelling([] {
    tell("initialised", ThreadData::initialised());
    tellOwners(false);
    tellOwners(false);
    tell("initialised", ThreadData::initialised());
    tell("ended", ThreadData::ended());
    static kind fourth("fourth");  // so it can still be registered
    tell("initialised", ThreadData::initialised());
    return 0;
  });
  EXPECT_EQ(end.output,
            "initialised 0\n"
            "nobody, nobody, nobody, nobody\n"
            "nobody, nobody, nobody, nobody\n"
            "initialised 0\n"
            "ended 0\n"
            "initialised 0\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ThreadedDatatype, IsBuiltWithForce) {
  const processEnd end = runTelling([] {
    dprintf(STDOUT_FILENO, "%s\n", ownerOf(third.data(true)));
    tell("initialised", ThreadData::initialised());
    tellOwners(false);
    tellOwners(true);
    return 0;
  });
  EXPECT_EQ(end.output, std::string(createAll) +
                            "third\n"
                            "initialised 1\n"
                            "first, nobody, second, third\n"
                            "first, nobody, second, third\n" +
                            destroyAll);
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ThreadedDatatype, KeepsItsObject) {
  const processEnd end = runTelling([] {
    const ThreadedDataObject* const object = first.data(true);
    tell("same", object == first.data(false) && object == first.data(true));
    tell("own", object != second.data(false));
    return 0;
  });
  EXPECT_EQ(end.output, std::string(createAll) + "same 1\nown 1\n" + destroyAll);
}

TEST(ThreadedDatatype, TellsItsName) {
  EXPECT_STREQ(static_cast<const ThreadedDatatype&>(first).name(), "first");
  EXPECT_STREQ(static_cast<const ThreadedDatatype&>(empty).name(), "empty");
}

TEST(ThreadedDatatype, CannotBeCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<kind>);
  EXPECT_FALSE(std::is_copy_assignable_v<kind>);
  EXPECT_TRUE(std::has_virtual_destructor_v<ThreadedDatatype>);
  EXPECT_TRUE(std::has_virtual_destructor_v<ThreadedDataObject>);
}

TEST(ThreadedDatatype, CannotBeRegisteredOnceThereIsAThreadData) {
  const processEnd end = runFreshChild([] {
    ThreadData::instance(false);
    reportTeller handler;
    kind late("late");
    return 0;
  });
  EXPECT_TRUE(isLateRegistration(end.output));
  EXPECT_EQ(end.ending, "signal 6");
}

TEST(ThreadedDatatype, CannotBeRegisteredOnceItsDataWasForced) {
  const processEnd end = runFreshChild([] {
    first.data(true);
    reportTeller handler;
    kind late("late");
    return 0;
  });
  EXPECT_TRUE(isLateRegistration(end.output));
  EXPECT_EQ(end.ending, "signal 6");
}

TEST(ThreadedDatatype, CannotBeRegisteredWhileTheThreadDataIsBuilt) {
  const processEnd end = runFreshChild([] {
    reportTeller handler;
    kind::whileCreating = [] { kind late("late"); };
    ThreadData::instance(false);
    return 0;
  });
  EXPECT_TRUE(isLateRegistration(end.output));
  EXPECT_EQ(end.ending, "signal 6");
}

TEST(ThreadedDatatype, HasNothingWhileTheThreadDataIsBuilt) {
  const processEnd end = runTelling([] {
    kind::whileCreating = [] {
      tellOwners(false);
      tellOwners(true);
    };
    ThreadData::instance(false);
    kind::whileCreating = nullptr;
    tellOwners(false);
    return 0;
  });
  const std::string nobody =
      "nobody, nobody, nobody, nobody\n"
      "nobody, nobody, nobody, nobody\n";
  EXPECT_EQ(end.output, "create first\n" + nobody + "create nothing\n" + "create second\n" +
                            nobody + "create third\n" + nobody + "first, nobody, second, third\n" +
                            destroyAll);
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ThreadedDatatype, HasNothingAfterTheEndOfTheThreadData) {
  const processEnd end = runTelling([] {
    atVeryEnd = [] {
      tell("ended", ThreadData::ended());
      tellOwners(false);
      tellOwners(true);
    };
    ThreadData::instance(false);
    tell("ended", ThreadData::ended());
    return 0;
  });
  EXPECT_EQ(end.output, std::string(createAll) + "ended 0\n" + destroyAll +
                            "ended 1\n"
                            "nobody, nobody, nobody, nobody\n"
                            "nobody, nobody, nobody, nobody\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

// --- ThreadData ------------------------------------------------------------

TEST(ThreadData, IsOneForTheProcess) {
  const processEnd end = runTelling([] {
    tell("initialised", ThreadData::initialised());
    ThreadData& one = ThreadData::instance(false);
    tell("initialised", ThreadData::initialised());
    tell("same", &one == &ThreadData::instance(true) && &one == &ThreadData::instance(false));
    tell("safe", one.threadSafe());
    return 0;
  });
  EXPECT_EQ(end.output, std::string("initialised 0\n") + createAll +
                            "initialised 1\n"
                            "same 1\n"
                            "safe 0\n" +
                            destroyAll);
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ThreadData, IgnoresItsArgument) {
  for (const bool argument : {false, true}) {
    SCOPED_TRACE(argument);
    const processEnd end = runTelling([argument] {
      ThreadData::instance(argument);
      tellOwners(false);
      return 0;
    });
    EXPECT_EQ(end.output, std::string(createAll) + "first, nobody, second, third\n" + destroyAll);
    EXPECT_EQ(end.ending, "exit 0");
  }
}

TEST(ThreadData, LetsAReportPassWhileItIsBuilt) {
  const processEnd end = runFreshChild([] {
    reportTeller handler;
    kind::whileCreating = [] {
      kind::whileCreating = nullptr;
      commonEvent(FAILURE, AUD_ADMIN, EC_COMMENT, "building", "create");
    };
    ThreadData::instance(false);
    return 0;
  });
  EXPECT_EQ(end.output, "commonEvent 13, severity 2, audience 4: building | create\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ThreadData, IsNotCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<ThreadData>);
  EXPECT_FALSE(std::is_copy_assignable_v<ThreadData>);
  EXPECT_FALSE(std::is_default_constructible_v<ThreadData>);
}

TEST(ThreadData, IsACopyOfItsOwnInAForkedChild) {
  const processEnd end = runTelling([] {
    ThreadData::instance(false);
    const processEnd child = runChild([] {
      tellOwners(false);
      return 0;
    });
    dprintf(STDOUT_FILENO, "[%s] %s\n", child.output.c_str(), child.ending.c_str());
    tellOwners(false);
    return 0;
  });
  EXPECT_EQ(end.output, std::string(createAll) + "[first, nobody, second, third\n" + destroyAll +
                            "] exit 0\n" + "first, nobody, second, third\n" + destroyAll);
}

}  // namespace threading_test
