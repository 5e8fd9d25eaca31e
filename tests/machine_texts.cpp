// SPDX-License-Identifier: MIT
// Prints what the library makes of bytes, numbers, dates and texts, for scripts/machines.sh: each
// machine must print the same.

#include <iomanip>
#include <iostream>
#include <map>
#include <string>

#include "DistName.h"
#include "bytearray.h"
#include "conversion.h"
#include "datetime.h"
#include "html_escape.h"
#include "stringcomp.h"
#include "uri.h"

namespace {

using std::string_literals::operator""s;

void dates() {
  std::cout << std::setprecision(17);
  for (const char* text : {"19700101T000000", "20000229T235959.999999", "20261122T163004.000001",
                           "21060207T062815.999999", "2026-11-22T16:30:04.5", "9999", ""}) {
    const DateTime time{std::string(text)};
    std::cout << "date " << text << '\n';
    for (int style = DS_ISO8601; style <= DS_NULL; style++) {
      std::cout << "  " << style << ' ' << quote(time.format(static_cast<dateStyle>(style)))
                << '\n';
    }
    unsigned char stamp[8];
    time.NTPtime(stamp);
    std::cout << "  NTP " << ByteArray(sizeof stamp, stamp).format(16) << ' '
              << DateTime(stamp).format(DS_ISO8601P) << '\n';
    std::cout << "  100 ns " << time.VNCtime() << ", seconds " << time.UNIXtime() << '\n';
    for (const double more : {0.1, -0.000001, 86400.3333333, 1e-7, -1e9, 4294967295.0}) {
      const DateTime moved = time + more;
      std::cout << "  moved by " << more << ": " << moved.format(DS_ISO8601P) << ", "
                << moved - time << '\n';
    }
  }
}

void bytes() {
  std::string all;
  for (int i = 0; i < 256; i++) {
    all += static_cast<char>(i);
  }
  const ByteArray array(256, all.data());
  for (const unsigned int radix : {16U, 64U}) {
    std::cout << "radix " << radix << ' ' << array.format(radix) << '\n';
  }
  std::cout << "prefix " << array.OMBRformat(4) << '\n';
  unsigned char four[4];
  setU32(0x01020384U, four);
  std::cout << "u32 " << ByteArray(4, four).format(16) << ' ' << getU32(four) << ' '
            << getU16(four + 2) << '\n';
  std::cout << "quoted " << quote(all) << '\n';
  std::cout << "CSV " << quote(CSVescape(all)) << '\n';
  std::cout << "URI " << URIescape(all) << '\n';
  std::cout << "LDAP " << quote(LDAPescape(all)) << '\n';
}

void order() {
  std::map<std::string, int, caseInsensitive> sorted;
  for (int i = 1; i < 256; i++) {
    sorted[std::string(1, static_cast<char>(i))] = i;
    sorted["a"s + static_cast<char>(i)] = i;
  }
  std::cout << "order";
  for (const auto& [text, number] : sorted) {
    std::cout << ' ' << quote(text);
  }
  std::cout << '\n';
}

void names() {
  for (const char* name : {"CN=Lovelace\\, Ada,OU=Users,DC=example,DC=com", "cn=\\C3\\A9,dc=X", "=",
                           "CN=\xC3\xA9,DC=\xE9"}) {
    const DistName read(name);
    std::cout << "name " << quote(read.str()) << ' ' << read.segments() << ' '
              << quote(read.canonicalName()) << '\n';
  }
}

void addresses() {
  for (const char* text : {"vnc://h:5900,[::1]:5901/12,QUJD?a=1&b=%C3%A9", "ssh://h/1234",
                           "vnc://\xE9/", "VNC://H/////?view=a%2520b"}) {
    const URI uri{std::string(text)};
    std::cout << "uri " << quote(text) << ' ' << quote(uri.format()) << ' ' << uri.hexString()
              << '\n';
  }
}

}  // namespace

int main() {
  dates();
  bytes();
  order();
  names();
  addresses();
  return 0;
}
