#!/usr/bin/env python3
"""Checks gcovr's counts: every line and function must be reached, and most branches.

usage: check.py COVERAGE-JSON UNREACHED-LIST

The list names the lines that no test can reach, each as "file: the line's text", with the reason indented below it. A
listed line that no longer exists, or that a test reaches, is also a failure.
"""

import json
import pathlib
import sys

REQUIRED_BRANCHES = 0.97
Line = tuple[str, str]  # file and text: line numbers change with every edit


def read_list(path: pathlib.Path) -> dict[Line, str]:
    listed: dict[Line, str] = {}
    entry: Line | None = None
    for line in path.read_text().splitlines():
        if line.startswith("    ") and entry is not None:
            listed[entry] = f"{listed[entry]} {line.strip()}".strip()
        elif line.strip() and not line.startswith("#"):
            file, _, text = line.partition(": ")
            entry = (file, text)
            listed[entry] = ""
    return listed


def main(counts: pathlib.Path, unreached_list: pathlib.Path) -> int:
    listed = read_list(unreached_list)
    complaints = [f"{file}: {text}: no reason is given" for (file, text), reason in listed.items() if not reason]
    lines = functions = branches = taken = 0
    unreached: set[Line] = set()
    for entry in json.loads(counts.read_text())["files"]:
        file = entry["file"]
        text = pathlib.Path(file).read_text().splitlines()
        for function in entry["functions"]:
            functions += 1
            if function["execution_count"] == 0:
                complaints.append(f"{file}:{function['lineno']}: no test calls {function['name']}")
        for line in (line for line in entry["lines"] if not line["gcovr/noncode"]):
            here = text[line["line_number"] - 1].strip()
            lines += 1
            branches += len(line["branches"])
            missed = sum(branch["count"] == 0 for branch in line["branches"])
            taken += len(line["branches"]) - missed
            if line["count"] == 0:
                unreached.add((file, here))
                if (file, here) not in listed:
                    complaints.append(f"{file}:{line['line_number']}: no test reaches this line: {here}")
            elif missed:
                print(f"{file}:{line['line_number']}: {missed} of {len(line['branches'])} branches not taken: {here}")
    complaints += [f"{file}: {text}: stands in {unreached_list}, but is reached or gone"
                   for file, text in listed.keys() - unreached]
    if lines == 0 or functions == 0 or branches == 0:
        complaints.append("nothing was counted")
    elif taken < REQUIRED_BRANCHES * branches:
        complaints.append(f"fewer than {REQUIRED_BRANCHES:.0%} of the branches were taken")
    print(f"{lines - len(unreached)} of {lines} lines, {functions} functions, {taken} of {branches} branches "
          f"({taken / max(branches, 1):.1%})")
    print("\n".join(complaints), end="\n" if complaints else "")
    return 1 if complaints else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])))
