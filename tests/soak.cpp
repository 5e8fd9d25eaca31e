// SPDX-License-Identifier: MIT
// Launches again and again, several at once, with one log, and looks whether each
// arrives whole and whether anything is left behind.  Then does it again with launches
// that are killed at random moments, and counts what those leave behind.
//
//     soak HOPLAUNCH VIEWER LAUNCHES
//
// Runs in an IPC namespace of its own.

#include <fcntl.h>
#include <linux/close_range.h>
#include <sched.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int AT_ONCE = 4;
constexpr unsigned int SEED = 1;

int failures = 0;

void expect(bool condition, const std::string& what) {
  if (!condition && ++failures <= 20) {
    std::printf("FAILED: %s\n", what.c_str());
  }
}

// The parts of links, in the forms of the URI, the viewer and the log.
struct Text {
  const char* encoded;
  const char* plain;
  const char* quoted;
};
constexpr std::array<Text, 5> texts = {{
    {"plain", "plain", "plain"},
    {"a%2520b", "a b", "a b"},
    {"%252522%255C", "%22\\", "%22\\\\"},
    {"line%250Aend", "line\nend", "line\\nend"},
    {"%2580%25FF", "\x80\xff", "\\200\\377"},
}};

const Text& textOf(int number) {
  return texts[static_cast<std::size_t>(number) % texts.size()];
}

std::string uriOf(int number) {
  return "vnc://host:5900/?launch=" + std::to_string(number) + "&text=" + textOf(number).encoded;
}

std::vector<std::string> readLines(const std::string& name) {
  std::vector<std::string> result;
  std::ifstream in(name, std::ios::binary);
  for (std::string line; std::getline(in, line);) {
    result.push_back(in.eof() ? line + "<torn>" : line);
  }
  return result;
}

// The ids of the semaphore sets of this namespace.
std::vector<int> semaphoreSets() {
  std::vector<int> result;
  const std::vector<std::string> lines = readLines("/proc/sysvipc/sem");
  for (std::size_t i = 1; i < lines.size(); i++) {
    int key = 0;
    int id = 0;
    expect(std::sscanf(lines[i].c_str(), "%d %d", &key, &id) == 2, "no set: " + lines[i]);
    result.push_back(id);
  }
  return result;
}

// One round of launches.
class Soak {
 public:
  Soak(std::string launcher, std::string viewer, int launches)
      : m_launcher(std::move(launcher)),
        m_viewer(std::move(viewer)),
        m_arrived(static_cast<std::size_t>(launches), 0) {
    if (mkdtemp(m_folder.data()) == nullptr || pipe2(m_pipe.data(), O_CLOEXEC) != 0) {
      std::perror("soak");
      std::exit(1);
    }
    fcntl(m_pipe[0], F_SETFL, O_NONBLOCK);
  }
  Soak(const Soak&) = delete;
  Soak& operator=(const Soak&) = delete;
  ~Soak() {
    unlink(log().c_str());
    rmdir(m_folder.c_str());
    close(m_pipe[0]);
    close(m_pipe[1]);
  }

  pid_t start(int number) {
    const std::string logOption = "-log=" + log();
    const std::string program = "-program=" + m_viewer;
    const std::string uri = uriOf(number);
    std::array<const char*, 5> arguments = {m_launcher.c_str(), logOption.c_str(), program.c_str(),
                                            uri.c_str(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, m_pipe[1], 3);
    pid_t result = -1;
    expect(posix_spawn(&result, m_launcher.c_str(), &actions, nullptr,
                       const_cast<char**>(arguments.data()), environ) == 0,
           "a launch cannot be started");
    posix_spawn_file_actions_destroy(&actions);
    return result;
  }

  // Reads the reports of viewers.
  void drain() {
    std::array<char, 65536> buffer{};
    for (ssize_t size = 0; (size = read(m_pipe[0], buffer.data(), buffer.size())) > 0;) {
      m_told.append(buffer.data(), static_cast<std::size_t>(size));
    }
    while (m_told.size() >= sizeof(std::uint32_t)) {
      std::uint32_t length = 0;
      std::memcpy(&length, m_told.data(), sizeof length);
      if (m_told.size() < sizeof length + length) {
        return;
      }
      arrive(m_told.substr(sizeof length, length));
      m_told.erase(0, sizeof length + length);
    }
  }

  std::size_t arrived() const {
    return static_cast<std::size_t>(std::count(m_arrived.begin(), m_arrived.end(), 1));
  }

  // Removes the last line of the log if it is torn; returns true then.  The kernel writes
  // to a file page by page, and may end a killed writer between two pages.
  bool takeTornLineOut() const {
    const int file = open(log().c_str(), O_RDWR);
    const off_t size = lseek(file, 0, SEEK_END);
    off_t end = size;
    for (char last = 0; end > 0 && pread(file, &last, 1, end - 1) == 1 && last != '\n';) {
      end--;
    }
    expect(end == size || size % sysconf(_SC_PAGESIZE) == 0, "a line is torn within a page");
    expect(end == size || ftruncate(file, end) == 0, "a torn line cannot be taken out");
    close(file);
    return end != size;
  }

  // How often each line is in the log.  The lines that all launches have are counted apart.
  void readLog(std::map<std::string, int>& shared, std::vector<int>& uris,
               std::vector<int>& numbers) const {
    uris.assign(m_arrived.size(), 0);
    numbers.assign(m_arrived.size(), 0);
    for (const std::string& line : readLines(log())) {
      if (line.size() > 22 && line.compare(15, 8, ": URI = ") == 0) {
        count(
            uris, line, "launch=", [](int n) { return ": URI = " + uriOf(n); }, 15);
      } else if (line.starts_with("\t\"-launch=")) {
        count(
            numbers, line,
            "launch=", [](int n) { return "\t\"-launch=" + std::to_string(n) + "\""; }, 0);
      } else {
        ++shared[line];
      }
    }
  }

 private:
  std::string log() const { return m_folder + "/log"; }

  void arrive(const std::string& record) {
    const std::size_t at = record.find("-launch=");
    const int number = at != std::string::npos ? std::atoi(record.c_str() + at + 8) : -1;
    if (number < 0 || static_cast<std::size_t>(number) >= m_arrived.size()) {
      expect(false, "a launch without its number arrived");
      return;
    }
    const std::string name = m_viewer.substr(m_viewer.rfind('/') + 1);
    std::string wanted;
    for (const std::string& argument :
         {name, std::string("--autoreconnect=0"), "-launch=" + std::to_string(number),
          std::string("-text=") + textOf(number).plain, std::string("host:5900")}) {
      wanted += argument + '\0';
    }
    expect(record == wanted, "launch " + std::to_string(number) + " arrived changed");
    ++m_arrived[static_cast<std::size_t>(number)];
  }

  template <class Line>
  static void count(std::vector<int>& counts, const std::string& line, const char* key,
                    Line expected, std::size_t start) {
    const int number = std::atoi(line.c_str() + line.find(key) + std::strlen(key));
    const bool known = number >= 0 && static_cast<std::size_t>(number) < counts.size() &&
                       line.substr(start) == expected(number);
    expect(known, "a torn line: " + line);
    if (known) {
      ++counts[static_cast<std::size_t>(number)];
    }
  }

  std::string m_launcher;
  std::string m_viewer;
  std::vector<int> m_arrived;  // for each launch, how often
  std::string m_folder = "/tmp/hoplaunch-soak-XXXXXX";
  std::array<int, 2> m_pipe = {-1, -1};
  std::string m_told;
};

// The lines that all launches have.
std::map<std::string, int> sharedLines(const std::string& viewer, int launches) {
  std::map<std::string, int> result = {
      {"executable: " + viewer, launches},
      {"\t\"" + viewer.substr(viewer.rfind('/') + 1) + "\"", launches},
      {"\t\"--autoreconnect=0\"", launches},
      {"\t\"host:5900\"", launches},
  };
  for (int number = 0; number < launches; number++) {
    ++result[std::string("\t\"-text=") + textOf(number).quoted + "\""];
  }
  return result;
}

long descriptors() {
  long result = 0;
  for (int descriptor = 0; descriptor < 1024; descriptor++) {
    result += fcntl(descriptor, F_GETFD) >= 0 ? 1 : 0;
  }
  return result;
}

void expectNobodyLeft() {
  expect(waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD, "a process lingers");
}

// Launches that run to their end.
void soak(const std::string& launcher, const std::string& viewer, int launches) {
  Soak round(launcher, viewer, launches);
  const auto started = std::chrono::steady_clock::now();
  int next = 0;
  for (int ended = 0; ended < launches; ended++) {
    for (; next < launches && next - ended < AT_ONCE; next++) {
      round.start(next);
    }
    int status = 0;
    expect(waitpid(-1, &status, 0) > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 42,
           "a launch ended otherwise than its viewer");
    round.drain();
  }
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - started;
  std::map<std::string, int> shared;
  std::vector<int> uris;
  std::vector<int> numbers;
  round.readLog(shared, uris, numbers);
  expect(round.arrived() == static_cast<std::size_t>(launches), "a launch did not arrive once");
  expect(uris == std::vector<int>(uris.size(), 1), "a line of a URI is lost");
  expect(numbers == std::vector<int>(numbers.size(), 1), "a line of an argument is lost");
  expect(shared == sharedLines(viewer, launches), "other lines are torn or lost");
  expect(semaphoreSets().empty(), "a semaphore set is left behind");
  expectNobodyLeft();
  std::printf("%d launches, %d at once, in %.0f s: %zu arrived, %zu sets left behind\n", launches,
              AT_ONCE, taken.count(), round.arrived(), semaphoreSets().size());
}

// The microseconds that a launch takes when it runs alone: the median of 101.
long timeOfOne(const std::string& launcher, const std::string& viewer) {
  Soak round(launcher, viewer, 101);
  std::vector<long> times;
  for (int number = 0; number < 101; number++) {
    const auto started = std::chrono::steady_clock::now();
    const pid_t child = round.start(number);
    expect(waitpid(child, nullptr, 0) == child, "a launch cannot be waited for");
    const auto taken = std::chrono::steady_clock::now() - started;
    times.push_back(static_cast<long>(taken / std::chrono::microseconds(1)));
    round.drain();
  }
  std::sort(times.begin(), times.end());
  return times[50];
}

// Launches that are killed, one after the other, at some moment of the time that a
// launch takes.  Nobody can clean up after them, so the round counts what they leave.
void kill(const std::string& launcher, const std::string& viewer, int launches) {
  const long microseconds = timeOfOne(launcher, viewer);
  Soak round(launcher, viewer, launches);
  std::mt19937 random(SEED);
  std::uniform_int_distribution<long> moment(0, microseconds);
  int killed = 0;
  int torn = 0;
  for (int number = 0; number < launches; number++) {
    const pid_t child = round.start(number);
    usleep(static_cast<useconds_t>(moment(random)));
    ::kill(child, SIGKILL);
    int status = 0;
    expect(waitpid(child, &status, 0) == child, "a killed launch does not end");
    killed += WIFSIGNALED(status) ? 1 : 0;
    torn += round.takeTornLineOut() ? 1 : 0;
    round.drain();
  }
  std::map<std::string, int> shared;
  std::vector<int> uris;
  std::vector<int> numbers;
  round.readLog(shared, uris, numbers);
  const std::map<std::string, int> whole = sharedLines(viewer, launches);
  int cut = 0;
  for (std::size_t number = 0; number < uris.size(); number++) {
    cut += uris[number] > 0 && numbers[number] == 0 ? 1 : 0;
  }
  for (const auto& [line, times] : shared) {
    const auto found = whole.find(line);
    expect(found != whole.end() && times <= found->second, "a changed line: " + line);
  }
  expectNobodyLeft();
  const std::vector<int> sets = semaphoreSets();
  std::printf(
      "%d launches, killed within %ld us (seed %u): %d died of it, %zu arrived, %d logs end early, "
      "%d lines torn where a page ends, %zu sets left behind\n",
      launches, microseconds, SEED, killed, round.arrived(), cut, torn, sets.size());
  for (const int id : sets) {
    semctl(id, 0, IPC_RMID);
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) {
    std::fprintf(stderr, "Usage: %s HOPLAUNCH VIEWER LAUNCHES\n", arguments[0]);
    return 2;
  }
  if (unshare(CLONE_NEWIPC) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWIPC) != 0) {
    std::perror("an IPC namespace needs root");
    return 2;
  }
  close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);  // the viewers must not get ours
  prctl(PR_SET_CHILD_SUBREAPER, 1);          // orphans become our children
  const int launches = std::atoi(arguments[3]);
  const long before = descriptors();
  soak(arguments[1], arguments[2], launches);
  kill(arguments[1], arguments[2], launches / 10);
  expect(descriptors() == before, "a descriptor is left open");
  std::printf("%d passed, %d failed\n", failures == 0 ? 1 : 0, failures);
  return failures == 0 ? 0 : 1;
}
