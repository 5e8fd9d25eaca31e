// SPDX-License-Identifier: MIT
// Where the values of a TOML file are in its text, and how values are written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "text_lines.h"
#include "toml.h"
#include "toml_read.h"

namespace hopopen {

/// Some bytes of the text: an element of a list, or a key with its value.
struct region {
  std::size_t begin;
  std::size_t end;
};

/// How a table is written.
enum class shape : std::uint8_t {
  NONE,    ///< not at all, or only by tables below it, such as [trust.more]
  HEADER,  ///< [use]
  DOTTED,  ///< use.vnc = "krdc"
  INLINE   ///< use = { vnc = "krdc" }
};

/// A text and what it says.
class tomlText {
 public:
  /// The text must outlive the object.
  explicit tomlText(const std::string& text)
      : m_text(text), m_parsed(readToml(text)), m_offset(textStart(text)) {}

  /// False when the text is no TOML.
  bool isGood() const { return m_parsed.succeeded(); }
  const std::string& text() const { return m_text; }
  // REQUIRES of all others: the text is TOML.

  /// The table of that name in the outermost one, or null.
  const toml::table* table(std::string_view name) const;
  /// The list of that name in such a table, or null.
  const toml::array* list(std::string_view ofTable, std::string_view name) const;
  /// The offset of a position: columns are characters there.
  std::size_t offset(const toml::source_position& where);
  /// Where a value is that this text has: no copy of it, as copies do not know it.
  region regionOf(const toml::node& value);
  /// How a table is written that this text has, or NONE for null.
  /// A header of it has so many keys.
  shape shapeOf(const toml::table* table, std::size_t keys = 1);

 private:
  const std::string& m_text;
  const toml::parse_result m_parsed;
  // Where the search for an offset has got to: what is asked for mostly comes later.
  toml::source_position m_position = {1, 1};
  std::size_t m_offset;
};

/// The comma after an element that ends at `at`, if there is one.
std::optional<std::size_t> commaAfter(const std::string& text, std::size_t at);

/// The text as a value in double quotes.
std::string quotedText(std::string_view text);
/// The same in single quotes if the old value is in them and the text may be, too.
std::string quotedAs(std::string_view old, std::string_view text);
/// The text as a key, in quotes only if it must be.
std::string keyText(std::string_view key);

}  // namespace hopopen
