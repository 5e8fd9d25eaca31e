// SPDX-License-Identifier: MIT
#include "folders.h"

namespace hopopen {

namespace {

constexpr const char* OWN_FOLDER = "/hoplaunch";

std::string ownFolder(variableReader get, const char* name, const char* usual) {
  const std::string folder = userFolder(get, name, usual);
  return folder.empty() ? folder : folder + OWN_FOLDER;
}

std::vector<std::string> ownFolders(variableReader get, const char* name, const char* usual) {
  std::vector<std::string> result = systemFolders(get, name, usual);
  for (std::string& path : result) {
    path += OWN_FOLDER;
  }
  return result;
}

}  // namespace

folders::folders(variableReader get) {
  const std::string config = ownFolder(get, "XDG_CONFIG_HOME", "/.config");
  const std::string data = ownFolder(get, "XDG_DATA_HOME", "/.local/share");
  const std::string cache = ownFolder(get, "XDG_CACHE_HOME", "/.cache");
  if (!cache.empty()) {
    catalogFile = cache + "/viewers";
  }
  if (!config.empty()) {
    userSettings = config + "/hopopen.toml";
    viewers.push_back(config + "/viewers");
  }
  if (!data.empty()) {
    viewers.push_back(data + "/viewers");
  }
  for (const std::string& path : ownFolders(get, "XDG_CONFIG_DIRS", "/etc/xdg")) {
    otherSettings.push_back(path + "/hopopen.toml");
  }
  for (const std::string& path : ownFolders(get, "XDG_DATA_DIRS", "/usr/local/share:/usr/share")) {
    viewers.push_back(path + "/viewers");
  }
}

}  // namespace hopopen
