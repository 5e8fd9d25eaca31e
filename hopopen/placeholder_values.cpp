// SPDX-License-Identifier: MIT
#include "placeholder_values.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <variant>

#include "host.h"
#include "percent.h"

namespace hopopen {

namespace {

constexpr int FIRST_DISPLAY = 5900;

}  // namespace

std::string placeholderValues::linkAnew() const {
  std::string result = (m_link.tlsPort ? "spice+tls" : m_link.scheme) + "://";
  if (m_user && m_rules.userInLink) {
    result += percentEncoded(*m_user) + '@';
  }
  result += m_link.machine->inLink();
  if (const auto port = m_link.anyPort()) {
    result += ':' + std::to_string(*port);
  }
  return result;
}

std::optional<std::string> placeholderValues::valueOf(placeholder what,
                                                      const std::string* value) const {
  switch (what) {
    case placeholder::USER:
      return m_user;
    case placeholder::PASSWORD:
      return m_rules.passwords ? m_password : std::nullopt;
    case placeholder::HOST:
      return m_link.machine->plain();
    case placeholder::BRACKETED:
      return m_link.machine->bracketed();
    case placeholder::PORT:
      return m_port ? std::optional(std::to_string(*m_port)) : std::nullopt;
    case placeholder::TLS_PORT:
      return m_link.tlsPort ? std::optional(std::to_string(*m_link.tlsPort)) : std::nullopt;
    case placeholder::DISPLAY:
      return m_port ? std::optional(std::to_string(*m_port - FIRST_DISPLAY)) : std::nullopt;
    case placeholder::LINK:
      return linkAnew();
    case placeholder::VALUE:
      return value != nullptr ? std::optional(*value) : std::nullopt;
    case placeholder::SOCKET:
      return m_socket;
  }
  return {};
}

std::optional<std::string> placeholderValues::text(const textTemplate& from,
                                                   const std::string* value) const {
  std::string result;
  for (const auto& part : from) {
    if (std::holds_alternative<std::string>(part)) {
      result += std::get<std::string>(part);
    } else if (const auto filled = valueOf(std::get<placeholder>(part), value)) {
      result += *filled;
    } else {
      return {};
    }
  }
  return result;
}

void placeholderValues::note(const textTemplate& passed) {
  const bool link = uses(passed, placeholder::LINK);
  m_usedUser = m_usedUser || uses(passed, placeholder::USER) || (link && m_rules.userInLink);
  m_usedTls = m_usedTls || uses(passed, placeholder::TLS_PORT) || link;
  m_usedPassword = m_usedPassword || uses(passed, placeholder::PASSWORD);
  m_negativeDisplay = m_negativeDisplay ||
                      (uses(passed, placeholder::DISPLAY) && m_port && *m_port < FIRST_DISPLAY);
}

bool placeholderValues::append(const std::vector<element>& from, const std::string* value,
                               std::vector<std::string>& into) {
  const std::size_t before = into.size();
  for (const element& one : from) {
    std::vector<std::string> words;
    for (const textTemplate& word : one) {
      if (auto filled = text(word, value)) {
        words.push_back(std::move(*filled));
      }
    }
    if (words.size() == one.size()) {
      into.insert(into.end(), words.begin(), words.end());
      std::for_each(one.begin(), one.end(), [this](const textTemplate& word) { note(word); });
    }
  }
  return into.size() > before;
}

}  // namespace hopopen
