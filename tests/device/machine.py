"""The emulated machine: one QEMU process, its console and its control socket."""

import json
import os
import re
import selectors
import socket
import subprocess
import time

# Far more than is needed, because the host may be busy.
BOOT_SECONDS = 900
JOB_SECONDS = 600


class Machine:
    """Boots, or resumes the saved `state`. Images and sockets are files in `work`; the sockets' names begin with `name`.
    Callers must call `kill`.
    """

    def __init__(self, work, name, state=None):
        self.text = ""
        self._control = os.path.join(work, f"{name}-control.sock")
        self._log = os.path.join(work, "console.log")
        if os.path.exists(self._control):
            os.unlink(self._control)
        command = [
            *("qemu-system-arm", "-M", "virt", "-cpu", "cortex-a7", "-m", "192"),
            *("-display", "none", "-no-reboot", "-nodefaults", "-serial", "stdio"),
            *("-kernel", "vmlinuz", "-initrd", "boot.cpio"),
            *("-append", "console=ttyAMA0 panic=-1 quiet rdinit=/init"),
            *("-qmp", f"unix:{name}-control.sock,server,nowait"),
            *("-blockdev", "driver=file,filename=root.img,node-name=root,read-only=on,locking=off"),
            *("-device", "virtio-blk-device,drive=root,serial=root"),
            *("-blockdev", f"driver=nbd,node-name=data,server.type=unix,server.path={name}-disk.sock"),
            *("-device", "virtio-blk-device,drive=data,serial=data"),
        ]
        if state:
            command += ["-incoming", f"exec:cat {state}"]
        self._process = subprocess.Popen(
            command, cwd=work, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT
        )
        os.set_blocking(self._process.stdout.fileno(), False)
        self._selector = selectors.DefaultSelector()
        self._selector.register(self._process.stdout, selectors.EVENT_READ)

    def kill(self):
        self._process.kill()
        self._process.wait()
        self._receive(0)
        with open(self._log, "a", encoding="utf-8") as log:
            log.write(self.text)

    def say(self, line):
        self._process.stdin.write(line.encode() + b"\n")
        self._process.stdin.flush()

    def _receive(self, timeout):
        """False when the machine has ended."""
        if not self._selector.select(timeout):
            return True
        part = self._process.stdout.read()
        if part:
            self.text += part.decode(errors="replace").replace("\r", "")
        return part != b""

    def until(self, pattern, timeout=JOB_SECONDS, stop=lambda: False):
        """Reads the console until a line matches. Returns None if the machine ends, `stop` is true, or time is over."""
        end = time.monotonic() + timeout
        while True:
            found = pattern and re.search(pattern + r".*\n", self.text, re.M)
            if found or stop() or time.monotonic() > end or not self._receive(0.05):
                return found

    def run_for(self, seconds):
        self.until(None, seconds)

    def resume(self):
        while self._ask("query-status")["status"] == "inmigrate":
            time.sleep(0.02)
        self._ask("cont")

    def save(self, state):
        self._ask("stop")
        self._ask("migrate", uri=f"exec:cat > {state}")
        while (status := self._ask("query-migrate").get("status")) != "completed":
            if status == "failed":
                raise RuntimeError(f"the state cannot be saved to {state}")
            time.sleep(0.05)

    def _ask(self, command, **arguments):
        """One command of QEMU's machine protocol."""
        with socket.socket(socket.AF_UNIX) as control:
            control.settimeout(JOB_SECONDS)
            self._connect(control)
            stream = control.makefile("rw")
            stream.readline()  # the greeting
            for name, values in (("qmp_capabilities", {}), (command, arguments)):
                stream.write(json.dumps({"execute": name, "arguments": values}) + "\n")
                stream.flush()
                answer = {}
                while "return" not in answer:  # skips events
                    answer = json.loads(stream.readline())
                    if "error" in answer:
                        raise RuntimeError(f"{name}: {answer['error']['desc']}")
            return answer["return"]

    def _connect(self, control):
        while True:
            try:
                return control.connect(self._control)
            except (ConnectionRefusedError, FileNotFoundError):
                if self._process.poll() is not None:
                    raise RuntimeError(f"the emulator ended: {self.text or self._process.stdout.read()}") from None
                time.sleep(0.02)
