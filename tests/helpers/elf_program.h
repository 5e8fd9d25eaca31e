// A program of 64 bits that has only its headers.
#pragma once

#include <elf.h>

#include <algorithm>
#include <iterator>
#include <string>

/// The headers, followed by `loader`, which is a name and its NUL.
inline std::string elfProgram(int machine, const std::string& loader, int type = ET_EXEC) {
  Elf64_Ehdr header = {};
  const unsigned char start[] = {ELFMAG0,    ELFMAG1,     ELFMAG2,   ELFMAG3,
                                 ELFCLASS64, ELFDATA2LSB, EV_CURRENT};
  std::copy(std::begin(start), std::end(start), header.e_ident);
  header.e_type = static_cast<Elf64_Half>(type);
  header.e_machine = static_cast<Elf64_Half>(machine);
  header.e_version = EV_CURRENT;
  header.e_phoff = sizeof header;
  header.e_phentsize = sizeof(Elf64_Phdr);
  header.e_phnum = 1;
  Elf64_Phdr segment = {};
  segment.p_type = PT_INTERP;
  segment.p_offset = sizeof header + sizeof segment;
  segment.p_filesz = loader.size();
  return std::string(reinterpret_cast<const char*>(&header), sizeof header) +
         std::string(reinterpret_cast<const char*>(&segment), sizeof segment) + loader;
}
