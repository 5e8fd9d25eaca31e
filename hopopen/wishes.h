// SPDX-License-Identifier: MIT
// Changing what the user wants: which viewer opens what, and whom to trust.
#pragma once

#include <string>

#include "definitions.h"
#include "folders.h"
#include "options.h"
#include "refusal.h"

namespace hopopen {

/// Carries out --use, --forget, --trust or --distrust: checks the words, and changes the
/// user's settings file.  `output` is what to say when all went well: what else there is that a
/// host is trusted or distrusted by.  With a refusal, the file is as it was.
verdict changeWishes(const options& asked, const folders& where, const definitions& known,
                     std::string& output);

}  // namespace hopopen
