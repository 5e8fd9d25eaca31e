#pragma once
#include <map>
#include <optional>
#include <string>
#include <vector>
#include "trusted.h"
namespace hopopen {
struct change {
  std::map<std::string, std::optional<std::string>> use;
  std::vector<trustedHost> trust, distrust;
};
}  // namespace hopopen
