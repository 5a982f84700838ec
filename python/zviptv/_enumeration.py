# SPDX-License-Identifier: MIT
"""What the enumerations have in common."""
import enum
from typing import TypeVar

T = TypeVar("T", bound="Enumeration")


class Enumeration(enum.IntEnum):
    """An enumeration that also accepts numbers without a name: 17 becomes a value with the name "UNKNOWN_17"."""

    @classmethod
    def _missing_(cls: type[T], value: object) -> T | None:
        if not isinstance(value, int):
            return None
        member = int.__new__(cls, value)
        member._name_ = f"UNKNOWN_{value}".replace("-", "MINUS_")
        member._value_ = value
        return member
