// SPDX-License-Identifier: MIT
#include "meaning.h"

#include <array>
#include <initializer_list>

#include "characters.h"

namespace hopopen {

namespace {

struct known {
  std::string_view name;
  meaning what;
};

constexpr std::array<known, 15> KNOWN = {{
    {"ViewOnly", meaning::VIEW_ONLY},
    {"SecurityType", meaning::PROTECTION},
    {"ChannelType", meaning::PROTECTION},
    {"SshHost", meaning::GATEWAY},
    {"SshPort", meaning::GATEWAY},
    {"SshUsername", meaning::GATEWAY},
    {"IdHash", meaning::PROTECTION},
    {"IdHashAlgorithm", meaning::PROTECTION},
    {"fingerprint", meaning::PROTECTION},
    {"Shared", meaning::WISH},
    {"ColorLevel", meaning::WISH},
    {"QualityLevel", meaning::WISH},
    {"CompressLevel", meaning::WISH},
    {"AutoSelect", meaning::WISH},
    {"ConnectionName", meaning::WISH},
}};

bool isOneOf(std::string_view value, std::initializer_list<std::string_view> words) {
  for (const std::string_view word : words) {
    if (sameLetters(value, word)) {
      return true;
    }
  }
  return false;
}

}  // namespace

meaning meaningOf(std::string_view name) {
  for (const known& one : KNOWN) {
    if (sameLetters(name, one.name)) {
      return one.what;
    }
  }
  return meaning::NONE;
}

answer readAnswer(std::string_view value) {
  if (isOneOf(value, {"", "true", "1", "yes"})) {
    return answer::YES;
  }
  return isOneOf(value, {"false", "0", "no"}) ? answer::NO : answer::UNCLEAR;
}

bool asksForNothing(std::string_view name, std::string_view value) {
  return value.empty() || (value == "1" && isOneOf(name, {"ChannelType", "SecurityType"}));
}

bool asksForTunnel(std::string_view name, std::string_view value) {
  return sameLetters(name, "ChannelType") && (value == "23" || value == "24");
}

}  // namespace hopopen
