// SPDX-License-Identifier: MIT
#include "explain_elf.h"

#include <elf.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "explain_permission.h"

namespace {

struct narrow {
  using header = Elf32_Ehdr;
  using segment = Elf32_Phdr;
};
struct wide {
  using header = Elf64_Ehdr;
  using segment = Elf64_Phdr;
};

using machineList = std::vector<unsigned int>;

// What a kernel executes: programs of its own width, and of the narrow one.
struct kernel {
  std::string_view name;
  unsigned int wideMachine;
  unsigned int narrowMachine;
};
constexpr std::array KERNELS{kernel{"x86_64", EM_X86_64, EM_386},
                             kernel{"aarch64", EM_AARCH64, EM_ARM}};

// The machine of this very program.
unsigned int ownMachine() {
  Elf32_Ehdr header = {};  // up to the machine the same as the wide one
  const sourceFile self("/proc/self/exe");
  return self.okay() && self.read(&header, sizeof header, 0) ? header.e_machine : EM_NONE;
}

// The one that runs this program, if it is known.  It may tell a program the name of a
// narrower one, but executes no wide program of another machine.
const kernel* ownKernel() {
  utsname system = {};
  const std::string_view name = uname(&system) == 0 ? system.machine : "";
  const unsigned int own = ownMachine();
  const auto* const found = std::find_if(KERNELS.begin(), KERNELS.end(), [&](const kernel& known) {
    return known.name == name || known.wideMachine == own;
  });
  return found == KERNELS.end() ? nullptr : found;
}

// The machines whose programs this kernel executes, by the width of their headers.
machineList machinesOf(narrow /*unused*/) {
  constexpr unsigned int oldIntel = 6;
  const kernel* const known = ownKernel();
  if (known == nullptr) {
    return sizeof(void*) == 4 ? machineList{ownMachine()} : machineList{};
  }
  if (known->narrowMachine != EM_386) {
    return {known->narrowMachine};
  }
  // A setting of the part that executes 32-bit programs, which may be left out.
  const bool executes = access("/proc/sys/abi/vsyscall32", F_OK) == 0 || sizeof(void*) == 4;
  return executes ? machineList{EM_386, oldIntel} : machineList{};
}

machineList machinesOf(wide /*unused*/) {
  const kernel* const known = ownKernel();
  if (known == nullptr) {
    return sizeof(void*) == 8 ? machineList{ownMachine()} : machineList{};
  }
  return {known->wideMachine};
}

// The kernel goes by the machine and does not look at the width that a file claims.
template <class Width>
bool isMadeFor(const typename Width::header& header, Width width) {
  const machineList machines = machinesOf(width);
  return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
         std::find(machines.begin(), machines.end(), header.e_machine) != machines.end();
}

template <class Width>
bool readSegments(const sourceFile& file, const typename Width::header& header,
                  std::vector<typename Width::segment>& segments) {
  constexpr std::size_t sizeLimit = 65536;
  constexpr std::size_t size = sizeof(typename Width::segment);
  if (header.e_phentsize != size || header.e_phnum == 0 || header.e_phnum * size > sizeLimit) {
    return false;
  }
  segments.resize(header.e_phnum);
  return file.read(segments.data(), segments.size() * size, header.e_phoff);
}

template <class Width>
int loaderError(const std::string& path, Width width) {
  const int denied = permissionError(path);
  const sourceFile loader(path);
  if (denied != 0 || !loader.okay()) {
    return denied;
  }
  typename Width::header header = {};
  if (!loader.read(&header, sizeof header, 0)) {
    return EIO;
  }
  std::vector<typename Width::segment> segments;
  const bool fits = isMadeFor(header, width) && readSegments<Width>(loader, header, segments);
  return fits ? 0 : ELIBBAD;
}

template <class Width>
int programErrorOf(const sourceFile& program, Width width) {
  typename Width::header header = {};
  program.read(&header, sizeof header, 0);
  std::vector<typename Width::segment> segments;
  if ((header.e_type != ET_EXEC && header.e_type != ET_DYN) || !isMadeFor(header, width) ||
      !readSegments<Width>(program, header, segments)) {
    return ENOEXEC;
  }
  for (const auto& segment : segments) {
    if (segment.p_type == PT_INTERP) {
      if (segment.p_filesz < 2 || segment.p_filesz > PATH_MAX) {
        return ENOEXEC;
      }
      std::string name(static_cast<std::size_t>(segment.p_filesz), '\0');
      if (!program.read(name.data(), name.size(), segment.p_offset)) {
        return EIO;
      }
      return name.back() == '\0' ? loaderError(name.substr(0, name.find('\0')), width) : ENOEXEC;
    }
  }
  return 0;
}

}  // namespace

int programError(const sourceFile& program) {
  const int error = programErrorOf(program, wide());
  return error == ENOEXEC ? programErrorOf(program, narrow()) : error;
}
