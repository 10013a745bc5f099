#!/usr/bin/env python3
"""Makes programs from the C++ code blocks of a document, and compares their output with the document.

usage: code_blocks.py generate DOCUMENT DIRECTORY      writes the programs, prints their file names
       code_blocks.py check DOCUMENT PROGRAM...        runs them, in the order in which they were printed

The blocks marked "cpp" of a document are statements in one main(), in order, so that later blocks can use the objects
of earlier ones. "cpp declarations" are written before that main(), and "cpp program" is a separate program. A block
marked "cpp excerpt FILE" is not run; it must be a part of that file, whose path starts at the project's folder. A "text"
block directly after a block of code, or after one line of prose in between, is the output of that block.
"""

import pathlib
import re
import subprocess
import sys
import tempfile
from dataclasses import dataclass

# A block of code, and the "text" block after it, if there is one.
BLOCK = re.compile(r"^```cpp *(.*)\n((?:.*\n)*?)```$(?:\n+(?:(?!```).+\n+)?```text\n((?:.*\n)*?)```$)?", re.M)
SEPARATOR = "\x1e"
INCLUDE = re.compile(r"^#include .*\n", re.M)

PROJECT = pathlib.Path(__file__).resolve().parents[2]
# The page with the #include lines that the code of all pages needs.
GUIDE = PROJECT / "docs" / "guide" / "README.md"


@dataclass
class Block:
    """One block of code: the words after "cpp", the line, from 1, where the code begins, and its output."""

    kind: list
    line: int
    code: str
    output: str


def blocks(document):
    text = pathlib.Path(document).read_text()
    return [Block(match[1].split(), text.count("\n", 0, match.start(2)) + 1, match[2], match[3] or "")
            for match in BLOCK.finditer(text)]


def of_kind(kind, found):
    return [block for block in found if block.kind[:1] == kind]


def located(document, block):
    return f'#line {block.line} "{pathlib.Path(document).resolve()}"\n{block.code}'


def page(document, parts):
    """One program of all statements; a separator is printed after each block."""
    includes = INCLUDE.findall(GUIDE.read_text())
    for block in parts:
        includes += INCLUDE.findall(block.code)
        block.code = INCLUDE.sub("\n", block.code)
    declarations = [located(document, block) for block in of_kind(["declarations"], parts)]
    statements = [located(document, block) + 'std::cout << "\\x1e" << std::flush;\n' for block in of_kind([], parts)]
    return "".join([*dict.fromkeys(includes), "using namespace Morvik::sql;\n", *declarations,
                    "int main()\n{\n", *statements, "}\n"])


def generate(document, directory):
    found = blocks(document)
    if not found:
        sys.exit(f"{document} holds no code")
    programs = [located(document, block) for block in of_kind(["program"], found)]
    if of_kind([], found):
        programs.insert(0, page(document, of_kind([], found) + of_kind(["declarations"], found)))
    for number, program in enumerate(programs):
        target = pathlib.Path(directory) / f"{pathlib.Path(document).stem}-{number}.cpp"
        target.parent.mkdir(parents=True, exist_ok=True)
        if not target.exists() or target.read_text() != program:
            target.write_text(program)
        print(target)


def printed_by(program):
    with tempfile.TemporaryDirectory() as directory:
        run = subprocess.run([pathlib.Path(program).resolve()], cwd=directory, capture_output=True, text=True, timeout=60)
        if run.returncode != 0:
            sys.exit(f"{program} ended with {run.returncode}\n{run.stdout}{run.stderr}")
        return run.stdout


def check(document, programs):
    found = blocks(document)
    statements, separate = of_kind([], found), of_kind(["program"], found)
    if len(programs) != len(separate) + bool(statements):
        sys.exit(f"{document} holds another number of programs than were built")
    outputs = list(zip(statements, printed_by(programs[0]).split(SEPARATOR))) if statements else []
    outputs += [(block, printed_by(program)) for block, program in zip(separate, programs[bool(statements):])]

    wrong = [f"{document}:{block.line}: this is not a part of {block.kind[1]}" for block in found
             if block.kind[:1] == ["excerpt"] and block.code not in (PROJECT / block.kind[1]).read_text()]
    wrong += [f"{document}:{block.line}: the document says\n{block.output}-- but the code prints\n{output}"
              for block, output in outputs if output != block.output]
    print("\n".join([*wrong, f"{document}: {len(outputs)} blocks were run, {len(wrong)} are wrong"]))
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    match sys.argv[1:]:
        case ["generate", document, directory]:
            generate(document, directory)
        case ["check", document, *programs]:
            check(document, programs)
        case _:
            sys.exit(__doc__)
