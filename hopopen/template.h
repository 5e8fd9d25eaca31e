// SPDX-License-Identifier: MIT
// Templates: the texts of a definition, with placeholders for the checked pieces of a link.
//
//     {host}:{port}     two placeholders and a colon
//     {{not one}}       the text "{not one}"
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace hopopen {

enum class placeholder : std::uint8_t {
  USER,
  PASSWORD,
  HOST,       ///< without brackets
  BRACKETED,  ///< an IPv6 address in brackets
  PORT,
  TLS_PORT,  ///< of a link that asks for TLS; it has no other
  DISPLAY,   ///< the port less 5900
  LINK,      ///< a link made anew of the checked pieces
  VALUE,     ///< of the parameter that the template belongs to
  SOCKET     ///< the path of the socket that a tunnel begins at
};

/// Text and placeholders, in their order.
using textTemplate = std::vector<std::variant<std::string, placeholder>>;

/// Words that are passed together or not at all.
using element = std::vector<textTemplate>;

/// Reads a template.  Nothing when it has a lone brace or an unknown placeholder.
std::optional<textTemplate> readTemplate(std::string_view text);

/// True when the template has the placeholder.
bool uses(const textTemplate& text, placeholder what);

}  // namespace hopopen
