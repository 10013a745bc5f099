"""The device: its images, its saved state, and the jobs that run on it."""

import contextlib
import multiprocessing
import os

from disk import Disk
from machine import BOOT_SECONDS, Machine


# The number of bytes that the disk writes completely or not at all. f2fs needs this for its blocks of 4 KiB. One
# setting tears such a block.
SECTORS = {"ext4": 512, "f2fs": 4096, "ubifs": 512}


def _process():
    return multiprocessing.current_process().name


class Device:
    """Boots one machine and saves its state; every job resumes that state with a separate disk image. Jobs may run at the
    same time in several processes.
    """

    def __init__(self, work):
        self._work = work
        self._state = "state"
        open(os.path.join(work, "console.log"), "wb").close()
        with self._machine(self.image("ext4"), "ext4") as (machine, _):
            if not machine.until("^guest: waiting", BOOT_SECONDS):
                raise RuntimeError(f"the machine does not boot: {machine.text[-500:]}")
            machine.save(self._state)

    def image(self, file_system):
        with open(os.path.join(self._work, f"{file_system}.img"), "rb") as file:
            return bytearray(file.read())

    def keep(self, name, image):
        """Writes an image to a file of this process. Returns its path."""
        path = os.path.join(self._work, f"{_process()}-{name}.img")
        with open(path, "wb") as file:
            file.write(image)
        return path

    @contextlib.contextmanager
    def job(self, image, file_system, options, command):
        """A machine that runs a command with the image mounted on /data, and its disk."""
        with self._machine(image, file_system, self._state) as (machine, disk):
            machine.resume()
            machine.say(f"{file_system} {options} {command}")
            yield machine, disk

    def output(self, command, image=None, file_system="ext4"):
        """Runs a command to its end, and returns what it prints."""
        with self.job(image or self.image(file_system), file_system, "rw", command) as (machine, _):
            if not machine.until("^guest: done", 600):
                raise RuntimeError(f"{command} does not end: {machine.text[-500:]}")
            return machine.text.split("guest: mounted\n")[1].split("guest: done")[0]

    @contextlib.contextmanager
    def _machine(self, image, file_system, state=None):
        disk = Disk(os.path.join(self._work, f"{_process()}-disk.sock"), image, SECTORS[file_system])
        disk.start()
        machine = None
        try:
            machine = Machine(self._work, _process(), state)
            yield machine, disk
        finally:
            disk.close()
            if machine:
                machine.kill()
