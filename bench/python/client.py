# SPDX-License-Identifier: MIT
"""A client in Python. It answers the lines that LayerClient.cpp answers: client.py wait|asyncio DESCRIPTOR-OF-THE-PIPE"""

import asyncio
import json
import os
import sys
import time

import zviptv

PIPE = int(sys.argv[2])


class Block:
    """The times of a block of calls or packets."""

    def __init__(self):
        self.processor = time.process_time()
        self.first = time.monotonic()

    def answer(self):
        print(json.dumps({"seconds": time.monotonic() - self.first, "cpu": time.process_time() - self.processor}), flush=True)

    def took(self, number, packet, count, size, batch):
        """Takes the packet of this number, from 1. Returns whether it is the last one."""
        if number == 1:
            self.first = time.monotonic()
        if len(packet.data) != size:
            raise RuntimeError("a received packet is damaged")
        if number % batch == 0:
            os.write(PIPE, b"+")
        return number == count


def wait():
    with zviptv.Television() as tv:
        for line in sys.stdin:
            block = Block()
            command, count, *shape = line.split()[0], *map(int, line.split()[1:])
            if command == "call":
                for _ in range(count):
                    tv.player.mute_audio(True)
            else:
                with tv.pes() as packets:
                    for number, packet in enumerate(packets, 1):
                        if block.took(number, packet, count, *shape):
                            break
            block.answer()


async def coroutines():
    async with zviptv.aio.Television() as tv:
        while line := await asyncio.to_thread(sys.stdin.readline):
            block = Block()
            command, count, *shape = line.split()[0], *map(int, line.split()[1:])
            if command == "call":
                for _ in range(count):
                    await tv.player.mute_audio(True)
            else:
                number = 0
                async for packet in tv.pes():
                    number += 1
                    if block.took(number, packet, count, *shape):
                        break
            block.answer()


if sys.argv[1] == "wait":
    wait()
else:
    asyncio.run(coroutines())
