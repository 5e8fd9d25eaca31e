// SPDX-License-Identifier: MIT
// Links, as strangers write them.  For every text:
//
// - It is refused exactly when it breaks a rule of link_rules.h, with the code of the first
//   one that it breaks and at a place within the part that is at fault.
// - Otherwise its pieces are those that the rules find, each of them checked.
// - Its host reads back from the form that it has in links, and is equal to itself.
// - As it is shown, it has its bytes in their order, except for stretches that "***"
//   replaces, and nothing of a password: texts that differ in their passwords alone are shown
//   the same, and so are the messages about them.
// - Quoted, it is printable ASCII in double quotes, and undoing the escapes gives its
//   beginning.
// - Without markup, nothing has a "<", ">" or "&".

#include "link_reader.h"

#include "decide.h"
#include "fuzz.h"
#include "host.h"
#include "link_rules.h"
#include "shown.h"

namespace {

// Scheme names that viewers are known for.
bool known(const std::string& scheme) {
  for (const char* const one : {"vnc", "ssh", "x", "rdp", "spice", "spice+tls", "telnet"}) {
    if (scheme == one) {
      return true;
    }
  }
  return false;
}

hopopen::verdict readAll(const std::string& text, hopopen::link& into) {
  if (auto fault = hopopen::readScheme(text, into)) {
    return fault;
  }
  if (!known(into.scheme)) {
    return hopopen::refusal{hopopen::code::SCHEME, "No viewer is known.", 0};
  }
  return hopopen::readRest(into);
}

void checkRefusal(const std::string& text, const hopopen::refusal& why, const ruling& expected) {
  checkSame(hopopen::text(why.why), expected.code, "the first rule that is broken decides", text);
  check(why.position && *why.position <= text.size(), "a fault is within the link", text);
  check(*why.position >= expected.where.begin && *why.position <= expected.where.end,
        "a fault is in the part that breaks the rule", text, std::to_string(*why.position));
  check(printable(why.message) && why.message.ends_with('.'), "a message is made of sentences",
        why.message);
}

void checkHost(const hopopen::host& machine, const ruledLink& expected, const std::string& text) {
  checkSame(machine.plain(), expected.plainHost(), "the host is the link's", text);
  checkSame(machine.bracketed(), expected.bracketedHost(), "with brackets, too", text);
  checkSame(machine.inLink(), expected.linkedHost(), "and in a link", text);
  const std::string inLink = machine.inLink();
  hopopen::host again;
  check(!hopopen::readHost({inLink, 0}, again) && again == machine, "a host reads back", inLink);
}

void checkPieces(const std::string& text, const hopopen::link& read, const ruledLink& expected) {
  checkSame(read.scheme, expected.scheme, "the scheme is the link's", text);
  check(read.user == expected.user, "the user is the link's", text, read.user.value_or(""));
  check(read.password == expected.password, "the password is the link's", text,
        read.password.value_or(""));
  check(read.machine.has_value(), "there is a host", text);
  checkHost(*read.machine, expected, text);
  check(read.port == expected.port && read.tlsPort == expected.tlsPort, "the port is the link's",
        text);
  check(read.plainPortDropped == expected.plainPortDropped, "so is what gives way", text);
  check(read.portPosition <= text.size(), "the port is within the link", text);
  check(read.fragment == expected.fragment, "the fragment is the link's", text);
  check(read.parametersKnown && read.parameters.size() == expected.parameters.size(),
        "the parameters are the link's", text);
  for (std::size_t i = 0; i < read.parameters.size(); i++) {
    checkSame(read.parameters[i].name, expected.parameters[i].name, "so are their names", text);
    checkSame(read.parameters[i].value, expected.parameters[i].value, "so are their values", text);
    check(read.parameters[i].type == expected.parameters[i].type &&
              read.parameters[i].taken == expected.parameters[i].taken,
          "so is what they are for", text);
    check(read.parameters[i].position < text.size(), "each is within the link", text);
  }
}

// --- What is shown ---------------------------------------------------------

constexpr std::string_view DIVIDING = ":/?#@;&,=";

// True when the word at the offset is, or may be, the name of a parameter that holds a
// password.
bool mayNameSecret(const std::string& text, std::size_t i) {
  const std::size_t before = text.find_last_of(DIVIDING, i);
  const std::size_t begin = before == std::string::npos ? 0 : before + 1;
  const std::size_t end = text.find_first_of(DIVIDING, i);
  const std::string word = text.substr(begin, end - begin);
  return end < text.size() && text[end] == '=' &&
         (word.size() >= 8 && (word.find('%') != std::string::npos ||
                               sameName(word.substr(word.size() - 8), "password")));
}

// The text with the passwords made of other letters.  Bytes that divide a link stay, and so
// do words that may name another password: it would not be one without its name.
std::string withOtherSecrets(const std::string& text, const std::vector<stretch>& secrets,
                             char letter) {
  std::string result = text;
  for (const stretch secret : secrets) {
    for (std::size_t i = secret.begin; i < secret.end; i++) {
      if (DIVIDING.find(text[i]) == std::string_view::npos && !mayNameSecret(text, i)) {
        result[i] = letter;
      }
    }
  }
  return result;
}

// True when `shown` is `text` with some stretches replaced by "***".
bool abbreviates(std::string_view shown, std::string_view text) {
  std::size_t mask = shown.find("***");
  if (mask == std::string_view::npos) {
    return shown == text;
  }
  if (text.substr(0, mask) != shown.substr(0, mask)) {
    return false;
  }
  text.remove_prefix(mask);
  shown.remove_prefix(mask + 3);
  for (mask = shown.find("***"); mask != std::string_view::npos; mask = shown.find("***")) {
    const std::size_t found = text.find(shown.substr(0, mask));
    if (found == std::string_view::npos) {
      return false;
    }
    text.remove_prefix(found + mask);
    shown.remove_prefix(mask + 3);
  }
  return text.ends_with(shown);
}

void checkMasked(const std::string& text, const hopopen::verdict& why) {
  const std::string shown = hopopen::masked(text);
  check(text.find('*') != std::string::npos || abbreviates(shown, text),
        "a link is shown as it is except for passwords", text, shown);
  const auto secrets = secretsOf(text);
  if (!secrets.empty()) {
    const std::string other = withOtherSecrets(text, secrets, 'x');
    checkSame(hopopen::masked(other), shown, "a password does not show", text);
    hopopen::link same;
    same.text = other;
    hopopen::link read;
    read.text = text;
    if (why) {
      checkSame(hopopen::about(same, *why).message, hopopen::about(read, *why).message,
                "a password is not in a message", text);
    }
  }
  if (secrets.empty() && text.find_first_of("=@") == std::string::npos) {
    checkSame(shown, text, "what has no password is shown as it is");
  }
}

std::string unquoted(std::string_view text, bool cut) {
  check(text.size() >= 2 && text.front() == '"' && text.ends_with(cut ? "...\"" : "\""),
        "a quoted text is in double quotes", text);
  text = text.substr(1, text.size() - (cut ? 5 : 2));
  std::string result;
  for (std::size_t i = 0; i < text.size(); i++) {
    check(text[i] != '"', "a double quote is escaped", text);
    if (text[i] != '\\') {
      result += text[i];
      continue;
    }
    const std::string_view escape = text.substr(i, 4);
    check(escape.size() == 4 && escape[1] == 'x' && only(escape.substr(2), UPPER_HEX),
          "an escape has two hexadecimal digits", text);
    result += static_cast<char>(UPPER_HEX.find(escape[2]) * 16 + UPPER_HEX.find(escape[3]));
    i += 3;
  }
  return result;
}

void checkQuoted(const std::string& text) {
  for (const std::size_t most : {std::size_t{4}, hopopen::SHORT}) {
    const std::string shown = hopopen::quoted(text, most);
    check(printable(shown), "a quoted text is printable", shown);
    checkSame(unquoted(shown, text.size() > most), text.substr(0, most), "a quoted text reads back",
              shown);
  }
  const std::string whole = hopopen::quoted(text, text.size());
  const std::string plain = hopopen::withoutMarkup(whole);
  check(printable(plain) && plain.find_first_of("<>&") == std::string::npos,
        "without markup there is none", plain);
  checkSame(unquoted(plain, false), text, "without markup it reads back, too", plain);
  check(printable(hopopen::printable(text)), "the printable form is printable", text);
}

}  // namespace

void fuzz(std::string_view input) {
  const std::string text(input);
  hopopen::link read;
  ruledLink expected;
  const hopopen::verdict why = readAll(text, read);
  const auto broken = readByRules(text, known, expected);
  check(why.has_value() == broken.has_value(), "exactly what breaks a rule is refused", text,
        why ? hopopen::text(why->why) : "", broken ? broken->code : "");
  if (why) {
    checkRefusal(text, *why, *broken);
  } else {
    checkPieces(text, read, expected);
  }
  checkMasked(text, why);
  checkQuoted(text);
}
