# SPDX-License-Identifier: MIT
"""Types command lines into bash, zsh and fish on a terminal, and checks the results.

A function replaces each program and writes down the arguments that it gets.  fish
is also asked for its completions.  What hopopen knows comes from the program itself, in a
home with two viewers.

    completions.py SCRATCH-FOLDER HOPOPEN
"""

import os
import subprocess
import sys
import time

import pexpect

TOP = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))

SHELLS = {
    "bash": (
        ["--norc", "--noprofile", "-i"],
        "source /usr/share/bash-completion/bash_completion;"
        f" source {TOP}/completions/hoplaunch.bash; source {TOP}/completions/hopopen.bash;"
        " bind 'set bell-style none'",
    ),
    "zsh": (
        ["-f", "-i"],
        f"fpath=({TOP}/completions $fpath); autoload -Uz compinit; compinit -u -D;"
        " unsetopt BEEP; unsetopt PROMPT_SP; unset zle_bracketed_paste",
    ),
}

FISH_SETUP = (
    f"source {TOP}/completions/hoplaunch.fish; source {TOP}/completions/hopopen.fish;"
    " set -g fish_autosuggestion_enabled 0"
)

# Names of programs and files that a shell must not interpret, each after its own mark.
NAMES = [
    "q1 blank",
    "q2$(touch pwned)",
    "q3;touch pwned",
    "q4'single",
    'q5"double',
    "q6`touch pwned`",
    "q7&touch pwned",
    "q8\\back",
    "q9>pwned",
]
# No line can hold this one as it is: it is quoted, or not offered.
TWO_LINES = "r1\ntouch pwned"

# The keys to type, where "\t" asks for a completion, and the arguments that result.
CASES = [
    ("hoplaunch -lo\tx", ["-log=x"]),
    ("hoplaunch -prog\tx", ["-program=x"]),
    ("hoplaunch -sty\tse\tvnc://h/", ["-style=separate", "vnc://h/"]),
    ("hoplaunch -style=e\tvnc://h/", ["-style=equals", "vnc://h/"]),
    ("hoplaunch -style se\tvnc://h/", ["-style", "separate", "vnc://h/"]),
    ("hoplaunch -por\tP", ["-portArg=P"]),
    ("hoplaunch -PR\tRDP=x", ["-PROGRAMS=RDP=x"]),
    ("hoplaunch -VN\tx", ["-VNC_OPTIONS=x"]),
    ("hoplaunch -UR\tx", ["-URI_SCHEME=x"]),
    ("hoplaunch -du\tx", ["-dummy=x"]),
    ("hoplaunch -Max\t9", ["-MaxShortName=9"]),
    ("hoplaunch -LogD\tx", ["-LogDateFormat=x"]),
    ("hoplaunch -LogT\tx", ["-LogTimeZone=x"]),
    ("hoplaunch -def\tx", ["-defaultLanguage=x"]),
    ("hoplaunch -refcount=1 vn\th/", ["-refcount=1", "vnc://h/"]),
    ("hoplaunch ss\th/", ["ssh://h/"]),
    ("hoplaunch vnc:\th/", ["vnc://h/"]),
    ("hoplaunch -dummy=1 -por\tP vn\th/", ["-dummy=1", "-portArg=P", "vnc://h/"]),
    # The argument after a keyword is its value, whatever it looks like.
    ("hoplaunch -dummy -por\tx", ["-dummy", "-porx"]),
    ("hoplaunch -program=launch_this_v\tvnc://h/", ["-program=launch_this_viewer", "vnc://h/"]),
    ("hoplaunch -log=launch_logs/a_\tvnc://h/", ["-log=launch_logs/a_log", "vnc://h/"]),
    ("hoplaunch -log launch_logs/a_\tvnc://h/", ["-log", "launch_logs/a_log", "vnc://h/"]),
    ("hopexplain -sty\tse\tvnc://h/", ["-style=separate", "vnc://h/"]),
    ("hopexplain -for\tj\tvnc://h/", ["-format=json", "vnc://h/"]),
    ("hopexplain -format=t\tvnc://h/", ["-format=text", "vnc://h/"]),
    ("hoplaunch -for\tx", ["-forx"]),
    ("hopopen --vie\tal\tvnc://h", ["--viewer=alpha-1", "vnc://h"]),
    ("hopopen --viewer al\tvnc://h", ["--viewer", "alpha-1", "vnc://h"]),
    ("hopopen --dr\t--form\tj\tvnc://h", ["--dry-run", "--format=json", "vnc://h"]),
    ("hopopen --format t\tvnc://h", ["--format", "text", "vnc://h"]),
    ("hopopen --lo\tlaunch_logs/a_\tvnc://h", ["--log=launch_logs/a_log", "vnc://h"]),
    ("hopopen --log launch_logs/a_\tvnc://h", ["--log", "launch_logs/a_log", "vnc://h"]),
    ("hopopen --qui\tvnc://h", ["--quiet", "vnc://h"]),
    ("hopopen --lis\t", ["--list"]),
    ("hopopen --ch\t", ["--check"]),
    ("hopopen --ver\t", ["--version"]),
    ("hopopen --he\t", ["--help"]),
    ("hopopen --us\tbe\tx-\t", ["--use", "beta", "x-beta"]),
    ("hopopen --use alpha-1 vn\tx-\t", ["--use", "alpha-1", "vnc", "x-beta"]),
    ("hopopen --forg\tvn\tx-\t", ["--forget", "vnc", "x-beta"]),
    ("hopopen --for=h --us\tbe\tx-\t", ["--for=h", "--use", "beta", "x-beta"]),
    ("hopopen --for h --forg\tvn\t", ["--for", "h", "--forget", "vnc"]),
    ("hopopen --tr\th", ["--trust", "h"]),
    ("hopopen --dis\th", ["--distrust", "h"]),
    ("hopopen vn\th", ["vnc://h"]),
    ("hopopen x-\th", ["x-beta://h"]),
    ("hopopen --quiet vn\th", ["--quiet", "vnc://h"]),
    ("hopopen -- vn\th", ["--", "vnc://h"]),
    # Texts of a definition are neither names nor schemes, and no shell runs them.
    ("hopopen --viewer=ev\t", ["--viewer=ev"]),
    ("hopopen --forget ev\t", ["--forget", "ev"]),
]

# The completions that fish has for the last word of a line.
FISH_CASES = [
    ("hopopen --vie", ["--viewer"]),
    ("hopopen --viewer ", ["alpha-1", "beta"]),
    ("hopopen --viewer=", ["--viewer=alpha-1", "--viewer=beta"]),
    ("hopopen --format ", ["json", "text"]),
    ("hopopen --log launch_l", ["launch_logs/"]),
    ("hopopen --log launch_logs/a_", ["launch_logs/a_log"]),
    ("hopopen --use ", ["alpha-1", "beta"]),
    ("hopopen --use beta ", ["vnc", "x-beta"]),
    ("hopopen --use beta vnc x", ["x-beta"]),
    ("hopopen --forget v", ["vnc"]),
    ("hopopen --forget vnc ", ["vnc", "x-beta"]),
    ("hopopen --for ", []),
    ("hopopen --trust ", []),
    ("hopopen ", ["vnc://", "x-beta://"]),
    ("hopopen --quiet v", ["vnc://"]),
    ("hopopen -- v", ["vnc://"]),
    (
        "hopopen --",
        ["--check", "--distrust", "--dry-run", "--for", "--forget", "--format", "--help", "--list"]
        + ["--log", "--quiet", "--trust", "--use", "--version", "--viewer"],
    ),
]

VIEWERS = {
    "alpha-1": """
name = '{"name":"evil","title":"","schemes":["evil"]'
schemes = ["vnc"]
programs = ["alpha"]
arguments = []
packages = ["$(touch pwned)"]
unguarded = ['"schemes":["evil"]', '`touch pwned`']
""",
    "beta": """
name = "Beta $(touch pwned)"
schemes = ["x-beta", "vnc"]
programs = ["beta"]
arguments = []
""",
}


def keys_of(kind):
    """The keys of a kind that docs/items.tsv lists."""
    with open(f"{TOP}/docs/items.tsv", encoding="utf-8") as lines:
        rows = [line.split("\t") for line in lines]
    return [row[1] for row in rows if row[0] == kind]


# A flag is completed with its value in bash and fish, and in two steps in zsh.
FLAGS = keys_of("flag")

# Keys in another case.  How the completed part is written is the shell's choice.
CASE_CASES = [
    ("hoplaunch -STYLE=se\tvnc://h/", ["-style=separate", "vnc://h/"]),
    ("hoplaunch -Style e\tvnc://h/", ["-style", "equals", "vnc://h/"]),
    ("hoplaunch -STY\tse\tvnc://h/", ["-style=separate", "vnc://h/"]),
    ("hoplaunch -LOG=launch_logs/a_\tvnc://h/", ["-log=launch_logs/a_log", "vnc://h/"]),
    ("hoplaunch -pROGRAM=launch_this_v\tvnc://h/", ["-program=launch_this_viewer", "vnc://h/"]),
    ("hopexplain -FORM\tj\tvnc://h/", ["-format=json", "vnc://h/"]),
    ("hopexplain -FORMAT=j\tvnc://h/", ["-format=json", "vnc://h/"]),
]


def flag_cases(shell):
    for flag in FLAGS:
        steps = "\t\t" if shell == "zsh" else "\t"
        yield f"hopexplain -{flag}{steps}vnc://h/", [f"-{flag}=1", "vnc://h/"]
    if shell != "fish":  # which writes the flag as it should be
        yield "hopexplain -REFC\tx", ["-REFCx"]
    yield "hopexplain --he\t", ["--help"]
    yield "hopexplain --ver\t", ["--version"]


def name_cases():
    for name in NAMES:
        mark = name[:2]
        for program in ["hoplaunch", "hopexplain"]:
            yield f"{program} -program={mark}\tvnc://h/", [f"-program={name}", "vnc://h/"]
            yield f"{program} -program {mark}\tvnc://h/", ["-program", name, "vnc://h/"]
            yield f"{program} -log=files/{mark}\tvnc://h/", [f"-log=files/{name}", "vnc://h/"]
        yield f"hopopen --log files/{mark}\tvnc://h", ["--log", f"files/{name}", "vnc://h"]
        yield f"hopopen --log=files/{mark}\tvnc://h", [f"--log=files/{name}", "vnc://h"]
    # Lines that already have something special.
    yield "hoplaunch -program=q1\\ b\tvnc://h/", ["-program=q1 blank", "vnc://h/"]
    yield "hoplaunch -program=q2\\$\tvnc://h/", ["-program=q2$(touch pwned)", "vnc://h/"]


def two_line_cases():
    mark = TWO_LINES[:2]
    for front in ["hoplaunch -program=", "hopexplain -program ", "hoplaunch -log=files/"]:
        yield front + mark, front.split(" ", 1)[1] + mark
    yield f"hopopen --log files/{mark}", f"--log files/{mark}"


def environment(folder):
    return {
        "PATH": f"{folder}:{folder}/bin:/usr/bin:/bin",
        "TERM": "dumb",
        "HOME": folder,
        "LC_ALL": "C",
        "XDG_CONFIG_DIRS": f"{folder}/none",
        "XDG_DATA_DIRS": f"{folder}/share",
    }


def start(shell, folder):
    options, setup = SHELLS.get(shell, (["--no-config", "-i"], FISH_SETUP))
    child = pexpect.spawn(
        shell, options, cwd=folder, env=environment(folder), timeout=20, encoding="utf-8"
    )
    child.setwinsize(50, 200)
    if shell == "fish":
        child.sendline("function fish_prompt; echo rea''dy'>'; end; function fish_title; end")
        function = "function %s; printf '%%s\\0' $argv >shown; end"
    else:
        child.sendline("PS1='read''y>'; PS2=")
        function = "%s() { printf '%%s\\0' \"$@\" >shown; }"
    child.expect("ready>")
    child.sendline(setup)
    child.expect("ready>")
    for program in ["hoplaunch", "hopexplain", "hopopen"]:
        child.sendline(function % program)
        child.expect("ready>")
    return child


def arguments(child, typed, folder):
    shown = f"{folder}/shown"
    if os.path.exists(shown):
        os.unlink(shown)
    child.send(typed + "\r")
    for _ in range(100):
        if os.path.exists(shown) and os.path.getsize(shown) > 0:
            break
        time.sleep(0.02)
    # The prompt after the command, and not one that was drawn again while typing.
    if not os.path.exists(shown):
        child.sendcontrol("c")
        child.sendcontrol("c")
    child.sendline("echo again''again")
    child.expect("againagain\r?\n")
    child.expect("ready>")
    if not os.path.exists(shown):
        return ["nothing"]
    with open(shown, encoding="utf-8") as found:
        return found.read().split("\0")[:-1]


def separated(words):
    """Long options with their values as separate arguments, as fish writes them."""
    return [part for word in words for part in (word.split("=", 1) if word[:2] == "--" else [word])]


def without_case(words):
    return [word.lower() for word in words]


def fish_completions(folder, line):
    script = f"source {TOP}/completions/hopopen.fish; complete --do-complete $argv[1]"
    said = subprocess.run(
        ["fish", "--no-config", "-c", script, line],
        cwd=folder, env=environment(folder), capture_output=True, text=True, check=False, timeout=60,
    )
    return sorted(line.split("\t")[0] for line in said.stdout.splitlines()), said.stderr


def make_home(folder, hopopen):
    os.symlink(hopopen, f"{folder}/hopopen")
    os.makedirs(f"{folder}/share/hoplaunch/viewers")
    for name, text in VIEWERS.items():
        with open(f"{folder}/share/hoplaunch/viewers/{name}.toml", "w", encoding="utf-8") as viewer:
            viewer.write(text)


def main():
    folder = sys.argv[1]
    make_home(folder, os.path.abspath(sys.argv[2]))
    os.makedirs(f"{folder}/launch_logs")
    open(f"{folder}/launch_logs/a_log", "w", encoding="utf-8").close()
    with open(f"{folder}/launch_this_viewer", "w", encoding="utf-8") as viewer:
        viewer.write("#!/bin/sh\n")
    os.chmod(f"{folder}/launch_this_viewer", 0o755)

    for name in [*NAMES, TWO_LINES]:
        for place in ["bin", "files"]:
            os.makedirs(f"{folder}/{place}", exist_ok=True)
            with open(f"{folder}/{place}/{name}", "w", encoding="utf-8") as file:
                file.write("#!/bin/sh\n")
            os.chmod(f"{folder}/{place}/{name}", 0o755)

    passed = failed = 0

    def check(shell, typed, found, okay, expected):
        nonlocal passed, failed
        if okay:
            passed += 1
        else:
            failed += 1
            print(f"FAILED: {shell}: {typed!r} gives {found}, not {expected}")

    for item in keys_of("item"):
        if not any(f"-{item}=" in word for _, words in CASES for word in words):
            failed += 1
            print(f"FAILED: CASES has nothing that completes -{item}")
    for shell in [*SHELLS, "fish"]:
        child = start(shell, folder)
        for typed, expected in [*CASES, *flag_cases(shell), *name_cases()]:
            found = arguments(child, typed, folder)
            same = separated if shell == "fish" else list
            check(shell, typed, found, same(found) == same(expected), expected)
        for typed, expected in CASE_CASES:
            found = arguments(child, typed, folder)
            check(shell, typed, found, without_case(found) == expected, expected)
        for typed, front in two_line_cases():
            found = arguments(child, typed + "\t", folder)
            expected = [front.split(), (front[:-2] + TWO_LINES.replace(" ", "\t")).split(" ")]
            expected[1] = [word.replace("\t", " ") for word in expected[1]]
            check(shell, typed, found, found in expected, expected)
        child.close(force=True)
    for typed, expected in FISH_CASES:
        found, said = fish_completions(folder, typed)
        if found == expected and not said:
            passed += 1
        else:
            failed += 1
            print(f"FAILED: fish: {typed!r} gives {found}, not {expected}; {said}")
    if os.path.exists(f"{folder}/pwned"):
        failed += 1
        print("FAILED: a text of a definition or a name was run")
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
