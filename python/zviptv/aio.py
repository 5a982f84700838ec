# SPDX-License-Identifier: MIT
"""The service under asyncio: zviptv.aio.Television has the functions of zviptv.Television as coroutines."""
from __future__ import annotations

import asyncio
from collections.abc import Iterable
from types import TracebackType
from typing import TypeVar

from ._calls import DEFAULT_TIMEOUT, Calls
from ._coroutines import Broadcast, Guide, Player
from ._failure import Failure
from ._native import CaptionData, PesPacket
from ._stream import DEFAULT_LIMIT, Subscribed
from ._television import Connection, numbers
from ._types import PesKind

__all__ = ["DEFAULT_TIMEOUT", "Broadcast", "Guide", "Player", "Stream", "Television"]

T = TypeVar("T")

# The number of items that are read without a turn of the event loop.
_MOST_IN_A_ROW = 64


class Stream(Subscribed[T]):
    """Items in the order in which they arrived: an asynchronous iterator, and an asynchronous context manager.

    The subscription ends with the block, and when the last reference to the stream goes: leaving `async for packet in
    tv.pes():` ends it. If the reader is slow, the oldest items are dropped and counted. One task reads at a time.
    """

    _is_waiting = False
    _in_a_row = 0

    async def __aenter__(self) -> Stream[T]:
        return self

    async def __aexit__(self, kind: type[BaseException] | None, error: BaseException | None,
                        trace: TracebackType | None) -> None:
        self.end()

    def __aiter__(self) -> Stream[T]:
        return self

    async def __anext__(self) -> T:
        if self._is_waiting:
            raise RuntimeError("another task reads this stream; subscribe once for each task")
        self._in_a_row += 1
        if self._in_a_row > _MOST_IN_A_ROW:
            self._in_a_row = 0
            await asyncio.sleep(0)
        while True:
            item = self._source.poll()
            if item is not None:
                return item
            if self._source.has_ended:
                raise StopAsyncIteration
            self._in_a_row = 0
            await self._readable()

    async def _readable(self) -> None:
        loop = asyncio.get_running_loop()
        readable: asyncio.Future[None] = loop.create_future()
        descriptor = self._source.fileno()
        loop.add_reader(descriptor, _finish, readable)
        self._is_waiting = True
        try:
            await readable
        finally:
            self._is_waiting = False
            loop.remove_reader(descriptor)


def _finish(readable: asyncio.Future[None]) -> None:
    if not readable.done():
        readable.set_result(None)


class Television(Connection):
    """The IPTV service of a television, for one event loop. Create it in a coroutine.

    `async with zviptv.aio.Television() as tv:` closes it at the end. The functions are coroutines with an additional
    `timeout` in seconds; cancelling the task that awaits one cancels the call. For the rest see zviptv.Television.
    """

    def __init__(self, bus_address: str = "", *, profile: int = 1, id: int = 0, application_id: str = "") -> None:
        asyncio.get_running_loop()
        super().__init__(bus_address, profile=profile, id=id, application_id=application_id)
        self._calls = Calls(self._core)
        self.player = Player(self._calls)
        self.broadcast = Broadcast(self._calls)
        self.guide = Guide(self._calls)

    async def close(self) -> None:
        """Ends streams and disconnects. Outstanding calls fail with the kind GONE. Further calls do nothing."""
        await asyncio.get_running_loop().run_in_executor(None, self._core.close)
        self._calls.close()

    async def __aenter__(self) -> Television:
        return self

    async def __aexit__(self, kind: type[BaseException] | None, error: BaseException | None,
                        trace: TracebackType | None) -> None:
        await self.close()

    def pes(self, pid: int | Iterable[int] | None = None, kind: PesKind | Iterable[PesKind] | None = None,
            limit: int = DEFAULT_LIMIT) -> Stream[PesPacket]:
        """Subscribes to PES packets of one or several PIDs and kinds; None for all.

        The stream keeps the latest `limit` packets for its reader, and drops older ones.
        """
        return Stream(self._core.pes(numbers(pid), numbers(kind), limit))

    def captions(self, limit: int = DEFAULT_LIMIT) -> Stream[CaptionData]:
        """Subscribes to caption data as it was broadcast."""
        return Stream(self._core.captions(limit))

    def availability(self, limit: int = DEFAULT_LIMIT) -> Stream[bool]:
        """Whether the service is available: the state now, then each change."""
        return Stream(self._core.availability(limit))

    def errors(self, limit: int = DEFAULT_LIMIT) -> Stream[Failure]:
        """Failures that belong to no call, such as pushed messages that cannot be read."""
        return Stream(self._core.errors(limit))

    async def wait_until_available(self) -> None:
        """Waits for the service; use asyncio.timeout() to limit the time."""
        async for is_available in self.availability():
            if is_available:
                break
