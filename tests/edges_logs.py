# SPDX-License-Identifier: MIT
"""Launches with logs that block: FIFOs, full pipes, terminals that accept nothing.

    edges_logs.py NAME FOLDER-OF-VIEWERS COMMAND...

COMMAND is the program with the options that it always gets; "hoplaunch" and "hopopen" are
the names.  Prints a line for each check, and "end".
"""

import ctypes
import os
import pty
import signal
import socket
import subprocess
import sys
import tempfile
import termios
import time

NAME, VIEWERS = sys.argv[1:3]
COMMAND = sys.argv[3:]
NEW_IPC = 0x08000000
PATIENCE = 2.5
HOPLAUNCH = NAME == "hoplaunch"
LINK = "vnc://h/" if HOPLAUNCH else "vnc://h"
SHOWN = LINK if HOPLAUNCH else f'"{LINK}"'
SEEN = "<--autoreconnect=0><h>\n" if HOPLAUNCH else "<h::5900>\n"


def check(name, expected, found):
    name = f"{NAME}: {name}"
    if expected == found:
        print(f"ok {name}")
    else:
        print(f"FAILED {name}: expected {str(expected)[:200]}, found {str(found)[:200]}")


def command(log, viewer="seen", link=LINK):
    if HOPLAUNCH:
        return [*COMMAND, f"-log={log}", f"-program={VIEWERS}/{viewer}", link]
    return [*COMMAND, f"--log={log}", link]


def launch(arguments, **more):
    """Its status, its standard output, and whether it took too long."""
    more.setdefault("stdout", subprocess.PIPE)
    child = subprocess.Popen(
        arguments, stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, start_new_session=True, **more
    )
    try:
        out, _ = child.communicate(timeout=PATIENCE)
        return child.returncode, (out or b"").decode("latin-1")
    except subprocess.TimeoutExpired:
        os.killpg(child.pid, signal.SIGKILL)
        child.communicate()
        return "it blocks", ""


def fill(writer, leave=0):
    """Fills a pipe except for so many bytes of its last page; returns how much is in it."""
    os.set_blocking(writer, False)
    total = 0
    for size in (4096, 1):
        try:
            while True:
                total += os.write(writer, b"#" * size)
        except BlockingIOError:
            pass
    os.set_blocking(writer, True)
    return total


def drain(reader):
    os.set_blocking(reader, False)
    taken = b""
    try:
        while part := os.read(reader, 65536):
            taken += part
    except BlockingIOError:
        pass
    return taken


def try_fifo(folder):
    fifo = f"{folder}/fifo"
    os.mkfifo(fifo)
    status, out = launch(command(fifo))
    check("a FIFO without a reader", (0, SEEN), (status, out))
    reader = os.open(fifo, os.O_RDONLY | os.O_NONBLOCK)
    status, out = launch(command(fifo))
    check("a FIFO with a reader", (0, SEEN), (status, out))
    text = drain(reader).decode("latin-1")
    last = '\t"h"\n' if HOPLAUNCH else '\t"h::5900"\n'
    check("a FIFO with a reader gets the log", True, f"URI = {SHOWN}\n" in text and text.endswith(last))
    writer = os.open(fifo, os.O_WRONLY | os.O_NONBLOCK)
    filled = fill(writer)
    status, out = launch(command(fifo))
    check("a full FIFO", (0, SEEN), (status, out))
    check("a full FIFO gets nothing", filled, len(drain(reader)))
    os.close(reader)
    os.close(writer)


def try_descriptor():
    reader, writer = os.pipe()
    filled = fill(writer)
    status, out = launch(command(f"/dev/fd/{writer}"), pass_fds=[writer])
    check("a full pipe by its descriptor", (0, SEEN), (status, out))
    check("a full pipe by its descriptor gets nothing", filled, len(drain(reader)))
    status, out = launch(command(f"/dev/fd/{writer}"), pass_fds=[writer])
    check("a pipe by its descriptor", (0, SEEN), (status, out))
    check("a pipe by its descriptor gets the log", True, f"URI = {SHOWN}\n".encode() in drain(reader))
    check("a pipe by its descriptor blocks others as before", True, os.get_blocking(writer))
    os.close(reader)
    status, out = launch(command(f"/dev/fd/{writer}"), pass_fds=[writer])
    check("a pipe by its descriptor that nobody reads", (0, SEEN), (status, out))
    os.close(writer)


def try_standard_output():
    reader, writer = os.pipe()
    fill(writer)
    child = subprocess.Popen(
        command("/dev/stdout", "touching"), stdin=subprocess.DEVNULL, stdout=writer,
        stderr=subprocess.PIPE, start_new_session=True,
    )
    limit = time.monotonic() + PATIENCE
    touched = f"{VIEWERS}/touched"
    while time.monotonic() < limit and not os.path.exists(touched):
        time.sleep(0.02)
    check("standard output is full, and the log: the viewer starts", True, os.path.exists(touched))
    if os.path.exists(touched):
        with open(touched, encoding="ascii") as flags:
            waits = not int(flags.read().split()[3], 8) & os.O_NONBLOCK
        check("standard output is full, and the log: the viewer's blocks as before", True, waits)
        os.remove(touched)
    os.killpg(child.pid, signal.SIGKILL)
    child.communicate()
    os.close(reader)
    os.close(writer)


def try_lost_line():
    """Room for all lines but one: only that one is lost."""
    reader, writer = os.pipe()
    filled = fill(writer)
    os.read(reader, 4096)  # one page is free
    wide = "x" * 3000
    status, out = launch(
        command(f"/dev/fd/{writer}", link=f"vnc://h/?a={wide}"), pass_fds=[writer]
    )
    check("a pipe with room for some lines", (0, f"<--autoreconnect=0><-a={wide}><h>\n"), (status, out))
    lines = drain(reader)[filled - 4096 :].decode("latin-1").splitlines()
    check(
        "a pipe with room for some lines loses only the one that has none",
        [f": URI = vnc://h/?a={wide}", f"executable: {VIEWERS}/seen", '\t"seen"',
         '\t"--autoreconnect=0"', '\t"h"'],
        [line[15:] if ": URI = " in line else line for line in lines],
    )
    os.close(reader)
    os.close(writer)


def try_terminal():
    """A terminal whose output nobody reads: it is full after some kilobytes."""
    master, slave = pty.openpty()
    name = os.ttyname(slave)
    status, out = launch(command(name))
    check("a terminal", (0, SEEN), (status, out))
    check("a terminal gets the log", True, LINK.encode() in drain(master))
    os.set_blocking(slave, False)
    try:
        while True:
            os.write(slave, b"#" * 512)
    except BlockingIOError:
        pass
    status, out = launch(command(name))
    check("a terminal that takes nothing", (0, SEEN), (status, out))
    drain(master)
    termios.tcflow(slave, termios.TCOOFF)
    status, out = launch(command(name))
    check("a terminal that was stopped", (0, SEEN), (status, out))
    termios.tcflow(slave, termios.TCOON)
    os.close(master)
    os.close(slave)


def try_socket(folder):
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(f"{folder}/socket")
        listener.listen()
        check("a socket", (0, SEEN), launch(command(f"{folder}/socket")))


def main():
    if ctypes.CDLL(None).unshare(NEW_IPC) != 0:
        raise OSError("no namespace")
    with open(f"{VIEWERS}/touching", "w", encoding="ascii") as viewer:
        viewer.write(f"#!/bin/sh\ncat /proc/$$/fdinfo/1 >{VIEWERS}/touched.new\n")
        viewer.write(f"mv {VIEWERS}/touched.new {VIEWERS}/touched\n")
    os.chmod(f"{VIEWERS}/touching", 0o755)
    with tempfile.TemporaryDirectory() as folder:
        try_fifo(folder)
        try_descriptor()
        try_terminal()
        try_socket(folder)
        if HOPLAUNCH:
            try_standard_output()
            try_lost_line()
    print("end")


if __name__ == "__main__":
    main()
