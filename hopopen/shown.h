// SPDX-License-Identifier: MIT
// How a link is shown to people: in double quotes, with nothing in it that a terminal, a
// log or a markup language would obey, and without its password.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace hopopen {

/// The link with "***" in place of every password, whatever else is wrong with it:
///
/// - what is between the first colon after the scheme's (and "//") and the last "@" before
///   the next "/", "?" or "#";
/// - the values of the parameters `VncPassword`, `SshPassword` and `password`, the names
///   percent-decoded and in any letter case;
/// - in an rdp link that is made of typed pairs, in place of the first, the values of all pairs
///   whose name contains `password`.
///
///     masked("vnc://u:secret@h?password=secret")   // vnc://u:***@h?password=***
std::string masked(std::string_view link);

/// True when the parameter of that name, decoded, holds a password.
bool isSecret(std::string_view name);

/// How much of a text is shown where people read it in passing.
constexpr std::size_t SHORT = 120;

/// The text in double quotes: at most `most` bytes of it, with "..." after them if there are
/// more; each byte that is not printable ASCII, and each double quote and backslash, as \xHH.
///
///     quoted("a\n\"b", SHORT)   // "a\x0A\x22b"
std::string quoted(std::string_view text, std::size_t most);

/// A link, or a word that may be one, as it is shown in passing: masked and quoted.
std::string shownWord(std::string_view word);

/// A text that is not a link's, such as a path or a message of a parser, with the bytes
/// that are not printable ASCII as \xHH.
std::string printable(std::string_view text);

/// The line with the characters that markup begins with, "<", ">" and "&", as \xHH.
std::string withoutMarkup(std::string_view line);

}  // namespace hopopen
