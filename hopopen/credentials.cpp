// SPDX-License-Identifier: MIT
#include "credentials.h"

#include "characters.h"

namespace hopopen {

namespace {

constexpr std::size_t LONGEST_USER = 64;
constexpr std::size_t LONGEST_PASSWORD = 255;

}  // namespace

std::optional<std::size_t> faultOfUser(const std::string& user) {
  for (std::size_t i = 0; i < user.size(); i++) {
    const char c = user[i];
    if ((!isWord(c) && (i == 0 || (c != '.' && c != '@' && c != '\\' && c != '-'))) ||
        i == LONGEST_USER) {
      return i;
    }
  }
  return {};
}

std::optional<std::size_t> faultOfPassword(const std::string& password) {
  for (std::size_t i = 0; i < password.size(); i++) {
    if (isControl(password[i]) || i == LONGEST_PASSWORD) {
      return i;
    }
  }
  return {};
}

}  // namespace hopopen
