// SPDX-License-Identifier: MIT
// Threads and orderly shutdown.
//
// A `Thread` is a body of work, `execute`, that runs while its creator does.  A
// full-weight thread is a child process made by `fork`; it shares the critical
// sections with its parent and nothing else.  Light-weight threads are part of
// the interface but not of this build: asking for one reports `EC_NOT_IMPL`.
// The creator owns the `Thread` object and waits for the child's end with
// `waitFor`.
//
// Shutdown is a flag that goes from false to true once (`Thread::shutDown`), and
// a list of notifiers that are called once (`shutdownNotified::callShutdowns`).
// An `exitWaitThread` watches the flag and calls the notifiers.
//
// Threads may be created before `main` and in a forked child.  A child ends through
// `exit`: it runs what its parent registered with `atexit`, destroys its copies of the
// static objects, and writes out its copies of what was in the parent's buffers.
//
// What is kept here is for one thread of a process only.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <iosfwd>

#pragma GCC visibility push(default)

/// A body of work that runs as a child process.
class Thread {
 public:
  /// A thread that is not running yet.  `fullWeight` asks for a child process.
  explicit Thread(bool fullWeight);
  Thread(const Thread&) = default;
  Thread& operator=(const Thread&) = default;

  /// The body; a child process ends with status 0 when it returns true and 1
  /// when it returns false.
  virtual bool execute() = 0;

  /// Neither waits for the child nor ends it.
  virtual ~Thread() = default;

  /// A new copy, owned by the caller.
  virtual Thread* clone() const = 0;

  /// Writes the thread's name; nothing in the base.
  virtual void write(std::ostream& out) const;

  /// Starts the thread; one that was started before is no longer waited for.  False
  /// after an event when it cannot be started.
  bool create();

  /// Waits for the end of the child process.  False, after an event, when the
  /// system cannot wait for it, a signal that cuts the wait short included; it may
  /// then be called again.  False without an event when none was started.
  bool waitFor();

  /// The status of the ended child, as `waitpid` gives it.
  int status() const { return m_status; }

  /// True once shutdown has begun.
  static bool shuttingDown();
  /// Begins the shutdown.  Safe in a signal handler.
  static void shutDown();
  /// The process id.
  static int processId();
  /// The calling thread's id: -1 in this build.
  static int threadId();
  /// Whether the system is stopping the process: false in this build.
  static bool processStopping();

 private:
  bool createP();
  bool createT();
  bool waitForP();
  bool waitForT();
  static volatile bool& m_shuttingDown();

  pid_t m_childId = 0;         // 0 when there is none
  void* m_childPtr = nullptr;  // for light-weight threads
  int m_parent;                // the creating thread's id
  int m_status = 0;
  bool m_fullWeight;
};

/// Watches for the shutdown, once a second without drift, and then calls the
/// notifiers.
class exitWaitThread : public Thread {
 public:
  /// As `Thread`.
  explicit exitWaitThread(bool fullWeight) : Thread(fullWeight) {}
  bool execute() override;
  Thread* clone() const override;
  /// Writes "exitWaitThread".
  void write(std::ostream& out) const override;
};

/// Base of an object that wants to know of the shutdown.
class shutdownNotified {
 public:
  /// Enters the list of notifiers; a copy enters it too.
  shutdownNotified();
  shutdownNotified(const shutdownNotified&);
  /// Changes nothing: both stay in the list.
  shutdownNotified& operator=(const shutdownNotified&) { return *this; }
  /// Leaves the list.
  virtual ~shutdownNotified();

  /// Called once at shutdown.
  virtual void shutdown() = 0;

  /// Calls every notifier alive, in the order of their construction.  Runs at
  /// most once per process; a notifier may construct and destroy others.
  static void callShutdowns();

 private:
  std::uint32_t m_cookie;  // differs between a live notifier and the remains of one
};

/// Streams as the process id, "/" and the thread id, for example 4711/-1.
struct thisThreadId {};
/// Writes the calling process's and thread's.
std::ostream& operator<<(std::ostream& out, thisThreadId);

#pragma GCC visibility pop
