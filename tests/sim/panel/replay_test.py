# SPDX-License-Identifier: MIT
"""The panel of a replay, in a browser."""
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from support import CTL, PATIENCE, SAMPLE, SIM, PageTest, wait_for


def record(file):
    """An application of the sample."""
    session = f"{CTL} mute audio on; {CTL} audio list; {CTL} pes --count 20"
    subprocess.run([SIM, "--ts", SAMPLE, "--loop", "--record", file, "--", "sh", "-c", session], check=True, timeout=PATIENCE,
                   stdout=subprocess.DEVNULL)


def setUpModule():
    folder = tempfile.TemporaryDirectory(prefix="zviptv-replay-")
    unittest.addModuleCleanup(folder.cleanup)
    ReplayTest.recording = Path(folder.name, "bug.pcapng")
    record(ReplayTest.recording)


class ReplayTest(PageTest):
    unrecorded = ()

    @classmethod
    def setUpClass(cls):
        cls.inputs = ("--replay", cls.recording, *cls.unrecorded)

    def run_words(self, words):
        self.driver.execute_script("const w=document.getElementById('words');w.value=arguments[0];w.form.requestSubmit()", words)


class Replay(ReplayTest):
    def test_shows_the_available_parts(self):
        self.wait_text_is("cover-text", "A recording is replayed")
        self.assertEqual(self.text("input"), f"replays {self.recording}")
        self.assertEqual(self.text("track-lists"), "none")
        self.assertFalse(self.driver.find_element("id", "replay-note").get_attribute("hidden"))
        self.assertEqual(self.simulator.decoders(), [])
        self.assertEqual(self.status()["Replay"], str(self.recording))

    def sent(self):
        found = re.search(r"(\d+) notifications? sent", self.text("totals"))
        return int(found[1]) if found else 0

    def test_shows_the_conversation(self):
        subscriber = self.simulator.start_ctl("pes", "--count", "100000")
        self.addCleanup(subscriber.wait)
        self.addCleanup(subscriber.terminate)
        self.wait_text("application-list", "subscribed to PES packets")
        wait_for(lambda: self.sent() >= 20, "the recorded packets")  # a late one may have been recorded, too
        self.simulator.ctl("mute", "audio", "on")
        for words in ("requestPESCB on=true", "PESCB 0x01", "MuteAudio onoff=true"):
            wait_for(lambda: words in self.text("rows"), words)

    def test_refuses_controls_of_a_stream(self):
        for name in ("play", "speed", "mute-audio", "mute-video", "lock-programme", "lock-service", "load", "programme", "time",
                     "position"):
            self.assertFalse(self.element(name).is_enabled(), name)
        for words, method in (("pause", "Pause"), ("seek 3", "Seek"), (f"load {SAMPLE}", "Load"), ("time 1774738800", "SetTime"),
                              ("select audio 1", "Select"), ("lock service", "Lock")):
            self.run_words(words)
            wait_for(lambda: f"{method} is not possible: the simulator replays a recording; use die, restart, reset, quit or "
                             "fault, or start it with --ts and without --replay" in self.text("messages-area"), words)

    def test_controls_faults_and_deaths(self):
        self.run_words("fault add MuteAudio=error")
        self.wait_text("fault-list", "MuteAudio=error")
        self.assertEqual(self.simulator.ctl("mute", "audio", "on").returncode, 4)
        self.driver.find_element("css selector", "[data-words=reset]").click()
        wait_for(lambda: "MuteAudio=error" not in self.text("fault-list"))
        self.assertEqual(self.simulator.ctl("mute", "audio", "on").returncode, 0)
        self.run_words("die")
        self.wait_text_is("cover-text", "The service is dead")
        self.driver.find_element("css selector", "[data-words=restart]").click()
        self.wait_text_is("cover-text", "A recording is replayed")


class ReplayWithStream(ReplayTest):
    unrecorded = ("--unrecorded", "stream", "--ts", SAMPLE, "--loop")

    def test_shows_the_stream(self):
        self.wait_frames(4, "the picture of the stream")
        self.assertIn("deu teletext", self.text("track-lists"))
        self.assertEqual(self.driver.find_elements("css selector", "#track-lists button"), [])
        self.assertFalse(self.element("position").is_enabled())
        self.assertEqual(self.text("input"), f"{SAMPLE} · replays {self.recording}")
