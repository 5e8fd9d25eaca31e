// SPDX-License-Identifier: MIT
// Which desktop entry opens links of a scheme, as hopopen's check works it out.

#include "associations.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hopopen::associations_test {
namespace {

associationFile file(const std::string& path, const std::string& text) {
  return {path, keyFile(text)};
}

std::string defaults(const std::string& ids) {
  return "[Default Applications]\nx-scheme-handler/vnc=" + ids + "\n";
}
std::string added(const std::string& ids) {
  return "[Added Associations]\nx-scheme-handler/vnc=" + ids + "\n";
}
std::string removed(const std::string& ids) {
  return "[Removed Associations]\nx-scheme-handler/vnc=" + ids + "\n";
}
std::string cached(const std::string& ids) {
  return "[MIME Cache]\nx-scheme-handler/vnc=" + ids + "\n";
}

// "ID by FILE" and " of the user".  Entries whose name begins with "x" do not work, and those
// whose name begins with "y" are not beside a cache.
std::string handler(const std::vector<associations>& folders, const std::string& scheme = "vnc") {
  const auto found =
      defaultHandler(folders, scheme, [](const std::string& id, const std::string& cache) {
        return !id.starts_with("x") && (cache.empty() || !id.starts_with("y"));
      });
  return found ? found->id + " by " + found->file + (found->byUser ? " of the user" : "") : "none";
}

TEST(DefaultHandler, IsNoneWithoutListsAndCaches) {
  EXPECT_EQ("none", handler({}));
  EXPECT_EQ("none", handler({{}, {}}));
}

TEST(DefaultHandler, IsTheFirstOfAListThatWorks) {
  associations folder;
  folder.list = file("list", defaults("x1;x2; a ;b;"));
  EXPECT_EQ("a by list", handler({folder}));
  EXPECT_EQ("none", handler({folder}, "ssh"));
  folder.list = file("list", defaults("x1;x2"));
  EXPECT_EQ("none", handler({folder}));
}

TEST(DefaultHandler, IsThatOfTheDesktopsListBeforeThatOfTheFoldersList) {
  associations folder;
  folder.ofDesktop = {file("one", defaults("x1")), file("two", defaults("b"))};
  folder.list = file("list", defaults("a"));
  EXPECT_EQ("b by two", handler({folder}));
}

TEST(DefaultHandler, IsThatOfTheUserBeforeThatOfTheSystem) {
  associations user;
  user.ofUser = true;
  user.list = file("user", defaults("a"));
  associations system;
  system.ofDesktop = {file("desktop", defaults("b"))};
  EXPECT_EQ("a by user of the user", handler({user, system}));
  EXPECT_EQ("b by desktop", handler({system, user}));
}

TEST(DefaultHandler, IsADefaultBeforeAnAssociationThatComesEarlier) {
  associations user;
  user.ofUser = true;
  user.list = file("user", added("a"));
  user.cache = file("cache", cached("c"));
  associations system;
  system.list = file("system", defaults("b"));
  EXPECT_EQ("b by system", handler({user, system}));
  system.list.reset();
  EXPECT_EQ("a by user of the user", handler({user, system}));
  user.list.reset();
  EXPECT_EQ("c by cache", handler({user, system}));
}

TEST(DefaultHandler, IsNothingThatTheSameFolderOrOneBeforeRemoves) {
  associations user;
  user.list = file("user", removed("a;c"));
  user.cache = file("user's cache", cached("a"));
  associations system;
  system.list = file("system", added("c"));
  system.cache = file("system's cache", cached("a;b"));
  EXPECT_EQ("b by system's cache", handler({user, system}));
  EXPECT_EQ("c by system", handler({system, user}));
}

TEST(DefaultHandler, IsNoEntryOfACacheThatIsElsewhere) {
  associations folder;
  folder.cache = file("cache", cached("x;y;a"));
  EXPECT_EQ("a by cache", handler({folder}));
  folder.list = file("list", added("y"));
  EXPECT_EQ("y by list", handler({folder}));
}

TEST(DefaultHandler, MayBeADefaultThatIsRemovedAsAnAssociation) {
  associations folder;
  folder.list = file("list", removed("a") + defaults("a"));
  EXPECT_EQ("a by list", handler({folder}));
}

}  // namespace
}  // namespace hopopen::associations_test
