// SPDX-License-Identifier: MIT
// The catalog of definitions, in memory and on disk.

#include "catalog.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "catalog_file.h"
#include "definitions.h"
#include "texts.h"

namespace hopopen::catalog_test {
namespace {

namespace fs = std::filesystem;

const stamp STAMP = {1, 2, 3, 4, 5};

definition viewer(const std::string& file) {
  definition result;
  result.file = file;
  result.identity = STAMP;
  result.name = "own";
  result.title = "A viewer";
  result.schemes = {"vnc", "spice+tls"};
  result.programs = {"a b", "c"};
  result.rank = -7;
  result.unguarded = {"clipboard", "full screen"};
  return result;
}

const std::string HEAD = "hopopen catalog 3\n";
const std::string REST =
    "own\tA viewer\tvnc\x1fspice+tls\ta b\x1f"
    "c\tclipboard\x1f"
    "full screen\t\t\t-7\n";

TEST(Catalog, IsALineForEachFile) {
  EXPECT_EQ(HEAD + "/a/b.toml\t1\t2\t3\t4\t5\t" + REST,
            catalog(std::vector{viewer("/a/b.toml")}).text());
}

TEST(Catalog, FindsTheOutlinesThatItWrote) {
  const catalog read(catalog(std::vector{viewer("/d.toml"), viewer("/a b/c.toml")}).text());
  const auto found = read.find("/a b/c.toml", STAMP);
  ASSERT_TRUE(found);
  EXPECT_FALSE(found->whole);
  EXPECT_EQ("/a b/c.toml", found->file);
  EXPECT_EQ(STAMP, found->identity);
  EXPECT_EQ("own", found->name);
  EXPECT_EQ("A viewer", found->title);
  EXPECT_EQ((std::vector<std::string>{"vnc", "spice+tls"}), found->schemes);
  EXPECT_EQ((std::vector<std::string>{"a b", "c"}), found->programs);
  EXPECT_EQ((std::vector<std::string>{"clipboard", "full screen"}), found->unguarded);
  EXPECT_FALSE(found->terminal);
  EXPECT_FALSE(found->inVariables);
  EXPECT_EQ(-7, found->rank);
  EXPECT_TRUE(read.find("/d.toml", STAMP));
  EXPECT_FALSE(read.find("/e.toml", STAMP));
}

TEST(Catalog, KnowsWhoNeedsATerminalAndLetsNothingThrough) {
  definition other = viewer("/a.toml");
  other.terminal = true;
  other.inVariables = true;
  other.unguarded.clear();
  const auto found = catalog(std::vector{other}).find("/a.toml", STAMP);
  ASSERT_TRUE(found);
  EXPECT_TRUE(found->terminal);
  EXPECT_TRUE(found->inVariables);
  EXPECT_TRUE(found->unguarded.empty());
}

TEST(Catalog, DoesNotKnowAFileThatHasChanged) {
  const catalog known(std::vector{viewer("/a.toml")});
  for (std::uint64_t stamp::*const part : {&stamp::device, &stamp::inode, &stamp::size}) {
    stamp other = STAMP;
    (other.*part)++;
    EXPECT_FALSE(known.find("/a.toml", other));
  }
  for (std::int64_t stamp::*const part : {&stamp::modified, &stamp::changed}) {
    stamp other = STAMP;
    (other.*part)++;
    EXPECT_FALSE(known.find("/a.toml", other));
  }
}

TEST(Catalog, LeavesOutPathsThatWouldBreakItsLines) {
  EXPECT_EQ(HEAD, catalog(std::vector{viewer("/a\n.toml"), viewer("/a\t.toml")}).text());
}

TEST(Catalog, TakesWhatItDoesNotUnderstandForNothing) {
  const std::string key = "/a.toml\t1\t2\t3\t4\t5\t";
  EXPECT_TRUE(catalog(HEAD + key + REST).find("/a.toml", STAMP));
  const std::vector<std::string> texts = {
      key + REST,
      "hopopen catalog 1\n" + key + REST,
      HEAD + "/a.toml\t1\t2\t3\t4\t" + REST,
      HEAD + key + "own\tA viewer\tvnc\tv\t\t\t\n",
      HEAD + key + "own\tA viewer\tvnc\tv\t\t\t7x\n",
      HEAD + key + "own\tA viewer\tvnc\tv\t\t7\n",
      HEAD + key + "own\tA viewer\tvnc\tv\t\t\t99999999999999999999\n",
      HEAD + key + "own\tA viewer\tvnc\tv\t\t\t7",
      HEAD + "/b.toml\t\n" + key + REST,
      ""};
  for (const std::string& text : texts) {
    EXPECT_FALSE(catalog(text).find("/a.toml", STAMP)) << text;
  }
}

TEST(Catalog, TakesTheGoodLinesAmongBadOnes) {
  const catalog known(HEAD + "\n/a.toml\t1\t2\t3\t4\t5\t" + REST + "bad\n");
  EXPECT_TRUE(known.find("/a.toml", STAMP));
}

// --- On disk ---------------------------------------------------------------

class CatalogFile : public testing::Test {
 protected:
  CatalogFile() {
    std::string pattern = testing::TempDir() + "catalogXXXXXX";
    m_folder = mkdtemp(pattern.data());
    fs::create_directory(m_folder / "viewers");
    write("viewers/one.toml", definitionFor("vnc"));
    write("viewers/two.toml", definitionFor("ssh"));
  }
  ~CatalogFile() override { fs::remove_all(m_folder); }

  static std::string definitionFor(const std::string& scheme) {
    return "name = \"V\"\nschemes = [\"" + scheme +
           "\"]\nprograms = [\"v\"]\narguments = [\"a\", \"b\"]\n";
  }
  void write(const std::string& name, const std::string& text) const {
    writeFile(m_folder / name, text);
  }
  std::vector<std::string> folders() const { return {m_folder / "viewers"}; }
  std::string path() const { return m_folder / "cache" / "viewers"; }

  // The text of a catalog of all files, as if they were old.
  catalog settled() const { return catalog(readDefinitions(folders()).viewers); }

  fs::path m_folder;
};

TEST_F(CatalogFile, IsEmptyWhenThereIsNone) {
  EXPECT_EQ("hopopen catalog 3\n", readCatalog(path()).text());
  EXPECT_EQ("hopopen catalog 3\n", readCatalog("").text());
}

TEST_F(CatalogFile, LeavesOutFilesThatWereChangedJustNow) {
  keepCatalog(path(), readDefinitions(folders()));
  EXPECT_EQ("hopopen catalog 3\n", readCatalog(path()).text());
}

TEST_F(CatalogFile, KeepsFilesThatWereChangedEarlier) {
  definitions known = readDefinitions(folders());
  for (definition& one : known.viewers) {
    one.identity.changed -= 3'000'000'000;
  }
  keepCatalog(path(), known);
  const catalog kept = readCatalog(path());
  EXPECT_TRUE(kept.find(folders()[0] + "/one.toml", known.viewers[0].identity));
  EXPECT_TRUE(kept.find(folders()[0] + "/two.toml", known.viewers[1].identity));
  std::size_t files = 0;
  for ([[maybe_unused]] const auto& file : fs::directory_iterator(m_folder / "cache")) {
    files++;
  }
  EXPECT_EQ(1U, files);
}

TEST_F(CatalogFile, IsLeftAloneWhenItSaysTheSame) {
  keepCatalog(path(), definitions());
  fs::last_write_time(path(), fs::last_write_time(path()) - std::chrono::hours(1));
  const auto before = fs::last_write_time(path());
  keepCatalog(path(), definitions());
  EXPECT_EQ(before, fs::last_write_time(path()));
}

TEST_F(CatalogFile, IsDoneWithoutWhereItCannotBeWritten) {
  write("cache", "a file");
  keepCatalog(path(), readDefinitions(folders()));
  keepCatalog("", readDefinitions(folders()));
  EXPECT_TRUE(fs::is_regular_file(m_folder / "cache"));
}

TEST_F(CatalogFile, LetsDefinitionsUnreadUntilTheyAreNeeded) {
  definitions known = readOutlines(folders(), settled());
  ASSERT_EQ(2U, known.viewers.size());
  EXPECT_FALSE(known.viewers[0].whole);
  EXPECT_EQ("one", known.viewers[0].name);
  EXPECT_EQ(std::vector<std::string>{"v"}, known.viewers[0].programs);
  EXPECT_TRUE(known.viewers[0].arguments.empty());
  readWhole(known, {"one", "three"});
  ASSERT_EQ(2U, known.viewers.size());
  EXPECT_TRUE(known.viewers[0].whole);
  EXPECT_EQ(2U, known.viewers[0].arguments.size());
  EXPECT_FALSE(known.viewers[1].whole);
}

TEST_F(CatalogFile, DoesNotHideAFaultThatCameLater) {
  const catalog known = settled();
  write("viewers/one.toml", definitionFor("vnc") + "x");
  const definitions read = readOutlines(folders(), known);
  EXPECT_EQ(1U, read.viewers.size());
  EXPECT_EQ(1U, read.found.size());
}

TEST_F(CatalogFile, DoesNotHideASchemeThatCameLater) {
  const catalog known = settled();
  fs::remove(m_folder / "viewers/one.toml");
  write("viewers/one.toml", definitionFor("ssh"));
  const definitions read = readOutlines(folders(), known);
  EXPECT_TRUE(read.viewers[0].whole);
  EXPECT_TRUE(read.viewers[0].opens("ssh"));
}

TEST_F(CatalogFile, LosesAViewerWhoseFileIsBrokenHiddenOrGoneBeforeItIsRead) {
  for (const std::string& text : {definitionFor("vnc") + "x", std::string()}) {
    definitions known = readOutlines(folders(), settled());
    write("viewers/one.toml", text);
    readWhole(known, {"one"});
    ASSERT_EQ(1U, known.viewers.size());
    EXPECT_EQ("two", known.viewers[0].name);
    EXPECT_EQ(text.empty() ? 0U : 1U, known.found.size());
    write("viewers/one.toml", definitionFor("vnc"));
  }
  definitions known = readOutlines(folders(), settled());
  fs::remove(m_folder / "viewers/one.toml");
  readWhole(known, {"one"});
  EXPECT_EQ(1U, known.viewers.size());
  EXPECT_EQ(1U, known.found.size());
}

}  // namespace
}  // namespace hopopen::catalog_test
