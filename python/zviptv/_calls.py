# SPDX-License-Identifier: MIT
"""Asynchronous calls of one Television."""
from __future__ import annotations

import asyncio
import contextlib
from typing import Any, TypeVar, cast

from ._failure import Failure, FailureKind
from ._native import Call, Completions, Core

T = TypeVar("T")

#: The time that a call may take if its `timeout` is not given, in seconds.
DEFAULT_TIMEOUT = 2.0

Futures = dict[int, "asyncio.Future[Any]"]


class Calls:
    """Passes the completions of calls to the event loop. For the thread of the loop."""

    def __init__(self, core: Core) -> None:
        self.core = core
        self.completions = Completions()
        self._loop = asyncio.get_running_loop()
        self._futures: Futures = {}
        # The callback does not refer to this object: otherwise __del__ would never run.
        self._loop.add_reader(self.completions.fileno(), _complete, self.completions, self._futures)

    async def wait(self, call: Call[T]) -> T:
        """The outcome of a call. Cancelling the task cancels the call."""
        if asyncio.get_running_loop() is not self._loop:
            call.cancel()
            raise RuntimeError("this zviptv.aio.Television belongs to another event loop; create one in this loop")
        future = self._futures[call.token] = self._loop.create_future()
        try:
            return cast(T, await future)
        except asyncio.CancelledError:
            call.cancel()
            raise
        finally:
            self._futures.pop(call.token, None)

    def close(self) -> None:
        """Ends all calls with a failure of the kind GONE. Close the television first."""
        if self._loop.is_closed():
            return
        _complete(self.completions, self._futures)
        self._loop.remove_reader(self.completions.fileno())
        for future in self._futures.values():
            if not future.done():
                future.set_exception(Failure(FailureKind.GONE, message="the Television was closed"))

    def __del__(self) -> None:
        with contextlib.suppress(Exception):
            self._loop.remove_reader(self.completions.fileno())


def _complete(completions: Completions, futures: Futures) -> None:
    for token, value, error in completions.drain():
        future = futures.get(token)
        if future is None or future.done():
            continue  # cancelled
        if error is None:
            future.set_result(value)
        else:
            future.set_exception(error)
