// SPDX-License-Identifier: MIT
#include "check.h"

#include <cstddef>
#include <functional>
#include <iterator>
#include <optional>
#include <set>
#include <vector>

#include "check_browsers.h"
#include "check_desktop.h"
#include "check_machine.h"
#include "choose.h"
#include "click_places.h"
#include "definition.h"
#include "definitions.h"
#include "enumeration.h"
#include "json.h"
#include "place_reader.h"
#include "preferences.h"
#include "programs.h"
#include "settings.h"

namespace hopopen {

namespace {

void append(findings& to, findings more) {
  to.insert(to.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

std::vector<std::string> schemesOf(const definitions& known) {
  std::set<std::string> result;
  for (const definition& viewer : known.viewers) {
    result.insert(viewer.schemes.begin(), viewer.schemes.end());
  }
  return {result.begin(), result.end()};
}

std::string placeOfFault(const fault& one) {
  return one.file + ':' + std::to_string(one.line) + ':' + std::to_string(one.column);
}

findings ofFaults(const std::string& name, const faults& found, const std::string& remedy) {
  findings result;
  for (const fault& one : found) {
    result.push_back({state::FAULT, name, placeOfFault(one), one.message, remedy});
  }
  return result;
}

findings checkDefinitions(const definitions& known) {
  findings result = ofFaults("definition", known.found, "Correct the file, or remove it.");
  for (const std::string& file : known.ignored) {
    result.push_back({state::WARNING, "definition", file, "is not looked at",
                      "Rename it to NAME.toml, with a NAME of small letters, digits and \"-\", or "
                      "move it away."});
  }
  if (result.empty()) {
    const std::size_t count = known.viewers.size();
    result.push_back({state::OK, "definition",
                      std::to_string(count) + (count == 1 ? " viewer" : " viewers"),
                      "no definition has a fault", ""});
  }
  return result;
}

findings checkSettings(const preferences& wishes) {
  findings result =
      ofFaults("settings", wishes.found, "Correct the file: until then no link is opened.");
  std::vector<std::string> files;
  for (const settings& file : wishes.files) {
    files.push_back(file.file);
  }
  if (result.empty()) {
    result.push_back({state::OK, "settings", files.empty() ? "no file" : enumeration(files, ", "),
                      "no settings have a fault", ""});
  }
  return result;
}

findings checkFiles(const placeReader& reader) {
  if (!reader.noted().empty()) {
    return reader.noted();
  }
  return {{state::OK, "file", "all files", "could be read", ""}};
}

}  // namespace

checkResult checkAll(const folders& where, variableReader get) {
  const definitions known = readAllDefinitions(where.viewers);
  const preferences wishes = readPreferences(where);
  const programFinder programs(get("PATH"));
  const candidates among{known, wishes,
                         [&](const definition& viewer) { return programs.find(viewer); }};
  const clickPlaces places(get);
  const std::vector<std::string> schemes = schemesOf(known);
  placeReader reader;
  desktopCheck desktop(places, programs, reader);
  checkResult result{{}, known.found};
  findings& checks = result.checks;
  for (const std::string& scheme : schemes) {
    checks.push_back(desktop.handler(scheme));
  }
  append(checks, desktop.entry());
  checks.push_back(desktop.opener());
  append(checks, checkChromiumPolicies(places, schemes, reader));
  append(checks, checkFirefoxPolicies(places, schemes, reader));
  append(checks, checkProfiles(places, schemes, reader));
  append(checks, checkSandboxes(places));
  checks.push_back(checkDisplay(get));
  for (const std::string& scheme : schemes) {
    checks.push_back(checkViewer(among, scheme));
  }
  checks.push_back(checkTerminal(among, schemes, programs));
  checks.push_back(checkNotifier(get, programs));
  checks.push_back(checkSemaphores());
  append(checks, checkFiles(reader));
  append(checks, checkDefinitions(known));
  append(checks, checkSettings(wishes));
  result.found.insert(result.found.end(), wishes.found.begin(), wishes.found.end());
  return result;
}

std::string checksAsJSON(const checkResult& told) {
  json list = json::array();
  for (const fault& one : told.found) {
    json& shown = list.emplace_back();
    shown["file"] = jsonText(one.file);
    shown["line"] = one.line;
    shown["column"] = one.column;
    shown["message"] = one.message;
  }
  json checks = json::array();
  for (const finding& one : told.checks) {
    json& shown = checks.emplace_back();
    shown["name"] = jsonText(one.name);
    shown["state"] = text(one.how);
    shown["place"] = jsonText(one.place);
    shown["message"] = jsonText(one.message);
    shown["remedy"] = one.remedy.empty() ? json() : jsonText(one.remedy);
  }
  json result;
  result["faults"] = list;
  result["checks"] = checks;
  return jsonLine(result);
}

}  // namespace hopopen
