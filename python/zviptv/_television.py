# SPDX-License-Identifier: MIT
"""A television whose functions wait for the answer."""
from __future__ import annotations

import atexit
import time
import weakref
from collections.abc import Iterable
from types import TracebackType

from ._failure import Failure
from ._functions import Broadcast, Guide, Player
from ._native import CaptionData, Core, PesPacket, end
from ._stream import DEFAULT_LIMIT, Stream
from ._types import PesKind


_open: weakref.WeakSet[Core] = weakref.WeakSet()


@atexit.register
def _close_all() -> None:
    """The thread of the televisions does not run while the interpreter ends."""
    for core in list(_open):
        core.close()
    end()


def numbers(given: int | Iterable[int] | None) -> list[int]:
    """A filter as a list; an empty one lets all through."""
    return [] if given is None else [given] if isinstance(given, int) else list(given)


class Connection:
    """What both kinds of Television have in common."""

    def __init__(self, bus_address: str = "", *, profile: int = 1, id: int = 0, application_id: str = "") -> None:
        self._core = Core(bus_address, profile, id, application_id)
        _open.add(self._core)

    @property
    def is_available(self) -> bool:
        """Whether the service is on the bus, as far as is known: False until the bus has answered."""
        return self._core.is_available


class Television(Connection):
    """The IPTV service of a television: calls its functions, receives its streams, and survives its restarts.

    bus_address: D-Bus address of the bus; empty for the system bus, at DBUS_SYSTEM_BUS_ADDRESS if that is set.
    profile, id: the handle of all requests. application_id: names the application to the service.

    It connects by itself, to the bus and to the service, whenever one of them is there again. A thread in the
    background serves all Televisions. close() disconnects, and so does the end of a `with` block. All functions may be
    called from any thread. A function that fails raises Failure. Other threads run while a function waits.

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

    def wait_until_available(self, timeout: float | None = None) -> None:
        """Waits for the service, `timeout` seconds at most. Raises TimeoutError."""
        end = None if timeout is None else time.monotonic() + timeout
        with self.availability() as changes:
            while not changes.get(None if end is None else max(0.0, end - time.monotonic())):
                pass
