// SPDX-License-Identifier: MIT
// Conversions between numbers, byte buffers, strings, character sets and simple
// list notations.
//
// All functions are stateless and none throws for bad input: each names the
// special value by which it reports failure.  No function looks past the length
// that it was given or past a terminating zero.  Numbers are 32 bits wide on
// every machine.  Everything here may be used before `main`, in a forked child
// and at exit.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <list>
#include <set>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

// --- Numbers ---------------------------------------------------------------

/// Reads an unsigned decimal number at `text` and moves `text` past it.
/// Returns -1, with `text` unmoved, when the first character is not a digit, when
/// the number is above 2147483647, and for a null pointer.
///
///     const char* p = "12ab";
///     decimal2Int(p)              // 12, and p points at "ab"
///     decimal2Int("2147483648")   // -1
int decimal2Int(const char*& text);

/// The same for a pointer that is not to be moved.  (A reference to a constant
/// pointer, so that a call with a variable prefers the form above.)
int decimal2Int(const char* const& text);

/// The same for a string, up to its first NUL byte.
int decimal2Int(const std::string& text);

/// Appends `value` in decimal to `out`, with a leading "-" when negative.
void int2decimal(std::string& out, int value);

/// `value` in decimal.
std::string int2decimal(int value);

/// `value` in decimal, padded with leading "0" to at least `width` characters.
/// The sign of a negative value counts as one of them.
///
///     int2decimal(-7, 3)   // -07
std::string int2decimal(int value, int width);

/// Appends `value` in base 16 with the digits "0" to "9" and "A" to "F" to `out`,
/// with a leading "-" when negative.
void int2hex(std::string& out, int value);

/// `value` in base 16, padded with leading "0" to at least `digits` characters.
/// The sign of a negative value counts as one of them.
///
///     int2hex(255, 4)   // 00FF
///     int2hex(-1)       // -1
std::string int2hex(int value, int digits = 1);

/// The value 0 to 15 of a hexadecimal digit of either case, -1 for any other
/// character.
int hexDigit(signed char c);

/// True when `text` is not null, not empty and all decimal digits.
bool allNumeric(const char* text);

// --- Byte buffers, most significant byte first -----------------------------

/// Reads 4 bytes.
std::uint32_t getU32(const unsigned char* bytes);
/// Writes 4 bytes.
void setU32(unsigned int value, unsigned char* bytes);
/// Reads 2 bytes.
std::uint16_t getU16(const unsigned char* bytes);
/// Reads 2 bytes.
std::uint16_t getU16(const char* bytes);
/// Writes 2 bytes.
void setU16(unsigned short value, unsigned char* bytes);

// --- UTF-8 (RFC 3629) and character sets -----------------------------------

/// Decodes the character at `text`, of which `remaining` bytes may be read.
///
/// - A well-formed sequence gives its code point, and `text` is moved by the
///   number of *continuation* bytes: the caller steps past the lead byte itself,
///   as every loop over a text does once per character.
/// - Anything else leaves `text` where it is.  `strict` then gives -1 (all bits
///   set) for a byte of 128 or above; otherwise the byte's own value is the
///   result.
/// - With no byte remaining the result is -1 if `strict` and else 0.
///
///     for (; p < end; p++) use(getUTF8(p, end - p, false));
std::int32_t getUTF8(const unsigned char*& text, unsigned int remaining, bool strict);

/// Writes the UTF-8 form of `character` to `text`, which has room for 4 bytes,
/// and returns the number of bytes written, 1 to 4.  No zero is appended.
/// Returns 0 for the surrogates U+D800 to U+DFFF and for every value from
/// U+10FFFF upward.  (U+10FFFF itself is refused: callers rely on that limit.)
///
///     putUTF8(0xE9, buffer)   // 2, and the bytes C3 A9
int putUTF8(unsigned long character, unsigned char* text);

/// True when `text` is well-formed UTF-8.
///
/// - A `length` of 0 or more is the number of bytes; a zero byte among them
///   gives false.
/// - A negative `length` means that the text ends at its terminating zero, or
///   after 999999 bytes.
/// - With `rejectNonPrintingASCII` the characters below 32 and "~" give false
///   too.  ("~", 126, not DEL, 127: stored names rely on that.)
bool validUTF8(const char* text, int length, bool rejectNonPrintingASCII);

/// The same for a string of any length; a zero byte in it gives false.
bool validUTF8(const std::string& text, bool rejectNonPrintingASCII);

/// The number of characters of a UTF-8 string.  A malformed byte counts as one.
unsigned int UTF8size(const std::string& text);

/// A set of characters that a text may be restricted to.
enum characterSet : int {
  CS_ASCII = 0,        ///< 7-bit characters
  CS_PRINT_ASCII = 1,  ///< printable 7-bit characters, 32 to 126
  CS_CP437 = 2,        ///< single bytes in code page 437
  CS_CP437UTF = 3,     ///< UTF-8 text of what code page 437 can show
  CS_UTF8 = 4,         ///< any UTF-8
  CS_INVALID = 5       ///< no character
};

/// The code page 437 byte for each of U+0080 to U+00FF, 255 where there is none.
extern const std::array<unsigned int, 128> charactersCP437;

/// True when every character of the UTF-8 string is in the set.
bool CSvalid(const std::string& text, characterSet set);

/// The UTF-8 form of a text in `set`.  Values that UTF-8 cannot encode are
/// dropped; bytes without a mapping keep their value as code point.
std::string convertCStoUTF8(const std::string& text, characterSet set);

/// A UTF-8 text converted to `set`.
///
/// - ASCII is copied, but `CS_PRINT_ASCII` replaces the control codes by ".".
/// - Beyond ASCII, `CS_ASCII`, `CS_PRINT_ASCII` and `CS_INVALID` give ".",
///   `CS_CP437` the byte of `charactersCP437` (that of U+00FF for every code
///   point above it), `CS_CP437UTF` the same value encoded in UTF-8, and
///   `CS_UTF8` nothing.
std::string convertUTF8toCS(const std::string& text, characterSet set);

// --- Text ------------------------------------------------------------------

/// The text in double quotes, safe to show on one line.
///
/// - Line feed, carriage return and tab become "\n", "\r" and "\t".
/// - Other bytes below 32, 127, and every byte of 128 and above become a
///   backslash and three octal digits.
/// - A double quote and a backslash are preceded by a backslash.
///
///     quote("a\n\x01")   // "a\n\001"
std::string quote(const std::string& text);

/// The text as one field of a comma-separated line (RFC 4180): unchanged, or in
/// double quotes with each double quote doubled when it holds a double quote,
/// a comma, a carriage return or a line feed.
///
/// Not for text from strangers: a field that begins with `=`, `+`, `-` or `@` stays as it is,
/// and a spreadsheet takes it for a formula; `;` and tabs stay, which some take for separators.
///
///     CSVescape("a,b")   // "a,b"
std::string CSVescape(const std::string& text);

/// Reads one comma-separated field at `ptr` and moves `ptr` past it and its
/// comma.  A field without its closing quote runs to the end of the text; after the
/// closing quote one character that is no comma is skipped.  A null or empty text gives
/// an empty field.
///
///     const char* p = "\"a,b\",c";
///     CSVunescape(p)   // a,b, and p points at "c"
std::string CSVunescape(const char*& ptr);

/// `Name` without a suffix of "-" and decimal digits, whose number is stored
/// through `N` (-1 when it is above 2147483647).  Without such a suffix, `Name`
/// itself and 0.  `N` may be null.
///
///     trimSuffix("host-12", &n)   // host, n is 12
std::string trimSuffix(const std::string& Name, int* N);

/// `prefix`, "-" and `N`, with `prefix` cut so that the whole has at most
/// `maxSize` characters.  The suffix itself is never cut.
///
///     addSuffix("abcdef", 7, 5)   // abc-7
std::string addSuffix(const std::string& prefix, unsigned int N, unsigned int maxSize);

/// Changes the ASCII letters among `length` characters at `text`, or of the whole
/// C string when `length` is negative, to upper case (`up`) or lower case.  The
/// program's locale makes no difference.
void setCase(char* text, int length, bool up);

/// The pieces of a text between separators, empty ones included: always one more
/// than there are separators.
std::vector<std::string> stringToVector(const std::string& text, char separator);
/// The same as a list.
std::list<std::string> stringToList(const std::string& text, char separator);
/// The distinct pieces in byte order.
std::set<std::string> stringToSet(const std::string& text, char separator);

/// The strings of a null-terminated array.  A null array holds none.
std::vector<std::string> vectorOfStrings(const char* const* array);

/// A copy of `text` in an array of its own, which the caller owns and frees with
/// `delete[]`.  Null gives null.
char* copyString(const char* text);
/// The same for a string; a reader of C strings sees it up to its first NUL byte.
char* copyString(const std::string& text);

/// Writes "{ ", then each string in the form of `quote` and a blank, then "}".
std::ostream& operator<<(std::ostream& out, const std::vector<std::string>& strings);

#pragma GCC visibility pop
