#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints tables of the measurements, and draws the plots.

    report.py RESULTS IMAGES [--keep]

reads what bench/run left in the folder RESULTS, adds results.json there, and writes the
plots to the folder IMAGES.  With --keep, the tables become those of docs/figures/bench.json.
"""

import collections
import csv
import json
import pathlib
import re
import statistics
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "scripts"))
import figures  # noqa: E402

OWN = "hoplaunch"
DOOR, ALL, MANY = (f"hopopen, {count} definitions" for count in (10, "all", 200))
NO_CATALOG = ", no catalog"
WRAPPED = "hoplaunch, shell wrapper"
CLICK, OTHER_CLICK = "hopopen, Remmina", "Remmina's own handler"
STATIC, DYNAMIC = "bare execvp, static", "bare execvp, dynamic"
REQUIRED = "required work"
SECTION, SEMOP = "section, take and release", "semop, bare"
READS = ("configuration, read a text", "configuration, read a number")
FLOOR = "std::map, bare"
BYTES = ("radix", "percent", "UTF-8")  # how the tasks that have a size in bytes begin
LENGTHS = ("a ticket", "a value", "an address", "addresses", "a bad address", "an open bracket")


def quartiles(values):
    """The lower quartile, the median and the upper quartile."""
    values = list(values)
    if len(values) < 2:
        return values * 3
    return statistics.quantiles(values, n=4, method="inclusive")


def ratios(runs, others):
    """The quartiles of the ratios of runs that belong together."""
    return quartiles(runs[i] / others[i] for i in runs if i in others)


def head_and_rows(head, rows):
    return {"head": head, "rows": rows}


def spread(values, digits=2):
    low, middle, high = values
    return f"{middle:.{digits}f} ({low:.{digits}f} to {high:.{digits}f})"


def time_text(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


# --- Reading -----------------------------------------------------------------


def read_launches(folder):
    """For each command: its times by round, and the medians of the other counts."""
    times, faults, peaks = (collections.defaultdict(dict) for _ in range(3))
    with open(folder / "launches.tsv", encoding="utf-8") as lines:
        for row, name, time, fault, peak in csv.reader(lines, delimiter="\t"):
            times[name][row] = int(time)
            faults[name][row] = int(fault)
            peaks[name][row] = int(peak)
    result = {}
    with open(folder / "counts.tsv", encoding="utf-8") as lines:
        for name, calls, instructions in csv.reader(lines, delimiter="\t"):
            result[name] = {
                "times": times[name],
                "nanoseconds": quartiles(times[name].values()),
                "faults": statistics.median(faults[name].values()),
                "peak KiB": statistics.median(peaks[name].values()),
                "system calls": int(calls),
                "instructions": int(instructions) if instructions else None,
            }
    for launch in result.values():
        launch["against"] = {
            other: ratios(launch["times"], result[other]["times"])
            for other in (REQUIRED, STATIC, DYNAMIC, WRAPPED, DOOR, DOOR + NO_CATALOG, "gio open",
                          "xdg-open")
        }
    return result


def read_clicks(folder):
    """For each handler: its times by round."""
    result = collections.defaultdict(dict)
    with open(folder / "clicks.tsv", encoding="utf-8") as lines:
        for row, name, time in csv.reader(lines, delimiter="\t"):
            result[name][row] = int(time)
    return result


def read_library(folder):
    """Times of each repetition, by task, size and library."""
    runs = json.loads((folder / "library.json").read_text(encoding="utf-8"))["benchmarks"]
    result = collections.defaultdict(lambda: collections.defaultdict(dict))
    for run in sorted(runs, key=lambda run: run["family_index"]):  # as they are defined
        if run["run_type"] == "iteration":
            task, library, size = run["name"].split("/")[:3]
            times = result[task, int(size)][library]
            times[run["repetition_index"]] = run["cpu_time"]
    return result


def compared(times):
    """The quickest of the other libraries and the ratios to it, or none."""
    others = [name for name in times if name != OWN]
    if not others:
        return None, None
    best = min(others, key=lambda name: statistics.median(times[name].values()))
    return best, ratios(times[OWN], times[best])


# --- Tables ------------------------------------------------------------------


def launch_table(launches):
    rows = []
    for name, launch in launches.items():
        instructions = launch["instructions"]
        rows.append([
            name,
            f"{launch['nanoseconds'][1] / 1e6:.2f}",
            spread(launch["against"][REQUIRED]),
            spread(launch["against"][DYNAMIC]),
            f"{launch['against'][STATIC][1]:.2f}",
            f"{instructions:,}" if instructions else "",
            f"{launch['faults']:.0f}",
            str(launch["system calls"]),
            f"{launch['peak KiB']:.0f}",
        ])
    return head_and_rows(["launch", "ms", "against required", "against dynamic", "against static",
                          "instructions", "page faults", "system calls", "peak KiB"], rows)


def click_table(clicks):
    rows = [[name, spread([time / 1e6 for time in quartiles(times.values())], 1),
             spread(ratios(times, clicks[OTHER_CLICK]))]
            for name, times in clicks.items()]
    return head_and_rows(["handler", "ms until the first connection", "against Remmina's own"], rows)


def library_table(library):
    rows = []
    for (task, size), times in library.items():
        best, against = compared(times)
        own = statistics.median(times[OWN].values())
        other = statistics.median(times[best].values()) if best else None
        rows.append([
            task, f"{size}", time_text(own), best or "",
            time_text(other) if best else "", spread(against) if best else "",
        ])
    return head_and_rows(["task", "size", OWN, "best of the others", "its time", "ratio"], rows)


def targets(launches, library):
    """Each target: its subject, the allowed maximum, and the measured value."""
    launch = launches[OWN]
    yield "launch against the bare dynamic program", 1.10, launch["against"][DYNAMIC][1]
    yield "launch against the required work", 1.03, launch["against"][REQUIRED][1]
    yield "launch against gio open", 1 / 5, launch["against"]["gio open"][1]
    yield "launch against xdg-open", 1 / 20, launch["against"]["xdg-open"][1]
    yield "thousand instructions of a launch", 500, launch["instructions"] / 1000
    door = launches[DOOR]
    yield "hopopen against hoplaunch with a shell wrapper", 0.9, door["against"][WRAPPED][1]
    yield "hopopen against gio open", 0.15, door["against"]["gio open"][1]
    yield "hopopen against xdg-open", 0.05, door["against"]["xdg-open"][1]
    yield "hopopen against the bare dynamic program", 1.5, door["against"][DYNAMIC][1]
    yield "hopopen, all definitions against 10", 1.1, launches[ALL]["against"][DOOR][1]
    yield ("hopopen, all definitions against 10, no catalog", 1.1,
           launches[ALL + NO_CATALOG]["against"][DOOR + NO_CATALOG][1])
    yield "hopopen, 200 definitions against 10", 2.0, launches[MANY]["against"][DOOR][1]
    for (task, size), times in library.items():
        name = f"{task}, {size}"
        if task.startswith(BYTES) and size >= 1024:
            yield name + " B, against the best", 1.0, compared(times)[1][1]
        elif task in READS:
            yield name + " items, against a map", 3.0, ratios(times[OWN], times[FLOOR])[1]
        elif task == SECTION:
            yield name.split(", 1")[0] + ", against semop", 1.1, ratios(times[OWN], times[SEMOP])[1]


def target_table(launches, library):
    rows = [[name, f"{most:.3g}", f"{value:.3g}", "yes" if value <= most else "no"]
            for name, most, value in targets(launches, library)]
    return head_and_rows(["target", "at most", "measured", "met"], rows)


# The parts of a launch, by the functions that callgrind sees; each less those within it.
EXPRESSIONS = ("regcomp", "regexec", "regfree")


def parts_table(folder):
    """How the user instructions of a launch are spent."""
    inclusive = collections.Counter()
    listing = (folder / "parts.txt").read_text(encoding="utf-8")
    total = int(re.search(r"([0-9,]+) +PROGRAM TOTALS", listing)[1].replace(",", ""))
    for line in listing.splitlines():
        found = re.match(r" *([0-9,]+) .*?\?\?\?:(.*?)(?: \[.*)?$", line)
        if found and "'2" not in found[2]:
            inclusive[re.sub(r"\(.*", "", found[2])] += int(found[1].replace(",", ""))
    main = inclusive["main"]
    before = sum(count for name, count in inclusive.items() if name.startswith("_GLOBAL__sub_I"))
    expressions = sum(inclusive[name] for name in EXPRESSIONS)
    relocating = inclusive["_dl_relocate_static_pie"]
    parts = [
        ("the program relocates itself", relocating),
        ("static objects before `main`", before),
        ("the rest of the C library's start", total - main - before - relocating),
        *((f"the URI's two expressions, in `{name}`", inclusive[name]) for name in EXPRESSIONS),
        ("the rest of reading the URI", inclusive["URI::parse"] - expressions),
        ("the rest of deciding", inclusive["launchPlan::launchPlan"] - inclusive["URI::parse"]),
        ("everything else in `main`", main - inclusive["launchPlan::launchPlan"]),
        ("together", total),
    ]
    return head_and_rows(["part", "instructions"], [[name, f"{count:,}"] for name, count in parts])


def values_of(launches):
    """Figures that the text of docs/performance.md has, too."""
    faults = launches["viewer alone"]["faults"]
    return {
        "static_instructions": f"{launches[STATIC]['instructions']:,}",
        "dynamic_instructions": f"{launches[DYNAMIC]['instructions']:,}",
        "viewer_faults": f"{faults:.0f}",
        "required_instructions": f"{launches[REQUIRED]['instructions']:,}",
        "required_faults": f"{launches[REQUIRED]['faults']:.0f}",
    }


# --- Plots -------------------------------------------------------------------


def gnuplot(image, commands):
    head = f"""
        set terminal svg size 760,460 font "sans-serif,13" background "white"
        set output "{image}"
        set grid
        set key outside bottom center horizontal
    """
    subprocess.run(["gnuplot"], input=head + commands, text=True, check=True)


def data(name, rows):
    """A block of data for gnuplot; the texts in it are quoted."""
    lines = [" ".join(f'"{x}"' if isinstance(x, str) else f"{x:.6g}" for x in row) for row in rows]
    return f"${name} << END\n" + "\n".join(lines) + "\nEND\n"


def plot_launches(launches, image):
    rows = [(i, *(x / 1e6 for x in launch["nanoseconds"]), name)
            for i, (name, launch) in enumerate(reversed(launches.items()))]
    gnuplot(image, data("launches", rows) + f"""
        set title "Until an empty viewer ends: median, quartiles"
        set xlabel "milliseconds"
        set logscale x
        set yrange [-0.5:{len(rows) - 0.5}]
        plot $launches using 3:1:2:4:ytic(5) with xerrorbars pointtype 7 notitle
    """)


def plot_ratios(library, image):
    rows = []
    for (task, size), times in library.items():
        if task.startswith(BYTES) and size >= 1024:
            best, against = compared(times)
            rows.append((*against, f"{task}, {size // 1024} KiB ({best})"))
    rows = [(i, *row) for i, row in enumerate(reversed(rows))]
    gnuplot(image, data("ratios", rows) + f"""
        set title "Time, as a multiple of the quickest other library's"
        set xrange [0:*]
        set yrange [-0.5:{len(rows) - 0.5}]
        set arrow from 1,-0.5 to 1,{len(rows) - 0.5} nohead dashtype 2
        plot $ratios using 3:1:2:4:ytic(5) with xerrorbars pointtype 7 notitle
    """)


def plot_scaling(library, image, title, xlabel, curves):
    """Curves of times by size, and the slope of costs that grow with the size."""
    blocks, plots, points = "", [], []
    for number, (task, name, label) in enumerate(curves):
        rows = sorted((size, statistics.median(times[name].values()) / 1e3)
                      for (other, size), times in library.items() if other == task)
        points += rows
        blocks += data(f"curve{number}", rows)
        plots.append(f'$curve{number} with linespoints pointtype 7 title "{label}"')
    size, time = max(points)
    plots.append(f'{time / size} * x with lines dashtype 2 linecolor "gray" title "linear"')
    gnuplot(image, blocks + f"""
        set title "{title}"
        set xlabel "{xlabel}"
        set ylabel "microseconds"
        set logscale xy
        plot {", ".join(plots)}
    """)


def draw(launches, library, images):
    plot_launches(launches, images / "launches.svg")
    plot_ratios(library, images / "ratios.svg")
    plot_scaling(library, images / "parse_length.svg", "Parsing a URI", "length of the URI in bytes",
                 [(f"URI, parse, {what}", OWN, what) for what in LENGTHS])
    plot_scaling(library, images / "parameters.svg", "A URI of many parameters",
                 "parameters",
                 [("URI, parse, parameters", OWN, "parse"),
                  ("URI, arguments, parameters", OWN, "build arguments"),
                  ("URI, parse, parameters", "uriparser", "parse, uriparser")])
    plot_scaling(library, images / "arguments_length.svg", "Building the argument vector",
                 "length of the URI in bytes",
                 [(f"URI, arguments, {what}", OWN, what) for what in ("a ticket", "a value")])
    plot_scaling(library, images / "publish.svg", "Publishing an edit", "items in the database",
                 [("configuration, publish an edit", OWN, OWN),
                  ("configuration, publish an edit", "std::map, copied", "copying a map of strings")])


def main():
    results, images = (pathlib.Path(argument) for argument in sys.argv[1:3])
    launches = read_launches(results)
    library = read_library(results)
    machine = (results / "machine.txt").read_text(encoding="utf-8").rstrip()
    tables = {
        "launches": launch_table(launches),
        "clicks": click_table(read_clicks(results)),
        "library": library_table(library),
        "targets": target_table(launches, library),
        "parts": parts_table(results),
    }
    print(machine, *(figures.table(**each) for each in tables.values()), sep="\n")
    if sys.argv[3:] == ["--keep"]:
        figures.keep("bench", "bench/run", text=machine, tables=tables,
                     values=values_of(launches))
    kept = {
        "launches": launches,
        "targets": [dict(zip(("target", "at most", "measured"), target))
                    for target in targets(launches, library)],
    }
    (results / "results.json").write_text(json.dumps(kept, indent=1), encoding="utf-8")
    draw(launches, library, images)


if __name__ == "__main__":
    main()
