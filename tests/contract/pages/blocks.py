# SPDX-License-Identifier: MIT
"""The code blocks of a page, Markdown or scdoc, and the markers in comments before them."""
import re
from dataclasses import dataclass, field

MARKERS = {
    "file": "writes the block to this file; ', the same as FILE' may follow",
    "comes from": "the block is the output of this command",
    "drop-in of": "lines for this systemd unit",
    "unseen": "a command that runs before the block and is not shown",
    "unseen in the shell": "the same, after the start of the next shell",
    "not run": "the reason",
    "run by": "the test that runs it; ', as: TEXT' may follow if its text differs",
}
PAGE_MARKERS = ("numbers may differ after", "numbers may differ in", "typed in an empty folder")


@dataclass
class Block:
    page: str
    line: int
    language: str
    text: str
    markers: list = field(default_factory=list)

    def marker(self, name):
        return next((value for key, value in self.markers if key == name), None)

    def __str__(self):
        return f"{self.page}:{self.line}: {self.language or 'block without a language'}"


class PageError(Exception):
    pass


def _marker(comment):
    """(name, value) of a marker; (None, comment) for any other comment, which must not precede a block."""
    name, _, value = comment.partition(":")
    name = name.strip()
    return (name, value.strip()) if name in MARKERS or name in PAGE_MARKERS else (None, comment)


def _block(page, line, language, text, markers):
    for name, comment in markers:
        if name is None:
            raise PageError(f"{page}:{line}: a block after a comment that is not a marker: {comment}")
    return Block(page, line, language, text, markers)


def read_page(name, text):
    """The blocks of the page in their order, and the markers of the page itself."""
    lines = text.split("\n")
    return _read_scdoc(name, lines) if name.endswith(".scd") else _read_markdown(name, lines)


def _sort(found, pending, page_markers):
    (page_markers if found[0] in PAGE_MARKERS else pending).append(found)


def _read_markdown(page, lines):
    blocks, page_markers, pending, i = [], [], [], 0
    after_blank, in_list = True, False
    while i < len(lines):
        line = lines[i]
        fence = re.match(r"^( *)(```+|~~~+)\s*(.*)$", line)
        comment = re.match(r"^<!--(.*?)-->$", line.strip())
        if fence:
            indent, ticks, language = fence.groups()
            end = next((j for j in range(i + 1, len(lines)) if lines[j].strip() == ticks), None)
            if end is None:
                raise PageError(f"{page}:{i + 1}: a block without an end")
            body = [text[len(indent):] for text in lines[i + 1:end]]
            blocks.append(_block(page, i + 1, language.strip(), "\n".join(body) + "\n", pending))
            pending, i = [], end
        elif comment:
            _sort(_marker(comment[1].strip()), pending, page_markers)
        elif re.match(r"^(    |\t)\S", line) and after_blank and not in_list:
            blocks.append(_block(page, i + 1, "", line.strip() + "\n", pending))
            pending = []
            while i + 1 < len(lines) and re.match(r"^(    |\t)", lines[i + 1]):
                i += 1
        elif line.strip():
            _needs_no_block(page, i + 1, pending)
            in_list = bool(re.match(r"^ *([-*+]|\d+[.)]) ", line)) or (in_list and line.startswith(" "))
        after_blank = not line.strip() or bool(comment)
        i += 1
    return _with_last(blocks, page, len(lines), pending), page_markers


def _needs_no_block(page, line, pending):
    """Text may separate an unseen command from its block, but no other marker."""
    pending[:] = [found for found in pending if found[0] is not None]
    for name, _ in pending:
        if not name.startswith("unseen"):
            raise PageError(f"{page}:{line}: no block follows the marker '{name}'")


def _with_last(blocks, page, line, pending):
    """Adds an empty block for the unseen commands at the end of the page."""
    _needs_no_block(page, line, pending)
    return blocks + ([Block(page, line, "end of page", "", pending)] if pending else [])


def _read_scdoc(page, lines):
    blocks, page_markers, pending, after_blank, i = [], [], [], True, 0
    while i < len(lines):
        line = lines[i]
        if line.startswith("; "):
            _sort(_marker(line[2:].strip()), pending, page_markers)
        elif line.startswith("\t") and after_blank:
            start = i
            while i + 1 < len(lines) and lines[i + 1].strip():
                i += 1
            text = [part.strip().removesuffix("++").replace("\\", "") for part in lines[start:i + 1]]
            blocks.append(_block(page, start + 1, "commands", "\n".join(text) + "\n", pending))
            pending = []
        after_blank = not line.strip() or line.startswith("; ")
        i += 1
    return _with_last(blocks, page, len(lines), pending), page_markers
