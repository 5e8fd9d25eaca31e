// SPDX-License-Identifier: MIT
// The lines of a text that people wrote: where they begin, and how they end.
#pragma once

#include <cstddef>
#include <string>

namespace hopopen {

/// Where the text begins: after a byte order mark, if there is one.
std::size_t textStart(const std::string& text);
/// Where the line of a byte begins.
std::size_t lineStart(const std::string& text, std::size_t at);
/// Where the line of a byte ends: at its "\n" or "\r\n", or at the end of the text.
std::size_t lineEnd(const std::string& text, std::size_t at);
/// Where the next line begins, or the end of the text.
std::size_t nextLine(const std::string& text, std::size_t at);
/// The first place from `at` on that has neither a space nor a tab.
std::size_t skipBlanks(const std::string& text, std::size_t at);
/// The spaces and tabs at the beginning of the line of a byte.
std::string indentation(const std::string& text, std::size_t at);
/// What ends the lines of the text: "\r\n" if its first line ends so, otherwise "\n".
std::string lineBreak(const std::string& text);

}  // namespace hopopen
