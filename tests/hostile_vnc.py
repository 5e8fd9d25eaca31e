#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A VNC server for tests.  It wants things that it should not have.

    hostile_vnc.py --log FILE --port-file FILE [OPTION...]

Serves a desktop in one colour (RFB 3.3, 3.7 and 3.8), and writes what clients send as
lines of JSON: each has "client" (1, 2, ...), "event" and what belongs to it.

    connect     peer
    version     version
    security    type, and for VeNCrypt and Tight the type inside
    tls         cipher
    vnc_auth    response, and the password among --passwords that gives it
    login       user, password (as they came: nobody is asked to be who they say)
    client_init shared
    put_out     by: another client did not want to share the desktop
    format      bits of a pixel, maxima of red, green and blue
    encodings   encodings
    key         down, key (a keysym)
    pointer     buttons, x, y
    cut_text    text: the clipboard, the plain way
    extended    action (caps, request, peek, notify, provide), formats, texts
    resize      width, height: the client wants the desktop to have that size
    disconnect  why

Its hostile side is chosen by options: it fills the client's clipboard, asks for it,
changes the desktop's size and title, and rings the bell, at the start and again after
each --every seconds.  It ends by itself after --time seconds, at the latest.
"""

import argparse
import itertools
import os
import signal
import socket
import struct
import sys
import threading
import time
import zlib
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

import hostile_vnc_login as login  # noqa: E402
from hostile_vnc_wire import Gone, Journal, Wire  # noqa: E402

# Encodings, and other abilities that clients name in their list of encodings.
RAW, RRE = 0, 2
DESKTOP_SIZE, DESKTOP_NAME, EXTENDED_DESKTOP_SIZE = -223, -307, -308
EXTENDED_CLIPBOARD = 0xC0A1E5CE - (1 << 32)

# The extended clipboard: a word of actions and formats.
ACTIONS = {24: "caps", 25: "request", 26: "peek", 27: "notify", 28: "provide"}
FORMATS = {0: "text", 1: "rtf", 2: "html", 3: "dib", 4: "files"}
BIT = {name: 1 << bit for bit, name in [*ACTIONS.items(), *FORMATS.items()]}

# The server sends raw pictures in strips of so many pixels, so that the largest desktop
# needs no memory here.
STRIP = 1 << 18


class PixelFormat:
    """How the client wants its pixels."""

    def __init__(self, data=struct.pack(">BBBBHHHBBBxxx", 32, 24, 0, 1, 255, 255, 255, 16, 8, 0)):
        self.data = data
        (self.bits, _, self.big, _, *fields) = struct.unpack(">BBBBHHHBBBxxx", data)
        self.maxima, self.shifts = fields[:3], fields[3:]

    def pixel(self, colour):
        value = 0
        for part, maximum, shift in zip(colour, self.maxima, self.shifts):
            value |= (part * maximum + 127) // 255 << shift
        return value.to_bytes(self.bits // 8, "big" if self.big else "little")


class Client:
    """One connection.  Its thread reads; a second one sends what is hostile."""

    def __init__(self, number, connection, server):
        self.number = number
        self.server = server
        self.options = server.options
        self.wire = Wire(connection)
        self.format = PixelFormat()
        self.encodings = []
        self.width, self.height = self.options.size
        self.has_picture = threading.Event()
        self.started = False
        self.ended = False

    def note(self, event, **what):
        self.server.journal.note(self.number, event, **what)

    # --- The connection ---------------------------------------------------------

    def run(self):
        why = "closed"
        try:
            self.note("connect", peer=self.wire.peer())
            login.admit(self)
            self.initialise()
            while True:
                self.message(self.wire.read_number("B"))
        except Gone as gone:
            why = str(gone) or why
        except OSError as error:
            why = error.strerror or str(error)
        finally:
            self.ended = True
            self.note("disconnect", why=why)
            self.wire.close()

    def initialise(self):
        shared = self.wire.read_number("B")
        self.note("client_init", shared=shared)
        if not shared:
            self.server.put_out_all_but(self)
        title = self.options.title.encode()
        self.wire.send(struct.pack(">HH", self.width, self.height), self.format.data,
                       struct.pack(">I", len(title)), title)
        if self.wire.tight_capabilities:
            self.wire.send(bytes(8))  # no messages or encodings of Tight itself
        self.started = True
        self.send_cut_text()
        threading.Thread(target=self.pester, daemon=True).start()

    def message(self, kind):
        read = self.wire.read
        number = self.wire.read_number
        if kind == 0:
            self.format = PixelFormat(read(19)[3:])
            self.note("format", bits=self.format.bits, maxima=self.format.maxima)
        elif kind == 2:
            read(1)
            count = number("H")
            self.encodings = list(struct.unpack(f">{count}i", read(4 * count)))
            self.note("encodings", encodings=self.encodings)
            self.offer_extended_clipboard()
        elif kind == 3:
            self.update(*struct.unpack(">BHHHH", read(9)))
        elif kind == 4:
            down, key = struct.unpack(">BxxI", read(7))
            self.note("key", down=down, key=key)
        elif kind == 5:
            buttons, x, y = struct.unpack(">BHH", read(5))
            self.note("pointer", buttons=buttons, x=x, y=y)
        elif kind == 6:
            read(3)
            self.cut_text(number("i"))
        elif kind == 251:
            read(1)
            width, height, screens = struct.unpack(">HHBx", read(6))
            read(16 * screens)
            self.note("resize", width=width, height=height)
            self.answer_resize()
        elif kind in (150, 248, 250):
            read({150: 9, 248: 7, 250: 3}[kind])
            if kind == 248:
                read(number("B"))
        else:
            raise Gone(f"unknown message {kind}")

    # --- The picture ------------------------------------------------------------

    def update(self, incremental, left, top, width, height):
        if incremental and self.has_picture.is_set():
            return  # nothing ever changes
        pixel = self.format.pixel(self.options.colour)
        width = max(0, min(width, self.width - left))
        height = max(0, min(height, self.height - top))
        if RRE in self.encodings:
            self.rectangle(left, top, width, height, RRE, struct.pack(">I", 0), pixel)
        else:
            rows = max(1, STRIP // max(1, width))
            for row in range(top, top + height, rows):
                part = min(rows, top + height - row)
                self.rectangle(left, row, width, part, RAW, pixel * (width * part))
        self.has_picture.set()

    def rectangle(self, left, top, width, height, encoding, *data):
        self.wire.send(struct.pack(">BxH", 0, 1),
                       struct.pack(">HHHHi", left, top, width, height, encoding), *data)

    def resize(self, width, height, screens):
        if EXTENDED_DESKTOP_SIZE in self.encodings:
            self.width, self.height = width, height
            self.send_screens(0, 0, screens)
        elif DESKTOP_SIZE in self.encodings:
            self.width, self.height = width, height
            self.rectangle(0, 0, width, height, DESKTOP_SIZE)
        else:
            return
        # Some clients do not ask for the new picture.
        self.update(0, 0, 0, width, height)

    def send_screens(self, reason, result, screens=1):
        layout = b"".join(
            struct.pack(">IHHHHI", each, self.width * each // screens, 0,
                        max(1, self.width // screens), self.height, 0)
            for each in range(screens))
        self.rectangle(reason, result, self.width, self.height, EXTENDED_DESKTOP_SIZE,
                       struct.pack(">Bxxx", screens), layout)

    def answer_resize(self):
        if EXTENDED_DESKTOP_SIZE in self.encodings:
            self.send_screens(1, 1)  # the client's own wish, prohibited

    # --- The clipboard ----------------------------------------------------------

    def send_cut_text(self):
        text = self.options.clipboard
        if text is not None:
            data = text.encode("latin-1", "replace")
            self.wire.send(struct.pack(">BxxxI", 3, len(data)), data)

    def extended(self, flags, data=b""):
        if EXTENDED_CLIPBOARD in self.encodings:
            self.wire.send(struct.pack(">BxxxiI", 3, -4 - len(data), flags), data)

    def offer_extended_clipboard(self):
        everything = BIT["caps"] | BIT["request"] | BIT["peek"] | BIT["notify"] | BIT["provide"]
        self.extended(everything | BIT["text"], struct.pack(">I", 1 << 20))

    def provide(self):
        if self.options.clipboard is None:
            return
        data = self.options.clipboard.encode() + b"\0"
        packed = zlib.compress(struct.pack(">I", len(data)) + data)
        self.extended(BIT["provide"] | BIT["text"], packed)

    def cut_text(self, length):
        if length >= 0:
            text = self.wire.read(length).decode("latin-1")
            self.note("cut_text", text=text)
            return
        data = self.wire.read(-length)
        (flags,) = struct.unpack(">I", data[:4])
        actions = [name for bit, name in ACTIONS.items() if flags >> bit & 1]
        formats = [name for bit, name in FORMATS.items() if flags >> bit & 1]
        texts = []
        if actions == ["provide"]:
            texts = self.provided(data[4:], formats)
        self.note("extended", action=" ".join(actions), formats=formats, texts=texts)
        if actions == ["notify"]:
            self.extended(BIT["request"] | BIT["text"])
        elif actions == ["request"]:
            self.provide()

    @staticmethod
    def provided(packed, formats):
        data = zlib.decompressobj().decompress(packed, 1 << 24)
        texts = []
        for _ in formats:
            if len(data) < 4:
                break
            (length,) = struct.unpack(">I", data[:4])
            texts.append(data[4:4 + length].rstrip(b"\0").decode("utf-8", "replace"))
            data = data[4 + length:]
        return texts

    # --- What nobody asked for --------------------------------------------------

    def pester(self):
        options = self.options
        sizes = itertools.cycle(options.resize)
        try:
            self.has_picture.wait(options.time)
            for turn in itertools.count():
                if self.ended:
                    return
                self.send_cut_text()
                if options.clipboard is not None:
                    self.extended(BIT["notify"] | BIT["text"])
                    self.provide()
                if options.ask:
                    self.extended(BIT["peek"])
                    self.extended(BIT["request"] | BIT["text"])
                if options.bell:
                    self.wire.send(b"\x02")
                if options.new_title and DESKTOP_NAME in self.encodings:
                    title = options.new_title.encode()
                    self.rectangle(0, 0, 0, 0, DESKTOP_NAME, struct.pack(">I", len(title)), title)
                if options.resize and (turn < len(options.resize) or options.resize_for_ever):
                    self.resize(*next(sizes))
                time.sleep(options.every)
        except (Gone, OSError):
            return


class Server:
    def __init__(self, options):
        self.options = options
        self.journal = Journal(options.log)
        self.clients = []

    def put_out_all_but(self, stays):
        for client in self.clients:
            if client is not stays and client.started and not client.ended:
                client.note("put_out", by=stays.number)
                client.wire.close()

    def accept(self, listener):
        while True:
            connection, _ = listener.accept()
            client = Client(len(self.clients) + 1, connection, self)
            self.clients.append(client)
            threading.Thread(target=client.run, daemon=True).start()

    def serve(self):
        listeners = listen(self.options.listen, self.options.port)
        for listener in listeners:
            threading.Thread(target=self.accept, args=[listener], daemon=True).start()
        port = str(listeners[0].getsockname()[1])
        self.journal.note(0, "listening", port=int(port))
        if self.options.port_file:
            Path(self.options.port_file).write_text(port + "\n", encoding="ascii")
        time.sleep(self.options.time)


def listen(addresses, port):
    """Sockets at all addresses and the same port, which is any free one if it is 0."""
    for _ in range(100):
        listeners = []
        try:
            for address in addresses:
                family = socket.AF_INET6 if ":" in address else socket.AF_INET
                listener = socket.socket(family)
                listeners.append(listener)
                listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
                listener.bind((address, port or listeners[0].getsockname()[1]))
                listener.listen(20)
            return listeners
        except OSError:
            for listener in listeners:
                listener.close()
            if port:
                raise
    raise SystemExit("no free port")


# --- The command line -------------------------------------------------------------


def size(text):
    width, height = text.split("x")
    return int(width), int(height)


def resize(text):
    """1024x768 or, with three screens side by side, 1024x768@3."""
    geometry, _, screens = text.partition("@")
    return *size(geometry), int(screens or 1)


def colour(text):
    return tuple(bytes.fromhex(text.lstrip("#")))


def arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("--log", required=True, metavar="FILE", help="what clients send, as lines of JSON")
    add("--port", type=int, default=0, help="0, as without it, is any free port")
    add("--port-file", metavar="FILE", help="where the port is written when all is ready")
    add("--listen", nargs="+", default=["127.0.0.1", "::1"], metavar="ADDRESS")
    add("--time", type=float, default=120, metavar="SECONDS", help="ends after them (120)")
    add("--every", type=float, default=0.5, metavar="SECONDS", help="between attempts (0.5)")
    add("--version", default="3.8", choices=["3.3", "3.7", "3.8"])
    add("--security", nargs="+", default=["none"], choices=login.TYPES, metavar="TYPE",
        help="offered, in this order: " + ", ".join(login.TYPES))
    add("--certificate", metavar="FILE", help="key and certificate in PEM, for x509-*")
    add("--passwords", nargs="+", default=[], metavar="WORD",
        help="which VNC authentication is compared with")
    add("--size", type=size, default=(320, 240), metavar="WIDTHxHEIGHT", help="(320x240)")
    add("--colour", type=colour, default=colour("7A1FA2"), metavar="RRGGBB", help="(7A1FA2)")
    add("--title", default="hostile desktop", help="the desktop's name")
    add("--new-title", metavar="TITLE", help="the name it gets later")
    add("--clipboard", metavar="TEXT", help="put into the clients' clipboards")
    add("--ask", action="store_true", help="ask for the clients' clipboards")
    add("--bell", action="store_true", help="ring it")
    add("--resize", type=resize, nargs="+", default=[], metavar="WIDTHxHEIGHT[@SCREENS]",
        help="later sizes of the desktop, one at each attempt")
    add("--resize-for-ever", action="store_true", help="begin again after the last one")
    return parser.parse_args()


def main():
    signal.signal(signal.SIGTERM, lambda *_: os._exit(0))
    try:
        Server(arguments()).serve()
    except KeyboardInterrupt:
        pass
    os._exit(0)  # threads still wait for clients


if __name__ == "__main__":
    main()
