// SPDX-License-Identifier: MIT
// A program on the shared library, compiled with and without -fvisibility=hidden: both have
// one copy of what the templates of the headers keep.
#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "configDB.h"
#include "configRef.h"
#include "events.h"
#include "threading.h"

namespace {

configString item("item", "value");

TEST(Visibility, HidesNoCanonicalVersion) {
  ThreadData::instance(false);
  EXPECT_EQ(item.value(true), "value");
  EXPECT_FALSE(configDB::getCanonical().null());
  const configDB mine(RT_READ);
  EXPECT_FALSE(mine.null());
  EXPECT_EQ(mine.ptr(), threadedConfigDB::local().ptr());
  EXPECT_EQ(mine.find("item")[0], "value");
}

TEST(Visibility, HidesNoEmptyValue) {
  ThreadData::instance(false);
  item.value(true);
  const configDB mine(RT_READ);
  EXPECT_EQ(&mine.find("none"), &configDB::dummy());
  EXPECT_EQ(&threadedConfigDB::local().find("none"), &configDB::dummy());
}

TEST(Visibility, LetsAProgramEditAndPublish) {
  ThreadData::instance(false);
  item.value(true);
  {
    editableConfigDB editor;
    EXPECT_FALSE(editor.null());
    editor.set("item", "another", DistName(), false);
  }
  threadedConfigDB::refresh();
  EXPECT_EQ(item.value(true), "another");
}

// The program publishes with its own copy of the templates, and the library reads.
TEST(Visibility, LetsAProgramClearTheCanonicalVersion) {
  ThreadData::instance(false);
  item.value(true);
  configDB nothing(RT_NULL);
  EXPECT_TRUE(nothing.setCanonical(false));
  EXPECT_TRUE(configDB::getCanonical().null());
  threadedConfigDB::refresh();
  EXPECT_TRUE(threadedConfigDB::local().null());
}

}  // namespace
