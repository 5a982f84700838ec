# SPDX-License-Identifier: MIT
"""Requests of applications, and the conversation of a test."""
import threading
import time
from dataclasses import dataclass, field
from typing import Any, Callable, Optional

from . import protocol


def in_words(function: str, arguments: dict[str, Any]) -> str:
    """MuteAudio onoff=True"""
    return " ".join([function, *[f"{key}={value}" for key, value in arguments.items()]])


@dataclass(frozen=True)
class Request:
    """A request that the service has answered."""

    function: str
    arguments: dict[str, Any]  # decoded: bool, int, name of an enumeration's value, or text
    application: str  # unique bus name
    endpoint: str  # PLAYERCONTROL, BROADCASTDATA, IPTVDATASUBSCRIBER or IPGUTIL
    result: Optional[int]  # result_internal; None without a reply
    fault: str  # what a fault did to the answer: drop, error or delay:MS; otherwise empty
    time: float  # seconds since the reset

    def __str__(self) -> str:
        return in_words(self.function, self.arguments)

    @property
    def answer(self) -> str:
        """The answer in words."""
        words = {None: "no answer", 0: "refused"}.get(self.result, "done")
        return f"{words} (fault: {self.fault})" if self.fault else words


@dataclass
class Event:
    """Anything else in the conversation: what the test did, or what became of the service."""

    time: float
    source: str
    text: str
    answer: str = ""


@dataclass
class Conversation:
    """What has happened since the reset. Thread-safe."""

    entries: list[Request | Event] = field(default_factory=list)
    used: set[int] = field(default_factory=set)  # requests that have met an expectation: their places in the list
    _start: float = field(default_factory=time.monotonic)
    _changed: threading.Condition = field(default_factory=threading.Condition)

    def now(self) -> float:
        """Seconds since the reset."""
        return time.monotonic() - self._start

    def note(self, source: str, text: str) -> Event:
        """Adds an event, whose answer may follow."""
        event = Event(self.now(), source, text)
        with self._changed:
            self.entries.append(event)
        return event

    def on_signal(self, name: str, values: tuple[Any, ...]) -> None:
        """Takes a signal of the control interface."""
        if name in ("Died", "Restarted"):
            self.note("television", {"Died": "the service has died", "Restarted": "the service is back"}[name])
        elif name == "PropertiesChanged" and "ScenarioStep" in values[1]:
            self.note("scenario", f"runs {values[1]['ScenarioStep']}")
        elif name == "Request":
            application, endpoint, function, arguments, result, fault = values
            request = Request(function, protocol.decode(function, arguments), application, endpoint,
                              None if result == -1 else result, fault, self.now())
            with self._changed:
                self.entries.append(request)
                self._changed.notify_all()

    def requests(self) -> list[Request]:
        """All requests, in their order."""
        with self._changed:
            return [entry for entry in self.entries if isinstance(entry, Request)]

    def take(self, fits: Callable[[Request], bool], within: float) -> Optional[Request]:
        """The first request that fits and has met no expectation yet; waits for one if there is none."""
        with self._changed:
            end = self.now() + within
            while True:
                for place, entry in enumerate(self.entries):
                    if place not in self.used and isinstance(entry, Request) and fits(entry):
                        self.used.add(place)
                        return entry
                if not self._changed.wait(max(0.0, end - self.now())) and self.now() >= end:
                    return None

    def near_misses(self, function: str) -> str:
        """What came instead of a request of this function."""
        with self._changed:
            requests = [(place in self.used, entry) for place, entry in enumerate(self.entries)
                        if isinstance(entry, Request)]
        near = [f"{request} after {request.time:.3f} s" + " (has met an earlier expectation)" * is_used
                for is_used, request in requests if request.function == function]
        if near:
            return "instead came " + ", ".join(near[-5:])
        others = sorted({request.function for _, request in requests})
        return f"other requests came: {', '.join(others)}" if others else "no request came"

    def table(self) -> str:
        """The conversation as a table."""
        with self._changed:
            rows = [("Time", "From", "What", "Answer")]
            for entry in self.entries:
                source, text = ((entry.application, str(entry)) if isinstance(entry, Request)
                                else (entry.source, entry.text))
                rows.append((f"{entry.time:.3f} s", source, text, entry.answer))
        widths = [max(len(row[column]) for row in rows) for column in range(4)]
        rows.insert(1, tuple("-" * width for width in widths))  # type: ignore[arg-type]
        return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip() for row in rows)
