// SPDX-License-Identifier: MIT
// Remote-access URIs: read, find out what is wrong with one, build, and turn into the
// argument vector of a viewer.
//
//     uris [URI]...

#include <hoplaunch/uri.h>

#include <iostream>
#include <string>

namespace {

void read(const std::string& text) {
  URI uri;
  const uriParse result = uri.parse(text);
  if (result.stop != US_COMPLETE) {
    std::cout << text << '\n'
              << std::string(result.offset, ' ') << "^ expected " << ::text(result.stop) << '\n';
    return;
  }
  std::cout << "scheme:  " << uri.scheme() << '\n';
  for (const std::string& address : uri.addresses) {
    std::cout << "address: " << address << '\n';
  }
  if (uri.keyId >= 0) {
    std::cout << "key id:  " << uri.keyId << '\n';
  }
  if (!uri.ticket.empty()) {
    std::cout << "ticket:  " << uri.hexString() << '\n';
  }
  for (const auto& [name, value] : uri.parameters) {
    std::cout << name << " = " << value << '\n';
  }
}

void build() {
  URI uri;
  uri.add("host.example:5901");
  uri.add("[::1]:5902");
  uri.addParam("title", "a b&c");
  std::cout << uri.format() << '\n';  // the scheme is that of the item URI_SCHEME

  URI withTicket("ssh://host:22/");
  withTicket.setKeyId(7);
  withTicket.setTicket(ByteArray(3, "ABC"));
  std::cout << withTicket.format() << '\n';
}

void launch(const std::string& text, argsStyle style, const char* portOption) {
  URI uri(text);
  if (!uri.okay()) {
    return;
  }
  // One address, as hoplaunch passes.  The vector belongs to the URI.
  for (char** arg = uri.args("viewer", 1, style, portOption); *arg != nullptr; arg++) {
    std::cout << *arg << (arg[1] != nullptr ? " | " : "\n");
  }
}

}  // namespace

int main(int count, char** args) {
  for (int i = 1; i < count; i++) {
    read(args[i]);
  }
  if (count == 1) {
    build();
    launch("ssh://host:22/?view=1", AS_EQUALS, nullptr);
    launch("ssh://host:22/?view=1", AS_SEPARATE, "P");
  }
  return 0;
}
