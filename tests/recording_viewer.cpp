// SPDX-License-Identifier: MIT
// A viewer that records what it got, byte for byte, and ends with status 42.
//
// The variable RECORDING is the start of the names of the files that it writes
// ("recording" in the working directory without it):
//
//     .arguments    each argument, followed by a NUL
//     .environment  each variable, followed by a NUL
//     .descriptors  for each open descriptor its number, a blank, and what it is
//     .process      the path that it was executed by, its process id and its
//                   working folder, one on a line, and the lines of
//                   /proc/self/status on signals and on the file creation mask
//
// It links nothing of the project: everything that it records comes from the
// launcher.

#include <dirent.h>
#include <fcntl.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

namespace {

std::string target(const std::string& link) {
  char text[4096];
  const ssize_t length = readlink(link.c_str(), text, sizeof text);
  return length < 0 ? std::string() : std::string(text, static_cast<std::size_t>(length));
}

// Called before anything else is opened.
std::map<int, std::string> openDescriptors() {
  std::map<int, std::string> result;
  DIR* folder = opendir("/proc/self/fd");
  if (folder == nullptr) {
    return result;
  }
  while (const dirent* entry = readdir(folder)) {
    const std::string name = entry->d_name;
    if (name != "." && name != ".." && std::stoi(name) != dirfd(folder)) {
      result[std::stoi(name)] = target("/proc/self/fd/" + name);
    }
  }
  closedir(folder);
  return result;
}

void writeTexts(const std::string& name, char* const* texts) {
  std::ofstream out(name, std::ios::binary);
  for (; *texts != nullptr; ++texts) {
    out << *texts << '\0';
  }
}

void writeProcess(const std::string& name) {
  std::ofstream out(name, std::ios::binary);
  const auto path = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
  out << (path != nullptr ? path : "") << '\n'
      << getpid() << '\n'
      << target("/proc/self/cwd") << '\n';
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("Sig") || line.starts_with("ShdPnd") || line.starts_with("Umask")) {
      if (!line.starts_with("SigQ")) {
        out << line << '\n';
      }
    }
  }
}

}  // namespace

int main(int, char** arguments) {
  const std::map<int, std::string> descriptors = openDescriptors();
  const char* variable = std::getenv("RECORDING");
  const std::string prefix = variable != nullptr ? variable : "recording";
  writeTexts(prefix + ".arguments", arguments);
  writeTexts(prefix + ".environment", environ);
  std::ofstream out(prefix + ".descriptors", std::ios::binary);
  for (const auto& [number, what] : descriptors) {
    out << number << ' ' << what << '\n';
  }
  out.close();
  writeProcess(prefix + ".process");
  return out.good() ? 42 : 43;
}
