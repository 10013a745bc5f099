#!/usr/bin/env python3
"""Checks that every finding of the analyzers is suppressed, and that every suppression matches a finding.

usage: check.py FINDINGS ANSWERS

A suppression names the file ("*" for any), the check and the source line or words of the message. The reason is
indented below it:

    src/model/NumberText.cpp | unreadVariable | const double magnitude = std::abs(number);
        why this is not a fault
"""

import dataclasses
import pathlib
import re
import sys


@dataclasses.dataclass
class Answer:
    file: str
    check: str
    text: str
    reason: str = ""
    used: bool = False

    def covers(self, file: str, check: str, message: str, line: str) -> bool:
        return self.file in (file, "*") and self.check == check and (self.text == line or self.text in message)


def read_answers(path: pathlib.Path) -> list[Answer]:
    answers: list[Answer] = []
    for line in path.read_text().splitlines():
        if line.startswith("    ") and answers:
            answers[-1].reason += line.strip()
        elif line.strip() and not line.startswith("#"):
            answers.append(Answer(*line.split(" | ", 2)))
    return answers


def source_line(file: str, number: str | None) -> str:
    return pathlib.Path(file).read_text().splitlines()[int(number) - 1].strip() if number else ""


def main(findings: pathlib.Path, answer_list: pathlib.Path) -> int:
    answers = read_answers(answer_list)
    complaints = []
    count = 0
    for finding in findings.read_text().splitlines():
        found = re.fullmatch(r"([^:]+):(?:(\d+):\d+:)? (?:warning|error): (.*) \[([-\w]+)\]", finding)
        if found is None:
            # The path to a finding: the calls and the assumptions that lead to it.
            if re.search(r"\b(warning|error):", finding):
                complaints.append(f"not understood: {finding}")
            continue
        count += 1
        file, number, message, check = found.groups()
        covering = [a for a in answers if a.covers(file, check, message, source_line(file, number))]
        for answer in covering:
            answer.used = True
        if not covering:
            complaints.append(finding)
    complaints += [f"{a.file} | {a.check} | {a.text}: is found no more" for a in answers if not a.used]
    complaints += [f"{a.file} | {a.check} | {a.text}: no reason is given" for a in answers if not a.reason]
    print(f"{count} findings, {len(answers)} answers")
    print("\n".join(complaints), end="\n" if complaints else "")
    return 1 if complaints else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])))
