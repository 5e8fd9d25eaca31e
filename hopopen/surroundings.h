// SPDX-License-Identifier: MIT
// What a wish needs: the files, and where programs are.
#pragma once

#include <cstdlib>
#include <functional>
#include <optional>

#include "catalog.h"
#include "choose.h"
#include "definition.h"
#include "definitions.h"
#include "folders.h"
#include "preferences.h"
#include "programs.h"

namespace hopopen {

/// All that is read before a wish is fulfilled.
struct surroundings {
  explicit surroundings(const folders& where, const catalog& outlines = {})
      : known(readDefinitions(where.viewers, outlines)),
        wishes(readPreferences(where)),
        programs(std::getenv("PATH")) {}

  /// What a viewer is chosen among.  Must not outlive this object.
  candidates all() const {
    return {known, wishes, [this](const definition& viewer) { return programs.find(viewer); }};
  }

  definitions known;
  preferences wishes;
  programFinder programs;
};

}  // namespace hopopen
