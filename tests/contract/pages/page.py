# SPDX-License-Identifier: MIT
"""Runs the commands of a page and compares their output: page.py PAGE ROOT WORK

Every block of the page is run here, or marked with the reason why not, or with the test that runs it. Any other block
is an error. MARKERS in blocks.py lists the markers. PATH contains an installation.
"""
import difflib
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from blocks import PageError, read_page
from checks import check_drop_in, check_links, check_run_by, check_run_words
from typed import Script

LICENCE = "// SPDX-License-Identifier: MIT\n"  # the first line of a file, which a page may leave out


def without_numbers(text, page_markers):
    """Replaces numbers that may differ with #: those in the matches of a marker, or from there to the line's end."""
    for name, pattern in page_markers:
        if name.startswith("numbers"):
            rest = ".*" if name.endswith("after") else ""
            text = re.sub(f"(?:{pattern}){rest}", lambda found: re.sub(r"\d+(\.\d+)?", "#", found[0]), text,
                          flags=re.MULTILINE)
    return text.split("\n")


def write_file(script, block, root):
    name, _, original = block.marker("file").partition(", the same as ")
    if original and (root / original).read_text().removeprefix(LICENCE) != block.text:
        raise PageError(f"{block}: not the same as {original}")
    script.file(name, block.text)


def take(script, block, root):
    """Adds the block to the script, or checks it. Returns a description for the log."""
    for name, value in block.markers:
        if name == "unseen":
            script.unseen(value)
    script.unseen_in_the_shell += [value for name, value in block.markers if name == "unseen in the shell"]
    if block.marker("not run") is not None:
        if len(block.marker("not run")) < 10:
            raise PageError(f"{block}: not run, without a reason")
        return f"not run: {block.marker('not run')}"
    if block.marker("run by"):
        return check_run_by(block, root)
    if block.marker("drop-in of"):
        return check_drop_in(block, root)
    if block.marker("file"):
        write_file(script, block, root)
        return f"written to {block.marker('file')}"
    if block.marker("comes from"):
        script.comes_from(block.marker("comes from"), block.text)
        return "compared"
    if block.language == "console":
        if not block.text.startswith("$ "):
            raise PageError(f"{block}: does not begin with '$ '")
        script.typed(block.text)
        return "typed"
    if block.language == "end of page":
        return "typed"
    if block.language == "commands":
        script.succeed(block.text)
        return "run"
    raise PageError(f"{block}: neither run nor marked")


def prepare(root, work, is_empty):
    """Makes the current folder of the page's reader: a copy of the project's, or an empty one."""
    here = work / "here"
    here.mkdir()
    share = work / "share"
    share.mkdir()
    for name in ("samples", "examples"):
        (share / name).symlink_to(root / name)
    (share / "wireshark").symlink_to(work / "prefix/share/zv-iptv/wireshark")
    if not is_empty:
        (here / "build").mkdir()
        for name in ("samples", "examples"):
            shutil.copytree(root / name, here / name)
    return here


def main(name, root, work):
    page = (root / name).read_text()
    blocks, page_markers = read_page(name, page)
    check_run_words(name, page, root)
    check_links(name, page, root)
    here = prepare(root, work, any(key == "typed in an empty folder" for key, _ in page_markers))
    script = Script(str(work / "share"))
    failed = False
    for block in blocks:
        try:
            print(f"{block}: {take(script, block, root)}")
        except PageError as error:
            print(error, file=sys.stderr)
            failed = True
    commands, expected = script.finish()
    if failed:
        return 1
    (work / "commands").write_text(commands)
    with open(work / "run", "wb") as out:
        subprocess.run(["bash", str(work / "commands")], cwd=here, stdin=subprocess.DEVNULL, stdout=out,
                       env={**os.environ, "PAGES_WORK": str(work)}, check=False)
    came = (work / "run").read_text(errors="replace")
    diff = list(difflib.unified_diff(without_numbers(expected, page_markers),
                                     without_numbers(came, page_markers), name, "actual output", lineterm=""))
    print("\n".join(diff))
    return 1 if diff else 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3])))
    except PageError as error:
        sys.exit(str(error))
