"""Rounds of writing until the power is cut, each checked after the machine has resumed."""

import collections
import random
import re
import subprocess

from settings import ANYTHING, LAST_ROW, NOTHING

DATABASE = "/data/dir/test.db"
# When the power is cut: inside a call, after a number of requests to the disk; at a random time; or up to 4 s after the
# last acknowledgement, when nothing is written. ext4 writes unsynced data only after 5 s.
INSIDE, TIMED, IDLE = "inside a call", "at a time", "idle"
KINDS = (INSIDE, IDLE, TIMED)
# Linux 6.1 does not mount ext4 if only the first sector of the last commit block reached the disk.
REJECTED_JOURNAL = r"JBD2: journal transaction \d+ on \S+ is corrupt"


def _last(word, text, otherwise):
    found = re.findall(rf"^{word} (\d+)$", text, re.M)
    return int(found[-1]) if found else otherwise


def run_rounds(device, cuts, seed, setting):
    """The tally and the findings of a setting."""
    rounds = Rounds(device, setting, seed)
    rounds.run(cuts)
    return rounds.tally, rounds.findings


class Rounds:
    """The rounds of one setting. `tally` counts what happened. `findings` lists what must not happen."""

    def __init__(self, device, setting, seed):
        self.tally = collections.Counter()
        self.findings = []
        self._device = device
        self._setting = setting
        self._rng = random.Random(f"{setting.name} {seed}")
        self._start_over()

    def _start_over(self):
        self._image = self._flushed = self._device.image(self._setting.file_system)
        self._acknowledged = self._begun = 0

    def run(self, cuts):
        while self.tally["cuts"] < cuts or self._must_lose() and self.tally["cuts"] < 4 * cuts:
            kinds = (INSIDE,) if self._setting.tears else KINDS[1:] if self._setting.is_flash else KINDS
            self._round(kinds[self.tally["cuts"] % len(kinds)])
        self._round(None)
        if self._must_lose():
            self.findings.append("nothing was lost, so the cuts prove nothing")

    def _must_lose(self):
        """Whether the setting allows a loss and no cut has caused one yet. A cut causes it by chance."""
        return self._setting.may_lose != NOTHING and not self.tally["lost the last row"] + self.tally["lost more"]

    def _round(self, kind):
        """Checks the rows that the previous cut has left. Then writes and cuts the power, unless `kind` is None."""
        rows = self._rng.randint(1, 12) if kind == IDLE else 100000
        command = (
            f'(ls /data/dir; rows check {DATABASE} && echo "guest: writing" && '
            f'rows write {DATABASE} "{self._setting.pragmas}" {rows if kind else 0}; echo "guest: idle") & '
            "read -r cut; killall -STOP rows; "
            'dd if=/dev/mtd0 of=/dev/disk-data bs=1M conv=fsync; echo "guest: flash read"; sleep 100000'
        )
        with self._device.job(self._image, self._setting.file_system, self._setting.options, command) as job:
            machine, disk = job
            ready = machine.until("^guest: (writing|idle)")
            rejected = re.search(REJECTED_JOURNAL, machine.text)
            if not rejected:
                if not self._check(machine.text) or not ready:
                    self._start_over()
                    return
                if kind is None:
                    return
                self._cut(kind, machine, disk)
        if rejected:
            self._repair()
            self._round(kind)  # again
            return
        written = machine.text.split("guest: writing")[1]
        self._acknowledged = _last("ack", written, self._found)
        self._begun = _last("begin", written, self._found)
        self._flushed = bytes(disk.image)
        unflushed, lost = disk.tear() if self._setting.tears else disk.lose(self._rng)
        self.tally.update({"cuts": 1, "unflushed sectors": unflushed, "lost sectors": lost})
        self.tally["cuts that lost sectors"] += lost > 0
        self.tally["acknowledged"] += self._acknowledged - self._found

    def _cut(self, kind, machine, disk):
        if kind == INSIDE:
            disk.cut_after(self._rng.randint(1, 300))
            machine.until("^guest: idle", timeout=8, stop=disk.is_off.is_set)  # some settings send few requests
        elif kind == IDLE:
            machine.until("^guest: idle")
            machine.run_for(self._rng.uniform(0, 4))
        else:
            machine.run_for(self._rng.uniform(0.1, 3))
        if self._setting.is_flash:  # the next round gets only the content that the chip holds now
            machine.say("cut")
            machine.until("^guest: flash read")
        disk.cut()

    def _check(self, text):
        """Whether the file is intact, so that the next round can write to it."""
        checked = re.search(r"^check (.*) rows (\d+) last (\d+) good (\d+)$", text, re.M)
        self._found = int(checked[3]) if checked else 0
        if re.search(r"test\.db-(journal|wal)", text.split("guest: writing")[0]):
            self.tally["left a journal"] += 1
        intact = checked and checked[1] == "ok" and checked[2] == checked[3] == checked[4]
        if not intact or not self._acknowledged - 1 <= self._found <= max(self._acknowledged, self._begun):
            self._lost("lost more", text, self._setting.may_lose == ANYTHING)
        elif self._found < self._acknowledged:
            self._lost("lost the last row", text, self._setting.may_lose != NOTHING)
        return intact

    def _lost(self, what, text, is_allowed):
        self.tally[what] += 1
        if not is_allowed:
            flushed = self._device.keep("flushed", self._flushed)
            cut = self._device.keep("cut", self._image)
            self.findings.append(f"{what} of {self._acknowledged} rows (see {flushed} and {cut}): {text[-300:]}")

    def _repair(self):
        """Does what Debian does before it mounts a file system."""
        self.tally["needed e2fsck"] += 1
        path = self._device.keep("rejected", self._image)
        fsck = subprocess.run(["e2fsck", "-p", path], capture_output=True, text=True, check=False)
        if fsck.returncode >= 4:
            raise RuntimeError(f"e2fsck does not repair {path}: {fsck.stdout}")
        with open(path, "rb") as file:
            self._image = bytearray(file.read())
