// SPDX-License-Identifier: MIT
// An owned buffer of raw bytes with two text encodings: hexadecimal (radix 16)
// and base64 (radix 64, RFC 4648 section 4, without line breaks).
//
// A `ByteArray` is a plain value: copies are deep, and the buffer is freed with
// its owner.  Running out of memory is reported, never thrown: the array is then
// empty.  May be used before `main`, in a forked child and at exit.
#pragma once

#include <string>

#pragma GCC visibility push(default)

/// An owned buffer of bytes.
class ByteArray {
 public:
  /// An empty array.
  ByteArray() = default;

  /// `size` bytes copied from `bytes`, or left uninitialised when it is null.
  ByteArray(unsigned int size, const char* bytes);
  /// The same for unsigned bytes.
  ByteArray(unsigned int size, const unsigned char* bytes);

  /// The bytes that `text` encodes, as by `set`; empty when it does not decode.
  ByteArray(const char* text, unsigned int radix);

  /// A deep copy; empty, after a report, when there is no memory.
  ByteArray(const ByteArray& other);
  ByteArray& operator=(const ByteArray& other);
  ~ByteArray();

  /// Decodes `text` into this array and returns whether that worked.  On failure
  /// the content is unspecified but valid.  Null never decodes.  A run of more than
  /// 4294967295 bytes fails, and the array is empty then.
  ///
  /// - Radix 16 reads the leading run of hexadecimal digits, either case.  In a
  ///   run of odd length the first digit is a byte of its own.
  /// - Radix 64 reads the leading run of the base64 alphabet and every "="
  ///   directly after it.  Together they must be a multiple of four long, with
  ///   at most two "=".
  /// - Radix 0 detects: the text must be even in length and hold only base64
  ///   characters and "="; if all are hexadecimal digits it is radix 16, else 64.
  /// - What follows the run is ignored, however long it is.  Any other radix fails.
  ///
  ///     set("QUJD", 64)   // ABC
  ///     set("abc", 16)    // 0x0A 0xBC
  bool set(const char* text, unsigned int radix);

  /// Makes the size exactly `size`.  The bytes are unspecified afterwards.
  /// Returns false, with an empty array, when there is no memory.
  bool reserve(unsigned int size);

  /// The bytes in radix 16 (lower case) or 64; empty for any other radix.
  std::string format(unsigned int radix) const;

  /// The size as a big-endian prefix of `prefixBytes` bytes, then the bytes, all
  /// in lower-case hexadecimal.  Empty when `prefixBytes` is less than 1 or the
  /// size does not fit.  Above 4 the low digits of the size repeat in place of
  /// leading zeros: readers of this form rely on it.
  ///
  ///     ByteArray(3, "\1\2\3").OMBRformat(2)   // 0003010203
  std::string OMBRformat(int prefixBytes) const;

  /// The bytes as a string, NUL bytes included.
  std::string text() const;
  /// The bytes themselves, owned by the array; may be null when empty.
  unsigned char* data() { return content; }
  const unsigned char* data() const { return content; }
  /// The number of bytes.
  unsigned int size() const { return length; }
  /// True when there are no bytes.
  bool empty() const { return length == 0; }

  /// The byte at `index`.  Beyond the end: a spare byte that reads 0 and whose
  /// value is lost.
  unsigned char& operator[](unsigned int index);
  const unsigned char& operator[](unsigned int index) const;

  /// True for equal sizes and equal bytes.
  bool operator==(const ByteArray& other) const;
  /// Lexicographic order of unsigned bytes.
  bool operator<(const ByteArray& other) const;

 private:
  bool setHex(const char* text);
  bool setRadix64(const char* text);
  std::string formatHex() const;
  std::string formatRadix64() const;

  unsigned int length = 0;
  unsigned int allocated = 0;
  unsigned char* content = nullptr;  // from new[]; null only when allocated is 0
};

#pragma GCC visibility pop
