#!/usr/bin/env python3
"""Changes the library in one place at a time and reports the changes that no test notices; see README.md."""

import argparse
import collections
import concurrent.futures
import contextlib
import itertools
import json
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import time

from mutations import Finder, Key, Mutant

PROJECT = pathlib.Path(__file__).resolve().parents[2]
WORK = PROJECT / "build" / "mutants"
RESULTS = PROJECT / "build" / "mutants.jsonl"
SUPPRESSIONS = PROJECT / "tests" / "mutants" / "suppressions.txt"
REQUIRED_SHARE = 0.97
LIBRARY = "src/libtkosqllite.so"
# The test programs in the order in which they run, each with its tests to run. The third program runs without the test
# that makes every allocation fail, because that test takes too long.
PROGRAMS = {
    "tests/tkosqllite_tests": "*",
    "tests/tkosqllite_internals_tests": "*",
    "tests/faults/memory/tkosqllite_memory_fault_tests": "LostConversionTest.*:RejectedClosingDeathTest.*",
}
COMPILE = "-O0 -g0 -fno-lto -w"
OBJECT = re.compile(r"\S+\.o\b")
LINK = "-fno-lto -fuse-ld=gold -Wl,-S"  # the build's objects also have code for linkers without LTO
SLOW = 0.25  # seconds; slower tests run only if no other test noticed the mutant

Test = collections.namedtuple("Test", "program name seconds")
DoesNotCompile = subprocess.CalledProcessError


class Build:
    """The commands of an existing build by target or object, and its tests."""

    def __init__(self, path: pathlib.Path) -> None:
        self.path = path
        self.links = {target: self.call(f"ninja -t commands {target} | tail -n 1").split("&&")[1]
                      for target in (LIBRARY, *PROGRAMS)}
        self.compiles = {name: self.call(f"ninja -t commands {name} | tail -n 1")
                         for name in OBJECT.findall(" ".join(self.links.values()))}
        self.included = {name: self.call(f"ninja -t deps {name}") for name in self.compiles if name[:4] != "src/"}
        self.library = {os.path.relpath(command.split()[-1], PROJECT): name
                        for name, command in self.compiles.items() if name not in self.included}
        self.tests: list[Test] = []
        self.killers: dict[str, set[str]] = collections.defaultdict(set)  # by file, the tests that noticed a mutant

    def call(self, command: str) -> str:
        return subprocess.run(command, shell=True, cwd=self.path, check=True, capture_output=True, text=True).stdout

    def measure_tests(self) -> None:
        """Runs every test on the unchanged library: each must pass, and its duration is the base of its time limit."""
        trial, self.tests = Trial(self, WORK / "unchanged"), []
        trial.compile_library()
        for program, names in PROGRAMS.items():
            status, log = trial.run(program, names, 120)
            passed = re.findall(r"^\[       OK \] ([^\s,]+).* \((\d+) ms\)$", log, re.M)
            if status != 0 or f"[  PASSED  ] {len(passed)} test" not in log:
                raise ValueError(f"{program} fails without any change:\n{log[-4000:]}")
            self.tests += [Test(program, name, int(duration) / 1000) for name, duration in passed]


class Trial:
    """A copy of the library's sources in a folder, and the files built from it."""

    def __init__(self, build: Build, path: pathlib.Path) -> None:
        self.build, self.path = build, path
        self.objects: dict[str, str] = {}  # by the names that they have in the build
        for folder in ("include", "src"):
            shutil.copytree(PROJECT / folder, path / folder, dirs_exist_ok=True)

    def result_of(self, mutant: Mutant) -> str:
        """Returns how the tests noticed the mutant: "killed", "timed out", "not compiling", or "survived"."""
        file, broken = mutant.key[0], "not compiling"
        source = (self.path / file).read_text("ascii")
        (self.path / file).write_text(source[:mutant.begin] + mutant.replacement + source[mutant.end:], "ascii")
        try:
            if file in self.build.library:
                self.compile(self.build.library[file])
                return self.run_tests(file)
            self.compile_library()
            is_mirror = re.compile(rf"/{pathlib.Path(file).stem}\w*Test\.cpp\n").search
            broken = "killed"  # if a test does not compile, for example because of a static_assert
            for mirrors in (True, False):
                for name, files in self.build.included.items():
                    if f"/{file}\n" in files and bool(is_mirror(files)) == mirrors:
                        self.compile(name)
                if (found := self.run_tests(file)) != "survived":
                    return found
            return "survived"
        except DoesNotCompile:
            return broken
        finally:
            shutil.rmtree(self.path, ignore_errors=True)

    def compile(self, name: str, source: str | pathlib.Path = r"\1") -> None:
        """Compiles an object of the build with the copied files, from its source or from another."""
        output = self.objects[name] = f"{self.path}/{name.replace('/', '_')}"
        command = re.sub(" -MD .* -c (.*)\n", rf" {COMPILE} -o {output} -c {source}", self.build.compiles[name])
        self.build.call(re.sub(rf"{PROJECT}/(include|src)\b", rf"{self.path}/\1", command))

    def compile_library(self) -> None:
        """Compiles the library as one unit, which is in the first object. The other objects are left out."""
        unit = self.path / "library.cpp"
        unit.write_text("".join(f'#include "{self.path / source}"\n' for source in self.build.library))
        self.objects = dict.fromkeys(self.build.library.values(), "")
        self.compile(next(iter(self.objects)), unit)

    def link(self, target: str) -> pathlib.Path:
        """Links a target with the changed objects first, unless it is linked already or has none of them."""
        names, output = OBJECT.findall(self.build.links[target]), self.path / "linked" / pathlib.Path(target).name
        if self.objects.keys().isdisjoint(names):
            return self.build.path / target
        if not output.exists():
            output.parent.mkdir(exist_ok=True)
            inputs = [self.objects.get(name, name) for name in sorted(names, key=lambda name: name not in self.objects)]
            command = re.sub(r"(\S+\.o )+", " ".join(inputs) + " ", self.build.links[target], count=1)
            self.build.call(re.sub(r" -o \S+", f" -o {output}", command) + f" {LINK}")
        return output

    def run_tests(self, file: str) -> str:
        """Links the programs again and runs the likely tests before the others."""
        shutil.rmtree(self.path / "linked", ignore_errors=True)
        killers, programs = self.build.killers[file], list(PROGRAMS)

        def order(test: Test) -> tuple[int, int]:
            likely = pathlib.Path(file).stem in test.name or test.name in killers
            return 0 if likely else 1 if test.seconds < SLOW else 2, programs.index(test.program)

        for (_, program), group in itertools.groupby(sorted(self.build.tests, key=order), order):
            tests = {test.name: test.seconds for test in group}
            status, log = self.run(programs[program], ":".join(tests), 8 + 8 * max(tests.values()))
            if status != 0:
                killers.update(re.findall(r"^\[ RUN      \] (\S+)$", log, re.M)[-1:])
                return "timed out" if status is None else "killed"
        return "survived"

    def run(self, program: str, names: str, patience: float) -> tuple[int | None, str]:
        """Returns the status and the output, or None as the status if a test took longer than `patience` in seconds."""
        files, log = self.path / "files", self.path / "log"
        shutil.rmtree(files, ignore_errors=True)
        files.mkdir()
        environment = {**os.environ, "LD_LIBRARY_PATH": str(self.link(LIBRARY).parent), "TMPDIR": str(files)}
        with log.open("wb") as output:
            process = subprocess.Popen(
                ["prlimit", "--core=0", "--as=4294967296", "--fsize=4294967296", self.link(program),
                 f"--gtest_filter={names}", "--gtest_fail_fast"], cwd=files, env=environment, start_new_session=True,
                stdin=subprocess.DEVNULL, stdout=output, stderr=output)
        while (status := process.poll()) is None and time.time() - log.stat().st_mtime <= patience:
            time.sleep(0.01)
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return status, log.read_text(errors="replace")


def read_suppressions() -> set[Key]:
    text = SUPPRESSIONS.read_text("ascii")
    entries = re.findall(r"\n\n(\S+), (.*)\n- (.*)\n((?:\+ .*\n)+)(\d*) ?= \S.*", text)
    keys = {(*place, after[2:], int(number or 1))
            for *place, changes, number in entries for after in changes.splitlines()}
    if len(entries) != text.count("\n\n") or len(keys) != text.count("\n+ "):
        raise ValueError(f"{SUPPRESSIONS} has a change twice, or an entry in another form")
    return keys


def judge(results: dict[Key, str], suppressed: set[Key], full: bool) -> bool:
    survivors = {key for key, result in results.items() if result == "survived"}
    counts = collections.Counter(results.values())
    compiled = len(results) - counts["not compiling"]
    share = (counts["killed"] + counts["timed out"]) / compiled if compiled else 1.0
    print(f"{len(results)} mutants: {counts['killed']} killed, {counts['timed out']} timed out, "
          f"{counts['not compiling']} not compiling, {counts['survived']} survived "
          f"({len(survivors & suppressed)} of them suppressed); {share:.1%} of those that compile were noticed")
    for title, keys in (("not suppressed", survivors - suppressed),
                        ("suppressed, but no survivor any more", suppressed - survivors if full else ())):
        for file, function, before, after, number in sorted(keys):
            print(f"{title}:\n{file}, {function}\n- {before}\n+ {after}\n{number} = \n")
    if few := full and share < REQUIRED_SHARE:
        print(f"fewer than {REQUIRED_SHARE:.0%} were noticed")
    return not few and (survivors == suppressed if full else survivors <= suppressed)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path, help="the build to work beside")
    parser.add_argument("--workers", type=int, default=2, help="how many mutants to try at once")
    parser.add_argument("--sample", type=int, help="try only so many of the mutants, chosen at random")
    parser.add_argument("--seed", type=int, default=random.randrange(1_000_000), help="choose the same sample again")
    parser.add_argument("--only", nargs="+", default=[""], help="try only files whose path contains one of these")
    parser.add_argument("--again", action="store_true", help="try only the mutants that survived before")
    parser.add_argument("--continue", action="store_true", dest="go_on", help="try only those not tried before")
    parser.add_argument("--list", action="store_true", help="only print what would be tried")
    options = parser.parse_args()

    shutil.rmtree(WORK, ignore_errors=True)
    files = sorted(path for folder in ("include", "src") for path in (PROJECT / folder).rglob("*.[ch]*"))
    with concurrent.futures.ProcessPoolExecutor(options.workers) as pool:
        existing = [mutant for found in pool.map(Finder, itertools.repeat(PROJECT), files) for mutant in found.mutants]
    kept = RESULTS.read_text() if (options.again or options.go_on) and RESULTS.exists() else ""
    earlier = {(*key,): result for key, result in map(json.loads, kept.splitlines())}
    results = {mutant.key: earlier[mutant.key] for mutant in existing if mutant.key in earlier}
    mutants = [mutant for mutant in existing if any(path in mutant.key[0] for path in options.only) and
               not (options.go_on and mutant.key in results) and
               not (options.again and results.get(mutant.key) != "survived")]
    suppressed = read_suppressions()
    if options.sample is not None:
        # A suppressed mutant would survive again and take the longest. Only a full run checks that it still survives.
        mutants = [mutant for mutant in mutants if mutant.key not in suppressed]
        print(f"a sample of {options.sample} of {len(mutants)} mutants; again with --seed {options.seed}", flush=True)
        mutants = random.Random(options.seed).sample(mutants, min(options.sample, len(mutants)))
    if options.list:
        print(*mutants, f"{len(mutants)} mutants", sep="\n")
        return 0

    started, build = time.monotonic(), Build(options.build.resolve())
    build.measure_tests()
    print(f"{len(build.tests)} tests, {sum(test.seconds for test in build.tests):.0f} s without any change; "
          f"{len(mutants)} mutants to try", flush=True)
    with (RESULTS.open("a" if options.again or options.go_on or options.sample else "w") as file,
          concurrent.futures.ThreadPoolExecutor(options.workers) as pool):
        tried = pool.map(lambda n, mutant: Trial(build, WORK / str(n)).result_of(mutant), itertools.count(), mutants)
        for count, (mutant, result) in enumerate(zip(mutants, tried), 1):
            results[mutant.key] = result
            print(json.dumps([mutant.key, result]), file=file, flush=True)
            if result == "survived":
                print(f"survived: {mutant}", flush=True)
            if count % 50 == 0:
                print(f"{count} of {len(mutants)} tried", flush=True)
    try:
        build.measure_tests()  # fails if a test fails now without a change: the results are then wrong
    except ValueError:
        RESULTS.unlink()
        raise
    print(f"{time.monotonic() - started:.0f} s")
    return 0 if judge(results, suppressed, len(results) == len(existing)) else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (DoesNotCompile, ValueError) as error:
        sys.exit(f"{error}\n{getattr(error, 'stderr', '')}")
