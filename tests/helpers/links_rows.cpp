// SPDX-License-Identifier: MIT
#include "links_rows.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <stdexcept>

namespace links {

namespace {

int number(std::string_view text, int base) {
  int result = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result, base);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw std::runtime_error("no number: " + std::string(text));
  }
  return result;
}

// How many words a key has after it, at least and at most.
struct Key {
  std::string_view name;
  std::size_t least;
  std::size_t most;
};

constexpr std::size_t any = 1000;
constexpr std::array<Key, 17> keys{{{"refused", 2, 2},
                                    {"scheme", 1, 1},
                                    {"user", 1, 1},
                                    {"host", 1, 1},
                                    {"port", 1, 1},
                                    {"through", 1, 1},
                                    {"trusted", 1, 1},
                                    {"parameter", 1, 3},
                                    {"dropped", 1, any},
                                    {"viewer", 1, 1},
                                    {"arguments", 1, any},
                                    {"environment", 1, 1},
                                    {"unset", 1, any},
                                    {"link", 1, 1},
                                    {"hides", 1, 1},
                                    {"options", 1, any},
                                    {"with", 1, 1}}};

void readLine(Row& row, Strings line) {
  const std::string name = line.front();
  line.erase(line.begin());
  const auto* key = std::find_if(keys.begin(), keys.end(),
                                 [&](const Key& candidate) { return candidate.name == name; });
  if (key == keys.end() || line.size() < key->least || line.size() > key->most) {
    throw std::runtime_error("no such line");
  }
  if (name == "options") {
    row.options = line;
  } else if (name == "with") {
    const std::size_t sign = line[0].find('=');
    row.with[line[0].substr(0, sign)] = line[0].substr(sign + 1);
  } else {
    row.expected.emplace_back(name, line);
  }
}

}  // namespace

std::string unescaped(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    if (text.front() != '\\') {
      result += text.front();
      text.remove_prefix(1);
    } else if (text.starts_with("\\x")) {
      result += static_cast<char>(number(text.substr(2, 2), 16));
      text.remove_prefix(4);
    } else {
      const std::size_t end = text.find('}');
      const std::size_t star = text.rfind('*', end);
      if (!text.starts_with("\\{") || end == std::string_view::npos ||
          star == std::string_view::npos) {
        throw std::runtime_error("bad escape");
      }
      for (int count = number(text.substr(star + 1, end - star - 1), 10); count > 0; --count) {
        result += text.substr(2, star - 2);
      }
      text.remove_prefix(end + 1);
    }
  }
  return result;
}

Strings words(std::string_view line) {
  Strings result;
  while (!line.empty()) {
    const bool quoted = line.front() == '"';
    if (line.front() == ' ') {
      line.remove_prefix(1);
      continue;
    }
    line.remove_prefix(quoted ? 1 : 0);
    const std::size_t end = line.find(quoted ? '"' : ' ');
    if (quoted && end == std::string_view::npos) {
      throw std::runtime_error("no closing quote");
    }
    result.push_back(unescaped(line.substr(0, end)));
    line.remove_prefix(std::min(line.size(), end == std::string_view::npos ? end : end + 1));
  }
  return result;
}

std::vector<Block> readBlocks(const std::string& file) {
  std::vector<Block> result;
  std::string section;
  std::ifstream in(file);
  int count = 0;
  for (std::string line; std::getline(in, line);) {
    ++count;
    if (line.starts_with("# ---- ")) {
      section = line.substr(7);
    }
    if (line.empty() || line.starts_with("#")) {
      continue;
    }
    if (line[0] != ' ' || result.empty()) {
      const std::string index = std::to_string(result.size() + 1);
      const std::string zeros(3 - std::min<std::size_t>(3, index.size()), '0');
      result.push_back({.number = zeros + index, .section = section, .line = count, .lines = {}});
    }
    result.back().lines.push_back(line);
  }
  return result;
}

Row readRow(const Block& block) {
  Row result;
  result.section = block.section;
  result.line = block.line;
  for (const std::string& line : block.lines) {
    try {
      if (line[0] == ' ') {
        readLine(result, words(line));
      } else {
        result.link = unescaped(line);
      }
    } catch (const std::exception& error) {
      result.broken = line + ": " + error.what();
    }
  }
  return result;
}

}  // namespace links
