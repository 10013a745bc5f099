#!/usr/bin/env python3
"""Compares the instructions and heap allocations of a job with its budget, or writes all budgets anew.

usage: budgets.py check PROGRAM LIBRARY JOB
       budgets.py renew PROGRAM LIBRARY

Instructions are counted by callgrind, so that neither the load nor the speed of the machine matters: those of the whole
job, SQLite's among them, and those in the library itself. They may exceed their budget by 3 %, allocations not at all.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile

BUDGETS = pathlib.Path(__file__).parent / "instructions.txt"
FIGURES = ("instructions", "in the library", "allocations")
MARGINS = (1.03, 1.03, 1.0)
JOBS = ("write", "update", "read", "walk", "bind", "look-up", "open")

# The C library chooses its string functions by the processor; without these they are the same everywhere.
PLAIN_STRING_FUNCTIONS = "glibc.cpu.hwcaps=-AVX512F,-AVX512VL,-AVX2,-ERMS,-FSRM"


def in_library(callgrind_file, library):
    """Adds up the cost lines of the functions of one object; lines after "calls=" are costs of the called ones."""
    names, total, ours, skip = {}, 0, False, False
    for line in pathlib.Path(callgrind_file).read_text().splitlines():
        if line.startswith("ob="):
            number, name = re.fullmatch(r"ob=\((\d+)\)(?: (.*))?", line).groups()
            names.setdefault(number, name)
            ours = os.path.realpath(names[number]) == os.path.realpath(library)
        elif line.startswith("cob="):
            number, name = re.fullmatch(r"cob=\((\d+)\)(?: (.*))?", line).groups()
            names.setdefault(number, name)
        elif line.startswith("calls="):
            skip = True
        elif re.match(r"[+\-*\d]", line):
            total += int(line.split()[1]) if ours and not skip else 0
            skip = False
    return total


def measure(program, library, job):
    with tempfile.TemporaryDirectory() as directory:
        out = os.path.join(directory, "callgrind.out")
        run = subprocess.run(
            ["valgrind", "--tool=callgrind", "--toggle-collect=RunBudgetedJob", f"--callgrind-out-file={out}", program,
             job], env={**os.environ, "GLIBC_TUNABLES": PLAIN_STRING_FUNCTIONS}, capture_output=True, text=True)
        if run.returncode != 0:
            sys.exit(run.stdout + run.stderr)
        instructions = int(re.search(r"Collected : (\d+)", run.stderr).group(1))
        machine = re.search(r"^machine (.*)", run.stdout, re.M).group(1)
        allocations = int(re.search(r"^allocations (\d+)", run.stdout, re.M).group(1))
        own = in_library(out, library)
        if not 0 < own < instructions:
            sys.exit(f"{own} of {instructions} instructions in {library}: not counted right")
        return machine, (instructions, own, allocations)


def stored():
    machine, budgets = None, {}
    for line in BUDGETS.read_text().splitlines():
        if line.startswith("machine: "):
            machine = line.removeprefix("machine: ")
        elif line and not line.startswith(("#", "job")):
            job, *figures = line.split()
            budgets[job] = tuple(map(int, figures))
    return machine, budgets


def check(program, library, job):
    machine, figures = measure(program, library, job)
    budget_machine, budgets = stored()
    if machine != budget_machine:
        sys.exit(f"The budgets are for {budget_machine}, this is {machine}: update them (scripts/update-baseline.sh budgets).")
    exceeded = False
    for name, figure, budget, margin in zip(FIGURES, figures, budgets[job], MARGINS):
        over = figure > budget * margin
        exceeded |= over
        print(f"{job}: {figure:,} {name}, budget {budget:,} ({figure / budget - 1 if budget else figure:+.2%})"
              f"{': EXCEEDED' if over else ''}")
    sys.exit("Mend the job, or update the budgets on purpose (scripts/update-baseline.sh budgets)." if exceeded else 0)


def renew(program, library):
    lines = ["# What each job on 1,000 rows (open: 1,000 times) may take; see budgets.py. Written by scripts/update-baseline.sh."]
    body = []
    for job in JOBS:
        machine, figures = measure(program, library, job)
        body.append(f"{job:<8} {figures[0]:>13} {figures[1]:>15} {figures[2]:>12}")
    lines += [f"machine: {machine}", f"{'job':<8} {FIGURES[0]:>13} {FIGURES[1]:>15} {FIGURES[2]:>12}", *body]
    BUDGETS.write_text("\n".join(lines) + "\n")
    print(BUDGETS.read_text(), end="")


if __name__ == "__main__":
    match sys.argv[1:]:
        case ["check", program, library, job]:
            check(program, library, job)
        case ["renew", program, library]:
            renew(program, library)
        case _:
            sys.exit(__doc__)
