// SPDX-License-Identifier: MIT
// The shell wrapper that bench/run compares the front door with.  The address and harmless
// parameters of a link reach the viewer, and nothing else does.  A wrapper that did less
// would not be a fair comparison.

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "launcher_runner.h"

namespace vnc_link_test {

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

Outcome open(Workshop& shop, const std::string& link) {
  return shop.run({.arguments = {std::string("-program=") + VNC_LINK, link}});
}

struct Case {
  const char* name;
  const char* link;
  Strings viewer;
};

// The name is that of the test.
std::ostream& operator<<(std::ostream& out, const Case& value) {
  return out << value.name;
}

class VncLink : public testing::TestWithParam<Case> {};

TEST_P(VncLink, StartsTheViewerWithTheAddressAndWhatIsHarmless) {
  Workshop shop;
  const Outcome outcome = open(shop, GetParam().link);
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ(GetParam().viewer, outcome.viewer->arguments);
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ(Strings(), shop.files());
}

INSTANTIATE_TEST_SUITE_P(
    All, VncLink,
    testing::Values(
        Case{"TheHostAlone", "vnc://h/", {"vncviewer", "-ReconnectOnError=0", "h"}},
        Case{"APort",
             "vnc://h:5901/?shared=1&ViewOnly=0",
             {"vncviewer", "-ReconnectOnError=0", "-shared=1", "-ViewOnly=0", "h:5901"}},
        Case{"OtherOptions",
             "vnc://h/?fullscreen=1&autoselect=0&qualitylevel=9&compresslevel=0",
             {"vncviewer", "-ReconnectOnError=0", "-autoselect=0", "-compresslevel=0",
              "-fullscreen=1", "-qualitylevel=9", "h"}},
        Case{"AnAddressOfVersion6",
             "vnc://[fe80::1]:5901/",
             {"vncviewer", "-ReconnectOnError=0", "[fe80::1]:5901"}},
        Case{"NoWayThroughACommand",
             "vnc://h/?via=-oProxyCommand=any%20command",
             {"vncviewer", "-ReconnectOnError=0", "h"}},
        Case{"NothingThatLooksLikeAnOption",
             "vnc://h/?-via=x&PasswordFile=/etc/passwd&shared=12&shared%0A=1&shared=1%2520-via=x",
             {"vncviewer", "-ReconnectOnError=0", "h"}},
        Case{"NoTimeOfReconnecting",
             "vnc://h/?-ReconnectOnError=1&reconnectonerror=1",
             {"vncviewer", "-ReconnectOnError=0", "h"}},
        Case{"NoTicket", "vnc://h/QUJD", {"vncviewer", "-ReconnectOnError=0", "h"}},
        Case{"NoComma", "vnc://a,b/", {"vncviewer", "-ReconnectOnError=0", "a"}}));

class HostileVncLink : public testing::TestWithParam<const char*> {};

TEST_P(HostileVncLink, StartsNothing) {
  Workshop shop;
  const Outcome outcome = open(shop, GetParam());
  EXPECT_FALSE(outcome.viewer);
  EXPECT_EQ(1, outcome.status);
  EXPECT_EQ(Strings(), shop.files());
}

INSTANTIATE_TEST_SUITE_P(All, HostileVncLink,
                         testing::Values("vnc://-via=x[::1]/", "vnc://-shared=1[::1]/",
                                         "vnc://h;touch%20pwned/", "vnc://h%20-via=x/",
                                         "vnc://h$(touch%20pwned)/", "vnc://h%0Ax/",
                                         "vnc://h%C3%A9/", "vnc://*[::1]/"));

}  // namespace

}  // namespace vnc_link_test
