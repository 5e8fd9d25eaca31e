// SPDX-License-Identifier: MIT
// Changing a few places of a text that people wrote, such that every other byte stays as it
// is: line ends, comments, blank lines and all.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace hopopen {

/// Changes of one text, noted first and then made all at once, so that every offset is one
/// of the old text.
class textEdit {
 public:
  /// The text must outlive the object.
  explicit textEdit(const std::string& text) : m_text(text) {}

  /// What is inserted twice at one place has the order of the calls.
  void insert(std::size_t at, const std::string& what) { replace(at, at, what); }
  void replace(std::size_t begin, std::size_t end, const std::string& by);
  /// Removes some bytes and the space around them that nobody needs any more: a line that
  /// has nothing else goes altogether; a comment on it stays.
  /// REQUIRES: what is inserted or replaced is on other lines.
  void remove(std::size_t begin, std::size_t end);

  std::string result() const;

 private:
  struct splice {
    std::size_t begin;
    std::size_t end;
    std::string by;
  };
  std::vector<splice> removals() const;
  splice tidied(splice removal) const;

  const std::string& m_text;
  std::vector<splice> m_splices;
  std::vector<splice> m_removals;
};

}  // namespace hopopen
