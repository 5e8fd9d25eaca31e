# SPDX-License-Identifier: MIT
"""Compares what hopexplain says with what hoplaunch does.

    edges_agreement.py HOPLAUNCH HOPEXPLAIN FOLDER COUNT

FOLDER holds "recorder", which writes to "record" how it was called.  COUNT is the number
of random command lines.  Prints a line for each check, and "end".
"""

import ctypes
import json
import os
import random
import resource
import subprocess
import sys

import edges_filter

LAUNCH, EXPLAIN, FOLDER = sys.argv[1:4]
COUNT = int(sys.argv[4])
RECORDER = f"{FOLDER}/recorder"
RECORD = f"{FOLDER}/record"
LOG = f"{FOLDER}/log"
NEW_IPC = 0x08000000
BY_SHELL = f'exec {RECORDER} --by-shell "$0" "$@"\n'


def check(name, good, detail=""):
    print(f"ok {name}" if good else f"FAILED {name}: {str(detail)[:500]}")


def write(path, data, mode=0o755):
    with open(path, "wb") as file:
        file.write(data if isinstance(data, bytes) else data.encode())
    os.chmod(path, mode)


def alien():
    """The recorder as a program for a machine that nobody has."""
    with open(RECORDER, "rb") as file:
        data = bytearray(file.read(4096))
    data[18:20] = b"\xfe\xfe"
    return bytes(data)


def make_files():
    kinds = {
        "binary": None,
        "script": f"#!{RECORDER}\n",
        "blanks": f"#! \t{RECORDER} \n",
        "lost": "#!/nowhere/interpreter\n",
        "locked": f"#!{FOLDER}/notes\n",
        "folder-interpreter": f"#!{FOLDER}\n",
        "text": BY_SHELL,
        "empty-interpreter": "#!\n" + BY_SHELL,
        "blank-interpreter": "#!  \t\n" + BY_SHELL,
        "empty": "",
        "alien": alien(),
        "forbidden": (f"#!{RECORDER}\n", 0o644),
        "nested": f"#!{FOLDER}/one/script\n",
        "nested-text": f"#!{FOLDER}/one/text\n",
        "short": "#",
        "long-line": "#!" + RECORDER + " " + "x" * 300 + "\n",
        "no-end": f"#!{RECORDER}",
        "lost-no-end": "#!/nowhere/x",
    }
    write(f"{FOLDER}/notes", "no program\n", 0o644)
    for folder in ("one", "two", "three", "here"):
        os.makedirs(f"{FOLDER}/{folder}")
    chance = random.Random(3)
    for name, what in kinds.items():
        for folder in ("one", "two", "three", "here"):
            if folder != "one" and chance.random() < 0.5:
                continue
            path = f"{FOLDER}/{folder}/{name}"
            if what is None:
                os.symlink(RECORDER, path)
            elif isinstance(what, tuple):
                write(path, *what)
            else:
                write(path, what)
    # The same name is one thing in a folder and another in the next.
    for name, order in {
        "mixed1": ("lost", "text", "binary"), "mixed2": ("forbidden", "lost", "script"),
        "mixed3": ("lost", "forbidden", "lost"), "mixed4": ("forbidden", "lost", "alien"),
        "mixed5": ("locked", "empty-interpreter", "script"), "mixed6": ("alien", "script", "text"),
    }.items():
        for folder, kind in zip(("one", "two", "three"), order):
            os.link(f"{FOLDER}/one/{kind}", f"{FOLDER}/{folder}/{name}", follow_symlinks=False)
    os.makedirs(f"{FOLDER}/two/inner")
    names = [*kinds, "mixed1", "mixed2", "mixed3", "mixed4", "mixed5", "mixed6", "inner", "none"]
    return names


def run(tool, arguments, environment, stack):
    def prepare():
        if stack:
            resource.setrlimit(resource.RLIMIT_STACK, (stack, stack))

    return subprocess.run(
        [tool, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        env=environment, cwd=f"{FOLDER}/here", preexec_fn=prepare, check=False, timeout=30,
    )


def launched(arguments, environment, stack):
    """What hoplaunch did: the error's text or None, and the record or None."""
    for path in (LOG, RECORD):
        if os.path.exists(path):
            os.remove(path)
    done = run(LAUNCH, [f"-log={LOG}", *arguments], environment, stack)
    if not os.path.exists(LOG):  # there was no link, but a value that looks like one
        return "no link", None, done.returncode
    with open(LOG, "rb") as file:
        lines = file.read().split(b"\n")
    record = None
    if os.path.exists(RECORD):
        with open(RECORD, "rb") as file:
            record = [os.fsdecode(word) for word in file.read().split(b"\0")[:-1]]
    last = os.fsdecode(lines[-2])
    if last.startswith("_execv() failed"):
        return last.split(" errno = ")[1].split(" ", 1)[1], record, done.returncode
    if not any(line.startswith(b"executable: ") for line in lines):
        return last, record, done.returncode
    return None, record, done.returncode


def explained(arguments, environment, stack):
    done = run(EXPLAIN, ["-format=json", f"-log={LOG}", *arguments], environment, stack)
    if not done.stdout and done.stderr.startswith((b"Usage: ", b"Keyword ")):
        return {"launches": False, "obstacle": "no link"}, done.returncode
    return json.loads(done.stdout.decode("utf-8", "surrogateescape")), done.returncode


def compare(arguments, environment, stack=0):
    """The points on which the two disagree, or nothing."""
    error, record, _ = launched(arguments, environment, stack)
    said, status = explained(arguments, environment, stack)
    if said["launches"] != (error is None):
        return f"launches {said['launches']} {said['obstacle']}, but {error or 'it did'}"
    if error == "no link":
        return None if status in (1, 255) else f"status {status}"
    if status != (0 if error is None else 1):
        return f"status {status}"
    if error is not None:
        text = "File" in error or "such" in error or "ermission" in error or "long" in error
        if text and error not in said["obstacle"]:
            return f"the reason {said['obstacle']}, but {error}"
        return None
    if "shell" not in said:
        return "no key shell"
    if record is None:  # a program of another machine, or an empty file: the shell ran it
        return None if said["shell"] == "/bin/sh" else f"shell {said['shell']} of {said['file']}"
    how, path, *found = record
    if said["shell"] != ("/bin/sh" if how == "shell" else None):
        return f"shell {said['shell']}, but {how}"
    if os.path.normpath(os.path.join(FOLDER, "here", said["file"])) != os.path.normpath(
        os.path.join(FOLDER, "here", path)
    ):
        return f"file {said['file']}, but {path}"
    expected = [os.fsencode(word) for word in said["arguments"]][0 if how == "itself" else 1 :]
    found = [os.fsencode(word) for word in found]
    if how == "script":  # with what the line after "#!" adds, and the script
        found = found[len(found) - len(expected) :]
    if expected != found:
        return f"arguments {expected[:5]}, but {found[:5]}"
    return None


def random_case(chance, names):
    folders = [f"{FOLDER}/{name}" for name in ("one", "two", "three")] + ["../two", "", ".", "/nowhere"]
    folders += [f"{FOLDER}/notes", "x" * 4095, "x" * 4096, "x" * 5000]
    path = ":".join(chance.choice(folders) for _ in range(chance.randrange(1, 6)))
    name = chance.choice(names)
    program = name
    if chance.random() < 0.25:
        program = chance.choice(["../one/", "../three/", "./", f"{FOLDER}/two/", "/nowhere/"]) + name
    arguments = [f"-program={program}"] if chance.random() < 0.8 else [f"-PROGRAMS=vnc={program}"]
    if chance.random() < 0.3:
        arguments.append(f"-style={chance.choice(['separate', 'equals', 'Separate', 'x'])}")
    if chance.random() < 0.3:
        arguments.append(f"-portArg={chance.choice(['P', 'port', '-p', ''])}")
    if chance.random() < 0.15:
        arguments.append(f"-VNC_OPTIONS={chance.choice(['a=b', '-x', ''])}")
    if chance.random() < 0.1:
        arguments += ["-unknown", "-value"]
    pieces = ["a=1", "b=%2520", "c=x y", "-autoreconnect=1", "d=%26e=2", "f=$(id)", "g='\"\\", "h"]
    query = "&".join(chance.sample(pieces[:7], chance.randrange(0, 4)))
    if chance.random() < 0.05:
        query += "&h"
    host = chance.choice(["h", "h:5900", "[::1]:1", "a,b", "a:1+b:2", "-h", "", "1.2.3.4", "h:", "u@h:2"])
    ticket = chance.choice(["", "", "", "QUJD", "7,QUJD", "7,", "Q"])
    scheme = chance.choice(["vnc"] * 6 + ["VNC", "ssh", "ftp", "1x", ""])
    link = f"{scheme}://{host}{'/' if chance.random() < 0.95 else ''}{ticket}"
    if query:
        link += f"?{query}"
    stack = 0
    if chance.random() < 0.1:
        stack = chance.choice([256 << 10, 512 << 10, 1 << 20])
        link = f"vnc://h/?{many(chance.randrange(2000, 14000))}"
    arguments.insert(chance.randrange(len(arguments) + 1), link)
    return arguments, {"PATH": path, "PAD": "x" * chance.randrange(40)}, stack


DIGITS = "abcdefghijklmnopqrstuvwxyz0123456789"


def many(count):
    """So many parameters with different names, in five bytes each."""
    return "&".join(f"{DIGITS[n // 1296 % 36]}{DIGITS[n // 36 % 36]}{DIGITS[n % 36]}=" for n in range(count))


def try_random(names):
    chance = random.Random(20000)
    bad = []
    for _ in range(COUNT):
        arguments, environment, stack = random_case(chance, names)
        difference = compare(arguments, environment, stack)
        if difference:
            bad.append((difference, [a[:60] for a in arguments], environment["PATH"][:200]))
    check(f"{COUNT} random command lines: no disagreement", not bad, (len(bad), bad[:2]))


def try_longest_argument():
    plain = {"PATH": f"{FOLDER}/one"}
    for length, yes in ((131071, True), (131072, False)):
        key = "p" * 100000
        link = "vnc://h:" + "1" * (length - len(key) - 2) + "/"
        arguments = ["-program=binary", f"-portArg={key}", link]
        error, _, _ = launched(arguments, plain, 0)
        said, status = explained(arguments, plain, 0)
        name = f"an argument of {length} bytes"
        check(f"{name}: the launch", (error is None) == yes, error)
        check(f"{name}: hopexplain agrees", (said["launches"], status) == (yes, 0 if yes else 1), said["obstacle"])
        if not yes:
            check(f"{name}: the reason", "Argument list too long" in str(said["obstacle"]), said["obstacle"])


def try_all_arguments():
    """The largest number of parameters that hopexplain allows is the largest that works."""
    for stack, padding in ((256 << 10, 0), (512 << 10, 0), (1 << 20, 0), (16 << 20, 3_950_000),
                           (64 << 20, 6_050_000), (0, 1_900_000)):
        limits = f"a stack of {stack or 'the usual size'}, {padding} bytes in the environment"
        environment = {"PATH": f"{FOLDER}/one"}
        environment |= {f"PAD{n}": "x" * min(100_000, padding - n * 100_000) for n in range((padding + 99_999) // 100_000)}

        def says(count, environment=environment, stack=stack):
            arguments = ["-program=binary", f"vnc://h/?{many(count)}"]
            return explained(arguments, environment, stack)[0]["launches"]

        try:
            low, high = 1, 25_000
            if not says(low):
                check(f"{limits}: one parameter is fine", False)
                continue
            while high - low > 1:
                middle = (low + high) // 2
                low, high = (middle, high) if says(middle) else (low, middle)
        except (OSError, ValueError) as problem:
            check(f"{limits}: hopexplain runs", False, problem)
            continue
        check(f"{limits}: there is a limit", high < 25_000, high)
        for count, expected in ((low, True), (high, False)):
            error, _, _ = launched(["-program=binary", f"vnc://h/?{many(count)}"], environment, stack)
            check(f"{limits}: {'the last yes' if expected else 'the first no'} is right",
                  (error is None) == expected, (count, error))


def try_each(names):
    """Every kind of file, alone and with others after it on PATH, each as a check."""
    one, two, three = (f"{FOLDER}/{name}" for name in ("one", "two", "three"))
    paths = {"alone": one, "in three folders": f"{one}:{two}:{three}"}
    for name in names:
        for label, path in paths.items():
            check(f"{name} {label}", *reversed_check(compare([f"-program={name}", "vnc://h/?a=b"], {"PATH": path})))
        check(f"{name} by its path", *reversed_check(compare([f"-program={one}/{name}", "vnc://h/"], {"PATH": two})))
    for length in (4095, 4096, 5000):
        for rest in (one, "/nowhere"):
            for name in ("text", "binary"):
                paths = {"PATH": f"{'x' * length}:{rest}"}
                check(f"{name} after an element of PATH of {length} bytes and {rest[-7:]}",
                      *reversed_check(compare([f"-program={name}", "vnc://h/"], paths)))
        check(f"PATH of one element of {length} bytes",
              *reversed_check(compare(["-program=binary", "vnc://h/"], {"PATH": "x" * length})))


def reversed_check(difference):
    return difference is None, difference


def try_literal():
    """What hopexplain says about some files; the launch is not looked at."""
    path = {"PATH": f"{FOLDER}/one:{FOLDER}/two:{FOLDER}/three"}
    for name, shell in (("text", "/bin/sh"), ("empty-interpreter", "/bin/sh"), ("alien", "/bin/sh"),
                        ("empty", "/bin/sh"), ("binary", None), ("script", None)):
        said, status = explained([f"-program={name}", "vnc://h/?a=b"], path, 0)
        check(f"{name}: shell, file, arguments and status",
              (said.get("shell", "no key"), said["file"], said["arguments"], status)
              == (shell, f"{FOLDER}/one/{name}", [name, "--autoreconnect=0", "-a=b", "h"], 0),
              (said.get("shell", "no key"), said["file"], said["arguments"], status))
        text = run(EXPLAIN, [f"-program={name}", "vnc://h/"], path, 0).stdout
        check(f"{name}: the text names the shell or not", (b"/bin/sh" in text) == (shell is not None), text)
    lost, status = explained(["-program=lost", "vnc://h/"], {"PATH": f"{FOLDER}/one"}, 0)
    check("a missing interpreter: no launch", (lost["launches"], status) == (False, 1), lost["file"])
    check("a missing interpreter: the reason", "No such file or directory" in str(lost["obstacle"]), lost["obstacle"])
    locked, status = explained(["-program=locked", "vnc://h/"], {"PATH": f"{FOLDER}/one"}, 0)
    check("an interpreter that is not executable: no launch", (locked["launches"], status) == (False, 1))
    check("an interpreter that is not executable: the reason", "Permission denied" in str(locked["obstacle"]), locked["obstacle"])
    said, status = explained(["-program=mixed1", "vnc://h/"], path, 0)
    check("a missing interpreter is passed over", (said["file"], said.get("shell"), status)
          == (f"{FOLDER}/two/mixed1", "/bin/sh", 0), (said["file"], status))
    write(f"{FOLDER}/here/only-here", f"#!{RECORDER}\n")
    for length, status_wanted in ((4096, 0), (5000, 0)):
        said, status = explained(["-program=only-here", "vnc://h/"], {"PATH": f"{'x' * length}:/nowhere"}, 0)
        check(f"after an element of {length} bytes comes the current folder",
              (said["launches"], status) == (True, status_wanted), said["obstacle"])


def main():
    if ctypes.CDLL(None).unshare(NEW_IPC) != 0:
        raise OSError("no namespace")
    names = make_files()
    edges_filter.install({"nanosleep": 0, "clock_nanosleep": 0})
    try_longest_argument()
    try_literal()
    try_each(names)
    try_random(names)
    try_all_arguments()
    print("end")


if __name__ == "__main__":
    main()
