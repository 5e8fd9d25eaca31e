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

namespace hopopen {
namespace {

namespace fs = std::filesystem;

const stamp STAMP = {1, 2, 3, 4, 5};

catalogEntry entry(const std::string& path) {
  return {path, STAMP, "A viewer", {"vnc", "spice+tls"}};
}

TEST(Catalog, IsALineForEachFile) {
  EXPECT_EQ("hopopen catalog 1\n1\t2\t3\t4\t5\tvnc spice+tls\tA viewer\t/a/b.toml\n",
            catalog(std::vector{entry("/a/b.toml")}).text());
}

TEST(Catalog, FindsWhatItWrote) {
  const catalog read(catalog(std::vector{entry("/a b/c.toml"), entry("/d.toml")}).text());
  const catalogEntry* const found = read.find("/a b/c.toml", STAMP);
  ASSERT_NE(nullptr, found);
  EXPECT_EQ("A viewer", found->title);
  EXPECT_EQ((std::vector<std::string>{"vnc", "spice+tls"}), found->schemes);
  EXPECT_NE(nullptr, read.find("/d.toml", STAMP));
  EXPECT_EQ(nullptr, read.find("/e.toml", STAMP));
}

TEST(Catalog, DoesNotKnowAFileThatHasChanged) {
  const catalog known(std::vector{entry("/a.toml")});
  for (std::uint64_t stamp::*const part : {&stamp::device, &stamp::inode, &stamp::size}) {
    stamp other = STAMP;
    (other.*part)++;
    EXPECT_EQ(nullptr, known.find("/a.toml", other));
  }
  for (std::int64_t stamp::*const part : {&stamp::modified, &stamp::changed}) {
    stamp other = STAMP;
    (other.*part)++;
    EXPECT_EQ(nullptr, known.find("/a.toml", other));
  }
}

TEST(Catalog, LeavesOutPathsThatWouldBreakItsLines) {
  EXPECT_EQ("hopopen catalog 1\n",
            catalog(std::vector{entry("/a\n.toml"), entry("/a\t.toml")}).text());
}

TEST(Catalog, TakesWhatItDoesNotUnderstandForNothing) {
  const std::string line = "1\t2\t3\t4\t5\tvnc\tA viewer\t/a.toml\n";
  const std::string head = "hopopen catalog 1\n";
  EXPECT_NE(nullptr, catalog(head + line).find("/a.toml", STAMP));
  for (const std::string& bad :
       {line, "hopopen catalog 2\n" + line, head + "1\t2\t3\t4\tvnc\tA viewer\t/a.toml\n",
        head + "x\t2\t3\t4\t5\tvnc\tA viewer\t/a.toml\n",
        head + "1\t2x\t3\t4\t5\tvnc\tA viewer\t/a.toml\n",
        head + "1\t2\t\t4\t5\tvnc\tA viewer\t/a.toml\n",
        head + "1\t2\t3\t99999999999999999999\t5\tvnc\tA viewer\t/a.toml\n",
        head + "1\t2\t3\t4\t \tvnc\tA viewer\t/a.toml\n",
        head + "1\t2\t3\t4\t5\tvnc\tA viewer\t/a.toml", std::string()}) {
    EXPECT_EQ(nullptr, catalog(bad).find("/a.toml", STAMP)) << bad;
  }
}

TEST(Catalog, TakesTheGoodLinesAmongBadOnes) {
  const catalog known("hopopen catalog 1\nbad\n1\t2\t3\t4\t5\tvnc\tA viewer\t/a.toml\n\n");
  EXPECT_NE(nullptr, known.find("/a.toml", STAMP));
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
    return "name = \"V\"\nschemes = [\"" + scheme + "\"]\nprograms = [\"v\"]\narguments = []\n";
  }
  void write(const std::string& name, const std::string& text) const {
    std::ofstream(m_folder / name, std::ios::binary) << text;
  }
  std::vector<std::string> folders() const { return {m_folder / "viewers"}; }
  std::string path() const { return m_folder / "cache" / "viewers"; }

  // What a catalog of all files says, as if they had been there for long.
  catalog settled() const { return catalog(readDefinitions(folders()).entries); }

  fs::path m_folder;
};

TEST_F(CatalogFile, IsEmptyWhenThereIsNone) {
  EXPECT_EQ("hopopen catalog 1\n", readCatalog(path()).text());
  EXPECT_EQ("hopopen catalog 1\n", readCatalog("").text());
}

TEST_F(CatalogFile, LeavesOutFilesThatWereChangedJustNow) {
  keepCatalog(path(), readDefinitions(folders()));
  EXPECT_EQ("hopopen catalog 1\n", readCatalog(path()).text());
}

TEST_F(CatalogFile, KeepsFilesThatWereChangedEarlier) {
  definitions known = readDefinitions(folders());
  for (catalogEntry& one : known.entries) {
    one.file.changed -= 3'000'000'000;
  }
  keepCatalog(path(), known);
  const catalog kept = readCatalog(path());
  EXPECT_NE(nullptr, kept.find(folders()[0] + "/one.toml", known.entries[0].file));
  EXPECT_NE(nullptr, kept.find(folders()[0] + "/two.toml", known.entries[1].file));
  std::size_t files = 0;
  for ([[maybe_unused]] const auto& file : fs::directory_iterator(m_folder / "cache")) {
    files++;
  }
  EXPECT_EQ(1U, files);
}

TEST_F(CatalogFile, IsLeftAloneWhenItSaysTheSame) {
  keepCatalog(path(), definitions());
  fs::last_write_time(path(), fs::file_time_type::min() + std::chrono::hours(1));
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

TEST_F(CatalogFile, LetsDefinitionsOfOtherSchemesUnread) {
  const catalog known = settled();
  const definitions read = readDefinitions(folders(), shortcut{known, "ssh"});
  ASSERT_EQ(2U, read.viewers.size());
  EXPECT_EQ("one", read.viewers[0].name);
  EXPECT_EQ("V", read.viewers[0].title);
  EXPECT_EQ(std::vector<std::string>{"vnc"}, read.viewers[0].schemes);
  EXPECT_TRUE(read.viewers[0].programs.empty());
  EXPECT_EQ(std::vector<std::string>{"v"}, read.viewers[1].programs);
  EXPECT_EQ(1U, read.entries.size());
}

TEST_F(CatalogFile, DoesNotHideAFaultThatCameLater) {
  const catalog known = settled();
  write("viewers/one.toml", definitionFor("vnc") + "x");
  const definitions read = readDefinitions(folders(), shortcut{known, "ssh"});
  EXPECT_EQ(1U, read.viewers.size());
  EXPECT_EQ(1U, read.found.size());
}

TEST_F(CatalogFile, DoesNotHideASchemeThatCameLater) {
  const catalog known = settled();
  fs::remove(m_folder / "viewers/one.toml");
  write("viewers/one.toml", definitionFor("ssh"));
  const definitions read = readDefinitions(folders(), shortcut{known, "ssh"});
  EXPECT_EQ(std::vector<std::string>{"v"}, read.viewers[0].programs);
}

}  // namespace
}  // namespace hopopen
