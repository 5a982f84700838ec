# SPDX-License-Identifier: MIT
"""What the tables of a page are made of: the results without the figures of single blocks."""

import json

# What the pictures alone, or nobody, reads.
DETAILS = ("blocks", "distribution")


def of(part):
    if isinstance(part, dict):
        return {name: of(one) for name, one in part.items() if name not in DETAILS}
    return part


def as_json(part, indent=0):
    """Indented, with a list, the summary of a figure and what has neither in one line each."""
    if not isinstance(part, dict) or "median" in part or not any(isinstance(one, (dict, list)) for one in part.values()):
        return json.dumps(part, ensure_ascii=False)
    space = " " * indent
    lines = (f"{space} {json.dumps(name)}: {as_json(one, indent + 1)}" for name, one in part.items())
    return "{\n" + ",\n".join(lines) + f"\n{space}}}"
