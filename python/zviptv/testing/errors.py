# SPDX-License-Identifier: MIT
"""The errors of the test kit."""


class TelevisionError(Exception):
    """The simulator cannot be started, or has refused a verb. The text says why, and what to do."""


class SimulatorDied(TelevisionError):
    """The process zviptv-sim has ended during a test."""


class ExpectationFailed(AssertionError):
    """The application has not done what the test expects."""
