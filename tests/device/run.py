"""run.py FOLDER CUTS STATES PATTERN: the checks of scripts/device.sh, run with the images in FOLDER."""

import functools
import multiprocessing
import os
import re
import signal
import subprocess
import sys
import time

import states
from cuts import run_rounds
from device import Device
from figures import FIGURES
from record import Requests, record
from settings import ANYTHING, LAST_ROW, NOTHING, SETTINGS

CUTS_ROW = "{:36}{:>5}{:>8}{:>11}{:>7}{:>9}{:>8}{:>12}{:>9}{:>8}"
STATES_ROW = "{:36}{:>7}{:>9}{:>7}{:>8}{:>9}{:>9}{:>11}{:>7}{:>9}"


class Results:
    def __init__(self):
        self.passed = self.failed = 0
        self.figures = []  # arguments of scripts/record.sh

    def count(self, name, findings):
        if not findings:
            self.passed += 1
            return
        self.failed += 1
        for finding in findings:
            print(f"    FAILED: {name}: {finding}", flush=True)

    def add_figures(self, page, key, *cells):
        self.figures.append([f"docs/{page}.md", key, *map(str, cells)])

    def record_figures(self):
        if os.environ.get("TKOSQLLITE_FIGURES") and not self.failed:
            for arguments in self.figures:
                subprocess.run(["scripts/record.sh", *arguments], check=True)


def cut_power(device, settings, cuts, seed, results):
    print("\n== Power cuts, the acknowledged rows that they took, and the proof that they took something")
    print(CUTS_ROW.format(*"setting cuts rows lost-last worse with-a needed unflushed sectors cuts".split()))
    print(CUTS_ROW.format(*[""] * 5, "journal", "e2fsck", "sectors", "lost", "losing"))
    losing = journals = 0
    with multiprocessing.Pool() as pool:
        rounds = pool.imap(functools.partial(run_rounds, device, cuts, seed), settings)
        for setting, (tally, findings) in zip(settings, rounds):
            losing += tally["cuts that lost sectors"]
            journals += tally["left a journal"]
            shown = ("cuts", "acknowledged", "lost the last row", "lost more", "left a journal", "needed e2fsck")
            results.add_figures("reliability", setting.name, *(tally[column] for column in shown))
            shown += ("unflushed sectors", "lost sectors", "cuts that lost sectors")
            print(CUTS_ROW.format(setting.name, *(tally[column] for column in shown)), flush=True)
            results.count(setting.name, findings)
        # Without this, the pool ends its processes with SIGTERM, and waits forever if one misses the signal.
        pool.close()
        pool.join()
    results.count("proof", [] if losing else ["no cut lost a sector"])
    results.count("proof", [] if journals else ["no cut left a journal"])


def check_states(device, settings, limit, seed, results):
    print("\n== Requests of one row of about 700 bytes at the disk, and the crash states of a recorded run")
    print(STATES_ROW.format(*"setting writes flushes KiB states bounded checked lost-last worse for".split()))
    for setting in settings:
        if setting.is_flash or setting.tears:
            continue
        # The last row of a run may be lost until ext4 has written its own journal, after 5 s.
        log = record(device, setting, idle_seconds=8 if setting.file_system == "ext4" else 0)
        cost = Requests.per_row(log)
        row = [setting.name, *(f"{figure:.1f}" for figure in (cost.writes, cost.flushes, cost.kibibytes))]
        if setting.file_system != "ext4":
            print(STATES_ROW.format(*row, *("-" * 6)))
            continue
        found = states.check(device.image("ext4"), log, limit, seed)
        key = f"`{setting.pragmas}`" if setting.pragmas else setting.name.removeprefix("ext4, ")
        if setting.may_lose != ANYTHING:
            results.add_figures("guide/files", key, *row[1:])
        states_row = [f"10^{found.logarithm:.0f}", found.checked, found.lost_last, found.worse]
        states_row += [f"{found.at_stake:.2f} s" if found.lost_last else "-"]
        results.add_figures("reliability", key, *states_row)
        states_row.insert(1, found.bounded)
        print(STATES_ROW.format(*row, *states_row), flush=True)
        results.count(f"states, {setting.name}", state_findings(setting, found))


def state_findings(setting, found):
    findings = []
    if setting.may_lose != ANYTHING and found.worse:
        findings.append(f"{found.worse} states are damaged or lost more than the last row")
    if setting.may_lose == NOTHING and found.lost_last:
        findings.append(f"{found.lost_last} states lost the last row")
    if setting.may_lose != NOTHING and not found.lost_last + found.worse:
        findings.append("no state lost a row, so the states prove nothing")
    if setting.may_lose == LAST_ROW and not 4 <= found.at_stake <= 7:
        findings.append(f"the last row could be lost for {found.at_stake:.2f} s, not for about 5 s")
    return findings


def show_figures(device, results):
    print("\n== The device")
    for figure in FIGURES:
        for name, holds, said in figure(device):
            print(f"{name:48}{said}", flush=True)
            results.count(name, [] if holds else [f"is not so: {said}"])


def main():
    folder, cuts, limit, pattern = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), sys.argv[4]
    seed = os.environ.get("TKOSQLLITE_DEVICE_SEED", "1")
    settings = [setting for setting in SETTINGS if re.search(pattern, setting.name)]
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that the machine is killed
    begin = time.monotonic()
    results = Results()
    device = Device(folder)
    print(f"== The machine booted in {time.monotonic() - begin:.0f} s")
    if len(settings) == len(SETTINGS):
        show_figures(device, results)
    check_states(device, settings, limit, seed, results)
    cut_power(device, settings, cuts, seed, results)
    results.record_figures()
    print(f"{results.passed} passed, {results.failed} failed")
    return results.failed != 0


if __name__ == "__main__":
    sys.exit(main())
