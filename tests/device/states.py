"""Crash states of a recorded run, each recovered on this machine: by e2fsck, then by SQLite."""

import collections
import dataclasses
import math
import os
import random
import shutil
import sqlite3
import subprocess
import tempfile

from record import Acknowledged, Idle

SECTOR = 512
LAST = 40  # states of the end of a run, which are always checked


def payload(number):
    """The text that tests/device/guest/rows.cpp writes into a row."""
    return chr(ord("a") + number % 26) * (100 + number * 37 % 3000)


class Epoch:
    """The writes between two flushes. Until the second flush, any of their sectors may be on the disk or not."""

    def __init__(self, acknowledged):
        self.writes = []
        # Just before the flush that ends the epoch: the acknowledged rows, and the seconds since the last one.
        self.acknowledged = acknowledged
        self.idle = 0

    def sectors(self):
        """Sector -> contents, oldest first."""
        found = collections.defaultdict(list)
        for offset, data in self.writes:
            for begin in range(0, len(data), SECTOR):
                found[(offset + begin) // SECTOR].append(data[begin : begin + SECTOR])
        return found

    def count(self):
        """The logarithm of the number of states."""
        return sum(math.log10(len(contents) + 1) for contents in self.sectors().values())

    def states(self, rng, drawn):
        """Some of the states: the first n writes for every n, every single write, all writes except one, and `drawn`
        random sets of sectors."""
        indices = range(len(self.writes))
        subsets = {tuple(range(end)) for end in range(len(self.writes) + 1)}
        subsets |= {(index,) for index in indices}
        subsets |= {tuple(other for other in indices if other != index) for index in indices}
        for subset in sorted(subsets):
            yield [self.writes[index] for index in subset]
        if self.writes:
            for _ in range(drawn):
                share = rng.random()
                yield [
                    (sector * SECTOR, rng.choice(contents))
                    for sector, contents in self.sectors().items()
                    if rng.random() < share
                ]


def epochs(log):
    found = [Epoch(0)]
    for entry in log:
        if isinstance(entry, Acknowledged):
            found[-1].acknowledged = entry.row
        elif isinstance(entry, Idle):
            found[-1].idle = entry.seconds
        elif entry is None:
            found.append(Epoch(found[-1].acknowledged))
        else:
            found[-1].writes.append(entry)
    return found


@dataclasses.dataclass
class StateCounts:
    logarithm: float = -math.inf  # of the number of states that the run can leave
    bounded: int = 0  # the number of states that Epoch.states() selects
    checked: int = 0
    lost_last: int = 0
    worse: int = 0
    at_stake: float = 0  # seconds for which the last row could still be lost


class Recovery:
    """Recovers the database from images."""

    def __init__(self, folder):
        self._image = os.path.join(folder, "image")
        self._files = os.path.join(folder, "files")

    def rows(self, image, writes):
        """The number of rows if the database is intact, otherwise None."""
        with open(self._image, "wb") as file:
            file.truncate(len(image.data))
            for begin, end in image.extents():
                file.seek(begin)
                file.write(image.data[begin:end])
            for offset, data in writes:
                file.seek(offset)
                file.write(data)
        if subprocess.run(["e2fsck", "-fy", self._image], capture_output=True, check=False).returncode >= 4:
            return None
        shutil.rmtree(self._files, ignore_errors=True)
        os.mkdir(self._files)
        database = os.path.join(self._files, "test.db")
        dumps = "".join(f"dump /dir/test.db{end} {database}{end}\n" for end in ("", "-journal", "-wal"))
        subprocess.run(["debugfs", "-f", "-", self._image], input=dumps.encode(), capture_output=True, check=False)
        return self._recovered(database)

    @staticmethod
    def _recovered(database):
        connection = sqlite3.connect(database)
        try:
            if connection.execute("PRAGMA integrity_check").fetchall() != [("ok",)]:
                return None
            if not connection.execute("SELECT 1 FROM sqlite_schema WHERE name = 't'").fetchall():
                return 0
            rows = connection.execute("SELECT n, payload FROM t ORDER BY n").fetchall()
            return len(rows) if rows == [(n, payload(n)) for n in range(1, len(rows) + 1)] else None
        except sqlite3.Error:
            return None
        finally:
            connection.close()


class SparseImage:
    """An image, and which of its parts are not empty, so that copying it is quick."""

    CHUNK = 1 << 16

    def __init__(self, data):
        self.data = data
        zeros = bytes(self.CHUNK)
        self._used = {at for at in range(0, len(data), self.CHUNK) if data[at : at + self.CHUNK] != zeros}

    def write(self, offset, data):
        self.data[offset : offset + len(data)] = data
        self._used.update(range(offset - offset % self.CHUNK, offset + len(data), self.CHUNK))

    def extents(self):
        return ((at, at + self.CHUNK) for at in sorted(self._used))


def check(image, log, limit, seed):
    """Recovers and checks up to `limit` states of a run that began with `image`."""
    rng = random.Random(seed)
    outcome = StateCounts()
    found = epochs(log)
    states = [(index, writes) for index, epoch in enumerate(found) for writes in epoch.states(rng, limit // len(found))]
    outcome.bounded = len(states)
    if len(states) > limit:  # keep the last ones, where nothing is written any more
        kept = rng.sample(range(len(states) - LAST), limit - LAST)
        states = [states[index] for index in sorted(kept)] + states[-LAST:]
    most = max(epoch.count() for epoch in found)
    outcome.logarithm = most + math.log10(sum(10 ** (epoch.count() - most) for epoch in found))

    image = SparseImage(bytearray(image))
    reached = 0
    with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
        recovery = Recovery(folder)
        for index, writes in states:
            for epoch in found[reached:index]:
                for offset, data in epoch.writes:
                    image.write(offset, data)
            reached = index
            rows = recovery.rows(image, writes)
            acknowledged = found[index].acknowledged
            outcome.checked += 1
            if rows is None or rows < acknowledged - 1 or rows > acknowledged + 1:
                outcome.worse += 1
            elif rows < acknowledged:
                outcome.lost_last += 1
                outcome.at_stake = max(outcome.at_stake, found[index].idle)
    return outcome
