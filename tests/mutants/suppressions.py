"""The mutants that no test can notice, each with the reason; see README.md for the form of an entry."""

import pathlib
import re

from mutations import Key


class MalformedSuppression(Exception):
    pass


def read_suppressions(path: pathlib.Path) -> dict[Key, str]:
    suppressions: dict[Key, str] = {}
    file = function = before = after = ""
    for number, line in enumerate(path.read_text(encoding="ascii").splitlines(), 1):
        if line.startswith("- "):
            before = line[2:]
        elif line.startswith("+ "):
            after = line[2:]
        elif reason := re.fullmatch(r"(\d* ?)= (\S.*)", line):
            key = (file, function, before, after, int(reason[1] or 1))
            if key in suppressions:
                raise MalformedSuppression(f"{path}:{number}: suppressed twice")
            suppressions[key] = reason[2]
        elif place := re.fullmatch(r"((?:src|include)/\S+), (.*)", line):
            file, function = place[1], place[2]
        elif line.strip() and not line.startswith("#"):
            raise MalformedSuppression(f"{path}:{number}: neither a place nor a change nor a reason: {line}")
    return suppressions


def written(key: Key, reason: str) -> str:
    file, function, before, after, ordinal = key
    number = "" if ordinal == 1 else f"{ordinal} "
    return f"{file}, {function}\n- {before}\n+ {after}\n{number}= {reason}\n"
