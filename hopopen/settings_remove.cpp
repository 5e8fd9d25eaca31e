// SPDX-License-Identifier: MIT
#include "settings_remove.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "settings_host.h"
#include "text_edit.h"
#include "text_lines.h"
#include "toml.h"
#include "trusted.h"

namespace hopopen {

namespace {

// Removes elements of a list or of an inline table, with their commas.  An inline table
// must not have a comma after its last element, and a list looks better without it.
void removeElements(textEdit& edit, const std::string& text, const std::vector<region>& elements,
                    const std::vector<bool>& gone) {
  std::optional<std::size_t> kept;  // the comma of the last element that stays
  std::optional<std::size_t> comma;
  for (std::size_t i = 0; i < elements.size(); i++) {
    comma = commaAfter(text, elements[i].end);
    if (!gone[i]) {
      kept = comma;
      continue;
    }
    edit.remove(elements[i].begin, elements[i].end);
    if (comma) {
      edit.remove(*comma, *comma + 1);
    }
  }
  if (gone.back() && !comma && kept) {
    edit.remove(*kept, *kept + 1);
  }
}

// Removes keys and values that begin their lines, where dotted keys begin before the region.
void removeLines(textEdit& edit, const std::string& text, const std::vector<region>& pairs,
                 const std::vector<bool>& gone) {
  for (std::size_t i = 0; i < pairs.size(); i++) {
    if (gone[i]) {
      edit.remove(skipBlanks(text, lineStart(text, pairs[i].begin)), pairs[i].end);
    }
  }
}

bool isForgotten(const change& what, std::string_view scheme) {
  const auto wanted = what.use.find(std::string(scheme));
  return wanted != what.use.end() && !wanted->second;
}

}  // namespace

std::string forget(tomlText& source, const change& what) {
  const std::string& text = source.text();
  const toml::table* use = usedBy(source, what);
  if (use == nullptr || use->empty()) {
    return text;
  }
  std::map<std::size_t, std::pair<region, bool>> pairs;  // in the order of the text
  for (const auto& [key, value] : *use) {
    const std::size_t begin = source.offset(key.source().begin);
    pairs[begin] = {{begin, source.regionOf(value).end}, isForgotten(what, key.str())};
  }
  textEdit edit(text);
  std::vector<region> regions;
  std::vector<bool> gone;
  for (const auto& [begin, element] : pairs) {
    regions.push_back(element.first);
    gone.push_back(element.second);
  }
  if (source.shapeOf(use) == shape::INLINE) {
    removeElements(edit, text, regions, gone);
  } else {
    removeLines(edit, text, regions, gone);
  }
  return edit.result();
}

std::string distrust(tomlText& source, const change& what) {
  const toml::array* hosts = source.list("trust", "hosts");
  if (hosts == nullptr || hosts->empty()) {
    return source.text();
  }
  std::vector<region> regions;
  std::vector<bool> gone;
  for (const toml::node& element : *hosts) {
    const auto host = readTrusted(element.value_or(std::string_view()));
    regions.push_back(source.regionOf(element));
    gone.push_back(host && contains(what.distrust, *host));
  }
  textEdit edit(source.text());
  removeElements(edit, source.text(), regions, gone);
  return edit.result();
}

}  // namespace hopopen
