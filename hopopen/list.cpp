// SPDX-License-Identifier: MIT
#include "list.h"

#include <functional>
#include <optional>
#include <vector>

#include "definition.h"
#include "definitions.h"
#include "enumeration.h"
#include "json.h"
#include "preferences.h"
#include "programs.h"
#include "shown.h"

namespace hopopen {

namespace {

// Who chose a viewer for a scheme; nothing when it is not the chosen one.  Rank is that for
// machines that nobody trusts.
std::optional<chooser> chosenBy(const candidates& all, const definition& viewer,
                                const std::string& scheme) {
  if (const auto wish = all.wishes.viewerFor(scheme)) {
    return wish->viewer == viewer.name ? std::optional(wish->by) : std::nullopt;
  }
  return lowestRank(all, scheme, false) == &viewer ? std::optional(chooser::RANK) : std::nullopt;
}

const char* name(chooser by) {
  return by == chooser::USER ? "user" : by == chooser::ADMINISTRATOR ? "administrator" : "rank";
}

std::string words(chooser by) {
  return by == chooser::USER            ? "chosen by you"
         : by == chooser::ADMINISTRATOR ? "chosen by the administrator"
                                        : "the first by rank";
}

std::string missing(const definition& viewer) {
  const std::string packages = printable(enumeration(viewer.packages));
  return "not installed" + (packages.empty() ? "" : " (install " + packages + ")");
}

}  // namespace

std::string listAsText(const candidates& all) {
  std::string result;
  for (const definition& viewer : all.known.viewers) {
    const auto program = all.find(viewer);
    result += viewer.name + ": " + printable(viewer.title) + '\n';
    result += "  opens         " + enumeration(viewer.schemes) + '\n';
    result +=
        "  program       " + (program ? printable(program->viewer.path) : missing(viewer)) + '\n';
    if (!viewer.unguarded.empty()) {
      result += "  lets through  " + printable(enumeration(viewer.unguarded)) + '\n';
    }
    for (const std::string& scheme : viewer.schemes) {
      if (const auto by = chosenBy(all, viewer, scheme)) {
        result += "  for " + scheme + " links " + words(*by) + '\n';
      }
    }
  }
  return result;
}

std::string listAsJSON(const candidates& all) {
  json viewers = json::array();
  for (const definition& viewer : all.known.viewers) {
    const auto program = all.find(viewer);
    json chosen = json::object();
    for (const std::string& scheme : viewer.schemes) {
      if (const auto by = chosenBy(all, viewer, scheme)) {
        chosen[scheme] = name(*by);
      }
    }
    json& shown = viewers.emplace_back();
    shown["name"] = viewer.name;
    shown["title"] = jsonText(viewer.title);
    shown["schemes"] = viewer.schemes;
    shown["file"] = program ? jsonText(program->viewer.path) : json();
    shown["unguarded"] = jsonTexts(viewer.unguarded);
    shown["chosen"] = chosen;
  }
  json result;
  result["viewers"] = viewers;
  return jsonLine(result);
}

}  // namespace hopopen
