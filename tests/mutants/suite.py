"""Runs the test programs on a mutant until one test notices it."""

import collections
import contextlib
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
from collections.abc import Iterator
from typing import NamedTuple

from building import PROGRAMS, Programs

SLOW = 0.25  # seconds; slower tests run only if no other test noticed the mutant
LIMITS = {resource.RLIMIT_CORE: 0, resource.RLIMIT_AS: 4 << 30, resource.RLIMIT_FSIZE: 4 << 30}


class SuiteFails(Exception):
    pass


class Test(NamedTuple):
    program: str
    name: str
    file: str  # without folder and suffix
    seconds: float


@contextlib.contextmanager
def scratch(directory: pathlib.Path) -> Iterator[pathlib.Path]:
    """A temporary folder in the directory."""
    made = pathlib.Path(tempfile.mkdtemp(dir=directory))
    made.chmod(0o755)  # some tests change to another user
    try:
        yield made
    finally:
        shutil.rmtree(made, ignore_errors=True)


class Suite:
    def __init__(self, programs: Programs, work: pathlib.Path) -> None:
        self.work = work
        self.killers: dict[str, set[Test]] = collections.defaultdict(set)
        self.tests = [test for name in PROGRAMS for test in self.measure(programs, name)]

    def measure(self, programs: Programs, program: str) -> list[Test]:
        """Runs every test on the unchanged library: each must pass, and its duration is the base of its time limit."""
        with scratch(self.work) as directory:
            report = directory / "report.json"
            status, log = run(programs, program, directory, PROGRAMS[program], 120, f"--gtest_output=json:{report}")
            if status != 0:
                raise SuiteFails(f"{program} fails without any change:\n{log[-4000:]}")
            return [Test(program, f"{suite['name']}.{test['name']}", pathlib.Path(test["file"]).stem,
                         float(test["time"].rstrip("s")))
                    for suite in json.loads(report.read_text())["testsuites"] for test in suite["testsuite"]]

    def notices(self, mutated_file: str, programs: Programs) -> str:
        """Returns how the mutant was noticed: "killed", "timed out", or "survived"."""
        left = list(self.tests)
        mirror = pathlib.Path(mutated_file).stem
        for likely in (lambda test: test.file.startswith(mirror) or test in self.killers[mutated_file],
                       lambda test: test.seconds < SLOW, lambda test: True):
            chosen = [test for test in left if likely(test)]
            left = [test for test in left if not likely(test)]
            for program in PROGRAMS:
                found = self.run_tests(mutated_file, programs, [test for test in chosen if test.program == program])
                if found != "survived":
                    return found
        return "survived"

    def run_tests(self, mutated_file: str, programs: Programs, tests: list[Test]) -> str:
        if not tests:
            return "survived"
        with scratch(self.work) as directory:
            status, log = run(programs, tests[0].program, directory, ":".join(test.name for test in tests),
                              8 + 8 * max(test.seconds for test in tests), "--gtest_fail_fast")
        if status is None:
            return "timed out"
        if status == 0:
            return "survived"
        last = re.findall(r"^\[ RUN      \] (\S+)$", log, re.M)
        self.killers[mutated_file] |= {test for test in tests if last and test.name == last[-1]}
        return "killed"


def run(programs: Programs, program: str, directory: pathlib.Path, names: str, patience: float,
        *options: str) -> tuple[int | None, str]:
    """Runs tests in the directory; returns the status and the output. The status is None if they were ended because
    a test took longer than `patience`, in seconds."""
    environment = {**os.environ, "LD_LIBRARY_PATH": str(programs.library_directory), "TMPDIR": str(directory)}
    log = directory / "log"
    with log.open("wb") as output:
        process = subprocess.Popen(
            [str(programs.path_of[program]()), f"--gtest_filter={names}", *options], cwd=directory, env=environment,
            stdin=subprocess.DEVNULL, stdout=output, stderr=output, start_new_session=True,
            preexec_fn=lambda: [resource.setrlimit(limit, (value, value)) for limit, value in LIMITS.items()])
        written, since, status = 0, time.monotonic(), None
        while status is None and time.monotonic() - since <= patience:
            with contextlib.suppress(subprocess.TimeoutExpired):
                status = process.wait(0.5)
            if log.stat().st_size != written:
                written, since = log.stat().st_size, time.monotonic()
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        process.wait()
    return status, log.read_text(errors="replace")
