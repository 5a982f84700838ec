# SPDX-License-Identifier: MIT
"""The tables of the results, as text or filled into the marked blocks of a page.

A block begins with <!-- figures: NAME --> and ends with <!-- end of figures -->.
"""

import functools
import json
import pathlib
import re
import shutil

import tables
import targets
from bus.variants import CROWD_SIZES, METHODS, PACKETS
from inprocess import encoding
from markdown import render

BLOCK = re.compile(r"<!-- figures: (\S+) -->\n(.*?)<!-- end of figures -->", re.DOTALL)
PAGE = pathlib.Path(__file__).parent.parent / "docs/explanation/performance.md"
TABLES = {"machine": tables.where, "targets": targets.targets,
          **{f"call-{method}": functools.partial(tables.calls, method=method) for method in METHODS},
          "others": functools.partial(tables.others, method="mute"),
          "instructions": tables.instructions, "owners": tables.owners,
          **{f"push-{size}": functools.partial(tables.pushes, size=size) for size in PACKETS},
          **{f"crowd-{size}": functools.partial(tables.crowds, size=size) for size in CROWD_SIZES},
          "callbacks": tables.callbacks, "starts": tables.starts, "objects": tables.objects,
          "growth": tables.growth, "age": tables.age, "python": tables.python}


def blocks(results):
    """The tables by their names."""
    made = {name: render(*table(results)) for name, table in TABLES.items()}
    return {**made, "inprocess": encoding.text(**results["inprocess"])}


def committed():
    """The summary that the page shows."""
    return json.loads((PAGE.with_suffix("") / "summary.json").read_text())


def text(results):
    note = "A quick run: too short for figures to quote.\n\n" if results["quick"] else ""
    return note + "\n\n".join(blocks(results).values()) + "\n"


def filled(page):
    """The contents of the blocks of the page."""
    return {name: text.rstrip("\n") for name, text in BLOCK.findall(page.read_text())}


def check(page):
    """Raises an error if a table has no block in the page, or a block has no table."""
    marked = sorted(filled(page))
    made = sorted([*TABLES, "inprocess"])
    if marked != made:
        raise RuntimeError(f"{page} has the blocks {marked}, but the tables are {made}")


def fill(page, results, files):
    """Writes the tables into the page, and copies the files to the folder with the name of the page."""
    check(page)
    made = blocks(results)

    def replace(match):
        return f"<!-- figures: {match[1]} -->\n{made[match[1]]}\n<!-- end of figures -->"

    page.write_text(BLOCK.sub(replace, page.read_text()))
    folder = page.with_suffix("")
    folder.mkdir(exist_ok=True)
    for file in files:
        shutil.copy(file, folder)
