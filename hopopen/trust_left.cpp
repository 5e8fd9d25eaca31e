// SPDX-License-Identifier: MIT
#include "trust_left.h"

#include <cstddef>
#include <optional>

#include "host_rules.h"
#include "settings.h"
#include "shown.h"

namespace hopopen {

namespace {

// What a table says of just these hosts: the user's, or the first of the administrators.  For one
// host, tables for its domains count, too.
std::optional<said<bool>> tableOf(const trustedHost& hosts, const preferences& wishes) {
  if (!hosts.below) {
    return rulesFor(wishes, hosts.machine, {}).trust;
  }
  for (std::size_t i = 0; i < wishes.files.size(); i++) {
    for (const hostTable& table : wishes.files[i].hosts) {
      if (table.where == hosts && table.trust) {
        return said<bool>{*table.trust, table.where, wishes.files[i].file, wishes.isUsers(i)};
      }
    }
  }
  return {};
}

std::string line(const trustedHost& hosts, const std::string& what, const trustedHost& where,
                 const std::string& file) {
  return hosts.text() + " is still " + what + " by " + where.text() + " in " + printable(file) +
         '\n';
}

// Whether an entry of a list trusts these hosts, although a table may distrust them.
bool counts(const trustedHost& entry, const trustedHost& hosts,
            const std::optional<said<bool>>& table) {
  return (entry == hosts || (!hosts.below && entry.covers(hosts.machine))) &&
         (!table || entry.length() > table->where.length());
}

}  // namespace

std::string stillTrusted(const std::vector<trustedHost>& hosts, const preferences& wishes) {
  std::string result;
  for (const trustedHost& host : hosts) {
    const std::optional<said<bool>> table = tableOf(host, wishes);
    if (table && table->value) {
      result += line(host, "trusted", table->where, table->file);
      continue;
    }
    for (const settings& file : wishes.files) {
      for (const trustedHost& entry : file.trust) {
        result += counts(entry, host, table) ? line(host, "trusted", entry, file.file) : "";
      }
    }
  }
  return result;
}

std::string stillDistrusted(const std::vector<trustedHost>& hosts, const preferences& wishes) {
  std::string result;
  for (const trustedHost& host : hosts) {
    const std::optional<said<bool>> table = tableOf(host, wishes);
    if (table && !table->value && table->where.length() >= host.length()) {
      result += line(host, "distrusted", table->where, table->file);
      result += R"(  Write "trust = true" below [host.")" + host.text() +
                "\"] in your own settings if you want it all the same.\n";
    }
  }
  return result;
}

}  // namespace hopopen
