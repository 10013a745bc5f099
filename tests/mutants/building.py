"""Compiles and links mutants outside an existing build, without changing it or the sources; see README.md."""

import concurrent.futures
import functools
import json
import os
import pathlib
import re
import shlex
import subprocess
from collections.abc import Callable, Mapping, Sequence
from typing import NamedTuple

from mutations import Mutant

# The test programs of the build, in the order in which they run, and the tests of them to run. Tests that make every
# allocation fail in turn take too long for every mutant.
PROGRAMS = {
    "tests/tkosqllite_tests": "*",
    "tests/tkosqllite_internals_tests": "*",
    "tests/faults/memory/tkosqllite_memory_fault_tests": "LostConversionTest.*:RefusedClosingDeathTest.*",
}
LIBRARY = "src/libtkosqllite.so"
FAST = ["-O0", "-g0", "-fno-lto", "-w"]  # for the library; the test programs stay the same
OF_THE_BUILD = {"-MD", "-MT", "-MF", "-o", "-c"}  # options that name files of the build, all but the first with a value


class DoesNotCompile(Exception):
    """The library does not compile with the mutant, so the mutant has no result."""


class TestDoesNotCompile(Exception):
    """A test does not compile with the mutated header, for example because of a static_assert."""


class Unit(NamedTuple):
    """One source that is compiled, and how."""
    source: pathlib.Path
    output: str  # the object, as in the build's link commands
    command: list[str]  # without source and output


class Programs(NamedTuple):
    """The programs to run for one mutant. A program with objects of the library is linked when it is first needed."""
    library_directory: pathlib.Path
    path_of: dict[str, Callable[[], pathlib.Path]]


class Builder:
    def __init__(self, project: pathlib.Path, build: pathlib.Path, work: pathlib.Path) -> None:
        self.project, self.build, self.work = project, build, work
        self.links = {target: self.link_command(target) for target in (LIBRARY, *PROGRAMS)}
        linked = {word for command in self.links.values() for word in command}
        commands = [(entry, shlex.split(entry["command"]))
                    for entry in json.loads((build / "compile_commands.json").read_text())]
        units = [Unit(pathlib.Path(entry["file"]), words[words.index("-o") + 1], without_files(words))
                 for entry, words in commands]
        self.library = [unit for unit in units if unit.source.is_relative_to(project / "src") and unit.output in linked]
        self.tests = [unit for unit in units if unit not in self.library and unit.output in linked]
        self.headers = self.read_headers()
        self.base: dict[str, pathlib.Path] = {}  # the library's objects by output
        self.whole_library = work / "library.cpp"
        self.whole_library.write_text("".join(f'#include "{unit.source}"\n' for unit in self.library))

    def ninja(self, *arguments: str) -> list[str]:
        return subprocess.run(["ninja", "-C", self.build, "-t", *arguments], check=True, capture_output=True,
                              text=True).stdout.splitlines()

    def read_headers(self) -> dict[str, set[pathlib.Path]]:
        """The files that each object was made from, as the build knows them."""
        headers: dict[str, set[pathlib.Path]] = {}
        output = ""
        for line in self.ninja("deps"):
            if line and not line.startswith((" ", "ninja:")):
                output = line.split(":")[0]
                headers[output] = set()
            elif line.strip():
                headers[output].add(pathlib.Path(os.path.normpath(self.build / line.strip())))
        return headers

    def link_command(self, target: str) -> list[str]:
        """The compiler's call in a line like ": && c++ ... -o target && :"."""
        words = shlex.split(self.ninja("commands", target)[-1])
        begin = words.index("&&") + 1
        return [*without_files(words[begin:words.index("&&", begin)]), "-fno-lto", "-fuse-ld=gold"]

    def arguments_for(self, path: pathlib.Path) -> list[str]:
        """The arguments with which clang can parse a file of the library."""
        unit = next((unit for unit in self.library if unit.source == path), self.library[0])
        return [flag for flag in unit.command if flag.startswith(("-I", "-D", "-std"))] + ["-xc++"]

    def build_base(self, workers: int) -> Programs:
        """Compiles the unchanged library, whose objects the mutants are linked with."""
        directory = self.work / "base"
        self.compile(self.library[0], self.whole_library, directory)  # the unchanged library must compile
        with concurrent.futures.ThreadPoolExecutor(workers) as pool:
            compiled = pool.map(lambda unit: self.compile(unit, unit.source, directory), self.library)
            self.base = dict(zip((unit.output for unit in self.library), compiled))
        return self.link(directory, {})

    def build_mutant(self, mutant: Mutant, directory: pathlib.Path, whole: bool) -> Programs:
        """Builds the programs that test the mutant. `whole` recompiles every test that includes the mutated header."""
        original, mutated = self.project / mutant.key[0], directory / mutant.key[0]
        mutated.parent.mkdir(parents=True, exist_ok=True)
        mutated.write_text(mutant.applied_to(original.read_text(encoding="ascii")), encoding="ascii")
        if mutated.suffix == ".cpp":
            unit = next(unit for unit in self.library if unit.source == original)
            return self.link(directory, {unit.output: self.compile(unit, mutated, directory)})
        includes = [f"-I{directory / 'include'}", f"-I{directory / 'src'}"]
        unit, *others = self.library
        objects: dict[str, pathlib.Path | None] = {other.output: None for other in others}
        objects[unit.output] = self.compile(unit, self.whole_library, directory, includes)
        try:
            for test in self.tests:
                if original in self.headers.get(test.output, ()) and (whole or mirrors(test.source, original)):
                    objects[test.output] = self.compile(test, test.source, directory, includes)
        except DoesNotCompile as error:
            raise TestDoesNotCompile from error
        return self.link(directory, objects)

    def compile(self, unit: Unit, source: pathlib.Path, directory: pathlib.Path,
                includes: Sequence[str] = ()) -> pathlib.Path:
        compiled = directory / "objects" / unit.output.replace("/", "_")
        compiled.parent.mkdir(parents=True, exist_ok=True)
        first = next(i for i, word in enumerate(unit.command) if word.startswith("-"))
        self.run([*unit.command[:first], *includes, *unit.command[first:], *FAST, "-c", str(source), "-o",
                  str(compiled)])
        return compiled

    def link(self, directory: pathlib.Path, mutated: Mapping[str, pathlib.Path | None]) -> Programs:
        """Links the library, and later the programs for which those of the build cannot be used. An object that is
        None is left out; the mutated ones come first."""
        replaced = {**self.base, **mutated}

        def link(target: str) -> pathlib.Path:
            compiler, *words = self.links[target]
            if target != LIBRARY and not any(word in replaced for word in words):
                return self.build / target
            output = directory / pathlib.Path(target).name
            objects = [mutated[word] for word in words if word in mutated]
            objects += [replaced.get(word, word) for word in words if word not in mutated]
            self.run([compiler, *(str(word) for word in objects if word is not None), "-o", str(output)])
            return output

        link(LIBRARY)
        return Programs(directory, {program: functools.cache(functools.partial(link, program)) for program in PROGRAMS})

    def run(self, command: list[str]) -> None:
        done = subprocess.run(command, cwd=self.build, capture_output=True, text=True)
        if done.returncode != 0:
            raise DoesNotCompile(f"{shlex.join(command)}\n{done.stderr}")


def mirrors(test: pathlib.Path, header: pathlib.Path) -> bool:
    """Whether a test, or one of several that are compiled as one, is named after the header."""
    tests = [test.name, *re.findall(r'^#include ".*/(.*)"$', test.read_text(), re.M)]
    return any(name.startswith(header.stem) and name.endswith("Test.cpp") for name in tests)


def without_files(command: list[str]) -> list[str]:
    return [word for previous, word in zip(["", *command], command)
            if word not in OF_THE_BUILD and (previous == "-MD" or previous not in OF_THE_BUILD)]
