# SPDX-License-Identifier: MIT
"""The picture and the sound on the panel, in a browser."""
import os
import re
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from processes import children
from support import ALONE, BESIDE_OTHERS, SAMPLE, PageTest, wait_for


class Picture(PageTest):
    def setUp(self):
        super().setUp()
        self.wait_frames(1, "the first picture")

    @unittest.skipUnless(ALONE, "./run check measures it while nothing else runs")
    def test_has_five_pictures_a_second_or_more(self):
        before, begin = self.frames(), time.monotonic()
        time.sleep(5)  # what is measured
        rate = (self.frames() - before) / (time.monotonic() - begin)
        print(f"\n{rate:.1f} pictures a second", flush=True)
        self.assertGreaterEqual(rate, 5)

    def test_no_ffmpeg_runs_when_nobody_looks(self):
        wait_for(lambda: len(self.simulator.decoders()) == 1)
        self.driver.get("about:blank")
        wait_for(lambda: not self.simulator.decoders(), "the end of ffmpeg")
        self.driver.get(self.simulator.address)
        wait_for(lambda: len(self.simulator.decoders()) == 1)

    def test_no_ffmpeg_runs_for_a_covered_picture(self):
        for on, off in ((("mute", "video", "on"), ("mute", "video", "off")), (("lock", "service"), ("unlock", "service"))):
            self.simulator.ctl("sim", *on)
            wait_for(lambda: not self.simulator.decoders(), f"the end of ffmpeg after {on}")
            self.wait_until("getComputedStyle(element('picture')).visibility === 'hidden'")
            self.simulator.ctl("sim", *off)
            before = self.frames()
            self.wait_frames(before + 1)

    def test_when_the_simulator_is_killed_nothing_remains(self):
        """Neither the service, the bus nor ffmpeg, not even one that is stopped."""
        self.spend_simulator()
        self.element("sound").click()

        def all_started():
            found = children(self.simulator.process.pid)
            names = sorted(Path(command[0]).name for _, command in found)
            return found if len(names) == 4 and names[:3] == ["dbus-daemon", "ffmpeg", "ffmpeg"] else None
        started = wait_for(all_started, "the bus, the service, and an ffmpeg each for picture and sound")
        os.kill(next(pid for pid, command in started if command[0] == "ffmpeg"), signal.SIGSTOP)
        self.simulator.process.send_signal(signal.SIGKILL)
        self.simulator.process.wait()
        wait_for(lambda: not any(Path(f"/proc/{pid}/exe").exists() for pid, _ in started))
        self.driver.get("about:blank")
        self.driver.get_log("browser")

    def test_follows_pause_seek_and_speed(self):
        self.simulator.ctl("sim", "pause")
        self.wait_text("badges", "Paused")
        for position in ("2", "9", "5"):
            before = self.frames()
            self.simulator.ctl("sim", "seek", position)
            self.wait_frames(before + 1, f"the picture at {position}")
        self.wait_state("still")
        self.simulator.ctl("sim", "play")
        before = self.frames()
        self.wait_frames(before + 11)
        self.simulator.ctl("sim", "speed", "4")
        before = self.frames()
        self.wait_frames(before + 21)

    def test_returns_with_the_service(self):
        ended = wait_for(self.simulator.decoders, "ffmpeg")
        self.simulator.ctl("sim", "die", "--for", "0.3")
        # There may be none for less time than this test needs to look again.
        wait_for(lambda: not set(ended) & set(self.simulator.decoders()), "the end of ffmpeg")
        before = self.frames()
        self.wait_frames(before + 6)

    def test_leaves_no_picture_of_another_input(self):
        silent = Path(self.simulator.folder.name, "silent.ts")
        subprocess.run(["ffmpeg", "-v", "fatal", "-f", "lavfi", "-i", "sine=d=20", "-c:a", "mp2", silent], check=True)
        self.simulator.ctl("sim", "load", str(silent))
        self.wait_text_is("picture-note", "The programme has no video.")
        self.assertEqual(self.pixel(0.02, 0.1), [192, 192, 192], "the test card")

    def test_shows_a_single_frame_in_a_pause(self):
        """A stream with one frame and the selected subtitle, as after a seek to a key frame."""
        one = Path(self.simulator.folder.name, "one.ts")
        subprocess.run(["ffmpeg", "-v", "fatal", "-i", SAMPLE, "-map", "0:v:0", "-map", "0:s:0", "-c", "copy", "-frames:v", "1",
                        one], check=True)
        self.simulator.ctl("sim", "load", str(one))
        self.simulator.ctl("sim", "pause")
        wait_for(lambda: not self.simulator.decoders())
        before = self.frames()
        self.simulator.ctl("sim", "seek", "0")
        self.wait_frames(before + 1, "the frame")
        wait_for(lambda: not self.simulator.decoders())
        self.assertEqual(self.text("picture-note"), "")

    def test_sound_on_demand(self):
        self.element("sound").click()
        wait_for(lambda: float(self.attribute("sound", "data-seconds") or 0) > 1)
        self.element("sound").click()
        wait_for(lambda: len(self.simulator.decoders()) == 1)


class Lag(PageTest):
    """A stream whose picture turns from black to white in the middle."""

    turn = 4 if ALONE else 2  # seconds
    size = "720x576"
    codec = "mpeg2video", "-flags", "+ildct+ilme", "-b:v", "4M", "-maxrate", "4M", "-bufsize", "1M"

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="zviptv-lag-")
        cls.addClassCleanup(cls.folder.cleanup)
        cls.stream = Path(cls.folder.name, "lag.ts")
        form = f"s={cls.size}:r=25:d={cls.turn}"
        subprocess.run(["ffmpeg", "-v", "fatal", "-f", "lavfi", "-i", f"color=black:{form}", "-f", "lavfi", "-i",
                        f"color=white:{form}", "-filter_complex", "[0][1]concat,noise=alls=12:allf=t", "-c:v",
                        *cls.codec, "-g", "25", cls.stream], check=True)

    def test_is_two_seconds_at_most(self):
        self.wait_frames(1)
        self.simulator.ctl("sim", "seek", str(self.turn - 1.5))
        before = self.frames()
        self.wait_frames(before + 4)
        seen = self.driver.execute_async_script("""
            const done = arguments[0], c = document.getElementById('picture'), x = c.getContext('2d', { willReadFrequently: true });
            import('./television.js').then(({ positionNow }) => { const look = () => {
                x.getImageData(c.width / 2, c.height / 2, 1, 1).data[0] > 150 ? done(positionNow()) : setTimeout(look, 10); };
                look(); });""")
        self.assertLess(abs(seen - self.turn), 2 * BESIDE_OTHERS)
        if ALONE:
            self.measure(seen)

    def measure(self, seen):
        """Before the stream starts again, which takes another ffmpeg."""
        decoder, = self.simulator.decoders()
        used = lambda: sum(float(task.read_text().split()[0]) for task in  # noqa: E731
                           Path(f"/proc/{decoder}/task").glob("*/schedstat")) / 1e9
        before, used_before, begin = self.frames(), used(), time.monotonic()
        time.sleep(2)  # what is measured
        passed = time.monotonic() - begin
        rate = (self.frames() - before) / passed
        print(f"\nthe picture of second {self.turn} was seen at second {seen:.2f}; {rate:.1f} pictures a second of {self.size}; "
              f"ffmpeg used {100 * (used() - used_before) / passed:.0f} % of a processor", flush=True)
        self.assertGreaterEqual(rate, 5)


@unittest.skipUnless(ALONE, "./run check measures it while nothing else runs")
class LagOfHighDefinition(Lag):
    size = "1920x1080"
    codec = "libx264", "-preset", "ultrafast", "-b:v", "8M", "-muxrate", "10M"


class WithoutFfmpeg(PageTest):
    hasPicture = False

    def test_draws_a_test_card_and_reports_what_to_install(self):
        self.wait_text("picture-note", "install ffmpeg: sudo apt install ffmpeg")
        self.assertEqual(self.pixel(0.02, 0.1), [192, 192, 192])
        self.assertEqual(self.pixel(0.98, 0.1), [0, 0, 192])
        self.assertEqual(self.simulator.decoders(), [])
        self.simulator.ctl("mute", "audio", "on")
        wait_for(lambda: re.search("Sound muted", self.text("badges")))
