#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Records the elementary stream of a PID until Ctrl-C or SIGTERM, also across restarts of the service: recorder.py PID FILE"""
import asyncio
import signal
import sys
from typing import BinaryIO

import zviptv


async def report(tv: zviptv.aio.Television) -> None:
    """Prints whether the service is there, whenever that changes."""
    async for is_available in tv.availability():
        print("the service is there" if is_available else "no service; waiting for it", flush=True)


async def record(stream: zviptv.aio.Stream[zviptv.PesPacket], file: BinaryIO) -> None:
    """Writes all payloads. The stream goes on by itself when the service is back."""
    async for packet in stream:
        file.write(packet.payload)
        file.flush()


async def main(pid: int, name: str) -> None:
    """Records until a signal arrives. Raises OSError if the file cannot be written."""
    with open(name, "wb") as file:
        async with zviptv.aio.Television() as tv, tv.pes(pid) as stream:
            tasks = asyncio.gather(report(tv), record(stream, file))
            for number in (signal.SIGINT, signal.SIGTERM):
                asyncio.get_running_loop().add_signal_handler(number, tasks.cancel)
            try:
                await tasks
            except asyncio.CancelledError:
                pass
            counters = stream.counters
            print(f"{counters.packets} packets, {counters.gaps} gaps, {counters.dropped} dropped, {file.tell()} bytes written")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit("usage: recorder.py PID FILE; zviptvctl audio list prints PIDs")
    try:
        asyncio.run(main(int(sys.argv[1], 0), sys.argv[2]))
    except (OSError, ValueError) as error:
        sys.exit(f"recorder.py: cannot record PID {sys.argv[1]} to {sys.argv[2]}: {error}")
