// SPDX-License-Identifier: MIT
// What a wish needs: the files, and where programs are.
#pragma once

#include <cstdlib>
#include <functional>
#include <optional>
#include <utility>

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
  explicit surroundings(const folders& where)
      : surroundings(where, readDefinitions(where.viewers)) {}

  /// For a click: definitions in outline where that is known.
  surroundings(const folders& where, const catalog& outlines)
      : surroundings(where, readOutlines(where.viewers, outlines)) {}

  /// What a viewer is chosen among.  Must not outlive this object.
  candidates all() const {
    return {known, wishes, [this](const definition& viewer) { return programs.find(viewer); }};
  }

  definitions known;
  preferences wishes;
  programFinder programs;

 private:
  surroundings(const folders& where, definitions read)
      : known(std::move(read)), wishes(readPreferences(where)), programs(std::getenv("PATH")) {}
};

}  // namespace hopopen
