// SPDX-License-Identifier: MIT
// What a viewer gets for a link.  An input has a host that is trusted, the link, and a
// definition; a "!" before the host means that the viewer was chosen by name, a "?" that a table
// of the settings trusts the host and names a user.  For every link:
//
// - It is refused exactly when it breaks a rule, when it asks for a protection that the
//   definition does not give, when the viewer leaves a stranger something and nobody chose
//   it, or when it has no display; with the code of the first of these.
// - Otherwise the argument vector is made of the program's name, or the terminal's and the
//   path, and the definition's words, in their order, with checked pieces of the link, or
//   the user of the settings, for their placeholders and nothing else.  What lacks a piece is left
//   out.
// - So are the variables, but that the password may be there.  In a terminal, words for env
//   unset and set them.
// - What is shown as used and dropped is what was used and dropped.
// - A link that asks for an ssh gateway gets the words for a tunnel, or is refused unless the
//   gateway, too, is trusted.
//
// The expectation is made of the text of the definition as the TOML reader gives it, and of
// the link as the rules of link_rules.h read it.

#include <algorithm>
#include <functional>
#include <map>

#include "decide.h"
#include "definition_reader.h"
#include "definition_words.h"
#include "fuzz.h"
#include "link_pieces.h"
#include "link_rules.h"
#include "scheme_rules.h"
#include "toml.h"

namespace {

// Before the definition of every input, which says the rest.
const std::string HEAD =
    "name = \"V\"\nschemes = [\"vnc\", \"ssh\", \"x\", \"rdp\", \"spice\", \"spice+tls\", "
    "\"telnet\"]\nprograms = [\"viewer\"]\n";

// --- The launch ------------------------------------------------------------

// Who is trusted.
using trusting = std::function<bool(const ruledLink& host)>;

// The launch that a definition gives for a link.
class expectation {
 public:
  // The user of the settings is for links without one.
  expectation(const toml::table& file, const ruledLink& link, trusting trusts,
              const std::optional<std::string>& userOfSettings)
      : m_file(file),
        m_link(link),
        m_trusts(std::move(trusts)),
        m_trusted(m_trusts(link)),
        m_userOfSettings(userOfSettings) {
    for (const ruledParameter& one : link.parameters) {
      m_gateway = m_gateway || (sameName(keyByRules(one), "SshHost") && !one.value.empty());
    }
    for (const ruledParameter& one : link.parameters) {
      m_trusted = m_trusted && faultOfGateway(one).empty();
    }
  }

  void make(bool chosen);
  bool trusted() const { return m_trusted; }

  std::string code;  // of a refusal
  words arguments;
  std::map<std::string, std::string> environment;
  std::vector<bool> used;
  words dropped;
  std::optional<std::string> user() const { return m_link.user; }

 private:
  bool fill(const std::string& text, const std::string* value, std::string& into);
  bool append(const std::vector<words>& elements, const std::string* value);
  const toml::table* rule(const std::string& parameter) const;
  bool pass(const std::string& parameter, const std::string& value);
  std::string faultOfGateway(const ruledParameter& one) const;
  std::string read(const ruledParameter& one, bool& isUsed);
  void addTerminal();
  std::string readCredential(const std::string& value, bool valid,
                             const std::optional<std::string>& other, bool& isUsed);
  void takeCredentials();
  void readParameters();
  void fillEnvironment();
  void listDropped();

  const toml::table& m_file;
  ruledLink m_link;
  trusting m_trusts;
  bool m_trusted;
  bool m_gateway = false;  // whether the link asks for one
  std::optional<std::string> m_userOfSettings;
  pieces m_pieces;
  std::map<std::string, bool> m_placed;  // the placeholders that were filled in and passed
  ruledLink m_given;                     // before parameters named a user or a password
};

// Fills in a text as people read it: "{{" and "}}" are braces, "{NAME}" is a piece.
bool expectation::fill(const std::string& text, const std::string* value, std::string& into) {
  std::map<std::string, bool> placed;
  for (std::size_t i = 0; i < text.size(); i++) {
    if (text[i] != '{' && text[i] != '}') {
      into += text[i];
    } else if (text.compare(i, 2, std::string(2, text[i])) == 0) {
      into += text[i++];
    } else {
      const std::size_t end = text.find('}', i);
      const std::string name = text.substr(i + 1, end - i - 1);
      const auto found = m_pieces.find(name);
      if (name == "value" && value != nullptr) {
        into += *value;
      } else if (found != m_pieces.end()) {
        into += found->second;
      } else {
        return false;
      }
      placed[name] = true;
      i = end;
    }
  }
  m_placed.merge(placed);
  return true;
}

bool expectation::append(const std::vector<words>& elements, const std::string* value) {
  const std::size_t before = arguments.size();
  for (const words& element : elements) {
    const auto placed = m_placed;
    words filled;
    for (const std::string& word : element) {
      filled.emplace_back();
      if (!fill(word, value, filled.back())) {
        filled.clear();
        m_placed = placed;
        break;
      }
    }
    arguments.insert(arguments.end(), filled.begin(), filled.end());
  }
  return arguments.size() > before;
}

const toml::table* expectation::rule(const std::string& parameter) const {
  const toml::table* const rules = m_file["parameters"].as_table();
  if (rules != nullptr) {
    for (const auto& [name, values] : *rules) {
      if (sameName(name.str(), parameter)) {
        return values.as_table();
      }
    }
  }
  return nullptr;
}

// Passes what the definition has for a parameter.
bool expectation::pass(const std::string& parameter, const std::string& value) {
  const toml::table* const values = rule(parameter);
  if (values == nullptr) {
    return false;
  }
  const auto allow = (*values)["allow"].value<std::string>();
  return (!allow || allows(*allow, value)) && append(elementsOf(values->get("arguments")), &value);
}

bool isOneOf(std::string_view text, std::initializer_list<std::string_view> names) {
  return std::any_of(names.begin(), names.end(),
                     [&](std::string_view name) { return sameName(text, name); });
}

std::string expectation::readCredential(const std::string& value, bool valid,
                                        const std::optional<std::string>& other, bool& isUsed) {
  isUsed = !value.empty() && valid && (!other || *other == value);
  return value.empty() || isUsed ? "" : "user";
}

// The code of what is wrong with a piece of a gateway, or nothing.
std::string expectation::faultOfGateway(const ruledParameter& one) const {
  const std::string name = keyByRules(one);
  if (one.value.empty()) {
    return "";
  }
  if (isOneOf(name, {"SshHost"})) {
    ruledLink gateway;
    if (!readDecodedHostByRules(one.value, gateway)) {
      return "host";
    }
    return m_trusts(gateway) ? "" : "restriction";
  }
  if (isOneOf(name, {"SshPort"}) && (!only(one.value, "0123456789") || one.value[0] == '0' ||
                                     one.value.size() > 5 || std::stoi(one.value) > 65535)) {
    return "port";
  }
  if (isOneOf(name, {"SshUsername"}) && !isUserByRules(one.value)) {
    return "user";
  }
  return isOneOf(name, {"SshPort", "SshUsername"}) && !m_gateway ? "restriction" : "";
}

// The code of what is wrong with a parameter, or nothing.
std::string expectation::read(const ruledParameter& one, bool& isUsed) {
  const std::string name = keyByRules(one);
  const std::string value = meantByRules(one);
  if (isOneOf(name, {"ViewOnly"})) {
    if (isOneOf(value, {"false", "0", "no"})) {
      return "";
    }
    isUsed = isOneOf(value, {"true", "1", "yes", ""}) && pass(name, value);
    return isUsed ? "" : "restriction";
  }
  if (isOneOf(name, {"SshHost", "SshPort", "SshUsername"})) {
    isUsed = !value.empty();
    const std::string fault = faultOfGateway(one);
    return fault.empty() && isUsed && !m_file.contains("tunnelled") ? "restriction" : fault;
  }
  if (m_gateway && isOneOf(name, {"ChannelType"}) && (value == "23" || value == "24")) {
    isUsed = true;
    return "";
  }
  if (isOneOf(name, {"SecurityType", "ChannelType", "IdHash", "IdHashAlgorithm", "fingerprint"})) {
    if (value.empty() || (value == "1" && isOneOf(name, {"SecurityType", "ChannelType"}))) {
      return "";
    }
    isUsed = pass(name, value);
    return isUsed ? "" : "restriction";
  }
  if (m_link.scheme == "vnc" && isOneOf(name, {"VncUsername"})) {
    return readCredential(value, isUserByRules(value), m_given.user, isUsed);
  }
  if ((m_link.scheme == "vnc" && isOneOf(name, {"VncPassword"})) ||
      (isSpice(m_link) && isOneOf(name, {"password"}))) {
    return readCredential(value, isPasswordByRules(value), m_given.password, isUsed);
  }
  isUsed =
      (m_link.scheme == "rdp" ? isNumberToPassByRules(one, m_trusted)
                              : isOneOf(name, {"Shared", "ColorLevel", "QualityLevel",
                                               "CompressLevel", "AutoSelect", "ConnectionName"})) &&
      pass(name, value);
  return "";
}

void expectation::takeCredentials() {
  m_given = m_link;
  for (const ruledParameter& one : m_link.parameters) {
    const bool vnc = m_link.scheme == "vnc" && !one.value.empty();
    const bool spice = isSpice(m_link) && !one.value.empty();
    if (vnc && sameName(one.name, "VncUsername") && !m_link.user) {
      m_link.user = one.value;
    } else if (((vnc && sameName(one.name, "VncPassword")) ||
                (spice && sameName(one.name, "password"))) &&
               !m_link.password) {
      m_link.password = one.value;
    }
  }
  if (!m_link.user) {
    m_link.user = m_userOfSettings;
  }
}

void expectation::readParameters() {
  for (const ruledParameter& one : m_link.parameters) {
    bool isUsed = one.taken;
    code = isUsed ? "" : read(one, isUsed);
    if (!code.empty()) {
      return;
    }
    used.push_back(isUsed);
  }
}

void expectation::fillEnvironment() {
  if (const toml::table* const variables = m_file["environment"].as_table()) {
    for (const auto& [name, text] : *variables) {
      std::string value;
      if (fill(text.value_or(std::string()), nullptr, value)) {
        environment[std::string(name.str())] = value;
      }
    }
  }
}

// Puts what starts the viewer before its arguments.
void expectation::addTerminal() {
  words first = {"viewer"};
  if (m_file["terminal"].value_or(false)) {
    first = {"terminal", "-e", "--"};
    const toml::array* const unset = m_file["unset"].as_array();
    if ((unset != nullptr && !unset->empty()) || !environment.empty()) {
      first.emplace_back("/usr/bin/env");
    }
    for (std::size_t i = 0; unset != nullptr && i < unset->size(); i++) {
      first.insert(first.end(), {"-u", unset->at(i).value_or(std::string())});
    }
    for (const auto& [name, value] : environment) {
      first.push_back(std::string(name).append("=").append(value));
    }
    first.emplace_back("/usr/bin/viewer");
  }
  arguments.insert(arguments.begin(), first.begin(), first.end());
}

void expectation::listDropped() {
  if (m_link.password && !m_placed["password"]) {
    dropped.emplace_back("password");
  }
  if (m_link.user && !m_placed["user"] && (!m_placed["link"] || isSpice(m_link))) {
    dropped.emplace_back("user");
  }
  if (m_link.fragment) {
    dropped.emplace_back("fragment");
  }
  if (m_link.plainPortDropped) {
    dropped.emplace_back("port");
  }
  for (std::size_t i = 0; i < used.size(); i++) {
    const std::string& name = m_link.parameters[i].name;
    if (!used[i] && !(m_link.plainPortDropped && sameName(name, "port"))) {
      dropped.push_back(name);
    }
  }
}

void expectation::make(bool chosen) {
  const toml::array* const unguarded = m_file["unguarded"].as_array();
  if (unguarded != nullptr && !unguarded->empty() && !m_trusted && !chosen) {
    code = "viewer";
    return;
  }
  takeCredentials();
  std::optional<unsigned int> port = m_link.port;
  if (!port && !m_link.tlsPort) {
    port = m_file["default"]["port"].value<unsigned int>();
  }
  m_pieces = piecesOf(m_link, port);
  arguments.clear();
  append(elementsOf(m_file.get(m_trusted ? "trusted" : "stranger")), nullptr);
  readParameters();
  if (code.empty() && m_gateway) {
    code = m_link.tlsPort ? "restriction" : !port ? "port" : "";
  }
  if (!code.empty()) {
    return;
  }
  m_pieces["socket"] = "{socket}";
  append(elementsOf(m_file.get(m_gateway ? "tunnelled" : "arguments")), nullptr);
  fillEnvironment();
  addTerminal();
  if (m_link.tlsPort && !m_placed["tlsport"] && !m_placed["link"]) {
    code = "restriction";
  } else if (m_placed["display"] && *port < 5900) {
    code = "port";
  }
  listDropped();
}

// --- The settings ----------------------------------------------------------

bool isAddress(const ruledLink& host) {
  return host.bracketed || only(host.host, "0123456789.");
}

// Whether the text, as settings have it, trusts the host.  Nothing if it is not a host.
std::optional<bool> trustsByRules(std::string_view text, const ruledLink& host) {
  const bool below = text.starts_with('.');
  ruledLink trusted;
  if (!readHostByRules(text.substr(below ? 1 : 0), trusted) || (below && isAddress(trusted))) {
    return {};
  }
  if (!below) {
    return sameHost(trusted, host);
  }
  return !isAddress(host) && host.host.ends_with('.' + trusted.host) &&
         host.host.size() > trusted.host.size() + 1;
}

constexpr const char* USER_OF_SETTINGS = "LAB\\me@x";

// With the host in the list of those that are trusted, or in a table that trusts it and names a
// user.
hopopen::settings settingsOf(std::string_view trusted, bool byTable) {
  hopopen::settings result;
  if (const auto host = hopopen::readTrusted(trusted)) {
    if (byTable) {
      result.hosts.push_back({*host, {}, USER_OF_SETTINGS, true, {}});
    } else {
      result.trust.push_back(*host);
    }
    const auto again = hopopen::readTrusted(host->text());
    check(again && *again == *host, "a trusted host reads back", host->text());
  }
  return result;
}

std::optional<hopopen::installed> findViewer(const hopopen::definition& viewer) {
  hopopen::installed result{{"viewer", "/usr/bin/viewer"}, {}, {}, "/usr/bin/env"};
  if (viewer.terminal) {
    result.terminal = {"terminal", "/usr/bin/terminal"};
    result.separator = {"-e", "--"};
  }
  return result;
}

// --- Comparing -------------------------------------------------------------

std::string shown(const words& list) {
  std::string result;
  for (const std::string& word : list) {
    result += word + '\n';
  }
  return result;
}

void checkFilling(const hopopen::filling& filled, const expectation& expected,
                  const std::string& text) {
  checkSame(shown(filled.arguments), shown(expected.arguments),
            "the arguments are the template with the pieces", text);
  check(filled.arguments == expected.arguments, "they are those words", text);
  std::map<std::string, std::string> environment;
  for (const hopopen::variable& one : filled.environment) {
    environment[one.name] = one.value;
  }
  check(environment == expected.environment && environment.size() == filled.environment.size(),
        "the variables are the template with the pieces", text);
  check(filled.user == expected.user(), "the user is the link's", text);
  check(filled.used == expected.used, "what is used is shown", text);
  checkSame(shown(filled.dropped), shown(expected.dropped), "what is dropped is shown", text);
}

void checkOpening(const std::string& text, const hopopen::definition& viewer,
                  const toml::table& file, std::string_view host, bool chosen, bool byTable) {
  hopopen::definitions known;
  known.viewers.push_back(viewer);
  const hopopen::preferences wishes{{settingsOf(host, byTable)}, true, {}};
  const std::optional<std::string> name =
      chosen ? std::optional<std::string>("v") : std::optional<std::string>();
  const hopopen::opening result = hopopen::decide(text, name, {known, wishes, findViewer});
  const std::string code = result.why ? hopopen::text(result.why->why) : "";
  check(!result.why || (printable(result.why->message) &&
                        (!result.why->position || *result.why->position <= text.size())),
        "a refusal is printable and at a place of the link", text);

  ruledLink link;
  const auto broken = readByRules(
      text,
      [](const std::string& s) {
        return isOneOf(s, {"vnc", "ssh", "x", "rdp", "spice", "spice+tls", "telnet"});
      },
      link);
  if (broken) {
    checkSame(code, broken->code, "the first rule that is broken decides", text);
    return;
  }
  const trusting trusts = [&](const ruledLink& one) {
    return trustsByRules(host, one).value_or(false);
  };
  expectation expected(
      file, link, trusts,
      trusts(link) && byTable ? std::optional<std::string>(USER_OF_SETTINGS) : std::nullopt);
  check(result.trusted == expected.trusted(), "a host is trusted as the settings say", text, host);
  expected.make(chosen);
  checkSame(code, expected.code, "exactly what cannot be done is refused", text);
  check(result.filled.has_value() == code.empty(), "what is not refused is decided", text);
  if (result.filled) {
    checkFilling(*result.filled, expected, text);
  }
}

}  // namespace

void fuzz(std::string_view input) {
  const auto [host, link, rest] = parts<3>(input);
  const std::string text = HEAD + rest;
  if (!cheapExpressions(text)) {
    return;
  }
  hopopen::faults found;
  const auto viewer = hopopen::readDefinition("v", text, "v.toml", found);
  if (!viewer) {
    return;
  }
  const toml::parse_result file = toml::parse(text);
  check(static_cast<bool>(file), "a definition is TOML", text);
  std::string_view trusted = host;
  const auto take = [&](char mark) {
    const bool there = trusted.starts_with(mark);
    trusted.remove_prefix(there ? 1 : 0);
    return there;
  };
  const bool chosen = take('!');
  const bool byTable = take('?');
  checkOpening(link, *viewer, file.table(), trusted, chosen, byTable);
}
