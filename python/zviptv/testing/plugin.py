# SPDX-License-Identifier: MIT
"""What pytest calls: fixtures, options and the table of a failing test."""
import os
import shlex
from typing import Any, Generator, Iterator

import pytest

from .errors import TelevisionError
from .simulator import Simulator
from .simulated import Television


def pytest_addoption(parser: pytest.Parser) -> None:
    """The settings of the simulator, for pytest.ini, pyproject.toml or -o."""
    parser.addini("zviptv_input", "transport stream that the simulator plays; the sample stream by default")
    parser.addini("zviptv_guide", "programme guide of the simulator, an XMLTV file; that of the stream by default")
    parser.addini("zviptv_options", "other options of zviptv-sim, such as --rating-limit 12", default="--loop")


@pytest.fixture(scope="session")
def television_simulator(pytestconfig: pytest.Config) -> Iterator[Television]:
    """The simulator of this session, which runs on a private bus. Applications find it by DBUS_SYSTEM_BUS_ADDRESS."""
    guide = _file(pytestconfig, "zviptv_guide")
    arguments = [*(["--guide", guide] if guide else []), *shlex.split(pytestconfig.getini("zviptv_options"))]
    try:
        simulator = Simulator(_file(pytestconfig, "zviptv_input"), arguments)
        try:
            found = Television(simulator)
        except TelevisionError:
            simulator.stop()
            raise
    except TelevisionError as error:
        pytest.fail(str(error), pytrace=False)
    with pytest.MonkeyPatch.context() as patch:
        patch.setenv("DBUS_SYSTEM_BUS_ADDRESS", simulator.address)
        yield found
    found.close()
    simulator.stop()


def _file(config: pytest.Config, name: str) -> str:
    """The path or URL of a setting. A path that is not absolute is relative to the root folder of pytest."""
    path = str(config.getini(name))
    return os.path.join(config.rootpath, path) if path and "://" not in path else path


@pytest.fixture(name="television")
def television(television_simulator: Television) -> Iterator[Television]:
    """A fresh television for each test."""
    try:
        television_simulator.reset()
    except TelevisionError as error:
        pytest.fail(str(error), pytrace=False)
    yield television_simulator
    television_simulator.finish()


@pytest.hookimpl(hookwrapper=True)  # type: ignore[misc]
def pytest_runtest_makereport(item: pytest.Item, call: pytest.CallInfo[None]) -> Generator[None, Any, None]:
    """Adds the conversation to the report of a failing test."""
    report = (yield).get_result()
    found = getattr(item, "funcargs", {}).get("television")
    if report.failed and call.when != "setup" and isinstance(found, Television):
        report.sections.append(("Conversation with the television", found.conversation))
