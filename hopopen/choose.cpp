// SPDX-License-Identifier: MIT
#include "choose.h"

#include <algorithm>
#include <cstddef>
#include <tuple>

#include "enumeration.h"
#include "shown.h"

namespace hopopen {

namespace {

constexpr std::size_t MOST_PACKAGES = 3;

// How to undo a choice that cannot be followed.
std::string remedy(const wanted& wish, const std::string& scheme) {
  const std::string what = scheme + forHosts(wish.where);
  switch (wish.by) {
    case chooser::USER:
      return "choose another with \"hopopen --use NAME " + what + "\", or none with \"hopopen " +
             "--forget " + what + "\"";
    case chooser::ADMINISTRATOR:
      return "choose another with \"hopopen --use NAME " + scheme + "\"";
    default:
      return "choose another";
  }
}

std::string installation(const std::vector<std::string>& packages) {
  return packages.empty() ? "Install it"
                          : "Install the package" + std::string(packages.size() > 1 ? "s " : " ") +
                                enumeration(packages);
}

verdict follow(const candidates& among, const std::string& scheme, const wanted& wish,
               choice& into) {
  const std::string other = remedy(wish, scheme);
  const definition* const viewer = among.known.named(wish.viewer);
  if (viewer == nullptr) {
    return faultOutside(code::CHOICE, "The chosen viewer " + shownWord(wish.viewer) +
                                          " is not known. See \"hopopen --list\", and " + other +
                                          ".");
  }
  if (!viewer->opens(scheme)) {
    return faultOutside(code::CHOICE, "The chosen viewer " + printable(viewer->title) +
                                          " does not open " + scheme +
                                          " links. See \"hopopen --list\", and " + other + ".");
  }
  const auto program = among.find(*viewer);
  if (!program) {
    return faultOutside(code::CHOICE, "The chosen viewer " + printable(viewer->title) +
                                          " is not installed. " + installation(viewer->packages) +
                                          ", or " + other + ".");
  }
  into = {viewer, *program, wish.by, wish.where};
  return {};
}

// Packages to install, without those of viewers that would then not be taken.
std::vector<std::string> packagesFor(const std::vector<const definition*>& viewers, bool trusted) {
  std::vector<std::string> result;
  for (const definition* const viewer : viewers) {
    for (const std::string& package : viewer->packages) {
      const bool known = std::find(result.begin(), result.end(), package) != result.end();
      if ((trusted || viewer->unguarded.empty()) && !known && result.size() < MOST_PACKAGES) {
        result.push_back(package);
      }
    }
  }
  return result;
}

// Whether the user can trust the host by --trust: not when administrators distrust just this one.
bool mayTrust(const hostRules& rules) {
  return !rules.trust || rules.trust->byUser || rules.trust->where.below;
}

// About a viewer that is there, but not for a machine that nobody trusts.  `install` is empty when
// no viewer is better.
refusal letsThrough(const definition& viewer, const occasion& what, const std::string& install) {
  const std::string title = printable(viewer.title);
  std::string message = title;
  message += " is installed, but cannot keep this from a machine that you do not trust: ";
  message += printable(enumeration(viewer.unguarded)) + ". ";
  message += install.empty() ? "Use " : install + " Or use ";
  message += title + " all the same with \"hopopen --use ";
  message += viewer.name + ' ' + what.scheme + '"';
  if (mayTrust(what.rules)) {
    message += ", or trust the machine with \"hopopen --trust " + what.host + '"';
  }
  return faultOutside(code::VIEWER, message + '.');
}

refusal nothingInstalled(const candidates& among, const occasion& what) {
  const auto viewers = ranked(among.known, what.scheme);
  const auto packages = packagesFor(viewers, what.rules.trusted);
  const std::string install =
      packages.empty() ? "Install one; see \"hopopen --list\"."
      : packages.size() == 1
          ? "Install the package " + packages[0] + "."
          : "Install one of these packages: " + enumeration(packages, " or ") + ".";
  for (const definition* const viewer : viewers) {
    if (viewer->unguarded.empty() || !among.find(*viewer)) {
      continue;
    }
    const bool better = std::any_of(viewers.begin(), viewers.end(),
                                    [](const definition* one) { return one->unguarded.empty(); });
    return letsThrough(*viewer, what, better ? install : "");
  }
  return faultOutside(code::VIEWER,
                      "No viewer for " + what.scheme + " links is installed. " + install);
}

}  // namespace

std::string forHosts(const std::optional<trustedHost>& where) {
  return where ? " --for " + where->text() : "";
}

std::vector<const definition*> ranked(const definitions& known, const std::string& scheme) {
  std::vector<const definition*> result;
  for (const definition& one : known.viewers) {
    if (one.opens(scheme)) {
      result.push_back(&one);
    }
  }
  // Those of one rank stay in their order.
  std::sort(result.begin(), result.end(), [](const definition* a, const definition* b) {
    return std::tie(a->rank, a) < std::tie(b->rank, b);
  });
  return result;
}

verdict choose(const candidates& among, const occasion& what,
               const std::optional<std::string>& option, choice& into) {
  const auto wish = option ? std::optional(wanted{*option, chooser::OPTION})
                           : viewerFor(among.wishes, what.scheme, what.rules);
  if (wish) {
    return follow(among, what.scheme, *wish, into);
  }
  for (const definition* const viewer : ranked(among.known, what.scheme)) {
    if (!viewer->unguarded.empty() && !what.rules.trusted) {
      continue;
    }
    if (const auto program = among.find(*viewer)) {
      into = {viewer, *program, chooser::RANK, {}};
      return {};
    }
  }
  return nothingInstalled(among, what);
}

const definition* lowestRank(const candidates& among, const std::string& scheme, bool trusted) {
  for (const definition* const viewer : ranked(among.known, scheme)) {
    if ((viewer->unguarded.empty() || trusted) && among.find(*viewer)) {
      return viewer;
    }
  }
  return nullptr;
}

}  // namespace hopopen
