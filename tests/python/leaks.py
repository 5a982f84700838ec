# SPDX-License-Identifier: MIT
"""Memory, threads and descriptors of many calls, streams and televisions: leaks.py [CALLS], within zviptv-sim."""
import asyncio
import gc
import os
import sys
import threading
import tracemalloc

import zviptv

CALLS = int(sys.argv[1]) if len(sys.argv) > 1 else 100_000
MOST = min(1024, CALLS // 20)  # KiB that calls and coroutines may keep: 50 bytes a call, and at most 1 MiB


def resident():
    """The resident memory of this process in KiB."""
    with open("/proc/self/status", encoding="ascii") as status:
        return int(next(line for line in status if line.startswith("VmRSS")).split()[1])


def resources():
    """Threads of the process, and open descriptors."""
    return len(os.listdir("/proc/self/task")), len(os.listdir("/proc/self/fd"))


def calls(tv, number):
    """Makes about `number` requests: those that return a record, those for a list, and one in six that is refused."""
    for _ in range(number // 6):
        tv.broadcast.get_audio(0)
        tv.broadcast.audio_tracks()
        tv.player.get_resolution()
        try:
            tv.player.set_current_audio_by_index(77)
        except zviptv.Failure:
            pass


async def coroutines(number):
    """Makes `number` calls, ten at once, and cancels one of each ten."""
    async with zviptv.aio.Television() as tv:
        await tv.wait_until_available()
        for _ in range(number // 10):
            tasks = [asyncio.create_task(tv.player.get_source_state()) for _ in range(10)]
            tasks[9].cancel()
            await asyncio.gather(*tasks, return_exceptions=True)


async def streams(number):
    """Subscribes `number` times, each time with another television, and ends the subscriptions in different ways."""
    for _ in range(number):
        async with zviptv.aio.Television() as tv:
            async for packet in tv.pes():
                assert len(packet.payload) >= 0
                break
            async for _ in tv.watch(0.01, service_id=1):
                break
            texts = tv.caption_texts()
            del texts


def grown(what, work, number, most):
    """Runs the work twice. Fails if the second run keeps `most` KiB or more, or any thread or descriptor."""
    work(number // 5)
    gc.collect()
    memory, before = resident(), resources()
    work(number)
    gc.collect()
    difference = resident() - memory
    print(f"{what}: {difference} KiB more after {number}; threads and descriptors: {before} before, {resources()} after")
    assert difference < most
    assert all(now <= then for now, then in zip(resources(), before))


def main():
    with zviptv.Television() as tv:
        tv.wait_until_available(30)
        grown("calls", lambda number: calls(tv, number), CALLS, MOST)
        calls(tv, 1000)
        tracemalloc.start()
        gc.collect()
        before = tracemalloc.get_traced_memory()[0]
        calls(tv, max(CALLS // 20, 1000))
        gc.collect()
        difference = tracemalloc.get_traced_memory()[0] - before
        tracemalloc.stop()
        print(f"Python objects: {difference} bytes more")
        assert difference < 10_000
        grown("coroutines", lambda number: asyncio.run(coroutines(number)), CALLS // 5, MOST)
        grown("streams", lambda number: asyncio.run(streams(number)), max(CALLS // 2000, 10), 4096)
    assert threading.active_count() == 1


main()
