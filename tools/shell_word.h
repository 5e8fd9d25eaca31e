// SPDX-License-Identifier: MIT
// Text as a shell reads it.
#pragma once

#include <string>

/// `text` as one word for a shell:
///
/// - as it is, if it has only letters, digits, and characters that mean nothing to a shell;
/// - otherwise in single quotes;
/// - in $'' with escapes, if it has a character that is not printable ASCII.  Bash and zsh
///   read all three.
///
///     shellWord("a b")   // 'a b'
std::string shellWord(const std::string& text);
