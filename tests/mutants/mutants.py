#!/usr/bin/env python3
"""Changes the library one operator, constant, condition or call at a time and reports the changes that no test notices.

A survivor must be listed in tests/mutants/suppressions.txt. A full run also fails when an entry is out of date, and when
fewer than 97 % of the mutants were noticed.
"""

import argparse
import collections
import concurrent.futures
import dataclasses
import json
import pathlib
import random
import shutil
import sys
import tempfile
import time
from collections.abc import Iterator

from answers import MalformedAnswer, key_of, read_answers, written
from building import DoesNotCompile, TestDoesNotCompile, Workshop
from mutations import Mutant, mutants_of
from suite import Suite, SuiteFails

PROJECT = pathlib.Path(__file__).resolve().parents[2]
SUPPRESSIONS = PROJECT / "tests" / "mutants" / "suppressions.txt"
RESULTS = PROJECT / "build" / "mutants.json"
REQUIRED_SHARE = 0.97


def sources() -> list[pathlib.Path]:
    return sorted(path for folder in ("include", "src") for ending in ("*.h", "*.cpp")
                  for path in (PROJECT / folder).rglob(ending))


def find_mutants(path: pathlib.Path, arguments: list[str]) -> list[Mutant]:
    return list(mutants_of(path, str(path.relative_to(PROJECT)), arguments))


def try_mutant(mutant: Mutant, workshop: Workshop, suite: Suite) -> str:
    def verdict(whole: bool) -> str:
        directory = pathlib.Path(tempfile.mkdtemp(dir=workshop.room))
        try:
            return suite.notices(mutant.file, workshop.build_mutant(mutant, directory, whole))
        except DoesNotCompile:
            return "not compiling"
        except TestDoesNotCompile:
            return "killed"
        finally:
            shutil.rmtree(directory, ignore_errors=True)

    found = verdict(whole=False)
    if found == "survived" and mutant.file.endswith(".h"):
        found = verdict(whole=True)
    return found


def parse_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=pathlib.Path, help="the build to work beside")
    parser.add_argument("--sample", type=int, metavar="N", help="try only N of the mutants, chosen at random")
    parser.add_argument("--seed", type=int, metavar="S", help="choose the same sample again")
    parser.add_argument("--only", nargs="+", default=[""], metavar="PATH",
                        help="try only the mutants of files whose path holds one of these")
    parser.add_argument("--again", action="store_true", help="try only those that survived before")
    parser.add_argument("--continue", action="store_true", dest="go_on", help="try only those not tried before")
    parser.add_argument("--workers", type=int, default=2, metavar="N", help="how many to try at once (2)")
    parser.add_argument("--list", action="store_true", help="only print what would be tried")
    return parser.parse_args()


def read_results() -> dict[Mutant, str]:
    """Results of earlier runs. Positions may have changed since; two mutants are equal when their lines are."""
    if not RESULTS.exists():
        return {}
    return {Mutant(**result["mutant"]): result["found"] for result in json.loads(RESULTS.read_text())}


def write_results(results: dict[Mutant, str]) -> None:
    written_anew = RESULTS.with_suffix(".new")  # if the run is interrupted, the old results stay complete
    written_anew.write_text(json.dumps([{"mutant": dataclasses.asdict(mutant), "found": found}
                                        for mutant, found in results.items()], indent=1))
    written_anew.replace(RESULTS)


def choose(options: argparse.Namespace, mutants: list[Mutant], earlier: dict[Mutant, str]) -> list[Mutant]:
    chosen = [mutant for mutant in mutants if any(path in mutant.file for path in options.only)]
    if options.go_on:
        chosen = [mutant for mutant in chosen if mutant not in earlier]
    if options.again:
        chosen = [mutant for mutant in chosen if earlier.get(mutant) == "survived"]
    if options.sample is None:
        return chosen
    # A mutant in suppressions.txt would survive again and take the longest; a full run tells whether it still survives.
    answers = read_answers(SUPPRESSIONS)
    chosen = [mutant for mutant in chosen if key_of(mutant) not in answers]
    seed = random.randrange(1_000_000) if options.seed is None else options.seed
    print(f"a sample of {options.sample} of {len(chosen)} mutants; once more with --seed {seed}", flush=True)
    return random.Random(seed).sample(chosen, min(options.sample, len(chosen)))


def try_all(mutants: list[Mutant], workshop: Workshop, suite: Suite, workers: int) -> Iterator[tuple[Mutant, str]]:
    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        running = {pool.submit(try_mutant, mutant, workshop, suite): mutant for mutant in mutants}
        for tried, future in enumerate(concurrent.futures.as_completed(running), 1):
            mutant = running[future]
            if future.result() == "survived":
                print(f"survived: {mutant.file}:{mutant.line}\n  - {mutant.before}\n  + {mutant.after}", flush=True)
            if tried % 50 == 0:
                print(f"{tried} of {len(mutants)} tried", flush=True)
            yield mutant, future.result()


def judge(results: dict[Mutant, str], full: bool, room: pathlib.Path) -> bool:
    answers = read_answers(SUPPRESSIONS)
    survivors = {key_of(mutant): mutant for mutant, found in results.items() if found == "survived"}
    unsuppressed = [key for key in survivors if key not in answers]
    stale = [key for key in answers if key not in survivors] if full else []
    (room / "unsuppressions.txt").write_text("\n".join(written(key, "") for key in sorted(unsuppressed)), encoding="ascii")

    counts = collections.Counter(results.values())
    compiled = len(results) - counts["not compiling"]
    noticed = counts["killed"] + counts["timed out"]
    share = noticed / compiled if compiled else 1.0
    print(f"{len(results)} mutants: {counts['killed']} killed, {counts['timed out']} timed out, "
          f"{counts['not compiling']} not compiling, {counts['survived']} survived "
          f"({counts['survived'] - len(unsuppressed)} of them suppressed); {share:.1%} of those that compile were noticed")
    for key in unsuppressed:
        print(f"not suppressed: {key[0]}:{survivors[key].line}\n{written(key, '')}")
    for key in stale:
        print(f"suppressed, but no survivor any more:\n{written(key, answers[key])}")
    if full and share < REQUIRED_SHARE:
        print(f"fewer than {REQUIRED_SHARE:.0%} were noticed")
        return False
    return not unsuppressed and not stale


def main() -> int:
    options = parse_arguments()
    room = PROJECT / "build" / "mutants"
    shutil.rmtree(room, ignore_errors=True)
    room.mkdir(parents=True)
    workshop = Workshop(PROJECT, options.build.resolve(), room)

    with concurrent.futures.ProcessPoolExecutor(options.workers) as pool:
        paths = sources()
        found = pool.map(find_mutants, paths, [workshop.arguments_for(path) for path in paths])
        existing = [mutant for in_file in found for mutant in in_file]
    earlier = read_results() if options.again or options.go_on else {}
    mutants = choose(options, existing, earlier)
    if options.list:
        for mutant in mutants:
            print(f"{mutant.file}:{mutant.line} {mutant.function}\n  - {mutant.before}\n  + {mutant.after}")
        print(len(mutants), "mutants")
        return 0

    started = time.monotonic()
    unchanged = workshop.build_base(options.workers)
    suite = Suite(unchanged, room)
    print(f"{len(suite.tests)} tests, {sum(test.seconds for test in suite.tests):.0f} s without any change; "
          f"{len(mutants)} mutants to try", flush=True)
    results = {mutant: earlier[mutant] for mutant in existing if mutant in earlier}
    for mutant, verdict in try_all(mutants, workshop, suite, options.workers):
        results[mutant] = verdict
        if options.sample is None:
            write_results(results)
    try:
        Suite(unchanged, room)
    except SuiteFails:
        RESULTS.unlink(missing_ok=True)  # a test that began to fail during the run noticed no mutant
        raise
    good = judge(results, len(results) == len(existing), room)
    print(f"{time.monotonic() - started:.0f} s")
    return 0 if good else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (DoesNotCompile, MalformedAnswer, SuiteFails, ValueError) as error:
        sys.exit(str(error))
