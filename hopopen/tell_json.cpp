#include "tell_json.h"

#include <cstddef>
#include <optional>
#include <vector>

#include "choose.h"
#include "definition.h"
#include "fill.h"
#include "host.h"
#include "json.h"
#include "link.h"
#include "parameters.h"
#include "programs.h"
#include "refusal.h"
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
    result.push_back({{"name", one.name},
                      {"value", isSecret(one.name) ? json("***") : jsonText(one.value)},
                      {"used", told.filled ? json(told.filled->used[i]) : json()}});
  }
  return result;
}

json viewer(const choice& chosen) {
  if (chosen.viewer == nullptr) {
    return {};
  }
  return {{"name", chosen.viewer->name},
          {"title", jsonText(chosen.viewer->title)},
          {"file", jsonText(chosen.program.viewer.path)}};
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
  return {{"code", text(why->why)},
          {"message", jsonText(why->message)},
          {"position", why->position ? json(*why->position) : json()}};
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
  return jsonLine({
      {"link", jsonText(masked(what.text))},
      {"scheme", what.scheme.empty() ? json() : json(what.scheme)},
      {"user", optionalText(userOf(told))},
      {"host", what.machine ? json(what.machine->plain()) : json()},
      {"port", what.port ? json(*what.port) : json()},
      {"trusted", told.trusted ? json(*told.trusted) : json()},
      {"parameters", parameters(told)},
      {"dropped", filled != nullptr ? jsonTexts(filled->dropped) : json()},
      {"viewer", viewer(told.chosen)},
      {"arguments", filled != nullptr ? jsonTexts(filled->arguments) : json()},
      {"environment", filled != nullptr ? environment(*filled) : json()},
      {"unset", filled != nullptr ? jsonTexts(told.chosen.viewer->unset) : json()},
      {"launch", !told.why},
      {"refusal", refused(told.why)},
  });
}

}  // namespace hopopen
