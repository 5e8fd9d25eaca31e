// SPDX-License-Identifier: MIT
// What policies and profiles of browsers mean for links, as hopopen's check reads them.

#include <gtest/gtest.h>

#include <string>

#include "browser_profile.h"
#include "chromium_policy.h"
#include "firefox_policy.h"
#include "json_read.h"

namespace hopopen::browser_policy_test {
namespace {

jsonData read(const std::string& text) {
  auto value = readJson(text);
  EXPECT_TRUE(value) << text;
  return value.value_or(jsonData());
}

struct Rule {
  const char* text;
  const char* forbids;  // what it says of vnc links; empty if nothing
};

TEST(PolicyOfChromium, ForbidsASchemeByItsPatternsAlone) {
  for (const Rule& rule : {
           Rule{R"({"URLBlocklist": ["vnc:*"]})", "URLBlocklist has \"vnc:*\""},
           {R"({"URLBlocklist": ["a.example", "VNC://*"]})", "URLBlocklist has \"VNC://*\""},
           {R"({"URLBlocklist": ["*"]})", "URLBlocklist has \"*\""},
           {R"({"URLBlocklist": ["*"], "URLAllowlist": ["vnc://*"]})", ""},
           {R"({"URLBlocklist": ["vnc:*"], "URLAllowlist": ["ssh:*"]})",
            "URLBlocklist has \"vnc:*\""},
           {R"({"URLBlocklist": ["vnc"]})", ""},
           {R"({"URLBlocklist": ["vnc://host"]})", ""},
           {R"({"URLBlocklist": ["xvnc:*", "vnc:", "*.example"]})", ""},
           {R"({"URLBlocklist": "vnc:*"})", ""},
           {R"({"URLBlocklist": [1, null, {}]})", ""},
           {R"({"URLBlocklist": []})", ""},
           {"[]", ""},
           {"null", ""},
       }) {
    chromiumPolicy policy;
    policy.add("f", read(rule.text));
    const auto found = policy.forbids("vnc");
    EXPECT_EQ(rule.forbids, found ? found->rule : "") << rule.text;
  }
}

TEST(PolicyOfChromium, IsThatOfAllFilesTogether) {
  chromiumPolicy policy;
  policy.add("a", read(R"({"URLAllowlist": ["ssh:*"]})"));
  policy.add("b", read(R"({"URLBlocklist": ["*"]})"));
  EXPECT_FALSE(policy.forbids("ssh"));
  ASSERT_TRUE(policy.forbids("vnc"));
  EXPECT_EQ("b", policy.forbids("vnc")->file);
}

TEST(PolicyOfFirefox, ForbidsASchemeByFilterHandlerOrPreference) {
  for (
      const Rule& rule : {
          Rule{R"({"policies": {"WebsiteFilter": {"Block": ["<all_urls>"]}}})",
               "WebsiteFilter blocks \"<all_urls>\""},
          {R"({"policies": {"WebsiteFilter": {"Block": ["VNC://*/*"]}}})",
           "WebsiteFilter blocks \"VNC://*/*\""},
          {R"({"policies": {"WebsiteFilter": {"Block": ["<all_urls>"], "Exceptions": ["vnc://*/*"]}}})",
           ""},
          {R"({"policies": {"WebsiteFilter": {"Block": ["*://*/*", "https://vnc/*"]}}})", ""},
          {R"({"WebsiteFilter": {"Block": ["<all_urls>"]}})", ""},
          {R"({"policies": {"Handlers": {"schemes": {"vnc": {"action": "useHelperApp",
               "handlers": [{"path": "/x/other"}]}}}}})",
           "Handlers gives vnc links to /x/other"},
          {R"({"policies": {"Handlers": {"schemes": {"vnc": {"action": "useHelperApp",
               "handlers": [{"uriTemplate": "https://a.example/?%s"}]}}}}})",
           "Handlers gives vnc links to https://a.example/?%s"},
          {R"({"policies": {"Handlers": {"schemes": {"vnc": {"action": "useHelperApp", "ask": true,
               "handlers": [{"path": "/x/other"}]}}}}})",
           ""},
          {R"({"policies": {"Handlers": {"schemes": {"vnc": {"action": "useHelperApp",
               "handlers": [{"path": "/usr/bin/hopopen"}]}}}}})",
           ""},
          {R"({"policies": {"Handlers": {"schemes": {"vnc": {"action": "useHelperApp",
               "handlers": [{}]}}}}})",
           ""},
          {R"({"policies": {"Handlers": {"schemes": {"vnc": {"action": "saveToDisk"}}}}})",
           "Handlers gives vnc links to a file"},
          {R"({"policies": {"Handlers": {"schemes": {"vnc": {"action": "useSystemDefault"}}}}})",
           ""},
          {R"({"policies": {"Handlers": {"schemes": {"ssh": {"action": "saveToDisk"}}}}})", ""},
          {R"({"policies": {"Preferences": {"network.protocol-handler.external.vnc": false}}})",
           "Preferences switches network.protocol-handler.external.vnc off"},
          {R"({"policies": {"Preferences": {"network.protocol-handler.external.vnc":
               {"Value": false, "Status": "locked"}}}})",
           "Preferences switches network.protocol-handler.external.vnc off"},
          {R"({"policies": {"Preferences": {"network.protocol-handler.external.vnc": {"Value": true}}}})",
           ""},
          {R"({"policies": []})", ""},
          {"1", ""},
      }) {
    EXPECT_EQ(rule.forbids, firefoxForbids(read(rule.text), "vnc").value_or("")) << rule.text;
  }
}

TEST(ProfileOfChromium, KeepsASchemeThatItBlocksOrGivesToASite) {
  for (const Rule& rule : {
           Rule{R"({"protocol_handler": {"excluded_schemes": {"vnc": true}}})", "blocks vnc links"},
           {R"({"protocol_handler": {"excluded_schemes": {"vnc": false, "ssh": true}}})", ""},
           {R"({"protocol_handler": {"excluded_schemes": []}})", ""},
           {R"({"custom_handlers": {"registered_protocol_handlers":
               [{"protocol": "vnc", "url": "https://a.example/?%s", "default": true}]}})",
            "gives vnc links to https://a.example/?%s"},
           {R"({"custom_handlers": {"registered_protocol_handlers":
               [{"protocol": "vnc", "default": true}]}})",
            "gives vnc links to a web site"},
           {R"({"custom_handlers": {"registered_protocol_handlers":
               [{"protocol": "vnc", "url": "https://a.example/?%s", "default": false}, 1,
                {"protocol": "ssh", "url": "https://a.example/?%s", "default": true}]}})",
            ""},
           {"{}", ""},
           {"[[]]", ""},
       }) {
    EXPECT_EQ(rule.forbids, chromiumKeeps(read(rule.text), "vnc").value_or("")) << rule.text;
  }
}

TEST(ProfileOfFirefox, KeepsASchemeThatItGivesElsewhereWithoutAQuestion) {
  for (
      const Rule& rule : {
          Rule{R"({"schemes": {"vnc": {"action": 2, "handlers": [{"path": "/x/other"}]}}})",
               "gives vnc links to /x/other"},
          {R"({"schemes": {"vnc": {"action": 2, "ask": true, "handlers": [{"path": "/x/other"}]}}})",
           ""},
          {R"({"schemes": {"vnc": {"action": 2, "handlers": [{"path": "/usr/bin/hopopen"},
               {"path": "/x/other"}]}}})",
           ""},
          {R"({"schemes": {"vnc": {"action": 2, "handlers": []}}})", ""},
          {R"({"schemes": {"vnc": {"action": 2}}})", ""},
          {R"({"schemes": {"vnc": {"action": 0}}})", "gives vnc links to a file"},
          {R"({"schemes": {"vnc": {"action": 3}}})", "gives vnc links to Firefox itself"},
          {R"({"schemes": {"vnc": {"action": 4}}})", ""},
          {R"({"schemes": {"vnc": {"action": 1}}})", ""},
          {R"({"schemes": {"vnc": 2}})", ""},
          {R"({"schemes": {"mailto": {"action": 0}}})", ""},
          {"{}", ""},
      }) {
    EXPECT_EQ(rule.forbids, firefoxKeeps(read(rule.text), "vnc").value_or("")) << rule.text;
  }
}

TEST(ProfileOfFirefox, SwitchesASchemeOffByThePreferenceThatComesLast) {
  const std::string name = "user_pref(\"network.protocol-handler.external.vnc\", ";
  EXPECT_EQ("blocks vnc links", firefoxSwitchesOff(name + "false);\n", "vnc").value_or(""));
  EXPECT_EQ("blocks vnc links",
            firefoxSwitchesOff("a\r\n  " + name + " false ) ;\r\nb", "vnc").value_or(""));
  EXPECT_FALSE(firefoxSwitchesOff(name + "true);\n", "vnc"));
  EXPECT_FALSE(firefoxSwitchesOff(name + "false);\n" + name + "true);\n", "vnc"));
  EXPECT_FALSE(firefoxSwitchesOff(name + "false);\n", "vn"));
  EXPECT_FALSE(firefoxSwitchesOff("// " + name + "false);\n", "vnc"));
  EXPECT_FALSE(firefoxSwitchesOff(name + "false\n", "vnc"));
  EXPECT_FALSE(firefoxSwitchesOff("", "vnc"));
}

TEST(JsonOfOthers, MayHaveCommentsAndACommaAfterTheLastElement) {
  EXPECT_EQ(read(R"({"a": [1, 2], "b,]": "\",}"})"),
            read("{// one\n\"a\": [1, 2 , \n], /* two */ \"b,]\": \"\\\",}\",}"));
  for (const char* const text : {"", "{", "[1,,2]", "{]", "[1 2]", "nothing", "{\"a\"}"}) {
    EXPECT_FALSE(readJson(text)) << text;
  }
}

TEST(JsonOfOthers, MayBeAsDeepAndAsLongAsAFileCanBe) {
  const std::string::size_type most = 1 << 20;
  EXPECT_TRUE(readJson(std::string(most / 2, '[') + std::string(most / 2, ']')));
  EXPECT_FALSE(readJson(std::string(most, '[')));
  EXPECT_FALSE(readJson(std::string(most, ',')));
  EXPECT_FALSE(readJson('[' + std::string(most, ' ')));
  std::string names = "{\"0\": 0";
  for (int i = 1; names.size() < most; i++) {
    names += ",\"" + std::to_string(i) + "\": 0";
  }
  EXPECT_TRUE(readJson(names + '}'));
}

}  // namespace
}  // namespace hopopen::browser_policy_test
