// SPDX-License-Identifier: MIT
// A piece of a link: a part of its text that knows where it is, so that a
// fault can be pointed at, also after percent-decoding.
#pragma once

#include <cstddef>
#include <string_view>

namespace hopopen {

/// Some bytes of a text.
struct piece {
  std::string_view text;  ///< of the link, which must outlive the piece
  std::size_t start;      ///< where it begins in the link

  std::size_t end() const { return start + text.size(); }
  /// The bytes from `from` on, at most `count`.
  /// REQUIRES: `from` is at most the size.
  piece part(std::size_t from, std::size_t count = std::string_view::npos) const {
    return {text.substr(from, count), start + from};
  }
  /// The part in front of the first of `ends`, or all.  Takes it and that one character
  /// away from this piece.
  piece takeUntil(std::string_view ends);
};

/// Where in the piece the byte `index` of its decoded form comes from, as an offset in the
/// link; the end of the piece for the end of the decoded form.
std::size_t origin(const piece& encoded, std::size_t index);

}  // namespace hopopen
