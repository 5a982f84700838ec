"""The tables of the results, as text or filled into the marked blocks of a page.

A block is what stands between <!-- figures: NAME --> and <!-- end of figures -->.
"""

import functools
import pathlib
import re
import shutil

import tables

PAGE = pathlib.Path(__file__).parent.parent / "docs/performance.md"
BUS_TABLES = {"targets": tables.targets, "call-mute": functools.partial(tables.calls, method="mute"),
              "call-ratings": functools.partial(tables.calls, method="ratings"), "instructions": tables.instructions,
              **{f"push-{size}": functools.partial(tables.pushes, size=size) for size in tables.SIZES},
              "crowds": tables.crowds, "callbacks": tables.callbacks, "starts": tables.starts,
              "objects": tables.objects, "growth": tables.growth}


def render(header, rows):
    widths = [max(len(row[column]) for row in [header, *rows]) for column in range(len(header))]
    lines = [[cell.ljust(width) for cell, width in zip(row, widths)] for row in [header, *rows]]
    lines.insert(1, ["-" * width for width in widths])
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def blocks(results, inprocess):
    """The tables by their names."""
    made = {name: render(*table(results)) for name, table in BUS_TABLES.items()}
    return {"machine": render(*tables.where(results)), **made, "inprocess": inprocess.strip()}


def text(results, inprocess):
    note = "A quick look: too short for figures to quote.\n\n" if results["quick"] else ""
    return note + "\n\n".join(blocks(results, inprocess).values()) + "\n"


def fill(page, results, inprocess, pictures):
    """Puts the tables into the page, and the pictures into the folder beside it that has its name."""
    made = blocks(results, inprocess)

    def replace(match):
        return f"<!-- figures: {match[1]} -->\n{made[match[1]]}\n<!-- end of figures -->"

    pattern = r"<!-- figures: (\S+) -->\n.*?<!-- end of figures -->"
    page.write_text(re.sub(pattern, replace, page.read_text(), flags=re.DOTALL))
    folder = page.with_suffix("")
    folder.mkdir(exist_ok=True)
    for picture in pictures:
        shutil.copy(picture, folder)

