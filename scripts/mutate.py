# SPDX-License-Identifier: MIT
"""Breaks a source file in small ways and shows which breaks no test notices.

Each mutant differs from the file by one token or one statement.  It is compiled
without optimisation in a copy of the tree, and the tests that reach its line are
linked with it and run, the quickest first, until one fails.  Which test reaches which
line comes from a build that measures coverage.
"""

import argparse
import fcntl
import json
import os
import random
import re
import resource
import signal
import subprocess
import sys
import time
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
WORK = TOP / "build" / "mutate"
TREE = WORK / "tree"
COVERAGE = WORK / "coverage"
BROKEN_TREE = WORK / "broken_tree"
BROKEN = WORK / "broken"
EXPLAINED = TOP / "tests" / "data" / "equivalent_mutants.txt"

# A mutant may write over memory, leave processes and semaphore sets behind, or never
# end.  All that a test starts in these namespaces ends with it.
CONTAINED = ["unshare", "--ipc", "--pid", "--fork", "--kill-child", "--mount-proc"]

# --- Mutants ---------------------------------------------------------------

TOKEN = re.compile(
    r"""(?P<space>\s+|//[^\n]*|/\*.*?\*/)
      | (?P<directive>(?<![^\n])[ \t]*\#(?:[^\n\\]|\\.)*)
      | (?P<string>(?:u8|[uUL])?R"(?P<delimiter>[^(]*)\(.*?\)(?P=delimiter)"
                  |(?:u8|[uUL])?"(?:[^"\\\n]|\\.)*")
      | (?P<character>(?:u8|[uUL])?'(?:[^'\\\n]|\\.)+')
      | (?P<number>\.?[0-9](?:[eEpP][-+]|['\w.])*)
      | (?P<word>\w+)
      | (?P<sign><=>|<<=|>>=|\.\.\.|->\*?|::|\+\+|--|<<|>>|[<>=!]=|&&|\|\||[-+*/%&|^]=|.)""",
    re.VERBOSE | re.DOTALL)

# Between two operands, which the format marks with spaces.
BINARY = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "&": ["|"], "|": ["&"], "^": ["&"], "<<": [">>"], ">>": ["<<"],
    "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "%=": ["*="],
    "&=": ["|="], "|=": ["&="], "<<=": [">>="], ">>=": ["<<="],
}
ANYWHERE = {
    "++": ["--"], "--": ["++"], "!": [""],
    "true": ["false"], "false": ["true"], "break": ["continue"], "continue": ["break"],
}
# What a statement begins with that is not to be removed as a whole.
KEPT = {"if", "else", "for", "while", "do", "switch", "case", "default", "return", "using",
        "namespace", "class", "struct", "enum", "template", "typedef", "public", "protected",
        "private", "static_assert", "extern", "friend", "goto", "try", "catch"}


class Token:
    def __init__(self, match):
        self.kind, self.text, self.start, self.end = (
            match.lastgroup, match.group(), match.start(), match.end())


def tokens_of(text):
    found = []
    for match in TOKEN.finditer(text):
        token = Token(match)
        if token.kind == "delimiter":
            token.kind = "string"
        if token.kind not in ("space", "directive"):
            found.append(token)
    return found


def other_numbers(text):
    if re.fullmatch(r"0[xX][0-9a-fA-F']+[uUlL]*|[0-9']+[uUlL]*", text) is None:
        return []
    suffix = re.search(r"[uUlL]*$", text).group()
    digits = text[:len(text) - len(suffix)].replace("'", "")
    octal = len(digits) > 1 and digits.isdigit() and digits[0] == "0"
    value = int(digits, 8 if octal else 0)
    others = {value + 1, value - 1, 0} - {value, -1}
    return [f"{other}{suffix}" for other in sorted(others)]


def other_character(text):
    plain = re.fullmatch(r"'([^\\])'", text)
    if plain is None:
        return ["'\\1'"]
    other = chr(ord(plain.group(1)) + 1)
    return ["'\\" + other + "'" if other in "\\'" else f"'{other}'"]


def closing(tokens, index):
    """The index of the bracket that closes the one at `index`."""
    depth = 0
    for i in range(index, len(tokens)):
        if tokens[i].text in ("(", "[", "{"):
            depth += 1
        elif tokens[i].text in (")", "]", "}"):
            depth -= 1
            if depth == 0:
                return i
    return len(tokens) - 1


def statement_end(tokens, index):
    """The index of the semicolon that ends the statement at `index`, or None."""
    i = index
    while i < len(tokens):
        if tokens[i].text == ";":
            return i
        if tokens[i].text in ("(", "[", "{"):
            i = closing(tokens, i)
        elif tokens[i].text in (")", "]", "}"):
            return None
        i += 1
    return None


def statement_starts(tokens):
    """The indices at which the statements of function bodies begin."""
    bodies = [False]  # for each open bracket, whether it is that of a body
    for i, token in enumerate(tokens):
        before = tokens[i - 1].text if i > 0 else ";"
        label = before == ":" and any(t.text == "case" for t in tokens[max(i - 5, 0):i])
        begins = bodies[-1] and (before in ("{", "}", ";") or label)
        if begins:
            yield i
        if token.text in ("(", "["):
            bodies.append(False)
        elif token.text == "{":
            bodies.append(begins or before in (")", "]", "else", "do", "try", "const", "noexcept",
                                               "override"))
        elif token.text in (")", "]", "}") and len(bodies) > 1:
            bodies.pop()


def mutants_of(text):
    """All (start, end, replacement), each a way to break the text."""
    tokens = tokens_of(text)
    found = []
    for i, token in enumerate(tokens):
        others = []
        if token.kind == "number":
            others = other_numbers(token.text)
        elif token.kind == "character":
            others = other_character(token.text)
        elif token.kind == "string" and not token.text.endswith('""'):
            others = ['""']
        elif token.text in ANYWHERE:
            others = ANYWHERE[token.text]
        elif text[token.start - 1].isspace() and text[token.end:token.end + 1].isspace():
            others = BINARY.get(token.text, [])
        found += [(token.start, token.end, other) for other in others]
        if token.text in ("if", "while") and i + 1 < len(tokens) and tokens[i + 1].text == "(":
            last = tokens[closing(tokens, i + 1)]
            inner = text[tokens[i + 1].end:last.start]
            found.append((tokens[i + 1].end, last.start, f"!({inner})"))
        if token.text == "return" and tokens[i + 1].text != ";":
            last = statement_end(tokens, i)
            if last is not None:
                found.append((tokens[i + 1].start, tokens[last].start, "{}"))
    for i in statement_starts(tokens):
        last = statement_end(tokens, i)
        if last is not None and last > i and tokens[i].text not in KEPT:
            found.append((tokens[i].start, tokens[last].start, ""))
    return found


class Mutant:
    def __init__(self, name, text, change):
        start, end, other = change
        self.name = name
        # The lines stay where they are, so that their numbers do.
        self.text = text[:start] + other + "\n" * (
            text.count("\n", start, end) - other.count("\n")) + text[end:]
        first = text.rfind("\n", 0, start) + 1
        last = text.find("\n", end)
        self.lines = range(text.count("\n", 0, start) + 1, text.count("\n", 0, end) + 2)
        self.before = " ".join(text[first:last].split())
        self.after = " ".join((text[first:start] + other + text[end:last]).split())

    def __str__(self):
        return f"{self.name}:{self.lines[0]}\n  - {self.before}\n  + {self.after}"


# --- Building --------------------------------------------------------------

def run(*command, **more):
    return subprocess.run(command, check=True, **more)


def ninja(folder, *targets):
    return subprocess.run(["ninja", "-C", folder, *targets], capture_output=True,
                          check=False).returncode == 0


def copy_to(tree):
    """Brings a copy of the project up to date; what is the same keeps its time."""
    listed = run("git", "ls-files", "-z", "-co", "--exclude-standard", cwd=TOP,
                 capture_output=True, text=True).stdout
    for name in listed.split("\0"):
        source, copy = TOP / name, tree / name
        if not name or not source.is_file():
            continue
        if source.is_symlink():
            copy.parent.mkdir(parents=True, exist_ok=True)
            copy.unlink(missing_ok=True)
            copy.symlink_to(source.readlink())
            continue
        content = source.read_bytes()
        if not copy.exists() or copy.read_bytes() != content:
            copy.parent.mkdir(parents=True, exist_ok=True)
            copy.write_bytes(content)
            copy.chmod(source.stat().st_mode)


def build(folder, tree, flags, *more):
    copy_to(tree)
    run("cmake", "-S", tree, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
        "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", "-DHOPLAUNCH_SHARED=OFF",
        "-DHOPLAUNCH_SEPARATE_TESTS=ON",
        f"-DCMAKE_CXX_FLAGS_DEBUG={flags}", *more, stdout=subprocess.DEVNULL)
    run("ninja", "-C", folder, stdout=subprocess.DEVNULL)


# --- Tests -----------------------------------------------------------------

def tests():
    """Those that the build has which counts: some would look at each of many bytes there."""
    return sorted(path.stem for path in (TREE / "tests").glob("*_test.cpp")
                  if (COVERAGE / "tests" / path.stem).exists())


def limits(seconds):
    """For a child: what a mutant that runs away may use."""
    for number in (signal.SIGHUP, signal.SIGINT, signal.SIGQUIT):  # as jobs may ignore them
        signal.signal(number, signal.SIG_DFL)
    resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
    resource.setrlimit(resource.RLIMIT_AS, (2 << 30, 2 << 30))
    resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 32, 1 << 32))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def passes(test, cases, seconds):
    """Whether the cases of a test pass, each in ten times the seconds that it takes.  One
    that fails on a busy machine has a second try."""
    return passes_once(test, cases, seconds) or passes_once(test, cases, seconds)


def passes_once(test, cases, seconds):
    environment = dict(os.environ, MALLOC_PERTURB_="165", GTEST_BRIEF="1", GTEST_FAIL_FAST="1")
    for case in cases:
        with subprocess.Popen([*CONTAINED, test, f"--gtest_filter={case}"], env=environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, start_new_session=True,
                              preexec_fn=lambda: limits(int(2 + 10 * seconds))) as process:
            try:
                if process.wait(timeout=10 + 10 * seconds) != 0:
                    return False
            except subprocess.TimeoutExpired:
                process.kill()
                return False
    return True


def cases_of(test):
    """What to give as a filter, one after the other.  Some tests need a fresh process for
    each case; the others run in one, which is quicker."""
    if passes(test, ["*"], 30):
        return ["*"]
    cases, suite = [], ""
    listing = run(test, "--gtest_list_tests", capture_output=True, text=True).stdout
    for line in listing.splitlines():
        name = line.split("#")[0].rstrip()
        if name.startswith("  "):
            cases.append(suite + name.strip())
        elif name.endswith("."):
            suite = name
    return cases


def lines_reached():
    """For each source the lines that were reached, and all that can be."""
    counts = [str(path) for path in COVERAGE.rglob("*.gcda")]
    output = run("gcov", "--json-format", "--stdout", "--relative-only",
                 f"--source-prefix={TREE}", *counts, cwd=COVERAGE, capture_output=True,
                 text=True).stdout
    reached, known = {}, {}
    for document in output.splitlines():
        for source in json.loads(document)["files"]:
            name = os.path.relpath(source["file"], TREE)
            for line in source["lines"]:
                known.setdefault(name, set()).add(line["line_number"])
                if line["count"] > 0:
                    reached.setdefault(name, set()).add(line["line_number"])
    return reached, known


def measure(test):
    for counts in COVERAGE.rglob("*.gcda"):
        counts.unlink()
    cases = cases_of(BROKEN / "tests" / test)
    if not passes(COVERAGE / "tests" / test, cases, 60):
        sys.exit(f"{test} fails as it is")
    reached, known = lines_reached()
    started = time.monotonic()
    if not passes(BROKEN / "tests" / test, cases, 30):
        sys.exit(f"{test} fails as it is")
    return {"cases": cases, "seconds": time.monotonic() - started,
            "reached": {name: sorted(lines) for name, lines in reached.items()},
            "known": {name: sorted(lines) for name, lines in known.items()}}


def measure_all():
    """What each test reaches, kept for as long as neither it nor a program changes."""
    kept = WORK / "tests.json"
    known = json.loads(kept.read_text()) if kept.exists() else {}
    result = {}
    for test in tests():
        stamp = max((COVERAGE / name).stat().st_mtime
                    for name in (f"tests/{test}", "hoplaunch", "hopexplain", "hopopen",
                                 "demo_viewer"))
        result[test] = known.get(test)
        if result[test] is None or result[test]["stamp"] != stamp:
            print(f"measuring {test}", file=sys.stderr, flush=True)
            result[test] = dict(measure(test), stamp=stamp)
            kept.write_text(json.dumps(known | result))
    return result


def tests_for(mutant, measured, longest):
    """The tests that reach the mutant's lines and take no longer than allowed, those of its
    unit first, then the quick ones.  Lines that have no code of their own, as tables
    have, count as reached by every test that reaches the file."""
    unit = Path(mutant.name).stem.removesuffix("_unx")
    found = []
    for test, facts in measured.items():
        reached = set(facts["reached"].get(mutant.name, []))
        known = set(facts["known"].get(mutant.name, []))
        lines = known.intersection(mutant.lines)
        if facts["seconds"] <= longest and (reached.intersection(lines) if lines else reached):
            found.append((not test.startswith(unit), facts["seconds"], test))
    return [test for _, _, test in sorted(found)]


# --- Trying ----------------------------------------------------------------

class Compiler:
    """The object of one source, to tell mutants that do not differ."""

    def __init__(self, name):
        entries = json.loads((BROKEN / "compile_commands.json").read_text())
        entry = next((e for e in entries if e["file"] == str(BROKEN_TREE / name)), None)
        self.object = entry and re.search(r" -o (\S+)", entry["command"]).group(1)
        self.command = entry and entry["command"].replace(" -O0 ", " -O2 ")
        self.original = self.object and (BROKEN / self.object).read_bytes()
        self.optimised = self.object and self.compile()

    def compile(self):
        output = WORK / "optimised.o"
        run("sh", "-c", self.command.replace(self.object, str(output)), cwd=BROKEN,
            stderr=subprocess.DEVNULL)
        return output.read_bytes()

    def same(self):
        return self.object is not None and self.original == (BROKEN / self.object).read_bytes()

    def same_optimised(self):
        return self.object is not None and self.optimised == self.compile()


def judge(mutant, measured, longest, compiler):
    """The fate of a mutant: "invalid", "killed", "equivalent" or "survived"."""
    (BROKEN_TREE / mutant.name).write_text(mutant.text)
    if compiler.object and not ninja(BROKEN, compiler.object):
        return "invalid"
    if compiler.same():
        return "equivalent"
    for test in tests_for(mutant, measured, longest):
        if not ninja(BROKEN, f"tests/{test}"):
            return "invalid"
        facts = measured[test]
        if not passes(BROKEN / "tests" / test, facts["cases"], facts["seconds"]):
            return "killed"
    return "equivalent" if compiler.same_optimised() else "survived"


def explained():
    """The mutants that the project explains as equivalent: file, before and after."""
    found = set()
    name = before = ""
    for line in EXPLAINED.read_text().splitlines() if EXPLAINED.exists() else []:
        if line.startswith("  - "):
            before = line[4:]
        elif line.startswith("  + "):
            found.add((name, before, line[4:]))
        elif line and not line.startswith((" ", "#")):
            name = line
    return found


def try_file(name, sample, seed, measured, longest):
    text = (TOP / name).read_text()
    compiler = Compiler(name)
    mutants = [Mutant(name, text, change) for change in sorted(set(mutants_of(text)))]
    random.Random(seed).shuffle(mutants)
    known = explained()
    counts = {"killed": 0, "survived": 0, "equivalent": 0}
    try:
        for mutant in mutants:
            if sum(counts.values()) == sample:
                break
            fate = judge(mutant, measured, longest, compiler)
            if fate == "survived" and (name, mutant.before, mutant.after) in known:
                fate = "equivalent"
            if fate in counts:
                counts[fate] += 1
            if fate == "survived":
                print(mutant, flush=True)
    finally:
        (BROKEN_TREE / name).write_text(text)
    print(f"{name}: {counts['killed']} of {sum(counts.values()) - counts['equivalent']} killed, "
          f"{counts['survived']} survived, {counts['equivalent']} equivalent (seed {seed})",
          flush=True)
    return counts["survived"]


def main():
    parser = argparse.ArgumentParser(prog="scripts/mutate", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("file", nargs="+", help="a source of the product")
    parser.add_argument("--sample", type=int, default=60,
                        help="how many mutants of a file to try, 60 by default; 0 is all")
    parser.add_argument("--seed", type=int, default=1, help="which sample, 1 by default")
    parser.add_argument("--longest", type=float, default=60,
                        help="leave out tests that take more seconds than this, 60 by default")
    arguments = parser.parse_args()
    names = [str(Path(name).resolve().relative_to(TOP)) for name in arguments.file]
    WORK.mkdir(parents=True, exist_ok=True)
    with open(WORK / "lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        build(COVERAGE, TREE, "-O0", "-DHOPLAUNCH_COVERAGE=ON")
        build(BROKEN, BROKEN_TREE, "-O0 -D_GLIBCXX_ASSERTIONS")
        measured = measure_all()
        survived = [
            try_file(name, arguments.sample, arguments.seed, measured, arguments.longest)
            for name in names]
    sys.exit(1 if any(survived) else 0)


main()
