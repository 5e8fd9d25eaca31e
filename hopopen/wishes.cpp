// SPDX-License-Identifier: MIT
#include "wishes.h"

#include <map>
#include <optional>
#include <vector>

#include "characters.h"
#include "definition.h"
#include "preferences.h"
#include "settings_change.h"
#include "settings_file.h"
#include "shown.h"
#include "trust_left.h"
#include "trusted.h"

namespace hopopen {

namespace {

verdict readUse(const std::vector<std::string>& words, const definitions& known, change& into) {
  const definition* const viewer = known.named(words.front());
  if (viewer == nullptr) {
    return faultOutside(code::CHOICE, "There is no viewer " + shownWord(words.front()) +
                                          ". See \"hopopen --list\".");
  }
  std::vector<std::string> schemes;
  for (auto word = words.begin() + 1; word != words.end(); ++word) {
    schemes.push_back(lower(*word));
    if (!viewer->opens(schemes.back())) {
      return faultOutside(code::CHOICE, printable(viewer->title) + " does not open " +
                                            shownWord(*word) + " links. See \"hopopen --list\".");
    }
  }
  for (const std::string& scheme : schemes.empty() ? viewer->schemes : schemes) {
    into.use[scheme] = viewer->name;
  }
  return {};
}

verdict readHost(const std::string& word, std::vector<trustedHost>& into) {
  const auto read = readTrusted(word);
  if (!read) {
    return faultOutside(code::HOST,
                        shownWord(word) +
                            " is not a host. Write a name, an IPv4 address, an IPv6 address in "
                            "brackets, or a dot and a name for all names below it.");
  }
  into.push_back(*read);
  return {};
}

verdict readHosts(const std::vector<std::string>& words, std::vector<trustedHost>& into) {
  for (const std::string& word : words) {
    if (auto fault = readHost(word, into)) {
      return fault;
    }
  }
  return {};
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

verdict readFor(const options& asked, change& into) {
  std::vector<trustedHost> hosts;
  if (!asked.host) {
    return {};
  }
  if (auto fault = readHost(*asked.host, hosts)) {
    return fault;
  }
  into.forHost = hosts.front();
  return {};
}

}  // namespace

verdict changeWishes(const options& asked, const folders& where, const definitions& known,
                     std::string& output) {
  change wanted;
  if (auto fault = readWords(asked, known, wanted)) {
    return fault;
  }
  if (auto fault = readFor(asked, wanted)) {
    return fault;
  }
  if (where.userSettings.empty()) {
    return faultOutside(code::SETTINGS, "There is no folder for your settings. Set HOME.");
  }
  const std::string error = changeSettings(where.userSettings, wanted);
  if (!error.empty()) {
    return faultOutside(code::SETTINGS, error);
  }
  const preferences now = readPreferences(where);
  output = stillTrusted(wanted.distrust, now) + stillDistrusted(wanted.trust, now);
  return {};
}

}  // namespace hopopen
