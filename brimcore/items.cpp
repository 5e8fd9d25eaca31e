// SPDX-License-Identifier: MIT
#include "items.h"

#include "../utilities/startup.h"
#include "refcount.h"
#include "uri.h"  // IWYU pragma: keep

namespace {

// The key itself begins with a dash, so that viewers get "--autoreconnect".
constexpr const char* defaultPrograms[] = {"VNC=vncviewer", "SSH=putty", nullptr};
constexpr const char* defaultVNCoptions[] = {"-autoreconnect=0", nullptr};

struct registrationDB : writeableConfigDB {
  registrationDB() : writeableConfigDB(RT_EMPTY) {}
  ~registrationDB() override { internal::registrationGone = true; }
};

}  // namespace

[[gnu::init_priority(internal::START_ITEMS)]] configArray PROGRAMS("PROGRAMS", defaultPrograms);
[[gnu::init_priority(internal::START_ITEMS)]] configString URI_SCHEME("URI_SCHEME", "VNC");
[[gnu::init_priority(internal::START_ITEMS)]] configArray VNC_OPTIONS("VNC_OPTIONS",
                                                                      defaultVNCoptions);

namespace internal {

constinit bool registrationGone = false;

[[gnu::init_priority(START_ITEMS)]] configString LogDateFormat("LogDateFormat",
                                                               "[%f %i %d %H:%M:%S %Y] ");
[[gnu::init_priority(START_ITEMS)]] configString LogTimeZone("LogTimeZone", "localtime");
[[gnu::init_priority(START_ITEMS)]] configInt MaxShortName("MaxShortName", 16);
[[gnu::init_priority(START_ITEMS)]] configString defaultLanguage("defaultLanguage", "English");

writeableConfigDB& registrationDatabase() {
  static registrationDB instance;
  return instance;
}

}  // namespace internal
