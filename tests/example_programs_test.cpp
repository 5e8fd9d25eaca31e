// SPDX-License-Identifier: MIT
// Runs the programs of examples/ as their transcripts show.  A line of a transcript that
// begins with "$ " is a command for the shell; the lines up to the next one are what it
// writes.  The tutorial's code and its sessions are those of its example.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "texts.h"

namespace example_programs_test {

namespace {

struct command {
  std::string line;
  std::string output;
};

std::vector<command> transcript(const std::string& text) {
  std::vector<command> result;
  for (const std::string& line : linesOf(text)) {
    if (line.starts_with("$ ")) {
      result.push_back({line.substr(2), ""});
    } else if (!result.empty()) {
      result.back().output += line + "\n";
    }
  }
  return result;
}

std::string outputOf(const std::string& line) {
  const std::string script = "exec 2>&1; PATH='" EXAMPLE_PROGRAMS "':$PATH; " + line;
  std::FILE* const pipe = popen(script.c_str(), "r");
  if (pipe == nullptr) return "popen() failed";
  std::string output;
  std::array<char, 4096> buffer;
  while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
    output.append(buffer.data(), count);
  }
  pclose(pipe);
  return output;
}

void expectTranscript(const std::string& name) {
  const std::vector<command> commands = transcript(readFile(EXAMPLES "/" + name + ".txt"));
  EXPECT_FALSE(commands.empty()) << name << ".txt has no command";
  for (const command& expected : commands) {
    EXPECT_EQ(outputOf(expected.line), expected.output) << "$ " << expected.line;
  }
}

// The blocks of a document between ```KIND and ```.
std::vector<std::string> blocks(const std::string& document, const std::string& kind) {
  std::vector<std::string> result;
  const std::string open = "\n```" + kind + "\n";
  for (std::size_t start = document.find(open); start != std::string::npos;
       start = document.find(open, start)) {
    start += open.size();
    result.push_back(document.substr(start, document.find("```\n", start) - start));
  }
  return result;
}

TEST(Examples, CommandLineToolOverridesItsItemsAndFlags) {
  expectTranscript("greet");
}

TEST(Examples, HandlerWritesEventsAsJSONLines) {
  expectTranscript("json_events");
}

TEST(Examples, NamesAreTakenApartAndPutTogether) {
  expectTranscript("names");
}

TEST(Examples, ProcessesSeeTheirOwnDatabases) {
  expectTranscript("two_processes");
}

TEST(Examples, URIsAreReadAndBuilt) {
  expectTranscript("uris");
}

TEST(Examples, TutorialRuns) {
  expectTranscript("tutorial");
}

TEST(Tutorial, ShowsTheCodeOfItsExample) {
  const std::string source = readFile(EXAMPLES "/tutorial.cpp");
  const std::vector<std::string> shown = blocks(readFile(DOCUMENTS "/tutorial.md"), "cpp");
  ASSERT_FALSE(shown.empty());
  ASSERT_TRUE(source.starts_with("// SPDX-" + std::string("License-Identifier: ")));
  std::size_t position = source.find('\n');  // nobody learns anything from that line
  for (const std::string& block : shown) {
    const std::size_t found = source.find(block, position);
    ASSERT_NE(found, std::string::npos) << "not in tutorial.cpp, or not in this order:\n" << block;
    EXPECT_EQ(source.substr(position, found - position).find_first_not_of('\n'), std::string::npos)
        << "left out before:\n"
        << block;
    position = found + block.size();
  }
  EXPECT_EQ(position, source.size()) << "left out at the end";
}

TEST(Tutorial, ShowsTheSessionsOfItsExample) {
  std::string sessions;
  for (const std::string& block : blocks(readFile(DOCUMENTS "/tutorial.md"), "console")) {
    sessions += block;
  }
  EXPECT_EQ(sessions, readFile(EXAMPLES "/tutorial.txt"));
}

}  // namespace

}  // namespace example_programs_test
