# SPDX-License-Identifier: MIT
"""The example examples/python/recorder.py."""
import pathlib
import re
import signal
import subprocess
import sys

import pytest
from conftest import SLOWNESS, wait_for

RECORDER = pathlib.Path(__file__).parents[2] / "examples/python/recorder.py"


def start(*words):
    return subprocess.Popen([sys.executable, RECORDER, *map(str, words)], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                            text=True)


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
def test_records_across_a_restart(television, tmp_path, number):
    file = tmp_path / "audio.mp2"
    with start("0x101", file) as recorder:
        lines = iter(recorder.stdout.readline, "")
        assert "the service is there\n" in lines  # after "no service", if it began before the bus has answered
        wait_for(lambda: file.stat().st_size > 0)
        television.die(for_=0.2)
        assert [next(lines), next(lines)] == ["no service; waiting for it\n", "the service is there\n"]
        size = file.stat().st_size
        wait_for(lambda: file.stat().st_size > size)
        recorder.send_signal(number)
        last, errors = recorder.communicate(timeout=10 * SLOWNESS)
    assert (recorder.returncode, errors) == (0, "")
    packets, dropped, written = re.fullmatch(r"(\d+) packets, \d+ gaps, (\d+) dropped, (\d+) bytes written\n", last).groups()
    data = file.read_bytes()
    assert int(packets) > 1 and dropped == "0" and int(written) == len(data)
    assert data.startswith(b"\xff\xfd")  # frames of MPEG audio


@pytest.mark.parametrize(("words", "text"), [
    ([], "usage: recorder.py PID FILE"),
    (["audio", "/tmp/x"], "cannot record PID audio"),
    (["70000", "/dev/null"], "cannot record PID 70000 to /dev/null: pid: 70000 is not in the range"),
    (["0x101", "/nowhere/x"], "cannot record PID 0x101 to /nowhere/x: .*No such file"),
])
def test_errors_are_reported(television, words, text):
    with start(*words) as recorder:
        errors = recorder.communicate(timeout=10 * SLOWNESS)[1]
    assert recorder.returncode == 1 and re.search(text, errors), errors
