// SPDX-License-Identifier: MIT
#include "refcount.h"

#include <array>
#include <cstdint>
#include <locale>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

#include "lasting.h"
#include "pointers.h"
#include "processes.h"
#include "stack.h"
#include "trace.h"
#include "trace_flags.h"

namespace {

// Positions are stable diagnostic ids that support relies on.  They are given, and
// are not the lines of this file.
constexpr const char* SOURCE = "../utilities/refcount";

// The section that guards shared instances.  `okay` is false once the semaphore
// set is gone at exit: counts do not change any more then.
class sharedSection : public criticalSection {
 public:
  sharedSection() : criticalSection(CS_REFCOUNT, true) {}
};

bool shared(refCountStage stage) {
  return stage > RCS_PRIVATE;
}

struct address {
  const void* value;
};

// The text of a trace line.  No locale of the program changes it.
struct traceLine : std::ostringstream {
  traceLine() { imbue(std::locale::classic()); }
};

std::ostream& operator<<(std::ostream& out, address a) {
  return out << "0x" << std::hex << reinterpret_cast<std::uintptr_t>(a.value) << std::dec;
}

void writeTrace(const std::string& message) {
  const criticalSection section(CS_LOGOUT, true);  // objects may be traced until the very end
  traceFlag::out() << message << std::flush;
}

}  // namespace

// --- Texts -----------------------------------------------------------------

const char* text(refCountStage stage) {
  static constexpr std::array<const char*, 5> texts = {"new", "private", "canonical", "obsolete",
                                                       "null-ref"};
  const auto index = static_cast<std::size_t>(stage);
  return index < texts.size() ? texts[index] : "<bad refCountStage>";
}

const char* text(refType type) {
  static constexpr std::array<const char*, 4> texts = {"null ref", "empty", "update", "read"};
  const auto index = static_cast<std::size_t>(type);
  return index < texts.size() ? texts[index] : "<bad refType>";
}

// --- counted ---------------------------------------------------------------

counted::~counted() {
  if (*internal::refcountFlag) {
    traceLine message;
    message << Thread::threadId() << " destroying "
            << " " << address{this} << " parent = " << address{m_parent} << '\n';
    writeTrace(message.str());
  }
  if (m_parent == nullptr) {
    return;
  }
  counted* unused = nullptr;
  {
    const sharedSection section;
    if (section.okay() && --*m_parent) {
      unused = m_parent;
    }
  }
  delete unused;
}

void counted::prepareCanonical() {}

counted& counted::operator++() {
  m_refCount++;
  return *this;
}

bool counted::operator--() {
  return --m_refCount == 0;
}

bool counted::advance(refCountStage newStage) {
  if (m_stage >= newStage || newStage > RCS_OBSOLETE) {
    return false;
  }
  m_stage = newStage;
  return true;
}

// --- reference: the rules of counting --------------------------------------

// Counts of shared instances change inside the section only.  When it cannot be
// entered, they stay.  Private instances belong to one thread.
bool reference::countable(const counted* p, bool locked) {
  return p != nullptr && (locked || !shared(p->m_stage));
}

void reference::countUp(counted* p, bool locked) {
  if (countable(p, locked)) {
    ++*p;
  }
}

// The caller destroys the result, outside the section.
counted* reference::countDown(counted* p, bool locked) {
  return countable(p, locked) && --*p ? p : nullptr;
}

// Holds `rhs` in place of the instance.  The caller destroys the result, outside the
// section.
counted* reference::exchange(counted* rhs, bool locked) {
  counted* const unused = countDown(instance, locked);
  instance = rhs;
  countUp(rhs, locked);
  return unused;
}

// --- reference -------------------------------------------------------------

reference::reference(counted* p) : instance(p) {
  if (p == nullptr) {
    return;
  }
  switch (p->m_stage) {
    case RCS_NEW:
      p->advance(RCS_PRIVATE);
      [[fallthrough]];
    case RCS_PRIVATE:
      countUp(p, false);
      break;
    case RCS_CANONICAL:
    case RCS_OBSOLETE: {
      const sharedSection section;
      countUp(p, section.okay());
      break;
    }
    case RCS_NULLREF:
      ASSERT_AT(false, SOURCE, 177);
      break;
    default:
      ASSERT_AT(false, SOURCE, 179);
  }
}

reference::reference(const reference& r) : ThreadedDataObject(r), instance(r.instance) {
  if (instance != nullptr && shared(instance->m_stage)) {
    const sharedSection section;
    countUp(instance, section.okay());
  } else {
    countUp(instance, false);
  }
}

reference::~reference() {
  counted* unused = nullptr;
  if (instance != nullptr && shared(instance->m_stage)) {
    const sharedSection section;
    unused = countDown(instance, section.okay());
  } else {
    unused = countDown(instance, false);
  }
  delete unused;
}

reference& reference::operator=(counted* rhs) {
  if (rhs == instance) {
    return *this;
  }
  if (rhs != nullptr && rhs->m_stage == RCS_NEW) {
    rhs->advance(RCS_PRIVATE);
  }
  counted* unused = nullptr;
  if ((instance != nullptr && shared(instance->m_stage)) ||
      (rhs != nullptr && shared(rhs->m_stage))) {
    const sharedSection section;
    unused = exchange(rhs, section.okay());
  } else {
    unused = exchange(rhs, false);
  }
  delete unused;
  return *this;
}

bool reference::advance(refCountStage newStage) {
  if (instance == nullptr) {
    return false;
  }
  if (!shared(newStage)) {
    return instance->advance(newStage);
  }
  const sharedSection section;
  return section.okay() && instance->advance(newStage);
}

bool reference::commitable(const reference& canonical) const {
  return writable() && instance->m_parent == canonical.instance;
}

reference& reference::set(bool writable, const reference& canonical) {
  if (!writable) {
    if (instance != canonical.instance) {
      counted* unused = nullptr;
      {
        const sharedSection section;
        unused = exchange(canonical.instance, section.okay());
      }
      delete unused;
    }
    return *this;
  }
  temporaryReference temp;
  counted* unused = nullptr;
  {
    const sharedSection section;
    unused = exchange(nullptr, section.okay());
    temp.instance = canonical.instance;
    countUp(temp.instance, section.okay());
  }
  if (temp.instance == nullptr) {
    return *this;  // `unused` is kept on purpose: callers may still look at it
  }
  ASSERT_AT(temp.instance != NULL, SOURCE, 114);
  TautoPtr<counted> copy(temp.instance->clone(), false);
  if (copy.okay()) {
    // The copy now owns the count on the source, which is its parent.
    adopt(copy.extract(), std::exchange(temp.instance, nullptr));
  }
  delete unused;
  return *this;
}

// Holds `copy`, which was just cloned from `source`.
void reference::adopt(counted* copy, counted* source) {
  if (*internal::refcountFlag) {
    traceLine message;
    message << Thread::threadId() << ' ' << copy->className() << ' ' << address{source}
            << " cloned as " << address{copy} << '\n'
            << stack() << '\n';
    writeTrace(message.str());
  }
  copy->advance(RCS_PRIVATE);
  countUp(copy, false);
  copy->m_parent = source;
  copy->m_version = source->m_version + 1;
  instance = copy;
}

bool reference::setCanonical(reference& canonical, bool check) {
  if (instance != nullptr && instance->m_stage != RCS_PRIVATE) {
    return false;
  }
  std::optional<traceLine> message;
  counted* unused = nullptr;
  counted* unusedParent = nullptr;
  {
    const sharedSection section;
    counted* const oldCanonical = canonical.instance;
    if (!section.okay() || (check && (instance == nullptr || instance->m_parent != oldCanonical))) {
      return false;
    }
    if (instance != nullptr) {
      ASSERT_AT(oldCanonical != instance, SOURCE, 289);
      instance->advance(RCS_CANONICAL);
      countUp(instance, true);  // for the canonical handle
      unusedParent = countDown(std::exchange(instance->m_parent, nullptr), true);
      instance->prepareCanonical();
    }
    if (*internal::refcountFlag) {
      const counted* const named = instance != nullptr ? instance : oldCanonical;
      message.emplace();
      *message << Thread::threadId() << ' ' << (named != nullptr ? named->className() : "<null>")
               << ' ' << address{instance} << " supercedes " << address{oldCanonical} << '\n';
    }
    canonical.instance = instance;
    if (oldCanonical != nullptr) {
      oldCanonical->advance(RCS_OBSOLETE);
      unused = countDown(oldCanonical, true);
    }
  }
  if (message) {  // written only here: a section is never held inside another
    *message << stack() << '\n';
    writeTrace(message->str());
  }
  delete unused;
  delete unusedParent;
  return true;
}

void reference::setVersion(std::int32_t newValue) {
  if (instance != nullptr) {
    ASSERT_AT(instance->m_version <= newValue, SOURCE, 349);
    instance->m_version = newValue;
  }
}

void reference::recycle() {
  *this = static_cast<counted*>(nullptr);
}
