// SPDX-License-Identifier: MIT
// Starts commands in turn, many rounds of each, and writes the costs of each start.
//   paired ROUNDS < TABLE
// A line of the table is a command: a name, a number N (the command is started in every
// Nth round only), and the argument vector, separated by tabs.  What has the form NAME=VALUE in
// front of the vector goes into the environment.  A line of the output is one start: round,
// name, nanoseconds, page faults, and peak memory in KiB.
//
// Within a round the commands follow each other at once, and each round begins with
// another one: a disturbance of the machine disturbs all alike.  A start lasts until
// no descendant is left, so that it ends with the viewer even if a launcher ended first.

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace {

struct command {
  std::string name;
  unsigned int every;
  std::vector<std::string> environment;
  std::vector<std::string> arguments;
};

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "paired: %s\n", what);
  std::exit(1);
}

command parse(const std::string& line) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  for (std::size_t tab; (tab = line.find('\t', start)) != std::string::npos; start = tab + 1) {
    fields.push_back(line.substr(start, tab - start));
  }
  fields.push_back(line.substr(start));
  if (fields.size() < 3) {
    fail("a line of the table has too few fields");
  }
  const auto every = static_cast<unsigned int>(std::atoi(fields[1].c_str()));
  command result{fields[0], every > 0 ? every : 1, {}, {}};
  auto field = fields.begin() + 2;
  for (; field != fields.end() && field->find('=') != std::string::npos; ++field) {
    result.environment.push_back(*field);
  }
  const std::size_t own = result.environment.size();
  for (char** variable = environ; *variable != nullptr; variable++) {
    const std::string name(*variable, std::strcspn(*variable, "=") + 1);
    bool replaced = false;
    for (std::size_t i = 0; i < own; i++) {
      replaced = replaced || result.environment[i].compare(0, name.size(), name) == 0;
    }
    if (!replaced) {
      result.environment.emplace_back(*variable);
    }
  }
  result.arguments.assign(field, fields.end());
  return result;
}

std::vector<command> readTable() {
  std::vector<command> result;
  std::string line;
  for (int c; (c = std::getchar()) != EOF;) {
    if (c != '\n') {
      line += static_cast<char>(c);
    } else {
      result.push_back(parse(line));
      line.clear();
    }
  }
  return result;
}

long long now() {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return 1000000000LL * time.tv_sec + time.tv_nsec;
}

// Waits for a process and all its descendants.  Adds up their page faults and returns
// the highest peak of memory.
long waitForAll(long& faults) {
  long peak = 0;
  int status;
  rusage usage;
  while (wait4(-1, &status, 0, &usage) > 0) {
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
      fail("a command failed");
    }
    faults += usage.ru_minflt + usage.ru_majflt;
    peak = usage.ru_maxrss > peak ? usage.ru_maxrss : peak;
  }
  return peak;
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (const std::string& text : texts) {
    result.push_back(const_cast<char*>(text.c_str()));
  }
  result.push_back(nullptr);
  return result;
}

void start(unsigned int round, const command& what, const posix_spawn_file_actions_t& files) {
  const std::vector<char*> arguments = pointersTo(what.arguments);
  const std::vector<char*> environment = pointersTo(what.environment);
  pid_t child;
  long faults = 0;
  const long long begin = now();
  if (posix_spawnp(&child, arguments[0], &files, nullptr, arguments.data(), environment.data()) !=
      0) {
    fail(arguments[0]);
  }
  const long peak = waitForAll(faults);
  std::printf("%u\t%s\t%lld\t%ld\t%ld\n", round, what.name.c_str(), now() - begin, faults, peak);
}

}  // namespace

int main(int count, char** args) {
  if (count != 2) {
    fail("usage: paired ROUNDS < TABLE");
  }
  const std::vector<command> commands = readTable();
  const auto rounds = static_cast<unsigned int>(std::atoi(args[1]));
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&files, descriptor, "/dev/null", O_RDWR, 0);
  }
  for (unsigned int round = 0; round < rounds; round++) {
    for (std::size_t i = 0; i < commands.size(); i++) {
      const command& next = commands[(i + round) % commands.size()];
      if (round % next.every == 0) {
        start(round, next, files);
      }
    }
  }
  return 0;
}
