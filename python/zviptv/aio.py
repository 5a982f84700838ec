# SPDX-License-Identifier: MIT
"""The service under asyncio: zviptv.aio.Television has the functions of zviptv.Television as coroutines."""
from __future__ import annotations

import asyncio
from types import TracebackType

from ._async_stream import StateWatcher, Stream
from ._calls import DEFAULT_TIMEOUT, Calls
from ._coroutines import Broadcast, Guide, Player, Subscriptions

__all__ = ["DEFAULT_TIMEOUT", "Broadcast", "Guide", "Player", "StateWatcher", "Stream", "Television"]


class Television(Subscriptions):
    """The IPTV service of a television, for one event loop. Create it in a coroutine.

    `async with zviptv.aio.Television() as tv:` closes it at the end. The functions are coroutines with an additional
    `timeout` in seconds, which is 2 by default and may be 0 or more. Cancelling the task that awaits such a coroutine
    cancels the call. For the rest see zviptv.Television.
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

    async def wait_until_available(self) -> None:
        """Waits for the service; use asyncio.timeout() to limit the time."""
        async for is_available in self.availability():
            if is_available:
                break
