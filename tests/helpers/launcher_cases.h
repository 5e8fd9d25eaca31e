// SPDX-License-Identifier: MIT
// Reads launcher_cases.txt, which has the launcher's command lines and their results.
#pragma once

#include <algorithm>
#include <exception>
#include <fstream>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "launcher_runner.h"

namespace launcher {

/// The lines of one case of launcher_cases.txt.  The head of that file says the form.
struct CaseLines {
  std::string name;
  Strings lines;
};

/// What the lines of a case mean.
struct Case {
  Strings run;
  std::string command = "tools/hoplaunch";
  std::string program;
  std::optional<Strings> viewer = std::nullopt;
  std::string log;
  std::string logfile = "log";
  std::string err;
  int status = 0;
  std::string broken;  // what is wrong with the case itself
};

/// The parameter of a test.  A process makes those of all tests, so it has no text of its own.
struct CasePlace {
  const CaseLines* found;
};

inline std::ostream& operator<<(std::ostream& out, const CasePlace& place) {
  return out << place.found->name;
}

inline int hexValue(char digit) {
  const std::size_t value = std::string("0123456789abcdef").find(digit);
  if (value == std::string::npos) {
    throw std::runtime_error("bad hexadecimal digit");
  }
  return static_cast<int>(value);
}

// Reads the quoted word at `at`, which is after its opening quote.
inline std::string quotedWord(const std::string& line, std::size_t& at) {
  std::string result;
  for (; line.at(at) != '"'; ++at) {
    if (line[at] != '\\') {
      result += line[at];
      continue;
    }
    switch (line.at(++at)) {
      case 'n':
        result += '\n';
        break;
      case 't':
        result += '\t';
        break;
      case 'x':
        result += static_cast<char>(hexValue(line.at(at + 1)) * 16 + hexValue(line.at(at + 2)));
        at += 2;
        break;
      case '"':
      case '\\':
        result += line[at];
        break;
      default:
        throw std::runtime_error("bad escape");
    }
  }
  ++at;
  return result;
}

inline Strings words(const std::string& line) {
  Strings result;
  for (std::size_t at = 0; at < line.size();) {
    if (line[at] == ' ') {
      ++at;
    } else if (line[at] == '"') {
      result.push_back(quotedWord(line, ++at));
    } else {
      const std::size_t end = std::min(line.find(' ', at), line.size());
      result.push_back(line.substr(at, end - at));
      at = end;
    }
  }
  return result;
}

inline void readLine(Case& value, const std::string& key, const std::string& rest) {
  if (key == "run") {
    value.run = words(rest);
  } else if (key == "command") {
    value.command = words(rest).at(0);
  } else if (key == "program") {
    value.program = rest;
  } else if (key == "viewer") {
    value.viewer = words(rest);
    value.status = 42;
  } else if (key == "log") {
    value.log += (rest.starts_with("<tab>") ? "\t" + rest.substr(5) : rest) + "\n";
  } else if (key == "logfile") {
    value.logfile = rest;
  } else if (key == "stderr") {
    value.err = words(rest).at(0);
  } else if (key == "status") {
    value.status = std::stoi(rest);
  } else {
    throw std::runtime_error("no such key");
  }
}

inline std::vector<CaseLines> readCases() {
  std::vector<CaseLines> result;
  std::ifstream in(TEST_DATA "/launcher_cases.txt");
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with("case: ")) {
      result.push_back({.name = line.substr(6), .lines = {}});
    } else if (!line.empty() && !line.starts_with("#")) {
      if (result.empty()) {
        result.push_back({.name = "Broken", .lines = {}});
      }
      result.back().lines.push_back(line);
    }
  }
  return result;
}

/// All cases of the file.
inline std::vector<CasePlace> allCases() {
  static const std::vector<CaseLines> cases = readCases();
  std::vector<CasePlace> result;
  for (const CaseLines& one : cases) {
    result.push_back({&one});
  }
  return result;
}

inline Case readCase(const CasePlace& place) {
  Case result;
  for (const std::string& line : place.found->lines) {
    const std::size_t colon = line.find(':');
    try {
      readLine(result, line.substr(0, colon),
               colon + 2 < line.size() ? line.substr(colon + 2) : std::string());
    } catch (const std::exception& error) {
      result.broken = line + ": " + error.what();
    }
  }
  return result;
}

}  // namespace launcher
