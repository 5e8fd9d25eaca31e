// SPDX-License-Identifier: MIT
// What the placeholders of a definition mean in one link: its checked pieces, and
// nothing else.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "definition.h"
#include "link.h"
#include "scheme.h"
#include "scheme_rules.h"
#include "template.h"

namespace hopopen {

/// The values of the placeholders for one link, and which of them were asked for.
class placeholderValues {
 public:
  placeholderValues(const link& what, const std::string& socket, const definition& viewer)
      : m_link(what),
        m_socket(socket),
        m_rules(rulesOf(what.scheme)),
        m_port(what.port || what.tlsPort ? what.port : viewer.port),
        m_user(what.user),
        m_password(what.password) {}

  std::optional<std::string>& user() { return m_user; }
  std::optional<std::string>& password() { return m_password; }

  const std::optional<std::string>& user() const { return m_user; }
  const std::optional<std::string>& password() const { return m_password; }
  /// The port that is connected to, if the link or the definition says which.
  const std::optional<std::uint16_t>& port() const { return m_port; }
  bool usedUser() const { return m_usedUser; }
  bool usedPassword() const { return m_usedPassword; }
  bool usedTls() const { return m_usedTls; }
  bool negativeDisplay() const { return m_negativeDisplay; }

  /// The text of a template, or nothing when a placeholder has no value.
  std::optional<std::string> text(const textTemplate& from, const std::string* value) const;

  /// Notes that a text is passed on.
  void note(const textTemplate& passed);

  /// Appends the words of the elements that have all their values, and says whether there were any.
  bool append(const std::vector<element>& from, const std::string* value,
              std::vector<std::string>& into);

 private:
  std::optional<std::string> valueOf(placeholder what, const std::string* value) const;
  std::string linkAnew() const;

  const link& m_link;
  const std::string& m_socket;
  const schemeRules& m_rules;
  std::optional<std::uint16_t> m_port;
  std::optional<std::string> m_user;
  std::optional<std::string> m_password;
  bool m_usedUser = false;
  bool m_usedPassword = false;
  bool m_usedTls = false;
  bool m_negativeDisplay = false;
};

}  // namespace hopopen
