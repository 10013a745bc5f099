#!/usr/bin/env python3
"""Checks that every finding is listed with a reason, and that every entry of the list matches a finding.

usage: check_listed.py analyzers FINDINGS LIST      warnings of cppcheck and GCC
       check_listed.py coverage JSON LIST           gcovr's counts: lines and functions that no test reaches

An entry is a line; the reason is indented below it. For the analyzers, the line names the file ("*" for any), the check
and the source line or words of the message; for the coverage, the file and the line's text (its number changes):

    src/model/NumberText.cpp | unreadVariable | const double magnitude = std::abs(number);
        why this is not a fault
    src/api/DatabaseApiReading.cpp: __builtin_unreachable();
        why no test reaches it
"""

import json
import pathlib
import re
import sys
from collections.abc import Iterator

REQUIRED_BRANCHES = 0.97
Finding = tuple[str, set[str]]  # a message, and the entries that suppress it


def read_list(path: pathlib.Path) -> dict[str, str]:
    reasons: dict[str, str] = {}
    for line in path.read_text().splitlines():
        if line.startswith("    ") and reasons:
            reasons[list(reasons)[-1]] += line.strip()
        elif line.strip() and not line.startswith("#"):
            reasons[line] = ""
    return reasons


def line_of(file: str, number: int) -> str:
    return pathlib.Path(file).read_text().splitlines()[number - 1].strip()


def analyzers(report: str, entries: list[str]) -> Iterator[Finding]:
    for warning in report.splitlines():
        found = re.fullmatch(r"([^:]+):(?:(\d+):\d+:)? (?:warning|error): (.*) \[([-\w]+)\]", warning)
        if found is None:
            # Other lines are the path to a finding: the calls and the assumptions that lead to it.
            if re.search(r"\b(warning|error):", warning):
                yield f"not understood: {warning}", set()
            continue
        file, number, message, check = found.groups()
        line = line_of(file, int(number)) if number else ""
        split = {entry: entry.split(" | ", 2) for entry in entries}
        yield warning, {entry for entry, (in_file, of_check, text) in split.items()
                        if in_file in (file, "*") and of_check == check and (text == line or text in message)}


def coverage(report: str, entries: list[str]) -> Iterator[Finding]:
    lines = functions = branches = taken = reached = called = 0
    for source in json.loads(report)["files"]:
        file = source["file"]
        for function in source["functions"]:
            functions += 1
            called += function["execution_count"] > 0
            if function["execution_count"] == 0:
                yield f"{file}:{function['lineno']}: no test calls {function['name']}", set()
        for line in (line for line in source["lines"] if not line["gcovr/noncode"]):
            here = line_of(file, line["line_number"])
            missed = sum(branch["count"] == 0 for branch in line["branches"])
            lines += 1
            reached += line["count"] > 0
            branches += len(line["branches"])
            taken += len(line["branches"]) - missed
            if line["count"] == 0:
                entry = f"{file}: {here}"
                yield f"{file}:{line['line_number']}: no test reaches this line: {here}", {entry} & set(entries)
            elif missed:
                print(f"{file}:{line['line_number']}: {missed} of {len(line['branches'])} branches not taken: {here}")
    if lines == 0 or functions == 0 or taken < REQUIRED_BRANCHES * branches or branches == 0:
        yield f"nothing was counted, or fewer than {REQUIRED_BRANCHES:.0%} of the branches were taken", set()
    print(f"{reached} of {lines} lines, {called} of {functions} functions, "
          f"{taken} of {branches} branches ({taken / max(branches, 1):.1%})")


def main(check: str, report: pathlib.Path, listed: pathlib.Path) -> int:
    reasons = read_list(listed)
    findings = list({"analyzers": analyzers, "coverage": coverage}[check](report.read_text(), list(reasons)))
    used = {entry for _, entries in findings for entry in entries}
    complaints = [message for message, entries in findings if not entries]
    complaints += [f"{entry}: is in {listed}, but is not found any more" for entry in reasons if entry not in used]
    complaints += [f"{entry}: no reason is given" for entry, reason in reasons.items() if not reason]
    print(f"{len(findings)} findings, {len(reasons)} entries in {listed}")
    print("\n".join(complaints), end="\n" if complaints else "")
    return 1 if complaints else 0


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])))
