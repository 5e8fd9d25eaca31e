# SPDX-License-Identifier: MIT
"""Runs a command, and makes its system calls of some names fail at once with an error number.

    edges_filter.py NAME=NUMBER[,NAME=NUMBER...] COMMAND...

The number 0 stands for success without anything done.
"""

import ctypes
import os
import platform
import struct
import sys

NUMBERS = {
    "x86_64": {
        "semget": 64, "semop": 65, "semctl": 66, "semtimedop": 220,
        "nanosleep": 35, "clock_nanosleep": 230,
    },
    "aarch64": {
        "semget": 190, "semctl": 191, "semtimedop": 192, "semop": 193,
        "nanosleep": 101, "clock_nanosleep": 115,
    },
}
LOAD, JUMP_EQUAL, RETURN = 0x20, 0x15, 0x06
ALLOW, ERRNO = 0x7FFF0000, 0x00050000
SET_SECCOMP, NO_NEW_PRIVILEGES, FILTER = 22, 38, 2


def install(errors):
    """Makes the calls fail from now on, in this process and its children."""
    numbers = NUMBERS[platform.machine()]
    program = [(LOAD, 0, 0, 0)]
    for name, number in errors.items():
        program += [(JUMP_EQUAL, 0, 1, numbers[name]), (RETURN, 0, 0, ERRNO | number)]
    program.append((RETURN, 0, 0, ALLOW))
    code = ctypes.create_string_buffer(b"".join(struct.pack("HBBI", *step) for step in program))
    filters = ctypes.create_string_buffer(struct.pack("HxxxxxxP", len(program), ctypes.addressof(code)))
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.prctl(NO_NEW_PRIVILEGES, 1, 0, 0, 0) or libc.prctl(SET_SECCOMP, FILTER, filters, 0, 0):
        raise OSError(ctypes.get_errno(), "no filter")


if __name__ == "__main__":
    install({name: int(number) for name, number in (pair.split("=") for pair in sys.argv[1].split(","))})
    os.execvp(sys.argv[2], sys.argv[2:])
