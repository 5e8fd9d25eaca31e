// SPDX-License-Identifier: MIT
#include "click_places.h"

#include "characters.h"
#include "conversion.h"

namespace hopopen {

namespace {

void addEntries(std::vector<placeOf>& to, const std::string& data, bool ofUser) {
  if (!data.empty()) {
    to.push_back({data + "/applications", ofUser, true});
  }
}

void addAll(std::vector<std::string>& to, const std::string& folder,
            const std::vector<const char*>& below) {
  if (!folder.empty()) {
    for (const char* const path : below) {
      to.push_back(folder + path);
    }
  }
}

std::vector<sandboxedBrowser> sandboxedBrowsers(const std::string& data) {
  std::vector<sandboxedBrowser> result;
  for (const char* const folder : {"/snap", "/var/lib/snapd/snap"}) {
    result.push_back({"Chromium (snap)", std::string(folder) + "/chromium/current"});
    result.push_back({"Firefox (snap)", std::string(folder) + "/firefox/current"});
  }
  std::vector<std::string> installations = {"/var/lib/flatpak"};
  addAll(installations, data, {"/flatpak"});
  for (const std::string& folder : installations) {
    result.push_back({"Chromium (flatpak)", folder + "/app/org.chromium.Chromium"});
    result.push_back({"Google Chrome (flatpak)", folder + "/app/com.google.Chrome"});
    result.push_back({"Firefox (flatpak)", folder + "/app/org.mozilla.firefox"});
  }
  return result;
}

}  // namespace

clickPlaces::clickPlaces(variableReader get) {
  for (const std::string& name : stringToVector(valueOf(get, "XDG_CURRENT_DESKTOP"), ':')) {
    if (!name.empty() && name.find('/') == std::string::npos) {
      desktops.push_back(lower(name));
    }
  }
  const std::string config = userFolder(get, "XDG_CONFIG_HOME", "/.config");
  const std::string data = userFolder(get, "XDG_DATA_HOME", "/.local/share");
  addEntries(entries, data, true);
  for (const std::string& folder :
       systemFolders(get, "XDG_DATA_DIRS", "/usr/local/share:/usr/share")) {
    addEntries(entries, folder, false);
  }
  if (!config.empty()) {
    lists.push_back({config, true, false});
  }
  for (const std::string& folder : systemFolders(get, "XDG_CONFIG_DIRS", "/etc/xdg")) {
    lists.push_back({folder, false, false});
  }
  lists.insert(lists.end(), entries.begin(), entries.end());

  chromiumPolicies = {"/etc/chromium/policies/managed", "/etc/chromium-browser/policies/managed",
                      "/etc/opt/chrome/policies/managed"};
  firefoxPolicies = {"/etc/firefox/policies/policies.json",
                     "/etc/firefox-esr/policies/policies.json",
                     "/usr/lib/firefox/distribution/policies.json",
                     "/usr/lib/firefox-esr/distribution/policies.json",
                     "/usr/lib64/firefox/distribution/policies.json",
                     "/opt/firefox/distribution/policies.json"};
  const std::string home = valueOf(get, "HOME");
  const std::string user = home.starts_with('/') ? home : "";
  addAll(chromiumProfiles, config, {"/chromium", "/google-chrome"});
  addAll(chromiumProfiles, user,
         {"/snap/chromium/common/chromium", "/.var/app/org.chromium.Chromium/config/chromium",
          "/.var/app/com.google.Chrome/config/google-chrome"});
  addAll(firefoxProfiles, user,
         {"/.mozilla/firefox", "/snap/firefox/common/.mozilla/firefox",
          "/.var/app/org.mozilla.firefox/.mozilla/firefox",
          "/.var/app/org.mozilla.firefox/config/mozilla/firefox"});
  addAll(firefoxProfiles, config, {"/mozilla/firefox"});
  sandboxed = sandboxedBrowsers(data);
}

}  // namespace hopopen
