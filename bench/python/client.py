# SPDX-License-Identifier: MIT
"""A client in Python, which answers each line "call COUNT" with a line of JSON: client.py wait|asyncio"""

import asyncio
import json
import sys
import time

import zviptv


def answer(begin, processor):
    print(json.dumps({"seconds": time.monotonic() - begin, "cpu": time.process_time() - processor}), flush=True)


def wait():
    with zviptv.Television() as tv:
        for line in sys.stdin:
            begin, processor = time.monotonic(), time.process_time()
            for _ in range(int(line.split()[1])):
                tv.player.mute_audio(True)
            answer(begin, processor)


async def coroutines():
    async with zviptv.aio.Television() as tv:
        while line := await asyncio.to_thread(sys.stdin.readline):
            begin, processor = time.monotonic(), time.process_time()
            for _ in range(int(line.split()[1])):
                await tv.player.mute_audio(True)
            answer(begin, processor)


if sys.argv[1] == "wait":
    wait()
else:
    asyncio.run(coroutines())
