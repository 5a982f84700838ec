# SPDX-License-Identifier: MIT
"""Checks of pages, and of blocks that are not run."""
import configparser
import re
import shutil
import subprocess
import tempfile
from pathlib import Path

from blocks import PageError


def check_run_by(block, root):
    """Checks that the test contains the commands of the block, or the given text."""
    test, _, spelled = block.marker("run by").partition(", as: ")
    text = " ".join((root / test).read_text().split())
    lines = [spelled] if spelled else [line.removeprefix("$ ") for line in block.text.strip().split("\n")]
    for line in lines:
        if " ".join(line.split()) not in text:
            raise PageError(f"{block}: {test} does not contain: {line}")
    return f"run by {test}"


def check_drop_in(block, root):
    """Checks that systemd accepts the unit with these lines, and that the unit uses their variables."""
    unit = root / block.marker("drop-in of")
    lines = configparser.ConfigParser(strict=False, interpolation=None)
    lines.optionxform = str
    lines.read_string(block.text)
    for section in lines.sections():
        for variable in re.findall(r"(\w+)=", lines[section].get("Environment", "").split(" ")[0]):
            if f"${variable}" not in unit.read_text():
                raise PageError(f"{block}: {unit.name} does not use {variable}")
    if not shutil.which("systemd-analyze"):
        return f"goes with {unit.name} (not verified: systemd is not installed)"
    with tempfile.TemporaryDirectory() as folder:
        tried = Path(folder) / unit.name
        executable = re.compile(r"^ExecStart=\S+", re.MULTILINE)
        tried.write_text(executable.sub("ExecStart=/bin/true", unit.read_text()) + "\n" + block.text)
        said = subprocess.run(["systemd-analyze", "verify", "--man=false", str(tried)], text=True, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if said.returncode != 0 or unit.name in said.stdout:
            raise PageError(f"{block}: {said.stdout}")
    return f"verified, added to {unit.name}"


def check_links(name, page, root):
    """Checks that the linked files exist."""
    prose = re.sub(r"```.*?```|`[^`]*`", "", page, flags=re.DOTALL)
    for target in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", prose):
        if not (root / name).parent.joinpath(target).exists():
            raise PageError(f"{name} links to {target}, which does not exist")


def check_run_words(name, page, root):
    """Checks that ./run help lists every ./run command in the page, in blocks and in text."""
    named = re.findall(r"\./run ([a-z]+)(?: (--[a-z]+))?", page)
    known = named and subprocess.run([str(root / "run"), "help"], text=True, check=True, stdout=subprocess.PIPE).stdout
    for word, option in named:
        if not re.search(rf"^\./run {word}\b", known, re.MULTILINE) or option not in known:
            raise PageError(f"{name}: ./run help does not know ./run {word} {option}")
