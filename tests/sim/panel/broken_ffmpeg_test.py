# SPDX-License-Identifier: MIT
"""The panel with an ffmpeg that fails or hangs, in a browser: broken_ffmpeg_test.py SIM CTL SAMPLE GUIDE"""
import os
import shutil
import signal
import tempfile
import time
from pathlib import Path

from support import PageTest, main, wait_for


class BrokenFfmpeg(PageTest):
    """A program named ffmpeg, which is replaced by the real one in the end."""

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

    def set_program(self, command):
        """Each start adds a line to the file: when, and its process."""
        self.starts.unlink(missing_ok=True)
        script = Path(self.folder.name, "new")
        script.write_text(f"#!/bin/sh\necho $(date +%s.%N) $$ >> {self.starts}\n{command}\n")
        script.chmod(0o755)
        script.replace(self.program)

    def started(self):
        return [line.split() for line in self.starts.read_text().splitlines()] if self.starts.exists() else []

    def ask_again(self, command):
        """A page that asks for the picture again gets an ffmpeg at once, and those before it are forgotten."""
        self.simulator.ctl("sim", "mute", "video", "on")
        wait_for(lambda: self.driver.execute_async_script(
            "const done=arguments[0];import('./store.js').then(m=>done(m.state.PanelPicture.state))") == "off")
        self.set_program(command)
        self.simulator.ctl("sim", "mute", "video", "off")

    real = f'exec {shutil.which("ffmpeg")} "$@"'

    def recovers(self, at_once=True):
        """With the real ffmpeg."""
        if at_once:
            self.ask_again(self.real)
        else:
            self.set_program(self.real)
        wait_for(lambda: self.frames() > 3, "a picture of the real ffmpeg", 60)
        wait_for(lambda: self.text("picture-note") == "")

    def test_is_restarted_after_failures_with_growing_pauses(self):
        wait_for(lambda: "ffmpeg ended without a picture" in self.text("picture-note"))
        self.set_program("exit 1")
        starts = [float(when) for when, _ in wait_for(lambda: len(self.started()) > 3 and self.started())]
        gaps = [after - before for before, after in zip(starts, starts[1:])]
        self.assertTrue(all(after > before * 1.5 or after > 7 for before, after in zip(gaps, gaps[1:])), gaps)
        self.assertEqual(self.pixel(0.02, 0.1), [192, 192, 192], "the test card")
        self.recovers(at_once=False)

    def hangs(self, command):
        self.ask_again(command)
        wait_for(lambda: "No picture has arrived for 2 seconds: ffmpeg does not answer" in self.text("picture-note"), patience=60)
        first = self.started()[0][1]
        wait_for(lambda: len(self.started()) > 1, "another start", 60)
        wait_for(lambda: not Path(f"/proc/{first}").exists(), "the end of the first one")
        self.assertIn("No picture has arrived", self.text("picture-note"), "it stays until a picture arrives")
        self.recovers()

    def test_is_restarted_if_it_does_not_read(self):
        self.hangs("exec sleep 1000")

    def test_is_restarted_if_it_does_not_write(self):
        self.hangs("exec cat 3>&1 > /dev/null")

    def test_is_restarted_if_it_is_stopped(self):
        self.recovers()
        stopped = int(self.started()[-1][1])
        os.kill(stopped, signal.SIGSTOP)
        wait_for(lambda: "No picture has arrived" in self.text("picture-note"))
        wait_for(lambda: not Path(f"/proc/{stopped}").exists(), "its end")
        before = self.frames()
        wait_for(lambda: self.frames() > before + 3)
        wait_for(lambda: self.text("picture-note") == "")

    def test_is_restarted_if_it_hangs_in_a_pause(self):
        self.simulator.ctl("sim", "pause")
        self.ask_again("exec sleep 1000")  # after failures, the panel would wait longer for it
        wait_for(lambda: "No picture has arrived" in self.text("picture-note"))
        hanging = self.started()[-1][1]
        self.set_program(self.real)
        before = self.frames()
        wait_for(lambda: self.frames() > before, "a picture of the real ffmpeg")
        self.assertFalse(Path(f"/proc/{hanging}").exists())

    def test_is_not_restarted_in_a_pause(self):
        self.recovers()
        self.simulator.ctl("sim", "pause")
        wait_for(lambda: "Paused" in self.text("badges"))

        def is_quiet():
            count = len(self.started())
            time.sleep(6)  # longer than an ffmpeg may be silent
            return not self.simulator.decoders() and len(self.started()) == count
        wait_for(is_quiet, "6 seconds without an ffmpeg")
        self.assertEqual(self.text("picture-note"), "")


if __name__ == "__main__":
    main()
