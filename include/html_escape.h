// SPDX-License-Identifier: MIT
// Escaping of texts for other syntaxes, and the reverse.
//
// Each function takes its input as a pointer and a number of bytes, or as a
// string of any length, and returns a new string.  Escaping never fails.  NUL bytes are bytes
// like any other.  Hexadecimal digits are written in upper case and read in
// either.  Everything here is stateless and may be used before `main`, in a
// forked child and at exit.
#pragma once

#include <string>

#include "assoclist.h"

#pragma GCC visibility push(default)

/// Percent-encoding (RFC 3986 section 2.1).
///
/// - Control bytes (below 32 and 127), bytes of 128 and above, blanks, double quotes, and
///   each of ``# $ % & ' + , / : ; < = > ? @ [ \ ] ^ { | }`` become "%" and exactly
///   two hexadecimal digits.
/// - Every other byte is copied.
///
///     URIescape("a b")   // a%20b
std::string URIescape(const char* text, unsigned int length);
std::string URIescape(const std::string& text);

/// Percent-decoding.  "+" is an ordinary character.
///
/// - "%" and two hexadecimal digits become one byte.
/// - A "%" before anything else but the end is copied.
/// - A text that ends in "%", or in "%" and one digit, loses that ending.
///
///     URIunEscape("%41%4G%4")   // A%4G
std::string URIunEscape(const char* text, unsigned int length);
std::string URIunEscape(const std::string& text);

/// Percent-encoding for cookie values.
///
/// - Control bytes become "%" and their hexadecimal digits, without padding: a
///   tab is %9.
/// - Blank and all ASCII punctuation become "%" and two digits.
/// - Letters, digits and bytes of 128 and above are copied.
///
///     cookieEscape("a\tb")   // a%9b
std::string cookieEscape(const char* text, unsigned int length);
std::string cookieEscape(const std::string& text);

/// The same as `URIunEscape`.
std::string cookieUnEscape(const char* text, unsigned int length);
std::string cookieUnEscape(const std::string& text);

/// Escaping for directory names (RFC 4514): a backslash before each of
/// ``" + , ; \ < >``, and a backslash and two hexadecimal digits for control bytes
/// and bytes of 128 and above.
///
/// Not for text from strangers: blanks at either end, `#` at the beginning and `=` stay, and
/// `*`, `(` and `)`, which a search filter reads, stay too.
///
///     LDAPescape("a,b\n")   // a\,b\0A
std::string LDAPescape(const char* text, unsigned int length);
std::string LDAPescape(const std::string& text);

/// The reverse of `LDAPescape`.
///
/// - A backslash and two hexadecimal digits become one byte.
/// - A backslash before anything else is dropped.
/// - A backslash and a digit before something that is no digit are both dropped:
///   readers rely on it.
/// - A text that ends inside an escape loses it.
///
///     LDAPunEscape("a\\,b\\0A")   // a,b and a line feed
std::string LDAPunEscape(const char* text, unsigned int length);
std::string LDAPunEscape(const std::string& text);

/// Percent-encoding of line feeds and ASCII punctuation; everything else, blanks
/// and other control bytes included, is copied.
///
///     QMXescape("a b.\n")   // a b%2E%0A
std::string QMXescape(const char* text, unsigned int length);
std::string QMXescape(const std::string& text);

/// Escaping for a single-quoted script string.
///
/// - A character below 32 or above 126, taken from its UTF-8 sequence, becomes
///   "\u" and its code point in hexadecimal: at least three digits, four from
///   U+0010.  (Readers rely on `\u00A` for a line feed.)
/// - A single quote is preceded by a backslash; every other byte is copied.
///
/// Not for text from strangers: a backslash stays as it is, so a text that ends in one takes
/// the closing quote away, and double quotes and `</script>` stay, too.
///
///     javaScriptEscape("it's\n")   // it\'s\u00A
std::string javaScriptEscape(const char* text, unsigned int length);
std::string javaScriptEscape(const std::string& text);

/// Escaping for HTML text.
///
/// - A line feed becomes "<br>".
/// - "<", ">", "&" and the double quote become their named references.
/// - A character below 32 or above 126, taken from its UTF-8 sequence, becomes
///   "&#", its code point in decimal, and ";".
/// - With `nbsp`, two blanks become a blank and "&nbsp;".
/// - Every other byte is copied.
///
/// Not for text from strangers: a single quote stays, which ends an attribute in such quotes,
/// and so do `javascript:` in a link and all that a script or a style sheet reads.
///
///     HTMLescape("a  <", true)   // a &nbsp;&lt;
std::string HTMLescape(const char* text, unsigned int length, bool nbsp);
std::string HTMLescape(const std::string& text, bool nbsp);

/// Reads one pair of a form-encoded text (application/x-www-form-urlencoded) at
/// `cursor` and moves `cursor` past it; null once the text is used up.
///
/// - "&" and the end of the text end a pair; without "=" its value is empty.
/// - "+" stands for a blank, "%" and two hexadecimal digits for a byte.
/// - In a name, a "%" that is no escape is dropped together with a first digit.
/// - In a value, a "%" that is no escape and a second "=" fail.
///
/// Returns false for a null cursor and on failure; `name` and `value` are then
/// unchanged.  A failed pair ends the reading, wherever the cursor is left.
///
///     const char* p = "a=1&b"; getEscapedPair(p, n, v)   // a, 1, and p at "b"
bool getEscapedPair(const char*& cursor, std::string& name, std::string& value);

/// Adds the pairs of a form-encoded text to `list`.  The values of a repeated
/// name are joined by the byte 30, the ASCII record separator.  Returns false at
/// the first malformed pair; the pairs before it stay.  A null or empty text
/// holds none.
///
///     parseArguments(list, "a&b=2")   // { a= b=2 }
bool parseArguments(assocList& list, const char* text);

#pragma GCC visibility pop
