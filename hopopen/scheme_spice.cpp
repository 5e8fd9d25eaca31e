// SPDX-License-Identifier: MIT
#include "scheme_spice.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "characters.h"
#include "link.h"
#include "meaning.h"
#include "parameters.h"
#include "piece.h"
#include "port.h"
#include "refusal.h"
#include "scheme_rules.h"

namespace hopopen {

namespace {

constexpr std::uint16_t USUAL_PORT = 5900;

constexpr std::array<ownParameter, 1> PARAMETERS = {{{"password", meaning::PASSWORD}}};

enum class portKind : std::uint8_t { PLAIN, TLS };

// Which port the parameter of that name gives.
std::optional<portKind> kindOf(std::string_view name) {
  if (sameLetters(name, "port")) {
    return portKind::PLAIN;
  }
  for (const std::string_view other : {"tls-port", "tls_port", "tlsport"}) {
    if (sameLetters(name, other)) {
      return portKind::TLS;
    }
  }
  return {};
}

// The value of a parameter as it is written.
piece writtenValue(const link& what, const parameter& one) {
  piece text = piece{what.text, 0}.part(one.position).takeUntil("&;#");
  text.takeUntil("=");
  return text;
}

struct ports {
  std::optional<std::uint16_t> plain;
  std::optional<std::uint16_t> tls;
  std::size_t plainPosition = 0;
  std::size_t tlsPosition = 0;

  std::optional<std::uint16_t>& of(portKind kind) { return kind == portKind::TLS ? tls : plain; }
  std::size_t& positionOf(portKind kind) {
    return kind == portKind::TLS ? tlsPosition : plainPosition;
  }
};

// Takes in the port of a parameter.
verdict readPortOf(const link& what, const parameter& one, portKind kind, ports& into) {
  const piece written = writtenValue(what, one);
  std::optional<std::uint16_t> port;
  if (auto fault = readPort({one.value, 0}, port)) {
    fault->position = origin(written, *fault->position);
    return fault;
  }
  if (!port) {
    return {};
  }
  if (into.of(kind) && into.of(kind) != port) {
    return refusal{code::PORT, TWO_PORTS, written.start};
  }
  if (!into.of(kind)) {
    into.of(kind) = port;
    into.positionOf(kind) = written.start;
  }
  return {};
}

verdict readPorts(const link& what, portKind ofAuthority, ports& into) {
  into.of(ofAuthority) = what.port;
  into.positionOf(ofAuthority) = what.portPosition;
  for (const parameter& one : what.parameters) {
    const auto kind = kindOf(one.name);
    if (!kind) {
      continue;
    }
    if (auto fault = readPortOf(what, one, *kind, into)) {
      return fault;
    }
  }
  return {};
}

// Decides which port is connected to.
verdict settle(link& into, portKind ofAuthority) {
  ports found;
  if (auto fault = readPorts(into, ofAuthority, found)) {
    return fault;
  }
  if (!found.tls && ofAuthority == portKind::TLS) {
    return refusal{code::PORT,
                   "The link asks for an encrypted connection and does not say to which port. Ask "
                   "for a link with a port.",
                   into.text.size()};
  }
  into.tlsPort = found.tls;
  into.port = found.tls ? std::nullopt : std::optional(found.plain.value_or(USUAL_PORT));
  into.portPosition = found.tls ? found.tlsPosition : found.plainPosition;
  into.plainPortDropped = found.tls && found.plain;
  for (parameter& one : into.parameters) {
    const auto kind = kindOf(one.name);
    one.taken = kind && !one.value.empty() && (kind == portKind::TLS || !found.tls);
  }
  return {};
}

}  // namespace

constinit const schemeRules SPICE{
    .name = "spice",
    .separators = "&;",
    .userInLink = false,
    .parameters = PARAMETERS,
    .settle = [](link& into) { return settle(into, portKind::PLAIN); }};

constinit const schemeRules SPICE_TLS{
    .name = "spice+tls",
    .separators = "&;",
    .userInLink = false,
    .parameters = PARAMETERS,
    .settle = [](link& into) { return settle(into, portKind::TLS); }};

}  // namespace hopopen
