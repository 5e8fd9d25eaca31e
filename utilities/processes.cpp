// SPDX-License-Identifier: MIT
#include "processes.h"

#include <algorithm>
#include <list>
#include <ostream>

#include "datetime.h"
#include "lasting.h"

namespace {

constexpr std::uint32_t COOKIE = 0x1F2E3D4C;

// Every notifier in the order of construction; null where one was destroyed.  The
// list is never destroyed: notifiers may be static objects.
std::list<shutdownNotified*>& SN_list() {
  static internal::lasting<std::list<shutdownNotified*>> notifiers;
  return *notifiers;
}

// Writes a value that nobody reads in the object's lifetime.  An optimiser would
// otherwise leave that out.
void writeCookie(std::uint32_t& cookie, std::uint32_t value) {
  *static_cast<volatile std::uint32_t*>(&cookie) = value;
}

}  // namespace

// --- Thread ----------------------------------------------------------------

Thread::Thread(bool fullWeight) : m_parent(threadId()), m_fullWeight(fullWeight) {}

void Thread::write(std::ostream&) const {}

bool Thread::create() {
  return m_fullWeight ? createP() : createT();
}

bool Thread::waitFor() {
  return m_fullWeight ? waitForP() : waitForT();
}

bool Thread::shuttingDown() {
  return m_shuttingDown() || processStopping();
}

void Thread::shutDown() {
  m_shuttingDown() = true;
}

volatile bool& Thread::m_shuttingDown() {
  static constinit volatile bool shuttingDown = false;
  return shuttingDown;
}

// --- exitWaitThread --------------------------------------------------------

bool exitWaitThread::execute() {
  // Each tick is counted from the one before, not from the clock, so nothing drifts.
  DateTime tick = DateTime::now(0);
  while (!shuttingDown()) {
    tick += 1.0;
    tick.wait();
  }
  shutdownNotified::callShutdowns();
  return true;
}

Thread* exitWaitThread::clone() const {
  return new exitWaitThread(*this);
}

void exitWaitThread::write(std::ostream& out) const {
  out << "exitWaitThread";
}

// --- shutdownNotified ------------------------------------------------------

shutdownNotified::shutdownNotified() : m_cookie(COOKIE) {
  SN_list().push_back(this);
}

shutdownNotified::shutdownNotified(const shutdownNotified&) : shutdownNotified() {}

shutdownNotified::~shutdownNotified() {
  writeCookie(m_cookie, 0);
  // The entry stays and becomes empty, so that a walk under way goes on.  The newest
  // notifiers usually go first.
  const auto entry = std::find(SN_list().rbegin(), SN_list().rend(), this);
  if (entry != SN_list().rend()) {
    *entry = nullptr;
  }
}

void shutdownNotified::callShutdowns() {
  static constinit std::uint32_t pending = COOKIE;
  if (pending != COOKIE) {
    return;
  }
  pending = 0;
  for (shutdownNotified* const& notifier : SN_list()) {
    if (notifier != nullptr && notifier->m_cookie == COOKIE) {
      notifier->shutdown();
    }
  }
}
