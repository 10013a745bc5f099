"""A run whose disk requests are recorded, with the acknowledgements between them."""

import dataclasses
import re

from cuts import DATABASE

ROWS = 25
SETTLED = 5  # the first rows make the file, its table and its journal


@dataclasses.dataclass(frozen=True)
class Acknowledged:
    row: int


@dataclasses.dataclass(frozen=True)
class Idle:
    seconds: float  # of the device's clock since the last acknowledgement


def record(device, setting, idle_seconds=0):
    """The log of a disk (see Disk.log) while the device writes ROWS rows, each after the one before is acknowledged.

    The writer then waits with its file open. The device prints its time four times a second, because a busy host delays
    the device and the delayed writes of its file system.
    """
    image = device.image(setting.file_system)
    clock = 'while read -r time _ </proc/uptime; do echo "clock $time"; sleep 0.25; done'
    command = f'({clock}) & rows write {DATABASE} "{setting.pragmas}" {ROWS + 1} wait'
    with device.job(image, setting.file_system, setting.options, command) as (machine, disk):
        for row in range(1, ROWS + 1):
            machine.say("")
            if not machine.until(f"^ack {row}$"):
                raise RuntimeError(f"{setting.name}: row {row} is not acknowledged: {machine.text[-500:]}")
            disk.log.append(Acknowledged(row))
        begin = last = _clock(machine)
        while last - begin < idle_seconds:
            machine.until(None, stop=lambda: _clock(machine) > last)
            if _clock(machine) == last:
                raise RuntimeError(f"{setting.name}: the device has stopped: {machine.text[-500:]}")
            last = _clock(machine)
            disk.log.append(Idle(last - begin))
        disk.cut()
    return disk.log


def _clock(machine):
    """The time on the device's clock, as the device printed it last."""
    return float(re.findall(r"^clock (\d+\.\d+)$", machine.text, re.M)[-1])


@dataclasses.dataclass(frozen=True)
class Requests:
    """The average number of disk requests, and their size, for one row."""

    writes: float
    flushes: float
    kibibytes: float

    @staticmethod
    def per_row(log):
        part = log[log.index(Acknowledged(SETTLED)) : log.index(Acknowledged(ROWS))]
        rows = ROWS - SETTLED
        written = [len(entry[1]) for entry in part if isinstance(entry, tuple)]
        return Requests(len(written) / rows, part.count(None) / rows, sum(written) / 1024 / rows)
