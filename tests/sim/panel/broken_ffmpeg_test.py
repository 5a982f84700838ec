# SPDX-License-Identifier: MIT
"""The panel with an ffmpeg that fails or hangs, in a browser."""
import os
import shutil
import signal
import tempfile
import time
from pathlib import Path

from support import PageTest, wait_for


class BrokenFfmpegTest(PageTest):
    """Puts a program named ffmpeg into PATH. It fails or hangs until a test replaces it with the real one."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="zviptv-path-")
        cls.addClassCleanup(cls.folder.cleanup)
        cls.path = f"{cls.folder.name}:{os.environ['PATH']}"
        cls.program = Path(cls.folder.name, "ffmpeg")
        cls.starts = Path(cls.folder.name, "starts")

    def setUp(self):
        self.set_program("exit 1")
        super().setUp()
        self.ask_again("exit 1")

    def set_program(self, command):
        """Replaces ffmpeg with this command. Each start adds a line with its time and its process to the file."""
        self.starts.unlink(missing_ok=True)
        script = Path(self.folder.name, "new")
        script.write_text(f"#!/bin/sh\necho $(date +%s.%N) $$ >> {self.starts}\n{command}\n")
        script.chmod(0o755)
        script.replace(self.program)

    def started(self):
        return [line.split() for line in self.starts.read_text().splitlines()] if self.starts.exists() else []

    def ask_again(self, command):
        """Makes the page request the picture again. The panel then starts ffmpeg at once, and ignores earlier failures."""
        self.simulator.ctl("sim", "mute", "video", "on")
        self.wait_state("off")
        self.set_program(command)
        self.simulator.ctl("sim", "mute", "video", "off")

    real = f'exec {shutil.which("ffmpeg")} "$@"'

    def recovers(self, at_once=True):
        """Waits for pictures of the real ffmpeg."""
        if at_once:
            self.ask_again(self.real)
        else:
            self.set_program(self.real)
        before = self.frames()
        self.wait_frames(before + 4, "a picture of the real ffmpeg", 60)
        self.wait_text_is("picture-note", "")


class BrokenFfmpeg(BrokenFfmpegTest):
    def test_is_restarted_after_failures_with_growing_pauses(self):
        self.wait_text("picture-note", "ffmpeg ended without a picture")
        self.set_program("exit 1")
        starts = [float(when) for when, _ in wait_for(lambda: len(self.started()) > 3 and self.started())]
        gaps = [after - before for before, after in zip(starts, starts[1:])]
        self.assertTrue(all(after > before * 1.5 or after > 7 for before, after in zip(gaps, gaps[1:])), gaps)
        self.assertEqual(self.pixel(0.02, 0.1), [192, 192, 192], "the test card")
        self.recovers(at_once=False)

    def hangs(self, command):
        self.ask_again(command)
        self.wait_text("picture-note", "No picture has arrived for 2 seconds: ffmpeg does not answer", patience=60)
        first = self.started()[0][1]
        wait_for(lambda: len(self.started()) > 1, "another start", 60)
        wait_for(lambda: not Path(f"/proc/{first}").exists(), "the end of the first one")
        self.assertIn("No picture has arrived", self.text("picture-note"), "it stays until a picture arrives")
        self.recovers()

    def test_is_restarted_if_it_does_not_read(self):
        self.hangs("exec sleep 1000")

    def test_is_restarted_if_it_does_not_write(self):
        self.hangs("cat 3>&1 > /dev/null; exec sleep 1000")  # it does not end with the stream, either

    def test_is_restarted_if_it_is_stopped(self):
        self.recovers()
        stopped = int(self.started()[-1][1])
        os.kill(stopped, signal.SIGSTOP)
        self.wait_text("picture-note", "No picture has arrived")
        wait_for(lambda: not Path(f"/proc/{stopped}").exists(), "its end")
        before = self.frames()
        self.wait_frames(before + 4)
        self.wait_text_is("picture-note", "")


class InAPause(BrokenFfmpegTest):
    def test_is_restarted_if_it_hangs(self):
        self.simulator.ctl("sim", "pause")
        self.ask_again("exec sleep 1000")  # after failures, the panel would wait longer for it
        self.wait_text("picture-note", "No picture has arrived")
        hanging = self.started()[-1][1]
        self.set_program(self.real)
        before = self.frames()
        self.wait_frames(before + 1, "a picture of the real ffmpeg")
        self.assertFalse(Path(f"/proc/{hanging}").exists())

    def test_is_not_restarted(self):
        self.recovers()
        self.simulator.ctl("sim", "pause")
        self.wait_text("badges", "Paused")
        self.wait_state("still")
        wait_for(lambda: not self.simulator.decoders(), "the end of the ffmpeg that showed the still picture")

        def is_quiet():
            count = len(self.started())
            time.sleep(6)  # longer than an ffmpeg may be silent
            return not self.simulator.decoders() and len(self.started()) == count
        wait_for(is_quiet, "6 seconds without an ffmpeg")
        self.assertEqual(self.text("picture-note"), "")
