// SPDX-License-Identifier: MIT
#include "pointers.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

#include "reports.h"
#include "threading.h"

namespace pointers_test {

namespace {

/// Counts how objects of the class are freed.
struct counter {
  static inline int destroyed = 0;
  static inline int singles = 0;
  static inline int arrays = 0;

  int value = 0;

  ~counter() { destroyed++; }
  static void* operator new(std::size_t size) { return ::operator new(size); }
  static void* operator new[](std::size_t size) { return ::operator new[](size); }
  static void operator delete(void* p) {
    singles++;
    ::operator delete(p);
  }
  static void operator delete[](void* p) {
    arrays++;
    ::operator delete[](p);
  }
  static void reset() { destroyed = singles = arrays = 0; }
};

template <class T>
concept heapAllocated = requires {
  new T(nullptr, false);
};
template <class T>
concept heapArray = requires(void* p) {
  T::operator new[](sizeof p);
};

TEST(TautoPtr, IsNeitherCopiedNorCreatedOnTheHeap) {
  EXPECT_FALSE(std::is_copy_constructible_v<TautoPtr<counter>>);
  EXPECT_FALSE(std::is_copy_assignable_v<TautoPtr<counter>>);
  EXPECT_FALSE(heapAllocated<TautoPtr<counter>>);
  EXPECT_FALSE(heapArray<TautoPtr<counter>>);
}

TEST(TautoPtr, DeletesASingleObjectOnce) {
  counter::reset();
  {
    const TautoPtr<counter> owner(new counter, false);
    EXPECT_EQ(counter::destroyed, 0);
  }
  EXPECT_EQ(counter::destroyed, 1);
  EXPECT_EQ(counter::singles, 1);
  EXPECT_EQ(counter::arrays, 0);
}

TEST(TautoPtr, DeletesAnArrayAsAnArray) {
  counter::reset();
  { const TautoPtr<counter> owner(new counter[3], true); }
  EXPECT_EQ(counter::destroyed, 3);
  EXPECT_EQ(counter::singles, 0);
  EXPECT_EQ(counter::arrays, 1);
}

TEST(TautoPtr, DeletesNothingWhenItHoldsNothing) {
  counter::reset();
  { const TautoPtr<counter> owner(nullptr, false); }
  { const TautoPtr<counter> owner(nullptr, true); }
  EXPECT_EQ(counter::destroyed, 0);
}

TEST(TautoPtr, GivesAccessToItsObject) {
  auto* object = new counter;
  TautoPtr<counter> owner(object, false);
  const TautoPtr<counter>& constant = owner;
  EXPECT_TRUE(owner.okay());
  EXPECT_TRUE(constant.okay());
  EXPECT_TRUE(static_cast<bool>(constant));
  EXPECT_EQ(owner.pointer(), object);
  EXPECT_EQ(constant.pointer(), object);
  EXPECT_EQ(owner.operator->(), object);
  EXPECT_EQ(constant.operator->(), object);
  EXPECT_EQ(&*owner, object);
  EXPECT_EQ(&*constant, object);
  counter& converted = owner;
  EXPECT_EQ(&converted, object);
  owner->value = 4;
  EXPECT_EQ(constant->value, 4);
  EXPECT_TRUE((std::is_same_v<decltype(constant.pointer()), const counter*>));
  EXPECT_TRUE((std::is_same_v<decltype(*constant), const counter&>));
}

TEST(TautoPtr, IndexesAnArray) {
  TautoPtr<counter> owner(new counter[3], true);
  owner[0].value = 10;
  owner[2].value = 12;
  const TautoPtr<counter>& constant = owner;
  EXPECT_EQ(constant[0].value, 10);
  EXPECT_EQ(constant[1].value, 0);
  EXPECT_EQ(constant[2].value, 12);
  EXPECT_EQ(&owner[1], owner.pointer() + 1);
}

TEST(TautoPtr, TellsThatItHoldsNothing) {
  TautoPtr<counter> owner(nullptr, false);
  EXPECT_FALSE(owner.okay());
  EXPECT_FALSE(static_cast<bool>(owner));
  EXPECT_EQ(owner.pointer(), nullptr);
  EXPECT_EQ(owner.extract(), nullptr);
}

TEST(TautoPtr, GivesItsObjectAway) {
  counter::reset();
  auto* object = new counter;
  {
    TautoPtr<counter> owner(object, false);
    EXPECT_EQ(owner.extract(), object);
    EXPECT_FALSE(owner.okay());
    EXPECT_EQ(owner.extract(), nullptr);
  }
  EXPECT_EQ(counter::destroyed, 0);
  delete object;
  EXPECT_EQ(counter::destroyed, 1);
}

TEST(TautoPtr, AssertsThatThereIsAnObject) {
  const struct {
    const char* what;
    void (*access)(TautoPtr<counter>&);
    const char* report;
  } rows[] = {
      {"->", [](TautoPtr<counter>& p) { static_cast<void>(p.operator->()); },
       "<4/31 assert/0: contents != NULL [|] [.][.]/include/pointers @ 175>"},
      {"-> const", [](TautoPtr<counter>& p) { static_cast<void>(std::as_const(p).operator->()); },
       "<4/31 assert/0: contents != NULL [|] [.][.]/include/pointers @ 175>"},
      {"*", [](TautoPtr<counter>& p) { static_cast<void>(p.operator*()); },
       "<4/31 assert/0: contents != NULL [|] [.][.]/include/pointers @ 193>"},
      {"* const", [](TautoPtr<counter>& p) { static_cast<void>(std::as_const(p).operator*()); },
       "<4/31 assert/0: contents != NULL [|] [.][.]/include/pointers @ 193>"},
  };
  semaphoreSet(false);  // the children share it; they die before they could remove one
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EXIT(
        {
          const reportTeller printer(STDERR_FILENO, inAngles);
          TautoPtr<counter> nothing(nullptr, false);
          row.access(nothing);
        },
        testing::KilledBySignal(SIGABRT), row.report);
  }
}

}  // namespace

}  // namespace pointers_test
