"""The list of mutants that no test can notice, each with the reason.

An entry names the file and the function, the lines before and after the mutation, and why no test can notice it:

    src/model/JoinedList.h, AppendItem
    - if (!text.empty()) {
    + if (true) {
    = why

A number before "=" selects one of several equal mutations within a function: "2 = why" is for the second.
"""

import pathlib
import re

from mutations import Mutant

Key = tuple[str, str, str, str, int]


class MalformedAnswer(Exception):
    pass


def key_of(mutant: Mutant) -> Key:
    return mutant.file, mutant.function, mutant.before, mutant.after, mutant.ordinal


def read_answers(path: pathlib.Path) -> dict[Key, str]:
    answers: dict[Key, str] = {}
    file = function = before = after = ""
    for number, line in enumerate(path.read_text(encoding="ascii").splitlines(), 1):
        if line.startswith("- "):
            before = line[2:]
        elif line.startswith("+ "):
            after = line[2:]
        elif answer := re.fullmatch(r"(\d* ?)= (\S.*)", line):
            key = (file, function, before, after, int(answer[1] or 1))
            if key in answers:
                raise MalformedAnswer(f"{path}:{number}: answered twice")
            answers[key] = answer[2]
        elif place := re.fullmatch(r"((?:src|include)/\S+), (.*)", line):
            file, function = place[1], place[2]
        elif line.strip() and not line.startswith("#"):
            raise MalformedAnswer(f"{path}:{number}: neither a place nor a change nor an answer: {line}")
    return answers


def written(key: Key, answer: str) -> str:
    file, function, before, after, ordinal = key
    number = "" if ordinal == 1 else f"{ordinal} "
    return f"{file}, {function}\n- {before}\n+ {after}\n{number}= {answer}\n"
