# SPDX-License-Identifier: MIT
"""A pytest plugin that gives tests a simulated television: the fixture `television`.

It is loaded by its entry point if it is installed, otherwise by `pytest_plugins = ["zviptv.testing"]`.
"""
from .errors import ExpectationFailed, SimulatorDied, TelevisionError
from .plugin import (pytest_addoption, pytest_runtest_makereport, television, television_simulator)
from .requests import Request
from .scenario import Scenario
from .simulated import Television

__all__ = ["ExpectationFailed", "Request", "Scenario", "SimulatorDied", "Television", "TelevisionError",
           "pytest_addoption", "pytest_runtest_makereport", "television", "television_simulator"]
