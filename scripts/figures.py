# SPDX-License-Identifier: MIT
"""Writes what is generated in the documents (see scripts/figures): figures that were measured,
the lists of items and flags, and the picture of the layers.

A file docs/figures/NAME.json has what one measurement gave: its command, the commit, and

- "text": the last lines that the command printed;
- "values": single figures, by name;
- "tables": tables, each with a head and rows of texts.

A document has them between markers.  A block, for a text or a table:

    <!-- figures NAME [TABLE] -->
    ...
    <!-- end of figures -->

and, in a line, a value: <!-- figure NAME VALUE -->266<!-- end -->.

Lists are between lines that end in "list of docs/items.tsv: FORM" and "end of list", the
picture is between "<!-- picture layers -->" and "<!-- end of picture -->".
"""

import json
import pathlib
import re
import subprocess
import sys
import textwrap

KEPT = pathlib.Path("docs/figures")
BLOCK = re.compile(r"(<!-- figures (\S+)(?: (\S+))? -->\n).*?(<!-- end of figures -->\n)", re.DOTALL)
LIST = re.compile(r"(^[^\n]*\blist of docs/items\.tsv: (\w+)\n).*?(^[^\n]*\bend of list\n)",
                  re.MULTILINE | re.DOTALL)
PICTURE = re.compile(r"(<!-- picture layers -->\n).*?(<!-- end of picture -->\n)", re.DOTALL)
VALUE = re.compile(r"(<!-- figure (\S+) (\S+) -->).*?(<!-- end -->)", re.DOTALL)


def table(head, rows):
    """Rows in columns, the first aligned left and the others right."""
    rows = [head] + rows
    widths = [max(len(row[i]) for row in rows) for i in range(len(head))]
    lines = []
    for row in rows:
        cells = [row[0].ljust(widths[0])] + [c.rjust(w) for c, w in zip(row[1:], widths[1:])]
        lines.append("| " + " | ".join(cells) + " |\n")
    rule = ["-" * (widths[0] + 2)] + ["-" * (width + 1) + ":" for width in widths[1:]]
    lines.insert(1, "|" + "|".join(rule) + "|\n")
    return "".join(lines)


def commit():
    """What is measured: the last commit, and whether files but documents differ from it."""
    last = subprocess.run(["git", "rev-parse", "--short=10", "HEAD"], capture_output=True,
                          text=True, check=False).stdout.strip()
    same = subprocess.run(["git", "diff", "--quiet", "HEAD", "--", ".", ":!docs", ":!*.md"],
                          check=False).returncode == 0
    return last if same else f"{last}-dirty"


def keep(name, command, **results):
    """Keeps the results of a measurement, with the tables and values of an earlier one that
    this one does not have."""
    file = KEPT / f"{name}.json"
    kept = json.loads(file.read_text(encoding="utf-8")) if file.exists() else {}
    kept |= {"command": command, "commit": commit()} | results
    file.write_text(json.dumps(kept, indent=1, ensure_ascii=False) + "\n", encoding="utf-8")


# --- Measuring -------------------------------------------------------------------

FUZZ_ROUND = "HOPLAUNCH_FUZZ_ARGS=-seed=1 fuzz/run 10"
FUZZ_LONG = "HOPLAUNCH_FUZZ_ARGS=-runs=5000000 fuzz/run 36000"


def closing(lines):
    """Keeps the last lines that are printed."""
    return lambda output: {"text": "\n".join(output.splitlines()[-lines:])}


def soaked(output):
    numbers = {key: int(found[1]) for key, pattern in {
        "killed": r"(\d+) launches, killed", "died": r"(\d+) died of it", "arrived": r"(\d+) arrived, \d+ logs",
        "left": r"launches, killed.*, (\d+) sets left behind"}.items()
        if (found := re.search(pattern, output.replace("\n", " ")))}
    return closing(4)(output) | {"values": {
        "left": f"{numbers['left']:,}", "killed": f"{numbers['killed']:,}",
        "viewers": str(numbers["died"] + numbers["arrived"] - numbers["killed"])}}


def fuzzed(output):
    """Takes the place of the rows of the fuzzers that ran."""
    kept = json.loads((KEPT / "fuzz_long.json").read_text(encoding="utf-8"))["tables"]["executions"]
    rows = {row[0]: row for row in kept["rows"]}
    for name, count in re.findall(r"^(\S+) +(\d+) executions .* 0 findings$", output, re.MULTILINE):
        rows[name] = [name, f"{int(count):,}", commit()]
    return {"tables": {"executions": {"head": kept["head"], "rows": sorted(rows.values())}}}


def mutated(output):
    """Takes the place of the rows of the files that were broken, and of the last one."""
    kept = json.loads((KEPT / "mutation.json").read_text(encoding="utf-8"))["tables"]["mutants"]
    rows = {row[0].strip("`"): row for row in kept["rows"][:-1]}
    for name, killed, tried, same in re.findall(
            r"^(\S+): (\d+) of (\d+) killed, \d+ survived, (\d+) equivalent", output, re.MULTILINE):
        rows[name] = [f"`{name}`", killed, tried, same]
    rows = {name: row for name, row in sorted(rows.items()) if pathlib.Path(name).exists()}
    sums = [sum(int(row[column]) for row in rows.values()) for column in (1, 2, 3)]
    last = [f"together, {100 * sums[0] / sums[1]:.1f} %"] + [f"{number:,}" for number in sums]
    return {"tables": {"mutants": {"head": kept["head"], "rows": [*rows.values(), last]}}}


# What is measured by a command that prints it.  bench/run keeps its figures itself.
MEASURED = {
    "agreement": ("scripts/check agreement", closing(2)),
    "coverage": ("scripts/coverage", closing(1)),
    "fuzz": (FUZZ_ROUND, lambda output: {"text": output.rstrip()}),
    "fuzz_long": (FUZZ_LONG, fuzzed),
    "hardening": ("scripts/check hardening", closing(1)),
    "mutation": ("scripts/mutate $(git ls-files '*.cpp' |"
                 " grep -E '^(brimcore|directory|hopopen|tools|utilities)/') --longest 35", mutated),
    "soak": ("scripts/soak", soaked),
    "word_sizes": ("scripts/check word_sizes", closing(2)),
}
KEEP_THEMSELVES = {"bench": "bench/run", "costs": "bash bench/costs.sh"}


# What every measurement depends on, and what each depends on besides.
CODE = ["CMakeLists.txt", "brimcore", "cmake", "directory", "hopopen", "include", "tools",
        "utilities", "viewers"]
BESIDES = {"agreement": ["tests/agreement"], "bench": ["bench"], "costs": ["bench"],
           "coverage": ["tests"], "fuzz": ["fuzz"], "fuzz_long": ["fuzz"], "mutation": ["tests"]}
# What was tried once, and dropped, stays as it was.
HISTORY = ["tried"]


def why_old(name, kept):
    """Why the results are not those of the code as it is; nothing if they are."""
    commit, command = kept["commit"], kept["command"]
    if not any(pathlib.Path(word).is_file() for word in re.findall(r"[\w./-]+", command)):
        return f"the command does not exist: {command}"
    if subprocess.run(["git", "merge-base", "--is-ancestor", commit, "HEAD"],
                      stderr=subprocess.DEVNULL, check=False).returncode != 0:
        return f"the commit is none of these: {commit}"
    if name in HISTORY:
        return None
    changed = subprocess.run(["git", "diff", "--name-only", commit, "HEAD", "--", *CODE,
                              *BESIDES.get(name, [])], capture_output=True, text=True, check=True)
    files = changed.stdout.split()
    return f"{len(files)} files are newer than {commit}, {files[0]} among them" if files else None


def say_old():
    """Prints a line for each measurement that is not of the code as it is."""
    found = {file.stem: why_old(file.stem, results(file.stem)) for file in KEPT.glob("*.json")}
    for name, why in sorted(found.items()):
        if why:
            print(f"docs/figures/{name}.json: {why}")
    return any(found.values())


def measure(name):
    if name in KEEP_THEMSELVES:
        subprocess.run(["bash", "-c", KEEP_THEMSELVES[name]], check=True)
        return
    command, reader = MEASURED[name]
    said = subprocess.run(["bash", "-c", command], stdout=subprocess.PIPE, text=True, check=False)
    print(said.stdout, end="")
    if said.returncode != 0 and name != "mutation":  # which fails for any that survives
        sys.exit(f"{command} failed: nothing is kept")
    keep(name, command, **reader(said.stdout))


# --- Writing -----------------------------------------------------------------------


def results(name):
    return json.loads((KEPT / f"{name}.json").read_text(encoding="utf-8"))


def block(name, part):
    kept = results(name)
    if part is not None:
        return table(kept["tables"][part]["head"], kept["tables"][part]["rows"])
    lines = [f"$ {kept['command']}"] + kept["text"].splitlines()
    return "\n" + "".join(f"    {line}".rstrip() + "\n" for line in lines) + "\n"


def items():
    """The rows of docs/items.tsv (see its head)."""
    lines = pathlib.Path("docs/items.tsv").read_text(encoding="utf-8").splitlines()
    return [line.split("\t") for line in lines if not line.startswith("#")]


def keys(*kinds):
    return [row[1] for row in items() if row[0] in kinds]


def man(kind):
    """The items of a list of mdoc, except for those that are written by hand."""
    return "".join(f".It Fl {key} Ns = Ns Ar {value}\n{text}\n"
                   for of, key, value, _, _, text in items() if of == kind and text)


def hints(*kinds):
    """Entries of _describe, as zsh quotes them."""
    words = {"item": ["item"], "flag": ["trace flag"]}
    for kind, key, _, _, hint, _ in items():
        if kind in kinds:
            told = "\\: ".join(words.get(kind, []) + [hint] * bool(hint))
            quote = '"' if "'" in told else "'"
            yield f"    {quote}-{key}=:{told}{quote}\n"


def in_lines(words, width=80):
    return textwrap.wrap(" ".join(words), width, break_on_hyphens=False)


def fish(words):
    return "".join(f"    string split ' ' -- '{line}'\n" for line in in_lines(words))


def listed(form):
    options = [f"-{key}=" for key in keys("launch", "item")]
    switches = [f"-{key}=1" for key in keys("flag")]
    if form in ("man_item", "man_flag"):
        return man(form[4:])
    if form == "bash":
        return ("  local keys='" + "\n    ".join(in_lines(options)) + "'\n"
                "  local flags='" + "\n    ".join(in_lines(switches)) + "'\n")
    if form == "zsh_flags":  # which are asked for in lower case
        return "    " + " | ".join(f"-{key.lower()}" for key in keys("flag")) + ")\n"
    if form == "zsh":
        return ("  local -a keys=(\n" + "".join(hints("launch", "item")) + "  )\n"
                "  local -a flags=(\n" + "".join(hints("flag")) + "  )\n")
    return fish(options) + fish(switches)


# --- The picture of the layers ---------------------------------------------------

# From the top down.
FOLDERS = {
    "hopopen": "what a click starts",
    "tools": "hoplaunch and hopexplain",
    "brimcore": "configuration, items, languages, the log of reports",
    "directory": "distinguished names",
    "utilities": "URIs, text, dates, reports, flags, counts, processes",
}


def folder_of_headers():
    """For each header the folder that implements it."""
    found = {}
    for header in pathlib.Path("include").glob("*.h"):
        found[header.name] = "utilities"
        for folder in FOLDERS:
            if list(pathlib.Path(folder).rglob(f"{header.stem}.cpp")):
                found[header.name] = folder
    for folder in FOLDERS:
        found |= {header.name: folder for header in pathlib.Path(folder).rglob("*.h")}
    return found


def arrows():
    """Which folder uses which, by what their sources and headers include."""
    owners = folder_of_headers()
    sources = [(folder, file) for folder in FOLDERS for file in pathlib.Path(folder).rglob("*")
               if file.suffix in (".cpp", ".h")]
    sources += [(owners[file.name], file) for file in pathlib.Path("include").glob("*.h")]
    found = set()
    for folder, file in sources:
        text = file.read_text(encoding="utf-8")
        names = re.findall(r'^#include "(?:.*/)?([^"/]+)"', text, re.MULTILINE)
        found |= {(folder, owners[name]) for name in names if name in owners}
    return sorted((one, other) for one, other in found if one != other)


def picture():
    lines = ["```mermaid", "flowchart TB"]
    lines += [f'  {name}["{name}/: {text}"]' for name, text in FOLDERS.items()]
    order = list(FOLDERS)
    lines += [f"  {one} {'-->' if order.index(one) < order.index(other) else '-.->'} {other}"
              for one, other in arrows()]
    return "\n".join(lines) + "\n```\n"


def written(text):
    text = LIST.sub(lambda found: found[1] + listed(found[2]) + found[3], text)
    text = PICTURE.sub(lambda found: found[1] + picture() + found[2], text)
    text = BLOCK.sub(lambda found: found[1] + block(found[2], found[3]) + found[4], text)
    return VALUE.sub(lambda found: found[1] + results(found[2])["values"][found[3]] + found[4], text)


def main():
    option, *names = sys.argv[1:] or [""]
    if option == "--old":
        sys.exit(1 if say_old() else 0)
    if option == "--measure":
        unknown = [name for name in names if name not in MEASURED and name not in KEEP_THEMSELVES]
        if unknown or not names:
            commands = {name: command for name, (command, _) in MEASURED.items()} | KEEP_THEMSELVES
            sys.exit("".join(f"{name:12} {commands[name]}\n" for name in sorted(commands)))
        for name in names:
            measure(name)
    elif option not in ("", "--check"):
        sys.exit("Usage: scripts/figures [--check | --old | --measure [NAME...] | --pictures [NAME...]]")
    different = 0
    used = set()
    for page in sorted([*pathlib.Path().glob("*.md"), *pathlib.Path("docs").glob("*.md"),
                        *pathlib.Path("man").glob("*.1"), *pathlib.Path("completions").iterdir()]):
        text = page.read_text(encoding="utf-8")
        used |= {found[2] for found in [*BLOCK.finditer(text), *VALUE.finditer(text)]}
        new = written(text)
        if new != text:
            different += 1
            print(f"{page} differs from what scripts/figures writes" if option == "--check" else page)
            if option != "--check":
                page.write_text(new, encoding="utf-8")
    for unused in {file.stem for file in KEPT.glob("*.json")} - used:
        different += 1
        print(f"docs/figures/{unused}.json is in no document")
    sys.exit(1 if option == "--check" and different else 0)


if __name__ == "__main__":
    main()
