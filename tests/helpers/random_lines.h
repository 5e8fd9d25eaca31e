// SPDX-License-Identifier: MIT
// Random command lines of the launcher, and files on PATH of every kind that the kernel
// executes or refuses.
#pragma once

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "elf_program.h"

namespace randomly {

using Strings = std::vector<std::string>;

/// Draws random values.  The same seed gives the same draws with every library.
class Dice {
 public:
  explicit Dice(unsigned int seed) : m_engine(seed) {}
  std::size_t below(std::size_t count) { return m_engine() % count; }
  bool one(std::size_t in) { return below(in) == 0; }
  const std::string& of(const Strings& texts) { return texts[below(texts.size())]; }

 private:
  std::mt19937 m_engine;
};

inline const Strings programs = {"vncviewer", "putty", "hoptool"};
inline const Strings folders = {"d0", "d1", "d2", "d3", "d4", "d5", "d6", "d7", "d8", "d9"};

/// A line of commands by which the viewer, which is "rec" here, reports the shell.
inline const std::string byShell = "\nexec ./rec sh \"$0\" \"$@\"\n";

/// The headers of a program, and the name of its loader.
inline std::string elf(int machine) {
  static const std::string loader("/no/such/loader\0", 16);
  return elfProgram(machine, loader);
}

/// Makes a file of some kind, or none.
inline void makeFile(Dice& dice, const std::string& name) {
  static const Strings texts = {
      "#!rec\n", "#!rec -mark\n", "#! \trec \t -mark \n", "#!rec", "#!chain\n",
      // Nobody can execute these.
      "#!/no/such/interpreter\n", "#!none -x\n", "#!d0\n", "#!plain\n", "#!", "#! ",
      // The shell executes these.
      byShell, "#" + byShell, "#!" + byShell, "#! \t" + byShell, "#!text" + byShell, "",
      "#!" + std::string(254, ' ') + byShell, "#!" + std::string(300, 'x') + byShell,
      elf(EM_PPC64) + byShell, elf(EM_X86_64) + byShell, elf(EM_AARCH64) + byShell};
  switch (dice.below(8)) {
    case 0:
    case 1:
      break;
    case 2:
      std::filesystem::create_symlink("../rec", name);
      break;
    case 3:
      switch (dice.below(4)) {
        case 0:
          std::filesystem::create_symlink("nowhere", name);
          break;
        case 1:
          std::filesystem::create_directory(name);
          break;
        case 2:
          std::filesystem::create_symlink(std::filesystem::path(name).filename(), name);
          break;
        default:
          std::ofstream(name) << "#!rec\n";  // not executable
      }
      break;
    default:
      std::ofstream(name) << dice.of(texts);
      chmod(name.c_str(), 0755);
  }
}

/// Fills the working folder.  "rec" becomes a link to `viewer`.
inline void makeFiles(Dice& dice, const std::string& viewer) {
  std::filesystem::create_symlink(viewer, "rec");
  std::ofstream("plain") << "#!rec\n";
  std::ofstream("text") << byShell;
  std::ofstream("chain") << "#!rec -mark\n";
  for (const char* const name : {"text", "chain"}) {
    chmod(name, 0755);
  }
  std::filesystem::create_symlink("rec", "hoptool");
  for (const std::string& folder : folders) {
    std::filesystem::create_directory(folder);
    for (const std::string& program : programs) {
      makeFile(dice, std::string(folder).append("/").append(program));
    }
  }
}

/// A value of PATH, or none for a PATH that is not set.
inline std::optional<std::string> somePath(Dice& dice) {
  if (dice.one(100)) {
    return std::nullopt;
  }
  std::string result;
  for (std::size_t i = dice.below(6); true; i--) {
    switch (dice.below(24)) {
      case 0:
        break;  // the current folder
      case 1:
        result += "nowhere";
        break;
      case 2:
        result += "text";
        break;
      case 3:
        result.append(dice.one(3) ? 4095 + dice.below(3) : 0, 'x');
        break;
      default:
        result += dice.of(folders);
    }
    if (i == 0) {
      return result;
    }
    result += ':';
  }
}

inline const Strings numbers = {"0",          "1",           "5900", "65536", "2147483648",
                                "4294967296", "99999999999", "-1",   "007",   ""};
inline const Strings values = {"",     "a",        "shared",   "a%20b",    "%2526",  "%41%zz",
                               "%",    "\xc3\xa4", "\xff\x80", "\x01\x7f", "\"q\"",  "back\\slash",
                               "+,;=", "%00",      "$HOME",    "-x",       "%250Ab", "*"};

/// Parameters: mostly a few, sometimes so many that they come near a limit.
inline std::string someQuery(Dice& dice) {
  std::size_t count = dice.below(6);
  if (dice.one(200)) {
    count = 3000 + dice.below(6000);
  }
  std::string result;
  for (std::size_t i = 0; i < count; i++) {
    result += i == 0 ? "?" : "&";
    result += count > 10 ? "p" + std::to_string(i) : dice.of(values);
    result += dice.one(20) && count < 10 ? "" : "=";
    result += count > 10 ? "" : dice.of(values);
  }
  return result;
}

inline std::string someTicket(Dice& dice) {
  if (dice.one(100)) {
    return std::string(87000 + dice.below(1000), 'Q');  // of 131,072 bytes in hexadecimal
  }
  return dice.of({"", "QUJD", "QQ==", "Q", "7,", "0,QUJD", "99999999999,QUJD", "!bad!"});
}

inline std::string someURI(Dice& dice) {
  static const Strings schemes = {"vnc", "VNC", "ssh", "Ssh", "vnc", "ssh", "ftp", "", "x+y"};
  static const Strings hosts = {"h",    "host.example.org", "[::1]", "1.2.3.4",   "a,b+c",
                                "h:22", "[fe80::1%25eth0]", "-h",    "h:1,other", ""};
  std::string uri = dice.of(schemes) + "://" + dice.of(hosts);
  if (dice.one(2)) {
    uri += ":" + dice.of(numbers);
  }
  uri += dice.one(20) ? "" : "/";
  if (dice.one(4)) {
    uri += someTicket(dice);
  }
  if (dice.one(2)) {
    uri += someQuery(dice);
  }
  for (std::size_t slips = dice.one(8) ? 1 + dice.below(3) : 0; slips > 0; slips--) {
    uri[dice.below(uri.size())] = static_cast<char>(1 + dice.below(255));
  }
  return uri;
}

inline Strings someOption(Dice& dice) {
  static const std::vector<Strings> options = {
      {"style", "separate", "equals", "Separate", ""},
      {"portArg", "P", "port", "-p", ""},
      {"program", "hoptool", "hoptool", "putty", "./hoptool", "d0/hoptool", "d1/putty", "./d2",
       "d3/vncviewer", "d4/hoptool/x", "nosuch", ""},
      {"PROGRAMS", "VNC=hoptool", "RDP=x", "hoptool", "SSH=", "=x"},
      {"VNC_OPTIONS", "a=1", "", "-x=", "novalue", "\xff=\xfe"},
      {"MaxShortName", "0", "70", "x"},
      {"unknown", "", "x", "\xff"},
  };
  const Strings& option = options[dice.below(options.size())];
  const std::string& value = option[1 + dice.below(option.size() - 1)];
  if (dice.one(4)) {
    return {"-" + option[0], value};
  }
  return {"-" + option[0] + "=" + value};
}

/// The arguments of a command line.
inline Strings someLine(Dice& dice) {
  Strings result;
  const auto add = [&result](const Strings& words) {
    result.insert(result.end(), words.begin(), words.end());
  };
  for (std::size_t i = dice.below(4); i > 0; i--) {
    add(someOption(dice));
  }
  if (!dice.one(50)) {
    add({someURI(dice)});
  }
  for (std::size_t i = dice.below(3); i > 0; i--) {
    add(dice.one(30) ? Strings{"-x"} : someOption(dice));
  }
  return result;
}

}  // namespace randomly
