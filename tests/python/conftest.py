# SPDX-License-Identifier: MIT
"""What the tests of the package share. The fixture `television` of zviptv.testing is the simulator."""
import os
import time

import pytest

import zviptv

SAMPLES = os.environ["ZVIPTV_SAMPLES"]
SLOWNESS = float(os.environ.get("ZVIPTV_SLOWNESS", "1"))


def pytest_configure(config):
    """The simulator of the tests."""
    ini = config.inicfg
    ini["zviptv_input"] = f"{SAMPLES}/sample.ts"
    ini["zviptv_guide"] = f"{SAMPLES}/sample.xml"
    ini["zviptv_options"] = "--loop --time 1774735200"


@pytest.fixture
def tv(television):
    """A client of the simulator."""
    with zviptv.Television() as client:
        client.wait_until_available(10)
        yield client


@pytest.fixture
def playing(tv):
    """A client, once the simulator presents the stream."""
    wait_for(lambda: _is_presented(tv))
    return tv


def _is_presented(tv):
    try:
        return tv.player.get_first_pts().pts > 0
    except zviptv.Failure:
        return False


def wait_for(condition, seconds=10.0):
    """Waits until the condition holds."""
    end = time.monotonic() + seconds * SLOWNESS
    while not condition():
        assert time.monotonic() < end, "the condition was not met in time"
        time.sleep(0.02)
