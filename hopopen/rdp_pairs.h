// SPDX-License-Identifier: MIT
// The older form of rdp links, which is made of typed pairs:
//
//     rdp://full%20address=s:host.example:3389&audiomode=i:2
//
// Here is what its text says before it is read: whether it is of that form, and where its
// pairs and their parts are.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "piece.h"

namespace hopopen {

/// True for a link of the older form: after "rdp://", a "=" comes before anything that an
/// authority may have.
bool isMadeOfPairs(std::string_view link);

/// All the pairs of such a link: what is between "rdp://" and the fragment, without one "/" at
/// the end.
piece pairsOf(std::string_view link);

/// A pair as it is written.
struct writtenPair {
  piece name;
  piece value;  ///< with its type
};

/// Divides a pair, `name=t:value` or `name:t:value`.  Nothing when it is no pair.
std::optional<writtenPair> divide(piece pair);

/// The decoded name of a pair as it is compared: "_" and "+" are blanks.
std::string pairKey(std::string_view name);

/// Where a host in brackets ends, which begins at `open`: at the end of its pair.  Nothing when
/// no host may begin there.
std::optional<std::size_t> addressEnd(std::string_view link, std::size_t open);

}  // namespace hopopen
