# SPDX-License-Identifier: MIT
"""Reads the profiles that callgrind writes."""

import collections
import re


def by_object(profile):
    """The instructions by the object file that they are in, each counted once."""
    counts, names = collections.Counter(), {}
    here, called = "", False
    for line in profile:
        if match := re.match(r"c?ob=\((\d+)\)(?: (.*))?", line):
            if match[2] is not None:
                names[match[1]] = match[2]
            if line.startswith("ob="):
                here = names[match[1]]
        elif line.startswith("calls="):
            called = True
        elif match := re.match(r"[+\-*\d]\S* (\d+)$", line):
            if not called:  # what follows a call is the cost of the called function, which has lines of its own
                counts[here] += int(match[1])
            called = False
        elif match := re.match(r"totals: (\d+)$", line):
            if int(match[1]) != counts.total():
                raise ValueError(f"{counts.total()} instructions read from a profile of {match[1]}")
    return counts
