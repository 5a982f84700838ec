# SPDX-License-Identifier: MIT
"""Tables as Markdown."""


def render(header, rows):
    widths = [max(len(row[column]) for row in [header, *rows]) for column in range(len(header))]
    lines = [[cell.ljust(width) for cell, width in zip(row, widths, strict=True)] for row in [header, *rows]]
    lines.insert(1, ["-" * width for width in widths])
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)
