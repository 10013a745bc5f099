#!/usr/bin/env python3
"""Prints a JSON object that describes this machine and the commit, for docs/performance.md."""

import json
import os
import pathlib
import platform
import re
import subprocess
import time

processor = re.search(r"(?m)^(?:model name|Hardware|Model)\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
distribution = platform.freedesktop_os_release()["PRETTY_NAME"]
system = platform.uname()
commit = subprocess.run(["git", "describe", "--always", "--dirty"], capture_output=True, text=True)
print(json.dumps({
    "date": time.strftime("%Y-%m-%d %H:%M UTC", time.gmtime()),
    "commit": commit.stdout.strip() or "unknown",
    "load": " ".join(f"{load:.2f}" for load in os.getloadavg()),
    "processor": processor[1] if processor else "unknown",
    "cores": os.cpu_count(),
    "system": f"{distribution}, {system.system} {system.release.split('-')[0]}, {system.machine}"}))
