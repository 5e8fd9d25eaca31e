// SPDX-License-Identifier: MIT
#include "route.h"

#include <cstdint>
#include <vector>

#include "characters.h"
#include "credentials.h"
#include "meaning.h"
#include "parameters.h"
#include "piece.h"
#include "port.h"
#include "scheme.h"
#include "shown.h"

namespace hopopen {

namespace {

constexpr const char* NO_GATEWAY =
    "The link says how to log in to an ssh gateway, but not to which one: SshHost is missing. Ask "
    "for a correct link.";
constexpr const char* TLS_THROUGH_GATEWAY =
    "The machine is reached through an ssh gateway, and an encrypted connection of the viewer's "
    "own (TLS) cannot go that way. Ask for a link with a plain port: the gateway's connection is "
    "encrypted.";

enum class part : std::uint8_t { NONE, HOST, PORT, USER };

// Which part of a gateway the parameter gives.
part partOf(const link& what, const parameter& one) {
  if (meaningIn(rulesOf(what.scheme), one) != meaning::GATEWAY || one.value.empty()) {
    return part::NONE;
  }
  return sameLetters(one.key(), "SshHost")   ? part::HOST
         : sameLetters(one.key(), "SshPort") ? part::PORT
                                             : part::USER;
}

// Reads the gateway of a link, parameter for parameter.
class gatewayReader {
 public:
  gatewayReader(const link& what, const std::optional<gateway>& configured,
                const std::function<bool(const host&)>& trusts)
      : m_link(what), m_configured(configured), m_trusts(trusts) {
    for (const parameter& one : what.parameters) {
      m_hasHost = m_hasHost || partOf(what, one) == part::HOST;
    }
  }

  verdict read(const parameter& one) {
    switch (partOf(m_link, one)) {
      case part::HOST:
        return readHostOf(one);
      case part::PORT:
        return readPortOf(one);
      case part::USER:
        return readUserOf(one);
      case part::NONE:
        return {};
    }
    return {};
  }
  const gateway& result() const { return m_gateway; }
  bool hasHost() const { return m_hasHost; }

 private:
  verdict readHostOf(const parameter& one) {
    if (const auto fault = readHost({one.value, 0}, m_gateway.machine, coding::DECODED)) {
      return refusal{code::HOST, fault->message, place(one, fault->position)};
    }
    if (!m_trusts(m_gateway.machine)) {
      return refusal{code::RESTRICTION,
                     "The link leads through the ssh gateway " + shownWord(one.value) +
                         ", which you do not trust. Only if you know that machine, type \"hopopen "
                         "--trust " +
                         m_gateway.machine.inLink() + "\".",
                     one.position};
    }
    return m_configured && !(m_gateway.machine == m_configured->machine) ? other(one) : verdict();
  }

  verdict readPortOf(const parameter& one) {
    if (auto fault = readPort({one.value, 0}, m_gateway.port)) {
      fault->position = place(one, *fault->position);
      return fault;
    }
    return partial(one, m_configured && m_gateway.port != m_configured->port);
  }

  verdict readUserOf(const parameter& one) {
    if (const auto fault = faultOfUser(one.value)) {
      return refusal{code::USER, BAD_USER, place(one, *fault)};
    }
    m_gateway.user = one.value;
    return partial(one, m_configured && m_gateway.user != m_configured->user);
  }

  // About a part that means nothing without a host, and that may be another than in the settings.
  verdict partial(const parameter& one, bool differs) const {
    if (!m_hasHost) {
      return refusal{code::RESTRICTION, NO_GATEWAY, one.position};
    }
    return differs ? other(one) : verdict();
  }

  verdict other(const parameter& one) const {
    return refusal{code::RESTRICTION,
                   "The link leads through another ssh gateway than the settings name for this "
                   "machine, which is " +
                       shownWord(m_configured->text()) + ". Ask for a link without one.",
                   one.position};
  }

  // Where in the link a byte of the decoded value comes from.
  std::size_t place(const parameter& one, std::size_t index) const {
    return origin(piece{m_link.text, 0}.part(one.valuePosition), index);
  }

  const link& m_link;
  const std::optional<gateway>& m_configured;
  const std::function<bool(const host&)>& m_trusts;
  gateway m_gateway;
  bool m_hasHost = false;
};

}  // namespace

route findRoute(const link& what, const std::optional<gateway>& configured,
                const std::function<bool(const host& machine)>& trusts) {
  route result;
  result.through = configured;
  result.trusted = trusts(*what.machine);
  gatewayReader gate(what, configured, trusts);
  for (std::size_t i = 0; i < what.parameters.size(); i++) {
    result.fault = gate.read(what.parameters[i]);
    if (result.fault) {
      result.faulty = i;
      result.trusted = false;
      return result;
    }
  }
  result.asked = gate.hasHost();
  if (result.asked && !configured) {
    result.through = gate.result();
  }
  if (result.through && what.tlsPort) {
    result.fault = refusal{code::RESTRICTION, TLS_THROUGH_GATEWAY, what.portPosition};
  }
  return result;
}

}  // namespace hopopen
