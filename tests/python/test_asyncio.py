# SPDX-License-Identifier: MIT
"""Coroutines, asynchronous iterators and cancellation."""
import asyncio
import time

import pytest
from conftest import SLOWNESS

import zviptv
from zviptv import FailureKind

AUDIO = 0x101


def run(coroutine):
    """Runs a coroutine with asyncio's own checks."""
    return asyncio.run(coroutine, debug=True)


def test_a_hundred_calls_at_once(television):
    async def main():
        async with zviptv.aio.Television() as tv:
            await tv.wait_until_available()
            return await asyncio.gather(*(tv.player.get_source_state() for _ in range(100)))

    assert len(run(main())) == 100


def test_different_functions_at_once(television):
    async def main():
        async with zviptv.aio.Television() as tv:
            return await asyncio.gather(tv.broadcast.audio_tracks(), tv.player.mute_audio(True), tv.broadcast.size_of_audio(),
                                        tv.player.get_source_state(), tv.guide.exist_xml_for_ipg())

    tracks, nothing, size, state, exists = run(main())
    assert (len(tracks), nothing, size, type(state), exists) == (2, None, 2, zviptv.SourceState, True)


def test_the_loop_runs_while_a_call_waits(television):
    async def main():
        async with zviptv.aio.Television() as tv:
            await tv.wait_until_available()
            television.fault("MuteAudio=drop", count=1)
            task = asyncio.create_task(tv.player.mute_audio(True, timeout=0.5))
            turns = 0
            while not task.done():
                await asyncio.sleep(0.005)
                turns += 1
            with pytest.raises(zviptv.Failure) as caught:
                await task
            return turns, caught.value.kind

    turns, kind = run(main())
    assert turns > 5 and kind is FailureKind.TIMED_OUT  # of 100, if nothing else runs


def test_cancelling_the_task_cancels_the_call(television):
    async def main():
        async with zviptv.aio.Television() as tv:
            await tv.wait_until_available()
            television.fault("MuteAudio=drop", count=1)
            task = asyncio.create_task(tv.player.mute_audio(True, timeout=60))
            await asyncio.sleep(0)
            await asyncio.to_thread(television.expect, "MuteAudio")
            task.cancel()
            with pytest.raises(asyncio.CancelledError):
                await task
            television.fault("MuteAudio=drop", count=1)
            with pytest.raises(TimeoutError):
                async with asyncio.timeout(0.1):
                    await tv.player.mute_audio(True, timeout=60)
            await tv.player.mute_audio(False)
            assert not tv._calls._futures  # nothing waits any more

    begin = time.monotonic()
    run(main())
    assert time.monotonic() - begin < 10 * SLOWNESS


def test_closing_ends_calls(television):
    async def main():
        tv = zviptv.aio.Television()
        await tv.wait_until_available()
        television.fault("MuteAudio=drop", count=1)
        task = asyncio.create_task(tv.player.mute_audio(True, timeout=60))
        await asyncio.sleep(0)
        await asyncio.to_thread(television.expect, "MuteAudio")
        await tv.close()
        with pytest.raises(zviptv.Failure) as caught:
            await task
        assert caught.value.kind is FailureKind.GONE
        with pytest.raises(zviptv.Failure) as caught:
            await tv.player.mute_audio(True)
        assert caught.value.kind is FailureKind.GONE
        await tv.close()

    run(main())


def test_leaving_the_loop_ends_the_subscription(television):
    async def main():
        async with zviptv.aio.Television() as tv:
            number = 0
            async for packet in tv.pes(pid=AUDIO):
                assert packet.pid == AUDIO and packet.payload.obj is packet
                number += 1
                if number == 5:
                    break
            await asyncio.to_thread(television.expect, "requestPESCB", on=False)

    run(main())


@pytest.mark.parametrize("how", ["cancel", "error", "block"])
def test_any_way_out_ends_the_subscription(television, how):
    async def read(tv):
        if how == "block":
            async with tv.pes() as packets:
                await anext(packets)
            return
        async for _ in tv.pes(pid=AUDIO if how == "error" else 0x1ffe):
            raise LookupError

    async def main():
        async with zviptv.aio.Television() as tv:
            task = asyncio.create_task(read(tv))
            await asyncio.to_thread(television.expect, "requestPESCB", on=True)
            if how == "cancel":
                task.cancel()
            await asyncio.wait([task])
            assert task.cancelled() == (how == "cancel")
            if how == "error":
                assert isinstance(task.exception(), LookupError)
            del task
            await asyncio.to_thread(television.expect, "requestPESCB", on=False)

    run(main())


def test_closing_ends_a_loop(television):
    async def main():
        tv = zviptv.aio.Television()

        async def read():
            return [packet async for packet in tv.pes(pid=0x1ffe)]

        task = asyncio.create_task(read())
        await asyncio.to_thread(television.expect, "requestPESCB", on=True)
        await tv.close()
        assert await task == []

    run(main())


def test_several_streams_are_read_at_the_same_time(television):
    async def read(tv, pid):
        number = 0
        async for packet in tv.pes(pid=pid):
            assert packet.pid == pid
            number += 1
            if number == 5:
                return number

    async def main():
        async with zviptv.aio.Television() as tv, zviptv.aio.Television() as other:
            return await asyncio.gather(read(tv, 0x100), read(tv, 0x101), read(other, 0x102))

    assert run(main()) == [5, 5, 5]


def test_one_task_reads_a_stream(television):
    async def main():
        async with zviptv.aio.Television() as tv, tv.pes(pid=0x1ffe) as packets:
            first = asyncio.create_task(anext(packets))
            await asyncio.sleep(0)
            with pytest.raises(RuntimeError, match="another task reads this stream"):
                await anext(packets)
            first.cancel()

    run(main())


def test_reading_a_full_queue_lets_other_tasks_run(television):
    async def main():
        async with zviptv.aio.Television() as tv, tv.pes() as packets:
            while packets.counters.packets < 100:
                await asyncio.sleep(0.01)
            turns = 0

            async def turn():
                nonlocal turns
                while True:
                    turns += 1
                    await asyncio.sleep(0)

            other = asyncio.create_task(turn())
            for _ in range(100):
                await anext(packets)
            other.cancel()
            return turns

    television.speed(4)
    assert run(main()) >= 1


def test_captions_and_availability(television):
    async def main():
        async with zviptv.aio.Television() as tv:
            async for data in tv.captions():
                assert len(data.data) > 0
                break
            changes = []
            async for is_available in tv.availability():
                changes.append(is_available)
                if changes == [True]:
                    await asyncio.to_thread(television.die, for_=0.2)
                if len(changes) == 3:
                    break
            assert changes == [True, False, True]
            await tv.player.mute_audio(True)

    run(main())


def test_belongs_to_one_loop(television):
    with pytest.raises(RuntimeError):
        zviptv.aio.Television()

    async def make():
        return zviptv.aio.Television()

    tv = run(make())
    with pytest.raises(RuntimeError, match="belongs to another event loop"):
        run(tv.player.mute_audio(True))
