// SPDX-License-Identifier: MIT
// The program says the same with a catalog of the definitions as without one.

#include <chrono>
#include <iterator>
#include <thread>

#include "hopopen_runner.h"

namespace hopopen_catalog_test {

namespace {

using door::Json;
using door::Machine;
using door::Outcome;
using door::Strings;

constexpr const char* CATALOG = "home/.cache/hoplaunch/viewers";

// The shipped definitions, which are made to be old, and some of their programs.
void furnish(const Machine& machine, const Strings& programs) {
  door::fs::create_directories(machine.path("share/hoplaunch"));
  door::fs::create_directory_symlink(VIEWERS, machine.path("share/hoplaunch/viewers"));
  for (const std::string& name : programs) {
    machine.program(name);
  }
}

// New files come into the catalog a little later.
void catalogue(const Machine& machine) {
  // Its head, and a line for each definition.
  const auto lines =
      1 + std::distance(door::fs::directory_iterator(VIEWERS), door::fs::directory_iterator());
  for (int tries = 0; tries < 100; tries++) {
    EXPECT_EQ(0, machine.run({"--list"}).status);
    if (countOf(machine.read(CATALOG), "\n") == static_cast<std::size_t>(lines)) {
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  ADD_FAILURE() << "These are not " << lines << " lines:\n" << machine.read(CATALOG);
}

const Strings LINKS = {"vnc://h",
                       "vnc://h?ViewOnly=true&QualityLevel=3",
                       "vnc://h?QualityLevel=x&IdHash=1",
                       "vnc://h?SecurityType=2",
                       "vnc://h:99999",
                       "vnc://",
                       "ssh://user@h:22",
                       "ssh://h;fingerprint=x@h",
                       "nothing://h",
                       "telnet://kim@h",
                       "rdp://full%20address=s:h&audiomode=i:1",
                       "spice://h?tls-port=5901",
                       "vnc:h"};

void expectTheSame(const Machine& machine, const Strings& further) {
  for (const bool json : {false, true}) {
    for (const std::string& link : LINKS) {
      Strings words = {"--dry-run", json ? "--format=json" : "--format=text", link};
      words.insert(words.end(), further.begin(), further.end());
      const Outcome with = machine.run(words);
      const Outcome without = machine.run(words, {{"XDG_CACHE_HOME", machine.path("none")}});
      EXPECT_EQ(without.out, with.out);
      EXPECT_EQ(without.err, with.err);
      EXPECT_EQ(without.status, with.status);
      EXPECT_FALSE(with.out.empty());
    }
  }
}

TEST(HopopenCatalog, ChangesNothingThatIsSaid) {
  for (const Strings& programs : {
#ifndef SANITIZED  // each takes long
           Strings{}, Strings{"krdc", "gvncviewer"},
           Strings{"ssh", "telnet", "x-terminal-emulator", "krdc", "remmina"},
           Strings{"ssh", "telnet", "env", "x-terminal-emulator", "xfreerdp", "spicy"},
#endif
           Strings{"xtigervncviewer", "remmina", "putty"}}) {
    const Machine machine;
    furnish(machine, programs);
    catalogue(machine);
    expectTheSame(machine, {});
    expectTheSame(machine, {"--viewer", "krdc"});
    expectTheSame(machine, {"--viewer", "openssh"});
    machine.set("[trust]\nhosts = [\"h\"]\n");
    expectTheSame(machine, {});
  }
}

TEST(HopopenCatalog, StartsWhatIsStartedWithoutIt) {
  const Machine machine;
  furnish(machine, {"xtigervncviewer"});
  const Strings before = machine.launch({"vnc://h:1?ViewOnly=1"});
  catalogue(machine);
  EXPECT_EQ(before, machine.launch({"vnc://h:1?ViewOnly=1"}));
}

TEST(HopopenCatalog, IsNotWrittenByAClick) {
  const Machine machine;
  furnish(machine, {"xtigervncviewer"});
  machine.launch({"vnc://h"});
  machine.dry({"vnc://h"});
  EXPECT_FALSE(machine.has(CATALOG));
}

TEST(HopopenCatalog, OfNonsenseDoesNoHarm) {
  const Machine machine;
  furnish(machine, {"xtigervncviewer"});
  const Strings before = machine.launch({"vnc://h"});
  for (const std::string& text :
       {std::string("hopopen catalog 3\n\t\t\t\n"), std::string(3000, '\n'),
        "hopopen catalog 3\n" + std::string(2000000, 'x')}) {
    machine.write(CATALOG, text);
    EXPECT_EQ(before, machine.launch({"vnc://h"}));
  }
}

}  // namespace

}  // namespace hopopen_catalog_test
