// The launcher's parts between its entry and the viewer.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "assoclist.h"

/// Applies the options that name configuration items or trace flags, and launches
/// with the rest.  `args` holds at least the URI; keys of `params` are compared
/// ignoring case.  Returns only when nothing was launched, then -1.
int process(const std::vector<std::string>& args, const assocList& params);

/// Sets up the run time, applies the options that name configuration items or trace
/// flags, and returns what `finish` makes of the rest.
int process(const assocList& params, const std::function<int(const assocList& rest)>& finish);

/// Becomes the viewer for the URI `args[0]`, steered by the options "log",
/// "program", "style" and "portArg".  Returns only when that failed, then -1.
int processAug(const std::vector<std::string>& args, const assocList& params);
