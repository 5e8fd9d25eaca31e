#include "decide.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>

#include "definition.h"
#include "definitions.h"
#include "enumeration.h"
#include "fault.h"
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

// The viewers that are installed and could open the link as it is.
std::string alternatives(const opening& result, const candidates& among) {
  std::vector<std::string> titles;
  std::string first;
  for (const definition* const other : ranked(among.known, result.what.scheme)) {
    const auto program = among.find(*other);
    filling ignored;
    if (program && !fill(result.what, result.rules, *other, *program, ignored)) {
      titles.push_back(printable(other->title));
      first = first.empty() ? other->name : first;
    }
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

verdict open(const std::optional<std::string>& viewer, const candidates& among, opening& into) {
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
    return refusal{code::SETTINGS,
                   "The settings have a fault, and must be corrected first. " +
                       among.wishes.found.front().lineOfText() + '.',
                   {}};
  }
  into.rules = rulesFor(among.wishes, *what.machine, what.scheme);
  into.trusted = into.rules.trusted;
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
  if (auto fault = fill(what, into.rules, *into.chosen.viewer, into.chosen.program, filled)) {
    if (fault->why == code::RESTRICTION && !isUnclear(what, *fault)) {
      into.unread = outlines(among.known, what.scheme);
      fault->message += alternatives(into, among);
    }
    return fault;
  }
  into.filled = std::move(filled);
  return {};
}

}  // namespace

refusal about(const link& what, refusal why) {
  why.message = "Cannot open " + shownWord(what.text) + ". " + why.message;
  return why;
}

opening decide(const std::string& text, const std::optional<std::string>& viewer,
               const candidates& among) {
  opening result;
  result.why = readScheme(text, result.what);
  if (!result.why) {
    result.why = open(viewer, among, result);
  }
  if (result.why) {
    result.why = about(result.what, *result.why);
  }
  return result;
}

}  // namespace hopopen
