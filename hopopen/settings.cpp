// SPDX-License-Identifier: MIT
#include "settings.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "characters.h"
#include "credentials.h"
#include "host.h"
#include "shown.h"
#include "toml.h"
#include "toml_read.h"

namespace hopopen {

namespace {

// Reads one file.  Every fault is noted, and reading goes on.
class settingsReader {
 public:
  explicit settingsReader(settings& into) : m_into(into) {}

  void read(const toml::table& file) {
    if (const toml::table* use = table(file, "use")) {
      readUse(*use, m_into.use);
    }
    if (const toml::table* trust = table(file, "trust")) {
      const auto hosts = trust->find("hosts");
      if (hosts != trust->end()) {
        readHosts(hosts->second);
      }
    }
    if (const toml::table* hosts = table(file, "host")) {
      readTables(*hosts);
    }
  }
  void complain(const toml::source_position& where, const std::string& message) {
    m_found.push_back({m_into.file, where.line, where.column, printable(message)});
  }
  const faults& found() {
    inOrder(m_found, 0);
    return m_found;
  }

 private:
  const toml::table* table(const toml::table& file, std::string_view name) {
    const auto found = file.find(name);
    if (found == file.end()) {
      return nullptr;
    }
    if (!found->second.is_table()) {
      complain(found->second.source().begin, shownWord(name) + " must be a table");
    }
    return found->second.as_table();
  }

  void readUse(const toml::table& use, viewerOfScheme& into) {
    for (const auto& [key, value] : use) {
      if (!isScheme(key.str())) {
        complain(key.source().begin, shownWord(key.str()) + " is not a scheme in lower case");
      }
      if (const auto* viewer = value.as_string()) {
        into[std::string(key.str())] = viewer->get();
      } else {
        complain(value.source().begin, "the viewer of " + shownWord(key.str()) + " must be a text");
      }
    }
  }

  void readHosts(const toml::node& hosts) {
    const toml::array* list = hosts.as_array();
    if (list == nullptr) {
      complain(hosts.source().begin, "\"hosts\" must be a list of texts");
      return;
    }
    for (const toml::node& element : *list) {
      const auto* text = element.as_string();
      const auto host = text != nullptr ? readTrusted(text->get()) : std::nullopt;
      if (host) {
        m_into.trust.push_back(*host);
      } else if (text != nullptr) {
        complain(element.source().begin, shownWord(text->get()) + " is not a host");
      } else {
        complain(element.source().begin, "\"hosts\" must be a list of texts");
      }
    }
  }

  // The tables of hosts, in the order of the text.
  void readTables(const toml::table& hosts) {
    std::vector<std::pair<const toml::key*, const toml::node*>> ordered;
    for (const auto& [key, value] : hosts) {
      ordered.emplace_back(&key, &value);
    }
    std::sort(ordered.begin(), ordered.end(), [](const auto& a, const auto& b) {
      return a.first->source().begin < b.first->source().begin;
    });
    for (const auto& [key, value] : ordered) {
      readTable(*key, *value);
    }
  }

  void readTable(const toml::key& key, const toml::node& value) {
    const auto where = readTrusted(key.str());
    if (!where) {
      complain(key.source().begin, shownWord(key.str()) + " is not a host");
      return;
    }
    if (!m_hosts.insert(std::string(where->below ? 1 : 0, '.') + where->machine.canonical())
             .second) {
      complain(key.source().begin, "there is another table for the host " + shownWord(key.str()));
      return;
    }
    hostTable result{*where};
    if (const toml::table* const said = value.as_table()) {
      readKeys(*said, result);
    } else {
      complain(value.source().begin, shownWord(key.str()) + " must be a table");
    }
    m_into.hosts.push_back(result);
  }

  void readKeys(const toml::table& said, hostTable& into) {
    if (const toml::table* use = table(said, "use")) {
      readUse(*use, into.use);
    }
    if (const auto* user = said.get("user")) {
      into.user = user->value_exact<std::string>();
      if (!into.user || into.user->empty() || faultOfUser(*into.user)) {
        complain(user->source().begin, "\"user\" must be a user name that links may have");
      }
    }
    if (const auto* trust = said.get("trust")) {
      into.trust = trust->value_exact<bool>();
      if (!into.trust) {
        complain(trust->source().begin, "\"trust\" must be true or false");
      }
    }
    if (const auto* through = said.get("through")) {
      into.through = readGateway(through->value_exact<std::string_view>().value_or(""));
      if (!into.through) {
        complain(through->source().begin,
                 R"("through" must be a gateway, as in "user@gateway:port")");
      }
    }
  }

  settings& m_into;
  std::set<std::string> m_hosts;  // that have tables
  faults m_found;
};

}  // namespace

settings readSettings(const std::string& text, const std::string& file, faults& found) {
  settings result;
  result.file = file;
  settingsReader reading(result);
  const toml::parse_result parsed = readToml(text);
  if (parsed) {
    reading.read(parsed.table());
  } else {
    reading.complain(parsed.error().source().begin, std::string(parsed.error().description()));
  }
  const faults& all = reading.found();
  found.insert(found.end(), all.begin(), all.end());
  return result;
}

}  // namespace hopopen
