#!/usr/bin/env python3
"""Compares the instructions and heap allocations of a job with its budget, writes all budgets, or writes all counts.

usage: budgets.py check JOB PROGRAM LIBRARY [--plugin PLUGIN EMULATOR...]
       budgets.py update PROGRAM LIBRARY [--plugin PLUGIN EMULATOR...]
       budgets.py count OUTPUT.json PROGRAM LIBRARY [--plugin PLUGIN EMULATOR...]

The instructions of the complete job, including SQLite's, and those of the library are counted. They may exceed their
budget by 3 %; allocations may not exceed it. With a plugin, PROGRAM is the target's and runs under EMULATOR.
"""

import json
import pathlib
import sys

import counting

FIGURES = ("instructions", "in the library", "allocations")
MARGINS = (1.03, 1.03, 1.0)
JOBS = ("write", "write-by-1", "update", "read", "walk", "bind", "look-up", "open")
CONTENDERS = ("tkosqllite", "C", "C, column_*", "C, no mutex")
BATCHES = (1, 2, 5, 10, 20, 50, 100, 200, 500, 1000)


class Measured:
    """The program that runs the jobs, and the tool that counts its instructions."""

    def __init__(self, program, library, *emulation):
        self.program, self.library = program, library
        self.plugin, self.emulator = (emulation[1], emulation[2:]) if emulation else (None, ())
        self.machine = "armhf" if emulation else "x86_64"
        self.budgets = pathlib.Path(__file__).parent / f"instructions-{self.machine}.txt"

    def count(self, *arguments):
        if self.plugin:
            return counting.with_qemu(self.program, arguments, self.plugin, self.emulator)
        return counting.with_callgrind(self.program, arguments)

    def figures(self, job):
        count = self.count(job)
        total, own = count.total(), count.by_function(self.library).total()
        if not 0 < own < total:
            sys.exit(f"{own} of {total} instructions in {self.library}: the count is wrong")
        return count.machine, (total, own, count.allocations)


def stored(file):
    machine, budgets = None, {}
    for line in file.read_text().splitlines():
        if line.startswith("machine: "):
            machine = line.removeprefix("machine: ")
        elif line and not line.startswith(("#", "job")):
            job, *figures = line.split()
            budgets[job] = tuple(map(int, figures))
    return machine, budgets


def check(job, measured):
    machine, figures = measured.figures(job)
    budget_machine, budgets = stored(measured.budgets)
    if machine != budget_machine:
        sys.exit(f"The budgets are for {budget_machine}, this is {machine}: update them (scripts/update-baseline.sh budgets).")
    exceeded = False
    for name, figure, budget, margin in zip(FIGURES, figures, budgets[job], MARGINS):
        over = figure > budget * margin
        exceeded |= over
        print(f"{job}: {figure:,} {name}, budget {budget:,} ({figure / budget - 1 if budget else figure:+.2%})"
              f"{': EXCEEDED' if over else ''}")
    sys.exit("Fix the job, or update the budgets on purpose (scripts/update-baseline.sh budgets)." if exceeded else 0)


def update(measured):
    body = []
    for job in JOBS:
        machine, figures = measured.figures(job)
        body.append(f"{job:<10} {figures[0]:>13} {figures[1]:>15} {figures[2]:>12}")
    lines = ["# What each job on 1,000 rows (open: 1,000 times) may take; see budgets.py. Written by"
             " scripts/update-baseline.sh.", f"machine: {machine}",
             f"{'job':<10} {FIGURES[0]:>13} {FIGURES[1]:>15} {FIGURES[2]:>12}", *body]
    measured.budgets.write_text("\n".join(lines) + "\n")
    print(measured.budgets.read_text(), end="")


def count_all(output, measured):
    """Counts every job of every contender, and the write in batches; for the library also by function."""
    jobs, batches = {}, {}
    for contender in CONTENDERS:
        for job in JOBS:
            count = measured.count(job, contender)
            jobs.setdefault(job, {})[contender] = {
                "total": count.total(), "allocations": count.allocations,
                "functions": dict(count.by_function(measured.library).most_common())}
    for batch in BATCHES:
        count = measured.count(f"write-by-{batch}")
        batches[batch] = {"total": count.total(), "library": count.by_function(measured.library).total()}
    pathlib.Path(output).write_text(json.dumps(
        {"machine": count.machine, "jobs": jobs, "batches": batches}, indent=1) + "\n")


if __name__ == "__main__":
    match sys.argv[1:]:
        case ["check", job, program, library, *emulation]:
            check(job, Measured(program, library, *emulation))
        case ["update", program, library, *emulation]:
            update(Measured(program, library, *emulation))
        case ["count", output, program, library, *emulation]:
            count_all(output, Measured(program, library, *emulation))
        case _:
            sys.exit(__doc__)
