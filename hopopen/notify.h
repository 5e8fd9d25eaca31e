// SPDX-License-Identifier: MIT
// Showing a message on the desktop.
#pragma once

#include <string>
#include <vector>

#include "programs.h"

namespace hopopen {

/// How one program is asked to show a message: its arguments, its own name first.
///
/// The message is one argument, and no program reads it as markup or as an option.
std::vector<std::string> notification(const std::string& program, const std::string& message);

/// The programs that can show a message, the preferred one first.
extern const std::vector<std::string> NOTIFIERS;

/// True when a message is worth showing: nobody reads standard error, and there is a desktop.
bool isOnDesktop();

/// Shows the message by the first program that is there and does not fail, and does not wait
/// for it.
void notify(const std::string& message, const programFinder& programs);

}  // namespace hopopen
