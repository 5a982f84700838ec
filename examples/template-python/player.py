#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The application: mutes the television, or unlocks its programme."""
import sys
import time
from typing import Callable

import zviptv


def mute(tv: zviptv.Television, on: bool) -> None:
    """Mutes the sound or turns it on again. Tries a second time if the first attempt fails."""
    try:
        tv.player.mute_audio(on)
    except zviptv.Failure:
        tv.player.mute_audio(on)


def unlock_when_locked(tv: zviptv.Television, within: float) -> None:
    """Waits until the programme is locked, and unlocks it, as after entering the PIN.

    Raises TimeoutError if it is not locked within that number of seconds.
    """
    end = time.monotonic() + within
    while not tv.broadcast.get_rating_lock_state():
        if time.monotonic() > end:
            raise TimeoutError("the programme was not locked")
        time.sleep(0.05)
    tv.broadcast.un_mute_by_rating_pin()


def main(words: list[str]) -> int:
    """Does what the command line says; returns the exit status."""
    actions: dict[str, Callable[[zviptv.Television], None]] = {
        "mute": lambda tv: mute(tv, True), "unlock": lambda tv: unlock_when_locked(tv, 10)}
    if len(words) != 1 or words[0] not in actions:
        print("usage: player.py mute|unlock", file=sys.stderr)
        return 2
    try:
        with zviptv.Television() as tv:
            actions[words[0]](tv)
    except (zviptv.Failure, TimeoutError) as failure:
        print(f"failed: {failure}")
        return 1
    print("done")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
