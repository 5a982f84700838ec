# SPDX-License-Identifier: MIT
"""The selected subtitle in the picture of the panel, in a browser."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from support import PageTest, wait_for

MEDIA = Path(os.environ.get("ZVIPTV_MEDIA_DIR", "")) / "dvb-4-audio-teletext.ts"
PACKET = 188


class Subtitles(PageTest):
    """The test picture has no white in its lower left part, and no black in the lower middle, where teletext is."""

    def setUp(self):
        super().setUp()
        self.wait_frames(1, "the first picture")

    def dvb(self):
        return self.pixels(0.05, 0.7, 0.4, 1, darkest=225)

    def teletext(self):
        """Black pixels of the box with the text."""
        return self.pixels(0.4, 0.88, 0.6, 0.97, brightest=40)

    def select(self, index):
        self.assertEqual(self.simulator.ctl("sim", "select", "subtitle", str(index)).returncode, 0)

    def test_dvb(self):
        wait_for(lambda: self.dvb() > 100, "a subtitle")
        wait_for(lambda: self.dvb() == 0, "its end")

    def test_teletext(self):
        self.select(1)
        wait_for(lambda: self.teletext() > 100, "a subtitle")
        self.assertEqual(self.dvb(), 0)
        wait_for(lambda: self.teletext() == 0, "its end")
        self.assertEqual(self.text("picture-note"), "")

    def test_is_the_selected_one(self):
        """The picture shows each selected subtitle even in a pause. The German text is longer than the English one."""
        self.simulator.ctl("sim", "pause")
        self.simulator.ctl("sim", "seek", "1.8")
        wait_for(lambda: self.dvb() > 100 and self.teletext() == 0, "the DVB subtitle")
        self.select(1)
        wait_for(lambda: self.dvb() == 0 and self.teletext() > 100, "the English page")
        one = self.teletext()
        self.select(2)
        wait_for(lambda: self.teletext() > one * 1.1, "the German page")
        self.select(0)
        wait_for(lambda: self.dvb() > 100 and self.teletext() == 0, "the DVB subtitle again")
        self.select(1)
        wait_for(lambda: self.teletext() > 100)
        self.simulator.ctl("sim", "seek", "2.9")
        wait_for(lambda: self.dvb() == 0 and self.teletext() == 0, "the picture between two subtitles")


def packets(file):
    data = Path(file).read_bytes()
    return [data[at:at + PACKET] for at in range(0, len(data), PACKET)]


def pid(packet):
    return (packet[1] & 0x1F) << 8 | packet[2]


@unittest.skipUnless(MEDIA.is_file(), f"ZVIPTV_MEDIA_DIR names no folder with {MEDIA.name}")
class BroadcastTeletext(PageTest):
    """Teletext of a broadcast, whose capture has no video: grey pictures are put between its packets. Page 889 has
    subtitles, page 888 has none."""

    options = ()

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="zviptv-teletext-")
        cls.addClassCleanup(folder.cleanup)
        grey = Path(folder.name, "grey.ts")
        video, begin, seconds = 0x424, 42851.2, 37  # as the capture announces and times it
        subprocess.run(["ffmpeg", "-v", "fatal", "-f", "lavfi", "-i", f"color=gray:s=640x360:r=5:d={seconds}", "-c:v", "libx264",
                        "-preset", "ultrafast", "-g", "5", "-output_ts_offset", str(begin), "-streamid", f"0:{video}", "-muxrate",
                        "1M", grey], check=True)
        pictures = [packet for packet in packets(grey) if pid(packet) == video]
        rest = [packet for packet in packets(MEDIA) if pid(packet) != video]
        mixed = [(i / len(part), packet) for part in (pictures, rest) for i, packet in enumerate(part)]
        cls.stream = Path(folder.name, "teletext.ts")
        cls.stream.write_bytes(b"".join(packet for _, packet in sorted(mixed, key=lambda one: one[0])))

    def yellow(self):
        return self.driver.execute_script("""
            const c = document.getElementById('picture');
            const p = c.getContext('2d').getImageData(0, 0, c.width, c.height).data;
            let count = 0;
            for (let i = 0; i < p.length; i += 4) {
              count += p[i] > 150 && p[i + 1] > 150 && p[i + 2] < 90 ? 1 : 0;
            }
            return count;""")

    def test_is_in_the_picture(self):
        self.wait_frames(1, "the first picture")
        self.simulator.ctl("sim", "select", "subtitle", "1")
        wait_for(lambda: self.yellow() > 200, "a subtitle of page 889")
        self.simulator.ctl("sim", "pause")
        self.simulator.ctl("sim", "seek", "14")
        wait_for(lambda: self.yellow() > 200, "the subtitle at second 14")
        self.simulator.ctl("sim", "select", "subtitle", "0")
        wait_for(lambda: self.yellow() == 0, "the picture with page 888")
