// SPDX-License-Identifier: MIT
#include "settings_pairs.h"

#include <algorithm>
#include <cstddef>

#include "text_lines.h"

namespace hopopen {

namespace {

// a = 1, b = 2
std::string inlinePairs(const std::vector<keyAndValue>& pairs) {
  std::string result;
  for (const auto& [key, value] : pairs) {
    result.append(result.empty() ? "" : ", ").append(key).append(" = ").append(value);
  }
  return result;
}

std::string lines(const std::vector<keyAndValue>& pairs, const std::string& start,
                  const std::string& end) {
  std::string result;
  for (const auto& [key, value] : pairs) {
    result.append(start).append(key).append(" = ").append(value).append(end);
  }
  return result;
}

// The node after whose line more keys of the table belong: its last plain value.
const toml::node* lastValue(const toml::table& table) {
  const toml::node* last = nullptr;
  for (const auto& [key, value] : table) {
    if (value.is_value() && (last == nullptr || last->source().begin < value.source().begin)) {
      last = &value;
    }
  }
  return last;
}

// Adds keys to a table below its header, or as dotted keys, each on a line of its own.
void addLines(textEdit& edit, tomlText& source, const toml::table& table, const std::string& prefix,
              const std::vector<keyAndValue>& pairs) {
  const std::string& text = source.text();
  const std::string end = lineBreak(text);
  const toml::node* last = lastValue(table);
  if (last == nullptr && !prefix.empty()) {
    // All keys are deeper, such as "trust.more.key".
    const std::size_t first = lineStart(text, source.offset(table.source().begin));
    edit.insert(first, lines(pairs, prefix, end));
    return;
  }
  const region anchor = source.regionOf(last != nullptr ? *last : table);
  const std::string start = last != nullptr ? indentation(text, anchor.begin) : std::string();
  const std::size_t next = nextLine(text, anchor.end);
  const bool ended = next > anchor.end && text[next - 1] == '\n';
  edit.insert(next, (ended ? "" : end) + lines(pairs, start + prefix, end));
}

void addInline(textEdit& edit, tomlText& source, const toml::table& table,
               const std::vector<keyAndValue>& pairs) {
  const std::string added = inlinePairs(pairs);
  if (table.empty()) {
    const std::size_t within = source.offset(table.source().begin) + 1;
    edit.insert(within, ' ' + added + (source.text()[within] == '}' ? " " : ""));
    return;
  }
  std::size_t last = 0;
  for (const auto& [key, value] : table) {
    last = std::max(last, source.regionOf(value).end);
  }
  edit.insert(last, ", " + added);
}

void addTable(textEdit& edit, const std::string& text, const std::string& name,
              const std::vector<keyAndValue>& pairs) {
  const std::string end = lineBreak(text);
  std::string added;
  if (text.size() > textStart(text)) {
    const bool ended = text.ends_with('\n');
    const bool blank = text.ends_with("\n\n") || text.ends_with("\n\r\n");
    added = (ended ? "" : end) + (blank ? "" : end);
  }
  edit.insert(text.size(), added + '[' + name + ']' + end + lines(pairs, {}, end));
}

}  // namespace

std::string inlineTable(const std::vector<keyAndValue>& pairs) {
  return "{ " + inlinePairs(pairs) + " }";
}

void addPairs(textEdit& edit, tomlText& source, const tableName& name, const toml::table* table,
              const std::vector<keyAndValue>& pairs) {
  if (pairs.empty()) {
    return;
  }
  switch (source.shapeOf(table, name.parts)) {
    case shape::NONE:
      addTable(edit, source.text(), name.header, pairs);
      break;
    case shape::HEADER:
      addLines(edit, source, *table, {}, pairs);
      break;
    case shape::DOTTED:
      addLines(edit, source, *table, name.dotted + '.', pairs);
      break;
    case shape::INLINE:
      addInline(edit, source, *table, pairs);
      break;
  }
}

}  // namespace hopopen
