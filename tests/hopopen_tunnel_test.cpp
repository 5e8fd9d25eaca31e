// SPDX-License-Identifier: MIT
// Tunnels through ssh gateways, with a program in place of ssh.

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "hopopen_runner.h"

namespace hopopen_tunnel_test {

namespace {

using door::Machine;
using door::Outcome;
using door::Strings;
using door::Variables;

const char* const VIEWER = R"(name = "Socket viewer"
schemes = ["vnc"]
programs = ["viewer"]
packages = ["socket-viewer"]
arguments = ["{host}"]
tunnelled = ["-at", "{socket}"]
[default]
port = 5900
)";

const char* const THROUGH = "[host.\"inner.example\"]\nthrough = \"kim@gate.example:2222\"\n";

// Makes the socket that ssh would make, by what every Debian has.
const char* const BIND = R"(perl -MSocket -e '
my ($path) = map { m{^(/[^:]*):} } @ARGV;
socket(my $end, PF_UNIX, SOCK_STREAM, 0);
bind($end, sockaddr_un($path)) or die "bind: $!\n"
' -- "$@"
)";

// A machine with a viewer that takes sockets, a gateway in the settings, and a session.
class Site : public Machine {
 public:
  Site() {
    define("viewer", VIEWER);
    program("viewer");
    set(THROUGH);
    std::filesystem::create_directory(path("run"));
    chmod(path("run").c_str(), 0700);
  }
  // ssh, which keeps what it is given.
  void ssh(const std::string& does) const {
    script("ssh", "for word; do printf '%s\\n' \"$word\"; done > " + path("words") + "\n" + does);
  }
  Variables session(const std::optional<std::string>& run) const {
    return {{"XDG_RUNTIME_DIR", run}};
  }
  Variables session() const { return session(path("run")); }
  Outcome open(const std::string& link = "vnc://inner.example") const {
    return run({link}, session());
  }
  // What is in the folder of the session.
  Strings left() const {
    Strings result;
    for (const auto& entry : std::filesystem::directory_iterator(path("run"))) {
      result.push_back(entry.path().filename());
    }
    std::sort(result.begin(), result.end());
    return result;
  }
};

void refusedWith(const std::string& part, const Outcome& outcome) {
  EXPECT_EQ(3, outcome.status) << outcome.err;
  EXPECT_FALSE(outcome.viewer);
  EXPECT_TRUE(contains(outcome.err, part)) << outcome.err;
  EXPECT_TRUE(outcome.err.ends_with(" (tunnel)\n")) << outcome.err;
  EXPECT_EQ(1U, countOf(outcome.err, "\n")) << outcome.err;
  EXPECT_TRUE(door::isPlain(outcome.err)) << outcome.err;
}

TEST(Tunnel, GivesTheViewerASocketInAFolderOfItsOwn) {
  const Site site;
  site.ssh(BIND);
  const Outcome outcome = site.open();
  ASSERT_EQ(42, outcome.status) << outcome.err;
  ASSERT_EQ(1U, site.left().size());
  const std::string folder = site.path("run/" + site.left()[0]);
  EXPECT_TRUE(site.left()[0].starts_with("hopopen-")) << folder;
  EXPECT_EQ((Strings{"viewer", "-at", folder + "/socket"}), outcome.viewer->arguments);
  struct stat status {};
  ASSERT_EQ(0, stat(folder.c_str(), &status));
  EXPECT_EQ(0700U, status.st_mode & 07777U);
}

TEST(Tunnel, IsMadeBySshWithTheGatewayAndTheHost) {
  const Site site;
  site.ssh(BIND);
  ASSERT_EQ(42, site.open("vnc://Inner.Example:5901").status);
  const std::string words = site.read("words");
  EXPECT_TRUE(words.starts_with("-f\n-o\nExitOnForwardFailure=yes\n")) << words;
  EXPECT_TRUE(
      words.ends_with("/socket:inner.example:5901\n-p\n2222\n-l\nkim\n--\ngate.example\n"
                      "sleep 20\n"))
      << words;
}

TEST(Tunnel, MayBeAskedForByALinkWhoseGatewayIsTrusted) {
  const Site site;
  site.ssh(BIND);
  site.set("[trust]\nhosts = [\"door.example\"]\n");
  const Outcome outcome = site.open("vnc://h?SshHost=door.example&SshUsername=bob");
  ASSERT_EQ(42, outcome.status) << outcome.err;
  EXPECT_TRUE(site.read("words").ends_with("/socket:h:5900\n-l\nbob\n--\ndoor.example\nsleep 20\n"))
      << site.read("words");
  EXPECT_EQ(2, site.open("vnc://h?SshHost=evil.example").status);
}

TEST(Tunnel, IsNotMadeForADryRun) {
  const Site site;
  site.ssh(BIND);
  const auto told = site.dry({"vnc://inner.example"}, site.session());
  EXPECT_EQ((Strings{"viewer", "-at", "{socket}"}), told["arguments"].get<Strings>());
  EXPECT_EQ("kim@gate.example:2222", told["through"]);
  EXPECT_FALSE(site.has("words"));
  EXPECT_EQ(Strings{}, site.left());
}

TEST(Tunnel, IsNotMadeForHostsThatNeedNone) {
  const Site site;
  site.ssh(BIND);
  const Outcome outcome = site.open("vnc://other.example");
  ASSERT_EQ(42, outcome.status) << outcome.err;
  EXPECT_EQ((Strings{"viewer", "other.example"}), outcome.viewer->arguments);
  EXPECT_FALSE(site.has("words"));
  EXPECT_EQ(Strings{}, site.left());
  EXPECT_TRUE(site.dry({"vnc://other.example"})["through"].is_null());
}

TEST(Tunnel, ThatFailsSaysWhatSshSaidLastAndLeavesNothing) {
  const Site site;
  site.ssh(
      "echo Warning >&2\necho 'kim@gate.example: Permission denied (publickey).' >&2\n"
      "echo >&2\nexit 255\n");
  refusedWith(
      "hopopen: Cannot open \"vnc://inner.example\". The tunnel through "
      "\"kim@gate.example:2222\" could not be made: ssh says \"kim@gate.example: "
      "Permission denied (publickey).\". Type \"ssh -p 2222 kim@gate.example\" in a terminal",
      site.open());
  EXPECT_EQ(Strings{}, site.left());
}

TEST(Tunnel, ThatFailsAfterTheSocketLeavesNothing) {
  const Site site;
  site.ssh(std::string(BIND) + "exit 1\n");
  refusedWith("could not be made. Type", site.open());
  EXPECT_EQ(Strings{}, site.left());
}

TEST(Tunnel, WithoutASocketHasFailed) {
  const Site site;
  site.ssh("exit 0\n");
  refusedWith("could not be made. Type", site.open());
  site.ssh("for word; do case $word in /*) echo > \"${word%%:*}\";; esac; done\nexit 0\n");
  refusedWith("could not be made. Type", site.open());
  EXPECT_EQ(Strings{}, site.left());
}

TEST(Tunnel, HasFailedWhenSshIsKilled) {
  const Site site;
  site.ssh(std::string(BIND) + "kill -KILL $$\n");
  refusedWith("could not be made", site.open());
  EXPECT_EQ(Strings{}, site.left());
}

TEST(Tunnel, NeedsSsh) {
  const Site site;
  refusedWith("ssh is not installed. Install the package openssh-client.", site.open());
  site.write("bin/ssh", "no program");
  chmod(site.path("bin/ssh").c_str(), 0700);
  refusedWith("ssh says \"Exec format error\"", site.open());
  EXPECT_EQ(Strings{}, site.left());
}

TEST(Tunnel, ShowsNoBytesOfTheGatewayThatATerminalObeys) {
  const Site site;
  site.ssh("printf 'a\\033]0;x\\007\"b\\r\\n' >&2\nexit 255\n");
  refusedWith("ssh says \"a\\x1B]0;x\\x07\\x22b\"", site.open());
}

TEST(Tunnel, ShowsWhatSshSaysOnATerminalOnly) {
  const Site site;
  site.ssh("printf 'Touch your key\\033[2J\\n' >&2\n" + std::string(BIND));
  const door::Call call{
      .arguments = {"vnc://inner.example"}, .variables = site.session(), .terminal = true};
  EXPECT_EQ("Touch your key\\x1B[2J\n", site.call(call).err);
  EXPECT_EQ("", site.open().err);
  const door::Call quiet{.arguments = {"--quiet", "vnc://inner.example"},
                         .variables = site.session(),
                         .terminal = true};
  EXPECT_EQ("", site.call(quiet).err);
}

TEST(Tunnel, IsNotWaitedForByWhatSshLeavesBehind) {
  const Site site;
  // It keeps standard error open for longer than everything else lasts.
  site.ssh("sleep 60 >/dev/null &\necho $! >'" + site.path("sleeper") + "'\n" + std::string(BIND));
  const Outcome outcome = site.open();
  EXPECT_EQ(42, outcome.status) << outcome.err;
  EXPECT_EQ(0, kill(std::stoi(readFile(site.path("sleeper"))), SIGKILL)) << "it was waited for";
}

TEST(Tunnel, LetsSshSayMuch) {
  const Site site;
  site.ssh(
      "i=0\nwhile [ $i -lt 3000 ]; do echo \"a line of a long banner\" >&2; i=$((i+1)); done\n"
      "echo last >&2\nexit 255\n");
  refusedWith("ssh says \"last\"", site.open());
}

TEST(Tunnel, GivesSshTheSessionAndTheViewerNoDescriptor) {
  const Site site;
  site.ssh("echo \"$SSH_ASKPASS $DISPLAY\" > " + site.path("session") + "\n" + BIND);
  const Outcome outcome =
      site.call({.arguments = {"vnc://inner.example"},
                 .variables = site.session(),
                 .further = {"SSH_ASKPASS=/usr/bin/asks", "DISPLAY=:7", "VNC_PASSWORD=p"}});
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ("/usr/bin/asks :7\n", site.read("session"));
  // What this test was given itself goes to every viewer.
  const Outcome straight = site.open("vnc://other.example");
  ASSERT_TRUE(straight.viewer) << straight.err;
  EXPECT_EQ(straight.viewer->descriptors, outcome.viewer->descriptors);
}

TEST(Tunnel, OfAViewerThatCannotBeStartedIsGone) {
  const Site site;
  site.ssh(BIND);
  site.write("bin/viewer", "no program");
  const Outcome outcome = site.open();
  EXPECT_EQ(3, outcome.status);
  EXPECT_TRUE(outcome.err.ends_with(" (start)\n")) << outcome.err;
  EXPECT_EQ(Strings{}, site.left());
}

TEST(Tunnel, IsInTheLog) {
  const Site site;
  site.ssh(BIND);
  ASSERT_EQ(42, site.run({"--log", "log", "vnc://inner.example"}, site.session()).status);
  const std::string log = site.read("work/log");
  EXPECT_TRUE(contains(log, ": URI = \"vnc://inner.example\"\n")) << log;
  EXPECT_TRUE(contains(log, "/socket\"\n")) << log;
  site.ssh("exit 255\n");
  ASSERT_EQ(3, site.run({"--log", "other", "vnc://inner.example"}, site.session()).status);
  EXPECT_TRUE(site.read("work/other").ends_with(" (tunnel)\n")) << site.read("work/other");
}

// --- Viewers that cannot go through a gateway ------------------------------

std::string messageOf(const Site& site, const Strings& arguments) {
  return site.dry(arguments, site.session())["refusal"]["message"];
}

TEST(TunnelViewers, ThatCanAreNamedWhereAnotherIsChosen) {
  const Site site;
  site.plain();
  EXPECT_EQ(
      "Cannot open \"vnc://inner.example\". The machine is reached through an ssh gateway, and "
      "Plain "
      "cannot go that way. Socket viewer can. To use it, type \"hopopen --use viewer vnc\".",
      messageOf(site, {"--viewer", "plain", "vnc://inner.example"}));
}

TEST(TunnelViewers, ThatCanAreNamedWithTheirPackagesWhenNoneIsInstalled) {
  const Site site;
  site.plain();
  std::filesystem::remove(site.path("bin/viewer"));
  EXPECT_EQ(
      "Cannot open \"vnc://inner.example\". The machine is reached through an ssh gateway, and "
      "Plain "
      "cannot go that way. Socket viewer can. Install socket-viewer.",
      messageOf(site, {"vnc://inner.example"}));
}

TEST(TunnelViewers, AreMissingWhereNoDefinitionTakesASocket) {
  const Site site;
  site.plain();
  site.define("viewer", "", "data");  // hides the other one
  EXPECT_EQ(
      "Cannot open \"vnc://inner.example\". The machine is reached through an ssh gateway, and "
      "Plain "
      "cannot go that way. No viewer for vnc links can.",
      messageOf(site, {"vnc://inner.example"}));
}

TEST(TunnelViewers, AreNoHelpWhereTheGatewayIsAtFault) {
  const Site site;
  site.plain();
  EXPECT_EQ(
      "Cannot open \"vnc://h?SshHost=%5B::1%5D\". The link leads through the ssh gateway "
      "\"[::1]\", which you do not trust. Only if you know that machine, type \"hopopen --trust "
      "[::1]\".",
      messageOf(site, {"vnc://h?SshHost=%5B::1%5D"}));
  EXPECT_EQ(
      "Cannot open \"vnc://h?SshPort=22\". The link says how to log in to an ssh gateway, but not "
      "to "
      "which one: SshHost is missing. Ask for a correct link.",
      messageOf(site, {"vnc://h?SshPort=22"}));
  site.set(std::string(THROUGH) + "[trust]\nhosts = [\"other.example\"]\n");
  EXPECT_EQ(
      "Cannot open \"vnc://inner.example?SshHost=other.example\". The link leads through another "
      "ssh "
      "gateway than the settings name for this machine, which is \"kim@gate.example:2222\". Ask "
      "for "
      "a link without one.",
      messageOf(site, {"vnc://inner.example?SshHost=other.example"}));
}

// --- The folder of the session ---------------------------------------------

TEST(TunnelFolder, NeedsAFolderOfTheSession) {
  const Site site;
  site.ssh(BIND);
  const auto opened = [&](const std::optional<std::string>& run) {
    return site.run({"vnc://inner.example"}, site.session(run));
  };
  refusedWith("XDG_RUNTIME_DIR is not set", opened(std::nullopt));
  refusedWith("XDG_RUNTIME_DIR is not set", opened(""));
  std::filesystem::create_directory(site.path("work/run"));
  refusedWith("is not an absolute path", opened("run"));
  refusedWith("names a folder that is not there", opened(site.path("nothing")));
  refusedWith("names a folder that is not there", opened(site.path("bin/viewer")));
  EXPECT_FALSE(site.has("words"));
}

TEST(TunnelFolder, MustBeOnesOwn) {
  const Site site;
  site.ssh(BIND);
  for (const unsigned int mode : {0720U, 0702U, 0777U, 01777U}) {
    ASSERT_EQ(0, chmod(site.path("run").c_str(), mode));
    refusedWith("names a folder that others may write to", site.open());
  }
  ASSERT_EQ(0, chmod(site.path("run").c_str(), 0755));
  EXPECT_EQ(42, site.open().status);
  if (geteuid() != 0 || chown(site.path("run").c_str(), 4711, 4711) != 0) {
    GTEST_SKIP() << "only root can give a folder away";
  }
  refusedWith("names a folder of another user", site.open());
}

TEST(TunnelFolder, MustLeaveRoomForTheNameOfASocket) {
  const Site site;
  site.ssh(BIND);
  const std::string start = site.path("run") + "/";
  const auto opened = [&](std::size_t length) {
    const std::string folder = start + std::string(length - start.size(), 'a');
    std::filesystem::create_directory(folder);
    return site.run({"vnc://inner.example"}, site.session(folder));
  };
  // 107 bytes, less those of "/hopopen-XXXXXX/socket".
  EXPECT_EQ(42, opened(85).status);
  refusedWith("names a folder whose path is too long for a socket", opened(86));
}

TEST(TunnelFolder, MustHaveAPathThatSshReadsAsItIs) {
  const Site site;
  site.ssh(BIND);
  for (const char* const name : {"run/a:b", "run/a b", "run/%h", "run/${HOME}", "run/a\\b"}) {
    std::filesystem::create_directory(site.path(name));
    refusedWith("has characters that ssh reads otherwise",
                site.run({"vnc://inner.example"}, site.session(site.path(name))));
  }
  EXPECT_FALSE(site.has("words"));
}

// --- What is left of earlier tunnels ---------------------------------------

// Makes a folder as hopopen does, and a socket in it if there is to be one.
int made(const Site& site, const std::string& name, bool withSocket) {
  const std::string folder = site.path("run/" + name);
  std::filesystem::create_directory(folder);
  if (!withSocket) {
    return -1;
  }
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = folder + "/socket";
  path.copy(address.sun_path, path.size());
  const int result = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  EXPECT_EQ(0, bind(result, reinterpret_cast<const sockaddr*>(&address), sizeof address));
  EXPECT_EQ(0, listen(result, 5));
  return result;
}

TEST(OldTunnels, AreRemovedWhenNobodyListens) {
  const Site site;
  close(made(site, "hopopen-aaaaaa", true));
  made(site, "hopopen-bbbbbb", false);
  EXPECT_EQ(42, site.open("vnc://other.example").status);
  EXPECT_EQ(Strings{}, site.left());
}

TEST(OldTunnels, StayWhileSomebodyListensAndAreNotConnectedTo) {
  const Site site;
  const int served = made(site, "hopopen-aaaaaa", true);
  EXPECT_EQ(42, site.open("vnc://other.example").status);
  EXPECT_EQ((Strings{"hopopen-aaaaaa"}), site.left());
  EXPECT_EQ(-1, accept(served, nullptr, nullptr));
  EXPECT_EQ(EAGAIN, errno);
  close(served);
}

TEST(OldTunnels, StayWhileTheyAreBeingMade) {
  const Site site;
  made(site, "hopopen-aaaaaa", false);
  const int lock =
      open(site.path("run/hopopen-aaaaaa").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(0, flock(lock, LOCK_EX));
  EXPECT_EQ(42, site.open("vnc://other.example").status);
  EXPECT_EQ((Strings{"hopopen-aaaaaa"}), site.left());
  close(lock);
  EXPECT_EQ(42, site.open("vnc://other.example").status);
  EXPECT_EQ(Strings{}, site.left());
}

TEST(OldTunnels, AreNotWhatSomebodyElsePutThere) {
  const Site site;
  made(site, "hopopen-short", false);
  made(site, "hopopen-toolong", false);
  made(site, "another-aaaaaa", false);
  made(site, "hopopen-dddddd", false);
  site.write("run/hopopen-dddddd/more", "text");
  site.write("run/hopopen-eeeeee", "a file");
  std::filesystem::create_directory(site.path("kept"));
  site.write("kept/socket", "a file");
  std::filesystem::create_directory_symlink(site.path("kept"), site.path("run/hopopen-cccccc"));
  EXPECT_EQ(42, site.open("vnc://other.example").status);
  EXPECT_EQ((Strings{"another-aaaaaa", "hopopen-cccccc", "hopopen-dddddd", "hopopen-eeeeee",
                     "hopopen-short", "hopopen-toolong"}),
            site.left());
  EXPECT_TRUE(site.has("kept/socket"));
}

TEST(OldTunnels, StayAtADryRunAndAtARefusal) {
  const Site site;
  made(site, "hopopen-aaaaaa", false);
  site.dry({"vnc://other.example"}, site.session());
  EXPECT_EQ(2, site.open("vnc://:0").status);
  EXPECT_EQ((Strings{"hopopen-aaaaaa"}), site.left());
}

TEST(OldTunnels, DoNoHarmToManyThatAreMadeAtOnce) {
  const Site site;
  site.ssh(BIND);
  Strings command{"/bin/sh", "-c",
                  "for i in 1 2 3 4 5 6 7 8; do \"$0\" \"$@\" & done; wait; exec \"$0\" \"$@\""};
  const Outcome outcome = site.call(
      {.arguments = {"vnc://inner.example"}, .variables = site.session(), .under = command});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
}

}  // namespace

}  // namespace hopopen_tunnel_test
