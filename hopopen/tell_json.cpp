// SPDX-License-Identifier: MIT
#include "tell_json.h"

#include <cstddef>
#include <optional>
#include <vector>

#include "choose.h"
#include "definition.h"
#include "fill.h"
#include "gateway.h"
#include "host.h"
#include "json.h"
#include "link.h"
#include "parameters.h"
#include "programs.h"
#include "refusal.h"
#include "route.h"
#include "shown.h"

namespace hopopen {

namespace {

json optionalText(const std::optional<std::string>& text) {
  return text ? jsonText(*text) : json();
}

json parameters(const opening& told) {
  if (!told.what.parametersKnown) {
    return {};
  }
  json result = json::array();
  for (std::size_t i = 0; i < told.what.parameters.size(); i++) {
    const parameter& one = told.what.parameters[i];
    json& shown = result.emplace_back();
    shown["name"] = one.name;
    shown["value"] = one.holdsPassword() ? json("***") : jsonText(one.value);
    shown["used"] = told.filled ? json(told.filled->used[i]) : json();
  }
  return result;
}

json viewer(const choice& chosen) {
  if (chosen.viewer == nullptr) {
    return {};
  }
  json result;
  result["name"] = chosen.viewer->name;
  result["title"] = jsonText(chosen.viewer->title);
  result["file"] = jsonText(chosen.program.viewer.path);
  return result;
}

json environment(const filling& filled) {
  json result = json::object();
  for (const variable& one : filled.environment) {
    result[one.name] = one.secret ? json("***") : jsonText(one.value);
  }
  return result;
}

json refused(const verdict& why) {
  if (!why) {
    return {};
  }
  json result;
  result["code"] = text(why->why);
  result["message"] = jsonText(why->message);
  result["position"] = why->position ? json(*why->position) : json();
  return result;
}

// The user, from wherever in the link it came.
std::optional<std::string> userOf(const opening& told) {
  if (!told.what.user && told.filled) {
    return told.filled->user;
  }
  return told.what.user;
}

}  // namespace

std::string asJSON(const opening& told) {
  const link& what = told.what;
  const auto* const filled = told.filled ? &*told.filled : nullptr;
  json result;
  result["link"] = jsonText(masked(what.text));
  result["scheme"] = what.scheme.empty() ? json() : json(what.scheme);
  result["user"] = optionalText(userOf(told));
  result["host"] = what.machine ? json(what.machine->plain()) : json();
  result["port"] = what.anyPort() ? json(*what.anyPort()) : json();
  result["through"] = told.way && told.way->through ? json(told.way->through->text()) : json();
  result["trusted"] = told.trusted ? json(*told.trusted) : json();
  result["parameters"] = parameters(told);
  result["dropped"] = filled != nullptr ? jsonTexts(filled->dropped) : json();
  result["viewer"] = viewer(told.chosen);
  result["arguments"] = filled != nullptr ? jsonTexts(filled->arguments) : json();
  result["environment"] = filled != nullptr ? environment(*filled) : json();
  result["unset"] = filled != nullptr ? jsonTexts(told.chosen.viewer->unset) : json();
  result["launch"] = !told.why;
  result["refusal"] = refused(told.why);
  return jsonLine(result);
}

}  // namespace hopopen
