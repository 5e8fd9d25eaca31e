#include "check.h"

#include "definitions.h"
#include "json.h"
#include "preferences.h"
#include "shown.h"

namespace hopopen {

findings checkFiles(const folders& where) {
  const definitions all = readAllDefinitions(where.viewers);
  const preferences wishes = readPreferences(where);
  findings result{all.found, all.ignored};
  result.found.insert(result.found.end(), wishes.found.begin(), wishes.found.end());
  return result;
}

std::string findingsAsText(const findings& told) {
  std::string result;
  for (const fault& one : told.found) {
    result += one.lineOfText() + '\n';
  }
  for (const std::string& file : told.ignored) {
    result += printable(file) + ": not looked at; the name of a definition is NAME.toml, with a " +
              "NAME of small letters, digits and \"-\"\n";
  }
  return result.empty() ? "no fault\n" : result;
}

std::string findingsAsJSON(const findings& told) {
  json list = json::array();
  for (const fault& one : told.found) {
    json& shown = list.emplace_back();
    shown["file"] = jsonText(one.file);
    shown["line"] = one.line;
    shown["column"] = one.column;
    shown["message"] = one.message;
  }
  json result;
  result["faults"] = list;
  return jsonLine(result);
}

}  // namespace hopopen
