# SPDX-License-Identifier: MIT
"""Runs a program under ever larger limits of its memory until it succeeds.

    edges_memory.py NAME FOLDER-OF-VIEWERS PROGRAM [OPTION...]

NAME is hoplaunch, hopexplain or hopopen.  The smallest limit is the one under which the
program can say that the command line, of the same length, is wrong.  Prints a line for each check, and "end".
"""

import ctypes
import os
import resource
import signal
import subprocess
import sys
import tempfile
import time

NAME, VIEWERS, PROGRAM = sys.argv[1:4]
OPTIONS = sys.argv[4:]
NEW_IPC = 0x08000000
STEP = 32 * 1024
MOST = 512 << 20
LOG = os.path.join(tempfile.mkdtemp(), "log")
MANY = "&".join(f"a{number}={number}" for number in range(8000))


def check(name, good, detail=""):
    print(f"ok {NAME}: {name}" if good else f"FAILED {NAME}: {name}: {str(detail)[:240]}")


def run(arguments, limit):
    """Its status, both outputs, and the seconds that it took."""
    before = time.monotonic()
    try:
        done = subprocess.run(
            arguments, stdin=subprocess.DEVNULL, capture_output=True, check=False, timeout=4,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)),
        )
    except subprocess.TimeoutExpired:
        return "too long", b"", b"", 9
    except (OSError, subprocess.SubprocessError):
        return "not started", b"", b"", 0
    return done.returncode, done.stdout, done.stderr, time.monotonic() - before


def smallest():
    """The smallest limit with which the program starts, as a multiple of the step."""
    bad_line = [*command(), "-x" if NAME != "hopopen" else "--no-such-option"]
    expected = 255 if NAME != "hopopen" else 1
    low, high = 0, MOST // STEP
    while high - low > 1:
        middle = (low + high) // 2
        if run(bad_line, middle * STEP)[0] == expected:
            high = middle
        else:
            low = middle
    return high


def command():
    if NAME == "hoplaunch":
        return [PROGRAM, f"-log={LOG}", f"-program={VIEWERS}/plain", f"vnc://h/?{MANY}"]
    if NAME == "hopexplain":
        return [PROGRAM, f"-program={VIEWERS}/plain", f"vnc://h/?{MANY}"]
    return [PROGRAM, *OPTIONS, f"--log={LOG}", "vnc://h?" + "&".join(f"a{n}=" for n in range(1200))]


def tries():
    """The results of each limit, up to ten successes."""
    successes = 0
    limit = smallest() + 8  # this does not try a stack that cannot grow
    while successes < 10 and limit * STEP < MOST:
        if os.path.exists(LOG):
            os.remove(LOG)
        status, out, err, seconds = run(command(), limit * STEP)
        log = b""
        if os.path.exists(LOG):
            with open(LOG, "rb") as file:
                log = file.read()
        if NAME == "hopexplain":
            launched = status == 0 and b"\nlaunch      yes" in out
        else:
            launched = status == 0 and out == b"viewer\n"
        successes += launched
        yield limit * STEP, launched, status, out, err, seconds, log
        # The first steps are small, because most allocations fail there.
        limit += 1 if limit * STEP < 32 << 20 else 8


def main():
    if ctypes.CDLL(None).unshare(NEW_IPC) != 0:
        raise OSError("no namespace")
    with open(f"{VIEWERS}/plain.c", "w", encoding="ascii") as source:
        source.write('#include <unistd.h>\nint main(void) { return write(1, "viewer\\n", 7) != 7; }\n')
    subprocess.run(["gcc", "-static", "-o", f"{VIEWERS}/plain", f"{VIEWERS}/plain.c"], check=True)
    found = list(tries())
    failures = [each for each in found if not each[1]]
    good = {"hoplaunch": 0, "hopexplain": 1, "hopopen": 3}[NAME]
    check("some limits are too small", len(failures) > 0, len(found))
    check("large limits are enough", found[-1][1], found[-1][:3])
    signals = [each for each in failures if isinstance(each[2], int) and each[2] < 0]
    check("no limit ends it by a signal", not signals,
          [(each[0], signal.Signals(-each[2]).name, each[4][:80]) for each in signals[:2]])
    others = [(each[0], each[2], each[4][:80]) for each in failures if each[2] != good]
    check(f"the status is {good} where memory runs out", not others, (len(others), others[:2]))
    slow = [(each[0], each[5]) for each in failures if each[5] > 3]
    check("no failure waits", not slow, slow[:2])
    lines = {each[4] for each in failures}
    if NAME == "hoplaunch":
        check("nothing is on standard error", lines <= {b""}, list(lines)[:2])
        last = {each[6].splitlines()[-1:] and each[6].splitlines()[-1] for each in failures if each[6]}
        check("the log ends with the same line each time", len(last) <= 1, list(last)[:3])
        ends = all(each[6].endswith(b"\n") for each in failures if each[6])
        check("the log's last line is whole", ends)
        fine = any(line in each[6].splitlines() for each in found if each[1] for line in last)
        check("that line is not in the log of a launch", not fine, list(last)[:2])
    elif NAME == "hopexplain":
        one = all(line.count(b"\n") == 1 and line.endswith(b"\n") for line in lines)
        check("one line is on standard error", bool(lines) and one, list(lines)[:2])
    if NAME == "hopopen":
        check("it is the refusal (start)", all(line.endswith(b" (start)\n") for line in lines), list(lines)[:2])
    with open("/proc/sysvipc/sem", encoding="ascii") as table:
        sets = len(table.readlines()) - 1
    check("no set is left", sets == 0, sets)
    subprocess.run(["ipcrm", "--all=sem"], check=False, capture_output=True)
    print("end")


if __name__ == "__main__":
    main()
