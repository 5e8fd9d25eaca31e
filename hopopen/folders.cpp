#include "folders.h"

#include "paths.h"

namespace hopopen {

namespace {

constexpr const char* OWN = "/hoplaunch";

std::string valueOf(variableReader get, const char* name) {
  const char* const value = get(name);
  return value == nullptr ? "" : value;
}

// A folder of the user: the variable's, or the usual one below HOME, or none.
std::string userFolder(variableReader get, const char* name, const char* usual) {
  const std::string given = valueOf(get, name);
  if (given.starts_with('/')) {
    return given + OWN;
  }
  const std::string home = valueOf(get, "HOME");
  return home.starts_with('/') ? home + usual + OWN : "";
}

std::vector<std::string> systemFolders(variableReader get, const char* name, const char* usual) {
  const std::string given = valueOf(get, name);
  std::vector<std::string> result = absolutePaths(given.empty() ? usual : given);
  for (std::string& path : result) {
    path += OWN;
  }
  return result;
}

}  // namespace

folders::folders(variableReader get) {
  const std::string config = userFolder(get, "XDG_CONFIG_HOME", "/.config");
  const std::string data = userFolder(get, "XDG_DATA_HOME", "/.local/share");
  const std::string cache = userFolder(get, "XDG_CACHE_HOME", "/.cache");
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
  for (const std::string& path : systemFolders(get, "XDG_CONFIG_DIRS", "/etc/xdg")) {
    otherSettings.push_back(path + "/hopopen.toml");
  }
  for (const std::string& path :
       systemFolders(get, "XDG_DATA_DIRS", "/usr/local/share:/usr/share")) {
    viewers.push_back(path + "/viewers");
  }
}

}  // namespace hopopen
