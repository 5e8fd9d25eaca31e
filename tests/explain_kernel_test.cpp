// SPDX-License-Identifier: MIT
// What hopexplain says about the kernel: files that are not programs, interpreters, and room
// for arguments.  The kernel also executes each case.

#include "explain_kernel.h"

#include <elf.h>
#include <gtest/gtest.h>
#include <sys/personality.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "children.h"
#include "elf_program.h"
#include "execution.h"
#include "find_program.h"
#include "soft_limit.h"
#include "texts.h"
#include "working_folder.h"

namespace explain_kernel_test {

namespace {

using namespace std::string_literals;
using Strings = std::vector<std::string>;

// A working folder with programs.
class Folder : public workingFolder {
 public:
  Folder() {
    std::filesystem::create_directory("first");
    std::filesystem::create_directory("second");
    writeFile("second/tool", "#!/bin/sh\nexit 202\n", 0755);
    writeFile("tool", "#!/bin/sh\nexit 200\n", 0755);
  }
};

// The ending of a process that really executes the program.
std::string executed(const std::string& program, const Strings& arguments,
                     const std::string& path) {
  return runChild([&] {
           setenv("PATH", path.c_str(), 1);
           const std::vector<char*> vector = execution::pointers(arguments);
           if (std::freopen("/dev/null", "w", stderr) == nullptr) {
             return 98;
           }
           errno = ENOENT;
           execvp(program.c_str(), vector.data());
           std::_Exit(errno);
           return 0;
         })
      .ending;
}

// The path, the shell and the error that hopexplain finds.
std::string told(const std::string& program, const Strings& arguments, const std::string& path) {
  return runChild([&] {
           setenv("PATH", path.c_str(), 1);
           const foundProgram found = findProgram(program, path.c_str(), arguments);
           std::printf("%s|%s|%d", found.path.c_str(), found.shell.c_str(), found.error);
           return 0;
         })
      .output;
}

struct kernelCase {
  std::string text;  // of first/tool
  std::string told;
  int status;  // of the executed file, or the error number
};

// Each has second/tool after it on the path.
template <std::size_t size>
void check(const kernelCase (&cases)[size]) {
  const Folder folder;
  for (const kernelCase& one : cases) {
    SCOPED_TRACE(testing::PrintToString(one.text.substr(0, 80)));
    writeFile("first/tool", one.text, 0755);
    EXPECT_EQ(told("tool", {"tool"}, "first:second"), one.told);
    EXPECT_EQ(executed("tool", {"tool"}, "first:second"), "exit " + std::to_string(one.status));
  }
}

TEST(Kernel, PassesOverAScriptWhoseInterpreterIsMissingOrMayNotBeExecuted) {
  const kernelCase cases[] = {
      {"#!/bin/sh\nexit 201\n", "first/tool||0", 201},
      {"#!/no/such/interpreter\nexit 201\n", "second/tool||0", 202},
      {"#!/no/such/interpreter", "second/tool||0", 202},
      {"#! \t/no/such/interpreter -x\n", "second/tool||0", 202},
      {"#!/etc/passwd\n", "second/tool||0", 202},
      {"#!/etc\n", "second/tool||0", 202},
      {"#!/etc/passwd/x\n", "second/tool||0", 202},
      {"#!first/none\n", "second/tool||0", 202},
      {"#!first/tool\n", "||40", ELOOP},
  };
  check(cases);
}

TEST(Kernel, TellsTheLastErrorOfScriptsWithoutAnInterpreter) {
  const Folder folder;
  writeFile("first/orphan", "#!/no/such/interpreter\n", 0755);
  writeFile("second/orphan", "#!/etc\n", 0755);
  EXPECT_EQ(told("orphan", {"orphan"}, "first"), "||2");
  EXPECT_EQ(told("orphan", {"orphan"}, "second"), "||13");
  EXPECT_EQ(told("orphan", {"orphan"}, "second:first"), "||13");
  EXPECT_EQ(told("./first/orphan", {"orphan"}, "second"), "||2");
  EXPECT_EQ(executed("orphan", {"orphan"}, "first"), "exit 2");
  EXPECT_EQ(executed("orphan", {"orphan"}, "second"), "exit 13");
  EXPECT_EQ(executed("orphan", {"orphan"}, "second:first"), "exit 13");
  EXPECT_EQ(executed("./first/orphan", {"orphan"}, "second"), "exit 2");
}

TEST(Kernel, LeavesWhatIsNoProgramToTheShell) {
  const kernelCase cases[] = {
      {"", "first/tool|/bin/sh|0", 0},
      {"exit 201\n", "first/tool|/bin/sh|0", 201},
      {"#\nexit 201\n", "first/tool|/bin/sh|0", 201},
      {"#!\nexit 201\n", "first/tool|/bin/sh|0", 201},
      {"#! \t \nexit 201\n", "first/tool|/bin/sh|0", 201},
      {"# !/bin/sh\nexit 201\n", "first/tool|/bin/sh|0", 201},
      {" #!/bin/sh\nexit 201\n", "first/tool|/bin/sh|0", 201},
      // Longer than the part that the kernel reads.
      {"#!" + std::string(254, ' ') + "\nexit 201\n", "first/tool|/bin/sh|0", 201},
      {"#!/" + std::string(260, 'x') + "\nexit 201\n", "first/tool|/bin/sh|0", 201},
      {"#!" + std::string(247, ' ') + "/bin/sh\nexit 201\n", "first/tool|/bin/sh|0", 201},
      {"#!" + std::string(246, ' ') + "/bin/sh\nexit 201\n", "first/tool||0", 201},
      {"#!/" + std::string(246, '/') + "bin/s h\n", "second/tool||0", 202},
      {"#!/bin/sh " + std::string(300, 'x') + "\n", "first/tool||0", 2},
  };
  check(cases);
}

TEST(Kernel, LeavesAScriptToTheShellWhoseInterpreterIsNoProgram) {
  const Folder folder;
  writeFile("text", "exit 209\n", 0755);
  writeFile("first/tool", "#!text\nexit 201\n", 0755);
  EXPECT_EQ(told("tool", {"tool"}, "first"), "first/tool|/bin/sh|0");
  EXPECT_EQ(executed("tool", {"tool"}, "first"), "exit 201");
}

TEST(Kernel, FollowsFiveInterpretersThatAreScripts) {
  const Folder folder;
  writeFile("s1", "#!/bin/true\n", 0755);
  for (int i = 2; i <= 6; i++) {
    writeFile("s" + std::to_string(i), "#!s" + std::to_string(i - 1) + "\n", 0755);
  }
  EXPECT_EQ(told("./s5", {"s"}, ""), "./s5||0");
  EXPECT_EQ(executed("./s5", {"s"}, ""), "exit 0");
  EXPECT_EQ(told("./s6", {"s"}, ""), "||40");
  EXPECT_EQ(executed("./s6", {"s"}, ""), "exit 40");
}

// --- Programs ------------------------------------------------------------------

// A program that has only its headers, and the lines of a script after them.
std::string program(int machine, const std::string& loader, int type = ET_EXEC) {
  return elfProgram(machine, loader, type) + "\nexit 201\n";
}

TEST(Kernel, LeavesAProgramForAnotherMachineToTheShell) {
  const std::string missing = "/no/such/loader\0"s;
  const kernelCase cases[] = {
      {program(EM_MIPS, missing), "first/tool|/bin/sh|0", 201},
      {program(EM_SPARCV9, missing), "first/tool|/bin/sh|0", 201},
      {program(EM_NONE, missing), "first/tool|/bin/sh|0", 201},
  };
  check(cases);
}

#ifdef __x86_64__

// The kernel then shows its programs a narrow machine.
TEST(Kernel, ExecutesBothWidthsWhateverItSaysOfItself) {
  const kernelCase cases[] = {
      {program(EM_X86_64, "/no/such/loader\0"s), "second/tool||0", 202},
      {narrowElfProgram(EM_386, "/no/such/loader\0"s) + "\nexit 201\n", "second/tool||0", 202},
      {narrowElfProgram(EM_PPC, "/no/such/loader\0"s) + "\nexit 201\n", "first/tool|/bin/sh|0",
       201},
  };
  check(cases);
  ASSERT_NE(-1, personality(PER_LINUX32));
  utsname system = {};
  ASSERT_EQ(0, uname(&system));
  EXPECT_STREQ("i686", system.machine);
  check(cases);
  personality(PER_LINUX);
}

TEST(Kernel, PassesOverAProgramWhoseLoaderIsMissingOrMayNotBeExecuted) {
  const kernelCase cases[] = {
      {program(EM_X86_64, "/no/such/loader\0"s), "second/tool||0", 202},
      {program(EM_X86_64, "/no/such/loader\0"s, ET_DYN), "second/tool||0", 202},
      {program(EM_X86_64, "/etc/passwd\0"s), "second/tool||0", 202},
      {program(EM_X86_64, "/etc\0"s), "second/tool||0", 202},
      // Not a program, or a program whose name of the loader does not end.
      {program(EM_X86_64, "/no/such/loader\0"s, ET_REL), "first/tool|/bin/sh|0", 201},
      {program(EM_X86_64, "/no/such/loader"), "first/tool|/bin/sh|0", 201},
      {program(EM_X86_64, "\0"s), "first/tool|/bin/sh|0", 201},
      // A loader that is not a program gives another error, which ends the search.
      {program(EM_X86_64, "first/../text\0"s), "||80", ELIBBAD},
      {program(EM_X86_64, "first/../short\0"s), "||5", EIO},
  };
  const Folder folder;
  writeFile("text", std::string(100, '\n') + "exit 1\n", 0755);
  writeFile("short", "exit 1\n", 0755);
  for (const kernelCase& one : cases) {
    SCOPED_TRACE(testing::PrintToString(one.text));
    writeFile("first/tool", one.text, 0755);
    EXPECT_EQ(told("tool", {"tool"}, "first:second"), one.told);
    EXPECT_EQ(executed("tool", {"tool"}, "first:second"), "exit " + std::to_string(one.status));
  }
}

TEST(Kernel, ReadsTheHeadersOfAProgram) {
  std::string otherSize = program(EM_X86_64, "/no/such/loader\0"s);
  otherSize[offsetof(Elf64_Ehdr, e_phentsize)] = 1;
  std::string noSegments = program(EM_X86_64, "/no/such/loader\0"s);
  noSegments[offsetof(Elf64_Ehdr, e_phnum)] = 0;
  std::string nameBeyondTheEnd = program(EM_X86_64, "/no/such/loader\0"s);
  nameBeyondTheEnd[sizeof(Elf64_Ehdr) + offsetof(Elf64_Phdr, p_offset) + 2] = 1;
  const kernelCase cases[] = {
      {otherSize, "first/tool|/bin/sh|0", 201},
      {noSegments, "first/tool|/bin/sh|0", 201},
      {nameBeyondTheEnd, "||5", EIO},
  };
  check(cases);
}

// A narrow program with so many segments, of which the first names a loader that is missing.
std::string manySegments(std::uint16_t count) {
  const std::string one = narrowElfProgram(EM_386, "/no/such/loader\0"s);
  Elf32_Ehdr header = {};
  Elf32_Phdr segment = {};
  std::memcpy(&header, one.data(), sizeof header);
  std::memcpy(&segment, one.data() + sizeof header, sizeof segment);
  header.e_phnum = count;
  segment.p_offset = static_cast<Elf32_Off>(sizeof header + count * sizeof segment);
  std::string result(reinterpret_cast<const char*>(&header), sizeof header);
  result.append(reinterpret_cast<const char*>(&segment), sizeof segment);
  result.append((count - 1U) * sizeof segment, '\0');
  return result + "/no/such/loader\0"s + "\nexit 201\n";
}

TEST(Kernel, ReadsAtMost65536BytesOfSegments) {
  const kernelCase cases[] = {
      {manySegments(2048), "second/tool||0", 202},
      {manySegments(2049), "first/tool|/bin/sh|0", 201},
  };
  check(cases);
}

TEST(Kernel, LooksNoFurtherThanTheHeadersOfAProgram) {
  const Folder folder;
  std::filesystem::copy_file("/bin/true", "first/tool");
  EXPECT_EQ(told("tool", {"tool"}, "first:second"), "first/tool||0");
  EXPECT_EQ(executed("tool", {"tool"}, "first:second"), "exit 0");
}

#endif

// --- Room --------------------------------------------------------------------

// The pointers of the kernel count, not those of the program.
constexpr std::size_t pointer = 8;

bool isWideKernel() {
  utsname system = {};
  return uname(&system) == 0 && std::string(system.machine).find("64") != std::string::npos;
}

// One variable, and a stack of so many bytes; 0 leaves the stack as it is.
void leaveRoom(rlim_t stack) {
  clearenv();
  setenv("A", "bc", 1);
  if (stack != 0) {
    setSoftLimit(RLIMIT_STACK, stack);
  }
}

// Expects 0 if the vector executes, otherwise the error number, and the report of it.
void checkRoom(const Strings& arguments, int error, rlim_t stack = 0) {
  SCOPED_TRACE(testing::Message() << arguments.size() << " arguments, the last of "
                                  << arguments.back().size() << " bytes, stack " << stack);
  const auto limited = [&](auto body) {
    return runChild([&] {
      leaveRoom(stack);
      std::exit(body());
      return 0;
    });
  };
  EXPECT_EQ(limited([&] { return executionError("/bin/true", arguments); }).ending,
            "exit " + std::to_string(error));
  const auto end = limited([&] {
    const std::vector<char*> vector = execution::pointers(arguments);
    execv("/bin/true", vector.data());
    return errno;
  });
  EXPECT_EQ(end.ending, "exit " + std::to_string(error));
}

TEST(Kernel, TakesNoArgumentOf131072Bytes) {
  checkRoom({"t", std::string(131071, 'x')}, 0);
  checkRoom({"t", std::string(131072, 'x')}, E2BIG);
  checkRoom({std::string(131072, 'x'), "t"}, E2BIG);
}

// Arguments that need `size` bytes together with "/bin/true", "A=bc" and all pointers.
Strings argumentsOf(std::size_t size) {
  const std::size_t rest = sizeof "/bin/true" + sizeof "A=bc" + pointer;
  constexpr std::size_t piece = 100000;
  Strings result;
  for (std::size_t left = size - rest; left > 0;) {
    // The rest after a piece needs room for a pointer, a byte and its end.
    std::size_t length = std::min(left - pointer - 1, piece);
    const std::size_t after = left - (length + 1 + pointer);
    length -= after > 0 && after < pointer + 2 ? pointer + 2 : 0;
    result.emplace_back(length, 'x');
    left -= length + 1 + pointer;
  }
  return result;
}

TEST(Kernel, HasAQuarterOfTheStackForStringsAndPointers) {
  if (!isWideKernel()) {
    GTEST_SKIP() << "the kernel's pointers are not those of the test";
  }
  constexpr std::size_t KiB = 1024;
  constexpr std::size_t MiB = 1024 * KiB;
  const struct {
    std::size_t stack;
    std::size_t room;
  } cases[] = {
      {8 * MiB, 2 * MiB},     {4 * MiB, MiB},         {24 * MiB, 6 * MiB},    {64 * MiB, 6 * MiB},
      {512 * KiB, 128 * KiB}, {256 * KiB, 128 * KiB}, {640 * KiB, 160 * KiB},
  };
  for (const auto& one : cases) {
    checkRoom(argumentsOf(one.room), 0, one.stack);
    checkRoom(argumentsOf(one.room + 1), E2BIG, one.stack);
  }
  checkRoom(argumentsOf(6 * MiB + 1), E2BIG, RLIM_INFINITY);
  checkRoom(argumentsOf(6 * MiB), 0, RLIM_INFINITY);
}

// One pointer of the stack is not for strings: of "/bin/true", "A=bc", "t" and this.
TEST(Kernel, HasNoMoreRoomThanTheStack) {
  constexpr std::size_t others = sizeof "/bin/true" + sizeof "A=bc" + sizeof "t" + 1;
  constexpr std::size_t stack = 31 * 4096;
  if (!isWideKernel() || sysconf(_SC_PAGESIZE) != 4096) {
    GTEST_SKIP() << "the kernel's pointers or pages are not those of the test";
  }
  checkRoom({"t", std::string(stack - pointer - others + 1, 'x')}, E2BIG, stack);
  const auto fits = runChild([] {
    leaveRoom(stack);
    return executionError("/bin/true", {"t", std::string(stack - pointer - others, 'x')});
  });
  EXPECT_EQ("exit 0", fits.ending);
}

TEST(Kernel, CountsWhatAScriptAddsToItsArguments) {
  if (!isWideKernel()) {
    GTEST_SKIP() << "the kernel's pointers are not those of the test";
  }
  const Folder folder;
  writeFile("script", "#!/bin/true  an argument \n", 0755);
  // The interpreter, its argument and the script replace the first argument.
  const std::size_t added = sizeof "/bin/true" + sizeof "an argument" + sizeof "./script";
  for (const int more : {0, 1}) {
    SCOPED_TRACE(more);
    const auto arguments = [&] {
      Strings result = argumentsOf(1024 * 1024 + sizeof "/bin/true" - sizeof "./script" - added +
                                   static_cast<std::size_t>(more));
      result.insert(result.begin(), "");
      result.back().resize(result.back().size() - pointer);
      return result;
    }();
    const auto end = runChild([&] {
      leaveRoom(4 * 1024 * 1024);
      const std::vector<char*> vector = execution::pointers(arguments);
      std::printf("%d ", executionError("./script", arguments));
      std::fflush(stdout);
      execv("./script", vector.data());
      return errno;
    });
    EXPECT_EQ(end.output, more == 0 ? "0 " : "7 ");
    EXPECT_EQ(end.ending, more == 0 ? "exit 0" : "exit 7");
  }
}

// It gets the name of the file, too: there are arguments that the file has room for and the
// shell has not.
TEST(Kernel, CountsWhatTheShellAddsToItsArguments) {
  if (!isWideKernel()) {
    GTEST_SKIP() << "the kernel's pointers are not those of the test";
  }
  const Folder folder;
  writeFile("script", "exit 0\n", 0755);
  int withoutTheShell = 0;
  for (std::size_t less = 0; less <= 64; less += 4) {
    SCOPED_TRACE(less);
    Strings arguments = argumentsOf(1024 * 1024 - less);
    arguments.insert(arguments.begin(), "");
    const auto end = runChild([&] {
      leaveRoom(4 * 1024 * 1024);
      const std::vector<char*> vector = execution::pointers(arguments);
      std::printf("%d %d", executionError("./script", arguments),
                  findProgram("./script", "/bin", arguments).error);
      std::fflush(stdout);
      execvp("./script", vector.data());
      return errno;
    });
    const std::string error = end.output.substr(end.output.find(' ') + 1);
    EXPECT_EQ("exit " + error, end.ending);
    withoutTheShell += end.output == "8 7" ? 1 : 0;
  }
  EXPECT_GT(withoutTheShell, 0);
}

// --- Folders of PATH that are too long --------------------------------------------

TEST(Search, SkipsAFolderOf4096BytesAndLooksIntoTheCurrentOne) {
  const Folder folder;
  const std::string tooLong(4096, 'x');
  const std::string longest(4095, 'x');
  const struct {
    std::string path;
    std::string told;
    int status;
    bool skips;
    bool here;
  } cases[] = {
      {tooLong + ":second", "tool||0", 200, true, true},
      {"second:" + tooLong, "second/tool||0", 202, false, false},
      {"nowhere:" + tooLong + ":second", "tool||0", 200, true, true},
      {tooLong, "||2", ENOENT, true, false},
      {"nowhere:" + tooLong, "||2", ENOENT, true, false},
      {longest + ":second", "||36", ENAMETOOLONG, false, false},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.path.substr(0, 20));
    EXPECT_EQ(told("tool", {"tool"}, one.path), one.told);
    EXPECT_EQ(executed("tool", {"tool"}, one.path), "exit " + std::to_string(one.status));
    const foundProgram found = findProgram("tool", one.path.c_str(), {"tool"});
    EXPECT_EQ(found.skipsFolder, one.skips);
    EXPECT_EQ(found.searchesHere, one.here);
  }
}

}  // namespace

}  // namespace explain_kernel_test
