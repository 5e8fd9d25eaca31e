// SPDX-License-Identifier: MIT
// Launches that go wrong, and input that might make them go wrong.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "launcher_runner.h"
#include "soft_limit.h"

namespace launcher_failure_test {

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

// Every byte but NUL, "%" and "&", which mean something in a URI's parameters.
constexpr char allBytes[] =
    "\x01\x02\x03\x04\x05\x06\x07\x08\t\n\x0b\x0c\r\x0e\x0f\x10\x11\x12\x13\x14\x15\x16\x17"
    "\x18\x19\x1a\x1b\x1c\x1d\x1e\x1f !\"#$'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ"
    "[\\]^_`abcdefghijklmnopqrstuvwxyz{|}~\x7f"
    "\x80\x81\x82\x83\x84\x85\x86\x87\x88\x89\x8a\x8b\x8c\x8d\x8e\x8f"
    "\x90\x91\x92\x93\x94\x95\x96\x97\x98\x99\x9a\x9b\x9c\x9d\x9e\x9f"
    "\xa0\xa1\xa2\xa3\xa4\xa5\xa6\xa7\xa8\xa9\xaa\xab\xac\xad\xae\xaf"
    "\xb0\xb1\xb2\xb3\xb4\xb5\xb6\xb7\xb8\xb9\xba\xbb\xbc\xbd\xbe\xbf"
    "\xc0\xc1\xc2\xc3\xc4\xc5\xc6\xc7\xc8\xc9\xca\xcb\xcc\xcd\xce\xcf"
    "\xd0\xd1\xd2\xd3\xd4\xd5\xd6\xd7\xd8\xd9\xda\xdb\xdc\xdd\xde\xdf"
    "\xe0\xe1\xe2\xe3\xe4\xe5\xe6\xe7\xe8\xe9\xea\xeb\xec\xed\xee\xef"
    "\xf0\xf1\xf2\xf3\xf4\xf5\xf6\xf7\xf8\xf9\xfa\xfb\xfc\xfd\xfe\xff";

// The same, percent-encoded, with "%" and "&" encoded twice.
constexpr char allBytesEncoded[] =
    "%01%02%03%04%05%06%07%08%09%0A%0B%0C%0D%0E%0F%10%11%12%13%14%15%16%17%18%19%1A%1B%1C%1D%1E"
    "%1F%20%21%22%23%24%2525%2526%27%28%29%2A%2B%2C%2D%2E%2F%30%31%32%33%34%35%36%37%38%39%3A%3B"
    "%3C%3D%3E%3F%40%41%42%43%44%45%46%47%48%49%4A%4B%4C%4D%4E%4F%50%51%52%53%54%55%56%57%58%59"
    "%5A%5B%5C%5D%5E%5F%60%61%62%63%64%65%66%67%68%69%6A%6B%6C%6D%6E%6F%70%71%72%73%74%75%76%77"
    "%78%79%7A%7B%7C%7D%7E%7F%80%81%82%83%84%85%86%87%88%89%8A%8B%8C%8D%8E%8F%90%91%92%93%94%95"
    "%96%97%98%99%9A%9B%9C%9D%9E%9F%A0%A1%A2%A3%A4%A5%A6%A7%A8%A9%AA%AB%AC%AD%AE%AF%B0%B1%B2%B3"
    "%B4%B5%B6%B7%B8%B9%BA%BB%BC%BD%BE%BF%C0%C1%C2%C3%C4%C5%C6%C7%C8%C9%CA%CB%CC%CD%CE%CF%D0%D1"
    "%D2%D3%D4%D5%D6%D7%D8%D9%DA%DB%DC%DD%DE%DF%E0%E1%E2%E3%E4%E5%E6%E7%E8%E9%EA%EB%EC%ED%EE%EF"
    "%F0%F1%F2%F3%F4%F5%F6%F7%F8%F9%FA%FB%FC%FD%FE%FF";

// `allBytes` as the log quotes it.
constexpr char allBytesQuoted[] =
    R"(\001\002\003\004\005\006\007\010\t\n\013\014\r\016\017\020\021\022\023\024\025\026\027)"
    R"(\030\031\032\033\034\035\036\037 !\"#$'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ)"
    R"([\\]^_`abcdefghijklmnopqrstuvwxyz{|}~\177)"
    R"(\200\201\202\203\204\205\206\207\210\211\212\213\214\215\216\217)"
    R"(\220\221\222\223\224\225\226\227\230\231\232\233\234\235\236\237)"
    R"(\240\241\242\243\244\245\246\247\250\251\252\253\254\255\256\257)"
    R"(\260\261\262\263\264\265\266\267\270\271\272\273\274\275\276\277)"
    R"(\300\301\302\303\304\305\306\307\310\311\312\313\314\315\316\317)"
    R"(\320\321\322\323\324\325\326\327\330\331\332\333\334\335\336\337)"
    R"(\340\341\342\343\344\345\346\347\350\351\352\353\354\355\356\357)"
    R"(\360\361\362\363\364\365\366\367\370\371\372\373\374\375\376\377)";

double seconds(const timespec& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double now() {
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  return seconds(time);
}

struct FailedLaunch {
  const char* what;
  Strings arguments;  // beside the log's
  const char* program;
  const char* vector;  // its lines in the log
  const char* error;
};

// All at once, because each takes five seconds.
TEST(LauncherFailure, AProgramThatCannotBeExecutedIsLoggedBeforeAWait) {
  const std::string ticket = "vnc://h/" + std::string(120000, 'Q');
  const std::string hexTicket = [] {
    std::string text;
    while (text.size() < 180000) {
      text += "410410";  // "QQQQ" is the bytes 41 04 10
    }
    return text;
  }();
  const std::string tooLong =
      "\t\"vncviewer\"\n\t\"--autoreconnect=0\"\n\t\"-ticket=" + hexTicket + "\"\n\t\"h\"\n";
  const std::string longName(300, 'x');
  const std::string longPath = "bin/" + longName;
  const std::string longVector = "\t\"" + longName + "\"\n\t\"h\"\n";
  const FailedLaunch cases[] = {
      {"missing on the path",
       {"vnc://h/?a=1", "-PROGRAMS=VNC=nosuch"},
       "nosuch",
       "\t\"nosuch\"\n\t\"--autoreconnect=0\"\n\t\"-a=1\"\n\t\"h\"\n",
       "2 No such file or directory"},
      {"missing in its folder",
       {"ssh://h/", "-program=./bin/nosuch"},
       "./bin/nosuch",
       "\t\"nosuch\"\n\t\"h\"\n",
       "2 No such file or directory"},
      {"a folder",
       {"ssh://h/", "-program=./bin"},
       "./bin",
       "\t\"bin\"\n\t\"h\"\n",
       "13 Permission denied"},
      {"a folder with a slash after it",
       {"ssh://h/", "-program=bin/"},
       "bin/",
       "\t\"\"\n\t\"h\"\n",
       "13 Permission denied"},
      {"not executable",
       {"ssh://h/", "-program=bin/plain"},
       "bin/plain",
       "\t\"plain\"\n\t\"h\"\n",
       "13 Permission denied"},
      {"below a file",
       {"ssh://h/", "-program=bin/plain/x"},
       "bin/plain/x",
       "\t\"x\"\n\t\"h\"\n",
       "20 Not a directory"},
      {"too long an argument list",
       {ticket},
       "vncviewer",
       tooLong.c_str(),
       "7 Argument list too long"},
      {"too long a name",
       {"ssh://h/", "-program=" + longPath},
       longPath.c_str(),
       longVector.c_str(),
       "36 File name too long"},
      {"a link to itself",
       {"ssh://h/", "-program=bin/loop"},
       "bin/loop",
       "\t\"loop\"\n\t\"h\"\n",
       "40 Too many levels of symbolic links"},
  };
  std::vector<std::unique_ptr<Workshop>> shops;
  for (const FailedLaunch& one : cases) {
    Workshop& shop = *shops.emplace_back(std::make_unique<Workshop>());
    writeFile(shop.work() / "bin" / "plain", "exit 1\n");
    std::filesystem::permissions(shop.work() / "bin" / "plain",
                                 static_cast<std::filesystem::perms>(0644));
    std::filesystem::create_symlink("loop", shop.work() / "bin" / "loop");
    Strings arguments{"-log=log"};
    arguments.insert(arguments.end(), one.arguments.begin(), one.arguments.end());
    shop.start({.arguments = arguments});
  }
  for (std::size_t index = 0; index < shops.size(); ++index) {
    const FailedLaunch& one = cases[index];
    SCOPED_TRACE(one.what);
    Workshop& shop = *shops[index];
    const Outcome outcome = shop.finish();
    const double ended = now();
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ("", outcome.out);
    EXPECT_EQ("", outcome.err);
    EXPECT_FALSE(outcome.viewer);
    const std::string program = one.program;
    const std::string expected = "TIME: URI = " + one.arguments[0] + "\nexecutable: " + program +
                                 "\n" + one.vector + "_execv() failed; path = " + program +
                                 " errno = " + one.error + "\n";
    EXPECT_EQ(expected, Workshop::withoutStamp(shop.log(), outcome));
    struct stat file {};
    ASSERT_EQ(0, stat((shop.work() / "log").c_str(), &file));
    EXPECT_GE(ended - seconds(file.st_mtim), 4.99)
        << "the log was written less than five seconds before the end";
  }
}

// The C library lets the shell run files that the kernel cannot run (ENOEXEC).
TEST(LauncherFailure, AProgramOfNoKnownFormatIsRunByTheShell) {
  Workshop shop;
  writeFile(shop.work() / "bin" / "script", "echo \"$0\" \"$@\"\nexit 7\n");
  std::filesystem::permissions(shop.work() / "bin" / "script",
                               static_cast<std::filesystem::perms>(0755));
  const Outcome outcome =
      shop.run({.arguments = {"-program=bin/script", "-log=log", "ssh://h/?a=1%2520b"}});
  EXPECT_EQ(7, outcome.status);
  EXPECT_EQ("bin/script -a=1 b h\n", outcome.out);
  EXPECT_EQ("", outcome.err);
  EXPECT_EQ(
      "TIME: URI = ssh://h/?a=1%2520b\nexecutable: bin/script\n\t\"script\"\n\t\"-a=1 b\"\n"
      "\t\"h\"\n",
      Workshop::withoutStamp(shop.log(), outcome));
}

TEST(LauncherFailure, AFailureWithoutALogIsSilentAndWaits) {
  struct {
    const char* what;
    Strings arguments;
  } const cases[] = {
      {"no log", {"-program=./nosuch", "vnc://h/"}},
      {"no log can be opened", {"-program=./nosuch", "vnc://h/", "-log=no/such/log"}},
      {"the log's disk is full", {"-program=./nosuch", "vnc://h/", "-log=/dev/full"}},
  };
  std::vector<std::unique_ptr<Workshop>> shops;
  const auto started = std::chrono::steady_clock::now();
  for (const auto& one : cases) {
    shops.emplace_back(std::make_unique<Workshop>())->start({.arguments = one.arguments});
  }
  for (std::size_t index = 0; index < shops.size(); ++index) {
    SCOPED_TRACE(cases[index].what);
    const Outcome outcome = shops[index]->finish();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - started;
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ("", outcome.out);
    EXPECT_EQ("", outcome.err);
    EXPECT_FALSE(outcome.viewer);
    EXPECT_EQ(Strings(), shops[index]->files());
    EXPECT_GE(taken.count(), 4.99);
  }
}

TEST(LauncherFailure, AFullDiskUnderTheLogStopsNothing) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {"-log=/dev/full", "vnc://h/?a=1"}});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"vncviewer", "--autoreconnect=0", "-a=1", "h"}), outcome.viewer->arguments);
}

TEST(LauncherFailure, AFullDiskUnderTheLogOfABadUriIsSilent) {
  for (const char* uri : {"no URI", "ftp://h/"}) {
    SCOPED_TRACE(uri);
    Workshop shop;
    const Outcome outcome = shop.run({.arguments = {"-log=/dev/full", uri}});
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ("", outcome.err);
    EXPECT_EQ("", outcome.out);
    EXPECT_FALSE(outcome.viewer);
  }
}

// Gives the launcher the writing end of a pipe as descriptor 9.
void pipeWithoutReader() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0 || dup2(ends[1], 9) != 9 || close(ends[0]) != 0 ||
      close(ends[1]) != 0 || signal(SIGPIPE, SIG_DFL) == SIG_ERR) {
    _exit(124);
  }
}

TEST(LauncherFailure, APipeWithoutAReaderUnderTheLogStopsNothing) {
  Workshop shop;
  const Outcome outcome =
      shop.run({.arguments = {"-log=/dev/fd/9", "vnc://h/"}, .prepare = pipeWithoutReader});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"vncviewer", "--autoreconnect=0", "h"}), outcome.viewer->arguments);
  EXPECT_EQ("0000000000000000", outcome.viewer->status.at("SigIgn"));
  EXPECT_EQ("0000000000000000", outcome.viewer->status.at("SigBlk"));
  EXPECT_EQ("0000000000000000", outcome.viewer->status.at("SigPnd"));
  EXPECT_EQ("0000000000000000", outcome.viewer->status.at("ShdPnd"));
}

TEST(LauncherFailure, APipeWithoutAReaderUnderTheLogOfABadUriIsSilent) {
  Workshop shop;
  const Outcome outcome =
      shop.run({.arguments = {"-log=/dev/fd/9", "no URI"}, .prepare = pipeWithoutReader});
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("", outcome.err);
}

TEST(LauncherFailure, ALogThatMayNotGrowStopsNothing) {
  Workshop shop;
  constexpr std::size_t limit = std::size_t{1} << 20;
  writeFile(shop.work() / "log", std::string(limit, '\n'));
  const Outcome outcome = shop.run({.arguments = {"-log=log", "vnc://h/"}, .prepare = [] {
                                      if (!setSoftLimit(RLIMIT_FSIZE, limit)) _exit(124);
                                    }});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"vncviewer", "--autoreconnect=0", "h"}), outcome.viewer->arguments);
  EXPECT_EQ("0000000000000000", outcome.viewer->status.at("SigIgn"));
}

// Newer kernels put an empty name in place of a missing one.
TEST(LauncherInput, AVectorWithoutAnyElementPrintsTheUsage) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {}, .noArgv = true});
  EXPECT_EQ("Usage:  <uri> \n", outcome.err);
  EXPECT_EQ("", outcome.out);
  EXPECT_EQ(0, outcome.status);
  EXPECT_FALSE(outcome.viewer);
}

TEST(LauncherInput, EmptyArgumentsAreArguments) {
  Workshop shop;
  Outcome outcome = shop.run({.arguments = {"", "", "vnc://h/", "-log", "log", ""}});
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("", outcome.err);
  EXPECT_EQ("Bad URI \"\"\n", shop.log());
  outcome = shop.run({.arguments = {"-", "", "-style", "", "-program", "", "vnc://h/", ""}});
  EXPECT_EQ(42, outcome.status);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"vncviewer", "--autoreconnect=0", "h"}), outcome.viewer->arguments);
}

TEST(LauncherInput, AnyByteReachesTheViewerAsItIs) {
  Workshop shop;
  const std::string bytes = allBytes;
  ASSERT_EQ(253U, bytes.size());
  const std::string uri = "vnc://h/?a=" + bytes;
  const Outcome outcome = shop.run({.arguments = {"-log=log", uri}});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"vncviewer", "--autoreconnect=0", "-a=" + bytes, "h"}),
            outcome.viewer->arguments);
  EXPECT_EQ("TIME: URI = " + uri +
                "\nexecutable: vncviewer\n\t\"vncviewer\"\n\t\"--autoreconnect=0\"\n\t\"-a=" +
                allBytesQuoted + "\"\n\t\"h\"\n",
            Workshop::withoutStamp(shop.log(), outcome));
}

TEST(LauncherInput, AnyByteMayBeEncoded) {
  Workshop shop;
  std::string bytes = allBytes;
  bytes.insert(bytes.find('\''), "%&");
  const Outcome outcome =
      shop.run({.arguments = {std::string("vnc://h/?a=") + allBytesEncoded, "-style=separate"}});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"vncviewer", "--autoreconnect", "0", "-a", bytes, "h"}),
            outcome.viewer->arguments);
}

TEST(LauncherInput, AnyByteOfABadUriIsLoggedAsItIs) {
  Workshop shop;
  const std::string bytes = allBytes + std::string("%&");
  const Outcome outcome = shop.run({.arguments = {bytes, "-log", "log"}});
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("", outcome.err);
  EXPECT_EQ("Bad URI \"" + bytes + "\"\n", shop.log());
}

TEST(LauncherInput, AnyByteMayStandInAnOption) {
  Workshop shop;
  const std::string bytes = allBytes + std::string("%&");
  const Outcome outcome = shop.run({.arguments = {"vnc://h/", "-" + bytes, "-style=" + bytes,
                                                  "-x=" + bytes, "-VNC_OPTIONS=a=" + bytes}});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"vncviewer", "-a=" + bytes, "h"}), outcome.viewer->arguments);
}

// The kernel passes single arguments of up to 128 KiB.
TEST(LauncherInput, AMegabyteOfArgumentsIsTaken) {
  Workshop shop;
  const std::string large(100000, 'v');
  Strings arguments{"vnc://h/?a=" + large, "-log=log"};
  for (int count = 0; count < 5; ++count) {
    arguments.push_back(large);
    arguments.push_back("-" + std::string(1, static_cast<char>('p' + count)) + "=" + large);
  }
  // "-p" to "-t" name no option of the launcher.
  const Outcome outcome = shop.run({.arguments = arguments});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"vncviewer", "--autoreconnect=0", "-a=" + large, "h"}),
            outcome.viewer->arguments);
  EXPECT_EQ("TIME: URI = vnc://h/?a=" + large +
                "\nexecutable: vncviewer\n\t\"vncviewer\"\n\t\"--autoreconnect=0\"\n\t\"-a=" +
                large + "\"\n\t\"h\"\n",
            Workshop::withoutStamp(shop.log(), outcome));
}

TEST(LauncherInput, LongItemsAndOptionsAreTaken) {
  Workshop shop;
  const std::string large(100000, 'v');
  const Outcome outcome = shop.run(
      {.arguments = {"vnc://" + large + "/", "-VNC_OPTIONS=a=" + large, "-portArg=" + large,
                     "-URI_SCHEME=" + large, "-" + large + "=x", "-style=" + large}});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"vncviewer", "-a=" + large, large}), outcome.viewer->arguments);
}

TEST(LauncherInput, TenThousandOptionsAreTaken) {
  Workshop shop;
  Strings arguments;
  for (int count = 0; count < 10000; ++count) {
    arguments.push_back("-option" + std::to_string(count) + "=" + std::to_string(count));
  }
  arguments.emplace_back("vnc://h/");
  arguments.emplace_back("-style=separate");
  const Outcome outcome = shop.run({.arguments = arguments});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"vncviewer", "--autoreconnect", "0", "h"}), outcome.viewer->arguments);
}

TEST(LauncherInput, TenThousandParametersArePassedInTheirOrder) {
  Workshop shop;
  std::string uri = "ssh://h/";
  Strings expected{"putty"};
  for (int count = 0; count < 10000; ++count) {
    uri += (count == 0 ? "?p" : "&p") + std::to_string(19999 - count) + "=v";
    expected.push_back("-p" + std::to_string(10000 + count) + "=v");
  }
  expected.emplace_back("h");
  const Outcome outcome = shop.run({.arguments = {uri}});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ(expected, outcome.viewer->arguments);
}

}  // namespace

}  // namespace launcher_failure_test
