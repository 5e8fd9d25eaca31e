// SPDX-License-Identifier: MIT
// What people read when a link is not opened, word by word.

#include "hopopen_runner.h"

namespace hopopen_wording_test {

namespace {

using door::Machine;
using door::Strings;

// A viewer for a scheme, whose program is there.
void install(const Machine& machine, const std::string& name, const std::string& title,
             const std::string& scheme, const std::string& further = "") {
  machine.define(name, "name = \"" + title + "\"\nschemes = [\"" + scheme + "\"]\nprograms = [\"" +
                           name + "\"]\narguments = [\"{host}\"]\n" + further);
  machine.program(name);
}

// What is said of a link.
std::string said(const Machine& machine, const std::string& link, Strings options = {}) {
  options.insert(options.end(), {"--", link});
  return machine.run(options).err;
}

std::string line(const std::string& link, const std::string& message) {
  return "hopopen: Cannot open \"" + link + "\". " + message + "\n";
}

TEST(Wording, OfLinksThatAreWrong) {
  const Machine machine;
  machine.plain();
  install(machine, "shell", "Shell", "ssh");
  const std::string part(60, 'x');
  const std::string badHost = "The host has a character that names of machines cannot have. (host)";
  const std::string badPort =
      "The port is not a number from 1 to 65535 without leading zeros. Check the link. (port)";
  const std::string badUser =
      "The user name has a character that user names cannot have, or is longer than 64 bytes. "
      "Check the link. (user)";
  const std::string badPassword =
      "The password has a control character, or is longer than 255 bytes. Check the link. (user)";
  const std::string badValue =
      "A parameter of the link has a value that is too long or has a control character. Check "
      "the link. (syntax)";
  const std::string path =
      "The link names something on the machine, not the machine alone. Ask for a link that ends "
      "after the host and port. (path)";
  const std::string bracket =
      "The link has a bracket that is not around an IPv6 address. Check the link. (syntax)";
  const std::string noScheme =
      "The link does not begin with a scheme, as in \"vnc://host\". Check the link. (syntax)";
  const struct {
    std::string link;
    std::string message;
  } rows[] = {
      {"", "The link is empty. Copy it again. (syntax)"},
      {"vnc://h/ x", "The link has a character that links cannot have. Copy it again. (syntax)"},
      {"vnc://h/%4",
       "A \"%\" in the link is not followed by two hexadecimal digits. Check the link. (syntax)"},
      {"vnc://h/#a#b", "The link has a second \"#\". Check the link. (syntax)"},
      {"vnc://[::1]x", "Only a port may follow the \"]\" of an address. Check the link. (syntax)"},
      {"vnc://[::1", "The link has a \"[\" without its \"]\". Check the link. (syntax)"},
      {"vnc://h[", bracket},
      {"vnc://h]", bracket},
      {"host", noScheme},
      {"vnc:h", noScheme},
      {"vnc://u@v@h", "The link has a second \"@\". Check the link. (syntax)"},
      {"nothing://h",
       "No viewer is known for \"nothing\" links. \"hopopen --list\" shows which links can be "
       "opened. (scheme)"},
      {"vnc://h:0", badPort},
      {"vnc://h:65536", badPort},
      {"vnc://h/path", path},
      {"ssh://h/folder", path},
      {"vnc://", "The link names no host. (host)"},
      {"vnc://h!", badHost},
      {"vnc://1.2.3",
       "A host whose last part is a number must be four numbers from 0 to 255. (host)"},
      {"vnc://" + std::string(64, 'x'),
       "A part of the host's name is longer than 63 characters. (host)"},
      {"vnc://a..b", "The host's name has an empty part. (host)"},
      {"vnc://a-.b", "A part of the host's name ends in \"-\". (host)"},
      {"vnc://[::g]", "What is in brackets is not an IPv6 address. (host)"},
      {"vnc://[fe80::1%25a%21]",
       "The zone after the address has a character that it cannot have. (host)"},
      {"vnc://[fe80::1%251234567890123456]", "The zone after the address is too long. (host)"},
      {"vnc://[fe80::1%25]", "The zone after the address is empty. (host)"},
      {"vnc://[fe80::1%41]", "A zone begins with \"%25\" in a link. (host)"},
      {"vnc://h?a!=b",
       "A parameter of the link has a name that is too long or has a character that names cannot "
       "have. Check the link. (syntax)"},
      {"vnc://h?=b", "A parameter of the link has no name. Check the link. (syntax)"},
      {"vnc://h?a=%00", badValue},
      {"vnc://h?VncUsername=%0A", badValue},
      {"vnc://h?a=1&a=2", "A parameter is given twice, with two values. Check the link. (syntax)"},
      {"vnc://u%0A@h", badUser},
      {"ssh://-u@h", badUser},
      {"vnc://u@h?VncUsername=v",
       "The link names two users or two passwords. Ask for a correct link. (user)"},
      {"vnc://h?ViewOnly=maybe",
       "The link does not say clearly whether the machine may be controlled: ViewOnly must be true "
       "or false. Ask for a correct link. (restriction)"},
      {"vnc://h?SecurityType=2",
       "The link asks for a protection of the connection, \"SecurityType\", and Plain cannot do "
       "that. No other viewer that is installed can do it. Ask for a link without it. "
       "(restriction)"},
      {"vnc://h?SecurityType=2&ViewOnly=maybe",
       "The link asks for a protection of the connection, \"SecurityType\", and Plain cannot do "
       "that. No other viewer that is installed can do it. Ask for a link without it. "
       "(restriction)"},
      {"ssh://h?ViewOnly=1",
       "The link asks to look at the machine without controlling it, and Shell cannot do that. No "
       "other viewer that is installed can do it. Ask for a link without it. (restriction)"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(line(row.link, row.message), said(machine, row.link));
  }
  EXPECT_EQ(line("ssh://u:***@h", badPassword), said(machine, "ssh://u:p%0A@h"));
  EXPECT_EQ(line("vnc://h?VncPassword=***", badValue), said(machine, "vnc://h?VncPassword=%0A"));
  EXPECT_TRUE(said(machine, "vnc://" + std::string(8187, 'h'))
                  .ends_with("The link is longer than 8192 characters. Ask for a shorter one. "
                             "(syntax)\n"));
  EXPECT_TRUE(said(machine, "vnc://" + part + "." + part + "." + part + "." + part + "." + part)
                  .ends_with("\". The host's name is longer than 253 characters. (host)\n"));
}

TEST(Wording, HasThePlaceInTheLink) {
  const Machine machine;
  machine.plain();
  const std::pair<std::string, int> rows[] = {
      {"nothing://h", 0}, {"host", 4},        {"vnc://h/%4", 10},  {"vnc://", 6},
      {"vnc://h:0", 8},   {"vnc://u@v@h", 9}, {"vnc://h/path", 8}, {"vnc://h?ViewOnly=maybe", 8}};
  for (const auto& [link, place] : rows) {
    EXPECT_EQ(place, machine.dry({link})["refusal"]["position"]) << link;
  }
  machine.set("[use\n");
  EXPECT_TRUE(machine.dry({"vnc://h"})["refusal"]["position"].is_null());
}

TEST(Wording, OfAChoiceThatCannotBeFollowed) {
  const Machine machine;
  machine.plain();
  install(machine, "shell", "Shell", "ssh");
  machine.define("gone",
                 "name = \"Gone\"\nschemes = [\"vnc\"]\nprograms = [\"gone\"]\n"
                 "arguments = []\n");
  const std::string unknown =
      "The chosen viewer \"none\" is not known. See \"hopopen --list\", and ";
  const std::string other =
      "The chosen viewer Shell does not open vnc links. See \"hopopen --list\", and ";
  const std::string gone = "The chosen viewer Gone is not installed. Install it, or ";
  const std::string choose = "choose another";
  const std::string chooseAs = "choose another with \"hopopen --use NAME vnc\"";
  const std::string chooseOrForget = chooseAs + ", or none with \"hopopen --forget vnc\"";
  const std::pair<std::string, std::string> rows[] = {
      {"none", unknown}, {"shell", other}, {"gone", gone}};
  for (const auto& [name, what] : rows) {
    EXPECT_EQ(line("vnc://h", what + choose + ". (choice)"),
              said(machine, "vnc://h", {"--viewer", name}));
    machine.set("[use]\nvnc = \"" + name + "\"\n", "etc");
    EXPECT_EQ(line("vnc://h", what + chooseAs + ". (choice)"), said(machine, "vnc://h"));
    machine.set("[use]\nvnc = \"" + name + "\"\n");
    EXPECT_EQ(line("vnc://h", what + chooseOrForget + ". (choice)"), said(machine, "vnc://h"));
    machine.set("");
    machine.set("", "etc");
  }
  const std::pair<std::string, std::string> packages[] = {
      {"\"one\"", "Install the package one, or choose another. (choice)"},
      {"\"one\", \"two\"", "Install the packages one and two, or choose another. (choice)"}};
  for (const auto& [list, remedy] : packages) {
    machine.define("gone",
                   "name = \"Gone\"\nschemes = [\"vnc\"]\nprograms = [\"gone\"]\n"
                   "arguments = []\npackages = [" +
                       list + "]\n");
    EXPECT_EQ(line("vnc://h", "The chosen viewer Gone is not installed. " + remedy),
              said(machine, "vnc://h", {"--viewer", "gone"}));
  }
}

TEST(Wording, OfAMachineWithoutAViewer) {
  const Machine machine;
  const auto define = [&](const std::string& name, const std::string& further) {
    machine.define(name, "name = \"The " + name + "\"\nschemes = [\"vnc\"]\nprograms = [\"" + name +
                             "\"]\narguments = []\n" + further);
  };
  const std::string none = "No viewer for vnc links is installed. ";
  define("a", "");
  EXPECT_EQ(line("vnc://h", none + "Install one; see \"hopopen --list\". (viewer)"),
            said(machine, "vnc://h"));
  define("a", "packages = [\"one\"]\n");
  EXPECT_EQ(line("vnc://h", none + "Install the package one. (viewer)"), said(machine, "vnc://h"));
  define("b", "packages = [\"two\"]\n");
  EXPECT_EQ(line("vnc://h", none + "Install one of these packages: one or two. (viewer)"),
            said(machine, "vnc://h"));
  define("a", "unguarded = [\"clipboard\", \"full screen\"]\n");
  machine.program("a");
  EXPECT_EQ(line("vnc://[::1]",
                 "The a is installed, but cannot keep this from a machine that you do not trust: "
                 "clipboard and full screen. Install the package two. Or use The a all the same "
                 "with \"hopopen --use a vnc\", or trust the machine with \"hopopen --trust "
                 "[::1]\". (viewer)"),
            said(machine, "vnc://[::1]"));
  define("b", "unguarded = [\"sound\"]\n");
  EXPECT_EQ(line("vnc://h",
                 "The a is installed, but cannot keep this from a machine that you do not trust: "
                 "clipboard and full screen. Use The a all the same with \"hopopen --use a vnc\", "
                 "or trust the machine with \"hopopen --trust h\". (viewer)"),
            said(machine, "vnc://h"));
}

TEST(Wording, OfViewersThatCanDoWhatTheChosenOneCannot) {
  const Machine machine;
  install(machine, "a", "A", "vnc", "rank = 1\n");
  install(machine, "look", "Look", "vnc", "[parameters.ViewOnly]\narguments = [\"-v\"]\n");
  const std::string cannot =
      "The link asks to look at the machine without controlling it, and A cannot do that. ";
  const std::string link = "vnc://h?ViewOnly=true";
  EXPECT_EQ(line(link, cannot + "Look can. To use it, type \"hopopen --use look vnc\". "
                                "(restriction)"),
            said(machine, link));
  install(machine, "see", "See", "vnc", "[parameters.ViewOnly]\narguments = [\"-v\"]\n");
  EXPECT_EQ(line(link, cannot + "Look and See can. To use the first, type \"hopopen --use look "
                                "vnc\". (restriction)"),
            said(machine, link));
}

// Viewers of every kind: two are installed, one for trusted machines only.
void furnish(const Machine& machine) {
  install(machine, "other", "Other", "vnc");
  machine.define("bare",
                 "name = \"Bare\"\nschemes = [\"bare\"]\nprograms = [\"bare\"]\narguments = []\n");
  machine.define("look",
                 "name = \"Look\"\nschemes = [\"vnc\"]\nprograms = [\"look\"]\narguments = []\n"
                 "packages = [\"look-viewer\", \"look-extra\"]\n");
  machine.define("plain",
                 "name = \"Plain\"\nschemes = [\"vnc\", \"x\"]\nprograms = [\"plain\"]\n"
                 "arguments = [\"{host}\", \"a b\"]\nunguarded = [\"clipboard\"]\n"
                 "unset = [\"VNC_VIA\"]\n[environment]\nWORD = \"{password}\"\nOTHER = \"it's\"\n");
  machine.program("plain");
}

TEST(Wording, OfTheList) {
  const Machine machine;
  furnish(machine);
  const std::string look =
      "look: Look\n"
      "  opens         vnc\n"
      "  program       not installed (install look-viewer and look-extra)\n";
  const std::string other =
      "other: Other\n"
      "  opens         vnc\n"
      "  program       " +
      machine.path("bin/other") + "\n";
  const std::string plain =
      "plain: Plain\n"
      "  opens         vnc and x\n"
      "  program       " +
      machine.path("bin/plain") +
      "\n"
      "  lets through  clipboard\n";
  const std::string bare =
      "bare: Bare\n"
      "  opens         bare\n"
      "  program       not installed\n";
  EXPECT_EQ(bare + look + other + "  for vnc links the first by rank\n" + plain,
            machine.run({"--list"}).out);
  machine.set("[use]\nvnc = \"plain\"\n");
  machine.set("[use]\nbare = \"bare\"\n", "etc");
  EXPECT_EQ(bare + "  for bare links chosen by the administrator\n" + look + other + plain +
                "  for vnc links chosen by you\n",
            machine.run({"--list"}).out);
}

TEST(Wording, OfADryRun) {
  const Machine machine;
  furnish(machine);
  machine.set("[use]\nvnc = \"plain\"\n[trust]\nhosts = [\"h\"]\n");
  EXPECT_EQ(
      "link        \"vnc://u:***@h:5901/?a=b&VncPassword=***&QualityLevel=3#f\"\n"
      "scheme      vnc\n"
      "user        u\n"
      "password    ***\n"
      "host        h, trusted\n"
      "port        5901\n"
      "parameter   a = \"b\"\n"
      "parameter   VncPassword = ***\n"
      "parameter   QualityLevel = \"3\"\n"
      "viewer      Plain (plain), chosen in your settings\n"
      "file        " +
          machine.path("bin/plain") +
          "\n"
          "unguarded   clipboard\n"
          "dropped     user\n"
          "dropped     fragment\n"
          "dropped     a\n"
          "dropped     VncPassword\n"
          "dropped     QualityLevel\n"
          "unset       VNC_VIA\n"
          "environment OTHER=\"it's\"\n"
          "environment WORD=***\n"
          "arguments   \"plain\" \"h\" \"a b\"\n"
          "launch      yes\n",
      machine.run({"--dry-run", "vnc://u:p@h:5901/?a=b&VncPassword=&QualityLevel=3#f"}).out);
  EXPECT_EQ(
      "link        \"vnc://[::1]\"\n"
      "scheme      vnc\n"
      "host        [::1], not trusted\n"
      "viewer      Other (other), chosen by --viewer\n"
      "file        " +
          machine.path("bin/other") +
          "\n"
          "arguments   \"other\" \"::1\"\n"
          "launch      yes\n",
      machine.run({"--dry-run", "--viewer=other", "vnc://[::1]"}).out);
  EXPECT_EQ(
      "link        \"vnc://x:0\"\n"
      "scheme      vnc\n"
      "host        x\n"
      "fault at    byte 8 of the link, from 0\n"
      "launch      no: Cannot open \"vnc://x:0\". The port is not a number from 1 to 65535 without "
      "leading zeros. Check the link. (port)\n",
      machine.run({"--dry-run", "vnc://x:0"}).out);
}

TEST(Wording, OfSettingsWithAFault) {
  const Machine machine;
  machine.plain();
  machine.set("[use]\nvnc = 1\n");
  EXPECT_EQ(line("vnc://h", "The settings have a fault, and must be corrected first. " +
                                machine.path(Machine::settings()) +
                                ":2:7: the viewer of \"vnc\" must be a text. (settings)"),
            said(machine, "vnc://h"));
}

}  // namespace

}  // namespace hopopen_wording_test
