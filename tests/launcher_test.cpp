// The launcher as its users see it: command lines in, and out come the viewer's
// argument vector, the log, standard output and error, and the exit status.  The
// cases stand in launcher_cases.txt; what does not fit there follows them here.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "launcher_runner.h"

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

struct Case {
  std::string name;
  Strings run;
  std::string command = "tools/hoplaunch";
  std::string program;
  std::optional<Strings> viewer = std::nullopt;
  std::string log;
  std::string logfile = "log";
  std::string err;
  int status = 0;
  std::string broken;  // what is wrong with the case itself
};

std::ostream& operator<<(std::ostream& out, const Case& value) {
  return out << value.name;
}

int hexValue(char digit) {
  const std::size_t value = std::string("0123456789abcdef").find(digit);
  if (value == std::string::npos) {
    throw std::runtime_error("bad hexadecimal digit");
  }
  return static_cast<int>(value);
}

// Reads the quoted word at `at`, behind its opening quote.
std::string quotedWord(const std::string& line, std::size_t& at) {
  std::string result;
  for (; line.at(at) != '"'; ++at) {
    if (line[at] != '\\') {
      result += line[at];
      continue;
    }
    switch (line.at(++at)) {
      case 'n':
        result += '\n';
        break;
      case 't':
        result += '\t';
        break;
      case 'x':
        result += static_cast<char>(hexValue(line.at(at + 1)) * 16 + hexValue(line.at(at + 2)));
        at += 2;
        break;
      case '"':
      case '\\':
        result += line[at];
        break;
      default:
        throw std::runtime_error("bad escape");
    }
  }
  ++at;
  return result;
}

Strings words(const std::string& line) {
  Strings result;
  for (std::size_t at = 0; at < line.size();) {
    if (line[at] == ' ') {
      ++at;
    } else if (line[at] == '"') {
      result.push_back(quotedWord(line, ++at));
    } else {
      const std::size_t end = std::min(line.find(' ', at), line.size());
      result.push_back(line.substr(at, end - at));
      at = end;
    }
  }
  return result;
}

void readLine(Case& value, const std::string& key, const std::string& rest) {
  if (key == "run") {
    value.run = words(rest);
  } else if (key == "command") {
    value.command = words(rest).at(0);
  } else if (key == "program") {
    value.program = rest;
  } else if (key == "viewer") {
    value.viewer = words(rest);
    value.status = 42;
  } else if (key == "log") {
    value.log += (rest.starts_with("<tab>") ? "\t" + rest.substr(5) : rest) + "\n";
  } else if (key == "logfile") {
    value.logfile = rest;
  } else if (key == "stderr") {
    value.err = words(rest).at(0);
  } else if (key == "status") {
    value.status = std::stoi(rest);
  } else {
    throw std::runtime_error("no such key");
  }
}

std::vector<Case> readCases() {
  std::vector<Case> result;
  std::ifstream in(LAUNCHER_CASES);
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line.starts_with("#")) {
      continue;
    }
    const std::size_t colon = line.find(':');
    const std::string key = line.substr(0, colon);
    const std::string rest = colon + 2 < line.size() ? line.substr(colon + 2) : std::string();
    if (key == "case") {
      result.emplace_back();
      result.back().name = rest;
      continue;
    }
    try {
      readLine(result.at(result.size() - 1), key, rest);
    } catch (const std::exception& error) {
      if (result.empty()) {
        result.emplace_back();
        result.back().name = "Broken";
      }
      result.back().broken = line + ": " + error.what();
    }
  }
  return result;
}

class Launcher : public testing::TestWithParam<Case> {};

TEST_P(Launcher, Runs) {
  const Case& expected = GetParam();
  ASSERT_EQ("", expected.broken);
  SCOPED_TRACE("hoplaunch " + testing::PrintToString(expected.run));
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = expected.run, .command = expected.command});

  EXPECT_EQ(expected.err, outcome.err);
  EXPECT_EQ("", outcome.out);
  EXPECT_EQ(expected.status, outcome.status);
  EXPECT_EQ(expected.viewer.has_value(), outcome.viewer.has_value());
  if (outcome.viewer) {
    EXPECT_EQ(expected.program, outcome.viewer->path);
    EXPECT_EQ(expected.viewer.value_or(Strings()), outcome.viewer->arguments);
  }
  EXPECT_EQ(expected.log.empty() ? Strings() : Strings{expected.logfile}, shop.files());
  std::string log = shop.log(expected.logfile);
  if (expected.log.starts_with("TIME")) {
    log = Workshop::withoutStamp(log, outcome);
  }
  EXPECT_EQ(expected.log, log);
}

INSTANTIATE_TEST_SUITE_P(Cases, Launcher, testing::ValuesIn(readCases()),
                         [](const auto& one) { return one.param.name; });

TEST(LauncherCases, AreAllRead) {
  EXPECT_EQ(159U, readCases().size()) << LAUNCHER_CASES;
}

TEST(LauncherLog, IsAppendedTo) {
  Workshop shop;
  launcher::writeFile(shop.work() / "log", "kept, without an end of line ");
  const Outcome first = shop.run({.arguments = {"-log=log", "ssh://h/"}});
  EXPECT_EQ(42, first.status);
  const Outcome second = shop.run({.arguments = {"-log=log", "no URI"}});
  EXPECT_EQ(0, second.status);
  const std::string log = shop.log();
  const std::string kept = "kept, without an end of line ";
  ASSERT_EQ(kept, log.substr(0, kept.size()));
  EXPECT_EQ(
      "TIME: URI = ssh://h/\n"
      "executable: putty\n"
      "\t\"putty\"\n"
      "\t\"h\"\n"
      "Bad URI \"no URI\"\n",
      Workshop::withoutStamp(log.substr(kept.size()), first));
}

TEST(LauncherLog, MayBeStandardError) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {"-log=/dev/stderr", "ftp://h/"}});
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("", outcome.out);
  EXPECT_EQ("TIME: URI = ftp://h/\nno executable for scheme ftp\n",
            Workshop::withoutStamp(outcome.err, outcome));
}

TEST(LauncherLog, IsMadeReadableForAllUnlessMasked) {
  Workshop shop;
  const Outcome outcome =
      shop.run({.arguments = {"-log=log", "vnc://h/"}, .prepare = [] { umask(027); }});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ(static_cast<std::filesystem::perms>(0640),
            std::filesystem::status(shop.work() / "log").permissions());
}

TEST(LauncherProgram, TakesThePlaceOfTheLauncher) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {"vnc://h/"}});
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ(outcome.pid, outcome.viewer->pid);
  EXPECT_EQ(std::filesystem::canonical(shop.work()).string(), outcome.viewer->folder);
}

TEST(LauncherProgram, WritesToTheSameStandardOutput) {
  Workshop shop;
  const Outcome outcome =
      shop.run({.arguments = {"-program=/bin/echo", "vnc://h:1/?a=1", "-style=separate"}});
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("--autoreconnect 0 -a 1 h:1\n", outcome.out);
  EXPECT_EQ("", outcome.err);
}

TEST(LauncherProgram, IsSearchedInTheOrderOfThePath) {
  Workshop shop;
  std::filesystem::create_directory(shop.work() / "later");
  std::filesystem::create_symlink(RECORDING_VIEWER, shop.work() / "later" / "vncviewer");
  std::filesystem::create_symlink(RECORDING_VIEWER, shop.work() / "later" / "only");
  Strings environment = shop.environment();
  environment.at(0) = "PATH=nowhere:bin:later";
  Outcome outcome = shop.run({.arguments = {"vnc://h/"}, .environment = environment});
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ("bin/vncviewer", outcome.viewer->path);
  outcome = shop.run({.arguments = {"vnc://h/", "-program=only"}, .environment = environment});
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ("later/only", outcome.viewer->path);
}

TEST(LauncherProgram, MayBeAShellScriptWithoutAFirstLine) {
  Workshop shop;
  launcher::writeFile(shop.work() / "bin" / "script", "printf '<%s>' \"$@\"\nexit 7\n");
  std::filesystem::permissions(shop.work() / "bin" / "script", std::filesystem::perms::owner_all);
  const Outcome outcome = shop.run({.arguments = {"-program=script", "ssh://h/?a=b c"}});
  EXPECT_EQ(7, outcome.status);
  EXPECT_EQ("<-a=b c><h>", outcome.out);
  EXPECT_EQ("", outcome.err);
}

}  // namespace
