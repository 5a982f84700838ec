# SPDX-License-Identifier: MIT
"""A client in Python, which obeys the same lines as LayerClient.cpp: client.py wait|asyncio DESCRIPTOR-OF-THE-PIPE"""

import asyncio
import json
import os
import sys
import time

import zviptv

PIPE = int(sys.argv[2])


class Clock:
    """The time from the first packet, or the start, to the last one."""

    def __init__(self):
        self.processor = time.process_time()
        self.first = None

    def answer(self, first):
        print(json.dumps({"seconds": time.monotonic() - first, "cpu": time.process_time() - self.processor}), flush=True)


def took(number, packet, size, batch):
    """What a reader does with the packet of this number, from 1."""
    if len(packet.data) != size:
        raise RuntimeError("a packet has arrived damaged")
    if number % batch == 0:
        os.write(PIPE, b"+")


def wait():
    with zviptv.Television() as tv:
        for line in sys.stdin:
            command, *numbers = line.split()
            count, size, batch = (*map(int, numbers), 0, 1)[:3]
            clock, first = Clock(), time.monotonic()
            if command == "call":
                for _ in range(count):
                    tv.player.mute_audio(True)
            else:
                with tv.pes() as packets:
                    for number in range(1, count + 1):
                        packet = next(packets)
                        first = time.monotonic() if number == 1 else first
                        took(number, packet, size, batch)
                    if packets.counters.dropped:
                        raise RuntimeError("packets were dropped")
            clock.answer(first)


async def coroutines():
    async with zviptv.aio.Television() as tv:
        while line := await asyncio.to_thread(sys.stdin.readline):
            command, *numbers = line.split()
            count, size, batch = (*map(int, numbers), 0, 1)[:3]
            clock, first = Clock(), time.monotonic()
            if command == "call":
                for _ in range(count):
                    await tv.player.mute_audio(True)
            else:
                number = 0
                async with tv.pes() as packets:
                    async for packet in packets:
                        number += 1
                        first = time.monotonic() if number == 1 else first
                        took(number, packet, size, batch)
                        if number == count:
                            break
                    if packets.counters.dropped:
                        raise RuntimeError("packets were dropped")
            clock.answer(first)


if sys.argv[1] == "wait":
    wait()
else:
    asyncio.run(coroutines())
