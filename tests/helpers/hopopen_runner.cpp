// SPDX-License-Identifier: MIT
#include "hopopen_runner.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <exception>

#include "execution.h"

namespace door {

using execution::pointers;
using execution::redirect;
using execution::replace;

namespace {

// Until the last process that has the terminal has closed it.
std::string readAll(int screen) {
  std::string result;
  std::array<char, 4096> buffer{};
  for (;;) {
    const ssize_t got = ::read(screen, buffer.data(), buffer.size());
    if (got <= 0) {
      break;
    }
    result.append(buffer.data(), static_cast<std::size_t>(got));
  }
  close(screen);
  result.erase(std::remove(result.begin(), result.end(), '\r'), result.end());
  return result;
}

}  // namespace

bool isPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); });
}

Machine::Machine() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);  // so `settle` can wait for all that hopopen leaves
  std::string pattern = fs::canonical(fs::temp_directory_path()) / "hopopen-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) {
    ADD_FAILURE() << "no folder " << pattern;
    return;
  }
  m_root = pattern;
  for (const char* name : {"home", "config", "data", "etc", "share", "bin", "work"}) {
    fs::create_directory(m_root / name);
  }
}

Machine::~Machine() {
  settle();
  std::error_code ignored;
  fs::remove_all(m_root, ignored);
}

std::string Machine::path(const std::string& name) const {
  return m_root / name;
}
std::string Machine::read(const std::string& name) const {
  return readFile(path(name));
}
bool Machine::has(const std::string& name) const {
  return fs::exists(fs::symlink_status(path(name)));
}

void Machine::write(const std::string& name, const std::string& text) const {
  fs::create_directories(fs::path(path(name)).parent_path());
  writeFile(path(name), text);
}

std::string Machine::definition(const std::string& name, const std::string& folder) {
  return folder + "/hoplaunch/viewers/" + name + ".toml";
}

void Machine::define(const std::string& name, const std::string& text,
                     const std::string& folder) const {
  write(definition(name, folder), text);
}

std::string Machine::settings(const std::string& folder) {
  return folder + "/hoplaunch/hopopen.toml";
}

void Machine::set(const std::string& text, const std::string& folder) const {
  write(settings(folder), text);
}

void Machine::program(const std::string& name, const std::string& folder) const {
  fs::create_directories(path(folder));
  fs::copy_file(RECORDING_VIEWER, fs::path(path(folder)) / name,
                fs::copy_options::overwrite_existing);
}

void Machine::script(const std::string& name, const std::string& text,
                     const std::string& folder) const {
  const std::string file = folder + "/" + name;
  write(file, "#!/bin/sh\nPATH=/usr/bin:/bin\n" + text);
  fs::permissions(path(file), fs::perms::owner_all);
}

void Machine::plain() const {
  define("plain", PLAIN);
  program("plain");
}

void Machine::registered(const Strings& schemes) const {
  std::string types;
  std::string cache = "[MIME Cache]\n";
  for (const std::string& scheme : schemes) {
    types += "x-scheme-handler/" + scheme + ";";
    cache += "x-scheme-handler/" + scheme + "=hopopen.desktop;\n";
  }
  program("hopopen");
  write("share/applications/hopopen.desktop",
        "[Desktop Entry]\nType=Application\nName=Remote access links\nExec=" + path("bin/hopopen") +
            " -- %u\nTryExec=" + path("bin/hopopen") + "\nMimeType=" + types +
            "\nNoDisplay=true\n");
  write("share/applications/mimeinfo.cache", cache);
}

Variables Machine::variables() const {
  Variables result{{"HOME", path("home")},           {"XDG_CONFIG_HOME", path("config")},
                   {"XDG_DATA_HOME", path("data")},  {"XDG_CONFIG_DIRS", path("etc")},
                   {"XDG_DATA_DIRS", path("share")}, {"PATH", path("bin")},
                   {"RECORDING", path("recording")}};
  for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
    if (const char* value = std::getenv(name)) {
      result[name] = value;
    }
  }
  return result;
}

Outcome Machine::call(const Call& wanted) const {
  const auto started = std::chrono::steady_clock::now();
  int screen = -1;
  const pid_t child = start(wanted, screen);
  Outcome result;
  result.pid = child;
  if (screen >= 0) {
    result.err = readAll(screen);
  }
  int status = 0;
  if (child <= 0 || waitpid(child, &status, 0) != child) {
    ADD_FAILURE() << "nothing to wait for";
    return result;
  }
  result.seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  result.out = read("out");
  if (screen < 0) {
    result.err = read("err");
  }
  result.viewer = launcher::Workshop::recording(path("recording"));
  return result;
}

Outcome Machine::run(const Strings& arguments, const Variables& changed) const {
  return call({.arguments = arguments, .variables = changed});
}

Json Machine::dry(Strings arguments, const Variables& changed) const {
  arguments.insert(arguments.begin(), {"--dry-run", "--format=json"});
  return json(arguments, changed);
}

Json Machine::json(const Strings& arguments, const Variables& changed) const {
  const Outcome outcome = run(arguments, changed);
  EXPECT_TRUE(isPlain(outcome.out)) << outcome.out;
  EXPECT_EQ(1U, countOf(outcome.out, "\n")) << outcome.out;
  try {
    return Json::parse(outcome.out);
  } catch (const std::exception& error) {
    ADD_FAILURE() << error.what() << ": " << outcome.out << outcome.err;
    throw;
  }
}

std::string Machine::comesOf(const Strings& arguments, const Variables& changed) const {
  const Json told = dry(arguments, changed);
  if (told["launch"] == true) {
    return told["viewer"]["name"];
  }
  return "refused: " + told["refusal"]["code"].get<std::string>();
}

Strings Machine::launch(const Strings& arguments, const Variables& changed) const {
  const Outcome outcome = run(arguments, changed);
  EXPECT_EQ(42, outcome.status) << outcome.err;
  if (!outcome.viewer) {
    ADD_FAILURE() << "no viewer was started: " << outcome.err;
    return {};
  }
  return outcome.viewer->arguments;
}

void Machine::settle() {
  while (waitpid(-1, nullptr, 0) > 0) {
  }
}

pid_t Machine::start(const Call& wanted, int& screen) const {
  Variables variables = this->variables();
  for (const auto& [name, value] : wanted.variables) {
    variables[name] = value;
  }
  Strings texts;
  for (const auto& [name, value] : variables) {
    if (value) {
      texts.push_back(name + "=" + *value);
    }
  }
  texts.insert(texts.end(), wanted.further.begin(), wanted.further.end());
  Strings words = wanted.under;
  words.push_back(HOPOPEN);
  words.insert(words.end(), wanted.arguments.begin(), wanted.arguments.end());
  int other = -1;
  if (wanted.terminal && openpty(&screen, &other, nullptr, nullptr, nullptr) != 0) {
    ADD_FAILURE() << "no terminal";
  }
  const pid_t child = fork();
  if (child == 0) {
    redirect("/dev/null", 0);
    redirect(m_root / "out", 1);
    wanted.terminal ? replace(other, 2) : redirect(m_root / "err", 2);
    if (screen >= 0) {
      close(screen);
    }
    become(words, texts, wanted.prepare);
  }
  if (other >= 0) {
    close(other);
  }
  return child;
}

void Machine::become(Strings& words, Strings& texts, const std::function<void()>& prepare) const {
  if (chdir(path("work").c_str()) != 0) {
    _exit(126);
  }
  prepare();
  execve(words[0].c_str(), pointers(words).data(), pointers(texts).data());
  perror("execve");
  _exit(127);
}

}  // namespace door
