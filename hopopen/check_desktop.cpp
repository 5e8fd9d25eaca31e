// SPDX-License-Identifier: MIT
#include "check_desktop.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>
#include <utility>

#include "characters.h"
#include "enumeration.h"
#include "file.h"
#include "key_file.h"
#include "paths.h"

namespace hopopen {

namespace {

constexpr const char* OWN_ENTRY = "hopopen.desktop";
constexpr const char* REINSTALL =
    "Install the package again: \"sudo apt-get install --reinstall hoplaunch\".";
constexpr const char* REMOVE_ONE = "Remove the one that you do not want, or change PATH.";

std::vector<associations> readAssociations(const clickPlaces& places, placeReader& reader) {
  std::vector<associations> result;
  for (const placeOf& place : places.lists) {
    associations folder;
    folder.ofUser = place.ofUser;
    const auto take = [&](const std::string& name) {
      const std::string path = within(place.folder, name);
      auto keys = reader.keys(path);
      return keys ? std::optional(associationFile{path, std::move(*keys)}) : std::nullopt;
    };
    for (const std::string& desktop : places.desktops) {
      if (auto list = take(desktop + "-mimeapps.list")) {
        folder.ofDesktop.push_back(std::move(*list));
      }
    }
    folder.list = take("mimeapps.list");
    if (place.hasEntries) {
      folder.cache = take("mimeinfo.cache");
    }
    result.push_back(std::move(folder));
  }
  return result;
}

// A path as a word of a command for the shell.
std::string asWord(const std::string& path) {
  if (std::all_of(path.begin(), path.end(), [](char c) { return isUnreserved(c) || c == '/'; })) {
    return path;
  }
  std::string result = "'";
  for (const char c : path) {
    result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return result + '\'';
}

// Where an entry may be in a folder: each "-" of its id may stand for a folder.
std::vector<std::string> pathsFor(std::string id) {
  std::vector<std::string> result = {id};
  for (std::size_t dash = id.find('-'); dash != std::string::npos; dash = id.find('-')) {
    id[dash] = '/';
    result.push_back(id);
  }
  return result;
}

std::string commandToChoose(const std::string& scheme) {
  return "\"xdg-mime default hopopen.desktop x-scheme-handler/" + scheme + '"';
}

std::string resolvedPath(const std::string& path) {
  std::error_code ignored;
  const auto resolved = std::filesystem::canonical(path, ignored);
  return resolved.empty() ? path : resolved.string();
}

}  // namespace

desktopCheck::desktopCheck(const clickPlaces& places, const programFinder& programs,
                           placeReader& reader)
    : m_places(places),
      m_programs(programs),
      m_reader(reader),
      m_associations(readAssociations(places, reader)) {}

std::optional<desktopCheck::foundEntry> desktopCheck::find(const std::string& id) {
  if (id.find('/') != std::string::npos) {
    return {};
  }
  for (const placeOf& place : m_places.entries) {
    for (const std::string& name : pathsFor(id)) {
      const std::string path = within(place.folder, name);
      std::error_code ignored;
      if (!std::filesystem::exists(std::filesystem::status(path, ignored))) {
        continue;
      }
      const fileText file = readFile(path);
      return foundEntry{path, place.folder, place.ofUser, file.error, readDesktopEntry(file.text)};
    }
  }
  return {};
}

std::string desktopCheck::pathOf(const std::string& program) const {
  if (program.starts_with('/')) {
    return isExecutable(program) ? program : "";
  }
  const auto found = m_programs.find(program);
  return found ? found->path : "";
}

bool desktopCheck::works(const std::string& id, const std::string& cache) {
  const auto [known, fresh] = m_works.try_emplace(id);
  if (fresh) {
    const auto entry = find(id);
    const bool works = entry && entry->error.empty() && entry->read.fault.empty() &&
                       !entry->read.hidden && !pathOf(entry->read.command.front()).empty() &&
                       (entry->read.tryExec.empty() || !pathOf(entry->read.tryExec).empty());
    known->second = works ? entry->folder : "";
  }
  return !known->second.empty() && (cache.empty() || folderOf(cache) == known->second);
}

finding desktopCheck::handler(const std::string& scheme) {
  const std::string name = "handler " + scheme;
  const auto found = defaultHandler(
      m_associations, scheme,
      [this](const std::string& id, const std::string& cache) { return works(id, cache); });
  if (!found) {
    return {state::FAULT, name, "mimeapps.list",
            "no program opens " + scheme + " links; no list and no cache names one that is there",
            "Type " + commandToChoose(scheme) + '.'};
  }
  if (const auto entry = find(found->id); entry && entry->read.startsHopopen()) {
    return {state::OK, name, found->file, found->id + " opens " + scheme + " links", ""};
  }
  const std::string message = found->id + " opens " + scheme + " links, not hopopen";
  if (found->byUser) {
    return {state::WARNING, name, found->file, message,
            "If hopopen is to open them, type " + commandToChoose(scheme) + '.'};
  }
  return {state::FAULT, name, found->file, message, "Type " + commandToChoose(scheme) + '.'};
}

findings desktopCheck::entry() {
  const auto own = find(OWN_ENTRY);
  if (!own) {
    return {{state::FAULT, "entry", OWN_ENTRY, "is in no folder of desktop entries", REINSTALL}};
  }
  const std::string remedy = remedyFor(*own);
  const std::string fault = own->error.empty() ? own->read.fault : own->error;
  if (own->read.hidden) {
    return {{state::FAULT, "entry", own->path, "is hidden: it says Hidden=true", remedy}};
  }
  if (!fault.empty()) {
    return {{state::FAULT, "entry", own->path, "is not valid: " + fault, remedy}};
  }
  return {{state::OK, "entry", own->path, "is valid", ""}, ofProgram(*own), ofCache(*own)};
}

std::string desktopCheck::remedyFor(const foundEntry& own) {
  return own.ofUser ? "Remove " + own.path + ", so that the entry of the package counts."
                    : REINSTALL;
}

finding desktopCheck::ofProgram(const foundEntry& own) const {
  std::string path;
  for (const std::string& program : {own.read.command.front(), own.read.tryExec}) {
    if (program.empty()) {
      continue;
    }
    path = pathOf(program);
    if (path.empty()) {
      return {state::FAULT, "tryexec", program, "is not there, so desktops overlook the entry",
              remedyFor(own)};
    }
  }
  const auto first = m_programs.find("hopopen");
  if (first && resolvedPath(first->path) != resolvedPath(path)) {
    return {state::WARNING, "tryexec", first->path,
            "comes first in PATH, but a click starts " + path, REMOVE_ONE};
  }
  // An entry without a path starts the first one, too.
  const auto other = first ? m_programs.findOther("hopopen") : std::nullopt;
  if (other && !own.read.command.front().starts_with('/')) {
    return {state::WARNING, "tryexec", first->path, "comes before " + other->path + " in PATH",
            REMOVE_ONE};
  }
  return {state::OK, "tryexec", path, "is there", ""};
}

finding desktopCheck::ofCache(const foundEntry& own) {
  const std::string path = within(own.folder, "mimeinfo.cache");
  const auto keys = m_reader.keys(path);
  std::vector<std::string> missing;
  for (const std::string& scheme : own.read.schemes) {
    const auto ids =
        keys ? keys->list("MIME Cache", "x-scheme-handler/" + scheme) : std::vector<std::string>();
    if (std::find(ids.begin(), ids.end(), OWN_ENTRY) == ids.end()) {
      missing.push_back(scheme);
    }
  }
  if (missing.empty()) {
    return {state::OK, "cache", path, "names the schemes of the entry", ""};
  }
  return {state::WARNING, "cache", path,
          "does not say that hopopen opens " + enumeration(missing) + " links",
          std::string("Type \"") + (own.ofUser ? "" : "sudo ") + "update-desktop-database " +
              asWord(own.folder) + "\"."};
}

finding desktopCheck::opener() const {
  for (const char* const name : {"xdg-open", "gio"}) {
    if (const auto found = m_programs.find(name)) {
      return {state::OK, "opener", found->path, "opens links for other programs", ""};
    }
  }
  return {state::WARNING, "opener", "PATH", "has neither xdg-open nor gio",
          "Install the package xdg-utils: \"sudo apt-get install xdg-utils\"."};
}

}  // namespace hopopen
