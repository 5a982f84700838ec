# SPDX-License-Identifier: MIT
"""Describes the machine, without which the figures mean nothing."""

import os
import pathlib
import platform
import re
import shutil
import subprocess
import time

PACKAGES = ("libglib2.0-0", "dbus-daemon", "libdbus-1-3", "libsystemd0", "libsdbus-c++1", "libc6")
ROOT = pathlib.Path(__file__).parent.parent


def processor():
    with open("/proc/cpuinfo") as file:
        return next((line.split(":", 1)[1].strip() for line in file if line.startswith("model name")), "unknown")


def version(package):
    run = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], capture_output=True, text=True,
                         check=False)
    return run.stdout or "not a Debian package here"


def busy(patience):
    """The load, if it stays above half of the processors for `patience` seconds, which the load of a finished build
    does not; otherwise None."""
    end = time.monotonic() + patience
    while (load := os.getloadavg()[0]) > os.cpu_count() / 2:
        if time.monotonic() > end:
            return load
        time.sleep(1)
    return None


def revision():
    """The measured commit; ends in -dirty if the sources have uncommitted changes."""
    git = shutil.which("git")
    if git is None:
        return "unknown: git is not installed"
    run = subprocess.run([git, "-c", "safe.directory=*", "-C", ROOT, "describe", "--always", "--dirty"],
                         capture_output=True, text=True, check=False)
    return run.stdout.strip() or "unknown: not a git checkout"


def is_committed():
    return re.fullmatch(r"[0-9a-f]{7,40}", revision()) is not None


def compiler(build):
    """The compiler of the build."""
    cache = pathlib.Path(build, "CMakeCache.txt").read_text()
    path = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.+)$", cache, re.MULTILINE)[1]
    return subprocess.run([path, "--version"], capture_output=True, text=True, check=True).stdout.splitlines()[0]


def describe(build):
    return {"revision": revision(), "compiler": compiler(build),
            "date": time.strftime("%-d %B %Y"), "processor": processor(), "cores": os.cpu_count(),
            "kernel": platform.release(), "load": round(os.getloadavg()[0], 2),
            "versions": {package: version(package) for package in PACKAGES}}
