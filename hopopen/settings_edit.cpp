#include "settings_edit.h"

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "fault.h"
#include "settings.h"
#include "settings_add.h"
#include "settings_remove.h"
#include "toml.h"
#include "toml_read.h"
#include "toml_text.h"
#include "trusted.h"

namespace hopopen {

namespace {

// What the settings should say after the change.
settings expected(settings old, const change& what) {
  for (const auto& [scheme, viewer] : what.use) {
    if (viewer) {
      old.use[scheme] = *viewer;
    } else {
      old.use.erase(scheme);
    }
  }
  std::vector<trustedHost> hosts;
  for (const trustedHost& host : old.trust) {
    if (!contains(what.distrust, host)) {
      hosts.push_back(host);
    }
  }
  for (const trustedHost& host : what.trust) {
    if (!contains(hosts, host)) {
      hosts.push_back(host);
    }
  }
  old.trust = hosts;
  return old;
}

// What a file says to others: all but what an edit may change.
toml::table others(const toml::table& file) {
  toml::table result = file;
  result.erase("use");
  if (toml::table* trust = result.get_as<toml::table>("trust")) {
    trust->erase("hosts");
    if (trust->empty()) {
      result.erase("trust");
    }
  }
  return result;
}

bool isRight(const std::string& before, const std::string& after, const change& what) {
  faults found;
  const settings wanted = expected(readSettings(before, {}, found), what);
  const settings made = readSettings(after, {}, found);
  if (!found.empty() || made.use != wanted.use || made.trust != wanted.trust) {
    return false;
  }
  return others(readToml(before).table()) == others(readToml(after).table());
}

}  // namespace

std::optional<std::string> edited(const std::string& text, const change& what) {
  std::string result = text;
  auto source = std::make_unique<tomlText>(result);
  for (const auto& step : {forget, use, distrust, trust}) {
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
