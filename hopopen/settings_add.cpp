// SPDX-License-Identifier: MIT
#include "settings_add.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "fault.h"
#include "settings.h"
#include "settings_host.h"
#include "settings_pairs.h"
#include "text_edit.h"
#include "text_lines.h"
#include "toml.h"
#include "trusted.h"

namespace hopopen {

namespace {

std::string join(const std::vector<std::string>& parts) {
  std::string result;
  for (const std::string& part : parts) {
    result += (result.empty() ? "" : ", ") + part;
  }
  return result;
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
  const toml::table* use = usedBy(source, what);
  textEdit edit(text);
  std::vector<keyAndValue> missing;
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
  if (what.forHost) {
    addUse(edit, source, *what.forHost, missing);
  } else {
    addPairs(edit, source, {"use", 1, "use"}, use, missing);
  }
  return edit.result();
}

std::string trust(tomlText& source, const change& what) {
  faults ignored;
  std::vector<trustedHost> all = readSettings(source.text(), {}, ignored).trust;
  std::vector<std::string> added;
  for (const trustedHost& host : what.trust) {
    if (!contains(all, host) && trustIn(source, host) == nullptr) {
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
    addPairs(edit, source, {"trust", 1, "trust"}, source.table("trust"),
             {{"hosts", '[' + join(added) + ']'}});
  } else if (hosts->empty()) {
    addFirst(edit, source.text(), source.regionOf(*hosts), added);
  } else {
    addAfter(edit, source.text(), source.regionOf(hosts->back()), added);
  }
  return edit.result();
}

}  // namespace hopopen
