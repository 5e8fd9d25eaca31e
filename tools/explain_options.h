// SPDX-License-Identifier: MIT
// The options that hopexplain has in addition to those of the launcher.
#pragma once

#include <string>

#include "assoclist.h"

/// The forms of the explanation.
enum explainForm : int { EF_TEXT, EF_JSON, EF_UNKNOWN };

/// Takes the option "format" out of the options, and returns what it asks for: text when it
/// is missing or empty.  For an unknown one it writes a message to standard error.
explainForm takeForm(assocList& options);

/// What `--help` prints.
std::string helpText();
/// What `--version` prints.
std::string versionText();
