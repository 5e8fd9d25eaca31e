// SPDX-License-Identifier: MIT
// Escapes and their reverses, for every text:
//
// - What `URIescape`, `QMXescape` and `LDAPescape` write reads back, and so does what
//   `cookieEscape` writes of a text without bytes below 16, whose escapes have one digit.
// - `URIescape` writes letters, digits, - . _ ! ( ) * ` ~ and "%" with two upper-case
//   hexadecimal digits, nothing else.
// - `cookieEscape` writes letters, digits, bytes of 128 and above and escapes only;
//   `QMXescape` no line feed and no punctuation but the "%" of an escape.
// - `LDAPescape`, `javaScriptEscape` and `HTMLescape` write printable ASCII only.
// - `LDAPescape` puts a backslash before each of " + , ; < > that it leaves, and
//   `javaScriptEscape` before each single quote.
// - `HTMLescape` writes "<" and ">" only in "<br>", "&" only in references, no double
//   quote, and its references stand for the characters of the text; `nbsp` changes
//   nothing but the second of two blanks.
// - Those that work byte by byte escape the halves of a text as they escape the whole.
// - Unescaping never lengthens, and copies a text without escapes.
// - The form with a length agrees with the form with a string, and reads no further.

#include <cstdint>
#include <vector>

#include "conversion.h"
#include "fuzz.h"
#include "html_escape.h"

namespace {

unsigned int size(std::string_view text) {
  return static_cast<unsigned int>(text.size());
}

using escapeFunction = std::string (*)(const std::string&);
using escapeBytes = std::string (*)(const char*, unsigned int);

std::string escaped(escapeFunction escape, escapeBytes bytes, std::string_view text) {
  const std::string result = escape(std::string(text));
  checkSame(bytes(text.data(), size(text)), result, "both forms escape alike", text);
  return result;
}

// The text without its escapes of "%" and upper-case digits, of which there are at
// least `fewest` and at most two.
std::string withoutPercentEscapes(std::string_view text, std::size_t fewest) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); i++) {
    if (text[i] != '%') {
      result += text[i];
      continue;
    }
    const bool two = only(text.substr(i + 1, 2), UPPER_HEX) && i + 2 < text.size();
    check(two || (fewest == 1 && i + 1 < text.size() && only(text.substr(i + 1, 1), UPPER_HEX)),
          "a per-cent sign begins an escape", text);
    i += two ? 2 : 1;
  }
  return result;
}

void checkHalves(escapeFunction escape, const std::string& text) {
  const std::size_t middle = text.size() / 2;
  checkSame(escape(text), escape(text.substr(0, middle)) + escape(text.substr(middle)),
            "escaping is done byte by byte", text);
}

void checkPercent(const std::string& text) {
  const std::string uri = escaped(URIescape, URIescape, text);
  checkSame(URIunEscape(uri), text, "what URIescape writes reads back", uri);
  check(
      only(withoutPercentEscapes(uri, 2), std::string(LETTERS) + std::string(DIGITS) + "-._!()*`~"),
      "URIescape leaves only characters that are safe in a URI", uri);

  const std::string qmx = escaped(QMXescape, QMXescape, text);
  checkSame(URIunEscape(qmx), text, "what QMXescape writes reads back", qmx);
  check(withoutPercentEscapes(qmx, 2).find_first_of("\n!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~") ==
            std::string::npos,
        "QMXescape leaves no punctuation", qmx);

  const std::string cookie = escaped(cookieEscape, cookieEscape, text);
  for (const char c : withoutPercentEscapes(cookie, 1)) {
    check(static_cast<signed char>(c) < 0 || only({&c, 1}, LETTERS) || only({&c, 1}, DIGITS),
          "cookieEscape leaves letters, digits and bytes beyond ASCII", cookie);
  }
  bool twoDigits = true;
  for (const char c : text) {
    twoDigits = twoDigits && static_cast<unsigned char>(c) >= 16;
  }
  if (twoDigits) {
    checkSame(cookieUnEscape(cookie), text, "what cookieEscape writes reads back", cookie);
  }
}

void checkLDAP(const std::string& text) {
  const std::string ldap = escaped(LDAPescape, LDAPescape, text);
  check(printable(ldap), "LDAPescape writes printable ASCII", ldap);
  checkSame(LDAPunEscape(ldap), text, "what LDAPescape writes reads back", ldap);
  for (std::size_t i = 0; i < ldap.size(); i++) {
    check(only({&ldap[i], 1}, "\"+,;<>") ? i > 0 && ldap[i - 1] == '\\' : true,
          "LDAPescape marks what has a meaning in names", ldap);
  }
}

void checkJavaScript(const std::string& text) {
  const std::string script = escaped(javaScriptEscape, javaScriptEscape, text);
  check(printable(script), "javaScriptEscape writes printable ASCII", script);
  for (std::size_t i = 0; i < script.size(); i++) {
    check(script[i] != '\'' || (i > 0 && script[i - 1] == '\\'),
          "javaScriptEscape marks single quotes", script);
  }
}

// The characters of a text, malformed bytes standing for themselves.
std::vector<std::int32_t> characters(const std::string& text) {
  std::vector<std::int32_t> result;
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* const end = p + text.size();
  for (; p < end; p++) {
    result.push_back(getUTF8(p, static_cast<unsigned int>(end - p), false));
  }
  return result;
}

// Moves `text` after `expected` if it begins with that.
bool skip(std::string_view& text, std::string_view expected) {
  const bool found = text.substr(0, expected.size()) == expected;
  text.remove_prefix(found ? expected.size() : 0);
  return found;
}

// The characters that a text with references stands for.
std::vector<std::int32_t> resolved(std::string_view html) {
  static const struct {
    std::string_view reference;
    char character;
  } references[] = {{"<br>", '\n'}, {"&lt;", '<'},   {"&gt;", '>'},
                    {"&amp;", '&'}, {"&quot;", '"'}, {"&nbsp;", ' '}};
  std::vector<std::int32_t> result;
  while (!html.empty()) {
    bool known = false;
    for (const auto& [reference, character] : references) {
      if (!known && skip(html, reference)) {
        result.push_back(character);
        known = true;
      }
    }
    if (known) {
      continue;
    }
    if (skip(html, "&#")) {
      const std::size_t end = html.find(';');
      check(end > 0 && end <= 7 && only(html.substr(0, end), DIGITS),
            "a numeric reference has decimal digits", html);
      result.push_back(decimal2Int(std::string(html.substr(0, end))));
      html.remove_prefix(end + 1);
      continue;
    }
    check(!only(html.substr(0, 1), "<>&\""), "HTMLescape replaces what has a meaning", html);
    result.push_back(html.front());
    html.remove_prefix(1);
  }
  return result;
}

void checkHTML(std::string_view input, const std::string& text) {
  const std::string plain = HTMLescape(text, false);
  const std::string spaced = HTMLescape(text, true);
  checkSame(HTMLescape(input.data(), size(input), false), plain, "both forms escape alike");
  checkSame(HTMLescape(input.data(), size(input), true), spaced, "both forms escape alike");
  check(printable(spaced), "HTMLescape writes printable ASCII", spaced);
  check(plain.find("&nbsp;") == plain.npos, "no blank is replaced without being asked for", plain);
  check(spaced.find("  ") == spaced.npos, "of two blanks the second is replaced", spaced);
  const std::vector<std::int32_t> expected = characters(text);
  check(resolved(plain) == expected, "references stand for the characters", plain, text);
  check(resolved(spaced) == expected, "nbsp replaces nothing but blanks", spaced, text);
}

void checkUnescaping(std::string_view input, const std::string& text) {
  const std::string uri = URIunEscape(text);
  const std::string ldap = LDAPunEscape(text);
  checkSame(URIunEscape(input.data(), size(input)), uri, "both forms unescape alike", text);
  checkSame(cookieUnEscape(text), uri, "cookies unescape as URIs do", text);
  checkSame(cookieUnEscape(input.data(), size(input)), uri, "cookies unescape as URIs do", text);
  checkSame(LDAPunEscape(input.data(), size(input)), ldap, "both forms unescape alike", text);
  check(uri.size() <= text.size(), "URIunEscape never lengthens", text, uri);
  check(ldap.size() <= text.size(), "LDAPunEscape never lengthens", text, ldap);
  if (text.find('%') == text.npos) {
    checkSame(uri, text, "a text without escapes is copied");
  }
  if (text.find('\\') == text.npos) {
    checkSame(ldap, text, "a text without escapes is copied");
  }
}

}  // namespace

void fuzz(std::string_view input) {
  const std::string text(input);
  checkPercent(text);
  checkLDAP(text);
  checkJavaScript(text);
  checkHTML(input, text);
  checkUnescaping(input, text);
  for (const escapeFunction escape : {escapeFunction{URIescape}, escapeFunction{cookieEscape},
                                      escapeFunction{QMXescape}, escapeFunction{LDAPescape}}) {
    checkHalves(escape, text);
  }
}
