// SPDX-License-Identifier: MIT
// What a launch comes to, decided before anything is opened or started.
#pragma once

#include <string>

#include "assoclist.h"
#include "uri.h"

/// A launch as decided from the URI as it was given and the options of the launch.
/// Making one reads the configuration and touches nothing else.
struct launchPlan {
  launchPlan(const std::string& given, const assocList& options);
  launchPlan(const launchPlan&) = delete;
  launchPlan& operator=(const launchPlan&) = delete;
  ~launchPlan() = default;

  std::string text;            ///< what was given, percent-decoded
  URI uri;                     ///< the parsed text; not okay when there is nothing to launch
  std::string program;         ///< the viewer; empty when there is none for the scheme
  argsStyle style;             ///< how options are passed
  char** arguments = nullptr;  ///< the viewer's vector, owned by `uri`; null without a program
};
