"""Keeps the figures of the documents (see scripts/figures).

A file docs/figures/NAME.json has what one measurement gave: its command, the commit, and

- "text": the last lines that the command printed;
- "values": single figures, by name;
- "tables": tables, each with a head and rows of texts.

A document has them between markers.  A block, for a text or a table:

    <!-- figures NAME [TABLE] -->
    ...
    <!-- end of figures -->

and, in a line, a value: <!-- figure NAME VALUE -->266<!-- end -->.
"""

import json
import pathlib
import re
import subprocess
import sys

KEPT = pathlib.Path("docs/figures")
BLOCK = re.compile(r"(<!-- figures (\S+)(?: (\S+))? -->\n).*?(<!-- end of figures -->\n)", re.DOTALL)
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
    """What is measured: the last commit, and whether files differ from it."""
    said = subprocess.run(["git", "describe", "--always", "--dirty", "--abbrev=10"],
                          capture_output=True, text=True, check=False)
    return said.stdout.strip()


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
    rows = [line.split()[:2] for line in output.splitlines() if " executions " in line]
    return {"tables": {"executions": {"head": ["fuzzer", "executions"], "rows": [
        [name, f"{int(count):,}"] for name, count in sorted(rows)]}}}


def mutated(output):
    """Takes the place of the rows of the files that were broken, and of the last one."""
    kept = json.loads((KEPT / "mutation.json").read_text(encoding="utf-8"))["tables"]["mutants"]
    rows = {row[0]: row for row in kept["rows"][:-1]}
    for name, killed, tried, same in re.findall(
            r"^(\S+): (\d+) of (\d+) killed, \d+ survived, (\d+) equivalent", output, re.MULTILINE):
        rows[name] = [name, killed, tried, same]
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
    "mutation": ("scripts/mutate $(git ls-files '*.cpp' | grep -E '^(brimcore|directory|tools|utilities)/')"
                 " --longest 4", mutated),
    "soak": ("scripts/soak", soaked),
    "word_sizes": ("scripts/check word_sizes", closing(2)),
}
KEEP_THEMSELVES = {"bench": "bench/run", "costs": "bash bench/costs.sh"}


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


def written(text):
    text = BLOCK.sub(lambda found: found[1] + block(found[2], found[3]) + found[4], text)
    return VALUE.sub(lambda found: found[1] + results(found[2])["values"][found[3]] + found[4], text)


def main():
    option, *names = sys.argv[1:] or [""]
    if option == "--measure":
        unknown = [name for name in names if name not in MEASURED and name not in KEEP_THEMSELVES]
        if unknown or not names:
            commands = {name: command for name, (command, _) in MEASURED.items()} | KEEP_THEMSELVES
            sys.exit("".join(f"{name:12} {commands[name]}\n" for name in sorted(commands)))
        for name in names:
            measure(name)
    elif option not in ("", "--check"):
        sys.exit("Usage: scripts/figures [--check | --measure [NAME...] | --pictures [NAME...]]")
    different = 0
    used = set()
    for page in sorted([*pathlib.Path().glob("*.md"), *pathlib.Path("docs").glob("*.md")]):
        text = page.read_text(encoding="utf-8")
        used |= {found[2] for found in [*BLOCK.finditer(text), *VALUE.finditer(text)]}
        new = written(text)
        if new != text:
            different += 1
            print(f"{page} differs from docs/figures/" if option == "--check" else page)
            if option != "--check":
                page.write_text(new, encoding="utf-8")
    for unused in {file.stem for file in KEPT.glob("*.json")} - used:
        different += 1
        print(f"docs/figures/{unused}.json is in no document")
    sys.exit(1 if option == "--check" and different else 0)


if __name__ == "__main__":
    main()
