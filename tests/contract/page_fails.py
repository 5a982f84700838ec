#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Checks that page.py finds errors in pages: page_fails.py BUILD SOURCE"""
import contextlib
import io
import sys
import tempfile
from pathlib import Path

SOURCE = Path(sys.argv[2])
sys.path.insert(0, str(SOURCE / "pages"))
sys.dont_write_bytecode = True
import page  # noqa: E402
from blocks import PageError  # noqa: E402

# A page, the status of page.py, and a text that it prints.
CASES = [
    ('```console\n$ echo 1\n1\n$ false\n$ echo $?\n1\n```\n', 0, 'page.md:1: console: typed'),
    ('```console\n$ echo 1\n2\n```\n', 1, '-2'),
    ('```console\n$ echo 1\n```\n', 1, '+1'),
    ('<!-- numbers may differ after: it: -->\n```console\n$ echo it: 1\nit: 2\n```\n', 0, 'typed'),
    ('<!-- numbers may differ in: ^a\\d -->\n```console\n$ echo a1 2\na3 2\n```\n', 0, 'typed'),
    ('<!-- numbers may differ in: ^a\\d -->\n```console\n$ echo a1 2\na3 4\n```\n', 1, '+a# 2'),
    ('```console\necho 1\n```\n', 1, "does not begin with '$ '"),
    ('```cpp\nint main() {}\n```\n', 1, 'page.md:1: cpp: neither run nor marked'),
    ('```\nls\n```\n', 1, 'page.md:1: block without a language: neither run nor marked'),
    ('Text:\n\n    ls\n', 1, 'page.md:3: block without a language: neither run nor marked'),
    ('* item\n\n  ```sh\n  ls\n  ```\n', 1, 'page.md:3: sh: neither run nor marked'),
    ('<!-- not run: needs root -->\n```\nls\n```\n', 0, 'not run: needs root'),
    ('<!-- not run: -->\n```\nls\n```\n', 1, 'not run, without a reason'),
    ('<!-- not run it: needs root -->\n```\nls\n```\n', 1, 'a comment that is not a marker'),
    ('<!-- not run: needs root -->\nText\n', 1, "no block follows the marker 'not run'"),
    ('```console\n$ ls\n', 1, 'a block without an end'),
    ('<!-- file: a.txt -->\n```\na\n```\n```console\n$ cat a.txt\nb\n```\n', 1, '+a'),
    ('<!-- file: a.cpp, the same as examples/hello_player.cpp -->\n```cpp\nint main() {}\n```\n', 1,
     'not the same as examples/hello_player.cpp'),
    ('<!-- comes from: echo a -->\n```json\nb\n```\n', 1, '+a'),
    ('<!-- unseen: false -->\n<!-- unseen: cat missing -->\n```console\n$ true\n```\n', 1, 'cat: missing'),
    ('<!-- run by: tests/contract/page.sh -->\n```\nsystemctl start nothing\n```\n', 1, 'does not contain'),
    ('<!-- drop-in of: packaging/systemd/zviptv-sim.service -->\n```ini\n[Service]\nEnvironment="ZVIPTV_OPTIONS=a"\n```\n', 1,
     'does not use ZVIPTV_OPTIONS'),
    ('Type `./run everything`.\n', 1, 'does not know ./run everything'),
    ('See [there](docs/nowhere.md).\n', 1, 'docs/nowhere.md, which does not exist'),
]


def status_and_text(text, root):
    """Runs the page in an empty folder."""
    (root / "page.md").write_text(text)
    said = io.StringIO()
    with tempfile.TemporaryDirectory() as work, contextlib.redirect_stdout(said), contextlib.redirect_stderr(said):
        try:
            status = page.main("page.md", root, Path(work))
        except PageError as error:
            status = 1
            print(error)
    return status, said.getvalue()


def main():
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        root = Path(folder)
        for name in ("run", "samples", "examples", "tests", "packaging"):
            (root / name).symlink_to((SOURCE / "../.." / name).resolve())
        for text, status, part in CASES:
            got, said = status_and_text(text, root)
            if got != status or part not in said:
                failed += 1
                print(f"Exit status {got}, expected {status}, and an output that contains {part!r}:\n{text}\n{said}")
    print(f"{len(CASES)} pages, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
