# SPDX-License-Identifier: MIT
"""Sends signals to tools that wait at a full pipe, while they have their set.

    edges_signals.py HOPLAUNCH HOPEXPLAIN FOLDER-OF-VIEWERS

Enters a private IPC namespace.  Prints a line for each check, and "end".
"""

import ctypes
import fcntl
import os
import random
import re
import signal
import subprocess
import sys
import time

LAUNCH, EXPLAIN, VIEWERS = sys.argv[1:4]
NEW_IPC = 0x08000000
SETVAL = 16
LOG = os.path.join(VIEWERS, "log")


def check(name, expected, found):
    print(f"ok {name}" if expected == found else f"FAILED {name}: expected {expected}, found {found}")


def sets():
    with open("/proc/sysvipc/sem", encoding="ascii") as table:
        return len(table.readlines()) - 1


def remove_sets():
    subprocess.run(["ipcrm", "--all=sem"], check=False, capture_output=True)


def full_pipe():
    reader, writer = os.pipe()
    os.set_blocking(writer, False)
    for size in (4096, 1):
        try:
            while True:
                os.write(writer, b"#" * size)
        except BlockingIOError:
            pass
    os.set_blocking(writer, True)
    return reader, writer


def drain(reader):
    os.set_blocking(reader, False)
    taken = b""
    limit = time.monotonic() + 5
    while time.monotonic() < limit:
        try:
            part = os.read(reader, 65536)
        except BlockingIOError:
            time.sleep(0.02)
            continue
        if not part:
            break
        taken += part
    return taken


def started(command, ignored, **streams):
    def prepare():
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            signal.signal(number, signal.SIG_IGN if number in ignored else signal.SIG_DFL)

    child = subprocess.Popen(command, stdin=subprocess.DEVNULL, preexec_fn=prepare, **streams)
    limit = time.monotonic() + 3
    # It sleeps in the write to the pipe.
    while time.monotonic() < limit:
        with open(f"/proc/{child.pid}/wchan", encoding="ascii") as place:
            if "pipe" in place.read():
                break
        with open(f"/proc/{child.pid}/syscall", encoding="ascii") as call:
            if call.read().split()[0] in ("1", "20", "64"):
                time.sleep(0.05)
                break
        time.sleep(0.01)
    return child


def ended(child, seconds=3):
    try:
        return child.wait(seconds)
    except subprocess.TimeoutExpired:
        return "still there"


def stop(child):
    child.kill()
    child.wait()


def try_signal(tool, command, stream, number):
    name = f"{tool} gets {signal.Signals(number).name} at a full pipe"
    reader, writer = full_pipe()
    child = started(command, (), **{stream: writer})
    os.close(writer)
    child.send_signal(number)
    check(f"{name}: ends by it", -number, ended(child))
    stop(child)
    os.close(reader)
    check(f"{name}: no set is left", 0, sets())
    remove_sets()


def try_ignored(number):
    name = f"hoplaunch was told to ignore {signal.Signals(number).name}"
    reader, writer = full_pipe()
    command = [LAUNCH, "-refcount=1", f"-program={VIEWERS}/signals", "vnc://h/"]
    child = started(command, (number,), stderr=writer, stdout=subprocess.PIPE)
    os.close(writer)
    child.send_signal(number)
    check(f"{name}: it stays", "still there", ended(child, 0.3))
    drain(reader)
    os.close(reader)
    check(f"{name}: it goes on", 0, ended(child))
    if child.poll() is None:
        stop(child)
    found = [line for line in child.stdout.read().decode().splitlines() if "SigIgn" in line]
    check(f"{name}: so does the viewer", [f"SigIgn:\t{1 << (number - 1):016x}"], found)
    check(f"{name}: no set is left", 0, sets())
    remove_sets()


def stuck(ignored=()):
    """A launcher that has a log and waits at a full pipe; the pipe; and its set."""
    if os.path.exists(LOG):
        os.remove(LOG)
    reader, writer = full_pipe()
    command = [LAUNCH, "-refcount=1", f"-log={LOG}", f"-program={VIEWERS}/seen", "vnc://h/"]
    child = started(command, ignored, stderr=writer, stdout=subprocess.DEVNULL)
    os.close(writer)
    with open("/proc/sysvipc/sem", encoding="ascii") as table:
        return child, reader, int(table.readlines()[-1].split()[1])


def failed_call(child, reader, name, text):
    """It ends by SIGABRT, with a line on standard error that is in the log with `text`."""
    said = drain(reader).decode("latin-1").rstrip("\n").rsplit("\n", 1)[-1]
    os.close(reader)
    check(f"{name}: ends by SIGABRT", -signal.SIGABRT, ended(child))
    stop(child)
    fits = re.fullmatch(r"0 == semop\(set_id, &operation, 1\) in \S+@\d+", said)
    check(f"{name}: standard error's line", True, fits is not None or said[-200:])
    log = ""
    if os.path.exists(LOG):
        with open(LOG, encoding="latin-1") as file:
            log = file.read()
    check(f"{name}: the log", f"{said}: {text}\n", log)
    check(f"{name}: no set is left", 0, sets())
    remove_sets()


def take_all_sections(found):
    libc = ctypes.CDLL(None, use_errno=True)
    for section in range(6):
        libc.semctl(found, section, SETVAL, 0)


def wait_for_section(child):
    limit = time.monotonic() + 3
    while time.monotonic() < limit:
        with open(f"/proc/{child.pid}/syscall", encoding="ascii") as call:
            if call.read().split()[0] in ("65", "220", "192", "193"):
                return
        time.sleep(0.01)


def try_lost_set():
    child, reader, found = stuck()
    subprocess.run(["ipcrm", "-s", str(found)], check=False)
    failed_call(child, reader, "somebody removed the set", "Invalid argument")


def try_stopped():
    """It waits for a section, is stopped and goes on: the call fails."""
    child, reader, found = stuck()
    take_all_sections(found)
    os.set_blocking(reader, False)
    taken = os.read(reader, 1 << 20)
    wait_for_section(child)
    while True:
        try:
            taken += os.read(reader, 65536)
        except BlockingIOError:
            break
    child.send_signal(signal.SIGSTOP)
    time.sleep(0.1)
    child.send_signal(signal.SIGCONT)
    failed_call(child, reader, "stopped and continued while it waits", "Interrupted system call")


def try_waiting(number):
    name = f"hoplaunch gets {signal.Signals(number).name} while it waits for a section"
    child, reader, found = stuck()
    take_all_sections(found)
    os.set_blocking(reader, False)
    os.read(reader, 1 << 20)
    wait_for_section(child)
    child.send_signal(number)
    check(f"{name}: ends by it", -number, ended(child))
    stop(child)
    os.close(reader)
    check(f"{name}: no set is left", 0, sets())
    remove_sets()


def try_random(tool, command):
    chance = random.Random(14)
    bad = []
    for number in range(90):
        number = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)[number % 3]
        child = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL
        )
        time.sleep(chance.uniform(0, 0.012))
        child.send_signal(number)
        result = ended(child)
        if result not in (0, -number):
            bad.append(result)
    check(f"{tool} gets 90 signals at any time: ends well or by them", [], bad)
    check(f"{tool} gets 90 signals at any time: no set is left", 0, sets())
    remove_sets()


def main():
    if ctypes.CDLL(None).unshare(NEW_IPC) != 0:
        raise OSError("no namespace")
    quiet = [LAUNCH, f"-program={VIEWERS}/seen", "vnc://h/"]
    explained = [EXPLAIN, f"-program={VIEWERS}/seen", "vnc://h/"]
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        traced = [LAUNCH, "-refcount=1", f"-program={VIEWERS}/seen", "vnc://h/"]
        try_signal("hoplaunch", traced, "stderr", number)
        try_signal("hopexplain", explained, "stdout", number)
        traced[0] = EXPLAIN
        try_signal("hopexplain with a trace", traced, "stderr", number)
        try_ignored(number)
        try_waiting(number)
    try_lost_set()
    try_stopped()
    try_random("hoplaunch", quiet)
    try_random("hopexplain", explained)
    print("end")


if __name__ == "__main__":
    main()
