# SPDX-License-Identifier: MIT
"""The processes that another one has started. They can end at any time."""
from pathlib import Path


def read_proc(file):
    """The content of a file of a process or thread, or nothing if that has ended."""
    try:
        return file.read_bytes()
    except (FileNotFoundError, ProcessLookupError):
        return b""


def children(pid):
    """Pid and command line of each child of a process."""
    found = []
    for task in Path(f"/proc/{pid}/task").glob("*/children"):
        for child in read_proc(task).split():
            command = read_proc(Path("/proc", child.decode(), "cmdline")).split(b"\0")
            found.append((int(child), [part.decode(errors="replace") for part in command]))
    return found


def descendants(pid):
    """Pid and command line of each child of a process, of each of their children, and so on."""
    for child, command in children(pid):
        yield child, command
        yield from descendants(child)
