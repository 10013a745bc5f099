#!/usr/bin/env python3
"""Turns the figures of the benchmark programs into the table of ratios, docs/performance.md and its plots.

usage: report.py TIMES.json MEMORY.json DOCS-DIRECTORY
"""

import json
import pathlib
import statistics
import subprocess
import sys
from collections import defaultdict
from dataclasses import dataclass

OURS = "tkosqllite"
FLOOR = "C"
SIZES = (1000, 10000, 100000)
PLOTS = pathlib.Path(__file__).parent / "plots"
BUDGETS = pathlib.Path(__file__).parent.parent / "tests" / "budgets" / "instructions.txt"


@dataclass
class Target:
    """One line of the table: what is compared with what, and the ratio it may reach."""

    job: str
    against: str
    ratio: float
    limit: float

    @property
    def met(self):
        return "yes" if round(self.ratio, 3) <= self.limit else "no"

    def cells(self):
        return self.job, self.against, f"{self.ratio:.3f}", f"{self.limit:.3f}", self.met


class Figures:
    """The medians of the rounds: figures[job][contender], in nanoseconds of processor time or in bytes."""

    def __init__(self, times_file, memory_file):
        times = json.loads(pathlib.Path(times_file).read_text())
        memory = json.loads(pathlib.Path(memory_file).read_text())
        self.context = times["context"]
        self.rounds = 0
        self.median = self._medians(times, lambda run: run["cpu_time"] * 1000)
        self.peak = self._medians(memory, lambda run: run["peak"])["peak memory/100000"]
        self.text = self._medians(memory, lambda run: run["text"])["peak memory/100000"][OURS]

    def _medians(self, measured, value):
        values = defaultdict(lambda: defaultdict(list))
        for run in measured["benchmarks"]:
            if run["run_type"] == "iteration":
                name, size, contender = run["run_name"].split("/")[:3]
                values[f"{name}/{size}"][contender].append(value(run))
                self.rounds = max(self.rounds, run["repetitions"])
        return {job: {contender: statistics.median(v) for contender, v in contenders.items()}
                for job, contenders in values.items()}

    def ratio(self, job, floor_job=None, floor=FLOOR):
        return self.median[job][OURS] / self.median[floor_job or job][floor]

    def contenders(self):
        return [c for c in self.median["write memory/1000"] if c not in (OURS, FLOOR)]


def targets(figures):
    table = []
    text = "the same text, ready-made, through `sqlite3_exec`"
    rows_in_c = "C that builds the same rows"
    sums_in_c = "C that sums the same columns"
    sized = [("`WriteTableValues`, in memory", "write memory", text, 1.05),
             ("`WriteTableValues`, in a file", "write file", text, 1.05),
             ("`ReadValues`", "read", rows_in_c, 0.85),
             ("`ReadNextRow`", "walk", sums_in_c, 1.10),
             ("the iterator", "iterate", sums_in_c, 1.10)]
    floors = {"iterate": "walk"}
    for title, job, against, limit in sized:
        for size in SIZES:
            ratio = figures.ratio(f"{job}/{size}", f"{floors.get(job, job)}/{size}")
            table.append(Target(f"{title}, {size:,} rows", against, ratio, limit))
    singles = [("1,000 single-row `WriteTableValues` in one transaction", "write singly/1000", text, 1.10),
               ("1,000 single-row `UpdateTableValues` in one transaction", "update singly/1000", text, 1.10),
               ("1,000 look-ups by key through `ReadValues`", "look up/1000",
                "C that prepares each text and builds the same rows", 1.00),
               ("`PrepareStatement`, bind, `Step`, `Reset`", "bind/1000", "C with the same calls", 1.02),
               ("column reads of a stepped `SqlCommand`", "columns/1000", "C with the same calls", 1.05),
               ("`OpenDatabase` and `CloseDatabase` of an existing file", "open/1", "C with the same calls", 1.05)]
    for title, job, against, limit in singles:
        table.append(Target(title, against, figures.ratio(job), limit))
    table.append(Target(singles[-1][0], "C with the same calls and a `stat` of the file",
                        figures.ratio("open/1", floor="C with stat"), 1.05))
    for title, job, _, _ in sized:
        floor = floors.get(job, job)
        growth = figures.ratio(f"{job}/{SIZES[-1]}", f"{floor}/{SIZES[-1]}") / figures.ratio(
            f"{job}/{SIZES[0]}", f"{floor}/{SIZES[0]}")
        table.append(Target(f"{title}, growth per row from 1,000 to 100,000 rows", "the growth of C", growth, 1.02))
    floor = figures.peak[FLOOR]
    table.append(Target("peak memory of `WriteTableValues`, 100,000 rows", "the same text, ready-made and counted",
                        figures.peak[OURS] / floor, round(1 + 0.1 * figures.text / floor, 3)))
    return table


def by_job_and_size(job):
    """The writes first, as in the table of ratios."""
    name, size = job.split("/")
    order = ("write memory", "write file", "write singly", "update singly", "read", "walk", "look up", "bind", "columns")
    return order.index(name) if name in order else len(order), int(size)


def contender_rows(figures):
    others = figures.contenders()
    rows = [("job", OURS, FLOOR, *others)]
    for job in sorted(figures.median, key=by_job_and_size):
        medians = figures.median[job]
        name, size = job.split("/")
        if name in ("iterate", "stat"):
            continue
        values = [f"{medians[c] / 1000:,.0f}" if c in medians else "–" for c in (OURS, FLOOR, *others)]
        rows.append((f"{name}, {int(size):,}" if int(size) > 1 else name, *values))
    megabytes = [f"{figures.peak[c] / 1e6:.1f} MB" for c in (OURS, FLOOR, *others)]
    rows.append(("peak memory, 100,000", *megabytes))
    return rows


def opening_rows(figures):
    """What an open and a close consist of, in microseconds and as shares of the whole."""
    whole, c = (figures.median["open/1"][contender] for contender in (OURS, FLOOR))
    status = figures.median["stat/1"][FLOOR]
    steps = [("SQLite's open and close", c), ("the `stat` of the file", status), ("all else", whole - c - status),
             ("`OpenDatabase` and `CloseDatabase`", whole)]
    return [("step", "microseconds", "share"),
            *((step, f"{time / 1000:.2f}", f"{100 * time / whole:.1f} %") for step, time in steps)]


def instruction_rows():
    """The counted instructions per row or opening, from the budgets that a test holds the library to."""
    rows = [("job", "SQLite and the system", OURS, "share", "allocations of C++")]
    for line in BUDGETS.read_text().splitlines():
        job, *figures = line.split()
        if figures and all(map(str.isdigit, figures)):
            whole, own, allocations = (int(figure) / 1000 for figure in figures)
            rows.append((job, f"{whole - own:,.0f}", f"{own:,.0f}", f"{100 * own / whole:.1f} %", f"{allocations:.3f}"))
    return rows


def markdown(rows, right):
    header, *body = rows
    rule = ["---:" if i in right else "---" for i in range(len(header))]
    return "\n".join("| " + " | ".join(row) + " |" for row in (header, rule, *body))


def aligned(rows):
    widths = [max(map(len, column)) for column in zip(*rows)]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip() for row in rows)


def draw(script, data, picture, names=()):
    data_file = picture.with_suffix(".dat")
    data_file.write_text(data)
    variables = f"data='{data_file}'; picture='{picture}'; names='{' '.join(names)}'"
    subprocess.run(["gnuplot", "-e", variables, PLOTS / script], check=True)
    data_file.unlink()


def draw_ratios(table, picture):
    lines = [f'"{t.job.replace("`", "")}" {t.ratio:.4f} {t.limit:.4f}' for t in table]
    draw("ratios.gp", "\n".join(lines) + "\n", picture)


def draw_times(figures, picture):
    jobs = ("write memory", "write file", "read", "walk")
    contenders = (OURS, FLOOR, *figures.contenders())
    lines = []
    for size in SIZES:
        values = (figures.median[f"{job}/{size}"][c] / size for job in jobs for c in contenders)
        lines.append(f"{size} " + " ".join(f"{value:.2f}" for value in values))
    draw("rows.gp", "\n".join(lines) + "\n", picture, contenders)


def main():
    times_file, memory_file, docs = sys.argv[1:]
    docs = pathlib.Path(docs)
    pictures = docs / "performance"
    pictures.mkdir(parents=True, exist_ok=True)
    figures = Figures(times_file, memory_file)
    table = targets(figures)
    header = ("job", "against", "ratio", "at most", "met")

    template = (pathlib.Path(__file__).parent / "performance.md.in").read_text()
    values = {key: figures.context[key] for key in ("processor", "system", "compiler", "sqlite", "num_cpus", "date")}
    values.update(rounds=figures.rounds,
                  load=", ".join(f"{load:.1f}" for load in figures.context["load_avg"]),
                  ratios=markdown([header, *(t.cells() for t in table)], range(2, 4)),
                  met=sum(t.met == "yes" for t in table),
                  all=len(table),
                  opening=markdown(opening_rows(figures), range(1, 3)),
                  instructions=markdown(instruction_rows(), range(1, 5)),
                  times=markdown(contender_rows(figures), range(1, 9)))
    (docs / "performance.md").write_text(template.format(**values))
    draw_ratios(table, pictures / "ratios.svg")
    draw_times(figures, pictures / "rows.svg")
    print(aligned([header, *((t.job.replace("`", ""), t.against.replace("`", ""), *t.cells()[2:]) for t in table)]))


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main()
