// SPDX-License-Identifier: MIT
// User names and passwords, wherever in a link they come from.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace hopopen {

/// The index of the first byte that breaks the rules for a user name, or for a password, once
/// decoded; nothing when all is well.
std::optional<std::size_t> faultOfUser(const std::string& user);
std::optional<std::size_t> faultOfPassword(const std::string& password);

constexpr const char* BAD_USER =
    "The user name has a character that user names cannot have, or is "
    "longer than 64 bytes. Check the link.";
constexpr const char* BAD_PASSWORD =
    "The password has a control character, or is longer than 255 "
    "bytes. Check the link.";

}  // namespace hopopen
