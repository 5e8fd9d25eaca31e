#include "catalog.h"

#include <charconv>

#include "conversion.h"

namespace hopopen {

namespace {

constexpr std::string_view HEAD = "hopopen catalog 1\n";
constexpr char BETWEEN_FIELDS = '\t';
constexpr char BETWEEN_SCHEMES = ' ';

template <class Number>
bool readNumber(const std::string& field, Number& into) {
  const char* const end = field.data() + field.size();
  const auto [stop, error] = std::from_chars(field.data(), end, into);
  return error == std::errc() && stop == end;
}

std::optional<catalogEntry> readEntry(const std::string& line) {
  const std::vector<std::string> fields = stringToVector(line, BETWEEN_FIELDS);
  catalogEntry result;
  if (fields.size() != 8 || !readNumber(fields[0], result.file.device) ||
      !readNumber(fields[1], result.file.inode) || !readNumber(fields[2], result.file.size) ||
      !readNumber(fields[3], result.file.modified) || !readNumber(fields[4], result.file.changed)) {
    return {};
  }
  result.schemes = stringToVector(fields[5], BETWEEN_SCHEMES);
  result.title = fields[6];
  result.path = fields[7];
  return result;
}

std::string joined(const std::vector<std::string>& schemes) {
  std::string result;
  for (const std::string& scheme : schemes) {
    if (!result.empty()) {
      result += BETWEEN_SCHEMES;
    }
    result += scheme;
  }
  return result;
}

}  // namespace

catalog::catalog(std::string_view text) {
  if (!text.starts_with(HEAD)) {
    return;
  }
  text.remove_prefix(HEAD.size());
  for (std::size_t end; (end = text.find('\n')) != std::string_view::npos;
       text.remove_prefix(end + 1)) {
    if (auto entry = readEntry(std::string(text.substr(0, end)))) {
      m_entries.emplace(entry->path, *entry);
    }
  }
}

catalog::catalog(const std::vector<catalogEntry>& entries) {
  for (const catalogEntry& entry : entries) {
    if (entry.path.find_first_of("\t\n") == std::string::npos) {
      m_entries.emplace(entry.path, entry);
    }
  }
}

const catalogEntry* catalog::find(const std::string& path, const stamp& file) const {
  const auto found = m_entries.find(path);
  return found != m_entries.end() && found->second.file == file ? &found->second : nullptr;
}

std::string catalog::text() const {
  std::string result(HEAD);
  for (const auto& [path, entry] : m_entries) {
    for (const std::uint64_t number : {entry.file.device, entry.file.inode, entry.file.size}) {
      result += std::to_string(number) + BETWEEN_FIELDS;
    }
    for (const std::int64_t time : {entry.file.modified, entry.file.changed}) {
      result += std::to_string(time) + BETWEEN_FIELDS;
    }
    result += joined(entry.schemes) + BETWEEN_FIELDS + entry.title + BETWEEN_FIELDS + path + '\n';
  }
  return result;
}

}  // namespace hopopen
