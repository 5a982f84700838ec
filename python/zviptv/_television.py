# SPDX-License-Identifier: MIT
"""A television whose functions wait for the answer."""
from __future__ import annotations

import time
from types import TracebackType

from ._functions import Broadcast, Guide, Player, Subscriptions

__all__ = ["Television"]


class Television(Subscriptions):
    """The IPTV service of a television: calls its functions, receives its streams, and survives its restarts.

    bus_address: D-Bus address of the bus; empty for the system bus, at DBUS_SYSTEM_BUS_ADDRESS if that is set.
    profile, id: the handle of all requests. application_id: names the application to the service.

    It connects to the bus and to the service by itself, also after a restart of either. A thread in the background
    serves all Televisions. close() disconnects, and so does the end of a `with` block. All functions may be called from
    any thread. A function that fails raises Failure. Other threads run while a function waits.

    It cannot be used in a forked process.
    """

    def __init__(self, bus_address: str = "", *, profile: int = 1, id: int = 0, application_id: str = "") -> None:
        super().__init__(bus_address, profile=profile, id=id, application_id=application_id)
        self.player = Player(self._core)
        self.broadcast = Broadcast(self._core)
        self.guide = Guide(self._core)

    def close(self) -> None:
        """Ends streams, waits until the calls of other threads have ended, and disconnects. Further calls do nothing."""
        self._core.close()

    def __enter__(self) -> Television:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None) -> None:
        self.close()

    def wait_until_available(self, timeout: float | None = None) -> None:
        """Waits for the service, `timeout` seconds at most; None for as long as it takes. Raises TimeoutError."""
        begin = time.monotonic()
        with self.availability() as changes:
            is_available = changes.get(timeout)
            while not is_available:
                is_available = changes.get(None if timeout is None else max(0.0, begin + timeout - time.monotonic()))
