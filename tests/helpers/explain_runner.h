// SPDX-License-Identifier: MIT
// Runs the built hopexplain, and reads its output.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <string>

#include "json_reader.h"
#include "launcher_runner.h"

namespace launcher {

/// Runs hopexplain in the folder of a workshop.
inline Outcome explain(Workshop& shop, Command command) {
  command.binary = HOPEXPLAIN_BINARY;
  return shop.run(command);
}

/// The same with `-format=json` in front; returns the JSON that it printed.
inline Json explainJSON(Workshop& shop, Command command) {
  command.arguments.insert(command.arguments.begin(), "-format=json");
  return JsonReader::read(explain(shop, command).out);
}

/// The text after a label; empty when the label is missing.
inline std::string labelled(const std::string& text, const std::string& label) {
  for (const std::string& line : split(text, '\n')) {
    if (line.starts_with(label + " ")) {
      return line.substr(12);
    }
  }
  return "";
}

/// The words that bash reads.
inline Strings readByBash(const Workshop& shop, const std::string& words) {
  const std::filesystem::path script = shop.work() / "bin" / "words.sh";
  writeFile(script, "printf '%s\\0' " + words + "\n");
  std::FILE* const pipe = popen(("bash '" + script.string() + "'").c_str(), "r");
  std::string found;
  char buffer[4096];
  for (std::size_t count = 1; pipe != nullptr && count > 0;) {
    count = std::fread(buffer, 1, sizeof buffer, pipe);
    found.append(buffer, count);
  }
  EXPECT_TRUE(pipe != nullptr && pclose(pipe) == 0) << words;
  return split(found, '\0');
}

}  // namespace launcher
