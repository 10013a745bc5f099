"""Compiles and links mutants outside an existing build, without changing it or the sources.

A mutant of a source is one compilation. A mutant of a header takes all sources of the library, compiled as one, and
those tests that include it and mirror it. A program then uses the mutant's functions everywhere, because they are not
inlined and the linker takes them from the first object that has them.
"""

import concurrent.futures
import dataclasses
import functools
import json
import os
import pathlib
import re
import shlex
import subprocess
from collections.abc import Callable, Iterable, Mapping

from mutations import Mutant

# The test programs of the build, in the order in which they run, and the tests of them to run. Tests that make every
# allocation fail in turn take too long for every mutant.
PROGRAMS = {
    "tests/tkosqllite_tests": "*",
    "tests/tkosqllite_internals_tests": "*",
    "tests/faults/memory/tkosqllite_memory_fault_tests": "LostConversionTest.*:RefusedClosingTest.*",
}
LIBRARY = "src/libtkosqllite.so"

# The library is compiled with settings for a fast build; the test programs stay the same.
DROPPED_FLAGS = re.compile(r"-O[0-3sg]|-g.*|-f(no-)?(fat-)?lto.*|-Werror|-MD|-M[TF]|-W.*")
DROPPED_WITH_VALUE = {"-MT", "-MF", "-o", "-c"}


class DoesNotCompile(Exception):
    """The library does not compile, so such a mutant has no result."""


class TestDoesNotCompile(Exception):
    """A test that the library's header fails at compile time."""


@dataclasses.dataclass(frozen=True)
class Unit:
    """One source that is compiled, and how."""
    source: pathlib.Path
    output: str  # the object, as in the build's link commands
    command: list[str]  # without source and output


class Programs:
    """The programs to run for one mutant. A program with objects of the library is linked when it is first needed."""

    def __init__(self, library_directory: pathlib.Path, linking: dict[str, Callable[[], pathlib.Path]]) -> None:
        self.library_directory = library_directory
        self.linking = linking
        self.linked: dict[str, pathlib.Path] = {}

    def names(self) -> list[str]:
        return list(self.linking)

    def path(self, name: str) -> pathlib.Path:
        if name not in self.linked:
            self.linked[name] = self.linking[name]()
        return self.linked[name]


class Workshop:
    def __init__(self, project: pathlib.Path, build: pathlib.Path, room: pathlib.Path) -> None:
        self.project, self.build, self.room = project, build, room
        self.links = {target: self.link_command(target) for target in (LIBRARY, *PROGRAMS)}
        self.units = list(self.read_units())
        self.headers = self.read_headers()
        self.base: dict[str, pathlib.Path] = {}  # the library's objects by output
        self.whole_library = room / "library.cpp"
        self.whole_library.write_text("".join(f'#include "{unit.source}"\n' for unit in self.library_units()))

    def read_units(self) -> Iterable[Unit]:
        linked = {word for command in self.links.values() for word in command}
        for entry in json.loads((self.build / "compile_commands.json").read_text()):
            words = shlex.split(entry["command"])
            output = words[words.index("-o") + 1]
            if output in linked:
                yield Unit(pathlib.Path(entry["file"]), output, compile_flags(words))

    def read_headers(self) -> dict[str, set[pathlib.Path]]:
        """The project's headers that each object was made from, as the build knows them."""
        listing = subprocess.run(["ninja", "-C", self.build, "-t", "deps"], check=True, capture_output=True, text=True)
        headers: dict[str, set[pathlib.Path]] = {}
        output = ""
        for line in listing.stdout.splitlines():
            if line and not line.startswith((" ", "ninja:")):
                output = line.split(":")[0]
                headers[output] = set()
            elif line.strip():
                path = pathlib.Path(os.path.normpath(self.build / line.strip()))
                if path.is_relative_to(self.project):
                    headers[output].add(path)
        return headers

    def link_command(self, target: str) -> list[str]:
        listing = subprocess.run(["ninja", "-C", self.build, "-t", "commands", target], check=True,
                                 capture_output=True, text=True)
        return link_flags(shlex.split(listing.stdout.splitlines()[-1]), target)

    def is_library(self, unit: Unit) -> bool:
        return unit.source.is_relative_to(self.project / "src")

    def library_units(self) -> list[Unit]:
        return [unit for unit in self.units if self.is_library(unit)]

    def arguments_for(self, path: pathlib.Path) -> list[str]:
        """The arguments with which clang can parse a file of the library."""
        unit = next((unit for unit in self.units if unit.source == path), self.library_units()[0])
        return [flag for flag in unit.command[1:] if flag.startswith(("-I", "-D", "-std"))] + ["-xc++"]

    def build_base(self, workers: int) -> Programs:
        """Compiles the unchanged library, whose objects the mutants are linked with."""
        directory = self.room / "base"
        self.compile(self.library_units()[0], self.whole_library, directory, [])  # the unchanged library must compile
        with concurrent.futures.ThreadPoolExecutor(workers) as pool:
            compiled = {unit.output: pool.submit(self.compile, unit, unit.source, directory, [])
                        for unit in self.library_units()}
            self.base = {output: future.result() for output, future in compiled.items()}
        return self.link(directory, {})

    def build_mutant(self, mutant: Mutant, directory: pathlib.Path, whole: bool) -> Programs:
        """Builds the programs that test the mutant. `whole` recompiles every test that includes the mutated header."""
        original = self.project / mutant.file
        mutated = directory / mutant.file
        mutated.parent.mkdir(parents=True, exist_ok=True)
        mutated.write_text(mutant.applied_to(original.read_text(encoding="ascii")), encoding="ascii")
        if mutated.suffix == ".cpp":
            unit = next(unit for unit in self.units if unit.source == original)
            return self.link(directory, {unit.output: self.compile(unit, mutated, directory, [])})
        first = [f"-I{directory / 'include'}", f"-I{directory / 'src'}"]
        unit, *others = self.library_units()
        objects: dict[str, pathlib.Path | None] = {other.output: None for other in others}
        objects[unit.output] = self.compile(unit, self.whole_library, directory, first)
        try:
            for test in self.units:
                if not self.is_library(test) and original in self.headers.get(test.output, ()) and (
                        whole or mirrors(test.source, original)):
                    objects[test.output] = self.compile(test, test.source, directory, first)
        except DoesNotCompile as error:
            raise TestDoesNotCompile from error
        return self.link(directory, objects)

    def compile(self, unit: Unit, source: pathlib.Path, directory: pathlib.Path, first: list[str]) -> pathlib.Path:
        compiled = directory / "objects" / unit.output.replace("/", "_")
        compiled.parent.mkdir(parents=True, exist_ok=True)
        compiler, *flags = unit.command
        run([compiler, *first, *flags, "-O0", "-w", "-c", str(source), "-o", str(compiled)], self.build)
        return compiled

    def link(self, directory: pathlib.Path, objects: Mapping[str, pathlib.Path | None]) -> Programs:
        """Links the library, and later the programs for which those of the build cannot be used."""
        replaced = {**self.base, **objects}
        run(substituted(self.links[LIBRARY], replaced, objects, directory / "libtkosqllite.so"), self.build)

        def link_program(program: str) -> pathlib.Path:
            if not any(word in replaced for word in self.links[program]):
                return self.build / program
            linked = directory / pathlib.Path(program).name
            run(substituted(self.links[program], replaced, objects, linked), self.build)
            return linked

        return Programs(directory, {program: functools.partial(link_program, program) for program in PROGRAMS})


def mirrors(test: pathlib.Path, header: pathlib.Path) -> bool:
    """Whether a test, or one of several that are compiled as one, is named after the header."""
    tests = [test.name, *re.findall(r'^#include ".*/(.*)"$', test.read_text(), re.M)]
    return any(name.startswith(header.stem) and name.endswith("Test.cpp") for name in tests)


def compile_flags(words: list[str]) -> list[str]:
    kept = []
    following = iter(words)
    for word in following:
        if word in DROPPED_WITH_VALUE:
            next(following)
        elif not DROPPED_FLAGS.fullmatch(word):
            kept.append(word)
    return kept


def link_flags(words: list[str], target: str) -> list[str]:
    """The compiler's call in a line like ": && c++ ... -o target && :"."""
    command = words[words.index("&&") + 1:]
    command = command[:command.index("&&")] if "&&" in command else command
    kept = [word for word in command if not re.fullmatch(r"-O[0-3sg]|-f(no-)?(fat-)?lto.*", word)]
    at = kept.index("-o")
    if kept[at + 1] != target:
        raise ValueError(f"{target} is not linked by {' '.join(words)}")
    return kept[:at] + kept[at + 2:] + ["-fuse-ld=gold"]  # the fastest linker that every compiler has


def substituted(command: list[str], replaced: Mapping[str, pathlib.Path | None],
                mutated: Mapping[str, pathlib.Path | None], output: pathlib.Path) -> list[str]:
    """The command with other objects, or none, the mutated ones first."""
    compiler, *words = command
    objects = [mutated[word] for word in words if word in mutated]
    objects += [replaced.get(word, word) for word in words if word not in mutated]
    return [compiler, *(str(word) for word in objects if word is not None), "-o", str(output)]


def run(command: list[str], directory: pathlib.Path) -> None:
    done = subprocess.run(command, cwd=directory, capture_output=True, text=True)
    if done.returncode != 0:
        raise DoesNotCompile(f"{shlex.join(command)}\n{done.stderr}")
