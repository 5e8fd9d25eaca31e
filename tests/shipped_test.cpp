// SPDX-License-Identifier: MIT
// The outlines of the shipped definitions are known without reading these as TOML.

#include "shipped.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>
#include <string>

#include "definition_reader.h"
#include "definitions.h"
#include "outline.h"
#include "texts.h"

namespace hopopen::shipped_test {
namespace {

namespace fs = std::filesystem;

std::map<std::string, std::string> texts() {
  std::map<std::string, std::string> result;
  for (const auto& file : fs::directory_iterator(VIEWERS)) {
    result[file.path().stem()] = readFile(file.path());
  }
  return result;
}

// The text between quotes in C++.  Octal, as hexadecimal escapes have no end.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    result += c == '\t' ? "\\t" : c == '\x1f' ? "\\037" : std::string(1, c);
  }
  return result;
}

// A line of the list for the definition NAME.toml.
std::string lineFor(const std::string& name, const std::string& text) {
  faults found;
  const auto whole = readDefinition(name, text, name, found);
  EXPECT_TRUE(whole) << name;
  std::ostringstream line;
  line << "{\"" << name << "\", " << text.size() << ", 0x" << std::hex << fingerprint(text)
       << ",\n \"" << escaped(outlineText(*whole)) << "\"},\n";
  return line.str();
}

TEST(Shipped, OutlinesAreThoseOfTheDefinitions) {
  std::string expected;
  for (const auto& [name, text] : texts()) {
    expected += lineFor(name, text);
  }
  const fs::path list = fs::path(VIEWERS).parent_path() / "hopopen/shipped_outlines.inc";
  if (readFile(list) != expected) {
    const fs::path made = fs::path(testing::TempDir()) / "shipped_outlines.inc";
    writeFile(made, expected);
    FAIL() << "A definition was changed.  Type:  cp " << made << ' ' << list;
  }
}

TEST(Shipped, KnowsATextThatIsShippedAsItIs) {
  const auto found = shippedOutline("tigervnc", texts().at("tigervnc"));
  ASSERT_TRUE(found);
  EXPECT_EQ("tigervnc", found->name);
  EXPECT_EQ("TigerVNC", found->title);
  EXPECT_EQ((std::vector<std::string>{"vnc"}), found->schemes);
  EXPECT_EQ((std::vector<std::string>{"xtigervncviewer", "vncviewer"}), found->programs);
  EXPECT_FALSE(found->terminal);
  EXPECT_FALSE(found->whole);
}

TEST(Shipped, DefinitionsAreReadByAClickInOutline) {
  const definitions outlines = readOutlines({VIEWERS}, {});
  const definitions whole = readDefinitions({VIEWERS});
  ASSERT_EQ(whole.viewers.size(), outlines.viewers.size());
  ASSERT_LE(18U, whole.viewers.size());
  for (std::size_t i = 0; i < whole.viewers.size(); i++) {
    EXPECT_FALSE(outlines.viewers[i].whole) << whole.viewers[i].name;
    EXPECT_TRUE(whole.viewers[i].whole);
    EXPECT_EQ(whole.viewers[i].file, outlines.viewers[i].file);
    EXPECT_EQ(whole.viewers[i].identity, outlines.viewers[i].identity);
    EXPECT_EQ(outlineText(whole.viewers[i]), outlineText(outlines.viewers[i]));
  }
}

TEST(Shipped, DefinitionsAreReadWholeWhenTheyAreNeeded) {
  definitions known = readOutlines({VIEWERS}, {});
  readWhole(known, {"tigervnc"});
  ASSERT_NE(nullptr, known.named("tigervnc"));
  EXPECT_TRUE(known.named("tigervnc")->whole);
  EXPECT_EQ(3U, known.named("tigervnc")->arguments.size());
  EXPECT_EQ(5900, known.named("tigervnc")->port);
  EXPECT_FALSE(known.named("tightvnc")->whole);
}

TEST(Shipped, KnowsNoTextThatDiffersInAByte) {
  std::string text = texts().at("tigervnc");
  EXPECT_FALSE(shippedOutline("tigervnc", text + '\n'));
  EXPECT_FALSE(shippedOutline("tigervnc", text.substr(1)));
  text[text.size() / 2]++;
  EXPECT_FALSE(shippedOutline("tigervnc", text));
}

TEST(Shipped, KnowsNoTextUnderAnotherName) {
  EXPECT_FALSE(shippedOutline("tightvnc", texts().at("tigervnc")));
  EXPECT_FALSE(shippedOutline("", ""));
}

TEST(Shipped, FingerprintsAreThoseOfFnv1aWith64Bits) {
  EXPECT_EQ(0xcbf29ce484222325, fingerprint(""));
  EXPECT_EQ(0xaf63dc4c8601ec8c, fingerprint("a"));
  EXPECT_EQ(0x85944171f73967e8, fingerprint("foobar"));
  EXPECT_EQ(0xaf64724c8602eb6e, fingerprint("\xff"));
}

}  // namespace
}  // namespace hopopen::shipped_test
