"""A run whose disk requests are recorded, with the acknowledgements between them."""

import dataclasses

from cuts import DATABASE

ROWS = 25
SETTLED = 5  # the first rows make the file, its table and its journal


@dataclasses.dataclass(frozen=True)
class Acknowledged:
    row: int


@dataclasses.dataclass(frozen=True)
class Idle:
    seconds: float  # since the last acknowledgement


def record(device, setting, idle_seconds=0):
    """The log of a disk (see Disk.log) while the device writes ROWS rows, each after the one before is acknowledged.

    The writer then waits with its file open.
    """
    image = device.image(setting.file_system)
    command = f'rows write {DATABASE} "{setting.pragmas}" {ROWS + 1} wait'
    with device.job(image, setting.file_system, setting.options, command) as (machine, disk):
        for row in range(1, ROWS + 1):
            machine.say("")
            if not machine.until(f"^ack {row}$"):
                raise RuntimeError(f"{setting.name}: row {row} is not acknowledged: {machine.text[-500:]}")
            disk.log.append(Acknowledged(row))
        for quarter in range(1, 4 * idle_seconds + 1):
            machine.run_for(0.25)
            disk.log.append(Idle(quarter / 4))
        disk.cut()
    return disk.log


@dataclasses.dataclass(frozen=True)
class Requests:
    """What one write costs at the disk, on average."""

    writes: float
    flushes: float
    kibibytes: float

    @staticmethod
    def per_row(log):
        part = log[log.index(Acknowledged(SETTLED)) : log.index(Acknowledged(ROWS))]
        rows = ROWS - SETTLED
        written = [len(entry[1]) for entry in part if isinstance(entry, tuple)]
        return Requests(len(written) / rows, part.count(None) / rows, sum(written) / 1024 / rows)
