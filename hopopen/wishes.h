// Changing what the user wants: which viewer opens what, and whom to trust.
#pragma once

#include <string>

#include "definitions.h"
#include "folders.h"
#include "options.h"
#include "preferences.h"
#include "refusal.h"

namespace hopopen {

/// Carries out --use, --forget, --trust or --distrust: checks the words, and changes the
/// user's settings file.  `output` is what to say when all went well.  With a refusal, the
/// file is as it was.
verdict changeWishes(const options& asked, const folders& where, const definitions& known,
                     const preferences& wishes, std::string& output);

}  // namespace hopopen
