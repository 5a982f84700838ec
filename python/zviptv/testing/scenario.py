# SPDX-License-Identifier: MIT
"""A scenario that runs on the television."""
import os
from types import TracebackType
from typing import Any, Callable, Optional

from .errors import ExpectationFailed

__tracebackhide__ = True  # pytest shows the line of the test

END_TIMEOUT = 20.0  # seconds that the simulator may take to answer


class Scenario:
    """Runs from its creation until it is over or wait() ends it."""

    def __init__(self, call: Callable[..., tuple[Any, ...]], text: str, folder: str, within: float) -> None:
        self._call = call
        self._within = within
        self._is_over = False
        file = os.path.join(folder and os.path.abspath(folder), "scenario")
        (self._number,) = call("StartScenario", "(ss)", text, file)

    def _end(self, within: float) -> tuple[bool, str]:
        self._is_over = True
        is_met, report = self._call("EndScenario", "(ud)", self._number, within,
                                     timeout=within + END_TIMEOUT)
        return is_met, report

    def wait(self) -> None:
        """Waits until the scenario is over, or ends it after the `within` seconds of Television.scenario().

        Raises ExpectationFailed with the report if an expectation is not met or a verb was refused. Does nothing if it
        has been called before.
        """
        if self._is_over:
            return
        is_met, report = self._end(self._within)
        if not is_met:
            raise ExpectationFailed(report.removeprefix("zviptv-sim: "))

    def __enter__(self) -> "Scenario":
        return self

    def __exit__(self, kind: Optional[type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        if kind is None:
            self.wait()
        elif not self._is_over:
            self._end(0)
