# SPDX-License-Identifier: MIT
"""Shared fixtures of the tests of the plugin. pytester runs pytest on tests in a temporary folder."""
import os
import subprocess

import pytest
from gi.repository import Gio, GLib  # noqa: F401 - pytester forgets what tests import, and gi can be loaded only once

pytest_plugins = ["pytester", "zviptv.testing"]

SAMPLES = os.environ["ZVIPTV_SAMPLES"]
APPLICATION = """
import subprocess
def ctl(*words): return subprocess.run(['zviptvctl', *words], capture_output=True)
"""
SETTINGS = f"[pytest]\nzviptv_input = {SAMPLES}/sample.ts\n"


def pytest_configure(config):
    """Settings of the plugin for the tests in this folder."""
    ini = config.inicfg
    ini["zviptv_input"] = f"{SAMPLES}/sample.ts"
    ini["zviptv_guide"] = f"{SAMPLES}/sample.xml"


@pytest.fixture
def ctl():
    """Runs zviptvctl as the application."""
    return lambda *words: subprocess.run(["zviptvctl", *words], capture_output=True, text=True, check=False)


@pytest.fixture
def run(pytester):
    """Runs pytest on this text, in this process unless told otherwise; returns the result."""

    def run_on(text, *options, settings=SETTINGS, apart=False):
        pytester.makefile(".ini", pytest=settings)
        pytester.makepyfile(APPLICATION + text)
        started = pytester.runpytest_subprocess if apart else pytester.runpytest_inprocess
        return started("-p", "no:cacheprovider", *options)

    return run_on
