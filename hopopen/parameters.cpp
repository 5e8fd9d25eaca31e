#include "parameters.h"

#include <optional>
#include <string_view>
#include <utility>

#include "characters.h"
#include "percent.h"

namespace hopopen {

namespace {

constexpr std::size_t LONGEST_PARAMETER = 64;
constexpr std::size_t LONGEST_VALUE = 4096;

verdict at(code why, std::size_t position, const char* message) {
  return refusal{why, message, position};
}

verdict readName(const piece& encoded, code why, std::string& into) {
  into = decode(encoded.text);
  for (std::size_t i = 0; i < into.size(); i++) {
    const bool allowed =
        i == 0 ? isLetter(into[i]) : isWord(into[i]) || into[i] == '.' || into[i] == '-';
    if (!allowed || i == LONGEST_PARAMETER) {
      return at(why, origin(encoded, i),
                "A parameter of the link has a name that is too long or has a character that "
                "names cannot have. Check the link.");
    }
  }
  if (into.empty()) {
    return at(why, encoded.start, "A parameter of the link has no name. Check the link.");
  }
  return {};
}

verdict readValue(const piece& encoded, code why, std::string& into) {
  into = decode(encoded.text);
  for (std::size_t i = 0; i < into.size(); i++) {
    if (isControl(into[i]) || i == LONGEST_VALUE) {
      return at(why, origin(encoded, i),
                "A parameter of the link has a value that is too long or has a control character. "
                "Check the link.");
    }
  }
  return {};
}

// Reads `name` or `name=value`, and adds it unless it is there already.
verdict readParameter(piece text, code why, std::vector<parameter>& into) {
  const piece name = text.takeUntil("=");
  parameter read{{}, {}, name.start};
  if (auto fault = readName(name, why, read.name)) {
    return fault;
  }
  if (auto fault = readValue(text, why, read.value)) {
    return fault;
  }
  for (const parameter& other : into) {
    if (sameLetters(other.name, read.name)) {
      return other.value == read.value
                 ? verdict()
                 : at(why, read.position,
                      "A parameter is given twice, with two values. Check the link.");
    }
  }
  into.push_back(std::move(read));
  return {};
}

}  // namespace

verdict readParameters(piece text, const char* separator, code why, std::vector<parameter>& into) {
  while (!text.text.empty()) {
    const piece next = text.takeUntil(separator);
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
