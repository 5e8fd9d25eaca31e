// What hopexplain prints: a launch, told instead of done.
#pragma once

#include <string>

#include "assoclist.h"
#include "explain_search.h"
#include "plan.h"

/// What an option did.
enum optionUse : int {
  OU_ITEM,    ///< it set a configuration item
  OU_FLAG,    ///< it switched a trace flag on
  OU_LAUNCH,  ///< it steers the launch
  OU_NONE     ///< nothing: nobody knows it
};

/// One launch and what led to it.
struct explanation {
  /// Decides and searches.  `rest` is what is left of the options once they were applied,
  /// `noSet` why the launch would get no semaphore set, empty when it would.
  explanation(const std::string& uri, const assocList& options, const assocList& rest,
              const std::string& noSet = "");

  std::string given;     ///< the URI as given
  assocList options;     ///< every keyword option
  assocList rest;        ///< those that name neither an item nor a trace flag
  launchPlan plan;       ///< what comes of them
  foundProgram found;    ///< the file behind the plan's program
  std::string noSet;     ///< why there is no semaphore set, which ends a launch at once
  std::string logError;  ///< why the log would have no lines, or not all; else empty

  /// True when a launch would reach an executable.
  bool launches() const { return noSet.empty() && !found.path.empty(); }
  /// Why not, in one sentence; empty when it launches.
  std::string obstacle() const;
  /// What the option `key` did.
  /// REQUIRES: the options were applied, by `process`.
  optionUse use(const std::string& key) const;
  /// Where and why the URI's text does not parse.
  uriParse stop() const { return URI().parse(plan.text); }
};

/// For people: a line for each fact, and a caret under what does not parse.  Whatever
/// is not printable ASCII is escaped.
std::string asText(const explanation& launch);

/// For programs: one JSON object (RFC 8259), of which every byte is ASCII.  Each byte that
/// is not UTF-8 is U+FFFD; the URI and the arguments are there in hexadecimal, too.
std::string asJSON(const explanation& launch);

/// `text` as one word for a shell: as it is, in single quotes, or, where it holds what
/// is not printable ASCII, in $'' with escapes.  Bash, for one, reads all three.
std::string shellWord(const std::string& text);
