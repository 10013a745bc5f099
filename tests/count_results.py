#!/usr/bin/env python3
"""Counts the test cases of one build folder after a run of CTest: those that passed, failed or are left out.

usage: count_results.py BUILD-FOLDER JUNIT-FILE

A suite of GoogleTest counts as the cases that its program listed when it was built. A case that was skipped, or did
not run because the program ended before it, has failed. Every other test of CTest counts as one.
"""

import pathlib
import sys
import xml.etree.ElementTree


def passed_cases(result, status):
    """The cases of a suite that passed, according to its results."""
    try:
        cases = list(xml.etree.ElementTree.parse(result).iter("testcase"))
    except (FileNotFoundError, xml.etree.ElementTree.ParseError):  # the program ended before it wrote the file
        return set()
    failed = [case for case in cases if case.find("failure") is not None]
    if status != "run" and not failed:
        return set()  # all cases passed and the program failed, for example because of a leak; no case can be named
    return {f"{case.get('classname')}.{case.get('name')}" for case in cases
            if case.get("result") == "completed" and case not in failed}


def main(build, junit):
    suites = {}
    for listing in sorted((build / "cases").glob("*.txt")):
        for line in listing.read_text().splitlines():
            suite, case = line.split(" ", 1)
            cases = suites.setdefault(suite, (listing.stem, []))[1]
            cases.append(case)

    passed, failed, left_out = 0, [], 0
    for test in xml.etree.ElementTree.parse(junit).iter("testcase"):
        name, status = test.get("name"), test.get("status")
        if status == "disabled":
            left_out += 1
        elif name in suites:
            program, cases = suites[name]
            succeeded = passed_cases(build / "results" / program / f"{name.replace('/', '.')}.xml", status)
            passed += len(succeeded.intersection(cases))
            failed += [case for case in cases if case not in succeeded]
        elif status == "run":
            passed += 1
        else:
            failed.append(name)
    for name in failed:
        print(f"failed: {name}", file=sys.stderr)
    print(passed, len(failed), left_out)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(pathlib.Path(sys.argv[1]), sys.argv[2])
