// SPDX-License-Identifier: MIT
#include "settings_host.h"

#include <optional>

namespace hopopen {

namespace {

// A host's table, and the key that the text has for it.
struct hostPlace {
  std::string key;
  const toml::node* node = nullptr;

  const toml::table* table() const { return node == nullptr ? nullptr : node->as_table(); }
};

hostPlace findHost(const tomlText& source, const trustedHost& host) {
  if (const toml::table* const hosts = source.table("host")) {
    for (const auto& [key, value] : *hosts) {
      if (readTrusted(key.str()) == host) {
        return {keyText(key.str()), &value};
      }
    }
  }
  return {keyText(host.text()), nullptr};
}

const toml::table* useIn(const toml::table* table) {
  return table == nullptr ? nullptr : table->get_as<toml::table>("use");
}

}  // namespace

const toml::table* usedBy(const tomlText& source, const change& what) {
  return what.forHost ? useIn(findHost(source, *what.forHost).table()) : source.table("use");
}

const toml::node* trustIn(const tomlText& source, const trustedHost& host) {
  const toml::table* const table = findHost(source, host).table();
  return table == nullptr ? nullptr : table->get("trust");
}

void addUse(textEdit& edit, tomlText& source, const trustedHost& host,
            const std::vector<keyAndValue>& viewers) {
  if (viewers.empty()) {
    return;
  }
  const toml::table* const hosts = source.table("host");
  const hostPlace found = findHost(source, host);
  const shape outer = source.shapeOf(hosts);
  if (outer == shape::INLINE && found.node == nullptr) {
    const std::string use = inlineTable({{"use", inlineTable(viewers)}});
    addPairs(edit, source, {"host", 1, "host"}, hosts, {{found.key, use}});
    return;
  }
  const tableName name{"host." + found.key, 2, (outer == shape::HEADER ? "" : "host.") + found.key};
  const toml::table* const table = found.table();
  if (const toml::table* const use = useIn(table)) {
    const bool below = source.shapeOf(table, name.parts) == shape::HEADER;
    addPairs(edit, source, {name.header + ".use", 3, (below ? "" : name.dotted + '.') + "use"}, use,
             viewers);
  } else {
    addPairs(edit, source, name, table, {{"use", inlineTable(viewers)}});
  }
}

std::string turn(tomlText& source, const change& what) {
  const toml::table* const hosts = source.table("host");
  textEdit edit(source.text());
  if (hosts == nullptr) {
    return edit.result();
  }
  for (const auto& [key, value] : *hosts) {
    const auto host = readTrusted(key.str());
    const toml::table* const table = value.as_table();
    const toml::node* const trust = host && table != nullptr ? table->get("trust") : nullptr;
    if (trust == nullptr) {
      continue;
    }
    const bool trusted = trust->value_or(false);
    const region where = source.regionOf(*trust);
    if (!trusted && contains(what.trust, *host)) {
      edit.replace(where.begin, where.end, "true");
    } else if (trusted && contains(what.distrust, *host) && !contains(what.trust, *host)) {
      edit.replace(where.begin, where.end, "false");
    }
  }
  return edit.result();
}

}  // namespace hopopen
