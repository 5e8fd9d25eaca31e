// SPDX-License-Identifier: MIT
#include "check_browsers.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <system_error>
#include <utility>

#include "browser_profile.h"
#include "chromium_policy.h"
#include "enumeration.h"
#include "file.h"
#include "firefox_policy.h"
#include "json.h"
#include "json_read.h"
#include "key_file.h"
#include "paths.h"

namespace hopopen {

namespace {

constexpr const char* ASK_ADMINISTRATOR =
    "Ask whoever looks after this computer to allow these links in that file.";
constexpr const char* MAKE_READABLE =
    "Ask whoever looks after this computer to look at the file: nobody can tell what it forbids.";
constexpr const char* START_BROWSER = "Start the browser: it puts a broken file right.";
constexpr const char* NO_JSON = "cannot be read: it is no JSON";

bool exists(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(std::filesystem::status(path, ignored));
}

// What a group of files came to: its findings, or one that says that all is well.
class group {
 public:
  group(std::string name, std::string good) : m_name(std::move(name)), m_good(std::move(good)) {}

  void looked(const std::string& path) { m_looked.push_back(path); }
  void add(state how, const std::string& path, const std::string& message,
           const std::string& remedy) {
    m_found.push_back({how, m_name, path, message, remedy});
  }
  findings result() const {
    if (!m_found.empty()) {
      return m_found;
    }
    return {{state::OK, m_name, m_looked.empty() ? "no file" : enumeration(m_looked, ", "), m_good,
             ""}};
  }

 private:
  std::string m_name;
  std::string m_good;
  std::vector<std::string> m_looked;
  findings m_found;
};

// The value of a file of JSON; nothing when there is none, and its group learns of an error.
std::optional<jsonData> jsonOf(const std::string& path, placeReader& reader, const char* remedy,
                               group& into) {
  const placeReader::result& file = reader.read(path);
  if (!file.error.empty()) {
    into.add(state::WARNING, path, file.error, remedy);
  }
  if (!file.text) {
    return {};
  }
  auto value = readJson(*file.text);
  if (value) {
    into.looked(path);
  } else {
    into.add(state::WARNING, path, NO_JSON, remedy);
  }
  return value;
}

// The folders in a folder.
std::vector<std::string> foldersIn(const std::string& folder) {
  std::vector<std::string> result;
  std::string ignored;
  for (const std::string& name : namesIn(folder, ignored)) {
    std::error_code none;
    std::string path = within(folder, name);
    if (std::filesystem::is_directory(path, none)) {
      result.push_back(std::move(path));
    }
  }
  return result;
}

// A profile may be anywhere: profiles.ini names those that are elsewhere.
std::vector<std::string> firefoxProfilesOf(const std::string& folder, placeReader& reader) {
  std::vector<std::string> result = foldersIn(folder);
  if (const auto keys = reader.keys(within(folder, "profiles.ini"))) {
    for (const std::string& profile : keys->groups()) {
      const std::string path = keys->value(profile, "Path");
      if (keys->value(profile, "IsRelative") == "0" && path.starts_with('/')) {
        result.push_back(path);
      }
    }
  }
  return result;
}

using obstacle = std::function<std::optional<std::string>(const std::string& scheme)>;

void addObstacles(const std::string& path, const std::vector<std::string>& schemes,
                  const obstacle& of, const std::string& remedy, group& into) {
  for (const std::string& scheme : schemes) {
    if (const auto found = of(scheme)) {
      into.add(state::WARNING, path, *found, remedy);
    }
  }
}

void checkChromiumProfile(const std::string& profile, const std::vector<std::string>& schemes,
                          placeReader& reader, group& into) {
  const std::string path = within(profile, "Preferences");
  if (const auto value = jsonOf(path, reader, START_BROWSER, into)) {
    addObstacles(
        path, schemes, [&](const std::string& scheme) { return chromiumKeeps(*value, scheme); },
        "Open chrome://settings/handlers in the browser, and remove the handler; or close the "
        "browser, and remove the scheme from \"excluded_schemes\" in the file.",
        into);
  }
}

void checkFirefoxProfile(const std::string& profile, const std::vector<std::string>& schemes,
                         placeReader& reader, group& into) {
  const std::string handlers = within(profile, "handlers.json");
  if (const auto value = jsonOf(handlers, reader, START_BROWSER, into)) {
    addObstacles(
        handlers, schemes, [&](const std::string& scheme) { return firefoxKeeps(*value, scheme); },
        "Open about:preferences in Firefox, and choose \"Always ask\" for these links under "
        "Applications.",
        into);
  }
  for (const char* const name : {"prefs.js", "user.js"}) {
    const std::string path = within(profile, name);
    const placeReader::result& file = reader.read(path);
    if (!file.error.empty()) {
      into.add(state::WARNING, path, file.error, START_BROWSER);
    }
    if (file.text) {
      addObstacles(
          path, schemes,
          [&](const std::string& scheme) { return firefoxSwitchesOff(*file.text, scheme); },
          "Open about:config in Firefox, and reset \"network.protocol-handler.external\" for "
          "these links.",
          into);
    }
  }
}

}  // namespace

findings checkChromiumPolicies(const clickPlaces& places, const std::vector<std::string>& schemes,
                               placeReader& reader) {
  group result("policy chromium", "no policy forbids these links");
  for (const std::string& folder : places.chromiumPolicies) {
    chromiumPolicy policy;
    std::string error;
    for (const std::string& name : namesIn(folder, error)) {
      const std::string path = within(folder, name);
      if (!name.ends_with(".json")) {
        continue;
      }
      if (const auto value = jsonOf(path, reader, MAKE_READABLE, result)) {
        policy.add(path, *value);
      }
    }
    if (!error.empty()) {
      result.add(state::WARNING, folder, error, MAKE_READABLE);
    }
    for (const std::string& scheme : schemes) {
      if (const auto found = policy.forbids(scheme)) {
        result.add(state::FAULT, found->file, "forbids " + scheme + " links: " + found->rule,
                   ASK_ADMINISTRATOR);
      }
    }
  }
  return result.result();
}

findings checkFirefoxPolicies(const clickPlaces& places, const std::vector<std::string>& schemes,
                              placeReader& reader) {
  group result("policy firefox", "no policy forbids these links");
  for (const std::string& path : places.firefoxPolicies) {
    const auto value = jsonOf(path, reader, MAKE_READABLE, result);
    for (const std::string& scheme : schemes) {
      if (const auto found = value ? firefoxForbids(*value, scheme) : std::nullopt) {
        result.add(state::FAULT, path, "forbids " + scheme + " links: " + *found,
                   ASK_ADMINISTRATOR);
      }
    }
  }
  return result.result();
}

findings checkProfiles(const clickPlaces& places, const std::vector<std::string>& schemes,
                       placeReader& reader) {
  group result("profile", "no profile of a browser keeps these links");
  for (const std::string& folder : places.chromiumProfiles) {
    for (const std::string& profile : foldersIn(folder)) {
      checkChromiumProfile(profile, schemes, reader, result);
    }
  }
  for (const std::string& folder : places.firefoxProfiles) {
    for (const std::string& profile : firefoxProfilesOf(folder, reader)) {
      checkFirefoxProfile(profile, schemes, reader, result);
    }
  }
  return result.result();
}

findings checkSandboxes(const clickPlaces& places) {
  findings result;
  for (const sandboxedBrowser& browser : places.sandboxed) {
    if (exists(browser.folder)) {
      result.push_back({state::WARNING, "sandbox", browser.folder,
                        browser.name + " asks which program is to open a link",
                        "Choose hopopen when it asks, or use the browser of a Debian package."});
    }
  }
  if (result.empty()) {
    result.push_back(
        {state::OK, "sandbox", "no folder", "no browser is from a snap or a flatpak", ""});
  }
  return result;
}

}  // namespace hopopen
