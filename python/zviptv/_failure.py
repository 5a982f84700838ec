# SPDX-License-Identifier: MIT
"""Why a call failed."""
import enum

__all__ = ["Failure", "FailureKind"]


class FailureKind(enum.Enum):
    """Why something failed. The value is the kind in words."""

    NO_BUS = "no bus"  #: the bus cannot be reached, or has closed the connection
    NO_SERVICE = "no service"  #: no service runs, it left before it answered, or it lacks the endpoint
    GONE = "gone"  #: the Television was closed
    TIMED_OUT = "timed out"  #: no answer in time
    BUS_ERROR = "bus error"  #: the service or the bus answered with a D-Bus error
    TOO_LARGE = "too large"  #: the message is larger than the bus carries (32 MiB); nothing was sent
    REFUSED = "refused"  #: the service answered with the result 0
    MALFORMED_REPLY = "malformed reply"  #: the answer, or a pushed message, cannot be read
    INVALID_ARGUMENT = "invalid argument"  #: an argument cannot be sent; nothing was sent
    CANCELLED = "cancelled"  #: the call was cancelled
    CALLBACK_THREW = "callback threw"  #: not used in Python
    UNKNOWN = "unknown"  #: a kind that this version of the package does not know

    @classmethod
    def _missing_(cls, value: object) -> "FailureKind":
        return cls.UNKNOWN


class Failure(Exception):
    """A call failed.

    kind: why.
    function: the function of the protocol, "MuteAudio"; empty if there is none.
    key: the key of the protocol whose value is wrong, "stcCount"; empty if there is none.
    error_name: the name of the D-Bus error in the answer; empty if there is none.
    message: what is wrong and what to do about it, in one line.
    """

    def __init__(self, kind: FailureKind, function: str = "", key: str = "", error_name: str = "", message: str = "") -> None:
        super().__init__(kind, function, key, error_name, message)
        self.kind = kind
        self.function = function
        self.key = key
        self.error_name = error_name
        self.message = message

    def __str__(self) -> str:
        kind = f"{self.kind.value} ({self.error_name})" if self.error_name else self.kind.value
        return ": ".join(part for part in (self.function, kind, self.message) if part)


Failure.__module__ = FailureKind.__module__ = "zviptv"
