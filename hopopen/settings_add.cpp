#include "settings_add.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "fault.h"
#include "settings.h"
#include "text_edit.h"
#include "text_lines.h"
#include "toml.h"
#include "trusted.h"

namespace hopopen {

namespace {

// A key and the text of its value.
using pair = std::pair<std::string, std::string>;

std::string join(const std::vector<std::string>& parts) {
  std::string result;
  for (const std::string& part : parts) {
    result += (result.empty() ? "" : ", ") + part;
  }
  return result;
}

std::string lines(const std::vector<pair>& pairs, const std::string& start,
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
              const std::vector<pair>& pairs) {
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
               const std::vector<pair>& pairs) {
  std::vector<std::string> parts;
  parts.reserve(pairs.size());
  for (const auto& [key, value] : pairs) {
    parts.push_back(std::string(key).append(" = ").append(value));
  }
  if (table.empty()) {
    const std::size_t within = source.offset(table.source().begin) + 1;
    edit.insert(within, ' ' + join(parts) + (source.text()[within] == '}' ? " " : ""));
    return;
  }
  std::size_t last = 0;
  for (const auto& [key, value] : table) {
    last = std::max(last, source.regionOf(value).end);
  }
  edit.insert(last, ", " + join(parts));
}

void addTable(textEdit& edit, const std::string& text, const std::string& name,
              const std::vector<pair>& pairs) {
  const std::string end = lineBreak(text);
  std::string added;
  if (text.size() > textStart(text)) {
    const bool ended = text.ends_with('\n');
    const bool blank = text.ends_with("\n\n") || text.ends_with("\n\r\n");
    added = (ended ? "" : end) + (blank ? "" : end);
  }
  edit.insert(text.size(), added + '[' + name + ']' + end + lines(pairs, {}, end));
}

// Adds keys that the table does not have yet.
void addPairs(textEdit& edit, tomlText& source, const std::string& name,
              const std::vector<pair>& pairs) {
  const toml::table* table = source.table(name);
  if (pairs.empty()) {
    return;
  }
  switch (source.shapeOf(table)) {
    case shape::NONE:
      addTable(edit, source.text(), name, pairs);
      break;
    case shape::HEADER:
      addLines(edit, source, *table, {}, pairs);
      break;
    case shape::DOTTED:
      addLines(edit, source, *table, name + '.', pairs);
      break;
    case shape::INLINE:
      addInline(edit, source, *table, pairs);
      break;
  }
}

// Adds elements after the last one of a list: on lines of their own if that one is, with a
// comma after the last if there is one.
void addAfter(textEdit& edit, const std::string& text, const region& last,
              const std::vector<std::string>& elements) {
  const auto comma = commaAfter(text, last.end);
  const std::size_t rest = skipBlanks(text, comma ? *comma + 1 : last.end);
  const std::size_t end = lineEnd(text, last.end);
  const bool alone = skipBlanks(text, lineStart(text, last.begin)) == last.begin &&
                     (rest == end || (rest < end && text[rest] == '#'));
  if (!alone) {
    edit.insert(last.end, ", " + join(elements));
    return;
  }
  if (!comma) {
    edit.insert(last.end, ",");
  }
  std::string added;
  for (std::size_t i = 0; i < elements.size(); i++) {
    added += lineBreak(text) + indentation(text, last.begin) + elements[i];
    added += comma || i + 1 < elements.size() ? "," : "";
  }
  edit.insert(end, added);
}

// Adds the first elements of a list: on lines of their own if its bracket is on one.
void addFirst(textEdit& edit, const std::string& text, const region& list,
              const std::vector<std::string>& elements) {
  const std::size_t close = list.end - 1;
  const std::size_t start = lineStart(text, close);
  if (start <= list.begin || skipBlanks(text, start) != close) {
    const bool blank = skipBlanks(text, list.begin + 1) == close;
    edit.replace(list.begin + 1, blank ? close : list.begin + 1, join(elements));
    return;
  }
  std::string added;
  for (const std::string& element : elements) {
    added += indentation(text, close) + "  " + element + ',' + lineBreak(text);
  }
  edit.insert(start, added);
}

}  // namespace

std::string use(tomlText& source, const change& what) {
  const std::string& text = source.text();
  const toml::table* use = source.table("use");
  textEdit edit(text);
  std::vector<pair> missing;
  for (const auto& [scheme, viewer] : what.use) {
    if (!viewer) {
      continue;
    }
    const toml::node* old = use != nullptr ? use->get(scheme) : nullptr;
    if (old == nullptr) {
      missing.emplace_back(keyText(scheme), quotedText(*viewer));
    } else if (old->value_or(std::string_view()) != *viewer) {
      const region where = source.regionOf(*old);
      const auto value = std::string_view(text).substr(where.begin, where.end - where.begin);
      edit.replace(where.begin, where.end, quotedAs(value, *viewer));
    }
  }
  addPairs(edit, source, "use", missing);
  return edit.result();
}

std::string trust(tomlText& source, const change& what) {
  faults ignored;
  std::vector<trustedHost> all = readSettings(source.text(), {}, ignored).trust;
  std::vector<std::string> added;
  for (const trustedHost& host : what.trust) {
    if (!contains(all, host)) {
      all.push_back(host);
      added.push_back(quotedText(host.text()));
    }
  }
  if (added.empty()) {
    return source.text();
  }
  textEdit edit(source.text());
  const toml::array* hosts = source.list("trust", "hosts");
  if (hosts == nullptr) {
    addPairs(edit, source, "trust", {{"hosts", '[' + join(added) + ']'}});
  } else if (hosts->empty()) {
    addFirst(edit, source.text(), source.regionOf(*hosts), added);
  } else {
    addAfter(edit, source.text(), source.regionOf(hosts->back()), added);
  }
  return edit.result();
}

}  // namespace hopopen
