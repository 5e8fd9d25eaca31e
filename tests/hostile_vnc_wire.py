# SPDX-License-Identifier: MIT
"""The input and output of the hostile VNC server: a connection and a journal."""

import json
import socket
import struct
import threading
import time

# No client has reason to send more at once, except for its clipboard.
LONGEST = 1 << 26


class Gone(Exception):
    """The client left, or must leave."""


class Wire:
    """A connection, read by one thread and written to by several."""

    def __init__(self, connection):
        self.connection = connection
        self.lock = threading.Lock()
        self.tight_capabilities = False

    def peer(self):
        host, port = self.connection.getpeername()[:2]
        return f"{host} {port}"

    def read(self, length):
        if length > LONGEST:
            raise Gone(f"{length} bytes are too many")
        data = bytearray()
        while len(data) < length:
            part = self.connection.recv(length - len(data))
            if not part:
                raise Gone
            data += part
        return bytes(data)

    def read_number(self, code):
        return struct.unpack(">" + code, self.read(struct.calcsize(">" + code)))[0]

    def send(self, *parts):
        with self.lock:
            self.connection.sendall(b"".join(parts))

    def close(self):
        # Wakes the thread that reads; closing alone does not.
        try:
            self.connection.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass
        self.connection.close()


class Journal:
    """Lines of JSON, each in the file before anything else happens."""

    def __init__(self, name):
        self.file = open(name, "w", encoding="ascii", buffering=1)
        self.lock = threading.Lock()
        self.start = time.monotonic()

    def note(self, client, event, **what):
        entry = {"time": round(time.monotonic() - self.start, 3), "client": client,
                 "event": event, **what}
        with self.lock:
            self.file.write(json.dumps(entry) + "\n")
