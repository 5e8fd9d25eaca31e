// SPDX-License-Identifier: MIT
// Percent-encoding (RFC 3986, section 2.1).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace hopopen {

/// The bytes that percent-encoding means, decoded once.  A "%" that two hexadecimal
/// digits do not follow stays as it is.
std::string decode(std::string_view text);

/// How many bytes of the text encode its first decoded one: 3 or 1.
std::size_t encodedWidth(std::string_view text);

/// The text with each byte that is not unreserved as "%" and two digits.
std::string percentEncoded(std::string_view text);

}  // namespace hopopen
