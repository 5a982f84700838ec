#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The application: mutes the television, or unlocks its programme."""
import json
import subprocess
import sys
import time
from typing import Callable


class Failed(Exception):
    """The service is gone, or has refused."""


def ask(*words: str) -> dict[str, object]:
    """Runs zviptvctl and returns its answer."""
    done = subprocess.run(["zviptvctl", "--json", *words], capture_output=True, text=True, check=False)
    answer = dict(json.loads(done.stdout or "{}"))
    if done.returncode != 0:
        raise Failed(str(answer.get("error", done.stderr.strip())))
    return answer


def mute(on: bool) -> None:
    """Mutes the sound or turns it on again. Tries a second time if the first attempt fails."""
    try:
        ask("mute", "audio", "on" if on else "off")
    except Failed:
        ask("mute", "audio", "on" if on else "off")


def unlock_when_locked(within: float) -> None:
    """Waits until the programme is locked, and unlocks it, as after entering the PIN."""
    end = time.monotonic() + within
    while not ask("rating")["programmeLocked"]:
        if time.monotonic() > end:
            raise Failed("the programme was not locked")
        time.sleep(0.05)
    ask("unlock", "pin")


def main(words: list[str]) -> int:
    """Does what the command line says; returns the exit status."""
    actions: dict[str, Callable[[], None]] = {"mute": lambda: mute(True), "unlock": lambda: unlock_when_locked(10)}
    if len(words) != 1 or words[0] not in actions:
        print("usage: player.py mute|unlock", file=sys.stderr)
        return 2
    try:
        actions[words[0]]()
    except Failed as failure:
        print(f"failed: {failure}")
        return 1
    print("done")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
