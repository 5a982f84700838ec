# SPDX-License-Identifier: MIT
"""What the service pushes, as iterators that wait."""
from __future__ import annotations

import dataclasses
from types import TracebackType
from typing import TYPE_CHECKING, Generic, Self, TypeVar

from ._state import StateEvent, TelevisionState

if TYPE_CHECKING:
    from ._native import Source, StateSource

__all__ = ["Counters", "StateWatcher", "Stream"]

T = TypeVar("T")

#: How many items a stream keeps for its reader, unless it is told otherwise.
DEFAULT_LIMIT = 1024


@dataclasses.dataclass(frozen=True)
class Counters:
    """What a stream has received."""

    packets: int  #: including those that were dropped
    bytes: int  #: of packets with their headers, or of caption data
    gaps: int  #: pauses of a second or more between two packets of the same PID
    dropped: int  #: items that the reader did not take in time


class Subscribed(Generic[T]):
    """What both kinds of streams have in common."""

    def __init__(self, source: Source[T]) -> None:
        self._source = source

    def end(self) -> None:
        """Ends the subscription. Items that have arrived can still be read. Further calls do nothing."""
        self._source.end()

    @property
    def counters(self) -> Counters:
        """What the stream has received so far. May be read after the end, too."""
        return self._source.counters


class Stream(Subscribed[T]):
    """Items in the order in which they arrived: an iterator, and a context manager that ends the subscription.

    If the reader is slow, the oldest items are dropped and counted. The iteration ends after end(), and when the
    Television is closed. Several threads may read; each item goes to one of them.
    """

    def __enter__(self) -> Self:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None) -> None:
        self.end()

    def __iter__(self) -> Self:
        return self

    def __next__(self) -> T:
        return self._source.get()

    def get(self, timeout: float | None = None) -> T:
        """Returns the next item, and waits for it `timeout` seconds at most. 0 does not wait, None has no limit.

        Raises TimeoutError if none came, and StopIteration after the end.
        """
        return self._source.get(timeout)


class Watching(Subscribed[StateEvent]):
    """What both kinds of StateWatcher have in common."""

    _source: StateSource

    @property
    def state(self) -> TelevisionState:
        """The latest state, also if the events of its changes were not read yet. Empty before the first event."""
        return self._source.state

    def refresh(self) -> None:
        """Asks again as soon as possible instead of after the interval: for use after a call that changes the state."""
        self._source.refresh()


class StateWatcher(Watching, Stream[StateEvent]):
    """Changes of the state of a television: the whole state first, then one event for each value that has changed.

    The service does not report changes, so a thread in the background asks for all values at an interval. While the
    service is away, there are no events; when it is back, there is an event for each value that is now different. A
    value is None or an empty tuple if the service refuses the request for it. If such a request fails in another way,
    the value does not change, and errors() of the Television returns the failure.
    """
