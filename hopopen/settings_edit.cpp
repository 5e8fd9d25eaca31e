// SPDX-License-Identifier: MIT
#include "settings_edit.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "fault.h"
#include "settings.h"
#include "settings_add.h"
#include "settings_host.h"
#include "settings_remove.h"
#include "toml.h"
#include "toml_read.h"
#include "toml_text.h"
#include "trusted.h"

namespace hopopen {

namespace {

// The table for hosts in these settings, which need not have one yet.
hostTable& tableFor(settings& all, const trustedHost& where) {
  for (hostTable& one : all.hosts) {
    if (one.where == where) {
      return one;
    }
  }
  return all.hosts.emplace_back(hostTable{where});
}

// Makes the tables of hosts say whether they are trusted, where they say it at all.
void turnTables(settings& all, const change& what) {
  for (hostTable& one : all.hosts) {
    if (one.trust && contains(what.trust, one.where)) {
      one.trust = true;
    } else if (one.trust && contains(what.distrust, one.where)) {
      one.trust = false;
    }
  }
}

// The tables that say something, in one order.
std::vector<hostTable> inOneOrder(std::vector<hostTable> tables) {
  std::erase_if(tables, [](const hostTable& one) { return one == hostTable{one.where}; });
  std::sort(tables.begin(), tables.end(),
            [](const hostTable& a, const hostTable& b) { return a.where.text() < b.where.text(); });
  return tables;
}

// What the settings should say after the change.
settings expected(settings old, const change& what) {
  viewerOfScheme& use = what.forHost ? tableFor(old, *what.forHost).use : old.use;
  for (const auto& [scheme, viewer] : what.use) {
    if (viewer) {
      use[scheme] = *viewer;
    } else {
      use.erase(scheme);
    }
  }
  turnTables(old, what);
  std::vector<trustedHost> hosts;
  for (const trustedHost& host : old.trust) {
    if (!contains(what.distrust, host)) {
      hosts.push_back(host);
    }
  }
  for (const trustedHost& host : what.trust) {
    if (!contains(hosts, host) && !tableFor(old, host).trust) {
      hosts.push_back(host);
    }
  }
  old.trust = hosts;
  return old;
}

// Takes a key out, and what has nothing in it then.
void eraseFrom(toml::table& table, std::string_view name, std::string_view key) {
  if (toml::table* const within = table.get_as<toml::table>(name)) {
    within->erase(key);
    if (within->empty()) {
      table.erase(name);
    }
  }
}

// What a file says to others: all but what an edit may change.
toml::table others(const toml::table& file) {
  toml::table result = file;
  result.erase("use");
  eraseFrom(result, "trust", "hosts");
  if (const toml::table* const hosts = file.get_as<toml::table>("host")) {
    toml::table& left = *result.get_as<toml::table>("host");
    for (const auto& [host, table] : *hosts) {
      eraseFrom(left, host.str(), "use");
      eraseFrom(left, host.str(), "trust");
    }
    if (left.empty()) {
      result.erase("host");
    }
  }
  return result;
}

bool isRight(const std::string& before, const std::string& after, const change& what) {
  faults found;
  const settings wanted = expected(readSettings(before, {}, found), what);
  const settings made = readSettings(after, {}, found);
  if (!found.empty() || made.use != wanted.use || made.trust != wanted.trust ||
      inOneOrder(made.hosts) != inOneOrder(wanted.hosts)) {
    return false;
  }
  return others(readToml(before).table()) == others(readToml(after).table());
}

}  // namespace

std::optional<std::string> edited(const std::string& text, const change& what) {
  std::string result = text;
  auto source = std::make_unique<tomlText>(result);
  for (const auto& step : {forget, use, turn, distrust, trust}) {
    if (!source->isGood()) {
      return {};
    }
    std::string next = step(*source, what);
    if (next != result) {
      result = std::move(next);
      source = std::make_unique<tomlText>(result);
    }
  }
  return isRight(text, result, what) ? std::optional(result) : std::nullopt;
}

}  // namespace hopopen
