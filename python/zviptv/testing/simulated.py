# SPDX-License-Identifier: MIT
"""The simulated television, as a test sees it."""
import contextlib
from typing import Any, Optional

from . import protocol
from .control import INTERFACE, PROPERTIES, Control, variant
from .errors import ExpectationFailed, TelevisionError
from .requests import Conversation, Request, in_words
from .scenario import Scenario
from .simulator import Simulator
from .verbs import Verbs

__tracebackhide__ = True  # pytest shows the line of the test

LONGEST_WAIT = 1_000_000  # seconds


def _seconds(name: str, value: float) -> float:
    """The time that a test may wait. Raises ValueError."""
    if not 0 <= value <= LONGEST_WAIT:  # NaN is in no range
        raise ValueError(f"{name}: {value} is not a number of seconds from 0 to {LONGEST_WAIT}")
    return value


def _word(value: Any) -> str:
    return {True: "on", False: "off"}[value] if isinstance(value, bool) else str(value)


class Television(Verbs):
    """Controls the television and sees what applications ask of it.

    Only one thread may use it at a time. Methods raise TelevisionError if the simulator refuses the call, and
    ValueError for a number that is out of range.
    """

    def __init__(self, simulator: Simulator) -> None:
        self._simulator = simulator
        self._conversation = Conversation()
        self._control = Control(simulator.address, lambda *signal: self._conversation.on_signal(*signal))
        self._scenarios: list[Scenario] = []
        self._is_open = True

    def _call(self, method: str, signature: str, *values: Any, **options: Any) -> tuple[Any, ...]:
        try:
            return self._control.call(method, signature, *values, **options)
        except ConnectionError as error:
            self._simulator.check(1.0)
            raise TelevisionError(f"zviptv-sim does not answer: {error}; run the tests again") from None

    def _do(self, verb: str, method: str, signature: str, *values: Any) -> None:
        plain = [value for value in values if not isinstance(value, dict)]
        options = {name: typed for value in values if isinstance(value, dict)
                   for name, typed in value.items() if typed[1] is not None}
        words = [verb, *map(_word, plain), *[f"--{name} {value}" for name, (_, value) in options.items()]]
        event = self._conversation.note("test", " ".join(words))
        try:
            if signature.endswith("a{sv})"):
                plain.append({name: variant(*typed) for name, typed in options.items()})
            self._call(method, signature, *plain)
        except OverflowError as error:
            event.answer = str(error)
            raise ValueError(f"{verb}: {error}") from None
        except TelevisionError as error:
            event.answer = str(error).split("\n", maxsplit=1)[0]
            raise
        if method == "Reset":
            self._conversation = Conversation()
            self._conversation.note("test", " ".join(words))

    @property
    def address(self) -> str:
        """The address of the bus, which is also in DBUS_SYSTEM_BUS_ADDRESS."""
        return self._simulator.address

    @property
    def properties(self) -> dict[str, Any]:
        """The properties of the control interface, by their names, as they are now."""
        (properties,) = self._call("GetAll", "(s)", INTERFACE, interface=PROPERTIES)
        return dict(properties)

    def _settle(self) -> None:
        """Waits until the conversation contains all requests that were answered before; signals arrive in order."""
        self.properties

    @property
    def requests(self) -> list[Request]:
        """All requests that were answered since the reset, in their order."""
        self._settle()
        return self._conversation.requests()

    @property
    def conversation(self) -> str:
        """What has happened since the reset, as a table."""
        with contextlib.suppress(TelevisionError):  # a test that fails because of this error shows the table, too
            if self._is_open:
                self._settle()
        return self._conversation.table()

    def expect(self, function: str, *, within: float = 2.0, **arguments: Any) -> Request:
        """Waits until an application sends such a request, at most `within` seconds, and returns it.

        A request that came earlier counts, unless it has met another expectation. Arguments that are not given may have
        any value. Raises ExpectationFailed if none comes, and ValueError for an unknown function, argument or value, and
        for a time that is not in the range 0 to 1,000,000 seconds.
        """
        request = self._take(function, arguments, _seconds("within", within))
        if request is None:
            self._simulator.check()
            words = in_words(function, arguments)
            near = self._conversation.near_misses(function)
            self._conversation.note("test", f"expect {words}").answer = "not met"
            raise ExpectationFailed(f"{words} did not come within {within:g} s: {near}")
        return request

    def expect_no(self, function: str, *, for_: float = 0.5, **arguments: Any) -> None:
        """Checks that no such request has come, and that none comes in the next `for_` seconds.

        Requests that have met an expectation do not count. Raises ExpectationFailed as soon as a request comes, and
        ValueError for an unknown function, argument or value.
        """
        request = self._take(function, arguments, _seconds("for_", for_))
        if request is not None:
            self._conversation.note("test", f"expect no {in_words(function, arguments)}").answer = "not met"
            raise ExpectationFailed(f"{request} was not expected, but came after {request.time:.3f} s")
        self._simulator.check()

    def _take(self, function: str, arguments: dict[str, Any], within: float) -> Optional[Request]:
        expected = protocol.normalize(function, arguments)
        self._settle()
        return self._conversation.take(
            lambda request: request.function == function
            and all(request.arguments.get(key) == value for key, value in expected.items()), within)

    def scenario(self, text: str, *, folder: str = "", within: float = 30.0) -> Scenario:
        """Starts a scenario, whose second 0 is now. Its files are relative to `folder`, by default the folder in which
        pytest was started.

        The result is a context manager: at the end of the block it waits until the scenario is over, at most `within`
        seconds, and raises ExpectationFailed with the report if something went wrong. Without `with`, call wait().
        Raises TelevisionError with all errors of the text.
        """
        scenario = Scenario(self._call, text, folder, _seconds("within", within))
        self._conversation.note("test", "scenario")
        self._scenarios.append(scenario)
        return scenario

    def finish(self) -> None:
        """Ends the test: waits for the remaining scenarios. Raises ExpectationFailed if one of them fails."""
        with contextlib.ExitStack() as stack:
            while self._scenarios:
                stack.callback(self._scenarios.pop().wait)

    def close(self) -> None:
        """Ends the connection with the simulator."""
        self._is_open = False
        self._control.close()

    def __repr__(self) -> str:
        return f"<Television on {self.address}>"
