// What the desktop entries start: of a link the address and harmless parameters reach
// the viewer, and nothing else does.

#include <gtest/gtest.h>

#include <string>

#include "launcher_runner.h"

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

const std::string links = DESKTOP_LINKS;

// What the entry for the link's scheme does.
Outcome open(Workshop& shop, const std::string& link) {
  Strings arguments{"-program=" + links + "/vnc-link", link};
  if (link.starts_with("ssh:")) {
    arguments = {"-program=" + links + "/ssh-link", "-style=separate", "-portArg=P", link};
  }
  return shop.run({.arguments = arguments});
}

struct Case {
  const char* link;
  Strings viewer;
};

class DesktopLink : public testing::TestWithParam<Case> {};

TEST_P(DesktopLink, StartsTheViewerWithTheAddressAndWhatIsHarmless) {
  Workshop shop;
  const Outcome outcome = open(shop, GetParam().link);
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ(GetParam().viewer, outcome.viewer->arguments);
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ(Strings(), shop.files());
}

INSTANTIATE_TEST_SUITE_P(
    Vnc, DesktopLink,
    testing::Values(
        Case{"vnc://h/", {"vncviewer", "-ReconnectOnError=0", "h"}},
        Case{"vnc://h:5901/?shared=1&ViewOnly=0",
             {"vncviewer", "-ReconnectOnError=0", "-shared=1", "-ViewOnly=0", "h:5901"}},
        Case{"vnc://h/?fullscreen=1&autoselect=0&qualitylevel=9&compresslevel=0",
             {"vncviewer", "-ReconnectOnError=0", "-autoselect=0", "-compresslevel=0",
              "-fullscreen=1", "-qualitylevel=9", "h"}},
        Case{"vnc://[fe80::1]:5901/", {"vncviewer", "-ReconnectOnError=0", "[fe80::1]:5901"}},
        Case{"vnc://h/?via=-oProxyCommand=any%20command",
             {"vncviewer", "-ReconnectOnError=0", "h"}},
        Case{"vnc://h/?-via=x&PasswordFile=/etc/passwd&shared=12&shared%0A=1&shared=1%2520-via=x",
             {"vncviewer", "-ReconnectOnError=0", "h"}},
        Case{"vnc://h/?-ReconnectOnError=1&reconnectonerror=1",
             {"vncviewer", "-ReconnectOnError=0", "h"}},
        Case{"vnc://h/QUJD", {"vncviewer", "-ReconnectOnError=0", "h"}},
        Case{"vnc://a,b/", {"vncviewer", "-ReconnectOnError=0", "a"}}));

INSTANTIATE_TEST_SUITE_P(
    Ssh, DesktopLink,
    testing::Values(Case{"ssh://h/", {"putty", "-ssh", "-P", "22", "h"}},
                    Case{"ssh://user@h:2222/", {"putty", "-ssh", "-P", "2222", "user@h"}},
                    Case{"ssh://h/?proxycmd=any%20command", {"putty", "-ssh", "-P", "22", "h"}},
                    Case{"ssh://h:23/?P=24&-P=25&m=file&load=session&=-P",
                         {"putty", "-ssh", "-P", "23", "h"}},
                    Case{"ssh://[::1]:2222/", {"putty", "-ssh", "-P", "2222", "[::1]"}}));

class HostileDesktopLink : public testing::TestWithParam<const char*> {};

TEST_P(HostileDesktopLink, StartsNothing) {
  Workshop shop;
  const Outcome outcome = open(shop, GetParam());
  EXPECT_FALSE(outcome.viewer);
  EXPECT_EQ(1, outcome.status);
  EXPECT_EQ(Strings(), shop.files());
}

INSTANTIATE_TEST_SUITE_P(All, HostileDesktopLink,
                         testing::Values("vnc://-via=x[::1]/", "vnc://-shared=1[::1]/",
                                         "vnc://h;touch%20pwned/", "vnc://h%20-via=x/",
                                         "vnc://h$(touch%20pwned)/", "vnc://h%0Ax/",
                                         "vnc://h%C3%A9/", "vnc://*[::1]/", "ssh://-proxycmd[::1]/",
                                         "ssh://-oProxyCommand=touch%20pwned;%23[::1]/",
                                         "ssh://h%20-x:1/", "ssh://h`touch%20pwned`:1/",
                                         "ssh://h:x/", "ssh://h:1;touch%20pwned/", "ssh://h:-1/",
                                         "ssh://h%C3%A9/"));

}  // namespace
