"""Types command lines into bash and zsh on a terminal, and checks what comes of them.

A function stands in for both programs and shows the arguments that it is given.
"""

import os
import sys

import pexpect

TOP = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))

SHELLS = {
    "bash": (
        ["--norc", "--noprofile", "-i"],
        "source /usr/share/bash-completion/bash_completion;"
        f" source {TOP}/completions/hoplaunch.bash; bind 'set bell-style none'",
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
]
# A flag is completed with its value in bash, and in two steps in zsh.
FLAGS = ["refcount", "hoplaunch", "configDB", "reportThread", "reportStack"]


def flag_cases(shell):
    for flag in FLAGS:
        steps = "\t" if shell == "bash" else "\t\t"
        yield f"hopexplain -{flag}{steps}vnc://h/", [f"-{flag}=1", "vnc://h/"]


def start(shell, folder):
    options, setup = SHELLS[shell]
    environment = {"PATH": f"{folder}:/usr/bin:/bin", "TERM": "dumb", "HOME": folder, "LC_ALL": "C"}
    child = pexpect.spawn(shell, options, cwd=folder, env=environment, timeout=20, encoding="utf-8")
    child.setwinsize(50, 200)
    child.sendline("PS1='read''y>'; PS2=")
    child.expect("ready>")
    child.sendline(setup + "; show() { printf '\\n'; printf '<%s>' \"$@\"; printf '<end>'; }")
    child.expect("ready>")
    child.sendline("hoplaunch() { show \"$@\"; }; hopexplain() { show \"$@\"; }")
    child.expect("ready>")
    return child


def arguments(child, typed):
    child.send(typed + "\n")
    child.expect(r"\n((<[^\n]*>)?)<end>")
    shown = child.match.group(1)
    child.expect("ready>")
    return shown[1:-1].split("><") if shown else []


def main():
    folder = sys.argv[1]
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
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
