# SPDX-License-Identifier: MIT
"""What the service pushes, as asynchronous iterators."""
from __future__ import annotations

import asyncio
from types import TracebackType
from typing import Self, TypeVar

from ._state import StateEvent
from ._stream import Subscribed, Watching

T = TypeVar("T")

# The number of items that are read without a turn of the event loop.
_MAX_IN_A_ROW = 64


class Stream(Subscribed[T]):
    """Items in the order in which they arrived: an asynchronous iterator, and an asynchronous context manager.

    The subscription ends at the end of the `async with` block. Without such a block, it ends when nothing refers to the
    stream any more, as after a loop `async for packet in tv.pes():`. If the reader is slow, the stream drops and counts
    the oldest items. Only one task may read at a time.
    """

    _is_waiting = False
    _in_a_row = 0

    async def __aenter__(self) -> Self:
        return self

    async def __aexit__(self, kind: type[BaseException] | None, error: BaseException | None,
                        trace: TracebackType | None) -> None:
        self.end()

    def __aiter__(self) -> Self:
        return self

    async def __anext__(self) -> T:
        if self._is_waiting:
            raise RuntimeError("another task reads this stream; subscribe once for each task")
        self._in_a_row += 1
        if self._in_a_row > _MAX_IN_A_ROW:
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


class StateWatcher(Watching, Stream[StateEvent]):
    """Changes of the state: an asynchronous iterator. For the rest see zviptv.StateWatcher."""
