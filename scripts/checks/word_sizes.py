# SPDX-License-Identifier: MIT
"""Gives a 64-bit and a 32-bit hoplaunch the same command lines, and compares what comes
of them to the byte: status, output, log, and what the viewer was given.

    word_sizes.py HOPLAUNCH HOPLAUNCH RECORDING_VIEWER CASES
"""

import concurrent.futures
import random
import re
import subprocess
import sys
import tempfile
from pathlib import Path

GENERATED = 1000
SEED = 1
VIEWERS = ["vncviewer", "putty", "xyz", "a=b"]

ESCAPE = re.compile(rb'\\(x[0-9A-Fa-f]{2}|.)')
WORD = re.compile(rb'"((?:[^"\\]|\\.)*)"|(\S+)')


def unescaped(text):
    plain = {b"n": b"\n", b"t": b"\t"}
    return ESCAPE.sub(lambda m: bytes([int(m[1][1:], 16)]) if len(m[1]) == 3 else
                      plain.get(m[1], m[1]), text)


def cases_of(name):
    """The arguments of each case (see the file's head)."""
    found = []
    for line in Path(name).read_bytes().splitlines():
        if line.startswith(b"run:"):
            found.append([unescaped(m[1]) if m[1] is not None else m[2]
                          for m in WORD.finditer(line[4:])])
    return found


NUMBERS = [b"0", b"1", b"5900", b"65536", b"2147483647", b"2147483648", b"4294967295",
           b"4294967296", b"-1", b"99999999999999999999", b"007", b"1x", b""]
TEXTS = [b"", b"a", b"shared", b"a%20b", b"%2526", b"%41%zz", b"%", b"\xc3\xa4", b"\xff\x80",
         b"\x01\x1f\x7f", b'"quoted"', b"back\\slash", b"+,;=", b"x" * 3000, b"%00", b"$HOME"]


def some_uri(rng):
    scheme = rng.choice([b"vnc", b"VNC", b"ssh", b"Ssh"] * 5 + [b"ftp", b"", b"x+y", b"v nc"])
    address = rng.choice([b"h", b"host.example.org", b"[::1]", b"[fe80::1%25eth0]", b"1.2.3.4",
                          b"a,b+c", b"h:5900,other"] * 3 + [b"", b"-h", rng.choice(TEXTS)])
    if rng.random() < 0.5:
        address += b":" + rng.choice(NUMBERS)
    ticket = b""
    if rng.random() < 0.3:
        ticket = rng.choice(NUMBERS) + b"," + rng.choice([b"", b"QUJD", b"QQ==", b"Q", b"!bad!"])
    query = b""
    if rng.random() < 0.7:
        pairs = [rng.choice(TEXTS) + rng.choice([b"="] * 20 + [b""]) +
                 rng.choice(TEXTS + NUMBERS) for _ in range(rng.randrange(6))]
        query = b"?" + b"&".join(pairs)
    uri = bytearray(scheme + b"://" + address + rng.choice([b"/"] * 10 + [b""]) + ticket + query)
    for _ in range(rng.choice([0] * 8 + [1, 3])):  # a slip of the pen
        if uri:
            uri[rng.randrange(len(uri))] = rng.randrange(1, 256)
    return bytes(uri)


def some_option(rng):
    key, value = rng.choice([
        (b"style", rng.choice([b"separate", b"equals", b"Separate", b""])),
        (b"portArg", rng.choice([b"P", b"port", b"-p", b""])),
        (b"program", rng.choice([b"xyz", b"bin/xyz", b"./bin/putty", b"a=b", b""])),
        (b"PROGRAMS", rng.choice([b"VNC=xyz", b"RDP=xyz", b"xyz", b"SSH=", b"=xyz"])),
        (b"VNC_OPTIONS", rng.choice([b"a=1", b"", b"-x=", b"novalue", rng.choice(TEXTS)])),
        (b"MaxShortName", rng.choice(NUMBERS)),
        (b"LogTimeZone", rng.choice(NUMBERS + [b"UTC", b"EST"])),
        (b"defaultLanguage", rng.choice([b"de", b"en", b"zz"])),
        (b"unknown", rng.choice(TEXTS)),
    ])
    key = bytes(rng.choice([c, ord(chr(c).swapcase())]) for c in key) if rng.random() < 0.2 else key
    return [b"-" + key, value] if rng.random() < 0.3 else [b"-" + key + b"=" + value]


def generated():
    rng = random.Random(SEED)
    for number in range(GENERATED):
        words = [[some_uri(rng)]] + [some_option(rng) for _ in range(rng.randrange(5))]
        if number % 100 == 0:
            words.append([b"-program=nosuch"])  # takes five seconds
        rng.shuffle(words)
        arguments = [b"-log=log"] + [word for group in words for word in group]
        # A NUL ends an argument.
        yield [argument.replace(b"\0", b"") for argument in arguments]


def outcome(launcher, viewer, arguments):
    """All that a launch does, as name and bytes."""
    with tempfile.TemporaryDirectory(prefix="hoplaunch-sizes-") as folder:
        work = Path(folder)
        (work / "bin").mkdir()
        for name in VIEWERS:
            (work / "bin" / name).symlink_to(viewer)
        done = subprocess.run([b"hoplaunch", *arguments], executable=launcher, cwd=work,
                              env={"PATH": "bin"}, stdin=subprocess.DEVNULL, capture_output=True,
                              timeout=60, check=False)
        found = {"status": str(done.returncode).encode(), "output": done.stdout,
                 "errors": done.stderr}
        if b"Stack trace" in done.stderr:
            found["errors"] = b"a trace"  # of addresses
        for path in work.iterdir():
            # What is in the other records has nothing to do with the word size.
            if path.name not in ("bin", "recording.process", "recording.descriptors"):
                found[path.name] = re.sub(rb"(?m)^\d{8}T\d{6}(?=: URI = )", b"TIME",
                                          path.read_bytes())
        return found


def main():
    first, second, viewer, cases = sys.argv[1:]
    lines = cases_of(cases) + list(generated())
    failed = viewers = 0
    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        for line, one, other in zip(lines,
                                    pool.map(lambda a: outcome(first, viewer, a), lines),
                                    pool.map(lambda a: outcome(second, viewer, a), lines)):
            viewers += "recording.arguments" in one
            if one != other:
                failed += 1
                print(f"FAILED: {line}")
                for name in sorted(set(one) | set(other)):
                    if one.get(name) != other.get(name):
                        print(f"  {name}: {one.get(name)!r}\n  {name}: {other.get(name)!r}")
    print(f"{viewers} of {len(lines)} command lines started a viewer (seed {SEED})")
    print(f"{len(lines) - failed} passed, {failed} failed")
    sys.exit(1 if failed or viewers == 0 else 0)


main()
