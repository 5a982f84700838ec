# SPDX-License-Identifier: MIT
"""The data of the tables: the results without the figures of single blocks."""

import json

# Used only by the pictures, or by nothing.
DETAILS = ("blocks", "distribution")


def of(part):
    if isinstance(part, dict):
        return {name: of(one) for name, one in part.items() if name not in DETAILS}
    return part


def as_json(part, indent=0):
    """Indented JSON. A list, the summary of a figure, and an object without either take one line each."""
    if not isinstance(part, dict) or "median" in part or not any(isinstance(one, (dict, list)) for one in part.values()):
        return json.dumps(part, ensure_ascii=False)
    space = " " * indent
    lines = (f"{space} {json.dumps(name)}: {as_json(one, indent + 1)}" for name, one in part.items())
    return "{\n" + ",\n".join(lines) + f"\n{space}}}"
