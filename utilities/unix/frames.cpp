// SPDX-License-Identifier: MIT
#include "frames.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <ostream>
#include <string_view>

#include "../demangler.h"

namespace {

using symbol = ElfW(Sym);
using tableEntry = ElfW(Dyn);

// The symbols that the program itself exports (System V ABI, "Dynamic Section").
struct exportedSymbols {
  ElfW(Addr) base = 0;  // where the program is
  const symbol* symbols = nullptr;
  ElfW(Word) count = 0;
  const char* names = nullptr;
};

// The second number of a hash table.  Numbers have 64 bits on some 64-bit machines.
auto symbolsIn(const Elf_Symndx* table) {
  return static_cast<ElfW(Word)>(table[1]);
}

// For `dl_iterate_phdr`.  Its first object is the program.
// NOLINTBEGIN(performance-no-int-to-ptr): the tables hold addresses as numbers.
int readExported(dl_phdr_info* program, std::size_t /*size*/, void* result) {
  exportedSymbols& found = *static_cast<exportedSymbols*>(result);
  found.base = program->dlpi_addr;
  for (const ElfW(Phdr)* header = program->dlpi_phdr;
       header != program->dlpi_phdr + program->dlpi_phnum; header++) {
    if (header->p_type != PT_DYNAMIC) {
      continue;
    }
    const auto* entry = reinterpret_cast<const tableEntry*>(found.base + header->p_vaddr);
    for (; entry->d_tag != DT_NULL; entry++) {
      // The C library may have turned the offsets into addresses.
      const ElfW(Addr) value = entry->d_un.d_ptr;
      const ElfW(Addr) address = value < found.base ? found.base + value : value;
      if (entry->d_tag == DT_SYMTAB) {
        found.symbols = reinterpret_cast<const symbol*>(address);
      } else if (entry->d_tag == DT_STRTAB) {
        found.names = reinterpret_cast<const char*>(address);
      } else if (entry->d_tag == DT_HASH) {
        found.count = symbolsIn(reinterpret_cast<const Elf_Symndx*>(address));
      }
    }
  }
  return 1;
}
// NOLINTEND(performance-no-int-to-ptr)

// A text of limited length.  It drops whatever exceeds that.
class fixedText {
 public:
  void operator+=(char c) {
    if (m_size < m_text.size()) {
      m_text[m_size++] = c;
    }
  }
  void operator+=(std::string_view text) {
    for (const char c : text) {
      *this += c;
    }
  }
  std::string_view view() const { return {m_text.data(), m_size}; }

 private:
  std::array<char, 1000> m_text{};
  std::size_t m_size = 0;
};

void writeSymbol(std::ostream& out, std::string_view name) {
  if (name.substr(0, 2) == "_Z") {
    out << internal::demangler<fixedText>(name.substr(2)).function().view();
  } else {
    out << name;
  }
}

// The place of a frame, in the terms of `backtrace_symbols`.
struct place {
  const char* file = nullptr;
  const char* symbol = nullptr;
  const void* start = nullptr;  // of the symbol, or of the file if there is none
};

place placeOf(const void* frame) {
  Dl_info found{};
  link_map* object = nullptr;
  if (dladdr1(frame, &found, reinterpret_cast<void**>(&object), RTLD_DL_LINKMAP) != 0) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the loader's tables hold numbers.
    const void* const file = reinterpret_cast<const void*>(object->l_addr);
    return {found.dli_fname, found.dli_sname, found.dli_sname != nullptr ? found.dli_saddr : file};
  }
  const internal::frameName name = internal::exportedName(frame);
  if (name.symbol == nullptr) {
    return {};
  }
  return {program_invocation_name, name.symbol, static_cast<const char*>(frame) - name.distance};
}

void writeFrame(std::ostream& out, const void* frame) {
  const place found = placeOf(frame);
  char number[24];
  if (found.file != nullptr && *found.file != '\0') {
    out << found.file << '(';
    writeSymbol(out, found.symbol != nullptr ? found.symbol : "");
    if (found.start != nullptr) {
      const auto distance =
          reinterpret_cast<ElfW(Addr)>(frame) - reinterpret_cast<ElfW(Addr)>(found.start);
      std::snprintf(number, sizeof number, "%#lx", static_cast<unsigned long>(distance));
      out << '+' << number;
    }
    out << ") ";
  }
  std::snprintf(number, sizeof number, "%#lx",
                static_cast<unsigned long>(reinterpret_cast<ElfW(Addr)>(frame)));
  out << '[' << number << "]\n";
}

}  // namespace

internal::frameName internal::exportedName(const void* frame) {
  exportedSymbols program;
  dl_iterate_phdr(readExported, &program);
  const ElfW(Addr) offset = reinterpret_cast<ElfW(Addr)>(frame) - program.base;
  for (ElfW(Word) i = 0; i < program.count; i++) {
    const symbol& candidate = program.symbols[i];
    if (offset - candidate.st_value < candidate.st_size) {
      return {program.names + candidate.st_name,
              static_cast<unsigned long>(offset - candidate.st_value)};
    }
  }
  return {};
}

void internal::writeFrames(std::ostream& out, void* const* frames, int count) {
  for (int i = 0; i < count; i++) {
    writeFrame(out, frames[i]);
  }
}
