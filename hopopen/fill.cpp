// SPDX-License-Identifier: MIT
#include "fill.h"

#include <cstddef>

#include "characters.h"
#include "credentials.h"
#include "meaning.h"
#include "parameters.h"
#include "placeholder_values.h"
#include "regexpr.h"
#include "scheme.h"
#include "scheme_rules.h"
#include "shown.h"
#include "template.h"

namespace hopopen {

namespace {

bool allows(const parameterRule& rule, const std::string& value) {
  if (!rule.limited) {
    return true;
  }
  const RegExpr expression(rule.allow, true);
  const RegExpr::Match found = expression.match(value);
  return expression.matchs(value) && found.start == 0 && found.length == value.size();
}

verdict noTunnel(const definition& viewer, std::optional<std::size_t> position) {
  return refusal{code::RESTRICTION,
                 "The machine is reached through an ssh gateway, and " + printable(viewer.title) +
                     " cannot go that way.",
                 position};
}

// Takes in the parameters of a link, in their order.
class interpreter {
 public:
  interpreter(const link& what, const route& way, const definition& viewer,
              placeholderValues& values, filling& into)
      : m_link(what),
        m_rules(rulesOf(what.scheme)),
        m_way(way),
        m_viewer(viewer),
        m_values(values),
        m_filling(into) {}

  // Templates may ask for the user before the parameter comes that names it.
  void takeCredentials();
  verdict readAll() {
    for (std::size_t i = 0; i < m_link.parameters.size(); i++) {
      const parameter& one = m_link.parameters[i];
      bool used = one.taken;
      if (m_way.faulty == i) {
        return m_way.fault;
      }
      if (auto fault = used ? verdict() : read(one, used)) {
        return fault;
      }
      m_filling.used.push_back(used);
    }
    return m_way.fault;
  }

 private:
  verdict read(const parameter& one, bool& used);
  bool pass(const parameter& one);
  refusal restriction(const parameter& one, const std::string& wish) const;
  static verdict readCredential(const parameter& one, const std::optional<std::string>& given,
                                std::optional<std::size_t> fault, const char* badValue, bool& used);

  const link& m_link;
  const schemeRules& m_rules;
  const route& m_way;
  const definition& m_viewer;
  placeholderValues& m_values;
  filling& m_filling;
};

void interpreter::takeCredentials() {
  for (const parameter& one : m_link.parameters) {
    const meaning what = meaningIn(m_rules, one);
    if (what == meaning::USER && !one.value.empty() && !m_values.user()) {
      m_values.user() = one.value;
    } else if (what == meaning::PASSWORD && !one.value.empty() && !m_values.password()) {
      m_values.password() = one.value;
    }
  }
}

// Passes the definition's arguments for a parameter, if it has any for that value.
bool interpreter::pass(const parameter& one) {
  const parameterRule* const rule = m_viewer.rule(one.key());
  const std::string value = one.meant();
  return rule != nullptr && allows(*rule, value) &&
         m_values.append(rule->arguments, &value, m_filling.arguments);
}

refusal interpreter::restriction(const parameter& one, const std::string& wish) const {
  return {code::RESTRICTION,
          "The link asks " + wish + ", and " + printable(m_viewer.title) + " cannot do that.",
          one.position};
}

verdict interpreter::readCredential(const parameter& one, const std::optional<std::string>& given,
                                    std::optional<std::size_t> fault, const char* badValue,
                                    bool& used) {
  if (one.value.empty()) {
    return {};
  }
  if (fault) {
    return refusal{code::USER, badValue, one.position};
  }
  if (given && *given != one.value) {
    return refusal{code::USER, "The link names two users or two passwords. Ask for a correct link.",
                   one.position};
  }
  used = true;
  return {};
}

verdict interpreter::read(const parameter& one, bool& used) {
  switch (meaningIn(m_rules, one)) {
    case meaning::VIEW_ONLY: {
      const answer wish = readAnswer(one.meant());
      if (wish == answer::UNCLEAR) {
        return refusal{code::RESTRICTION,
                       "The link does not say clearly whether the machine may be controlled: "
                       "ViewOnly must be true or false. Ask for a correct link.",
                       one.position};
      }
      used = wish == answer::YES && pass(one);
      return wish == answer::YES && !used
                 ? restriction(one, "to look at the machine without controlling it")
                 : verdict();
    }
    case meaning::PROTECTION:
      if (asksForNothing(one.name, one.meant())) {
        return {};
      }
      used = (m_way.asked && asksForTunnel(one.name, one.meant())) || pass(one);
      return used ? verdict()
                  : restriction(one, "for a protection of the connection, \"" + one.name + '"');
    case meaning::GATEWAY:
      used = !one.value.empty();
      return used && !m_viewer.tunnelled ? noTunnel(m_viewer, one.position) : verdict();
    case meaning::USER:
      return readCredential(one, m_link.user, faultOfUser(one.value), BAD_USER, used);
    case meaning::PASSWORD:
      return readCredential(one, m_link.password, faultOfPassword(one.value), BAD_PASSWORD, used);
    case meaning::WISH:
      used = pass(one);
      return {};
    case meaning::NUMBER:
      used = isWithinLimits(m_rules, one, m_way.trusted) && pass(one);
      return {};
    case meaning::NONE:
      return {};
  }
  return {};
}

// Whether a tunnel can lead the viewer to the machine.
verdict checkTunnel(const link& what, const definition& viewer, const placeholderValues& values) {
  if (!viewer.tunnelled) {
    return noTunnel(viewer, {});
  }
  if (!values.port()) {
    return refusal{code::PORT,
                   "The machine is reached through an ssh gateway, and the link does not say which "
                   "port of it. Ask for a link with a port.",
                   what.text.size()};
  }
  return {};
}

// What comes before the arguments of a viewer that runs in a terminal.  A terminal may pass a
// command on to a process that runs already, so the variables are changed inside.
std::vector<std::string> terminalWords(const installed& program, const definition& viewer,
                                       const std::vector<variable>& environment) {
  std::vector<std::string> result{program.terminal->name};
  result.insert(result.end(), program.separator.begin(), program.separator.end());
  if (!viewer.unset.empty() || !environment.empty()) {
    result.push_back(program.env);
  }
  for (const std::string& name : viewer.unset) {
    result.insert(result.end(), {"-u", name});
  }
  for (const variable& one : environment) {
    result.push_back(one.name + '=' + one.value);
  }
  result.push_back(program.viewer.path);
  return result;
}

void listDropped(const link& what, const placeholderValues& values, filling& into) {
  if (values.password() && !values.usedPassword()) {
    into.dropped.emplace_back("password");
  }
  if (values.user() && !values.usedUser()) {
    into.dropped.emplace_back("user");
  }
  if (what.fragment) {
    into.dropped.emplace_back("fragment");
  }
  if (what.plainPortDropped) {
    into.dropped.emplace_back("port");
  }
  for (std::size_t i = 0; i < what.parameters.size(); i++) {
    const std::string& name = what.parameters[i].name;
    const bool told = what.plainPortDropped && sameLetters(name, "port");
    if (!into.used[i] && !told) {
      into.dropped.push_back(name);
    }
  }
}

}  // namespace

verdict fill(const link& what, const hostRules& rules, const route& way, const definition& viewer,
             const installed& program, filling& into) {
  placeholderValues values(what, way.socket, viewer);
  interpreter parameters(what, way, viewer, values, into);
  parameters.takeCredentials();
  into.userOfSettings = rules.user && !values.user();
  if (into.userOfSettings) {
    values.user() = rules.user->value;
  }
  values.append(way.trusted ? viewer.trusted : viewer.stranger, nullptr, into.arguments);
  if (auto fault = parameters.readAll()) {
    return fault;
  }
  if (auto fault = way.through ? checkTunnel(what, viewer, values) : verdict()) {
    return fault;
  }
  values.append(way.through ? *viewer.tunnelled : viewer.arguments, nullptr, into.arguments);
  into.port = values.port();
  for (const auto& [name, from] : viewer.environment) {
    if (const auto value = values.text(from, nullptr)) {
      into.environment.push_back({name, *value, uses(from, placeholder::PASSWORD)});
      values.note(from);
    }
  }
  const std::vector<std::string> first = program.terminal
                                             ? terminalWords(program, viewer, into.environment)
                                             : std::vector{program.viewer.name};
  into.arguments.insert(into.arguments.begin(), first.begin(), first.end());
  if (what.tlsPort && !values.usedTls()) {
    return refusal{code::RESTRICTION,
                   "The link asks for an encrypted connection, and " + printable(viewer.title) +
                       " cannot be told to make one.",
                   what.portPosition};
  }
  if (values.negativeDisplay()) {
    return refusal{code::PORT,
                   printable(viewer.title) + " cannot reach ports below 5900. Use another viewer.",
                   what.port ? std::optional(what.portPosition) : std::nullopt};
  }
  into.user = values.user();
  listDropped(what, values, into);
  return {};
}

}  // namespace hopopen
