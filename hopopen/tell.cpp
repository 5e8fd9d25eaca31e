// SPDX-License-Identifier: MIT
#include "tell.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "choose.h"
#include "conversion.h"
#include "definition.h"
#include "enumeration.h"
#include "fill.h"
#include "gateway.h"
#include "host.h"
#include "host_rules.h"
#include "link.h"
#include "parameters.h"
#include "preferences.h"
#include "programs.h"
#include "refusal.h"
#include "route.h"
#include "shown.h"
#include "trusted.h"

namespace hopopen {

namespace {

class sheet {
 public:
  void line(std::string_view label, const std::string& text) {
    constexpr std::size_t width = 12;
    m_text += label;
    m_text.append(width - label.size(), ' ');
    m_text += text + '\n';
  }
  const std::string& text() const { return m_text; }

 private:
  std::string m_text;
};

std::string quotedWords(const std::vector<std::string>& words) {
  std::string result;
  for (const std::string& word : words) {
    if (!result.empty()) {
      result += ' ';
    }
    result += quote(word);
  }
  return result;
}

const char* reason(chooser by) {
  switch (by) {
    case chooser::OPTION:
      return "chosen by --viewer";
    case chooser::USER:
      return "chosen in your settings";
    case chooser::ADMINISTRATOR:
      return "chosen by the administrator";
    case chooser::RANK:
      return "the first by rank";
  }
  return "";
}

void tellLink(const opening& told, sheet& out) {
  const link& what = told.what;
  const std::string shown = masked(what.text);
  out.line("link", quoted(shown, shown.size()));
  if (!what.scheme.empty()) {
    out.line("scheme", what.scheme);
  }
  if (what.user) {
    out.line("user", *what.user);
  } else if (told.filled && told.filled->userOfSettings) {
    out.line("user", *told.filled->user + ", by the settings for " + told.rules.user->where.text());
  }
  if (what.password) {
    out.line("password", "***");
  }
  if (what.machine) {
    out.line("host", what.machine->bracketed() + (!told.trusted   ? ""
                                                  : *told.trusted ? ", trusted"
                                                                  : ", not trusted"));
  }
  if (const auto port = what.anyPort()) {
    out.line("port", std::to_string(*port));
  }
  if (told.way && told.way->through) {
    out.line("through", told.way->through->text());
  }
  for (const parameter& one : what.parameters) {
    out.line("parameter", one.name + " = " +
                              (one.holdsPassword() ? "***" : quoted(one.value, one.value.size())));
  }
}

void tellViewer(const opening& told, sheet& out) {
  const choice& chosen = told.chosen;
  if (chosen.viewer == nullptr) {
    return;
  }
  out.line("viewer", printable(chosen.viewer->title) + " (" + chosen.viewer->name + "), " +
                         reason(chosen.by) + (chosen.where ? " for " + chosen.where->text() : ""));
  out.line("file", printable(chosen.program.viewer.path));
  if (!chosen.viewer->unguarded.empty()) {
    out.line("unguarded", printable(enumeration(chosen.viewer->unguarded)));
  }
}

void tellFilling(const opening& told, sheet& out) {
  if (!told.filled) {
    return;
  }
  for (const std::string& dropped : told.filled->dropped) {
    out.line("dropped", dropped);
  }
  for (const std::string& name : told.chosen.viewer->unset) {
    out.line("unset", name);
  }
  for (const variable& one : told.filled->environment) {
    out.line("environment", one.name + "=" + (one.secret ? "***" : quote(one.value)));
  }
  out.line("arguments", quotedWords(told.filled->arguments));
}

}  // namespace

std::string asText(const opening& told) {
  sheet out;
  tellLink(told, out);
  tellViewer(told, out);
  tellFilling(told, out);
  if (!told.why) {
    out.line("launch", "yes");
    return out.text();
  }
  if (told.why->position) {
    out.line("fault at", "byte " + std::to_string(*told.why->position) + " of the link, from 0");
  }
  out.line("launch", "no: " + told.why->message + " (" + text(told.why->why) + ')');
  return out.text();
}

}  // namespace hopopen
