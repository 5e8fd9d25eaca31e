// SPDX-License-Identifier: MIT
// URIs: how parsing and building the argument vector grow with what is given.

#include <uriparser/Uri.h>

#include <memory>

#include "html_escape.h"
#include "library.h"
#include "uri.h"

namespace {

const std::vector<std::size_t> lengths = {64, 512, 4096, 32768, 262144, 1048576};
const std::vector<std::size_t> counts = {1, 10, 100, 1000, 10000, 100000};

std::string withTicket(std::size_t length) {
  return "vnc://host:5900/" + std::string((length - 16) / 4 * 4, 'A');
}

std::string withValue(std::size_t length) {
  std::string value = URIescape(linkText(length));
  value.resize(length - 24);
  return "vnc://host:5900/?view=" + value + "ab";  // whole escapes only
}

std::string withAddress(std::size_t length) {
  return "vnc://" + std::string(length - 7, 'a') + "/";
}

std::string withAddresses(std::size_t length) {
  std::string result = "vnc://host:5900";
  while (result.size() + 16 <= length) {
    result += ",[fe80::1]:5901";
  }
  return result + "/";
}

// A bad address; only its end shows that.
std::string withBadAddress(std::size_t length) {
  return "vnc://-" + std::string(length - 8, 'a') + "/";
}

std::string withOpenBracket(std::size_t length) {
  return "vnc://[" + std::string(length - 8, '1') + "/";
}

std::string withParameters(std::size_t count) {
  std::string result = "vnc://host:5900/";
  for (std::size_t i = 0; i < count; i++) {
    result += i == 0 ? '?' : '&';
    result += "name" + std::to_string(i * 7919 % count) + "=value";
  }
  return result;
}

void addParse(const std::string& task, std::string (*make)(std::size_t),
              const std::vector<std::size_t>& sizes) {
  add(task, "hoplaunch", sizes,
      [make](std::size_t size) { return [text = make(size)] { return URI(text).okay(); }; });
}

// The same by a parser that accepts it, for scale.
void addPeer(const std::string& task, std::string (*make)(std::size_t),
             const std::vector<std::size_t>& sizes) {
  add(task, "uriparser", sizes, [make](std::size_t size) {
    return [text = make(size)] {
      UriUriA uri;
      UriQueryListA* parameters = nullptr;
      int count = 0;
      if (uriParseSingleUriExA(&uri, text.data(), text.data() + text.size(), nullptr) !=
          URI_SUCCESS) {
        return false;
      }
      if (uri.query.first != nullptr) {
        uriDissectQueryMallocA(&parameters, &count, uri.query.first, uri.query.afterLast);
      }
      uriFreeQueryListA(parameters);
      uriFreeUriMembersA(&uri);
      return true;
    };
  });
}

void addArguments(const std::string& task, std::string (*make)(std::size_t),
                  const std::vector<std::size_t>& sizes) {
  add(task, "hoplaunch", sizes, [make](std::size_t size) {
    return [uri = std::make_shared<URI>(make(size))] {
      uri->add(std::string());  // discards the vector that was built before
      return uri->args("viewer", 1, AS_EQUALS, nullptr);
    };
  });
}

}  // namespace

void addURIBenchmarks() {
  const auto addBoth = [](const char* task, std::string (*make)(std::size_t),
                          const std::vector<std::size_t>& sizes) {
    addParse(task, make, sizes);
    addPeer(task, make, sizes);
  };
  addBoth("URI, parse, a ticket", withTicket, lengths);
  addBoth("URI, parse, a value", withValue, lengths);
  addBoth("URI, parse, an address", withAddress, lengths);
  addBoth("URI, parse, parameters", withParameters, counts);
  addParse("URI, parse, addresses", withAddresses, lengths);
  addParse("URI, parse, a bad address", withBadAddress, lengths);
  addParse("URI, parse, an open bracket", withOpenBracket, lengths);
  addArguments("URI, arguments, a ticket", withTicket, lengths);
  addArguments("URI, arguments, a value", withValue, lengths);
  addArguments("URI, arguments, parameters", withParameters, counts);
}
