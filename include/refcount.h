// SPDX-License-Identifier: MIT
// Reference-counted, versioned objects: copy-on-write for whole objects.
//
// For each type there is at most one *canonical* instance: published, read-only,
// and shared.  A reader takes a handle to it and keeps that one consistent
// version for as long as it likes.  A writer takes a handle to a private clone,
// changes it, and publishes it, which makes the previous canonical instance
// obsolete: whoever still holds that sees it unchanged.  Publication with `check`
// succeeds only when the clone was made from what is still canonical, so of two
// writers that race exactly one wins, and the other learns that it lost.
//
// *Ownership.*  An instance counts the handles that hold it and the clones made
// from it that are not published yet; whoever takes the count to zero destroys
// it.  The canonical instance is also held by a process-wide handle.
//
// *Locking.*  Counts of canonical and obsolete instances, and the exchange of the
// canonical one, change inside `CS_REFCOUNT`.  New and private instances belong
// to one thread and need no lock.  Instances are destroyed outside the section.
// When the section cannot be entered any more, at the end of the process, counts
// are left as they are and nothing is destroyed.
//
// Everything here may be used before `main` and at exit.  A forked child has its
// own copies of all instances and shares only the section.
//
// What is kept here is for one thread of a process only.
#pragma once

#if !defined(__GXX_RTTI) && !defined(__cpp_rtti)
#error "hoplaunch needs run-time type information: compile without -fno-rtti"
#endif

#include <cstdint>
#include <cstdlib>
#include <new>
#include <typeinfo>

#include "assertion.h"
#include "threading.h"

#pragma GCC visibility push(default)

/// The life-cycle stage of a counted object.  Stages only move forward.
enum refCountStage : int {
  RCS_NEW = 0,        ///< no handle has taken it yet
  RCS_PRIVATE = 1,    ///< held by one writer, who may change it
  RCS_CANONICAL = 2,  ///< the published instance, read-only and shared
  RCS_OBSOLETE = 3,   ///< published once, superseded since; read-only and shared
  RCS_NULLREF = 4     ///< the stage that a null handle reports; never an object's
};

/// What assigning a kind to a typed handle makes it hold.
enum refType : int {
  RT_NULL = 0,    ///< nothing
  RT_EMPTY = 1,   ///< a new default-constructed object
  RT_UPDATE = 2,  ///< a private clone of the canonical instance
  RT_READ = 3     ///< the canonical instance
};

/// "new" to "null-ref", "<bad refCountStage>" for any other value.
const char* text(refCountStage stage);
/// "null ref" to "read", "<bad refType>" for any other value.
const char* text(refType type);

/// Base of every shareable object.
class counted {
 public:
  counted(const counted&) = delete;
  counted& operator=(const counted&) = delete;

  /// The number of handles and unpublished clones that hold this object.
  std::int32_t count() const { return m_refCount; }
  /// The object that this was cloned from, held until this is published.
  counted* parent() const { return m_parent; }
  /// 0 for an object of its own, one more than its source for a clone.
  std::int32_t version() const { return m_version; }
  /// True while the object may be changed.
  bool writable() const { return m_stage == RCS_NEW || m_stage == RCS_PRIVATE; }
  /// The stage that the object has reached.
  refCountStage stage() const { return m_stage; }

 protected:
  counted() = default;

  /// Called once, inside `CS_REFCOUNT`, as the object becomes canonical.
  virtual void prepareCanonical();

 public:
  virtual ~counted() = 0;

  /// A new copy of the contents, stage and count fresh; null when the object
  /// cannot be copied.  The caller owns it.
  virtual counted* clone() const = 0;
  /// The type's name for trace lines; lives as long as the process.
  virtual const char* className() const = 0;

 protected:
  /// Counts up.
  counted& operator++();
  /// Counts down; true when that reached zero.
  bool operator--();
  /// Moves on to `newStage`; false, without effect, unless it is a later one that
  /// an object can have.
  bool advance(refCountStage newStage);

  std::int32_t m_refCount = 0;      ///< see `count`
  refCountStage m_stage = RCS_NEW;  ///< see `stage`
  std::int32_t m_version = 0;       ///< see `version`
  counted* m_parent = nullptr;      ///< see `parent`; counted up

 private:
  friend class reference;
};

/// Base of all handles: null, or one of the holders of an instance.
class reference : public ThreadedDataObject {
 public:
  /// A null handle.
  reference() = default;
  /// Holds `p`, which is null or comes from `new`: the last holder deletes it.  A new
  /// object becomes private.  An assertion fails for a stage that no object has.
  explicit reference(counted* p);
  /// Holds the instance of `r`, too.
  reference(const reference& r);
  /// Lets go.
  ~reference() override = 0;

  /// Lets go, and holds the instance of `rhs`, or `rhs` itself as the constructor does.
  reference& operator=(const reference& rhs) { return *this = rhs.instance; }
  reference& operator=(counted* rhs);

  /// True when both hold the same instance, or nothing.
  bool operator==(const reference& rhs) const { return instance == rhs.instance; }
  /// True when there is no instance.
  bool null() const { return instance == nullptr; }
  /// The instance or null; it stays held.
  counted* ptr() { return instance; }
  const counted* ptr() const { return instance; }
  /// True when there is an instance that may be changed.
  bool writable() const { return instance != nullptr && instance->writable(); }
  /// The version of the instance, -1 without one.
  std::int32_t version() const { return instance != nullptr ? instance->version() : -1; }

 protected:
  /// Moves the instance on to `newStage`, as `counted::advance`; false without
  /// one.
  bool advance(refCountStage newStage);
  /// True when this holds a private copy of what `canonical` still holds.
  bool commitable(const reference& canonical) const;
  /// Holds the instance of `canonical`, or with `writable` a private clone of it.
  /// Null when there is none, or it does not clone.
  reference& set(bool writable, const reference& canonical);
  /// Puts the private instance held here, or null, in place of `canonical`'s.
  /// With `check` only when this holds a copy of what is there.  Returns whether
  /// it did.
  bool setCanonical(reference& canonical, bool check);
  /// Raises the instance's version.  REQUIRES: `newValue` is not below it.
  void setVersion(std::int32_t newValue);
  /// Lets go of the instance.
  void recycle();

  counted* instance = nullptr;  ///< held; null for none

 private:
  static bool countable(const counted* p, bool locked);
  static void countUp(counted* p, bool locked);
  static counted* countDown(counted* p, bool locked);
  counted* exchange(counted* rhs, bool locked);
  void adopt(counted* copy, counted* source);
};

/// A handle for the duration of a scope.
class temporaryReference : public reference {
 public:
  temporaryReference() = default;
};

/// A handle to an instance of `T`, a class derived from `counted`.
template <class T>
class Treference : public reference {
  struct canonicalHolder;

 public:
  /// A null handle.
  Treference() = default;
  Treference(const Treference& rhs) = default;
  /// Holds `p`, as `reference` does.
  explicit Treference(T* p) : reference(p) {}
  /// Holds what `type` says.
  explicit Treference(refType type) { *this = type; }
  ~Treference() override = default;

  Treference& operator=(const Treference& rhs) = default;
  /// Holds `rhs` from now on, as `reference` does.
  Treference& operator=(T* rhs) {
    reference::operator=(static_cast<counted*>(rhs));
    return *this;
  }
  /// Holds what `type` says from now on.
  Treference& operator=(refType type) {
    switch (type) {
      case RT_NULL:
        reference::operator=(static_cast<counted*>(nullptr));
        break;
      case RT_EMPTY:
        reference::operator=(static_cast<counted*>(new T));
        break;
      case RT_UPDATE:
        set(true, canonical());
        break;
      case RT_READ:
        set(false, canonical());
        break;
      default:
        ASSERT_AT(false, "../include/refcount", 606);
    }
    return *this;
  }

  /// The process-wide handle to the canonical instance of `T`.
  static const Treference& getCanonical() { return canonical(); }
  /// A handle to the object that the instance was cloned from.
  Treference parent() const {
    Treference result;
    if (instance != nullptr) {
      static_cast<reference&>(result) = instance->parent();
    }
    return result;
  }
  /// True when this holds a private copy of what is still canonical.
  bool commitable() const { return reference::commitable(canonical()); }
  /// Publishes the private instance held here; null clears the canonical one.
  /// With `check` only when `commitable`.  Returns whether it did.
  bool setCanonical(bool check) { return reference::setCanonical(canonical(), check); }

  /// The stage of the instance, `RCS_NULLREF` without one.
  refCountStage stage() const { return instance != nullptr ? instance->stage() : RCS_NULLREF; }
  /// True when there is no instance.
  bool null() const { return ptr() == nullptr; }

  /// The instance, null when there is none or it is no `T`; it stays held.
  T* pointer() { return cast(instance); }
  const T* pointer() const { return cast(instance); }
  T* operator->() { return pointer(); }
  const T* operator->() const { return pointer(); }
  /// The instance.  REQUIRES: there is one and it is a `T`.
  T& operator*() {
    T* result = pointer();
    ASSERT(result != nullptr);
    return *result;
  }
  const T& operator*() const {
    const T* result = pointer();
    ASSERT(result != nullptr);
    return *result;
  }

 private:
  // A dynamic cast, which is slow, but not for a T itself, which it nearly always is.
  static T* cast(counted* p) {
    return p != nullptr && typeid(*p) == typeid(T) ? static_cast<T*>(p) : dynamic_cast<T*>(p);
  }

  // The variables are without a type of their own: a program shares them with the library by
  // their names, and compilers differ in the name of one whose type has a std::string in it.
  static Treference& canonical() {
    static void* const holder = canonicalHolder::construct();
    if (canonicalHolder::gone) {
      // What runs later than the holder's end starts from nothing.
      static void* const late = ::new (canonicalHolder::lateRoom) Treference;
      return *static_cast<Treference*>(late);
    }
    return *static_cast<Treference*>(holder);
  }
};

/// The handle to the canonical instance; it knows whether it still exists.
template <class T>
struct Treference<T>::canonicalHolder : Treference<T> {
  static inline constinit bool gone = false;  ///< destroyed at exit
  /// For this one.
  alignas(Treference<T>) static inline unsigned char room[sizeof(Treference<T>)];
  /// For the one after it, which is not destroyed.
  alignas(Treference<T>) static inline unsigned char lateRoom[sizeof(Treference<T>)];

  ~canonicalHolder() override { gone = true; }

  /// Makes the one that is destroyed at exit, as a static object would be.
  static Treference<T>* construct() {
    static_assert(sizeof(canonicalHolder) == sizeof room);
    std::atexit([] { std::launder(reinterpret_cast<canonicalHolder*>(room))->~canonicalHolder(); });
    return ::new (room) canonicalHolder;
  }
};

#pragma GCC visibility pop
