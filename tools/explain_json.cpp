// SPDX-License-Identifier: MIT
#include "explain_json.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "../utilities/ascii.h"
#include "assoclist.h"
#include "conversion.h"
#include "find_program.h"
#include "plan.h"
#include "uri.h"

namespace {

using Texts = std::vector<std::string>;

void escape(std::string& out, std::int32_t unit) {
  out += "\\u";
  out += int2hex(unit, 4);
}

// A character beyond ASCII; those above U+FFFF are a pair.
void escapeCharacter(std::string& out, std::int32_t character) {
  constexpr std::int32_t pairs = 0x10000;
  if (character < pairs) {
    escape(out, character);
  } else {
    escape(out, 0xD800 + ((character - pairs) >> 10));
    escape(out, 0xDC00 + ((character - pairs) & 0x3FF));
  }
}

std::string json(const std::string& text) {
  constexpr std::int32_t noCharacter = 0xFFFD;
  std::string out = "\"";
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const auto* const end = p + text.size();
  for (; p < end; p++) {
    const std::int32_t character = getUTF8(p, static_cast<unsigned int>(end - p), true);
    if (character < 0) {
      escape(out, noCharacter);
    } else if (character < ' ' || character > '~') {
      escapeCharacter(out, character);
    } else {
      if (character == '"' || character == '\\') {
        out += '\\';
      }
      out += static_cast<char>(character);
    }
  }
  out += '"';
  return out;
}

// The bytes of a text, two digits each.
std::string bytes(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    out += internal::LOWER_HEX_DIGITS[byte / 16];
    out += internal::LOWER_HEX_DIGITS[byte % 16];
  }
  out += '"';
  return out;
}

std::string json(bool value) {
  return value ? "true" : "false";
}

std::string jsonOrNull(const std::string& text) {
  return text.empty() ? "null" : json(text);
}

std::string member(const char* key, const std::string& value) {
  return json(std::string(key)) + ": " + value;
}

std::string list(const char* open, const Texts& elements, const char* separator,
                 const char* close) {
  std::string out = open;
  for (const std::string& element : elements) {
    out += &element == &elements.front() ? "" : separator;
    out += element;
  }
  return out + close;
}

std::string array(const Texts& elements) {
  return list("[", elements, ", ", "]");
}

std::string object(const Texts& members) {
  return list("{", members, ", ", "}");
}

// An array of the texts, each as `element` writes it.
std::string arrayOf(const Texts& texts, std::string (*element)(const std::string&)) {
  Texts result;
  for (const std::string& text : texts) {
    result.push_back(element(text));
  }
  return array(result);
}

std::string strings(const Texts& texts) {
  return arrayOf(texts, json);
}

std::string strings(const assocList& texts) {
  Texts result;
  for (const auto& [key, value] : texts) {
    result.push_back(member(key.c_str(), json(value)));
  }
  return object(result);
}

const char* name(optionUse use) {
  switch (use) {
    case OU_ITEM:
      return "item";
    case OU_FLAG:
      return "flag";
    case OU_LAUNCH:
      return "launch";
    case OU_NONE:
      break;
  }
  return "none";
}

std::string options(const explanation& launch) {
  Texts result;
  for (const auto& [key, value] : launch.options) {
    result.push_back(object({member("key", json(key)), member("value", json(value)),
                             member("use", json(std::string(name(launch.use(key)))))}));
  }
  return array(result);
}

std::string error(uriParse parse) {
  return object({member("offset", std::to_string(parse.offset)),
                 member("expected", json(std::string(text(parse.stop))))});
}

}  // namespace

std::string asJSON(const explanation& launch) {
  const launchPlan& plan = launch.plan;
  const URI nothing;
  const URI& uri = plan.uri.okay() ? plan.uri : nothing;
  const bool hasVector = plan.arguments != nullptr;
  const std::string null = "null";
  const Texts arguments = vectorOfStrings(plan.arguments);
  const Texts members = {
      member("uri", json(launch.given)),
      member("uriBytes", bytes(launch.given)),
      member("decoded", json(plan.text)),
      member("parses", json(plan.uri.okay())),
      member("error", plan.uri.okay() ? null : error(launch.stop())),
      member("scheme", jsonOrNull(uri.scheme())),
      member("addresses", strings(uri.addresses)),
      member("keyId", uri.keyId < 0 ? null : int2decimal(uri.keyId)),
      member("ticket", jsonOrNull(uri.hexString())),
      member("parameters", strings(uri.parameters)),
      member("options", options(launch)),
      member("log", jsonOrNull(launch.rest["log"])),
      member("logError", jsonOrNull(launch.logError)),
      member("program", jsonOrNull(plan.program)),
      member("rule", !hasVector                       ? null
                     : launch.rest["program"].empty() ? json(std::string("scheme"))
                                                      : json(std::string("option"))),
      member("file", jsonOrNull(launch.found.path)),
      member("shell", jsonOrNull(launch.found.shell)),
      member("style", json(std::string(text(plan.style)))),
      member("portArg", jsonOrNull(launch.rest["portArg"])),
      member("arguments", hasVector ? strings(arguments) : null),
      member("argumentsBytes", hasVector ? arrayOf(arguments, bytes) : null),
      member("launches", json(launch.launches())),
      member("obstacle", jsonOrNull(launch.obstacle())),
  };
  return list("{\n  ", members, ",\n  ", "\n}\n");
}
