// SPDX-License-Identifier: MIT
#include "host.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "characters.h"
#include "percent.h"

namespace hopopen {

namespace {

constexpr std::size_t LONGEST_LABEL = 63;  // RFC 1035, section 2.3.4
constexpr std::size_t LONGEST_NAME = 253;  // what that leaves for the text of a name
constexpr std::size_t LONGEST_ZONE = 15;   // IFNAMSIZ less the zero
constexpr const char* NOT_IPV4 =
    "A host whose last part is a number must be four numbers from 0 to 255.";
constexpr const char* NOT_IPV6 = "What is in brackets is not an IPv6 address.";

// The labels of a name are letters, digits, "_" and, within, "-".
std::optional<hostFault> readLabel(std::string_view name, std::size_t start, std::size_t end,
                                   const piece& source) {
  const auto at = [&](std::size_t index, const char* message) {
    return hostFault{origin(source, index), message};
  };
  for (std::size_t i = start; i < end; i++) {
    if (!isWord(name[i]) && (name[i] != '-' || i == start)) {
      return at(i, "The host has a character that names of machines cannot have.");
    }
    if (i - start == LONGEST_LABEL) {
      return at(i, "A part of the host's name is longer than 63 characters.");
    }
  }
  if (start == end) {
    return at(start, "The host's name has an empty part.");
  }
  if (name[end - 1] == '-') {
    return at(end - 1, "A part of the host's name ends in \"-\".");
  }
  return {};
}

bool looksLikeNumber(std::string_view label) {
  if (label.size() >= 2 && label[0] == '0' && lower(label[1]) == 'x') {
    return std::all_of(label.begin() + 2, label.end(), isHexDigit);
  }
  return std::all_of(label.begin(), label.end(), isDigit);
}

// `inet_pton` takes what is wanted: four decimal numbers without leading zeros.
bool isIPv4(const std::string& text) {
  in_addr address;
  return inet_pton(AF_INET, text.c_str(), &address) == 1;
}

std::optional<hostFault> readName(const piece& source, host& into, coding how) {
  const std::string decoded =
      how == coding::ENCODED ? decode(source.text) : std::string(source.text);
  if (decoded.empty()) {
    return hostFault{source.start, "The link names no host."};
  }
  std::string name = lower(decoded);
  if (name.size() > 1 && name.back() == '.') {
    name.pop_back();
  }
  std::size_t label = 0;
  for (std::size_t start = 0; start <= name.size();) {
    const std::size_t end = std::min(name.find('.', start), name.size());
    if (const auto fault = readLabel(name, start, end, source)) {
      return fault;
    }
    label = start;
    start = end + 1;
  }
  if (name.size() > LONGEST_NAME) {
    return hostFault{origin(source, LONGEST_NAME),
                     "The host's name is longer than 253 characters."};
  }
  into.kind = hostKind::NAME;
  if (looksLikeNumber(std::string_view(name).substr(label))) {
    if (name.size() != decoded.size() || !isIPv4(name)) {
      return hostFault{source.start, NOT_IPV4};
    }
    into.kind = hostKind::IPV4;
  }
  into.name = name;
  return {};
}

std::optional<hostFault> readZone(const piece& zone) {
  for (std::size_t i = 0; i < zone.text.size(); i++) {
    const char c = zone.text[i];
    if (!isWord(c) && c != '.' && c != '-') {
      return hostFault{zone.start + i,
                       "The zone after the address has a character that it cannot have."};
    }
    if (i == LONGEST_ZONE) {
      return hostFault{zone.start + i, "The zone after the address is too long."};
    }
  }
  if (zone.text.empty()) {
    return hostFault{zone.start, "The zone after the address is empty."};
  }
  return {};
}

// What is between the brackets; nothing in it is decoded.
std::optional<hostFault> readAddress(const piece& source, host& into, coding how) {
  const std::string_view mark = how == coding::ENCODED ? "%25" : "%";  // of a zone
  const std::size_t percent = source.text.find('%');
  const std::string address(source.text.substr(0, percent));
  in6_addr bytes;
  if (inet_pton(AF_INET6, address.c_str(), &bytes) != 1) {
    return hostFault{source.start, NOT_IPV6};
  }
  into.kind = hostKind::IPV6;
  into.name = address;
  into.zone.clear();
  if (percent == std::string_view::npos) {
    return {};
  }
  if (source.text.substr(percent, mark.size()) != mark) {
    return hostFault{source.start + percent, "A zone begins with \"%25\" in a link."};
  }
  const piece zone = source.part(percent + mark.size());
  into.zone = zone.text;
  return readZone(zone);
}

}  // namespace

std::string host::plain() const {
  return zone.empty() ? name : name + '%' + zone;
}

std::string host::bracketed() const {
  return kind == hostKind::IPV6 ? '[' + plain() + ']' : name;
}

std::string host::inLink() const {
  return zone.empty() ? bracketed() : '[' + name + "%25" + zone + ']';
}

std::string host::canonical() const {
  in6_addr bytes;
  if (kind != hostKind::IPV6 || inet_pton(AF_INET6, name.c_str(), &bytes) != 1) {
    return name;
  }
  std::array<char, INET6_ADDRSTRLEN> text = {};
  inet_ntop(AF_INET6, &bytes, text.data(), text.size());
  return std::string(text.data()) + '%' + zone;
}

std::optional<hostFault> readHost(const piece& text, host& into, coding how) {
  if (text.text.size() >= 2 && text.text.front() == '[' && text.text.back() == ']') {
    return readAddress(text.part(1, text.text.size() - 2), into, how);
  }
  return readName(text, into, how);
}

}  // namespace hopopen
