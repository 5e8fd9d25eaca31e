// SPDX-License-Identifier: MIT
// Changes of a settings file with every system call failing in turn, and with a process
// killed before and after each of them.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>

#include "settings_folder.h"
#include "texts.h"

namespace settings_fault_test {

using settingsFolder::change;
using settingsFolder::changeSettings;
using settingsFolder::NEW;
using settingsFolder::OLD;
using settingsFolder::Plan;
using settingsFolder::plan;
using settingsFolder::SettingsFile;
using settingsFolder::texts;
using settingsFolder::use;

// --- Calls that fail ---------------------------------------------------------

TEST_F(SettingsFile, IsAsItWasWhenACallFails) {
  const struct {
    const char* call;
    int skipped;
    int error;
    const char* suffix;  // of the path in the message
    const char* what;
  } rows[] = {
      {"lstat", 0, EACCES, "",
       "Permission denied. Nothing was changed. Check who may write there."},
      {"open", 1, EROFS, ".lock",
       "Read-only file system. Nothing was changed. Nobody can write there. Make it writable, or "
       "choose another folder by XDG_CONFIG_HOME."},
      {"flock", 0, ENOLCK, ".lock",
       "No locks available. Nothing was changed. Check what is there, and try again."},
      {"open", 3, EMFILE, "",
       "Too many open files. Nothing was changed. Check what is there, and try again."},
      {"unlink", 0, EISDIR, "",
       "Is a directory. Nothing was changed. Check what is there, and try again."},
      {"open", 4, EPERM, "",
       "Operation not permitted. Nothing was changed. Check who may write there."},
      {"fchmod", 0, EPERM, "",
       "Operation not permitted. Nothing was changed. Check who may write there."},
      {"write", 0, ENOSPC, "",
       "No space left on device. Nothing was changed. Make room there, and try again."},
      {"write", 2, EDQUOT, "",
       "Disk quota exceeded. Nothing was changed. Make room there, and try again."},
      {"fsync", 0, EIO, "",
       "Input/output error. Nothing was changed. Check what is there, and try again."},
      {"close", 2, EIO, "",
       "Input/output error. Nothing was changed. Check what is there, and try again."},
      {"rename", 0, EROFS, "",
       "Read-only file system. Nothing was changed. Nobody can write there. Make it writable, or "
       "choose another folder by XDG_CONFIG_HOME."},
  };
  for (const auto& row : rows) {
    writeFile(file, OLD);
    plan = Plan();
    plan.portion = 7;
    plan.failed = row.call;
    plan.skipped = row.skipped;
    plan.error = row.error;
    EXPECT_EQ(changed(use("vnc", "b")), "Cannot write " + file + row.suffix + ": " + row.what)
        << row.call;
    EXPECT_EQ(readFile(file), OLD) << row.call;
    EXPECT_FALSE(std::filesystem::exists(file + ".unfinished")) << row.call;
    plan = Plan();
    EXPECT_EQ(changed(use("vnc", "b")), "") << row.call;
    EXPECT_EQ(readFile(file), NEW) << row.call;
  }
}

TEST_F(SettingsFile, IsAsItWasWhenNothingMoreIsWritten) {
  writeFile(file, OLD);
  plan.portion = 0;
  EXPECT_EQ(changed(use("vnc", "b")),
            "Cannot write " + file +
                ": No space left on device. Nothing was changed. Make room there, and try again.");
  EXPECT_EQ(readFile(file), OLD);
}

TEST_F(SettingsFile, IsAFaultWhenItCannotBeRead) {
  writeFile(file, OLD);
  for (const int skipped : {0, 2}) {  // before and under the lock
    plan = Plan();
    plan.failed = "open";
    plan.skipped = skipped;
    plan.error = EACCES;
    EXPECT_EQ(changed(use("vnc", "b")), file +
                                            ":1:1: cannot be read: Permission denied. Nothing "
                                            "was changed. Fix the file first.");
    EXPECT_EQ(readFile(file), OLD);
  }
}

TEST_F(SettingsFile, IsNotMadeWithoutItsFolder) {
  plan.active = true;
  plan.failed = "mkdir";
  plan.error = EROFS;
  EXPECT_EQ(changeSettings(folder + "/x/f", use("vnc", "b")),
            "Cannot write " + folder +
                "/x/f: Read-only file system. Nothing was changed. Nobody can write there. Make "
                "it writable, or choose another folder by XDG_CONFIG_HOME.");
  EXPECT_EQ(names(), texts());
}

TEST_F(SettingsFile, IsMadeInAFolderThatAnotherProcessMakesMeanwhile) {
  std::filesystem::create_directory(folder + "/x");
  plan.failed = "stat";
  plan.skipped = static_cast<int>(std::count(folder.begin(), folder.end(), '/'));
  plan.error = ENOENT;
  plan.active = true;
  EXPECT_EQ(changeSettings(folder + "/x/f", use("vnc", "a")), "");
  EXPECT_NE(plan.calls.find("stat mkdir "), std::string::npos) << plan.calls;
  EXPECT_EQ(readFile(folder + "/x/f"), "[use]\nvnc = \"a\"\n");
}

TEST_F(SettingsFile, IsNotFollowedThroughALinkThatCannotBeRead) {
  writeFile(folder + "/real", OLD);
  std::filesystem::create_symlink("real", file);
  plan.failed = "readlink";
  plan.error = EACCES;
  EXPECT_EQ(changed(use("vnc", "b")), "Cannot write " + file +
                                          ": Permission denied. Nothing was changed. Check who "
                                          "may write there.");
  EXPECT_EQ(readFile(folder + "/real"), OLD);
}

TEST_F(SettingsFile, IsToldToBeInDangerWhenItsFolderCannotBeSynced) {
  writeFile(file, OLD);
  plan.failed = "fsync";
  plan.skipped = 1;
  plan.error = EIO;
  EXPECT_EQ(changed(use("vnc", "b")), "The settings in " + file +
                                          " are changed, but may be the old ones after a power "
                                          "failure: Input/output error. Check the disk.");
  EXPECT_EQ(readFile(file), NEW);
}

TEST_F(SettingsFile, IsWellWhereFoldersCannotBeSyncedAtAll) {
  for (const int error : {EINVAL, EROFS}) {
    writeFile(file, OLD);
    plan = Plan();
    plan.failed = "fsync";
    plan.skipped = 1;
    plan.error = error;
    EXPECT_EQ(changed(use("vnc", "b")), "");
    EXPECT_EQ(readFile(file), NEW);
  }
}

TEST_F(SettingsFile, IsWellWhenClosingIsInterrupted) {
  writeFile(file, OLD);
  plan.failed = "close";
  plan.skipped = 2;
  plan.error = EINTR;
  EXPECT_EQ(changed(use("vnc", "b")), "");
  EXPECT_EQ(readFile(file), NEW);
}

TEST_F(SettingsFile, LocksNoOtherFileThroughALink) {
  writeFile(folder + "/precious", "x");
  std::filesystem::create_symlink("precious", file + ".lock");
  EXPECT_EQ(changed(use("vnc", "a")),
            "Cannot write " + file +
                ".lock: Too many levels of symbolic links. Nothing was changed. Check what is "
                "there, and try again.");
  EXPECT_EQ(readFile(folder + "/precious"), "x");
}

TEST_F(SettingsFile, WritesNoOtherFileThroughALink) {
  writeFile(folder + "/precious", "x");
  std::filesystem::create_symlink("precious", file + ".unfinished");
  EXPECT_EQ(changed(use("vnc", "a")), "");
  EXPECT_EQ(readFile(folder + "/precious"), "x");
  EXPECT_EQ(names(), (texts{"hopopen.toml", "hopopen.toml.lock", "precious"}));
}

TEST_F(SettingsFile, IsTheOldOrTheNewOneWhicheverCallFails) {
  int failures = 0;
  for (int number = 1;; number++) {
    writeFile(file, OLD);
    plan = Plan();
    plan.portion = 7;
    plan.failing = number;
    plan.error = EIO;
    const std::string error = changed(use("vnc", "b"));
    const bool reached = plan.count >= number;
    const std::string text = readFile(file);
    EXPECT_TRUE(text == NEW || (text == OLD && !error.empty())) << number << text << error;
    EXPECT_FALSE(std::filesystem::exists(file + ".unfinished")) << number;
    failures += error.empty() ? 0 : 1;
    if (!reached) {
      EXPECT_EQ(error, "");
      break;
    }
  }
  EXPECT_GE(failures, 20);
}

// --- Processes that are killed -----------------------------------------------

namespace {

// Kills a child at every call of a change in turn, and changes the file again each time.
class Killed : public SettingsFile {
 protected:
  // REQUIRES: `prepare` gives the file its first content, whatever it was before.
  template <class Prepare>
  void tryAll(Prepare prepare, const texts& possible, const std::string& next) {
    int calls = 0;
    for (const bool before : {true, false}) {
      bool killed = true;
      for (int number = 1; killed; number++) {
        prepare();
        killed = tryOne(before, number, possible, next);
        calls += killed ? 1 : 0;
        ASSERT_LT(number, 500);
      }
    }
    EXPECT_GT(calls, 40);
  }

 private:
  bool tryOne(bool before, int number, const texts& possible, const std::string& next) {
    const std::string ending = runChild([&] {
                                 plan.portion = 7;
                                 (before ? plan.killBefore : plan.killAfter) = number;
                                 changed(use("vnc", "b"));
                               }).ending;
    const bool killed = ending == "signal 9";
    EXPECT_TRUE(killed || ending == "exit 0") << ending;
    EXPECT_TRUE(possible.contains(std::filesystem::exists(file) ? readFile(file) : "(none)"))
        << before << number << readFile(file);
    alarm(20);  // for a lock that stays
    EXPECT_EQ(changeSettings(file, use("vnc", "c")), "") << before << number;
    alarm(0);
    EXPECT_EQ(readFile(file), next) << before << number;
    EXPECT_FALSE(
        std::filesystem::exists(std::filesystem::canonical(file).string() + ".unfinished"));
    return killed;
  }
};

}  // namespace

TEST_F(Killed, AtAnyCallLeavesTheOldFileOrTheNewOne) {
  tryAll([&] { writeFile(file, OLD); }, {OLD, NEW}, "# mine\n[use]\nvnc = \"c\"\n");
}

TEST_F(Killed, AtAnyCallLeavesTheFileBehindALink) {
  tryAll(
      [&] {
        std::filesystem::remove_all(folder + "/x");
        std::filesystem::create_directory(folder + "/x");
        writeFile(folder + "/x/real", OLD);
        std::filesystem::remove(file);
        std::filesystem::create_symlink("x/real", file);
      },
      {OLD, NEW}, "# mine\n[use]\nvnc = \"c\"\n");
  EXPECT_TRUE(std::filesystem::is_symlink(file));
}

TEST_F(Killed, AtAnyCallLeavesNoFileOrAWholeOne) {
  tryAll([&] { std::filesystem::remove_all(folder), std::filesystem::create_directory(folder); },
         {"(none)", "[use]\nvnc = \"b\"\n"}, "[use]\nvnc = \"c\"\n");
}

}  // namespace settings_fault_test
