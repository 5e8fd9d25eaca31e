// SPDX-License-Identifier: MIT
// Templates of definitions.

#include "template.h"

#include <gtest/gtest.h>

#include <string>

namespace hopopen::template_test {
namespace {

// The template written out again: placeholders as their numbers in "<>".
std::string read(const std::string& text) {
  const auto parsed = readTemplate(text);
  if (!parsed) {
    return "fault";
  }
  std::string result;
  for (const auto& part : *parsed) {
    result += std::holds_alternative<std::string>(part)
                  ? '[' + std::get<std::string>(part) + ']'
                  : '<' + std::to_string(static_cast<int>(std::get<placeholder>(part))) + '>';
  }
  return result;
}

TEST(Template, HasTextAndPlaceholders) {
  EXPECT_EQ("", read(""));
  EXPECT_EQ("[-x]", read("-x"));
  EXPECT_EQ("<3>[::]<4>", read("{bracketed}::{port}"));
  EXPECT_EQ("[a]<2>", read("a{host}"));
}

TEST(Template, KnowsTenPlaceholders) {
  EXPECT_EQ("<0><1><2><3><4><5><6><7><8><9>",
            read("{user}{password}{host}{bracketed}{port}{tlsport}{display}{link}{value}{socket}"));
}

TEST(Template, HasBracesThatAreDoubled) {
  EXPECT_EQ("[{host}]", read("{{host}}"));
  EXPECT_EQ("[{]<2>[}]", read("{{{host}}}"));
  EXPECT_EQ("[{}]", read("{{}}"));
}

TEST(Template, RefusesBracesThatStandAloneAndUnknownNames) {
  for (const char* const bad : {"{", "}", "a{", "a}b", "{host", "host}", "{}", "{Host}", "{ host}",
                                "{unknown}", "{host}}", "{{host}", "{{{", "}}}", "{ho{st}"}) {
    EXPECT_EQ("fault", read(bad)) << bad;
  }
}

TEST(Template, TellsWhatItUses) {
  const auto text = readTemplate("{user}@{{host}}");
  ASSERT_TRUE(text);
  EXPECT_TRUE(uses(*text, placeholder::USER));
  EXPECT_FALSE(uses(*text, placeholder::HOST));
}

}  // namespace
}  // namespace hopopen::template_test
