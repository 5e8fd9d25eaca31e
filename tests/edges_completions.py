# SPDX-License-Identifier: MIT
"""Completes names of programs and files that a shell would run or split, on a terminal.

    edges_completions.py SCRATCH-FOLDER HOPOPEN

Each name is typed up to its first two letters, completed, and the line is run: the program
must get the name as it is, and nothing in it may run.  Prints a line for each check, and
"end".
"""

import os
import sys
import time

import pexpect

TOP = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
COMPLETIONS = f"{TOP}/completions"
FOLDER = sys.argv[1]
HOPOPEN = os.path.abspath(sys.argv[2])
PROGRAMS = ["hoplaunch", "hopexplain", "hopopen"]

NAMES = {
    "a blank": "qa b",
    "two blanks": "qb  c",
    "a command in $()": "qc$(touch pwned)",
    "a variable": "qd$HOME",
    "a semicolon": "qe;touch pwned",
    "a quote": "qf'g",
    "a double quote": 'qg"h',
    "a command in backquotes": "qh`touch pwned`",
    "an ampersand": "qi&touch pwned",
    "a backslash": "qj\\k",
    "a star": "qk*",
    "a pipe": "ql|touch pwned",
    "brackets": "qm[a]",
    "braces": "qn{a,b}",
    "parentheses": "qo(touch pwned)",
    "a redirection": "qp>pwned",
    "an exclamation mark": "qq!x",
    "a hash": "qr#x",
    "an equals sign": "qs=1",
    "a colon": "qt:2",
    "a question mark": "qu?x",
    "a tilde": "qv~x",
    "a per-cent sign": "qw%s",
    "all quotes": "qx'\"\\`",
    "a plain name": "qyplain",
}
LINE_FEED = "qz\ntouch pwned"

SHELLS = {
    "bash": (
        ["--norc", "--noprofile", "-i"],
        "source /usr/share/bash-completion/bash_completion;"
        f" source {COMPLETIONS}/hoplaunch.bash; source {COMPLETIONS}/hopopen.bash;"
        " bind 'set bell-style none'",
        '{0}() {{ printf "%s\\0" "$@" >got.new; mv got.new got; }}',
    ),
    "zsh": (
        ["-f", "-i"],
        f"fpath=({COMPLETIONS} $fpath); autoload -Uz compinit; compinit -u -D;"
        " unsetopt BEEP; unsetopt PROMPT_SP; unset zle_bracketed_paste",
        '{0}() {{ printf "%s\\0" "$@" >got.new; mv got.new got; }}',
    ),
    "fish": (
        ["--no-config", "-i"],
        f"for file in {COMPLETIONS}/*.fish; source $file; end",
        "function {0}; printf '%s\\0' $argv >got.new; mv got.new got; end",
    ),
}

# Keys whose letter case does not count: the keys to type, and the arguments that result.
KEYS = [
    ("hoplaunch -STY\tse\tvnc://h/", ["-style=separate", "vnc://h/"]),
    ("hoplaunch -POR\tP", ["-portArg=P"]),
    ("hoplaunch -vnc_\tx", ["-VNC_OPTIONS=x"]),
    ("hoplaunch -uri\tx", ["-URI_SCHEME=x"]),
    ("hoplaunch -maxs\t9", ["-MaxShortName=9"]),
    ("hoplaunch -DUM\tx", ["-dummy=x"]),
    ("hopexplain -FORM\tj\tvnc://h/", ["-format=json", "vnc://h/"]),
    ("hoplaunch -STYLE=e\tvnc://h/", ["-STYLE=equals", "vnc://h/"]),
    ("hoplaunch -STYLE e\tvnc://h/", ["-STYLE", "equals", "vnc://h/"]),
    ("hoplaunch -PROGRAM=qy\tvnc://h/", ["-PROGRAM=qyplain", "vnc://h/"]),
]


def check(name, expected, found):
    print(f"ok {name}" if expected == found else f"FAILED {name}: expected {expected}, found {found}")


class Shell:
    """A shell on a terminal, started again after a line that did not end."""

    def __init__(self, name):
        self.name = name
        self.child = None

    def start(self):
        options, setup, function = SHELLS[self.name]
        environment = {
            "PATH": f"{FOLDER}/bin:/usr/bin:/bin", "TERM": "dumb", "HOME": FOLDER, "LC_ALL": "C.UTF-8",
            "XDG_CONFIG_DIRS": f"{FOLDER}/none", "XDG_DATA_DIRS": f"{FOLDER}/share",
        }
        self.child = pexpect.spawn(
            self.name, options, cwd=f"{FOLDER}/start", env=environment, timeout=20, encoding="utf-8",
            codec_errors="replace", dimensions=(50, 250),
        )
        prompt = "function fish_prompt; printf 'read''y>'; end" if self.name == "fish" else "PS1='read''y>'; PS2="
        self.child.sendline(prompt)
        self.child.expect("ready>")
        lines = [setup, *(function.format(program) for program in PROGRAMS)]
        for line in lines:
            self.child.sendline(line)
            self.child.expect("ready>")
            time.sleep(0.05)

    def stop(self):
        if self.child is not None:
            self.child.close(force=True)
            self.child = None

    def arguments(self, typed):
        """The arguments that the program got."""
        got = f"{FOLDER}/start/got"
        if os.path.exists(got):
            os.remove(got)
        if self.child is None:
            self.start()
        self.child.send(typed)
        self.drain(0.08)
        self.child.send("\r" if self.name == "fish" else "\n")
        limit = time.monotonic() + 3
        while time.monotonic() < limit and not os.path.exists(got):
            self.drain(0.03)
        if not os.path.exists(got):
            self.stop()
            return "the line did not run"
        self.drain(0.05)
        with open(got, encoding="utf-8", errors="replace") as file:
            return file.read().split("\0")[:-1]

    def drain(self, seconds):
        limit = time.monotonic() + seconds
        while time.monotonic() < limit:
            try:
                self.child.read_nonblocking(65536, timeout=0.02)
            except pexpect.TIMEOUT:
                pass
            except pexpect.EOF:
                return


def nothing_ran(name):
    pwned = [where for where in (f"{FOLDER}/start/pwned", f"{FOLDER}/pwned") if os.path.exists(where)]
    check(f"{name}: nothing in it runs", [], pwned)
    for where in pwned:
        os.remove(where)


def try_name(shell, label, name, form):
    """`form` is the line, with {} for the word to complete, and what the program gets."""
    line, expected = form
    typed = line.replace("{}", name[:2] + "\t")
    wanted = [each.replace("{}", name) for each in expected]
    title = f"{shell.name}, {line.replace('{}', '...')} with {label}"
    check(title, wanted, shell.arguments(typed))
    nothing_ran(title)


def try_line_feed(shell, form):
    line, expected = form
    title = f"{shell.name}, {line.replace('{}', '...')} with a line feed"
    found = shell.arguments(line.replace("{}", LINE_FEED[:2] + "\t"))
    quoted = [each.replace("{}", LINE_FEED) for each in expected]
    typed = [each.replace("{}", LINE_FEED[:2]) for each in expected]
    check(f"{title}: quoted or not offered", True, found in (quoted, typed))
    nothing_ran(title)


def forms(shell):
    if shell != "fish" or os.path.exists(f"{COMPLETIONS}/hoplaunch.fish"):
        yield "hoplaunch -program={}", ["-program={}"]
        yield "hoplaunch -program {}", ["-program", "{}"]
        yield "hopexplain -program={}", ["-program={}"]
        yield "hoplaunch -log={}", ["-log={}"]
    yield "hopopen --log {}", ["--log", "{}"]
    yield "hopopen --log={}", ["--log={}"]


def make_home():
    for folder in ("bin", "start", "share/hoplaunch/viewers"):
        os.makedirs(f"{FOLDER}/{folder}")
    os.symlink(HOPOPEN, f"{FOLDER}/bin/hopopen")
    for name in [*NAMES.values(), LINE_FEED]:
        with open(f"{FOLDER}/bin/{name}", "w", encoding="utf-8") as program:
            program.write("#!/bin/sh\n")
        os.chmod(f"{FOLDER}/bin/{name}", 0o755)
        with open(f"{FOLDER}/start/{name}", "w", encoding="utf-8"):
            pass


def main():
    make_home()
    only = sys.argv[3:]
    for name in SHELLS:
        if only and name not in only:
            continue
        shell = Shell(name)
        for form in forms(name):
            for label, text in NAMES.items():
                try_name(shell, label, text, form)
            try_line_feed(shell, form)
        if name == "zsh":
            for typed, expected in KEYS:
                check(f"{name}, {typed!r}", expected, shell.arguments(typed))
        shell.stop()
    print("end")


if __name__ == "__main__":
    main()
