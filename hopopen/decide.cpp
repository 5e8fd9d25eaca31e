// SPDX-License-Identifier: MIT
#include "decide.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>

#include "definition.h"
#include "definitions.h"
#include "enumeration.h"
#include "fault.h"
#include "gateway.h"
#include "host.h"
#include "host_rules.h"
#include "link_reader.h"
#include "meaning.h"
#include "parameters.h"
#include "preferences.h"
#include "programs.h"
#include "scheme.h"
#include "scheme_rules.h"
#include "shown.h"

namespace hopopen {

namespace {

// Whether the fault is that the link does not say what it asks for: no viewer could do it.
bool isUnclear(const link& what, const refusal& fault) {
  return std::any_of(what.parameters.begin(), what.parameters.end(), [&](const parameter& one) {
    return one.position == fault.position &&
           meaningIn(rulesOf(what.scheme), one) == meaning::VIEW_ONLY &&
           readAnswer(one.meant()) == answer::UNCLEAR;
  });
}

// Whether the fault is on the way to the machine: no viewer could go there.
bool isOnTheWay(const route& way, const refusal& fault) {
  return way.fault && way.fault->message == fault.message;
}

// The viewers that could go through a gateway if they were installed.
std::string otherTunnellers(const definitions& known, const std::string& scheme) {
  std::vector<std::string> titles;
  std::vector<std::string> packages;
  for (const definition* const viewer : ranked(known, scheme)) {
    if (viewer->tunnelled) {
      titles.push_back(printable(viewer->title));
      packages.insert(packages.end(), viewer->packages.begin(), viewer->packages.end());
    }
  }
  if (titles.empty()) {
    return " No viewer for " + scheme + " links can.";
  }
  return ' ' + enumeration(titles) + " can." +
         (packages.empty() ? "" : " Install " + printable(enumeration(packages, " or ")) + '.');
}

// The viewers that are installed and could open the link as it is.
std::string alternatives(const opening& result, const candidates& among) {
  std::vector<std::string> titles;
  std::string first;
  for (const definition* const other : ranked(among.known, result.what.scheme)) {
    const auto program = among.find(*other);
    filling ignored;
    if (program && !fill(result.what, result.rules, *result.way, *other, *program, ignored)) {
      titles.push_back(printable(other->title));
      first = first.empty() ? other->name : first;
    }
  }
  if (titles.empty() && result.way->through && !result.chosen.viewer->tunnelled) {
    return otherTunnellers(among.known, result.what.scheme);
  }
  if (titles.empty()) {
    return " No other viewer that is installed can do it. Ask for a link without it.";
  }
  return ' ' + enumeration(titles) + " can. To use " + (titles.size() > 1 ? "the first" : "it") +
         ", type \"hopopen --use " + first + ' ' + result.what.scheme +
         forHosts(result.chosen.where) + "\".";
}

// The viewers for a scheme that are known in outline only.
std::vector<std::string> outlines(const definitions& known, const std::string& scheme) {
  std::vector<std::string> result;
  for (const definition& viewer : known.viewers) {
    if (!viewer.whole && viewer.opens(scheme)) {
      result.push_back(viewer.name);
    }
  }
  return result;
}

verdict findOpening(const std::optional<std::string>& viewer, const candidates& among,
                    opening& into) {
  link& what = into.what;
  if (const char* const never = rulesOf(what.scheme).never) {
    return refusal{code::SCHEME, never, 0};
  }
  if (!among.known.open(what.scheme)) {
    return refusal{code::SCHEME,
                   "No viewer is known for " + shownWord(what.scheme) +
                       " links. \"hopopen --list\" shows which links can be opened.",
                   0};
  }
  if (auto fault = readRest(what)) {
    return fault;
  }
  if (!among.wishes.found.empty()) {
    return faultOutside(code::SETTINGS, "The settings have a fault, and must be corrected first. " +
                                            among.wishes.found.front().lineOfText() + '.');
  }
  into.rules = rulesFor(among.wishes, *what.machine, what.scheme);
  const auto configured =
      into.rules.through ? std::optional(into.rules.through->value) : std::nullopt;
  into.way = findRoute(what, configured,
                       [&](const host& machine) { return isTrusted(among.wishes, machine); });
  into.trusted = into.rules.trusted = into.way->trusted;
  const occasion when{what.scheme, what.machine->inLink(), into.rules};
  if (auto fault = choose(among, when, viewer, into.chosen)) {
    into.unread = outlines(among.known, what.scheme);
    return fault;
  }
  if (!into.chosen.viewer->whole) {
    into.unread = {into.chosen.viewer->name};
    return {};
  }
  filling filled;
  if (auto fault =
          fill(what, into.rules, *into.way, *into.chosen.viewer, into.chosen.program, filled)) {
    if (fault->why == code::RESTRICTION && !isUnclear(what, *fault) &&
        !isOnTheWay(*into.way, *fault)) {
      into.unread = outlines(among.known, what.scheme);
      fault->message += alternatives(into, among);
    }
    return fault;
  }
  into.filled = std::move(filled);
  return {};
}

}  // namespace

void fillSocket(opening& decided, const std::string& socket) {
  decided.way->socket = socket;
  filling anew;
  fill(decided.what, decided.rules, *decided.way, *decided.chosen.viewer, decided.chosen.program,
       anew);
  decided.filled = std::move(anew);
}

refusal about(const link& what, refusal why) {
  why.message = "Cannot open " + shownWord(what.text) + ". " + why.message;
  return why;
}

opening decide(const std::string& text, const std::optional<std::string>& viewer,
               const candidates& among) {
  opening result;
  result.why = readScheme(text, result.what);
  if (!result.why) {
    result.why = findOpening(viewer, among, result);
  }
  if (result.why) {
    result.why = about(result.what, *result.why);
  }
  return result;
}

}  // namespace hopopen
