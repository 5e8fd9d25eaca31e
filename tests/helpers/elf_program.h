// SPDX-License-Identifier: MIT
// Programs that have only their headers.
#pragma once

#include <elf.h>

#include <algorithm>
#include <bit>
#include <iterator>
#include <string>

/// The headers, followed by `loader`, which is a name and its NUL.
template <class Header, class Segment, unsigned char width>
std::string elfProgramOf(int machine, const std::string& loader, int type) {
  Header header = {};
  constexpr bool little = std::endian::native == std::endian::little;
  constexpr unsigned char order = little ? ELFDATA2LSB : ELFDATA2MSB;
  const unsigned char start[] = {ELFMAG0, ELFMAG1, ELFMAG2, ELFMAG3, width, order, EV_CURRENT};
  std::copy(std::begin(start), std::end(start), header.e_ident);
  header.e_type = static_cast<Elf64_Half>(type);
  header.e_machine = static_cast<Elf64_Half>(machine);
  header.e_version = EV_CURRENT;
  header.e_phoff = sizeof header;
  header.e_phentsize = sizeof(Segment);
  header.e_phnum = 1;
  Segment segment = {};
  segment.p_type = PT_INTERP;
  segment.p_offset = sizeof header + sizeof segment;
  segment.p_filesz = static_cast<decltype(segment.p_filesz)>(loader.size());
  return std::string(reinterpret_cast<const char*>(&header), sizeof header) +
         std::string(reinterpret_cast<const char*>(&segment), sizeof segment) + loader;
}

/// One of 64 bits.
inline std::string elfProgram(int machine, const std::string& loader, int type = ET_EXEC) {
  return elfProgramOf<Elf64_Ehdr, Elf64_Phdr, ELFCLASS64>(machine, loader, type);
}

/// One of 32 bits.
inline std::string narrowElfProgram(int machine, const std::string& loader, int type = ET_EXEC) {
  return elfProgramOf<Elf32_Ehdr, Elf32_Phdr, ELFCLASS32>(machine, loader, type);
}
