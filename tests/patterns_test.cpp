// SPDX-License-Identifier: MIT
// No text of a link becomes a pattern, neither in hoplaunch nor in hopopen.  They compile
// only patterns of the program and of the definition of a viewer.
#include <gtest/gtest.h>
#include <regex.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "assoclist.h"
#include "decide.h"
#include "definition_reader.h"
#include "plan.h"
#include "system_calls.h"
#include "threading.h"

namespace patterns_test {

namespace {

std::multiset<std::string> patterns;  // that were compiled

const replacedCalls here(__FILE__, [] {
  systemCalls::regcomp.replace([](regex_t* expression, const char* pattern, int flags) {
    patterns.insert(pattern);
    return systemCalls::regcomp.real(expression, pattern, flags);
  });
});

using Patterns = std::multiset<std::string>;

// Texts that would cost much, or match too much, as a pattern.
std::vector<std::string> hostileTexts() {
  return {".*",
          "(",
          ")(",
          "[a-z",
          "a{1,2}{3,4}",
          "((a{1,255}){1,255}){1,255}",
          "a++++",
          "()\\1++",
          "*",
          "^a$|^b$",
          std::string(16000, '('),
          std::string(4000, '*'),
          std::string(4000, 'a') + "*"};
}

std::string encoded(const std::string& text) {
  std::string result;
  for (const char c : text) {
    static constexpr char DIGITS[] = "0123456789ABCDEF";
    result += '%';
    result += DIGITS[static_cast<unsigned char>(c) >> 4];
    result += DIGITS[static_cast<unsigned char>(c) & 15];
  }
  return result;
}

// The text in each place of a link, as it is and percent-encoded.
std::vector<std::string> linksWith(const std::string& hostile) {
  std::vector<std::string> result;
  for (const std::string& text : {hostile, encoded(hostile)}) {
    result.push_back(text);
    result.push_back(text + "://host/");
    result.push_back("vnc://" + text + "/");
    result.push_back("vnc://" + text + "@host/");
    result.push_back("vnc://user:" + text + "@host:5900/");
    result.push_back("vnc://host:" + text + "/");
    result.push_back("vnc://[" + text + "]/");
    result.push_back("vnc://host/" + text);
    result.push_back("vnc://host/1," + text);
    result.push_back("vnc://host/?" + text + "=1");
    result.push_back("vnc://host/?QualityLevel=" + text);
    result.push_back("vnc://host/?ConnectionName=" + text + "&QualityLevel=5");
    result.push_back("ssh://host;fingerprint=" + text + "@host/");
    result.push_back("vnc://host/#" + text);
  }
  return result;
}

TEST(Patterns, OfHoplaunchAreTheSameForEveryLink) {
  ThreadData::instance(false);
  const Patterns expected = {"^[a-z][a-z0-9+.\\-]*://",
                             "^([a-z0-9]+([-.][a-z0-9]+)*)|(\\[[0-9a-f:.]+\\])(:[0-9]+)?$"};
  for (const std::string& hostile : hostileTexts()) {
    for (const std::string& link : linksWith(hostile)) {
      patterns.clear();
      const launchPlan plan(link, assocList());
      EXPECT_EQ(patterns, expected) << link.substr(0, 100);
    }
  }
}

// The values of options, which a registration gives, do not become patterns, either.
TEST(Patterns, OfHoplaunchAreTheSameForEveryOption) {
  ThreadData::instance(false);
  for (const std::string& hostile : hostileTexts()) {
    for (const char* option : {"program", "style", "portArg"}) {
      assocList options;
      options[option] = hostile;
      patterns.clear();
      const launchPlan plan("vnc://host:5900/?a=b", options);
      EXPECT_EQ(patterns.size(), 2U);
      EXPECT_EQ(patterns.count(hostile), 0U) << option;
    }
  }
}

TEST(Patterns, OfHopopenAreThoseOfTheDefinition) {
  hopopen::faults found;
  const auto viewer = hopopen::readDefinition("v", R"(name = "V"
schemes = ["vnc", "ssh"]
programs = ["viewer"]
arguments = ["{bracketed}", ["{port}"], ["{user}"]]
[environment]
PASSWORD = "{password}"
[parameters.QualityLevel]
allow = "[0-9]"
arguments = [["{value}"]]
[parameters.ConnectionName]
allow = "[a-z .]+"
arguments = [["{value}"]]
)",
                                              "v.toml", found);
  ASSERT_TRUE(viewer.has_value()) << found.size();
  hopopen::definitions known;
  known.viewers.push_back(*viewer);
  const hopopen::preferences wishes;
  const hopopen::candidates among{known, wishes, [](const hopopen::definition&) {
                                    return std::optional(hopopen::installed{});
                                  }};
  const std::set<std::string> allowed = {"[0-9]", "[a-z .]+"};
  std::set<std::string> seen;
  for (const std::string& hostile : hostileTexts()) {
    for (const std::string& link : linksWith(hostile)) {
      patterns.clear();
      hopopen::decide(link, "v", among);
      for (const std::string& pattern : patterns) {
        EXPECT_EQ(allowed.count(pattern), 1U) << pattern.substr(0, 100);
        seen.insert(pattern);
      }
    }
  }
  EXPECT_EQ(seen, allowed) << "the links came as far as the parameters";
}

}  // namespace

}  // namespace patterns_test
