// SPDX-License-Identifier: MIT
// A launch that is explained and not made: what hopexplain knows about it.
#pragma once

#include <string>

#include "assoclist.h"
#include "find_program.h"
#include "plan.h"
#include "uri.h"

/// What an option did.
enum optionUse : int {
  OU_ITEM,    ///< it set a configuration item
  OU_FLAG,    ///< it switched a trace flag on
  OU_LAUNCH,  ///< it steers the launch
  OU_NONE     ///< nothing: it is not known
};

/// One launch and what led to it.
struct explanation {
  /// Decides and searches.  `rest` is what is left of the options once they were applied.
  /// `noSet` says why the launch would get no semaphore set; empty when it would.
  explanation(const std::string& uri, const assocList& options, const assocList& rest,
              const std::string& noSet = "");

  std::string given;     ///< the URI as given
  assocList options;     ///< every keyword option
  assocList rest;        ///< those that name neither an item nor a trace flag
  launchPlan plan;       ///< what follows from them
  foundProgram found;    ///< the file of the plan's program
  std::string noSet;     ///< why there is no semaphore set, which ends a launch at once
  std::string logError;  ///< why the log would have no lines, or not all; else empty

  /// True when a launch would reach an executable.
  bool launches() const { return noSet.empty() && !found.path.empty(); }
  /// Why not, in one sentence; empty when it launches.
  std::string obstacle() const;
  /// What the option `key` did.
  /// REQUIRES: a `session` has applied the options.
  optionUse use(const std::string& key) const;
  /// Where and why the URI's text does not parse.
  uriParse stop() const { return URI().parse(plan.text); }
};
