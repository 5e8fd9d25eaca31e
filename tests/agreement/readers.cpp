// SPDX-License-Identifier: MIT
// Reads links from standard input, one a line, with \xHH for any byte, and says on standard
// output what hopopen, libcurl and GLib take for their user, host and port.  A line is
//
//     refused
//     USER HOST PORT ZONE  USER HOST PORT ZONE  USER HOST PORT ZONE
//
// for the three in this order: user, host and zone in hexadecimal, "-" for a missing
// part, and four times "!" for one that does not accept the link.  An IPv6 address is
// the bytes of its value.
//
// Left out are rdp links that are made of typed pairs, which others take for no link, and spice
// links, whose port may be in the query.

#include <arpa/inet.h>
#include <curl/curl.h>
#include <glib.h>

#include <array>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "link_reader.h"
#include "rdp_pairs.h"

namespace {

struct reading {
  std::optional<std::string> user;  // as in the link, except for hopopen's
  std::string host;
  std::optional<std::string> port;
  std::optional<std::string> zone;
};

std::string hexadecimal(const std::optional<std::string>& text) {
  constexpr std::string_view digits = "0123456789abcdef";
  if (!text || text->empty()) {
    return "-";
  }
  std::string result;
  for (const char c : *text) {
    const auto byte = static_cast<unsigned char>(c);
    result += {digits[byte / 16], digits[byte % 16]};
  }
  return result;
}

void print(const std::optional<reading>& what) {
  if (!what) {
    std::cout << " ! ! ! !";
    return;
  }
  std::string host = what->host;
  if (host.starts_with('[') && host.ends_with(']')) {
    host = host.substr(1, host.size() - 2);
  }
  std::optional<std::string> zone = what->zone;
  const std::size_t percent = host.find('%');
  if (percent != std::string::npos && host.find(':') < percent) {
    zone = host.substr(percent + 1);
    host.resize(percent);
  }
  std::array<char, sizeof(in6_addr)> address;
  if (inet_pton(AF_INET6, host.c_str(), address.data()) == 1) {
    host = "IPv6 " + hexadecimal(std::string(address.data(), address.size()));
  }
  std::cout << ' ' << hexadecimal(what->user) << ' ' << hexadecimal(host) << ' '
            << what->port.value_or("-") << ' ' << hexadecimal(zone);
}

// --- The readers -----------------------------------------------------------

bool isCompared(const hopopen::link& link) {
  for (const char* const scheme : {"vnc", "ssh", "rdp", "telnet"}) {
    if (link.scheme == scheme) {
      return !hopopen::isMadeOfPairs(link.text);
    }
  }
  return false;
}

std::optional<reading> byHopopen(const std::string& text) {
  hopopen::link link;
  if (hopopen::readScheme(text, link) || !isCompared(link) || hopopen::readRest(link)) {
    return {};
  }
  reading result{link.user, link.machine->plain(), {}, {}};
  if (link.port) {
    result.port = std::to_string(*link.port);
  }
  return result;
}

std::optional<std::string> partOf(CURLU* url, CURLUPart part) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, 0) != CURLUE_OK) {
    return {};
  }
  std::string result = text;
  curl_free(text);
  return result;
}

std::optional<reading> byCurl(const std::string& text) {
  const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), curl_url_cleanup);
  if (text.find('\0') != std::string::npos ||
      curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
    return {};
  }
  return reading{partOf(url.get(), CURLUPART_USER), partOf(url.get(), CURLUPART_HOST).value_or(""),
                 partOf(url.get(), CURLUPART_PORT), partOf(url.get(), CURLUPART_ZONEID)};
}

std::optional<reading> byGLib(const std::string& text) {
  const auto flags = static_cast<GUriFlags>(G_URI_FLAGS_HAS_PASSWORD | G_URI_FLAGS_ENCODED);
  const std::unique_ptr<GUri, decltype(&g_uri_unref)> uri(
      text.find('\0') == std::string::npos ? g_uri_parse(text.c_str(), flags, nullptr) : nullptr,
      g_uri_unref);
  if (!uri || g_uri_get_host(uri.get()) == nullptr) {
    return {};
  }
  reading result{{}, g_uri_get_host(uri.get()), {}, {}};
  if (const char* const user = g_uri_get_user(uri.get())) {
    result.user = user;
  }
  if (g_uri_get_port(uri.get()) >= 0) {
    result.port = std::to_string(g_uri_get_port(uri.get()));
  }
  return result;
}

std::string unescaped(const std::string& line) {
  std::string result;
  for (std::size_t i = 0; i < line.size(); i++) {
    if (line.compare(i, 2, "\\x") == 0) {
      result += static_cast<char>(std::stoi(line.substr(i + 2, 2), nullptr, 16));
      i += 3;
    } else {
      result += line[i];
    }
  }
  return result;
}

}  // namespace

int main() {
  for (std::string line; std::getline(std::cin, line);) {
    const std::string text = unescaped(line);
    const auto ours = byHopopen(text);
    if (!ours) {
      std::cout << "refused\n";
      continue;
    }
    print(ours);
    print(byCurl(text));
    print(byGLib(text));
    std::cout << '\n';
  }
}
