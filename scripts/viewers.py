# SPDX-License-Identifier: MIT
"""Writes the table of docs/viewers.md: see scripts/viewers."""

import pathlib
import sys
import tomllib

DOCUMENT = pathlib.Path("docs/viewers.md")
BEGIN = "<!-- table of viewers: scripts/viewers writes it -->\n"
END = "<!-- end of the table -->\n"
ORDER = ["vnc", "rdp", "spice", "ssh", "telnet"]
HEAD = (
    "| viewer | `--use` | opens | rank | Debian 12 | Debian 13 | lets through |\n"
    "|---|---|---|---:|---|---|---|\n"
)
# Where a viewer has a section of another name than its own.
SECTIONS = {
    "OpenSSH": "openssh-in-a-terminal",
    "telnet": "telnet-in-a-terminal",
    "FreeRDP 2": "freerdp",
    "FreeRDP 3": "freerdp",
    "FreeRDP 3 in a terminal": "freerdp",
}


def versions():
    """The versions in Debian 12 and 13 by the name of the definition."""
    result = {}
    for line in pathlib.Path("docs/viewer_versions.txt").read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            name, twelve, thirteen = line.split()
            result[name] = (twelve, thirteen)
    return result


def row(name, viewer, known):
    """One viewer's row."""
    title = viewer["name"]
    section = SECTIONS.get(title, title.lower().replace(" ", "-"))
    schemes = ", ".join(f"`{scheme}`" for scheme in viewer["schemes"])
    guarded = ", ".join(viewer.get("unguarded", [])) or "nothing"
    return (
        f"| [{title}](#{section}) | `{name}` | {schemes} | {viewer.get('rank', 50)} "
        f"| {known[0]} | {known[1]} | {guarded} |\n"
    )


def table():
    """The table, by scheme and rank."""
    viewers = {
        path.stem: tomllib.loads(path.read_text(encoding="utf-8"))
        for path in pathlib.Path("viewers").glob("*.toml")
    }
    known = versions()
    ordered = sorted(
        viewers,
        key=lambda name: (
            ORDER.index(viewers[name]["schemes"][0]),
            viewers[name].get("rank", 50),
            name,
        ),
    )
    return HEAD + "".join(row(name, viewers[name], known[name]) for name in ordered)


def main():
    """Writes the table, or compares it."""
    text = DOCUMENT.read_text(encoding="utf-8")
    before, rest = text.split(BEGIN)
    after = rest.split(END)[1]
    wanted = before + BEGIN + table() + END + after
    if "--check" in sys.argv[1:]:
        if wanted != text:
            sys.exit("docs/viewers.md: the table is not that of the definitions. "
                     "Run scripts/viewers.")
    else:
        DOCUMENT.write_text(wanted, encoding="utf-8")


main()
