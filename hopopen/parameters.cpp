// SPDX-License-Identifier: MIT
#include "parameters.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "characters.h"
#include "percent.h"
#include "piece.h"
#include "rdp_pairs.h"
#include "refusal.h"
#include "shown.h"

namespace hopopen {

namespace {

constexpr std::size_t LONGEST_VALUE = 4096;

verdict readName(const piece& encoded, code why, std::string& into) {
  into = decode(encoded.text);
  for (std::size_t i = 0; i < into.size(); i++) {
    const bool allowed =
        i == 0 ? isLetter(into[i]) : isWord(into[i]) || into[i] == '.' || into[i] == '-';
    if (!allowed || i == LONGEST_PARAMETER) {
      return faultAt(why, origin(encoded, i), BAD_NAME);
    }
  }
  if (into.empty()) {
    return faultAt(why, encoded.start, NO_NAME);
  }
  return {};
}

// Reads `name` or `name=value`, and adds it unless it is there already.
verdict readParameter(piece text, code why, std::vector<parameter>& into) {
  const piece name = text.takeUntil("=");
  parameter read{.name = {}, .value = {}, .position = name.start};
  if (auto fault = readName(name, why, read.name)) {
    return fault;
  }
  read.valuePosition = text.start;
  if (auto fault = readValue(text, why, read.value)) {
    return fault;
  }
  return addParameter(std::move(read), why, into);
}

}  // namespace

std::string parameter::key() const {
  return type == 0 ? name : pairKey(name);
}

std::string parameter::meant() const {
  if (type != 'i') {
    return value;
  }
  const std::size_t sign = value.starts_with('-') ? 1 : 0;
  const std::size_t first = value.find_first_not_of('0', sign);
  return first == std::string::npos ? "0" : value.substr(0, sign) + value.substr(first);
}

bool parameter::holdsPassword() const {
  return type == 0 ? isSecret(name) : lower(name).find("password") != std::string::npos;
}

verdict readValue(const piece& encoded, code why, std::string& into) {
  into = decode(encoded.text);
  for (std::size_t i = 0; i < into.size(); i++) {
    if (isControl(into[i]) || i == LONGEST_VALUE) {
      return faultAt(
          why, origin(encoded, i),
          "A parameter of the link has a value that is too long or has a control character. "
          "Check the link.");
    }
  }
  return {};
}

verdict addParameter(parameter read, code why, std::vector<parameter>& into) {
  for (const parameter& other : into) {
    if (sameLetters(other.key(), read.key())) {
      return other.value == read.value && other.type == read.type
                 ? verdict()
                 : faultAt(why, read.position,
                           "A parameter is given twice, with two values. Check the link.");
    }
  }
  into.push_back(std::move(read));
  return {};
}

verdict readParameters(piece text, const char* separators, code why, std::vector<parameter>& into) {
  while (!text.text.empty()) {
    const piece next = text.takeUntil(separators);
    if (next.text.empty()) {
      continue;
    }
    if (auto fault = readParameter(next, why, into)) {
      return fault;
    }
  }
  return {};
}

}  // namespace hopopen
