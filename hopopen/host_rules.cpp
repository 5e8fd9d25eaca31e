// SPDX-License-Identifier: MIT
#include "host_rules.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "settings.h"

namespace hopopen {

namespace {

// What the closest table says of the host, among those of the user or of the administrators.
// `read` gives what a table has, or nothing.
template <class Value, class Reader>
void takeClosest(const preferences& wishes, const host& machine, bool ofUser, const Reader& read,
                 std::optional<said<Value>>& into) {
  for (std::size_t i = 0; i < wishes.files.size(); i++) {
    if (wishes.isUsers(i) != ofUser) {
      continue;
    }
    for (const hostTable& table : wishes.files[i].hosts) {
      if (!table.where.covers(machine) || (into && into->where.length() >= table.where.length())) {
        continue;
      }
      if (const std::optional<Value> value = read(table)) {
        into = said<Value>{*value, table.where, wishes.files[i].file, ofUser};
      }
    }
  }
}

template <class Value, class Reader>
std::optional<said<Value>> closest(const preferences& wishes, const host& machine,
                                   const Reader& read) {
  std::optional<said<Value>> result;
  takeClosest(wishes, machine, true, read, result);
  if (!result) {
    takeClosest(wishes, machine, false, read, result);
  }
  return result;
}

std::optional<said<bool>> trustOf(const preferences& wishes, const host& machine) {
  return closest<bool>(wishes, machine, [](const hostTable& table) { return table.trust; });
}

bool trusts(const preferences& wishes, const host& machine,
            const std::optional<said<bool>>& trust) {
  if (trust && trust->value) {
    return true;
  }
  return std::any_of(wishes.files.begin(), wishes.files.end(), [&](const settings& file) {
    return std::any_of(file.trust.begin(), file.trust.end(), [&](const trustedHost& one) {
      return one.covers(machine) && (!trust || one.length() > trust->where.length());
    });
  });
}

}  // namespace

hostRules rulesFor(const preferences& wishes, const host& machine, const std::string& scheme) {
  hostRules result;
  result.viewer = closest<std::string>(wishes, machine, [&](const hostTable& table) {
    const auto entry = table.use.find(scheme);
    return entry == table.use.end() ? std::nullopt : std::optional(entry->second);
  });
  result.user =
      closest<std::string>(wishes, machine, [](const hostTable& table) { return table.user; });
  result.trust = trustOf(wishes, machine);
  result.through =
      closest<gateway>(wishes, machine, [](const hostTable& table) { return table.through; });
  result.trusted = trusts(wishes, machine, result.trust);
  return result;
}

bool isTrusted(const preferences& wishes, const host& machine) {
  return trusts(wishes, machine, trustOf(wishes, machine));
}

std::optional<wanted> viewerFor(const preferences& wishes, const std::string& scheme,
                                const hostRules& rules) {
  auto forAll = wishes.viewerFor(scheme);
  if (!rules.viewer || (!rules.viewer->byUser && forAll && forAll->by == chooser::USER)) {
    return forAll;
  }
  return wanted{rules.viewer->value, rules.viewer->byUser ? chooser::USER : chooser::ADMINISTRATOR,
                rules.viewer->where};
}

}  // namespace hopopen
