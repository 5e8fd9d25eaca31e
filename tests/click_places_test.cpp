// SPDX-License-Identifier: MIT
// The places that hopopen's check looks at.

#include "click_places.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace hopopen::click_places_test {
namespace {

using Texts = std::vector<std::string>;

std::map<std::string, std::string> variables;

char* variable(const char* name) {
  const auto found = variables.find(name);
  return found == variables.end() ? nullptr : found->second.data();
}

clickPlaces placesWith(const std::map<std::string, std::string>& values) {
  variables = values;
  return clickPlaces(variable);
}

// The folders, those of the user with "*" before them.
Texts texts(const std::vector<placeOf>& places) {
  Texts result;
  for (const placeOf& one : places) {
    result.push_back((one.ofUser ? "*" : "") + one.folder);
  }
  return result;
}

TEST(ClickPlaces, AreTheUsualOnesBelowHome) {
  const clickPlaces places = placesWith({{"HOME", "/h"}});
  EXPECT_EQ((Texts{"*/h/.config", "/etc/xdg", "*/h/.local/share/applications",
                   "/usr/local/share/applications", "/usr/share/applications"}),
            texts(places.lists));
  EXPECT_EQ((Texts{"*/h/.local/share/applications", "/usr/local/share/applications",
                   "/usr/share/applications"}),
            texts(places.entries));
  EXPECT_EQ(
      (Texts{"/h/.config/chromium", "/h/.config/google-chrome", "/h/snap/chromium/common/chromium",
             "/h/.var/app/org.chromium.Chromium/config/chromium",
             "/h/.var/app/com.google.Chrome/config/google-chrome"}),
      places.chromiumProfiles);
  EXPECT_EQ((Texts{"/h/.mozilla/firefox", "/h/snap/firefox/common/.mozilla/firefox",
                   "/h/.var/app/org.mozilla.firefox/.mozilla/firefox",
                   "/h/.var/app/org.mozilla.firefox/config/mozilla/firefox",
                   "/h/.config/mozilla/firefox"}),
            places.firefoxProfiles);
  EXPECT_EQ(Texts{}, places.desktops);
}

TEST(ClickPlaces, AreThoseOfTheVariables) {
  const clickPlaces places = placesWith({{"HOME", "/h"},
                                         {"XDG_CONFIG_HOME", "/c"},
                                         {"XDG_DATA_HOME", "/d"},
                                         {"XDG_CONFIG_DIRS", "/e:relative:/f"},
                                         {"XDG_DATA_DIRS", "/s::/t"},
                                         {"XDG_CURRENT_DESKTOP", "ubuntu:GNOME::../x"}});
  EXPECT_EQ((Texts{"*/c", "/e", "/f", "*/d/applications", "/s/applications", "/t/applications"}),
            texts(places.lists));
  EXPECT_EQ((Texts{"ubuntu", "gnome"}), places.desktops);
}

TEST(ClickPlaces, HaveNoneOfTheUserWithoutHome) {
  const clickPlaces places = placesWith({{"HOME", "relative"}, {"XDG_CONFIG_HOME", "c"}});
  EXPECT_EQ((Texts{"/etc/xdg", "/usr/local/share/applications", "/usr/share/applications"}),
            texts(places.lists));
  EXPECT_EQ(Texts{}, places.chromiumProfiles);
  EXPECT_EQ(Texts{}, places.firefoxProfiles);
  EXPECT_TRUE(std::all_of(places.sandboxed.begin(), places.sandboxed.end(),
                          [](const auto& one) { return one.folder.starts_with('/'); }));
}

TEST(ClickPlaces, AreInTheManual) {
  std::ifstream file(SOURCES "/man/hopopen.1");
  const std::string manual{std::istreambuf_iterator<char>(file), {}};
  const clickPlaces places = placesWith({{"HOME", "/~"}});
  Texts all = places.chromiumPolicies;
  for (const Texts& more :
       {places.firefoxPolicies, places.chromiumProfiles, places.firefoxProfiles}) {
    all.insert(all.end(), more.begin(), more.end());
  }
  for (const auto& browser : places.sandboxed) {
    all.push_back(browser.folder);
  }
  EXPECT_EQ(29U, all.size());
  for (std::string place : all) {
    if (place.starts_with("/~/.local/share/flatpak/app/")) {
      place = "data/flatpak/app";
    }
    const std::string item = ".It Pa " + place.substr(place.starts_with("/~") ? 1 : 0);
    EXPECT_TRUE(manual.find(item + "\n") != std::string::npos ||
                manual.find(item + "/*") != std::string::npos)
        << item;
  }
}

}  // namespace
}  // namespace hopopen::click_places_test
