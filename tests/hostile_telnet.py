#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A telnet server for tests that asks for everything.

    hostile_telnet.py --port-file FILE --log FILE

Serves one client: asks for its terminal, speed, screen and variables (RFC 1091, 1079, 1096,
1408 and 1572), all of them and each by its name, and writes what it got to the log, byte by
byte as \\xHH where it is not printable ASCII.
"""

import argparse
import pathlib
import socket
import time

IAC, SE, SB, DO = 255, 240, 250, 253
TERMINAL, SPEED, SCREEN, OLD_VARIABLES, VARIABLES = 24, 32, 35, 36, 39
SEND = 1
NAMED, OWN = 0, 3  # kinds of variables
NAMES = ["DISPLAY", "PRINTER", "HOME", "USER", "PATH", "LANG", "TERM", "XAUTHORITY", "SECRET",
         "SSH_AUTH_SOCK", "DBUS_SESSION_BUS_ADDRESS"]


def questions():
    """Everything that a server may ask."""
    for option in (TERMINAL, SPEED, SCREEN, OLD_VARIABLES, VARIABLES):
        yield bytes([IAC, SB, option, SEND, IAC, SE])
    for option in (OLD_VARIABLES, VARIABLES):
        for kinds in ([NAMED], [OWN], [NAMED, OWN]):
            yield bytes([IAC, SB, option, SEND, *kinds, IAC, SE])
        for name in NAMES:
            for kind in (NAMED, OWN):
                yield bytes([IAC, SB, option, SEND, kind]) + name.encode() + bytes([IAC, SE])


def main():
    """Serves one client."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--port-file", type=pathlib.Path, required=True)
    parser.add_argument("--log", type=pathlib.Path, required=True)
    options = parser.parse_args()
    listener = socket.create_server(("127.0.0.1", 0))
    listener.settimeout(30)
    options.port_file.write_text(str(listener.getsockname()[1]), encoding="ascii")
    client, _ = listener.accept()
    client.settimeout(2)
    for option in (TERMINAL, SPEED, SCREEN, OLD_VARIABLES, VARIABLES):
        client.sendall(bytes([IAC, DO, option]))
    time.sleep(0.5)
    for question in questions():
        client.sendall(question)
    got = b""
    try:
        while received := client.recv(4096):
            got += received
    except TimeoutError:
        pass
    shown = "".join(chr(b) if 32 <= b < 127 else f"\\x{b:02X}" for b in got)
    options.log.write_text(shown + "\n", encoding="ascii")


if __name__ == "__main__":
    main()
