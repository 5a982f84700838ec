# SPDX-License-Identifier: MIT
"""The connection of a television to the service."""
from __future__ import annotations

import atexit
from collections.abc import Iterable

from ._native import Core, end

# Closes all televisions: their thread does not run while the interpreter ends.
atexit.register(end)


def numbers(given: int | Iterable[int] | None) -> list[int]:
    """The values of a filter as a list. An empty list accepts all packets."""
    return [] if given is None else list(given) if isinstance(given, Iterable) else [given]


class Connection:
    """What both kinds of Television have in common."""

    def __init__(self, bus_address: str = "", *, profile: int = 1, id: int = 0, application_id: str = "") -> None:
        self._core = Core(bus_address, profile, id, application_id)

    @property
    def is_available(self) -> bool:
        """Whether the service is on the bus, as far as is known: False until the bus has answered."""
        return self._core.is_available
