#include "text_edit.h"

#include <algorithm>
#include <string_view>

namespace hopopen {

namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

}  // namespace

std::size_t textStart(const std::string& text) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  return text.starts_with(mark) ? mark.size() : 0;
}

std::size_t lineStart(const std::string& text, std::size_t at) {
  const std::size_t before = at == 0 ? std::string::npos : text.rfind('\n', at - 1);
  return before == std::string::npos ? textStart(text) : before + 1;
}

std::size_t lineEnd(const std::string& text, std::size_t at) {
  const std::size_t end = std::min(text.find('\n', at), text.size());
  return end < text.size() && end > at && text[end - 1] == '\r' ? end - 1 : end;
}

std::size_t nextLine(const std::string& text, std::size_t at) {
  const std::size_t end = text.find('\n', at);
  return end == std::string::npos ? text.size() : end + 1;
}

std::size_t skipBlanks(const std::string& text, std::size_t at) {
  while (at < text.size() && isBlank(text[at])) {
    at++;
  }
  return at;
}

std::string indentation(const std::string& text, std::size_t at) {
  const std::size_t start = lineStart(text, at);
  return text.substr(start, skipBlanks(text, start) - start);
}

std::string lineBreak(const std::string& text) {
  const std::size_t end = text.find('\n');
  return end != std::string::npos && end > 0 && text[end - 1] == '\r' ? "\r\n" : "\n";
}

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
  std::vector<splice> all = m_splices;
  for (const splice& removal : removals()) {
    all.push_back(tidied(removal));
  }
  std::stable_sort(all.begin(), all.end(),
                   [](const splice& a, const splice& b) { return a.begin < b.begin; });
  std::string result;
  std::size_t done = 0;
  for (const splice& change : all) {
    result.append(m_text, done, change.begin - done);
    result += change.by;
    done = change.end;
  }
  return result.append(m_text, done);
}

}  // namespace hopopen
