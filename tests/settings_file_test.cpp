// SPDX-License-Identifier: MIT
// Changes of a settings file on disk, by one process and by many at once.

#include "settings_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "settings_folder.h"
#include "texts.h"

namespace settings_file_test {

using settingsFolder::change;
using settingsFolder::changeSettings;
using settingsFolder::NEW;
using settingsFolder::OLD;
using settingsFolder::Plan;
using settingsFolder::plan;
using settingsFolder::SettingsFile;
using settingsFolder::texts;
using settingsFolder::trust;
using settingsFolder::use;

// --- When all is well --------------------------------------------------------

TEST_F(SettingsFile, IsMadeWithItsFolders) {
  EXPECT_EQ(changeSettings(folder + "/x/y/hopopen.toml", use("vnc", "a")), "");
  EXPECT_EQ(readFile(folder + "/x/y/hopopen.toml"), "[use]\nvnc = \"a\"\n");
  EXPECT_EQ(names(), (texts{"x", "x/y", "x/y/hopopen.toml", "x/y/hopopen.toml.lock"}));
  EXPECT_EQ(modeOf(folder + "/x"), 0700U);
  EXPECT_EQ(modeOf(folder + "/x/y"), 0700U);
  EXPECT_EQ(modeOf(folder + "/x/y/hopopen.toml"), 0600U);
  EXPECT_EQ(modeOf(folder + "/x/y/hopopen.toml.lock"), 0600U);
}

TEST_F(SettingsFile, IsReplacedByOneOfItsOwnersAlone) {
  writeFile(file, OLD);
  ASSERT_EQ(chmod(file.c_str(), 0644), 0);
  umask(0277);
  EXPECT_EQ(changed(use("vnc", "b")), "");
  EXPECT_EQ(readFile(file), NEW);
  EXPECT_EQ(modeOf(file), 0600U);
  EXPECT_EQ(names(), (texts{"hopopen.toml", "hopopen.toml.lock"}));
}

TEST_F(SettingsFile, IsSyncedBeforeItIsRenamedAndItsFolderAfterwards) {
  writeFile(file, OLD);
  EXPECT_EQ(changed(use("vnc", "b")), "");
  const std::string once = "open fstat read close ";
  const std::size_t locked = plan.calls.find("open flock ");
  ASSERT_NE(locked, std::string::npos) << plan.calls;
  EXPECT_EQ(plan.calls.substr(0, once.size()), once);
  EXPECT_EQ(
      plan.calls.substr(locked),
      "open flock " + once + "open unlink open fchmod write fsync close rename fsync close close ");
}

TEST_F(SettingsFile, IsWrittenInPortionsWhenTheSystemWantsIt) {
  writeFile(file, OLD);
  plan.portion = 7;
  EXPECT_EQ(changed(use("vnc", "b")), "");
  EXPECT_EQ(readFile(file), NEW);
}

TEST_F(SettingsFile, IsLeftAloneWhenNothingChanges) {
  writeFile(file, OLD);
  ASSERT_EQ(chmod(file.c_str(), 0644), 0);
  EXPECT_EQ(changed(use("vnc", "a")), "");
  EXPECT_EQ(plan.calls, "open fstat read close ");
  EXPECT_EQ(names(), (texts{"hopopen.toml"}));
  EXPECT_EQ(modeOf(file), 0644U);
}

TEST_F(SettingsFile, IsNotMadeToForgetSomething) {
  change what;
  what.use["vnc"] = std::nullopt;
  EXPECT_EQ(changeSettings(folder + "/x/hopopen.toml", what), "");
  EXPECT_EQ(names(), texts());
}

TEST_F(SettingsFile, MayBeInTheFolderWhereTheProgramRuns) {
  ASSERT_EQ(
      runChild([&] {
        _exit(chdir(folder.c_str()) == 0 && changeSettings("f", use("vnc", "a")).empty() ? 7 : 1);
      }).ending,
      "exit 7");
  EXPECT_EQ(readFile(folder + "/f"), "[use]\nvnc = \"a\"\n");
}

TEST_F(SettingsFile, WaitsForTheLock) {
  writeFile(file, OLD);
  const int lock =
      systemCalls::open.real((file + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(systemCalls::flock.real(lock, LOCK_EX), 0);
  const pid_t child = fork();
  if (child == 0) {
    systemCalls::close.real(lock);
    _exit(changeSettings(file, use("vnc", "b")).empty() ? 0 : 1);
  }
  usleep(200000);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, WNOHANG), 0);
  EXPECT_EQ(readFile(file), OLD);
  writeFile(file, "[use]\nvnc = \"a\"\nssh = \"c\"\n");  // what the other process did meanwhile
  systemCalls::close.real(lock);
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile(file), "[use]\nvnc = \"b\"\nssh = \"c\"\n");
}

TEST_F(SettingsFile, IsLeftAloneWhenAnotherProcessHasMadeTheChangeMeanwhile) {
  writeFile(file, OLD);
  const int lock =
      systemCalls::open.real((file + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(systemCalls::flock.real(lock, LOCK_EX), 0);
  const pid_t child = fork();
  if (child == 0) {
    systemCalls::close.real(lock);
    _exit(changeSettings(file, use("vnc", "b")).empty() ? 0 : 1);
  }
  usleep(200000);
  writeFile(file, "use.vnc = 'b'");
  ASSERT_EQ(chmod(file.c_str(), 0644), 0);
  systemCalls::close.real(lock);
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile(file), "use.vnc = 'b'");
  EXPECT_EQ(modeOf(file), 0644U);
}

TEST_F(SettingsFile, IsChangedAfterInterruptions) {
  writeFile(file, OLD);
  plan.interruptions = 3;
  EXPECT_EQ(changed(use("vnc", "b")), "");
  EXPECT_NE(plan.calls.find("flock flock flock flock "), std::string::npos) << plan.calls;
  plan = Plan();
  plan.failed = "write";
  plan.error = EINTR;
  EXPECT_EQ(changed(use("vnc", "a")), "");
  EXPECT_NE(plan.calls.find("write write "), std::string::npos) << plan.calls;
  EXPECT_EQ(readFile(file), OLD);
}

// --- Links -------------------------------------------------------------------

TEST_F(SettingsFile, IsChangedThroughALink) {
  std::filesystem::create_directory(folder + "/dots");
  writeFile(folder + "/dots/real", OLD);
  std::filesystem::create_symlink(folder + "/dots/real", file);
  EXPECT_EQ(changed(use("vnc", "b")), "");
  EXPECT_EQ(std::filesystem::read_symlink(file), folder + "/dots/real");
  EXPECT_EQ(readFile(folder + "/dots/real"), NEW);
  EXPECT_EQ(modeOf(folder + "/dots/real"), 0600U);
  EXPECT_EQ(names(), (texts{"dots", "dots/real", "dots/real.lock", "hopopen.toml"}));
}

TEST_F(SettingsFile, IsChangedThroughAChainOfRelativeLinks) {
  std::filesystem::create_directories(folder + "/a/b");
  writeFile(folder + "/a/real", OLD);
  std::filesystem::create_symlink("../real", folder + "/a/b/second");
  std::filesystem::create_symlink("a/b/second", file);
  EXPECT_EQ(changed(use("vnc", "b")), "");
  EXPECT_EQ(readFile(folder + "/a/real"), NEW);
  EXPECT_EQ(names(), (texts{"a", "a/b", "a/b/second", "a/real", "a/real.lock", "hopopen.toml"}));
  EXPECT_EQ(std::filesystem::read_symlink(file), "a/b/second");
  EXPECT_EQ(std::filesystem::read_symlink(folder + "/a/b/second"), "../real");
}

TEST_F(SettingsFile, IsMadeWhereALinkLeadsToNothing) {
  std::filesystem::create_symlink("x/y/real", file);
  EXPECT_EQ(changed(use("vnc", "a")), "");
  EXPECT_EQ(readFile(folder + "/x/y/real"), "[use]\nvnc = \"a\"\n");
  EXPECT_EQ(names(), (texts{"hopopen.toml", "x", "x/y", "x/y/real", "x/y/real.lock"}));
  EXPECT_EQ(modeOf(folder + "/x/y"), 0700U);
}

TEST_F(SettingsFile, IsNotFollowedForEver) {
  plan.failed = "open";  // the first look at the file, which would find the circle
  plan.error = ENOENT;
  std::filesystem::create_symlink(file, file);
  EXPECT_EQ(changed(use("vnc", "a")),
            "Cannot write " + file +
                ": Too many levels of symbolic links. Nothing was changed. Check what is there, "
                "and try again.");
}

// --- Faults ------------------------------------------------------------------

TEST_F(SettingsFile, WithAFaultIsNeverTouched) {
  for (const auto& [text, fault] : std::map<std::string, std::string>{
           {"[use]\nvnc = 1\n", ":2:7: the viewer of \"vnc\" must be a text"},
           {"# mine\n[use\n", ":2:5: Error while parsing table header: expected ']', saw '\\n'"},
           {"trust.hosts = ['+']", ":1:16: \"+\" is not a host"},
           {std::string(1048577, '#'), ":1:1: is larger than 1 MiB"}}) {
    writeFile(file, text);
    ASSERT_EQ(chmod(file.c_str(), 0644), 0);
    for (const change& what : {use("vnc", "b"), trust("a"), change()}) {
      EXPECT_EQ(changeSettings(file, what),
                file + fault + ". Nothing was changed. Fix the file first.");
    }
    EXPECT_EQ(readFile(file), text);
    EXPECT_EQ(names(), (texts{"hopopen.toml"}));
    EXPECT_EQ(modeOf(file), 0644U);
  }
}

TEST_F(SettingsFile, ThatIsNoFileIsNeverReplaced) {
  std::filesystem::create_directory(file);
  EXPECT_EQ(changed(use("vnc", "b")),
            file + ":1:1: is not a file of text. Nothing was changed. Fix the file first.");
  std::filesystem::remove(file);
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  EXPECT_EQ(changed(use("vnc", "b")),
            file + ":1:1: is not a file of text. Nothing was changed. Fix the file first.");
  EXPECT_EQ(names(), (texts{"hopopen.toml"}));
}

TEST_F(SettingsFile, ThatGetsAFaultWhileWaitingIsNotTouched) {
  writeFile(file, OLD);
  const int lock =
      systemCalls::open.real((file + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(systemCalls::flock.real(lock, LOCK_EX), 0);
  const pid_t child = fork();
  if (child == 0) {
    systemCalls::close.real(lock);
    _exit(changeSettings(file, use("vnc", "b")) ==
                  file + ":1:7: \"use\" must be a table. Nothing was changed. Fix the file first."
              ? 7
              : 1);
  }
  usleep(200000);
  writeFile(file, "use = 1");
  systemCalls::close.real(lock);
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 7 << 8);
  EXPECT_EQ(readFile(file), "use = 1");
}

TEST_F(SettingsFile, IsNotMadeLargerThanItCanBeRead) {
  const std::string text = "#" + std::string(1048540, 'x') + "\n";
  writeFile(file, text);
  EXPECT_EQ(changed(use("vnc", std::string(30, 'x'))),
            "Cannot write " + file +
                ": it would be larger than 1 MiB. Nothing was changed. Remove something from it, "
                "and try again.");
  EXPECT_EQ(readFile(file), text);
  // "\n[use]\nvnc = \"\"\n" has 16 bytes.
  EXPECT_EQ(changed(use("vnc", std::string(18, 'x'))), "");
  EXPECT_EQ(readFile(file).size(), 1048576U);
}

TEST_F(SettingsFile, IsNotChangedToWhatItCannotSay) {
  writeFile(file, OLD);
  EXPECT_EQ(changed(use("vnc", "\xFF")),
            "Cannot change " + file +
                " without losing something in it. Nothing was changed. Change it by hand.");
  EXPECT_EQ(readFile(file), OLD);
}

TEST_F(SettingsFile, IsNamedInPrintableWords) {
  EXPECT_EQ(changeSettings("/proc/\n\xC3\xA9/f", use("vnc", "a")),
            "Cannot write /proc/\\x0A\\xC3\\xA9/f: No such file or directory. Nothing was "
            "changed. Check what is there, and try again.");
}

// --- Many processes ----------------------------------------------------------

TEST_F(SettingsFile, LosesNothingOfTwoHundredChangesAtOnce) {
  writeFile(file, "# mine\n[trust]\nhosts = [\n  \"first.example\", # one\n]\n");
  int start[2];
  ASSERT_EQ(pipe(start), 0);
  std::vector<pid_t> children;
  for (int i = 0; i < 200; i++) {
    children.push_back(fork());
    if (children.back() == 0) {
      systemCalls::close.real(start[1]);
      char nothing;
      systemCalls::read.real(start[0], &nothing, 1);  // until the other end is closed
      const std::string name = std::to_string(i / 2);
      _exit(changeSettings(
                file, i % 2 == 0 ? trust("h" + name + ".example") : use("s" + name, "v" + name))
                    .empty()
                ? 0
                : 1);
    }
  }
  systemCalls::close.real(start[0]);
  systemCalls::close.real(start[1]);
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  const std::string text = readFile(file);
  std::size_t lines = 0;
  for (const char c : text) {
    lines += c == '\n' ? 1U : 0U;
  }
  for (int i = 0; i < 100; i++) {
    const std::string name = std::to_string(i);
    EXPECT_NE(text.find("\n  \"h" + name + ".example\",\n"), std::string::npos) << name;
    EXPECT_NE(text.find("\ns" + name + " = \"v" + name + "\"\n"), std::string::npos) << name;
  }
  EXPECT_EQ(lines, 207U) << text;  // the five, a blank line and "[use]"
  EXPECT_EQ(text.substr(0, 54), "# mine\n[trust]\nhosts = [\n  \"first.example\", # one\n  \"h");
  EXPECT_EQ(names(), (texts{"hopopen.toml", "hopopen.toml.lock"}));
  EXPECT_EQ(modeOf(file), 0600U);
}

}  // namespace settings_file_test
