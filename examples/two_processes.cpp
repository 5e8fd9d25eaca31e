// SPDX-License-Identifier: MIT
// An editor and a reader of the configuration database in two processes.
//
// The database is memory of one process.  A child made by `fork` starts with a copy of
// what its parent had published, and from then on neither sees what the other publishes.
// What they share is the critical sections.  So an edit that must reach another process
// goes there as a message, and is published there once more.

#include <hoplaunch/configRef.h>
#include <hoplaunch/processes.h>
#include <hoplaunch/threading.h>
#include <unistd.h>

#include <iostream>
#include <string>

namespace {

configString COLOUR("COLOUR", "white");

void edit(const std::string& value) {
  editableConfigDB database;  // published at the end of the scope
  database.set(COLOUR.name(), value, DistName(), false);
}

// Writes what this process's thread sees, in a section, so that lines stay whole.  The
// stream is flushed: a child also writes out what is left in its copy of the buffer.
void show(const std::string& who) {
  const criticalSection section(CS_STDOUT, false);
  std::cout << who << ": version " << threadedConfigDB::local().version() << ", "
            << COLOUR.value(true) << std::endl;
}

// Reads what was published before it was started, whatever is published meanwhile.
class reader : public Thread {
 public:
  reader() : Thread(true) {}  // full-weight: a child process
  bool execute() override {
    show("reader");
    return true;
  }
  Thread* clone() const override { return new reader(*this); }
};

// Edits its own database, and sends the edit to whoever reads the pipe.
class editor : public Thread {
 public:
  explicit editor(int pipe) : Thread(true), m_pipe(pipe) {}
  bool execute() override {
    const std::string value = "red";
    edit(value);
    threadedConfigDB::refresh();
    show("editor");
    return ::write(m_pipe, value.data(), value.size()) == static_cast<ssize_t>(value.size());
  }
  Thread* clone() const override { return new editor(*this); }

 private:
  int m_pipe;
};

std::string received(int pipe) {
  char buffer[64];
  const ssize_t count = read(pipe, buffer, sizeof buffer);
  return count > 0 ? std::string(buffer, buffer + count) : std::string();
}

bool run(Thread& thread) {
  return thread.create() && thread.waitFor() && thread.status() == 0;
}

}  // namespace

int main() {
  ThreadData::instance(false);  // nothing is published before there is thread data
  COLOUR.value(true);           // the first read publishes the defaults as version 0
  show("parent");

  edit("blue");
  show("parent");  // still version 0: a thread keeps its version until it asks again
  threadedConfigDB::refresh();
  show("parent");

  reader first;
  if (!run(first)) {
    return 1;
  }

  int ends[2];
  if (pipe(ends) != 0) {
    return 1;
  }
  editor second(ends[1]);
  if (!run(second)) {
    return 1;
  }
  threadedConfigDB::refresh();
  show("parent");  // the child's edit is not here

  edit(received(ends[0]));
  threadedConfigDB::refresh();
  show("parent");  // until it has been made here as well
  return 0;
}
