#include "settings.h"

#include <optional>
#include <string_view>

#include "characters.h"
#include "shown.h"
#include "toml.h"
#include "toml_read.h"

namespace hopopen {

namespace {

// Reads one file.  Every fault is noted, and reading goes on.
class reader {
 public:
  explicit reader(settings& into) : m_into(into) {}

  void read(const toml::table& file) {
    if (const toml::table* use = table(file, "use")) {
      readUse(*use);
    }
    if (const toml::table* trust = table(file, "trust")) {
      const auto hosts = trust->find("hosts");
      if (hosts != trust->end()) {
        readHosts(hosts->second);
      }
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

  void readUse(const toml::table& use) {
    for (const auto& [key, value] : use) {
      if (!isScheme(key.str())) {
        complain(key.source().begin, shownWord(key.str()) + " is not a scheme in lower case");
      }
      if (const auto* viewer = value.as_string()) {
        m_into.use[std::string(key.str())] = viewer->get();
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

  settings& m_into;
  faults m_found;
};

}  // namespace

settings readSettings(const std::string& text, const std::string& file, faults& found) {
  settings result;
  result.file = file;
  reader reading(result);
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
