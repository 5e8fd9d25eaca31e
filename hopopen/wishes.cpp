#include "wishes.h"

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

#include "characters.h"
#include "definition.h"
#include "settings_change.h"
#include "settings_file.h"
#include "shown.h"
#include "trusted.h"

namespace hopopen {

namespace {

refusal withoutPlace(code why, const std::string& message) {
  return {why, message, {}};
}

verdict readUse(const std::vector<std::string>& words, const definitions& known, change& into) {
  const definition* const viewer = known.named(words.front());
  if (viewer == nullptr) {
    return withoutPlace(code::CHOICE, "There is no viewer " + shownWord(words.front()) +
                                          ". See \"hopopen --list\".");
  }
  std::vector<std::string> schemes;
  for (auto word = words.begin() + 1; word != words.end(); ++word) {
    schemes.push_back(lower(*word));
    if (!viewer->opens(schemes.back())) {
      return withoutPlace(code::CHOICE, printable(viewer->title) + " does not open " +
                                            shownWord(*word) + " links. See \"hopopen --list\".");
    }
  }
  for (const std::string& scheme : schemes.empty() ? viewer->schemes : schemes) {
    into.use[scheme] = viewer->name;
  }
  return {};
}

verdict readHosts(const std::vector<std::string>& words, std::vector<trustedHost>& into) {
  for (const std::string& word : words) {
    const auto read = readTrusted(word);
    if (!read) {
      return withoutPlace(code::HOST,
                          shownWord(word) +
                              " is not a host. Write a name, an IPv4 address, an IPv6 address in "
                              "brackets, or a dot and a name for all names below it.");
    }
    into.push_back(*read);
  }
  return {};
}

// Which entries of which files still trust hosts that are to be trusted no more.
std::string stillTrusted(const std::vector<trustedHost>& hosts, const preferences& wishes) {
  std::string result;
  for (const trustedHost& host : hosts) {
    for (std::size_t i = 0; i < wishes.files.size(); i++) {
      const bool own = i == 0 && wishes.hasUser;
      for (const trustedHost& other : wishes.files[i].trust) {
        const bool equal = other == host;
        if ((equal && !own) || (!equal && !host.below && other.covers(host.machine))) {
          result += host.text() + " is still trusted by " + other.text() + " in " +
                    printable(wishes.files[i].file) + '\n';
        }
      }
    }
  }
  return result;
}

verdict readWords(const options& asked, const definitions& known, change& into) {
  switch (asked.what) {
    case wish::USE:
      return readUse(asked.words, known, into);
    case wish::FORGET:
      for (const std::string& scheme : asked.words) {
        into.use[lower(scheme)] = std::nullopt;
      }
      return {};
    case wish::TRUST:
      return readHosts(asked.words, into.trust);
    default:
      return readHosts(asked.words, into.distrust);
  }
}

}  // namespace

verdict changeWishes(const options& asked, const folders& where, const definitions& known,
                     const preferences& wishes, std::string& output) {
  change wanted;
  if (auto fault = readWords(asked, known, wanted)) {
    return fault;
  }
  if (where.userSettings.empty()) {
    return withoutPlace(code::SETTINGS, "There is no folder for your settings. Set HOME.");
  }
  const std::string error = changeSettings(where.userSettings, wanted);
  if (!error.empty()) {
    return withoutPlace(code::SETTINGS, error);
  }
  output = stillTrusted(wanted.distrust, wishes);
  return {};
}

}  // namespace hopopen
