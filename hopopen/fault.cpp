// SPDX-License-Identifier: MIT
#include "fault.h"

#include <map>
#include <utility>

#include "shown.h"

namespace hopopen {

std::string fault::lineOfText() const {
  return printable(file) + ':' + std::to_string(line) + ':' + std::to_string(column) + ": " +
         message;
}

void inOrder(faults& found, std::size_t first) {
  std::multimap<std::pair<std::uint32_t, std::uint32_t>, fault> byPlace;  // each as they came
  for (std::size_t i = first; i < found.size(); i++) {
    const std::pair place(found[i].line, found[i].column);
    byPlace.emplace(place, std::move(found[i]));
  }
  found.erase(found.begin() + static_cast<std::ptrdiff_t>(first), found.end());
  for (auto& [place, one] : byPlace) {
    found.push_back(std::move(one));
  }
}

}  // namespace hopopen
