#!/usr/bin/env python3
"""Changes the library in one place at a time and reports the changes that no test notices; see README.md."""

import argparse
import collections
import concurrent.futures
import json
import pathlib
import random
import shutil
import sys
import time

from building import Builder, DoesNotCompile, TestDoesNotCompile
from mutations import Key, Mutant, mutants_of
from suite import Suite, SuiteFails, scratch
from suppressions import MalformedSuppression, read_suppressions, written

PROJECT = pathlib.Path(__file__).resolve().parents[2]
SUPPRESSIONS = PROJECT / "tests" / "mutants" / "suppressions.txt"
RESULTS = PROJECT / "build" / "mutants.json"
REQUIRED_SHARE = 0.97


def parse_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path, help="the build to work beside")
    parser.add_argument("--sample", type=int, metavar="N", help="try only N of the mutants, chosen at random")
    parser.add_argument("--seed", type=int, metavar="S", help="choose the same sample again")
    parser.add_argument("--only", nargs="+", default=[""], metavar="PATH",
                        help="try only the mutants of files whose path contains one of these")
    parser.add_argument("--again", action="store_true", help="try only those that survived before")
    parser.add_argument("--continue", action="store_true", dest="go_on", help="try only those not tried before")
    parser.add_argument("--workers", type=int, default=2, metavar="N", help="how many to try at once (2)")
    parser.add_argument("--list", action="store_true", help="only print what would be tried")
    return parser.parse_args()


def find_mutants(path: pathlib.Path, arguments: list[str]) -> list[Mutant]:
    return mutants_of(path, str(path.relative_to(PROJECT)), arguments)


def choose(options: argparse.Namespace, mutants: list[Mutant], earlier: dict[Key, str]) -> list[Mutant]:
    chosen = [mutant for mutant in mutants if any(path in mutant.key[0] for path in options.only)]
    if options.go_on:
        chosen = [mutant for mutant in chosen if mutant.key not in earlier]
    if options.again:
        chosen = [mutant for mutant in chosen if earlier.get(mutant.key) == "survived"]
    if options.sample is None:
        return chosen
    # A suppressed mutant would survive again and take the longest. Only a full run checks that it still survives.
    suppressed = read_suppressions(SUPPRESSIONS)
    chosen = [mutant for mutant in chosen if mutant.key not in suppressed]
    seed = random.randrange(1_000_000) if options.seed is None else options.seed
    print(f"a sample of {options.sample} of {len(chosen)} mutants; again with --seed {seed}", flush=True)
    return random.Random(seed).sample(chosen, min(options.sample, len(chosen)))


def try_mutant(mutant: Mutant, builder: Builder, suite: Suite) -> str:
    found = "survived"
    for whole in (False, True) if mutant.key[0].endswith(".h") else (False,):
        with scratch(builder.work) as directory:
            try:
                found = suite.notices(mutant.key[0], builder.build_mutant(mutant, directory, whole))
            except DoesNotCompile:
                return "not compiling"
            except TestDoesNotCompile:
                return "killed"
        if found != "survived":
            break
    return found


def shown(mutant: Mutant) -> str:
    file, function, before, after, _ = mutant.key
    return f"{file}:{mutant.line} {function}\n  - {before}\n  + {after}"


def try_all(mutants: list[Mutant], builder: Builder, suite: Suite, workers: int, results: dict[Key, str],
            keep: bool) -> None:
    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        running = {pool.submit(try_mutant, mutant, builder, suite): mutant for mutant in mutants}
        for tried, future in enumerate(concurrent.futures.as_completed(running), 1):
            mutant = running[future]
            results[mutant.key] = future.result()
            if future.result() == "survived":
                print(f"survived: {shown(mutant)}", flush=True)
            if tried % 50 == 0:
                print(f"{tried} of {len(mutants)} tried", flush=True)
            if keep:
                complete = RESULTS.with_suffix(".new")  # if the run is interrupted, the old results stay complete
                complete.write_text(json.dumps(list(results.items()), indent=1))
                complete.replace(RESULTS)


def judge(results: dict[Key, str], full: bool) -> bool:
    suppressions = read_suppressions(SUPPRESSIONS)
    survivors = [key for key, found in results.items() if found == "survived"]
    unsuppressed = [key for key in survivors if key not in suppressions]
    stale = [key for key in suppressions if key not in survivors] if full else []
    counts = collections.Counter(results.values())
    compiled = len(results) - counts["not compiling"]
    share = (counts["killed"] + counts["timed out"]) / compiled if compiled else 1.0
    print(f"{len(results)} mutants: {counts['killed']} killed, {counts['timed out']} timed out, "
          f"{counts['not compiling']} not compiling, {counts['survived']} survived "
          f"({counts['survived'] - len(unsuppressed)} of them suppressed); {share:.1%} of those that compile were noticed")
    for key in unsuppressed:
        print(f"not suppressed:\n{written(key, '')}")
    for key in stale:
        print(f"suppressed, but no survivor any more:\n{written(key, suppressions[key])}")
    if full and share < REQUIRED_SHARE:
        print(f"fewer than {REQUIRED_SHARE:.0%} were noticed")
        return False
    return not unsuppressed and not stale


def main() -> int:
    options = parse_arguments()
    work = PROJECT / "build" / "mutants"
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    builder = Builder(PROJECT, options.build.resolve(), work)

    paths = sorted(path for folder in ("include", "src") for ending in ("*.h", "*.cpp")
                   for path in (PROJECT / folder).rglob(ending))
    with concurrent.futures.ProcessPoolExecutor(options.workers) as pool:
        found = pool.map(find_mutants, paths, [builder.arguments_for(path) for path in paths])
        existing = [mutant for in_file in found for mutant in in_file]
    keys = {mutant.key for mutant in existing}
    results: dict[Key, str] = {}
    if (options.again or options.go_on) and RESULTS.exists():
        earlier = {(*key,): found for key, found in json.loads(RESULTS.read_text())}
        results = {key: found for key, found in earlier.items() if key in keys}
    mutants = choose(options, existing, results)
    if options.list:
        print(*map(shown, mutants), f"{len(mutants)} mutants", sep="\n")
        return 0

    started = time.monotonic()
    unchanged = builder.build_base(options.workers)
    suite = Suite(unchanged, work)
    print(f"{len(suite.tests)} tests, {sum(test.seconds for test in suite.tests):.0f} s without any change; "
          f"{len(mutants)} mutants to try", flush=True)
    try_all(mutants, builder, suite, options.workers, results, keep=options.sample is None)
    try:
        Suite(unchanged, work)
    except SuiteFails:
        RESULTS.unlink(missing_ok=True)  # a test that began to fail during the run noticed no mutant
        raise
    good = judge(results, len(results) == len(existing))
    print(f"{time.monotonic() - started:.0f} s")
    return 0 if good else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (DoesNotCompile, MalformedSuppression, SuiteFails, ValueError) as error:
        sys.exit(str(error))
