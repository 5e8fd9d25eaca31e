// SPDX-License-Identifier: MIT
// Per-thread data and critical sections.
//
// *Per-thread data.*  A subsystem that keeps something for each thread derives a
// `ThreadedDatatype` with one static instance, which takes a slot index when it
// is constructed, and a `ThreadedDataObject` for what it keeps.  A `ThreadData`
// holds one object for every slot; it is built by the first call that needs it,
// and from then on no slot can be added.  This build is single-threaded: there is
// one `ThreadData`, owned by the process and destroyed at exit.  The life of it
// is: registering (before `main`), building, alive, ended.  Only while it is
// alive does `data` answer with an object.
//
// *Critical sections.*  `criticalSection` is a scoped lock on one of six fixed
// sections.  Each is a semaphore of one private System V set, created on first
// use and removed at exit by the process that created it, so that children made
// by `fork` exclude each other and their parent.  Sections are not re-entrant and
// have no order.  A process that dies inside a section leaves it taken.
//
// The set is removed by `exit`, by a failed assertion and by a failed semaphore call of the
// process that created it, or that has called `semaphoreAdopt`.  What ends a process
// otherwise removes nothing: a signal (but see `semaphoreEndBy`), `_exit` and `quick_exit`,
// `exec` (but see `semaphoreRelease`), `abort` and an exception that nobody catches.  Such a
// set stays until the system ends; `ipcs -s` lists it and `ipcrm -s` removes it.
//
// A process that forks holds no section: the child would take it for its own.  A
// child that outlives the creator of the set finds the set removed, and aborts when
// it takes a section.
//
// A child that a plain `fork` makes before the first section makes a set of its own, so
// parent and child do not exclude each other: make the set first, by `semaphoreSet(false)`.
//
// Every user of the machine may use the set, whose mode is 0666: whoever holds one of its
// sections lets all others wait for it.  A private IPC namespace keeps other users out.  A
// process that waits for a section aborts when it is stopped and continued (SIGSTOP and
// SIGCONT), as with any signal that it handles.
//
// All of this is for one thread of a process only: further threads share its one
// `ThreadData`, and what is kept there is not locked.  A shared object that takes a slot is
// loaded before the `ThreadData` is built, and never unloaded; a process has one copy of the
// library.
//
// Everything here may be used before `main`, in a forked child and at exit, except for
// `ThreadData::instance`, which after the end refers to what was destroyed.
#pragma once

#include <cstddef>
#include <list>

#pragma GCC visibility push(default)

/// Base of every object that is kept per thread.
class ThreadedDataObject {
 public:
  virtual ~ThreadedDataObject() = default;

 protected:
  ThreadedDataObject() = default;
  ThreadedDataObject(const ThreadedDataObject&) = default;
  ThreadedDataObject& operator=(const ThreadedDataObject&) = default;
};

/// Base of a kind of per-thread data: one static instance for each kind.
class ThreadedDatatype {
 public:
  ThreadedDatatype(const ThreadedDatatype&) = delete;
  ThreadedDatatype& operator=(const ThreadedDatatype&) = delete;
  /// Destroys the object that it made, and leaves its slot empty: `create` is not called
  /// any more, and no other kind is given the slot.
  virtual ~ThreadedDatatype();

  /// Makes one thread's object; the `ThreadData` owns it.  Called once for each
  /// `ThreadData`, while that is being built: `data` answers null meanwhile.
  virtual ThreadedDataObject* create() const = 0;
  /// The kind's printable name.
  virtual const char* name() const = 0;

  /// The calling thread's object of this kind, owned by its `ThreadData`.
  ///
  /// - While registration is open: null without `force`; with it, the
  ///   `ThreadData` is built, which closes registration.
  /// - While the `ThreadData` is being built, and after it was destroyed at exit:
  ///   null.
  ThreadedDataObject* data(bool force) const;

 protected:
  /// Takes a slot.  REQUIRES: registration is open; otherwise the assertion
  /// `!"ThreadData::registerClient"` fails.
  ThreadedDatatype();

 private:
  int Register();

  int m_offset;
};

/// One thread's set of data objects.
class ThreadData {
 public:
  ThreadData(const ThreadData&) = delete;
  ThreadData& operator=(const ThreadData&) = delete;
  bool operator==(const ThreadData&) const = delete;
  ~ThreadData();

  /// The process's `ThreadData`, built on the first call.  The argument has no
  /// meaning in this build.  REQUIRES: not called from a `create()`.
  static ThreadData& instance(bool);

  /// Whether each thread has a `ThreadData` of its own: false in this build.
  bool threadSafe() const;

  /// True once the first `ThreadData` has been built.
  static bool initialised();
  /// True once the `ThreadData` has been destroyed at exit.
  static bool ended();

 private:
  friend class ThreadedDatatype;

  ThreadData();

  static std::list<const ThreadedDatatype*>& registry();  // null for what is gone
  static int registerClient(const ThreadedDatatype* type);
  static void removeClient(const ThreadedDatatype* type, int offset);
  static int Nclients();
  static bool registering(bool close);

  ThreadedDataObject** clientObjects;  // owned array of owned objects
  static ThreadData* c_instance;       // while there is one
};

/// The critical sections; the values are the semaphore numbers in the set.
enum sectionId : int {
  CS_STDOUT = 0,      ///< standard error output
  CS_LOGOUT = 1,      ///< trace lines and log streams
  CS_REFCOUNT = 2,    ///< counts and exchange of shared objects
  CS_NETWORK = 3,     ///< free for programs
  CS_NAME_ALLOC = 4,  ///< free for programs
  CS_STACK = 5,       ///< free for programs
  CS_COUNT = 6        ///< the number of sections; not a section
};

/// A critical section held for a scope.
///
/// Any failure of a semaphore call is fatal: a line with the failed expression,
/// the source and the line goes straight to standard error, since event reports
/// take sections themselves, and the process aborts.  A wait that a signal
/// interrupts counts as a failure, so block signals around long waits.  The set is removed
/// before, by the process that created it.
class criticalSection {
 public:
  /// Waits for section `id` and takes it.  After the set was removed at exit,
  /// `checked` decides: true takes nothing, so that `okay` is false; false
  /// aborts.  REQUIRES: `id` is a section, not held by this thread.
  criticalSection(sectionId id, bool checked);
  criticalSection(const criticalSection&) = delete;
  criticalSection& operator=(const criticalSection&) = delete;

  /// Gives the section back; does nothing after the set was removed at exit.
  virtual ~criticalSection();

  static void* operator new(std::size_t) = delete;
  static void* operator new[](std::size_t) = delete;

  /// True once the section has been taken.
  bool okay() const { return m_okay; }

  /// True when the calling thread holds section `id` and no other, for routines
  /// that must run inside exactly one.
  static bool have(sectionId id);

 private:
  sectionId m_id;
  bool m_okay = false;
};

/// The id of the semaphore set.  With `close` false the set is created when it
/// does not exist yet; with `close` true it is removed for good, unless a parent
/// process created it.  After that the id is -3.  After `semaphoreForgo` it is -4.
int semaphoreSet(bool close);

/// Removes the set for good; runs at exit.
void semaphoreClose();

/// Removes the set as `execvp` is about to do away with everything that would
/// remove it at exit.  Should the process go on after all, the next section that
/// is taken creates a new set.  A child leaves its parent's set alone.
/// REQUIRES: no section is held.
void semaphoreRelease();

/// Makes the calling process the one that removes the set: at exit, when an assertion
/// fails, and by the functions above.  For a program that detaches, as by `daemon(3)`, after
/// it used a section: the set is that of the process that ended, which would leave it to
/// nobody.  Does nothing without a set: the process that creates one removes it.
///
///     if (daemon(0, 0) == 0) {
///       semaphoreAdopt();
///     }
///
/// REQUIRES: the process that was to remove the set so far ends without doing so, by `_exit`
/// as in `daemon(3)`.
void semaphoreAdopt();

/// From here on the process has no set: sections are taken and given back at once, exclude
/// nobody, and make no semaphore call, so none can fail.  A set that it created is removed.
/// For programs that share nothing and write to nobody's log.
/// REQUIRES: no section is held.
void semaphoreForgo();

/// Whether a set could be had: makes one as the first section would, and removes it at once.
/// No signal but SIGKILL ends the process in between.  If not, `error` is the number of the
/// error, or 0 where the system gave what cannot be used; else it is 0.
bool semaphoreTry(int& error);

/// Ends the process by the signal `sig` as if there were no handler, and removes the set
/// first; while the set is being made the signal waits.  May be a handler itself, or be
/// called in one: `std::signal(SIGTERM, semaphoreEndBy)`.
void semaphoreEndBy(int sig);

/// What is called with a failed semaphore call: the line that was written to standard error,
/// without its line end, and the number of the error, 0 for none.
using semaphoreFailureHandler = void (*)(const char* line, int error);

/// Has `handler` called between the line on standard error and the abort; by then the set is
/// removed.  Null for nobody, as at first.  It must not take a section.
void semaphoreOnFailure(semaphoreFailureHandler handler);

#pragma GCC visibility pop
