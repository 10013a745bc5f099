#!/usr/bin/env python3
"""Prints docs/codes.md for Doxygen: names the page, and makes each operation a link to where it is described."""

import re
import sys


def with_link(match, type_name):
    """`Open` of the section SqlDatabase leads to SqlDatabase::Open; template arguments are no part of a name."""
    operation = match.group(1)
    text = operation.replace("<", r"\<").replace(">", r"\>").replace("::", r"\::")
    return f"[{text}](@ref Morvik::sql::{type_name}::{operation.split('<')[0]})"


with open(sys.argv[1], encoding="utf-8") as page:
    print(next(page).rstrip(), "{#codes}")
    type_name = ""
    for line in page:
        if line.startswith("## "):
            type_name = line.split()[1]
        if line.startswith("| `"):
            operations, rest = line[1:].split("|", 1)
            links = re.sub(r"`([^`]+)`", lambda match: with_link(match, type_name), operations)
            line = f"|{links}|{rest}"
        print(line, end="")
