// SPDX-License-Identifier: MIT
#include "gateway.h"

#include <cstddef>

#include "credentials.h"
#include "percent.h"
#include "piece.h"
#include "port.h"
#include "refusal.h"

namespace hopopen {

namespace {

bool takeUser(piece& text, std::optional<std::string>& into) {
  if (text.text.find('@') == std::string_view::npos) {
    return true;
  }
  const std::string user = decode(text.takeUntil("@").text);
  if (!user.empty()) {
    into = user;
  }
  return !faultOfUser(user);
}

}  // namespace

std::string gateway::text() const {
  return (user ? *user + '@' : "") + machine.bracketed() +
         (port ? ':' + std::to_string(*port) : "");
}

std::optional<gateway> readGateway(std::string_view text) {
  gateway result;
  piece rest{text, 0};
  if (!takeUser(rest, result.user)) {
    return {};
  }
  const std::size_t close = rest.text.find(']');
  const std::size_t colon = rest.text.find(':', close == std::string_view::npos ? 0 : close);
  if (readHost(rest.part(0, colon), result.machine)) {
    return {};
  }
  if (colon != std::string_view::npos && readPort(rest.part(colon + 1), result.port)) {
    return {};
  }
  return result;
}

}  // namespace hopopen
