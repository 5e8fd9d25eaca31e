#include "stack.h"

#include <execinfo.h>
#include <link.h>
#include <ucontext.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ostream>

#include "../startup.h"
#include "conversion.h"
#include "processes.h"

const char* lastFile = nullptr;
int lastLine = -1;
void (*sigHandler)(int) = signalHandler;

// --- Stack traces ----------------------------------------------------------

namespace {

// The lines of every trace stay until the end, for whoever looks into a core file.
std::list<char**>& kept() {
  static auto& traces = *new std::list<char**>;
  return traces;
}

using symbol = ElfW(Sym);
using tableEntry = ElfW(Dyn);

// The symbols that the program itself exports (System V ABI, "Dynamic Section").
struct exportedSymbols {
  ElfW(Addr) base = 0;  // where the program lies
  const symbol* symbols = nullptr;
  ElfW(Word) count = 0;
  const char* names = nullptr;
};

// For `dl_iterate_phdr`, which begins with the program.
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
      // The C library may have made addresses of the offsets.
      const ElfW(Addr) value = entry->d_un.d_ptr;
      const ElfW(Addr) address = value < found.base ? found.base + value : value;
      if (entry->d_tag == DT_SYMTAB) {
        found.symbols = reinterpret_cast<const symbol*>(address);
      } else if (entry->d_tag == DT_STRTAB) {
        found.names = reinterpret_cast<const char*>(address);
      } else if (entry->d_tag == DT_HASH) {
        found.count = reinterpret_cast<const ElfW(Word)*>(address)[1];
      }
    }
  }
  return 1;
}
// NOLINTEND(performance-no-int-to-ptr)

// A line of `backtrace_symbols`.  That asks the loader for names, which a static program
// has none of: then the line is the address in brackets, and we look the name up.
std::string named(const char* line, const void* frame) {
  exportedSymbols program;
  if (line[0] == '[') {
    dl_iterate_phdr(readExported, &program);
  }
  const ElfW(Addr) offset = reinterpret_cast<ElfW(Addr)>(frame) - program.base;
  for (ElfW(Word) i = 0; i < program.count; i++) {
    const symbol& candidate = program.symbols[i];
    if (offset - candidate.st_value < candidate.st_size) {
      char distance[24];
      std::snprintf(distance, sizeof distance, "+%#lx) ",
                    static_cast<unsigned long>(offset - candidate.st_value));
      return std::string(program_invocation_name) + '(' + (program.names + candidate.st_name) +
             distance + line;
    }
  }
  return line;
}

}  // namespace

std::ostream& stack::write(std::ostream& out) const {
  ucontext_t context;
  if (getcontext(&context) != 0) {
    return out << "getcontext failed\n";
  }
  out << "Stack trace:\n";
  void* frames[100];
  const int count = backtrace(frames, 100);
  char** const lines = backtrace_symbols(frames, count);
  kept().push_back(lines);
  for (int i = 0; lines != nullptr && i < count; i++) {
    out << convertSymbol(named(lines[i], frames[i])) << '\n';
  }
  return out << "End of stack trace\n";
}

std::ostream& operator<<(std::ostream& out, const stack& trace) {
  return trace.write(out);
}

std::string convertSymbol(std::string_view line) {
  const std::size_t open = line.find("(_Z");
  const std::size_t plus = open != std::string_view::npos ? line.find('+', open) : open;
  if (plus == std::string_view::npos) {
    return std::string(line);
  }
  const std::size_t name = open + 3;
  return std::string(line.substr(0, open + 1)) + demangle(line.substr(name, plus - name)) +
         std::string(line.substr(plus));
}

// --- Fatal signals ---------------------------------------------------------

void stack::installHandler() {
  for (const int sig : {SIGILL, SIGTRAP, SIGBUS, SIGFPE, SIGSEGV}) {
    std::signal(sig, sigHandler);
  }
  std::signal(SIGABRT, SIGABRThandler);
}

void stack::position(const char* file, int line) {
  lastFile = file;
  lastLine = file != nullptr ? line : -1;
}

void signalHandler(int sig) {
  static constinit volatile std::sig_atomic_t done = 0;
  if (done != 0) {
    std::abort();
  }
  done = 1;
  std::ostream& out = standardError();
  out << "signal " << sig << " caught: ";
  if (lastFile != nullptr) {
    out << " after line " << lastLine << " in " << lastFile;
  }
  out << std::endl << stack() << std::endl;
  Thread::shutDown();
}

void SIGABRThandler(int) {
  Thread::shutDown();
}

// --- Demangling ------------------------------------------------------------

namespace {

// Reads a mangled name from left to right and writes what it understands.  It
// never reads past its input: beyond the end every character is NUL.
class demangler {
 public:
  explicit demangler(std::string_view mangled) : m_rest(mangled) {}

  std::string function() {
    functionName();
    m_out += '(';
    for (bool first = true; !m_rest.empty(); first = false) {
      if (!first) {
        m_out += ", ";
      }
      argument();
    }
    m_out += ')';
    return std::move(m_out);
  }

 private:
  static constexpr int DEEPEST = 100;  // no name may overflow the stack

  char next() const { return m_rest.empty() ? '\0' : m_rest.front(); }

  bool skip(std::string_view expected) {
    if (m_rest.substr(0, expected.size()) != expected) {
      return false;
    }
    m_rest.remove_prefix(expected.size());
    return true;
  }

  bool atLength() const { return next() >= '0' && next() <= '9'; }

  void functionName() {
    if (next() == 'N') {
      nestedName();
    } else if (atLength()) {
      plainName();
    }
  }

  // A plain name and its template arguments, if any.
  void templatedName() {
    plainName();
    if (next() == 'I') {
      templateArguments();
    }
  }

  // A length and that many characters.
  void plainName() {
    std::size_t length = 0;
    for (; atLength(); m_rest.remove_prefix(1)) {
      length = length * 10 + static_cast<std::size_t>(next() - '0');
      if (length > m_rest.size()) {
        length = m_rest.size();  // cut short: take what there is
      }
    }
    const std::string_view name = m_rest.substr(0, length);
    m_out += name;
    m_rest.remove_prefix(name.size());
  }

  // "N", qualifiers, parts, "E".
  void nestedName() {
    skip("N");
    while (qualifier()) {
    }
    for (bool first = true;; first = false) {
      if (next() == 'I') {
        templateArguments();
        continue;
      }
      if (!atLength() && next() != 'S') {
        break;
      }
      if (!first) {
        m_out += "::";
      }
      if (atLength()) {
        plainName();
      } else if (skip("St")) {
        m_out += "std";
      } else if (!standardString()) {
        break;
      }
    }
    if (!skip("E")) {
      m_out += "???NN???";
      m_rest.remove_prefix(m_rest.empty() ? 0 : 1);
    }
  }

  bool qualifier() {
    if (skip("K")) {
      m_out += "const ";
    } else if (skip("V")) {
      m_out += "volatile ";
    } else if (skip("r")) {
      m_out += "???CV='r'???";
    } else {
      return false;
    }
    return true;
  }

  bool standardString() {
    if (!skip("Ss")) {
      return false;
    }
    m_out += "std::string";
    return true;
  }

  // "I", arguments, "E".
  void templateArguments() {
    if (m_depth == DEEPEST) {
      m_rest = {};
      return;
    }
    m_depth++;
    skip("I");
    m_out += '<';
    for (bool first = true; !m_rest.empty() && !skip("E"); first = false) {
      if (!first) {
        m_out += ", ";
      }
      argument();
    }
    m_out += '>';
    m_depth--;
  }

  // One type.  Always consumes something.
  void argument() {
    std::string suffixes;
    for (;;) {
      if (skip("P")) {
        suffixes += '*';
      } else if (skip("R")) {
        suffixes += '&';
      } else if (!qualifier()) {
        break;
      }
    }
    typeName();
    m_out.append(suffixes.rbegin(), suffixes.rend());
  }

  void typeName() {
    if (next() == 'N') {
      nestedName();
    } else if (atLength()) {
      templatedName();
    } else if (skip("St")) {
      m_out += "std::";
      templatedName();
    } else if (next() == 'I') {
      templateArguments();
    } else if (!standardString() && !builtIn() && !m_rest.empty()) {
      m_rest.remove_prefix(1);
    }
  }

  bool builtIn() {
    static constexpr std::string_view letters = "abcdefghijlmnostvwxyz";
    static constexpr std::string_view names[] = {
        "signed char", "bool",
        "char",        "double",
        "long double", "float",
        "__float128",  "unsigned char",
        "int",         "unsigned int",
        "long",        "unsigned long",
        "__int128",    "unsigned __int128",
        "short",       "unsigned short",
        "void",        "wchar_t",
        "long long",   "unsigned long long",
        "...",
    };
    const std::size_t index = m_rest.empty() ? letters.npos : letters.find(next());
    if (index == letters.npos) {
      return false;
    }
    m_out += names[index];
    m_rest.remove_prefix(1);
    return true;
  }

  std::string_view m_rest;
  std::string m_out;
  int m_depth = 0;
};

}  // namespace

std::string demangle(std::string_view mangled) {
  return demangler(mangled).function();
}
