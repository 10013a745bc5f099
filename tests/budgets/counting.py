"""Counts the instructions of a budgeted job by object and function: with callgrind on this machine, with a plugin of
QEMU on the target. Neither the load nor the speed of the machine matters, and every run gives the same counts."""

import bisect
import functools
import os
import pathlib
import re
import subprocess
import sys
import tempfile
from collections import Counter
from dataclasses import dataclass

FUNCTION = "RunBudgetedJob"
# The C library chooses its string functions according to the processor. Without these features it always makes the same
# choice.
X86_STRING_FUNCTIONS = "glibc.cpu.hwcaps=-AVX512F,-AVX512VL,-AVX2,-ERMS,-FSRM"
ARM_PROCESSOR = "cortex-a7"
STUBS = "calls through the linkage table"
MAPPING = re.compile(r"(\w+)-(\w+) \S+ (\w+) \S+ \d+ *(.*)")  # of a file into a process's memory


@dataclass
class Count:
    """The counts of one job. `machine` names the compiler and SQLite; instructions are by (object, function)."""

    machine: str
    allocations: int
    instructions: Counter

    def total(self):
        return sum(self.instructions.values())

    def by_function(self, library):
        library = os.path.realpath(library)
        return Counter({name: n for (path, name), n in self.instructions.items() if os.path.realpath(path) == library})


def run(command, environment):
    # The environment is empty, because its texts change the count: a longer path of the temporary directory, for
    # example, takes more instructions.
    done = subprocess.run(command, env={"TMPDIR": "/tmp", **environment}, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(done.stdout + done.stderr)
    return done.stdout


def counted(output, instructions):
    machine = re.search(r"^machine (.*)", output, re.M).group(1)
    allocations = int(re.search(r"^allocations (\d+)", output, re.M).group(1))
    return Count(machine, allocations, instructions)


def with_callgrind(program, arguments):
    with tempfile.TemporaryDirectory() as directory:
        out = os.path.join(directory, "callgrind.out")
        output = run(["valgrind", "-q", "--tool=callgrind", f"--toggle-collect={FUNCTION}",
                      f"--callgrind-out-file={out}", program, *arguments],
                     {"PATH": os.environ["PATH"], "GLIBC_TUNABLES": X86_STRING_FUNCTIONS})
        return counted(output, read_callgrind(pathlib.Path(out).read_text()))


def read_callgrind(text):
    """Adds up each function's cost lines, except the line after "calls=", which is the cost of the called function. A
    name is written out where it is first used; after that, only its number is written."""
    instructions, names = Counter(), {}
    place = {"ob": "?", "fn": "?"}
    called = False
    for line in text.splitlines():
        if named := re.fullmatch(r"(c?)(ob|fn)=\((\d+)\)(?: (.*))?", line):
            prefix, kind, number, name = named.groups()
            name = names.setdefault((kind, number), name)
            if not prefix:
                place[kind] = name
        elif line.startswith("calls="):
            called = True
        elif re.match(r"[+\-*\d]", line):
            if not called:
                instructions[place["ob"], short_name(place["fn"])] += int(line.split()[1])
            called = False
    return instructions


def with_qemu(program, arguments, plugin, emulator):
    with tempfile.TemporaryDirectory() as directory:
        out = pathlib.Path(directory, "counts")
        command, *options = emulator
        output = run([command, "-cpu", ARM_PROCESSOR, "-d", "plugin", "-D", os.devnull, "-plugin",
                      f"{plugin},function={FUNCTION},out={out}", *options, program, *arguments], {})
        calls, *lines = out.read_text().splitlines()
        if calls != "calls 1":
            sys.exit(f"{FUNCTION} of {program} was not counted once: {calls} (is the program stripped?)")
    mappings = [found.groups() for found in map(MAPPING.fullmatch, lines) if found]
    mappings = [(range(int(begin, 16), int(end, 16)), int(offset, 16), path) for begin, end, offset, path in mappings]
    symbols, instructions = functools.cache(Symbols), Counter()
    for _, count, address in (line.split() for line in lines if line.startswith("block ")):
        at = int(address, 16)
        memory, offset, path = next(mapping for mapping in mappings if at in mapping[0])
        instructions[path, symbols(path).at(at - memory.start + offset)] += int(count)
    return counted(output, instructions)


class Symbols:
    """The functions of an ELF file by their offset in the file."""

    def __init__(self, path):
        self.sections, functions = [], {}
        if os.path.isfile(path):
            for line in self._readelf("-SW", path):
                if section := re.match(r"\s*\[ *\d+\] (\S+) +\S+ +(\w+) (\w+) (\w+) ", line):
                    name, *numbers = section.groups()
                    address, offset, size = (int(number, 16) for number in numbers)
                    self.sections.append((offset, offset + size, address, name))
            for line in self._readelf("-sWC", path):
                fields = line.split(maxsplit=7)
                if len(fields) == 8 and fields[3] in ("FUNC", "IFUNC") and fields[6] != "UND":
                    functions[int(fields[1], 16) & ~1] = short_name(fields[7])
        self.addresses = sorted(functions)
        self.names = [functions[address] for address in self.addresses]

    @staticmethod
    def _readelf(option, path):
        return subprocess.run(["readelf", option, path], capture_output=True, text=True).stdout.splitlines()

    def at(self, offset):
        for begin, end, address, name in self.sections:
            if begin <= offset < end and address != 0:
                if name.startswith(".plt"):
                    return STUBS
                found = bisect.bisect(self.addresses, address + offset - begin)
                return self.names[found - 1] if found else "?"
        return "?"


def short_name(name):
    """A function's name without its parameters, template arguments, return type and the project's namespaces."""
    if re.match(r"0x|\?", name):
        return STUBS
    name = re.sub(r" \[.*|\[abi:\w+\]|@.*|'\d+$", "", name).replace("(anonymous namespace)::", "")
    name = name.replace("std::__cxx11::", "std::").replace("Morvik::sql::", "")
    name = name.replace("std::basic_string<", "std::string<")
    scope, operator, rest = name.partition("operator")
    if operator:
        symbol = re.match(r"(\(\)|\[\]|[<>]=?|<<|>>|->|[^(<]*)", rest).group(1)
        return without_arguments(scope).split(" ")[-1] + operator + symbol
    return without_arguments(name).split("(")[0].split(" ")[-1]


def without_arguments(name):
    depth, kept = 0, []
    for character in name:
        depth += character == "<"
        kept.append("" if depth else character)
        depth -= character == ">"
    return "".join(kept)
