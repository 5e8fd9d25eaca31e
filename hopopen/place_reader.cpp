// SPDX-License-Identifier: MIT
#include "place_reader.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "file.h"

namespace hopopen {

const placeReader::result& placeReader::read(const std::string& path) {
  const auto [known, fresh] = m_known.try_emplace(path);
  if (!fresh) {
    return known->second;
  }
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    note(path, "is no regular file");
    return known->second;
  }
  fileText file = readFile(path);
  if (file.found && file.error.empty()) {
    known->second.text = std::move(file.text);
  } else if (file.error.starts_with("cannot be read")) {
    known->second.error = file.error;
  } else if (!file.error.empty()) {
    note(path, file.error);
  }
  return known->second;
}

std::optional<keyFile> placeReader::keys(const std::string& path) {
  const bool fresh = !m_known.contains(path);
  const result& file = read(path);
  if (fresh && !file.error.empty()) {
    note(path, file.error);
  }
  return file.text ? std::optional(keyFile(*file.text)) : std::nullopt;
}

void placeReader::note(const std::string& path, const std::string& message) {
  m_noted.push_back({state::WARNING, "file", path, message,
                     "Look at what it is, and move it away if no program needs it."});
}

}  // namespace hopopen
