// SPDX-License-Identifier: MIT
#include "json.h"

#include "conversion.h"

namespace hopopen {

json jsonText(std::string_view text) {
  std::string valid;
  const auto* next = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* const end = next + text.size();
  for (; next < end; next++) {
    const unsigned char* const start = next;
    if (getUTF8(next, static_cast<unsigned int>(end - next), true) < 0) {
      valid += "\xEF\xBF\xBD";
    } else {
      valid.append(start, next + 1);
    }
  }
  return valid;
}

json jsonTexts(const std::vector<std::string>& texts) {
  json result = json::array();
  for (const std::string& text : texts) {
    result.push_back(jsonText(text));
  }
  return result;
}

std::string jsonLine(const json& value) {
  return value.dump(-1, ' ', true, json::error_handler_t::replace) + '\n';
}

}  // namespace hopopen
