// SPDX-License-Identifier: MIT
#include "associations.h"

#include <set>

namespace hopopen {

namespace {

using judge = std::function<bool(const std::string& id)>;

constexpr const char* DEFAULTS = "Default Applications";
constexpr const char* ADDED = "Added Associations";
constexpr const char* REMOVED = "Removed Associations";
constexpr const char* CACHED = "MIME Cache";

std::optional<linkHandler> firstOf(const associationFile& file, const char* group,
                                   const std::string& type, bool byUser, const judge& works) {
  for (const std::string& id : file.keys.list(group, type)) {
    if (works(id)) {
      return linkHandler{id, file.path, byUser};
    }
  }
  return {};
}

std::optional<linkHandler> byDefault(const associations& folder, const std::string& type,
                                     const judge& works) {
  for (const associationFile& file : folder.ofDesktop) {
    if (auto found = firstOf(file, DEFAULTS, type, folder.ofUser, works)) {
      return found;
    }
  }
  return folder.list ? firstOf(*folder.list, DEFAULTS, type, folder.ofUser, works) : std::nullopt;
}

// Notes in `removed` what the folder removes for itself and for those after it.
std::optional<linkHandler> byAssociation(const associations& folder, const std::string& type,
                                         std::set<std::string>& removed, const entryJudge& works) {
  const auto unlessRemoved = [&](const std::string& cache) {
    return [&, cache](const std::string& id) { return !removed.contains(id) && works(id, cache); };
  };
  if (folder.list) {
    if (auto found = firstOf(*folder.list, ADDED, type, folder.ofUser, unlessRemoved(""))) {
      return found;
    }
    const auto ids = folder.list->keys.list(REMOVED, type);
    removed.insert(ids.begin(), ids.end());
  }
  return folder.cache
             ? firstOf(*folder.cache, CACHED, type, false, unlessRemoved(folder.cache->path))
             : std::nullopt;
}

}  // namespace

std::optional<linkHandler> defaultHandler(const std::vector<associations>& folders,
                                          const std::string& scheme, const entryJudge& works) {
  const std::string type = "x-scheme-handler/" + scheme;
  for (const associations& folder : folders) {
    if (auto found =
            byDefault(folder, type, [&](const std::string& id) { return works(id, ""); })) {
      return found;
    }
  }
  std::set<std::string> removed;
  for (const associations& folder : folders) {
    if (auto found = byAssociation(folder, type, removed, works)) {
      return found;
    }
  }
  return {};
}

}  // namespace hopopen
