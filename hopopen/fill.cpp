#include "fill.h"

#include <algorithm>
#include <array>

#include "characters.h"
#include "meaning.h"
#include "regexpr.h"
#include "shown.h"

namespace hopopen {

namespace {

constexpr int FIRST_DISPLAY = 5900;

std::string percentEncoded(const std::string& text) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string result;
  for (const char c : text) {
    if (isUnreserved(c)) {
      result += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      result += {'%', digits[byte / 16], digits[byte % 16]};
    }
  }
  return result;
}

// The values of the placeholders for one link, and which of them were asked for.
class pieces {
 public:
  pieces(const link& what, const definition& viewer)
      : m_link(what),
        m_port(what.port ? what.port : viewer.port),
        m_user(what.user),
        m_password(what.password) {}

  std::optional<std::string>& user() { return m_user; }
  std::optional<std::string>& password() { return m_password; }

  const std::optional<std::string>& user() const { return m_user; }
  const std::optional<std::string>& password() const { return m_password; }
  bool usedUser() const { return m_usedUser; }
  bool usedPassword() const { return m_usedPassword; }
  bool negativeDisplay() const { return m_negativeDisplay; }

  // The text of a template, or nothing when a placeholder has no value.
  std::optional<std::string> text(const textTemplate& from, const std::string* value) const;

  // Notes that a text is passed on.
  void note(const textTemplate& passed);

  // Appends the words of the elements that have all their values, and says whether there were any.
  bool append(const std::vector<element>& from, const std::string* value,
              std::vector<std::string>& into);

 private:
  std::optional<std::string> valueOf(placeholder what, const std::string* value) const;
  std::string linkAnew() const;

  const link& m_link;
  std::optional<std::uint16_t> m_port;
  std::optional<std::string> m_user;
  std::optional<std::string> m_password;
  bool m_usedUser = false;
  bool m_usedPassword = false;
  bool m_negativeDisplay = false;
};

std::string pieces::linkAnew() const {
  std::string result = m_link.scheme + "://";
  if (m_user) {
    result += percentEncoded(*m_user) + '@';
  }
  result += m_link.machine->inLink();
  if (m_link.port) {
    result += ':' + std::to_string(*m_link.port);
  }
  return result;
}

std::optional<std::string> pieces::valueOf(placeholder what, const std::string* value) const {
  switch (what) {
    case placeholder::USER:
      return m_user;
    case placeholder::PASSWORD:
      return m_password;
    case placeholder::HOST:
      return m_link.machine->plain();
    case placeholder::BRACKETED:
      return m_link.machine->bracketed();
    case placeholder::PORT:
      return m_port ? std::optional(std::to_string(*m_port)) : std::nullopt;
    case placeholder::DISPLAY:
      return m_port ? std::optional(std::to_string(*m_port - FIRST_DISPLAY)) : std::nullopt;
    case placeholder::LINK:
      return linkAnew();
    case placeholder::VALUE:
      return value != nullptr ? std::optional(*value) : std::nullopt;
  }
  return {};
}

std::optional<std::string> pieces::text(const textTemplate& from, const std::string* value) const {
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

void pieces::note(const textTemplate& passed) {
  m_usedUser = m_usedUser || uses(passed, placeholder::USER) || uses(passed, placeholder::LINK);
  m_usedPassword = m_usedPassword || uses(passed, placeholder::PASSWORD);
  m_negativeDisplay = m_negativeDisplay ||
                      (uses(passed, placeholder::DISPLAY) && m_port && *m_port < FIRST_DISPLAY);
}

bool pieces::append(const std::vector<element>& from, const std::string* value,
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

bool allows(const parameterRule& rule, const std::string& value) {
  if (!rule.limited) {
    return true;
  }
  const RegExpr expression(rule.allow, true);
  const RegExpr::Match found = expression.match(value);
  return expression.matchs(value) && found.start == 0 && found.length == value.size();
}

// Takes in the parameters of a link, in their order.
class interpreter {
 public:
  interpreter(const link& what, const definition& viewer, pieces& values, filling& into)
      : m_link(what), m_viewer(viewer), m_values(values), m_filling(into) {}

  // Templates may ask for the user before the parameter comes that names it.
  void takeCredentials();
  verdict readAll() {
    for (const parameter& one : m_link.parameters) {
      bool used = false;
      if (auto fault = read(one, used)) {
        return fault;
      }
      m_filling.used.push_back(used);
    }
    return {};
  }

 private:
  verdict read(const parameter& one, bool& used);
  bool pass(const parameter& one);
  refusal restriction(const parameter& one, const std::string& wish) const;
  static verdict readCredential(const parameter& one, const std::optional<std::string>& given,
                                std::optional<std::size_t> fault, const char* badValue, bool& used);

  const link& m_link;
  const definition& m_viewer;
  pieces& m_values;
  filling& m_filling;
};

void interpreter::takeCredentials() {
  for (const parameter& one : m_link.parameters) {
    const meaning what = meaningOf(one.name, m_link.scheme);
    if (what == meaning::USER && !one.value.empty() && !m_values.user()) {
      m_values.user() = one.value;
    } else if (what == meaning::PASSWORD && !one.value.empty() && !m_values.password()) {
      m_values.password() = one.value;
    }
  }
}

// Passes the definition's arguments for a parameter, if it has any for that value.
bool interpreter::pass(const parameter& one) {
  const parameterRule* const rule = m_viewer.rule(one.name);
  return rule != nullptr && allows(*rule, one.value) &&
         m_values.append(rule->arguments, &one.value, m_filling.arguments);
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
  switch (meaningOf(one.name, m_link.scheme)) {
    case meaning::VIEW_ONLY: {
      const answer wish = readAnswer(one.value);
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
      if (asksForNothing(one.name, one.value)) {
        return {};
      }
      used = pass(one);
      return used ? verdict()
                  : restriction(one, "for a protection of the connection, \"" + one.name + '"');
    case meaning::USER:
      return readCredential(one, m_link.user, faultOfUser(one.value), BAD_USER, used);
    case meaning::PASSWORD:
      return readCredential(one, m_link.password, faultOfPassword(one.value), BAD_PASSWORD, used);
    case meaning::WISH:
      used = pass(one);
      return {};
    case meaning::NONE:
      return {};
  }
  return {};
}

void appendTerminal(const installed& program, std::vector<std::string>& into) {
  if (!program.terminal) {
    into.push_back(program.viewer.name);
    return;
  }
  into.push_back(program.terminal->name);
  into.insert(into.end(), program.separator.begin(), program.separator.end());
  into.push_back(program.viewer.path);
}

void listDropped(const link& what, const pieces& values, filling& into) {
  if (values.password() && !values.usedPassword()) {
    into.dropped.emplace_back("password");
  }
  if (values.user() && !values.usedUser()) {
    into.dropped.emplace_back("user");
  }
  if (what.fragment) {
    into.dropped.emplace_back("fragment");
  }
  for (std::size_t i = 0; i < what.parameters.size(); i++) {
    if (!into.used[i]) {
      into.dropped.push_back(what.parameters[i].name);
    }
  }
}

}  // namespace

verdict fill(const link& what, bool trusted, const definition& viewer, const installed& program,
             filling& into) {
  pieces values(what, viewer);
  appendTerminal(program, into.arguments);
  interpreter parameters(what, viewer, values, into);
  parameters.takeCredentials();
  values.append(trusted ? viewer.trusted : viewer.stranger, nullptr, into.arguments);
  if (auto fault = parameters.readAll()) {
    return fault;
  }
  values.append(viewer.arguments, nullptr, into.arguments);
  for (const auto& [name, from] : viewer.environment) {
    if (const auto value = values.text(from, nullptr)) {
      into.environment.push_back({name, *value, uses(from, placeholder::PASSWORD)});
      values.note(from);
    }
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
