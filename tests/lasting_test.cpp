// SPDX-License-Identifier: MIT
// Objects that are never destroyed.

#include "lasting.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace lasting_test {

namespace {

struct noisy {
  explicit noisy(int& ends) : m_ends(ends) {}
  noisy(const noisy&) = delete;
  noisy& operator=(const noisy&) = delete;
  ~noisy() { m_ends++; }

 private:
  int& m_ends;
};

class hidden {
 public:
  static int value() {
    static const internal::lasting<hidden> object([] { return hidden(); });
    return (*object).m_value;
  }

 private:
  hidden() = default;

  int m_value = 7;
};

TEST(Lasting, NeverDestroysItsObject) {
  int ends = 0;
  { const internal::lasting<noisy> object(ends); }
  EXPECT_EQ(0, ends);
  { const noisy object(ends); }
  EXPECT_EQ(1, ends);
}

TEST(Lasting, HasNoDestructorThatWouldBeRegisteredForTheEnd) {
  EXPECT_TRUE(std::is_trivially_destructible_v<internal::lasting<std::string>>);
  EXPECT_FALSE(std::is_trivially_destructible_v<std::string>);
}

TEST(Lasting, ConstructsItsObjectFromArguments) {
  static internal::lasting<std::string> text("xxx");
  EXPECT_EQ("xxx", *text);
  *text += 'y';
  EXPECT_EQ("xxxy", *text);
  static const internal::lasting<std::string> empty;
  EXPECT_EQ("", *empty);
}

TEST(Lasting, HoldsWhatAFunctionMakesOfAPrivateConstructor) {
  EXPECT_EQ(7, hidden::value());
}

}  // namespace

}  // namespace lasting_test
