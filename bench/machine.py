"""What was measured on: the figures are worth nothing without it."""

import os
import platform
import subprocess
import time

PACKAGES = ("libglib2.0-0", "dbus-daemon", "libdbus-1-3", "libsystemd0", "libsdbus-c++1", "libc6", "g++-12")


def processor():
    with open("/proc/cpuinfo") as file:
        return next((line.split(":", 1)[1].strip() for line in file if line.startswith("model name")), "unknown")


def version(package):
    run = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], capture_output=True, text=True,
                         check=False)
    return run.stdout or "not a Debian package here"


def busy(patience):
    """The load if it stays above half of the processors for that many seconds, in which a build's has time to fall; None
    if it does not."""
    end = time.monotonic() + patience
    while (load := os.getloadavg()[0]) > os.cpu_count() / 2:
        if time.monotonic() > end:
            return load
        time.sleep(1)
    return None


def describe():
    return {"date": time.strftime("%-d %B %Y"), "processor": processor(), "cores": os.cpu_count(),
            "kernel": platform.release(), "load": round(os.getloadavg()[0], 2),
            "versions": {package: version(package) for package in PACKAGES}}
