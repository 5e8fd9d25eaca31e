// SPDX-License-Identifier: MIT
// What the shipped viewers of rdp, spice and telnet links are given.

#include "hopopen_runner.h"

namespace hopopen_schemes_test {

namespace {

using door::Json;
using door::Machine;
using door::Strings;

// The shipped definitions and programs for all of them.
void furnish(const Machine& machine) {
  door::fs::create_directories(machine.path("share/hoplaunch"));
  door::fs::create_directory_symlink(VIEWERS, machine.path("share/hoplaunch/viewers"));
  for (const char* name :
       {"xfreerdp", "xfreerdp3", "sdl-freerdp3", "remmina", "krdc", "putty", "remote-viewer",
        "spicy", "inetutils-telnet", "env", "x-terminal-emulator"}) {
    machine.program(name);
  }
  door::fs::create_symlink("inetutils-telnet", machine.path("bin/telnet"));
}

Strings vectorFor(const Machine& machine, const std::string& viewer, const std::string& link) {
  const Json told = machine.dry({"--viewer", viewer, link});
  return told["arguments"].is_null() ? Strings{told["refusal"]["code"].get<std::string>()}
                                     : told["arguments"].get<Strings>();
}

// Every pair there is, except for those that a viewer may have arguments for.
std::string everyPair() {
  std::string result = "rdp://full%20address=s:h:3390";
  for (const char* pair : {"alternate%20shell=s:calc",
                           "shell%20working%20directory=s:x",
                           "remoteapplicationmode=i:1",
                           "remoteapplicationprogram=s:%7C%7Ccalc",
                           "remoteapplicationcmdline=s:x",
                           "remoteapplicationfile=s:x",
                           "drivestoredirect=s:*",
                           "devicestoredirect=s:*",
                           "redirectdrives=i:1",
                           "redirectclipboard=i:1",
                           "redirectprinters=i:1",
                           "redirectsmartcards=i:1",
                           "redirectcomports=i:1",
                           "audiocapturemode=i:1",
                           "camerastoredirect=s:*",
                           "usbdevicestoredirect=s:*",
                           "use%20multimon=i:1",
                           "selectedmonitors=s:0",
                           "authentication%20level=i:0",
                           "enablecredsspsupport=i:0",
                           "prompt%20for%20credentials=i:0",
                           "negotiate%20security%20layer=i:0",
                           "alternate%20full%20address=s:evil.example",
                           "gatewayhostname=s:evil.example",
                           "gatewayusagemethod=i:1",
                           "loadbalanceinfo=s:x",
                           "password%2051=b:01geheim7",
                           "keyboardhook=i:1",
                           "kdcproxyname=s:evil.example",
                           "x=s:/shell:calc",
                           "y=s:+drives"}) {
    result.append("&").append(pair);
  }
  return result;
}

TEST(ShippedViewers, OfRdpAreToldNothingOfWhatIsDangerous) {
  const Machine machine;
  furnish(machine);
  const std::string env = machine.path("bin/env");
  EXPECT_EQ((Strings{"sdl-freerdp3", "-clipboard", "-grab-keyboard", "-grab-mouse", "/w:960",
                     "/h:600", "/v:h", "/port:3390"}),
            vectorFor(machine, "freerdp3", everyPair()));
  EXPECT_EQ((Strings{"x-terminal-emulator", "-e", machine.path("bin/xfreerdp3"), "-clipboard",
                     "-grab-keyboard", "-grab-mouse", "/v:h", "/port:3390"}),
            vectorFor(machine, "freerdp3-x11", everyPair()));
  EXPECT_EQ((Strings{"x-terminal-emulator", "-e", machine.path("bin/xfreerdp"), "-clipboard",
                     "-grab-keyboard", "-grab-mouse", "/v:h", "/port:3390"}),
            vectorFor(machine, "freerdp2", everyPair()));
  EXPECT_EQ((Strings{"remmina", "-c", "rdp://h:3390"}),
            vectorFor(machine, "remmina-rdp", everyPair()));
  EXPECT_EQ((Strings{"krdc", "rdp://h:3390"}), vectorFor(machine, "krdc-rdp", everyPair()));
}

TEST(ShippedViewers, OfRdpAreToldWhatIsHarmless) {
  const Machine machine;
  furnish(machine);
  machine.set("[trust]\nhosts = [\"good\"]\n");
  const std::string wishes =
      "rdp://full%20address=s:[::1]&desktopwidth=i:1024&desktopheight=i:0768"
      "&audiomode=i:2&screen%20mode%20id=i:2&username=s:kim&domain=s:LAB";
  EXPECT_EQ((Strings{"x-terminal-emulator", "-e", machine.path("bin/xfreerdp3"), "-clipboard",
                     "-grab-keyboard", "-grab-mouse", "/w:1024", "/h:768", "/audio-mode:2",
                     "/u:LAB\\kim", "/v:[::1]", "/port:3389"}),
            vectorFor(machine, "freerdp3-x11", wishes));
  EXPECT_EQ((Strings{"sdl-freerdp3", "-clipboard", "-grab-keyboard", "-grab-mouse", "/w:960",
                     "/h:600", "/audio-mode:2", "/u:LAB\\kim", "/v:[::1]", "/port:3389"}),
            vectorFor(machine, "freerdp3", wishes));
  const std::string trusted =
      "rdp://full%20address=s:good&desktopwidth=i:8192&screen%20mode%20id=i:2";
  EXPECT_EQ((Strings{"x-terminal-emulator", "-e", machine.path("bin/xfreerdp"), "/w:8192", "/f",
                     "/v:good", "/port:3389"}),
            vectorFor(machine, "freerdp2", trusted));
  EXPECT_EQ((Strings{"sdl-freerdp3", "/f", "/v:good", "/port:3389"}),
            vectorFor(machine, "freerdp3", trusted));
}

TEST(ShippedViewers, OfRdpCannotOnlyLook) {
  const Machine machine;
  furnish(machine);
  for (const char* viewer : {"freerdp2", "freerdp3", "freerdp3-x11", "remmina-rdp", "krdc-rdp"}) {
    EXPECT_EQ(Strings{"restriction"}, vectorFor(machine, viewer, "rdp://h?ViewOnly=1")) << viewer;
  }
}

TEST(ShippedViewers, OfSpiceGoToTheOnePort) {
  const Machine machine;
  furnish(machine);
  const Strings guards{"--spice-disable-audio", "--spice-disable-usbredir"};
  EXPECT_EQ((Strings{"spicy", guards[0], guards[1], "--host=::1", "--port=5901"}),
            vectorFor(machine, "spicy", "spice://[::1]:5901"));
  EXPECT_EQ((Strings{"spicy", guards[0], guards[1], "--host=h", "--secure-port=5901"}),
            vectorFor(machine, "spicy", "spice://h:5900?tls-port=5901"));
  EXPECT_EQ((Strings{"remote-viewer", guards[0], guards[1], "spice+tls://h:5901"}),
            vectorFor(machine, "virt-viewer-spice", "spice://kim@h:5900?tls-port=5901"));
  EXPECT_EQ((Strings{"remote-viewer", guards[0], guards[1], "spice://h:5900"}),
            vectorFor(machine, "virt-viewer-spice", "spice://h"));
}

TEST(ShippedViewers, OfSpiceAreForTrustedMachinesUnlessTheyAreChosen) {
  const Machine machine;
  furnish(machine);
  EXPECT_EQ("refused: viewer", machine.comesOf({"spice://h"}));
  const std::string why = machine.dry({"spice://h"})["refusal"]["message"];
  EXPECT_TRUE(contains(why, "hopopen --trust h")) << why;
  EXPECT_TRUE(contains(why, "hopopen --use virt-viewer-spice spice")) << why;
  machine.set("[trust]\nhosts = [\"h\"]\n");
  EXPECT_EQ("virt-viewer-spice", machine.comesOf({"spice://h"}));
}

TEST(ShippedViewers, OfTelnetGetNothingOfTheScreenAndThePrinter) {
  const Machine machine;
  furnish(machine);
  EXPECT_EQ((Strings{"x-terminal-emulator", "-e", machine.path("bin/env"), "-u", "DISPLAY", "-u",
                     "PRINTER", machine.path("bin/inetutils-telnet"), "-E", "-c", "-l", "kim", "h",
                     "23"}),
            vectorFor(machine, "telnet", "telnet://kim:geheim7@h"));
  EXPECT_EQ((Strings{"putty", "-telnet", "-l", "kim", "-P", "2323", "[::1]"}),
            vectorFor(machine, "putty-telnet", "telnet://kim@[::1]:2323"));
  EXPECT_EQ("telnet", machine.comesOf({"telnet://h"}));
}

}  // namespace

}  // namespace hopopen_schemes_test
