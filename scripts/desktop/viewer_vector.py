#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The words that start a viewer, made from its file in viewers/ for the tests of the viewers.

    viewer_vector.py [--trusted] [--user U] [--password W] [--port P] [--parameter N=V]...
                     [--terminal PROGRAM] VIEWER SCHEME HOST

Prints them each with a NUL at its end: env, what it removes from the environment and adds
to it, and the vector.  In a terminal, env comes after the words for the terminal.  The pieces are filled in as they are, and nothing is checked.
"""
import argparse
import os
import pathlib
import re
import shutil
import sys
import tomllib
from urllib.parse import quote

VIEWERS = pathlib.Path(__file__).resolve().parents[2] / "viewers"


def pieces(options, definition):
    """What the placeholders stand for; None has no value."""
    host = options.host
    bracketed = f"[{host}]" if ":" in host else host
    port = options.port or definition.get("default", {}).get("port")
    link = f"{options.scheme}://"
    if options.user:
        link += quote(options.user, safe="") + "@"
    link += bracketed.replace("%", "%25")
    if options.port:
        link += f":{options.port}"
    return {
        "user": options.user,
        "password": options.password,
        "host": host,
        "bracketed": bracketed,
        "port": port,
        "tlsport": None,
        "display": port and port - 5900,
        "link": link,
    }


def fill(text, values):
    """The text with its placeholders filled in, or None if one has no value."""
    names = re.findall(r"\{(\w+)\}", text.replace("{{", ""))
    if any(values[name] is None for name in names):
        return None
    return re.sub(
        r"\{\{|\}\}|\{(\w+)\}",
        lambda found: str(values[found[1]]) if found[1] else found[0][0],
        text,
    )


def filled(elements, values):
    words = []
    for element in elements:
        parts = [fill(part, values) for part in ([element] if isinstance(element, str) else element)]
        if None not in parts:
            words += parts
    return words


def parameter_words(definition, given, values):
    """The arguments for a parameter of the link, NAME=VALUE."""
    name, _, value = given.partition("=")
    for known, parameter in definition.get("parameters", {}).items():
        if known.lower() == name.lower() and re.fullmatch(parameter.get("allow", ".*"), value):
            return filled(parameter["arguments"], values | {"value": value})
    sys.exit(f"{given} has no arguments")


def program_of(definition):
    """The file of the viewer, as hopopen finds it: its name without links is in the list."""
    names = definition["programs"]
    for name in names:
        for folder in os.get_exec_path():
            path = shutil.which(os.path.join(folder, name))
            if path and os.path.basename(os.path.realpath(path)) in names:
                return os.path.realpath(path)
    return None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--trusted", action="store_true")
    parser.add_argument("--user")
    parser.add_argument("--password")
    parser.add_argument("--port", type=int)
    parser.add_argument("--parameter", action="append", default=[])
    parser.add_argument("--terminal", default="x-terminal-emulator")
    parser.add_argument("viewer")
    parser.add_argument("scheme")
    parser.add_argument("host")
    options = parser.parse_args()

    definition = tomllib.loads((VIEWERS / f"{options.viewer}.toml").read_text())
    if options.scheme not in definition["schemes"]:
        sys.exit(f"{options.viewer} does not open {options.scheme}")
    values = pieces(options, definition)
    program = program_of(definition)
    if not program:
        sys.exit(f"{options.viewer} is not installed")

    words = [options.terminal, "-e"] if definition.get("terminal") else []
    words += ["env"]
    for name in definition.get("unset", []):
        words += ["-u", name]
    for name, text in definition.get("environment", {}).items():
        value = fill(text, values)
        words += [] if value is None else [f"{name}={value}"]
    words += [program]
    words += filled(definition.get("trusted" if options.trusted else "stranger", []), values)
    for given in options.parameter:
        words += parameter_words(definition, given, values)
    words += filled(definition["arguments"], values)
    sys.stdout.write("".join(word + "\0" for word in words))


if __name__ == "__main__":
    main()
