"""Runs the test programs on a mutant until one test notices it."""

import collections
import contextlib
import dataclasses
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import tempfile
import time

from building import PROGRAMS, Programs

SLOW = 0.25  # seconds; slower tests run only if no other test noticed the mutant
ADDRESS_SPACE = 4 << 30
FILE_SIZE = 4 << 30


class SuiteFails(Exception):
    pass


class TimedOut(Exception):
    pass


@dataclasses.dataclass(frozen=True)
class Test:
    program: str
    name: str
    file: str  # without folder and suffix
    seconds: float


class Suite:
    def __init__(self, programs: Programs, room: pathlib.Path) -> None:
        self.room = room
        self.killers: dict[str, set[Test]] = collections.defaultdict(set)
        self.tests = [test for name in programs.names() for test in self.measure(programs, name)]

    def measure(self, programs: Programs, program: str) -> list[Test]:
        """Runs every test on the unchanged library: each must pass, and its duration is the base of its time limit."""
        with self.scratch() as scratch:
            chosen = f"--gtest_filter={PROGRAMS[program]}"
            listed = self.report(programs, program, scratch, [chosen, "--gtest_list_tests"])
            ran = self.report(programs, program, scratch, [chosen])
        files = {name: pathlib.Path(test["file"]).stem for name, test in tests_in(listed)}
        return [Test(program, name, files[name], float(test["time"].rstrip("s"))) for name, test in tests_in(ran)]

    def report(self, programs: Programs, program: str, scratch: pathlib.Path, arguments: list[str]) -> dict:
        output, log = scratch / "report.json", scratch / "log"
        if not run([str(programs.path(program)), f"--gtest_output=json:{output}", *arguments],
                   programs.library_directory, scratch, log, patience=120):
            raise SuiteFails(f"{program} fails without any change:\n{log.read_text(errors='replace')[-4000:]}")
        return json.loads(output.read_text())

    @contextlib.contextmanager
    def scratch(self):
        directory = pathlib.Path(tempfile.mkdtemp(dir=self.room))
        directory.chmod(0o755)  # some tests change to another user
        try:
            yield directory
        finally:
            shutil.rmtree(directory, ignore_errors=True)

    def notices(self, mutated_file: str, programs: Programs) -> str:
        """Returns how the mutant was noticed: "killed", "timed out", or "survived"."""
        left = list(self.tests)
        mirror = pathlib.Path(mutated_file).stem
        for likely in (lambda test: test.file.startswith(mirror) or test in self.killers[mutated_file],
                       lambda test: test.seconds < SLOW, lambda test: True):
            chosen = [test for test in left if likely(test)]
            left = [test for test in left if not likely(test)]
            for program in programs.names():
                found = self.run_tests(mutated_file, programs, [test for test in chosen if test.program == program])
                if found != "survived":
                    return found
        return "survived"

    def run_tests(self, mutated_file: str, programs: Programs, tests: list[Test]) -> str:
        if not tests:
            return "survived"
        program = tests[0].program
        names = ":".join(test.name for test in tests)
        with self.scratch() as scratch:
            log = scratch / "log"
            try:
                passed = run([str(programs.path(program)), "--gtest_fail_fast", f"--gtest_filter={names}"],
                             programs.library_directory, scratch, log, 8 + 8 * max(test.seconds for test in tests))
            except TimedOut:
                return "timed out"
            if passed:
                return "survived"
            last = re.findall(r"^\[ RUN      \] (\S+)$", log.read_text(errors="replace"), re.M)
            self.killers[mutated_file] |= {test for test in tests if last and test.name == last[-1]}
            return "killed"


def tests_in(report: dict):
    for group in report["testsuites"]:
        for test in group["testsuite"]:
            yield f"{group['name']}.{test['name']}", test


def limit_resources() -> None:
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_SIZE, FILE_SIZE))


def run(command: list[str], library_directory: pathlib.Path, scratch: pathlib.Path, log: pathlib.Path,
        patience: float) -> bool:
    """Runs tests in a separate folder, and ends them when a test takes longer than `patience`, in seconds."""
    environment = {**os.environ, "LD_LIBRARY_PATH": str(library_directory), "TMPDIR": str(scratch)}
    with log.open("wb") as output:
        process = subprocess.Popen(command, cwd=scratch, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=output, start_new_session=True, preexec_fn=limit_resources)
        try:
            written, since = 0, time.monotonic()
            while True:
                with contextlib.suppress(subprocess.TimeoutExpired):
                    return process.wait(0.5) == 0
                if log.stat().st_size != written:
                    written, since = log.stat().st_size, time.monotonic()
                elif time.monotonic() - since > patience:
                    raise TimedOut
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()
