#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Measures from a click to the first connection at the server.

    connection.py ROUNDS NAME=COMMAND...

Each COMMAND is a shell's words; "{port}" in it is the port of a server on this machine.  The
commands are started in turn, ROUNDS times each.  A line of the output is one start: round,
name and nanoseconds, from just before the start until the server has the connection.  What
was started is ended then.
"""

import os
import shlex
import signal
import socket
import subprocess
import sys
import time

LONGEST = 60  # seconds until a start has failed


def measure(server, command):
    began = time.monotonic_ns()
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, start_new_session=True) as process:
        try:
            connection, _ = server.accept()
            took = time.monotonic_ns() - began
            connection.close()
        finally:
            os.killpg(process.pid, signal.SIGKILL)
    return took


def main():
    rounds = int(sys.argv[1])
    commands = [argument.split("=", 1) for argument in sys.argv[2:]]
    with socket.create_server(("127.0.0.1", 0), backlog=16) as server:
        port = str(server.getsockname()[1])
        server.settimeout(LONGEST)
        for number in range(rounds):
            for i in range(len(commands)):
                name, command = commands[(i + number) % len(commands)]
                words = shlex.split(command.replace("{port}", port))
                print(number, name, measure(server, words), sep="\t", flush=True)
                server.settimeout(0.3)  # a viewer may have tried twice
                try:
                    while True:
                        server.accept()[0].close()
                except TimeoutError:
                    server.settimeout(LONGEST)


if __name__ == "__main__":
    main()
