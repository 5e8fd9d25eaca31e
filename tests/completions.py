"""Types command lines into bash and zsh on a terminal, and checks what comes of them.

A function stands in for each program and shows the arguments that it is given.  fish is
asked for its completions instead.  What hopopen knows comes from the program itself, in a
home with two viewers.

    completions.py SCRATCH-FOLDER HOPOPEN
"""

import os
import subprocess
import sys

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

# What is typed, where "\t" asks for a completion, and the arguments that come of it.
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
    # The argument behind a keyword is its value, whatever it looks like.
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
    ("hopopen --tr\th", ["--trust", "h"]),
    ("hopopen --dis\th", ["--distrust", "h"]),
    ("hopopen vn\th", ["vnc://h"]),
    ("hopopen x-\th", ["x-beta://h"]),
    ("hopopen --quiet vn\th", ["--quiet", "vnc://h"]),
    ("hopopen -- vn\th", ["--", "vnc://h"]),
    # Texts of a definition are no names and no schemes, and no shell runs them.
    ("hopopen --viewer=ev\t", ["--viewer=ev"]),
    ("hopopen --forget ev\t", ["--forget", "ev"]),
]

# What fish has for the last word of a line.
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
    ("hopopen --trust ", []),
    ("hopopen ", ["vnc://", "x-beta://"]),
    ("hopopen --quiet v", ["vnc://"]),
    ("hopopen -- v", ["vnc://"]),
    (
        "hopopen --",
        ["--check", "--distrust", "--dry-run", "--forget", "--format", "--help", "--list", "--log"]
        + ["--quiet", "--trust", "--use", "--version", "--viewer"],
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
# A flag is completed with its value in bash, and in two steps in zsh.
FLAGS = ["refcount", "hoplaunch", "configDB", "reportThread", "reportStack"]


def flag_cases(shell):
    for flag in FLAGS:
        steps = "\t" if shell == "bash" else "\t\t"
        yield f"hopexplain -{flag}{steps}vnc://h/", [f"-{flag}=1", "vnc://h/"]


def environment(folder):
    return {
        "PATH": f"{folder}:/usr/bin:/bin",
        "TERM": "dumb",
        "HOME": folder,
        "LC_ALL": "C",
        "XDG_CONFIG_DIRS": f"{folder}/none",
        "XDG_DATA_DIRS": f"{folder}/share",
    }


def start(shell, folder):
    options, setup = SHELLS[shell]
    child = pexpect.spawn(
        shell, options, cwd=folder, env=environment(folder), timeout=20, encoding="utf-8"
    )
    child.setwinsize(50, 200)
    child.sendline("PS1='read''y>'; PS2=")
    child.expect("ready>")
    child.sendline(setup + "; show() { printf '\\n'; printf '<%s>' \"$@\"; printf '<end>'; }")
    child.expect("ready>")
    programs = ["hoplaunch", "hopexplain", "hopopen"]
    child.sendline("; ".join(f'{program}() {{ show "$@"; }}' for program in programs))
    child.expect("ready>")
    return child


def arguments(child, typed):
    child.send(typed + "\n")
    child.expect(r"\n((<[^\n]*>)?)<end>")
    shown = child.match.group(1)
    child.expect("ready>")
    return shown[1:-1].split("><") if shown else []


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

    passed = failed = 0
    for shell in SHELLS:
        child = start(shell, folder)
        for typed, expected in [*CASES, *flag_cases(shell)]:
            found = arguments(child, typed)
            if found == expected:
                passed += 1
            else:
                failed += 1
                print(f"FAILED: {shell}: {typed!r} gives {found}, not {expected}")
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
        print("FAILED: a text of a definition was run")
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
