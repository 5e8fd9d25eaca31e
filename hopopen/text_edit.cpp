// SPDX-License-Identifier: MIT
#include "text_edit.h"

#include <algorithm>
#include <map>

#include "characters.h"
#include "text_lines.h"

namespace hopopen {

void textEdit::replace(std::size_t begin, std::size_t end, const std::string& by) {
  m_splices.push_back({begin, end, by});
}

void textEdit::remove(std::size_t begin, std::size_t end) {
  m_removals.push_back({begin, end, {}});
}

// The removals in their order, with those joined that have only blanks between them.
std::vector<textEdit::splice> textEdit::removals() const {
  std::vector<splice> sorted = m_removals;
  std::sort(sorted.begin(), sorted.end(),
            [](const splice& a, const splice& b) { return a.begin < b.begin; });
  std::vector<splice> result;
  for (const splice& next : sorted) {
    if (!result.empty() && skipBlanks(m_text, result.back().end) >= next.begin) {
      result.back().end = next.end;
    } else {
      result.push_back(next);
    }
  }
  return result;
}

textEdit::splice textEdit::tidied(splice removal) const {
  const std::size_t start = lineStart(m_text, removal.begin);
  const bool first = skipBlanks(m_text, start) >= removal.begin;
  const std::size_t rest = skipBlanks(m_text, removal.end);
  if (rest == lineEnd(m_text, rest)) {
    if (first) {
      return {start, nextLine(m_text, rest), {}};
    }
    while (isBlank(m_text[removal.begin - 1])) {
      removal.begin--;
    }
    return removal;
  }
  const char before = first ? ' ' : m_text[removal.begin - 1];
  if (isBlank(before) || before == '[' || before == '{') {
    removal.end = rest;
  }
  return removal;
}

std::string textEdit::result() const {
  std::multimap<std::size_t, splice> all;  // by their beginnings, and each as they came
  for (const splice& change : m_splices) {
    all.emplace(change.begin, change);
  }
  for (const splice& removal : removals()) {
    const splice change = tidied(removal);
    all.emplace(change.begin, change);
  }
  std::string result;
  std::size_t done = 0;
  for (const auto& [begin, change] : all) {
    result.append(m_text, done, begin - done);
    result += change.by;
    done = change.end;
  }
  return result.append(m_text, done);
}

}  // namespace hopopen
